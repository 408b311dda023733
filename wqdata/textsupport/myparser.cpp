#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include <wqdata/service/littleendian.h>
#include <wqdata/textsupport/myparser.h>

namespace wqd {
namespace {

constexpr const char* kDefaultDelimiters = ",\n";

bool is_trimmed(char c) {
  return static_cast<unsigned char>(c) <= ' ' &&  // as few are that begin or end a field
         (c == ' ' || c == '\t' || c == '\r' || c == '\n');
}

inline std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_trimmed(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_trimmed(text.back())) text.remove_suffix(1);
  return text;
}

/// What a std::string holds without an allocation.
constexpr int kShortLength = 15;

constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kLow7Bits = 0x7F * kOnes;
constexpr std::uint64_t kHighBits = 0x80 * kOnes;

/// Eight characters of a text, the first in the lowest byte.
std::uint64_t load_word(const char* at) {
  return service::load<std::uint64_t>(reinterpret_cast<const std::uint8_t*>(at));
}

/// The high bit of each character of a word that `beyond` does not lift to it by its low 7 bits. No
/// sum carries into the next byte.
std::uint64_t not_beyond(std::uint64_t word, std::uint64_t beyond) {
  return ~((word & kLow7Bits) + beyond) & kHighBits;
}

const char* or_default(const char* delimiters) {
  return delimiters != nullptr ? delimiters : kDefaultDelimiters;
}

}  // namespace

/// The characters of a field while it is read, in the caller's buffer.
class CMyParser::FieldText {
 public:
  explicit FieldText(char (&buffer)[kFieldBufferSize]) : m_buffer(buffer) {}

  void Store(int c) {
    if (m_length < kFieldBufferSize - 1) m_buffer[m_length++] = static_cast<char>(c);
  }

  void Store(const char* run, std::size_t length) {
    const std::size_t kept = std::min(length, kFieldBufferSize - 1 - m_length);
    std::memcpy(m_buffer + m_length, run, kept);
    m_length += kept;
  }

  /// With a NUL somewhere behind it.
  std::string_view Trimmed() {
    m_buffer[m_length] = '\0';
    return trimmed({m_buffer, m_length});
  }

 private:
  char* m_buffer;
  std::size_t m_length = 0;
};

CMyParser::CMyParser() { SetDelimiters(kDefaultDelimiters); }

CMyParser::CMyParser(const char* text, const char* delimiters)
    : m_position(text), m_atEnd(text == nullptr), m_scanned(text) {
  SetDelimiters(or_default(delimiters));
}

CMyParser::CMyParser(std::FILE* stream, const char* delimiters)
    : m_stream(stream), m_atEnd(stream == nullptr) {
  SetDelimiters(or_default(delimiters));
}

/// Goes on from another place of the same text.
void CMyParser::MoveTo(const char* position) {
  m_position = position;
  m_atEnd = false;
}

const char* CMyParser::GetInputPosition() const { return m_position; }

int CMyParser::NextChar() {
  if (m_stream != nullptr) {
    // A stream may be readable again behind an error, but what then comes is no continuation.
    const int c = m_failed ? EOF : std::getc(m_stream);
    m_failed = m_failed || (c == EOF && std::ferror(m_stream) != 0);
    m_atEnd = m_atEnd || c == EOF;
    return c == EOF ? 0 : c;
  }
  if (m_position == nullptr || *m_position == '\0') {
    m_atEnd = true;
    return 0;
  }
  return static_cast<unsigned char>(*m_position++);
}

void CMyParser::PushBack(int c) {
  m_atEnd = false;
  if (c == 0) return;
  if (m_stream != nullptr) {
    std::ungetc(c, m_stream);
  } else if (m_position != nullptr) {
    --m_position;
  }
}

void CMyParser::SetDelimiters(const char* delimiters) {
  m_delimiters = delimiters;
  std::fill(std::begin(m_special), std::end(m_special), 0);
  unsigned greatest = 0;
  const auto mark = [&](char c) {
    const unsigned code = static_cast<unsigned char>(c);
    greatest = std::max(greatest, code);
    m_special[code / 64] |= std::uint64_t{1} << code % 64;
  };
  for (const char* c = delimiters; *c != '\0'; ++c) mark(*c);
  for (const char c : {'\0', '"', '\r'}) mark(c);
  m_beyondSpecial = (0x7F - std::min(greatest, 0x7FU)) * kOnes;
}

bool CMyParser::IsOrdinary(char c) const {
  const auto code = static_cast<unsigned char>(c);
  return (m_special[code / 64] >> code % 64 & 1) == 0;
}

bool CMyParser::IsDelimiter(int c) const { return std::strchr(m_delimiters, c) != nullptr; }

/// Turns a CR that an LF follows into that LF.
int CMyParser::FoldLineEnd(int c) {
  if (c != '\r') return c;
  const int next = NextChar();
  if (next == '\n') return next;
  PushBack(next);
  return c;
}

