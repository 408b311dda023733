#include <algorithm>
#include <cinttypes>
#include <cstring>

#include <wqdata/blocks/textblock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/digits.h>
#include <wqdata/service/memory.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>
#include <wqdata/textsupport/myparser.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

constexpr std::uint64_t kGrowthStep = 65536;
constexpr std::uint64_t kLastSize = service::kLargestBlock / kGrowthStep * kGrowthStep;
constexpr const char* kPairDelimiters = ",\t\n";
constexpr std::string_view kEndOfText("\0", 1);

}  // namespace

/// A size that the block is to have, for a run of `length` bytes that made it grow by `increase`.
struct CTextBlock::Growth {
  std::uint64_t size;
  std::uint64_t length;
  std::uint64_t increase;
};

CTextBlock::Growth CTextBlock::GrownFor(std::uint64_t length, std::uint64_t size) {
  const std::uint64_t steps = length == 0 ? 1 : (length + kGrowthStep - 1) / kGrowthStep;
  return {size + steps * kGrowthStep, length, steps * kGrowthStep};
}

CTextBlock::CTextBlock(cf_id format) { m_format = format; }

CTextBlock::CTextBlock(void* data)
    : m_data(static_cast<char*>(data)), m_record(m_data), m_parser(m_data, kPairDelimiters) {
  m_format = TEXT;
  m_readOnly = data != nullptr;
  m_terminated = m_readOnly;
  m_field = m_record;
}

CTextBlock::~CTextBlock() {
  if (m_reserved > 0) service::release(m_data);
}

void* CTextBlock::GetData() { return m_data; }

int CTextBlock::GetDataSize() { return static_cast<int>(m_used); }

int CTextBlock::GetRecordCount() { return m_recordCount; }

int CTextBlock::GetFieldCount() { return m_fieldCount; }

bool CTextBlock::StartRecord() {
  if (m_readOnly) return false;
  m_fieldCount = 0;
  return true;
}

bool CTextBlock::EndRecord() {
  if (!Append("\n")) return false;
  ++m_recordCount;
  return true;
}

bool CTextBlock::Add(FID id, double value) {
  return (!is_missing(value) && PutDouble(value)) || CDataBlock::Add(id, value);
}

bool CTextBlock::Add(FID id, std::int32_t value) {
  return (!is_missing(value) && PutLong(value)) || CDataBlock::Add(id, value);
}

bool CTextBlock::Add(FID id, std::int16_t value) {
  return (!is_missing(value) && PutLong(value)) || CDataBlock::Add(id, value);
}

bool CTextBlock::Add(CDataItem& item) {
  switch (item.GetType()) {
    case TYPE_STRING: return AddValue(item.GetString());
    case TYPE_DOUBLE:
      if (PutDouble(item.GetFloat())) return true;
      break;
    case TYPE_LONG:
    case TYPE_INT:
      if (PutLong(item.GetLong())) return true;
      break;
    default: break;
  }
  service::NumberText text;
  const int length = item.Print(text.data(), static_cast<int>(text.size()));
  return AddValue({text.data(), static_cast<std::size_t>(length)});
}

bool CTextBlock::Add(FID, const char* text) { return text != nullptr && AddValue(text); }

/// A block has room for a NUL besides its bytes: where one is not to be counted, for a block that
/// can't grow any more, the text has an end all the same.
bool CTextBlock::Close() {
  if (!m_readOnly && m_reserved > 0) m_data[m_used] = '\0';
  if (!Append(kEndOfText, 0)) return false;
  m_terminated = true;
  return true;
}

/// Where a value of up to `length` bytes can be written, behind its separator; null where the block
/// refuses it or may have to grow, and every byte must be counted. The value is added by `EndValue`
/// alone, which counts what is there by then.
char* CTextBlock::BeginValue(std::size_t length) {
  constexpr std::size_t kMore = 3;  // a separator, a byte to spare, and one that may be kept
  if (m_readOnly || m_allocSize - m_used <= length + kMore) return nullptr;
  m_data[m_used] = Separator();
  return m_data + m_used + (m_fieldCount == 0 ? 0 : 1);
}

bool CTextBlock::EndValue(const char* end) {
  m_used = static_cast<std::uint32_t>(end - m_data);
  ++m_fieldCount;
  return true;
}

/// False where there may be no room, with nothing added.
bool CTextBlock::PutLong(std::int32_t value) {
  char* const at = BeginValue(service::kDigitsRoom);
  return at != nullptr && EndValue(service::put_long(at, value));
}

/// The same, and for a double of another text than most.
bool CTextBlock::PutDouble(double value) {
  char* const at = service::is_usual(value) ? BeginValue(service::kDigitsRoom) : nullptr;
  return at != nullptr && EndValue(service::put_double(at, value));
}

bool CTextBlock::AddValue(std::string_view text) {
  char* const at = BeginValue(text.size());
  if (at == nullptr) return AddWithGrowth(text);
  if (!text.empty()) std::memcpy(at, text.data(), text.size());
  return EndValue(at + text.size());
}

/// Room for separator and value is made before either is written: a refused field leaves no trace.
bool CTextBlock::AddWithGrowth(std::string_view text) {
  if (m_readOnly) return false;
  const char separator = Separator();
  const std::size_t separators = m_fieldCount == 0 ? 0 : 1;
  const void* source = text.data();  // the block's own bytes, it may be
  if (!MakeRoom(separators, text.size(), kKept, &source)) return false;
  Put({&separator, separators});
  Put({static_cast<const char*>(source), text.size()});
  ++m_fieldCount;
  return true;
}

