#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include <wqdata/textsupport/myparser.h>

namespace wqd {
namespace {

constexpr const char* kDefaultDelimiters = ",\n";

bool is_trimmed(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

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

  std::string_view Trimmed() const {
    const char* begin = m_buffer;
    const char* end = m_buffer + m_length;
    while (begin != end && is_trimmed(*begin)) ++begin;
    while (begin != end && is_trimmed(end[-1])) --end;
    return {begin, static_cast<std::size_t>(end - begin)};
  }

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

/// The next field, in `buffer` but not at its start; false when the input had run out before.
bool CMyParser::Next(char (&buffer)[kFieldBufferSize], std::string_view& field,
                     const char* delimiters) {
  if (delimiters != nullptr) SetDelimiters(delimiters);
  field = {};
  if (m_atEnd) return false;
  FieldText text(buffer);
  ReadField(text);
  field = text.Trimmed();
  return true;
}

bool CMyParser::NextField(char (&field)[kFieldBufferSize], const char* delimiters) {
  std::string_view trimmed;
  const bool found = Next(field, trimmed, delimiters);
  if (!trimmed.empty() && trimmed.data() != field) {
    std::memmove(field, trimmed.data(), trimmed.size());
  }
  field[trimmed.size()] = '\0';
  return found;
}

bool CMyParser::NextField(std::string& field, const char* delimiters) {
  const char* const position = m_position;
  const bool atEnd = m_atEnd;
  char buffer[kFieldBufferSize];
  std::string_view trimmed;
  const bool found = Next(buffer, trimmed, delimiters);
  try {
    field = trimmed;
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

/// The characters of a text that mean nothing lie side by side, and are taken at once.
void CMyParser::TakeRun(FieldText& field, bool quoted) {
  if (m_stream != nullptr || m_position == nullptr) return;
  const char* end = m_position;
  if (quoted) {
    end += std::strcspn(end, "\"");
  } else {
    while (IsOrdinary(*end)) ++end;
  }
  field.Store(m_position, static_cast<std::size_t>(end - m_position));
  m_position = end;
}

void CMyParser::ReadField(FieldText& field) {
  bool quoted = false;
  TakeRun(field, quoted);
  for (int c = NextChar(); c != 0; c = NextChar()) {
    if (c == '"') {
      quoted = !quoted;
      TakeRun(field, quoted);
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
