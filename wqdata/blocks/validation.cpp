#include <algorithm>

#include <wqdata/blocks/datablock.h>
#include <wqdata/service/bigzul3.h>
#include <wqdata/service/memory.h>
#include <wqdata/service/recordlib.h>

namespace {

using wqd::service::Bytes;
using wqd::service::FieldFormat;
using wqd::service::FieldView;
using wqd::service::kZul3FieldCountAt;
using wqd::service::kZul3HeaderSize;
using wqd::service::kZul3LengthAt;
using wqd::service::kZul3RecordCountAt;
using wqd::service::kZul4FieldCountAt;
using wqd::service::kZul4HeaderSize;
using wqd::service::kZul4LengthAt;
using wqd::service::kZul4RecordCountAt;
using wqd::service::kZul4RecordHead;
using wqd::service::load;

/// Where bytes are no block, and why; without a reason they are one.
struct Fault {
  std::size_t offset = 0;
  const char* reason = nullptr;
};

/// Takes `count` fields from the front of `bytes`, up to the first that is at fault: why, or null.
/// Each takes bytes, so that `count` alone keeps no loop going.
const char* take_fields(const FieldFormat& format, Bytes& bytes, std::uint64_t count) {
  for (; count > 0; --count) {
    FieldView view;
    if (bytes.Left() == 0) return "a field is missing";
    if (!wqd::service::view_field(format, bytes, view)) return "a field does not fit";
    if (view.layout == nullptr) return "the type of a field is unknown";
    if (!wqd::service::holds_whole_strings(view))
      return "the strings of a field are not as it says";
    bytes.Skip(view.size);
  }
  return nullptr;
}

Fault zul3_fault(const std::uint8_t* data, std::size_t size) {
  if (size < kZul3HeaderSize) return {size, "the header is not whole"};
  if (load<std::uint32_t>(data + kZul3LengthAt) != size) {
    return {kZul3LengthAt, "the length is not the number of bytes"};
  }
  const auto records = load<std::uint16_t>(data + kZul3RecordCountAt);
  const auto fields = load<std::uint16_t>(data + kZul3FieldCountAt);
  if ((records == 0) != (fields == 0)) {
    return {kZul3RecordCountAt, "a record has not been finished"};
  }
  Bytes left(data + kZul3HeaderSize, size - kZul3HeaderSize);
  const char* reason =
      take_fields(wqd::service::kZul3Fields, left, std::uint64_t{records} * fields);
  if (reason == nullptr && left.Left() > 0) reason = "bytes lie behind the last field";
  return {size - left.Left(), reason};
}

/// Takes the record at the front of `block`.
const char* take_record(Bytes& block) {
  Bytes record = wqd::service::ZUL4_record(block);
  if (record.Left() == 0) return "a record does not fit";
  const auto fields = load<std::uint16_t>(record.At() + kZul4FieldCountAt);
  const std::size_t whole = record.Left();
  record.Skip(kZul4RecordHead);
  const char* reason = take_fields(wqd::service::kZul4Fields, record, fields);
  if (reason == nullptr && record.Left() > 0) reason = "a record has bytes behind its last field";
  block.Skip(whole - record.Left());
  return reason;
}

Fault zul4_fault(const std::uint8_t* data, std::size_t size) {
  if (size < kZul4HeaderSize) return {size, "the header is not whole"};
  if (load<std::uint32_t>(data + kZul4LengthAt) != size) {
    return {kZul4LengthAt, "the length is not the number of bytes"};
  }
  Bytes left(data + kZul4HeaderSize, size - kZul4HeaderSize);
  const char* reason = nullptr;
  for (auto records = load<std::uint16_t>(data + kZul4RecordCountAt);
       records > 0 && reason == nullptr; --records) {
    reason = take_record(left);
  }
  if (reason == nullptr && left.Left() > 0) reason = "bytes lie behind the last record";
  return {size - left.Left(), reason};
}

/// `Close` may have ended the text more than once.
Fault text_fault(const std::uint8_t* data, std::size_t size) {
  const std::uint8_t* const end = data + size;
  const std::uint8_t* const nul = std::find(data, end, 0);
  if (nul == end) return {size, "the text has no end"};
  const std::uint8_t* const more = std::find_if(nul, end, [](std::uint8_t c) { return c != 0; });
  if (more == end) return {};
  return {static_cast<std::size_t>(more - data), "bytes lie behind the end of the text"};
}

Fault fault_of(cf_id format, const std::uint8_t* data, std::size_t size) {
  if (size > wqd::service::kLargestBlock)
    return {wqd::service::kLargestBlock, "no block is as large"};
  if (data == nullptr && size > 0) return {0, "there are no bytes"};
  switch (format) {
    case TEXT:
    case CSV: return text_fault(data, size);
    case ZUL3: return zul3_fault(data, size);
    case ZUL4: return zul4_fault(data, size);
    case Btrieve: return {};
    default: return {0, "there are no blocks of the format"};
  }
}

}  // namespace

bool ValidateData(cf_id format, const void* data, std::size_t size, std::size_t* offset,
                  const char** reason) {
  const Fault fault = fault_of(format, static_cast<const std::uint8_t*>(data), size);
  if (fault.reason == nullptr) return true;
  if (offset != nullptr) *offset = fault.offset;
  if (reason != nullptr) *reason = fault.reason;
  return false;
}