bool CTextBlock::Append(std::string_view bytes, std::uint64_t kept) {
  if (m_readOnly || !MakeRoom(0, bytes.size(), kept)) return false;
  Put(bytes);
  return true;
}

void CTextBlock::Put(std::string_view bytes) {
  if (!bytes.empty()) std::memcpy(m_data + m_used, bytes.data(), bytes.size());
  m_used += static_cast<std::uint32_t>(bytes.size());
}

/// The block grows for each run of bytes that leaves no byte to spare, by the smallest multiple of
/// the step that holds them. A separator of no bytes is none. Of the last size that a block can
/// have, some are `kept`, and are as good as not there.
bool CTextBlock::MakeRoom(std::uint64_t separator, std::uint64_t text, std::uint64_t kept,
                          const void** source) {
  Growth growth = {m_allocSize, 0, 0};
  const std::uint64_t withSeparator = std::uint64_t{m_used} + separator;
  if (separator > 0 && withSeparator + 1 >= growth.size) growth = GrownFor(separator, growth.size);
  if (withSeparator + text + 1 >= growth.size) growth = GrownFor(text, growth.size);
  const bool full = growth.size == kLastSize && withSeparator + text + 1 + kept >= kLastSize;
  if (full) growth = GrownFor(text, growth.size);
  return growth.size == m_allocSize || Grow(growth, source);
}

/// Memory is taken further ahead than the block grows, or a large one would be moved at each step.
bool CTextBlock::Grow(const Growth& growth, const void** source) {
  const bool firstBuffer = m_reserved == 0;
  void* const data =
      service::grown(firstBuffer ? nullptr : m_data, m_reserved, growth.size, source);
  if (data == nullptr) {
    service::log_message(service::kLevelFailed,
                         "Couldn't allocate TEXT record size %" PRIu64 ", m_allocSize<%" PRIu32
                         ">, length<%" PRIu64 ">, sizeInc<%" PRIu64 ">",
                         growth.size, m_allocSize, growth.length, growth.increase);
    return false;
  }
  m_data = static_cast<char*>(data);
  m_allocSize = static_cast<std::uint32_t>(growth.size);
  m_terminated = m_terminated && !firstBuffer;
  m_record = m_field = m_nextField = nullptr;  // they pointed into the former buffer
  m_parser = CMyParser(m_data, kPairDelimiters);
  return true;
}

bool CTextBlock::FirstRecord() {
  m_record = m_terminated ? m_data : nullptr;
  return FirstField();
}

bool CTextBlock::NextRecord() {
  if (m_record == nullptr) return false;
  const char* const lineEnd = std::strchr(m_record, '\n');
  if (lineEnd == nullptr) return false;
  m_record = lineEnd + 1;
  return FirstField();
}

bool CTextBlock::FirstField() {
  m_field = m_record;
  m_nextField = nullptr;
  return m_field != nullptr && *m_field != '\0';
}

bool CTextBlock::NextField() {
  if (m_nextField == nullptr) GetCurrentField(nullptr);
  m_field = m_nextField;
  m_nextField = nullptr;
  return m_field != nullptr && *m_field != '\0';
}

bool CTextBlock::FindField(FID id) {
  if (!FirstField()) return false;
  while (GetCurrentFieldId() != id) {
    if (!NextField()) return false;
  }
  return true;
}

bool CTextBlock::GetCurrentField(CDataItem* item) {
  FID id = 0;
  return ReadPair(id, item);
}

FID CTextBlock::GetCurrentFieldId() {
  FID id = 0;
  return ReadPair(id, nullptr) ? id : FID{0};
}

/// Reads the identifier and the value under the cursor, the value into `item` unless that is null,
/// and notes where the next pair begins.
bool CTextBlock::ReadPair(FID& id, CDataItem* item) {
  m_nextField = nullptr;
  if (m_field == nullptr) return false;
  m_parser.MoveTo(m_field);
  char room[CMyParser::kFieldBufferSize];
  const std::string_view token = m_parser.Next(room);
  if (token.data() == nullptr) return false;
  id = IdOf(token);
  const std::string_view value = m_parser.Next(room);
  if (value.data() == nullptr) return false;
  if (item != nullptr && value == kMissingText) {
    item->SetError(id, kMissing);
  } else if (item != nullptr) {
    item->SetText(id, value.data(), value.size());
  }
  m_nextField = m_parser.GetInputPosition();
  return true;
}

/// The low 16 bits of what `atoi` makes of a token, which is a few digits as a rule.
FID CTextBlock::IdOf(std::string_view token) {
  constexpr std::size_t kFewDigits = 9;
  std::uint32_t number = 0;
  const auto take = [&number](char c) {
    number = number * 10 + static_cast<std::uint32_t>(c - '0');
    return c >= '0' && c <= '9';
  };
  if (token.size() <= kFewDigits && std::all_of(token.begin(), token.end(), take)) {
    return static_cast<FID>(number);
  }
  char text[CMyParser::kFieldBufferSize];
  text[token.copy(text, sizeof text - 1)] = '\0';
  return static_cast<FID>(service::text_to_int(text));
}

}  // namespace wqd
