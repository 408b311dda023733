#include <array>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include <wqdata/items/dataitem.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

/// With its NUL it still has a size that an int can say.
constexpr std::size_t kLongestText = std::numeric_limits<int>::max() - 1;

std::int16_t low_16_bits(std::int32_t value) { return static_cast<std::int16_t>(value); }

}  // namespace

CDataItem::CDataItem() {
  Initialize();
  SetError(FID{0}, kNeverSet);
}

CDataItem::CDataItem(const CDataItem& other) : CDataItem() { Copy(other); }

CDataItem& CDataItem::operator=(const CDataItem& other) {
  Copy(other);
  return *this;
}

CDataItem::CDataItem(CDataItem&& other) noexcept : CDataItem() { TakeOver(other); }

CDataItem& CDataItem::operator=(CDataItem&& other) noexcept {
  if (this != &other) TakeOver(other);
  return *this;
}

CDataItem::CDataItem(FID id, std::int32_t value) {
  Initialize();
  Set(id, value);
}

CDataItem::CDataItem(FID id, double value) {
  Initialize();
  Set(id, value);
}

CDataItem::CDataItem(FID id, std::int16_t value, bool isError) {
  Initialize();
  if (isError) {
    SetError(id, value);
  } else {
    Set(id, value);
  }
}

CDataItem::CDataItem(FID id, const char* text, int length) {
  Initialize();
  SetError(id, kNeverSet);
  Set(id, text, length);
}

CDataItem::~CDataItem() {
  if (OwnsStringBuffer()) delete[] m_string;
  ReplaceBlock(nullptr, 0);
}

/// The string buffer stays as it is: constructors fill in no more than they must.
void CDataItem::Initialize() {
  m_vector = nullptr;
  m_vectorCapacity = 0;
  m_string = m_buffer;
  m_capacity = kEmbeddedCapacity;
}

bool CDataItem::OwnsStringBuffer() const { return m_string != m_buffer; }

void CDataItem::ReplaceStringBuffer(char* buffer, std::uint32_t capacity) const {
  if (OwnsStringBuffer()) delete[] m_string;
  m_string = buffer;
  m_capacity = capacity;
}

/// Makes room for more than `size` bytes, twice that when the buffer has to move; what it held is
/// not kept. False, with the buffer as it was, when there is no memory.
bool CDataItem::ResizeStringBuffer(std::uint64_t size) const {
  if (size < m_capacity) return true;
  if (size > kLongestText) return false;
  char* const larger = new (std::nothrow) char[static_cast<std::size_t>(2 * size)];
  if (larger == nullptr) return false;
  ReplaceStringBuffer(larger, static_cast<std::uint32_t>(2 * size));
  return true;
}

void CDataItem::Set(FID id, const char* text, int length) {
  if (text == nullptr) return SetError(id, kMissing);
  SetText(id, text, length < 0 ? std::strlen(text) : static_cast<std::size_t>(length));
}

bool CDataItem::SetText(FID id, const char* text, std::size_t length, std::size_t readable) {
  using ShortText = std::array<char, 8>;
  static_assert(kEmbeddedCapacity > sizeof(ShortText));
  if (text == nullptr || is_missing(text)) {
    SetError(id, kMissing);
    return true;
  }
  if (length > kLongestText) return false;
  if (length <= sizeof(ShortText) && readable >= sizeof(ShortText)) {
    ShortText whole;
    std::memcpy(whole.data(), text, sizeof whole);
    std::memcpy(m_string, whole.data(), sizeof whole);
  } else if (length < m_capacity) {
    std::memmove(m_string, text, length);
  } else {
    char* const larger = new (std::nothrow) char[2 * length];
    if (larger == nullptr) return false;
    std::memcpy(larger, text, length);  // before the old buffer goes: `text` may lie in it
    ReplaceStringBuffer(larger, static_cast<std::uint32_t>(2 * length));
  }
  m_string[length] = '\0';
  SetHeader(id, TYPE_STRING, static_cast<int>(length) + 1);
  return true;
}

