#include <array>
#include <new>

#include <wqdata/blocks/btrieveblock.h>
#include <wqdata/blocks/datablock.h>
#include <wqdata/blocks/textblock.h>
#include <wqdata/blocks/zul3block.h>
#include <wqdata/blocks/zul4block.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/operations.h>
#include <wqdata/service/text.h>

namespace {

constexpr std::array<const char*, 7> kFormatNames = {"INVALID", "TEXT", "CSV",    "NOTXLTABLE",
                                                     "ZUL3",    "ZUL4", "Btrieve"};

}  // namespace

cf_id CfId(const char* name) {
  if (name == nullptr) {
    wqd::service::log_message(wqd::service::kLevelRejected, "CfID: null format");
    return INVALID;
  }
  for (std::size_t format = TEXT; format < kFormatNames.size(); ++format) {
    if (wqd::service::equal_ignoring_case(kFormatNames[format], name)) {
      return static_cast<cf_id>(format);
    }
  }
  wqd::service::log_message(wqd::service::kLevelRejected, "CfID: Invalid format '%s'", name);
  return INVALID;
}

const char* CfName(cf_id format) {
  const auto index = static_cast<std::size_t>(format);
  return index < kFormatNames.size() ? kFormatNames[index] : kFormatNames[INVALID];
}

namespace wqd {

CDeletable::~CDeletable() = default;

void CDeletable::DeleteThis() { delete this; }

std::atomic<std::int32_t> CDataBlock::_instances{0};

CDataBlock::~CDataBlock() { --_instances; }

int CDataBlock::GetVectorSize() { return 0; }

cf_id CDataBlock::GetFormat() { return m_format; }

bool CDataBlock::IsReadOnly() { return m_readOnly; }

bool CDataBlock::Add(FID id, const ZULTIME& value) {
  CDataItem item(id, value);
  return Add(item);
}

bool CDataBlock::Add(FID id, const CZulTime& value) { return Add(id, static_cast<ZULTIME>(value)); }

bool CDataBlock::Add(FID id, const ZULDATE& value) {
  CDataItem item(id, value);
  return Add(item);
}

bool CDataBlock::Add(FID id, const CZulDate& value) { return Add(id, static_cast<ZULDATE>(value)); }

bool CDataBlock::Add(FID id, const CFixPtNum& value) {
  CDataItem item(id, value);
  return Add(item);
}

bool CDataBlock::Add(FID id, double value) {
  CDataItem item(id, value);
  return Add(item);
}

bool CDataBlock::Add(FID id, std::int32_t value) {
  CDataItem item(id, value);
  return Add(item);
}

bool CDataBlock::Add(FID id, std::int16_t value) {
  CDataItem item(id, value, false);
  return Add(item);
}

bool CDataBlock::Close() { return true; }

bool CDataBlock::AddError(FID id, std::int16_t error) {
  CDataItem item(id, error, true);
  return Add(item);
}

bool CDataBlock::AddBlob(FID, const void*, std::uint32_t) { return false; }

bool CDataBlock::AddShortVector(FID, const std::int16_t*, std::uint32_t) { return false; }

bool CDataBlock::AddLongVector(FID, const std::int32_t*, std::uint32_t) { return false; }

bool CDataBlock::AddDoubleVector(FID, const double*, std::uint32_t) { return false; }

bool CDataBlock::AddDateVector(FID, const ZULDATE*, std::uint32_t) { return false; }

bool CDataBlock::AddTimeVector(FID, const ZULTIME*, std::uint32_t) { return false; }

bool CDataBlock::AddStringVector(FID, const char*, std::uint32_t, std::uint32_t) { return false; }

bool CDataBlock::AddPriceVector(FID, const std::int32_t*, std::int16_t, std::uint32_t) {
  return false;
}

bool CDataBlock::FirstRecord() { return false; }

bool CDataBlock::NextRecord() { return false; }

bool CDataBlock::FirstField() { return false; }

bool CDataBlock::NextField() { return false; }

bool CDataBlock::FindField(FID) { return false; }

bool CDataBlock::GetField(FID id, CDataItem* item) {
  return FindField(id) && GetCurrentField(item);
}

bool CDataBlock::GetCurrentField(CDataItem*) { return false; }

FID CDataBlock::GetCurrentFieldId() { return 0; }

int CDataBlock::GetCurrentFieldType() { return 0; }

namespace {

/// Counts what a factory function is about to return.
CDataBlock* counted(CDataBlock* block) {
  if (block != nullptr) ++CDataBlock::_instances;
  return block;
}

/// A block with a copy of the bytes; null when there is no memory for either.
CDataBlock* copied(const void* data, int size) {
  DataBlockPtr block(counted(new (std::nothrow) CBtrieveBlock()));
  const std::uint32_t bytes = data == nullptr || size < 0 ? 0 : static_cast<std::uint32_t>(size);
  if (block == nullptr || !block->AddBlob(FID{0}, data, bytes)) return nullptr;
  return block.release();
}

}  // namespace

CDataBlock* CDataBlock::NewDataBlock(cf_id format) {
  switch (format) {
    case TEXT:
    case CSV: return counted(new (std::nothrow) CTextBlock(format));
    case ZUL3: return counted(new (std::nothrow) CZul3Block());
    case ZUL4: return counted(new (std::nothrow) CZul4Block());
    case Btrieve: return counted(new (std::nothrow) CBtrieveBlock());
    default: return nullptr;
  }
}

CDataBlock* CDataBlock::NewDataBlock(cf_id format, void* data, int size) {
  switch (format) {
    case TEXT:
    case CSV: return counted(new (std::nothrow) CTextBlock(data));
    case ZUL3: return counted(new (std::nothrow) CZul3Block(data, size));
    case ZUL4: return counted(new (std::nothrow) CZul4Block(data, size));
    case Btrieve: return copied(data, size);
    default: return nullptr;
  }
}

CDataBlock* CDataBlock::FixedSizeDataBlock(cf_id format, void* buffer, int size) {
  if (format != ZUL4) return nullptr;
  return counted(new (std::nothrow) CZul4Block(CZul4Block::Fixed{buffer, size}));
}

void CDataBlock::FreeDataBlock(CDataBlock* block) { delete block; }

}  // namespace wqd
