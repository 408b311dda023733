#include <cstring>

#include <wqdata/blocks/btrieveblock.h>
#include <wqdata/service/memory.h>

namespace wqd {

CBtrieveBlock::CBtrieveBlock() { m_format = Btrieve; }

CBtrieveBlock::~CBtrieveBlock() { service::release(m_bytes); }

void* CBtrieveBlock::GetData() { return m_bytes; }

int CBtrieveBlock::GetDataSize() { return static_cast<int>(m_length); }

int CBtrieveBlock::GetRecordCount() { return 0; }

int CBtrieveBlock::GetFieldCount() { return 0; }

bool CBtrieveBlock::StartRecord() { return false; }

bool CBtrieveBlock::EndRecord() { return false; }

bool CBtrieveBlock::Add(CDataItem&) { return false; }

bool CBtrieveBlock::Add(FID, const char*) { return false; }

bool CBtrieveBlock::AddBlob(FID, const void* data, std::uint32_t size) {
  if (size == 0) return true;
  if (data == nullptr) return false;
  const std::uint64_t length = std::uint64_t{m_length} + size;
  void* const moved = service::grown(m_bytes, m_reserved, length, &data);
  if (moved == nullptr) return false;
  m_bytes = static_cast<std::uint8_t*>(moved);
  std::memcpy(m_bytes + m_length, data, size);
  m_length = static_cast<std::uint32_t>(length);
  return true;
}

}  // namespace wqd