void CDataItem::Copy(const CDataItem& other) {
  if (this == &other) return;
  if (other.m_type == TYPE_STRING) return Set(other.m_id, other.m_string, other.m_size - 1);
  if (other.HoldsBlock()) return CopyBlock(other);
  TakeHeader(other);
  m_value = other.m_value;
}

void CDataItem::TakeHeader(const CDataItem& other) {
  SetHeader(other.m_id, other.m_type, other.m_size);
}

/// A block changes hands. A text that fits is copied, so that a large buffer of this item stays in
/// use; any other lies in a larger buffer, which changes hands.
void CDataItem::TakeOver(CDataItem& other) {
  const bool fits = other.m_type != TYPE_STRING || is_missing(other.m_string) ||
                    static_cast<std::uint32_t>(other.m_size) <= m_capacity;
  if (other.HoldsBlock()) {
    ReplaceBlock(std::exchange(other.m_vector, nullptr), std::exchange(other.m_vectorCapacity, 0));
    TakeHeader(other);
    m_value = other.m_value;
  } else if (fits) {
    Copy(other);
  } else {
    ReplaceStringBuffer(std::exchange(other.m_string, other.m_buffer),
                        std::exchange(other.m_capacity, kEmbeddedCapacity));
    TakeHeader(other);
  }
  other.SetError(FID{0}, kNeverSet);
}

unsigned char CDataItem::GetByte() const {
  if (m_type == TYPE_STRING) return static_cast<unsigned char>(m_string[0]);
  if (m_type == TYPE_INT) return static_cast<unsigned char>(m_value.asShort);
  return 0;
}

std::int16_t CDataItem::ConvertToShort() const {
  switch (m_type) {
    case TYPE_LONG: return low_16_bits(m_value.asLong);
    case TYPE_STRING: return low_16_bits(service::text_to_int(m_string));
    default: return MISSING_SHORT;
  }
}

std::int32_t CDataItem::ConvertToLong() const {
  switch (m_type) {
    case TYPE_INT: return m_value.asShort;
    case TYPE_STRING: return service::text_to_int(m_string);
    default: return MISSING_LONG;
  }
}

double CDataItem::ConvertToFloat() const {
  switch (m_type) {
    case TYPE_LONG: return m_value.asLong;
    case TYPE_INT: return m_value.asShort;
    case TYPE_LPACK: return m_value.asPrice;
    case TYPE_STRING: {
      double value = 0.0;
      static_assert(kEmbeddedCapacity >= service::kWholeNumberRoom);
      const auto length = static_cast<std::size_t>(m_size) - 1;
      if (service::read_whole_number(m_string, length, value)) return value;
      const bool fraction = std::strpbrk(m_string, "/^") != nullptr;
      return fraction ? service::fraction_to_double(m_string) : service::text_to_double(m_string);
    }
    default: return MISSING_DOUBLE;
  }
}

const char* CDataItem::ConvertToString() const {
  if (m_type == TYPE_VECTOR_STRING) return JoinStrings();
  m_string[0] = '\0';
  Print(m_string, kEmbeddedCapacity);
  return m_string;
}

int CDataItem::Print(char* buffer, int size) const {
  switch (m_type) {
    case TYPE_DOUBLE: {
      service::NumberText room;
      return service::put_text(service::fixed_text(m_value.asDouble, room), buffer, size);
    }
    case TYPE_LONG: return service::put_decimal(m_value.asLong, buffer, size);
    case TYPE_INT: return service::put_decimal(m_value.asShort, buffer, size);
    case TYPE_LPACK: return m_value.asPrice.Print(buffer, size);
    case TYPE_DATE: return CZulDate(m_value.asDate).Print(buffer, size);
    case TYPE_TIME: return CZulTime(m_value.asTime).Print(buffer, size);
    case TYPE_STRING: return service::put_text(m_string, buffer, size);
    case TYPE_ERROR: return service::put_text(kMissingText, buffer, size);
    default: return 0;
  }
}

}  // namespace wqd
