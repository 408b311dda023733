#include <cstring>
#include <string_view>

#include <wqdata/textsupport/myparser.h>

namespace wqd {
namespace {

constexpr const char* kDefaultDelimiters = ",\n";
constexpr std::string_view kTrimSet = " \t\r\n";

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

  std::string_view Trimmed() const {
    const std::string_view all(m_buffer, m_length);
    const std::size_t first = all.find_first_not_of(kTrimSet);
    if (first == std::string_view::npos) return {};
    return all.substr(first, all.find_last_not_of(kTrimSet) - first + 1);
  }

 private:
  char* m_buffer;
  std::size_t m_length = 0;
};

CMyParser::CMyParser() : m_delimiters(kDefaultDelimiters) {}

CMyParser::CMyParser(const char* text, const char* delimiters)
    : m_position(text), m_atEnd(text == nullptr), m_delimiters(or_default(delimiters)) {}

CMyParser::CMyParser(std::FILE* stream, const char* delimiters)
    : m_stream(stream), m_atEnd(stream == nullptr), m_delimiters(or_default(delimiters)) {}

bool CMyParser::NextField(char (&field)[kFieldBufferSize], const char* delimiters) {
  if (delimiters != nullptr) m_delimiters = delimiters;
  field[0] = '\0';
  if (m_atEnd) return false;
  FieldText text(field);
  ReadField(text);
  const std::string_view trimmed = text.Trimmed();
  if (!trimmed.empty()) std::memmove(field, trimmed.data(), trimmed.size());
  field[trimmed.size()] = '\0';
  return true;
}

bool CMyParser::NextField(std::string& field, const char* delimiters) {
  const char* const position = m_position;
  const bool atEnd = m_atEnd;
  char buffer[kFieldBufferSize];
  const bool found = NextField(buffer, delimiters);
  try {
    field = buffer;
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

bool CMyParser::IsDelimiter(int c) const { return std::strchr(m_delimiters, c) != nullptr; }

/// Turns a CR that an LF follows into that LF.
int CMyParser::FoldLineEnd(int c) {
  if (c != '\r') return c;
  const int next = NextChar();
  if (next == '\n') return next;
  PushBack(next);
  return c;
}

void CMyParser::ReadField(FieldText& field) {
  bool quoted = false;
  for (int c = NextChar(); c != 0; c = NextChar()) {
    if (c == '"') {
      quoted = !quoted;
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
