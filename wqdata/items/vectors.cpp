// Vectors and blobs: one heap block that the item owns, which outlives a change to another type.

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include <wqdata/items/dataitem.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

constexpr std::uint32_t kMostElements = std::numeric_limits<int>::max();

/// A block that is used again is at most so many times as large as what it holds.
constexpr std::uint64_t kMostWaste = 4;

/// The bytes of an element of a vector or blob, 0 for any other type.
std::uint64_t element_width(int type) {
  switch (type) {
    case TYPE_VECTOR_DOUBLE: return sizeof(double);
    case TYPE_VECTOR_LONG:
    case TYPE_VECTOR_LPACK: return sizeof(std::int32_t);
    case TYPE_VECTOR_INT: return sizeof(std::int16_t);
    case TYPE_VECTOR_DATE: return sizeof(ZULDATE);
    case TYPE_VECTOR_TIME: return sizeof(ZULTIME);
    case TYPE_VECTOR_STRING:
    case TYPE_EMPTY: return 1;
    default: return 0;
  }
}

}  // namespace

CDataItem::CDataItem(void* data, int size) : CDataItem() { Set(data, size); }

/// Makes a copy of `count` elements the block: in the old one, where a caller lets it `reuse` that
/// and it fits well, or in a new one. The old block goes last, since `values` may lie in it.
bool CDataItem::StoreBlock(int type, const void* values, std::uint32_t count, bool reuse) {
  const std::uint64_t bytes = element_width(type) * count;
  if (count > kMostElements || (values == nullptr && count > 0)) return false;
  if (bytes > std::numeric_limits<std::size_t>::max()) return false;
  const bool fits =
      m_vector != nullptr && bytes <= m_vectorCapacity && bytes >= m_vectorCapacity / kMostWaste;
  void* block = m_vector;
  if (!reuse || !fits) block = new (std::nothrow) char[static_cast<std::size_t>(bytes)];
  if (block == nullptr) return false;
  if (bytes > 0) std::memmove(block, values, static_cast<std::size_t>(bytes));
  if (block != m_vector) ReplaceBlock(block, bytes);
  m_type = type;
  m_size = static_cast<int>(count);
  return true;
}

void CDataItem::ReplaceBlock(void* block, std::uint64_t capacity) {
  delete[] static_cast<char*>(m_vector);
  m_vector = block;
  m_vectorCapacity = capacity;
}

void CDataItem::SetVector(FID id, const double* values, std::uint32_t count) {
  StoreVector(id, TYPE_VECTOR_DOUBLE, values, count, 0, false);
}

void CDataItem::SetVector(FID id, const std::int32_t* values, std::uint32_t count) {
  StoreVector(id, TYPE_VECTOR_LONG, values, count, 0, false);
}

void CDataItem::SetVector(FID id, const std::int16_t* values, std::uint32_t count) {
  StoreVector(id, TYPE_VECTOR_INT, values, count, 0, false);
}

void CDataItem::SetVector(FID id, const std::int32_t* values, std::uint16_t baseCode,
                          std::uint32_t count) {
  StoreVector(id, TYPE_VECTOR_LPACK, values, count, baseCode, false);
}

void CDataItem::SetVector(FID id, const ZULDATE* values, std::uint32_t count) {
  StoreVector(id, TYPE_VECTOR_DATE, values, count, 0, false);
}

void CDataItem::SetVector(FID id, const ZULTIME* values, std::uint32_t count) {
  StoreVector(id, TYPE_VECTOR_TIME, values, count, 0, false);
}

void CDataItem::SetVector(FID id, const char* values, std::uint32_t size) {
  StoreVector(id, TYPE_VECTOR_STRING, values, size, 0, false);
}

bool CDataItem::SetVector(FID id, int type, const void* values, std::uint32_t count,
                          std::uint16_t baseCode) {
  const bool vector = element_width(type) != 0 && type != TYPE_EMPTY;
  return vector && StoreVector(id, type, values, count, baseCode, true);
}

bool CDataItem::StoreVector(FID id, int type, const void* values, std::uint32_t count,
                            std::uint16_t baseCode, bool reuse) {
  if (!StoreBlock(type, values, count, reuse)) return false;
  m_id = id;
  if (type == TYPE_VECTOR_LPACK) m_value.asPrice.Set(0.0, static_cast<std::int16_t>(baseCode));
  return true;
}

void CDataItem::Set(void* data, int size) {
  if (size > 0) StoreBlock(TYPE_EMPTY, data, static_cast<std::uint32_t>(size), false);
}

bool CDataItem::HoldsBlock() const { return element_width(m_type) != 0; }

void CDataItem::CopyBlock(const CDataItem& other) {
  const auto count = static_cast<std::uint32_t>(other.m_size);
  if (!StoreBlock(other.m_type, other.m_vector, count, false)) return;
  m_id = other.m_id;
  if (m_type == TYPE_VECTOR_LPACK) m_value = other.m_value;
}

/// Writes the strings of a string vector into the string buffer, quoted and joined by commas. The
/// last of them may lack its NUL.
const char* CDataItem::JoinStrings() const {
  const auto* at = static_cast<const char*>(m_vector);
  const char* const end = at + m_size;
  m_string[0] = '\0';
  if (at == end) return m_string;
  const auto ended = static_cast<std::uint64_t>(std::count(at, end, '\0'));
  const std::uint64_t strings = ended + (end[-1] == '\0' ? 0 : 1);
  const std::uint64_t room = static_cast<std::uint64_t>(m_size) + 3 * strings - 1;
  if (!ResizeStringBuffer(room)) return m_string;
  char* to = m_string;
  while (at != end) {
    const char* const stringEnd = std::find(at, end, '\0');
    if (to != m_string) *to++ = ',';
    *to++ = '"';
    to = std::copy(at, stringEnd, to);
    *to++ = '"';
    at = stringEnd == end ? end : stringEnd + 1;
  }
  *to = '\0';
  return m_string;
}

}  // namespace wqd