/// Goes on to the first character that is not ordinary, as far as the text is known to be there.
/// True if that is at `at`. Delimiters are most often lower than what they part: most words can be
/// told to hold none, and the few characters in doubt are looked up.
inline bool CMyParser::SkipWords(const char*& at) const {
  constexpr std::ptrdiff_t kWord = sizeof(std::uint64_t);
  for (; m_scanned - at >= kWord; at += kWord) {
    std::uint64_t doubtful = not_beyond(load_word(at), m_beyondSpecial);
    for (; doubtful != 0; doubtful &= doubtful - 1) {
      const char* const found = at + service::first_marked(doubtful);
      if (IsOrdinary(*found)) continue;
      at = found;
      return true;
    }
  }
  return false;
}

/// Where the text ends is found out some way ahead at a time, and never further: a parser of a long
/// text may be there for one field.
const char* CMyParser::EndBeyondScanned(const char* at) {
  constexpr std::size_t kAhead = 256;
  for (bool more = true; more;) {
    const char* const from = std::max(m_scanned, at);
    const void* const end = std::memchr(from, '\0', kAhead);
    more = end == nullptr;
    m_scanned = more ? from + kAhead : static_cast<const char*>(end);
    if (SkipWords(at)) return at;
  }
  while (IsOrdinary(*at)) ++at;
  return at;
}

/// The first character that is not ordinary.
inline const char* CMyParser::EndOfOrdinary(const char* at) {
  return SkipWords(at) ? at : EndBeyondScanned(at);
}

/// Takes a field of a text that lies there as it is and whole: no quote and no CR in it, or all of
/// it between two quotes. Null for another, with nothing taken.
std::string_view CMyParser::TakePlain() {
  if (m_scanned == nullptr) return {};
  const char* begin = m_position;
  const char* end = EndOfOrdinary(begin);
  const char* behind = end;
  if (*end == '"' || *end == '\r') [[unlikely]] {
    if (*end == '"' && end == begin) {
      ++begin;
      end = std::strchr(begin, '"');
      if (end == nullptr) return {};
      behind = end + 1;
    }
    if (behind[0] == '\r' && behind[1] == '\n') ++behind;
    if (*behind == '"' || *behind == '\r' || IsOrdinary(*behind)) return {};
  }
  if (end - begin >= kFieldBufferSize) return {};
  m_atEnd = *behind == '\0';
  m_position = m_atEnd ? behind : behind + 1;
  return trimmed({begin, static_cast<std::size_t>(end - begin)});
}

/// Takes what stands within quotes of a text, up to the one that ends them.
void CMyParser::TakeQuoted(FieldText& field) {
  if (m_stream != nullptr || m_position == nullptr) return;
  const std::size_t length = std::strcspn(m_position, "\"");
  field.Store(m_position, length);
  m_position += length;
}

std::string_view CMyParser::ReadField(char (&buffer)[kFieldBufferSize]) {
  FieldText field(buffer);
  bool quoted = false;
  for (int c = NextChar(); c != 0; c = NextChar()) {
    if (c == '"') {
      quoted = !quoted;
      if (quoted) TakeQuoted(field);
      continue;
    }
    if (!quoted) {
      c = FoldLineEnd(c);
      if (IsDelimiter(c)) break;
    }
    field.Store(c);
  }
  return field.Trimmed();
}

/// The next field, which lies in the text itself or anywhere in `buffer`, either of which holds a
/// NUL further on; null when the input had run out before.
std::string_view CMyParser::Next(char (&buffer)[kFieldBufferSize]) {
  if (m_atEnd) return {};
  const std::string_view plain = TakePlain();
  return plain.data() != nullptr ? plain : ReadField(buffer);
}

bool CMyParser::NextField(char (&field)[kFieldBufferSize], const char* delimiters) {
  if (delimiters != nullptr) SetDelimiters(delimiters);
  const std::string_view next = Next(field);
  if (!next.empty()) std::memmove(field, next.data(), next.size());
  field[next.size()] = '\0';
  return next.data() != nullptr;
}

/// True for a field within the text that can be copied at one fixed length and cut then: copying
/// takes a branch for each kind of length, and lengths of fields can't be foreseen.
inline bool CMyParser::IsShort(std::string_view plain) const {
  return plain.size() <= kShortLength && m_scanned - plain.data() >= kShortLength;
}

bool CMyParser::NextField(std::string& field, const char* delimiters) {
  if (delimiters != nullptr) SetDelimiters(delimiters);
  const char* const position = m_position;
  const bool atEnd = m_atEnd;
  char buffer[kFieldBufferSize];
  const std::string_view plain = atEnd ? std::string_view() : TakePlain();
  const std::string_view next = plain.data() != nullptr || atEnd ? plain : ReadField(buffer);
  try {
    if (plain.data() != nullptr && IsShort(plain)) {
      field.assign(plain.data(), kShortLength);
      field.resize(plain.size());
    } else {
      field = next;
    }
  } catch (...) {  // out of memory
    field.clear();
    if (m_stream != nullptr) return false;
    m_position = position;
    m_atEnd = atEnd;
    return false;
  }
  return next.data() != nullptr;
}

}  // namespace wqd
