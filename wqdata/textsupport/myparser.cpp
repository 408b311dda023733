#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

#include <wqdata/service/littleendian.h>
#include <wqdata/textsupport/myparser.h>

namespace wqd {
namespace {

constexpr const char* kDefaultDelimiters = ",\n";

constexpr std::ptrdiff_t kRun = 16;
constexpr std::uint32_t kFirstAhead = 64;
constexpr std::uint32_t kMostAhead = 4096;

bool is_trimmed(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// Most fields have no blank at an end, and none of those is above a space.
inline std::string_view trimmed(std::string_view text) {
  const auto is_bare = [](char c) { return static_cast<unsigned char>(c) > ' '; };
  if (!text.empty() && is_bare(text.front()) && is_bare(text.back())) return text;
  while (!text.empty() && is_trimmed(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_trimmed(text.back())) text.remove_suffix(1);
  return text;
}

/// False, with `field` empty, when there is no memory.
bool assign(std::string& field, std::string_view text) {
  try {
    field = text;
    return true;
  } catch (...) {
    field.clear();
    return false;
  }
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
    : m_position(text), m_atEnd(text == nullptr), m_known(text) {
  SetDelimiters(or_default(delimiters));
}

CMyParser::CMyParser(std::FILE* stream, const char* delimiters)
    : m_stream(stream), m_atEnd(stream == nullptr) {
  SetDelimiters(or_default(delimiters));
}

/// Whether sixteen characters of the text from `at` on are there. Each time farther than before, so
/// that all of a long text is looked through about once, and no more of it than its fields for a
/// reader of one.
bool CMyParser::LooksAhead(const char* at) {
  if (!m_searchable) return false;
  m_known = std::max(m_known, at);
  const void* const end = std::memchr(m_known, 0, m_ahead);
  m_known = end != nullptr ? static_cast<const char*>(end) : m_known + m_ahead;
  m_ahead = std::clamp(2 * m_ahead, kFirstAhead, kMostAhead);
  return m_known - at >= kRun;
}

/// The first character from `at` on that is more than a part of a field, among the sixteen that are
/// known to be there; null for none. Compilers make a few vector operations of the loop, and few
/// fields are longer: the processor then has no end of a loop to guess.
inline const char* CMyParser::FindInRun(const char* at) const {
  std::array<std::uint8_t, kRun> marks;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const bool special = (at[i] == m_searched[0][i]) | (at[i] == m_searched[1][i]) |
                         (at[i] == m_searched[2][i]) | (at[i] == m_searched[3][i]);
    marks[i] = special ? 0xFF : 0;
  }
  const auto first = service::load<std::uint64_t>(marks.data());
  const auto second = service::load<std::uint64_t>(marks.data() + sizeof first);
  if (first != 0) return at + service::first_marked(first);
  return second != 0 ? at + sizeof first + service::first_marked(second) : nullptr;
}

/// The same at any distance, near the end of the text too.
[[gnu::noinline]] const char* CMyParser::FindSpecial(const char* at) {
  for (; m_known - at >= kRun || LooksAhead(at); at += kRun) {
    const char* const found = FindInRun(at);
    if (found != nullptr) return found;
  }
  while (IsOrdinary(*at)) ++at;
  return at;
}

/// The quote of a text that ends the field whose opening quote is at `at`, with a delimiter or the
/// text's end behind it; null where it is not at hand, or something else is behind it.
const char* CMyParser::FindClosingQuote(const char* at) const {
  if (m_known <= at) return nullptr;
  const void* const found = std::memchr(at + 1, '"', static_cast<std::size_t>(m_known - at - 1));
  const auto* const quote = static_cast<const char*>(found);
  return quote != nullptr && EndsField(quote[1]) ? quote : nullptr;
}

/// Takes a field of a text that lies there as it is: no CR in it, and no quote but one at each end.
/// False for another, with nothing taken.
inline bool CMyParser::TakeInPlace(std::string_view& field) {
  const char* begin = m_position;
  if (begin == nullptr) return false;
  const char* end = m_known - begin >= kRun ? FindInRun(begin) : nullptr;
  if (end == nullptr) end = FindSpecial(begin);
  const char* behind = end;
  if (!EndsField(*end)) {
    if (end != begin || *end != '"') return false;
    end = FindClosingQuote(begin++);
    if (end == nullptr) return false;
    behind = end + 1;
  }
  const auto length = static_cast<std::size_t>(end - begin);
  field = trimmed({begin, std::min<std::size_t>(length, kFieldBufferSize - 1)});
  m_atEnd = *behind == '\0';
  m_position = m_atEnd ? behind : behind + 1;
  return true;
}

/// The next field, which lies in the text itself or anywhere in `buffer`; false when the input had
/// run out before.
bool CMyParser::Next(char (&buffer)[kFieldBufferSize], std::string_view& field) {
  field = {};
  if (m_atEnd) return false;
  if (TakeInPlace(field)) return true;
  FieldText text(buffer);
  ReadField(text);
  field = text.Trimmed();
  return true;
}

bool CMyParser::NextField(char (&field)[kFieldBufferSize], const char* delimiters) {
  if (delimiters != nullptr) SetDelimiters(delimiters);
  std::string_view next;
  const bool found = Next(field, next);
  if (!next.empty()) std::memmove(field, next.data(), next.size());
  field[next.size()] = '\0';
  return found;
}

bool CMyParser::NextField(std::string& field, const char* delimiters) {
  if (delimiters != nullptr) SetDelimiters(delimiters);
  const char* const position = m_position;
  std::string_view plain;
  if (m_atEnd || !TakeInPlace(plain)) return NextRead(field);
  if (plain.size() < kRun && m_known - plain.data() >= kRun) {
    // Every string has room for these, and a copy of one length has no branches to guess.
    field.assign(plain.data(), kRun - 1);
    field.resize(plain.size());
    return true;
  }
  if (assign(field, plain)) return true;
  m_position = position;
  m_atEnd = false;
  return false;
}

/// Any field, read by characters into a buffer. Apart, so that a plain one has no use for that.
bool CMyParser::NextRead(std::string& field) {
  const char* const position = m_position;
  const bool atEnd = m_atEnd;
  char buffer[kFieldBufferSize];
  std::string_view next;
  const bool found = Next(buffer, next);
  if (assign(field, next)) return found;
  if (m_stream != nullptr) return false;
  m_position = position;
  m_atEnd = atEnd;
  return false;
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
  std::size_t count = 0;
  const auto mark = [this, &count](char c) {
    if (!IsOrdinary(c)) return;
    const auto code = static_cast<unsigned char>(c);
    m_special[code / 64] |= std::uint64_t{1} << code % 64;
    if (count < std::size(m_searched)) std::memset(m_searched[count], c, kRun);
    ++count;
  };
  mark('"');
  mark('\r');
  for (const char* c = delimiters; *c != '\0'; ++c) mark(*c);
  m_searchable = count <= std::size(m_searched);
  for (; count < std::size(m_searched); ++count) std::memset(m_searched[count], '"', kRun);
  m_special[0] |= 1;  // NUL
}

bool CMyParser::IsOrdinary(char c) const {
  const auto code = static_cast<unsigned char>(c);
  return (m_special[code / 64] >> code % 64 & 1) == 0;
}

/// True for NUL and a delimiter that neither quotes nor may be half of a line end.
bool CMyParser::EndsField(char c) const { return c != '"' && c != '\r' && !IsOrdinary(c); }

bool CMyParser::IsDelimiter(int c) const { return std::strchr(m_delimiters, c) != nullptr; }

/// Turns a CR that an LF follows into that LF.
int CMyParser::FoldLineEnd(int c) {
  if (c != '\r') return c;
  const int next = NextChar();
  if (next == '\n') return next;
  PushBack(next);
  return c;
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
