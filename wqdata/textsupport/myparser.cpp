#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include <wqdata/textsupport/myparser.h>

namespace wqd {
namespace {

constexpr const char* kDefaultDelimiters = ",\n";

bool is_trimmed(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_trimmed(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_trimmed(text.back())) text.remove_suffix(1);
  return text;
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

  std::string_view Trimmed() const { return trimmed({m_buffer, m_length}); }

 private:
  char* m_buffer;
  std::size_t m_length = 0;
};

CMyParser::CMyParser() { SetDelimiters(kDefaultDelimiters); }

CMyParser::CMyParser(const char* text, const char* delimiters)
    : m_position(text), m_atEnd(text == nullptr) {
  SetDelimiters(or_default(delimiters));
}

CMyParser::CMyParser(std::FILE* stream, const char* delimiters)
    : m_stream(stream), m_atEnd(stream == nullptr) {
  SetDelimiters(or_default(delimiters));
}

/// The next field, which lies in the text itself or anywhere in `buffer`; false when the input had
/// run out before.
bool CMyParser::Next(char (&buffer)[kFieldBufferSize], std::string_view& field,
                     const char* delimiters) {
  if (delimiters != nullptr) SetDelimiters(delimiters);
  field = {};
  if (m_atEnd) return false;
  if (TakePlain(field)) return true;
  FieldText text(buffer);
  ReadField(text);
  field = text.Trimmed();
  return true;
}

bool CMyParser::NextField(char (&field)[kFieldBufferSize], const char* delimiters) {
  std::string_view next;
  const bool found = Next(field, next, delimiters);
  if (!next.empty()) std::memmove(field, next.data(), next.size());
  field[next.size()] = '\0';
  return found;
}

bool CMyParser::NextField(std::string& field, const char* delimiters) {
  const char* const position = m_position;
  const bool atEnd = m_atEnd;
  char buffer[kFieldBufferSize];
  std::string_view next;
  const bool found = Next(buffer, next, delimiters);
  try {
    field = next;
  } catch (...) {  // out of memory
    field.clear();
    if (m_stream != nullptr) return false;
    m_position = position;
    m_atEnd = atEnd;
    return false;
  }
  return found;
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
  const auto mark = [this](char c) {
    const auto code = static_cast<unsigned char>(c);
    m_special[code / 64] |= std::uint64_t{1} << code % 64;
  };
  for (const char* c = delimiters; *c != '\0'; ++c) mark(*c);
  for (const char c : {'\0', '"', '\r'}) mark(c);
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

/// Takes a field of a text that lies there as it is: no quote and no CR in it. False for another,
/// with nothing taken.
bool CMyParser::TakePlain(std::string_view& field) {
  if (m_stream != nullptr || m_position == nullptr) return false;
  const char* end = m_position;
  while (IsOrdinary(*end)) ++end;
  if (*end == '"' || *end == '\r') return false;
  const auto length = static_cast<std::size_t>(end - m_position);
  field = trimmed({m_position, std::min<std::size_t>(length, kFieldBufferSize - 1)});
  m_atEnd = *end == '\0';
  m_position = m_atEnd ? end : end + 1;
  return true;
}

/// Takes what stands within quotes of a text, up to the one that ends them.
void CMyParser::TakeQuoted(FieldText& field) {
  if (m_stream != nullptr || m_position == nullptr) return;
  const std::size_t length = std::strcspn(m_position, "\"");
  field.Store(m_position, length);
  m_position += length;
}

void CMyParser::ReadField(FieldText& field) {
  bool quoted = false;
  for (int c = NextChar(); c != 0; c = NextChar()) {
    if (c == '"') {
      quoted = !quoted;
      if (quoted) TakeQuoted(field);
      continue;
    }
    if (!quoted) {
      c = FoldLineEnd(c);
      if (IsDelimiter(c)) return;
    }
    field.Store(c);
  }
}

}  // namespace wqd
