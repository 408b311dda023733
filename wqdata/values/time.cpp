#include <cstring>

#include <wqdata/service/text.h>
#include <wqdata/values/time.h>

namespace wqd {
namespace {

constexpr int kSecondsInDay = 86400;

std::int32_t wrapped(std::int64_t number) { return static_cast<std::int32_t>(number); }

std::int32_t seconds_of(std::int64_t hours, std::int64_t minutes, std::int64_t seconds) {
  return wrapped((hours * 60 + minutes) * 60 + seconds);
}

CZulTime within_day(std::int64_t seconds) {
  const auto rest = static_cast<int>(seconds % kSecondsInDay);
  return CZulTime(rest < 0 ? rest + kSecondsInDay : rest);
}

/// What scanf reads for "%d:%d:%d": parts from the first that can't be read on stay 0.
std::int32_t scan_parts(const char* text) {
  std::int32_t parts[3] = {0, 0, 0};
  for (std::int32_t& part : parts) {
    if (&part != parts && *text++ != ':') break;
    text = service::scan_int(text, part);
    if (text == nullptr) break;
  }
  return seconds_of(parts[0], parts[1], parts[2]);
}

}  // namespace

CZulTime::CZulTime(int seconds) : m_seconds(seconds) {}

CZulTime::CZulTime(int hours, int minutes, int seconds) { Set(hours, minutes, seconds); }

CZulTime::CZulTime(const char* text) { Scan(text); }

void CZulTime::Set(int hours, int minutes, int seconds) {
  m_seconds = seconds_of(hours, minutes, seconds);
}

int CZulTime::Hour() const { return m_seconds / 3600; }

int CZulTime::Minute() const { return m_seconds % 3600 / 60; }

int CZulTime::Second() const { return m_seconds % 60; }

CZulTime CZulTime::Add(int seconds) const { return within_day(std::int64_t{m_seconds} + seconds); }

CZulTime CZulTime::operator+(int seconds) const { return Add(seconds); }

CZulTime CZulTime::operator-(int seconds) const {
  return within_day(std::int64_t{m_seconds} - seconds);
}

CZulTime& CZulTime::operator++() { return *this = Add(1); }

CZulTime& CZulTime::operator--() { return *this = Add(-1); }

int CZulTime::operator-(const CZulTime& other) const {
  return wrapped(std::int64_t{m_seconds} - other.m_seconds);
}

int CZulTime::Compare(const CZulTime& other) const { return *this - other; }

bool CZulTime::operator<(const CZulTime& other) const { return m_seconds < other.m_seconds; }

bool CZulTime::operator<=(const CZulTime& other) const { return m_seconds <= other.m_seconds; }

bool CZulTime::operator>(const CZulTime& other) const { return m_seconds > other.m_seconds; }

bool CZulTime::operator>=(const CZulTime& other) const { return m_seconds >= other.m_seconds; }

bool CZulTime::InInterval(const CZulTime& start, const CZulTime& end) const {
  const bool started = *this >= start;
  const bool ended = *this >= end;
  return end > start ? started && !ended : started || !ended;
}

bool CZulTime::Scan(const char* text) {
  if (text == nullptr) {
    m_seconds = 0;
  } else if (std::strchr(text, ':') != nullptr) {
    m_seconds = scan_parts(text);
  } else {
    m_seconds = seconds_of(0, service::text_to_int(text), 0);
  }
  return true;
}

int CZulTime::Print(char* buffer, int size) const {
  service::TextWriter text;
  text.Padded(Hour()).Put(':').Padded(Minute()).Put(':').Padded(Second());
  return service::put_text(text.Text(), buffer, size);
}

}  // namespace wqd
