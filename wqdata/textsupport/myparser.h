#ifndef WQDATA_TEXTSUPPORT_MYPARSER_H_
#define WQDATA_TEXTSUPPORT_MYPARSER_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include <wqdata/export.h>

namespace wqd {

class CTextBlock;

/// Splits delimited text into fields, one for each call, from a NUL-ended text or an open stream.
/// Both sources give the same fields.
///
///     CMyParser parser("7, \"a,b\" \n", nullptr);
///     std::string field;
///     while (parser.NextField(field)) …    // "7", "a,b", ""
///
/// - A field ends at a delimiter, which is consumed, or at the end of the input. Text that ends
///   with a delimiter, and an empty text, have an empty last field.
/// - A double quote is never part of a field: it turns quoting on or off, anywhere in it. Within
///   quotes delimiters and line ends are ordinary characters; a quote that stays open runs to the
///   end of the input. There is no escape.
/// - CR LF outside quotes counts as one LF; a CR by itself is an ordinary character, unless it is
///   a delimiter.
/// - Of a field's characters the first 255 are kept and the rest is dropped. Then blanks, tabs, CR
///   and LF are removed at both ends, also those that stood within quotes.
/// - A byte 0 in a stream ends a field, and the next call goes on behind it. Right behind a CR
///   outside quotes it is dropped.
///
/// A stream ends at its end or at a read error, which `std::ferror` tells apart. No input is an
/// error. The parser owns nothing: the text, the delimiter set and the stream stay the caller's,
/// who keeps them alive as long as the parser; the stream is not closed. A copy goes on from the
/// same place (two parsers on one stream take their fields from each other). One parser is used by
/// one thread at a time.
class WQDATA_API CMyParser {
 public:
  /// Room for a field's characters and a NUL.
  static constexpr int kFieldBufferSize = 256;

  /// No input: the first `NextField` is false.
  CMyParser();

  /// Reads `text`, with the NUL-ended `delimiters` as the set of delimiter characters; null for
  /// them selects ",\n". A null `text` is no input.
  CMyParser(const char* text, const char* delimiters);

  /// The same for a stream, read from its present position on.
  CMyParser(std::FILE* stream, const char* delimiters);

  /// Stores the next field in `field`. False, with `field` empty, when the input had run out
  /// before. `delimiters`, if not null, replaces the delimiter set for this and later calls.
  /// If memory for the field runs out, `field` is empty and the result false too. A parser of a
  /// text then stands before that field again; a stream is past it.
  bool NextField(std::string& field, const char* delimiters = nullptr);

  /// The same without any allocation: the field goes to `field`, NUL-ended.
  bool NextField(char (&field)[kFieldBufferSize], const char* delimiters = nullptr);

  /// Where the next unread character of a text stands; null for a stream and for no input.
  const char* GetInputPosition() const;

 protected:
  /// The next character, 0 to 255; 0 at the end of the input, which sets the end flag.
  int NextChar();

  /// Takes the latest `NextChar` back, `c` being its result. Without an input nothing but the end
  /// flag changes.
  void PushBack(int c);

 private:
  friend class CTextBlock;  // which goes back and forth in one text, and copies no field

  class FieldText;

  void MoveTo(const char* position);
  std::string_view Next(char (&buffer)[kFieldBufferSize]);
  void SetDelimiters(const char* delimiters);
  bool IsDelimiter(int c) const;
  bool IsOrdinary(char c) const;
  bool SkipWords(const char*& at) const;
  const char* EndBeyondScanned(const char* at);
  const char* EndOfOrdinary(const char* at);
  std::string_view TakePlain();
  void TakeQuoted(FieldText& field);
  int FoldLineEnd(int c);
  bool IsShort(std::string_view plain) const;
  std::string_view ReadField(char (&buffer)[kFieldBufferSize]);

  const char* m_position = nullptr;
  std::FILE* m_stream = nullptr;
  bool m_atEnd = true;
  bool m_failed = false;  // the stream, while it was read here
  const char* m_delimiters;
  const char* m_scanned = nullptr;  // the text is there up to here, and can be read by words
  std::uint64_t m_special[4];       // a bit for each character that is more than a part of a field
  std::uint64_t m_beyondSpecial;    // what lifts every greater character's low 7 bits to the high
};

}  // namespace wqd

#endif  // WQDATA_TEXTSUPPORT_MYPARSER_H_
