#include <algorithm>
#include <array>

#include <wqdata/blocks/datablock.h>
#include <wqdata/service/bigzul3.h>
#include <wqdata/service/firstfields.h>
#include <wqdata/service/memory.h>
#include <wqdata/service/recordlib.h>

namespace wqd {
namespace {

using service::Bytes;
using service::FirstFields;
using service::load;

/// Where bytes are no block, and why; without a reason they are one.
struct Fault {
  std::size_t offset = 0;
  const char* reason = nullptr;
};

/// Takes the field at the front of `bytes`. Why it is at fault, or null.
const char* take_field(const service::FieldFormat& format, Bytes& bytes) {
  service::FieldView view;
  if (bytes.Left() == 0) return "a field is missing";
  if (!service::view_field(format, bytes, view)) return "a field does not fit";
  if (view.layout == nullptr) return "the type of a field is unknown";
  if (!service::holds_whole_strings(view)) return "the strings of a field are not as it says";
  bytes.Skip(view.size);
  return nullptr;
}

/// Takes the `count` fields of a record from the front of `bytes`, up to the first that is at
/// fault: why, or null. Each takes bytes, so that `count` alone keeps no loop going.
template <const service::FieldFormat& format>
const char* take_fields(Bytes& bytes, std::uint32_t count, FirstFields<format>& first) {
  std::uint32_t taken = 0;
  if (first.Match(bytes, count)) {
    bytes.Skip(first.size());
    taken = first.count();
  }
  for (; taken < count; ++taken) {
    const std::uint64_t size = service::common_field_size<format>(bytes);
    const char* const reason = size == 0 ? take_field(format, bytes) : nullptr;
    if (reason != nullptr) return reason;
    bytes.Skip(size);
  }
  return nullptr;
}

Fault zul3_fault(const std::uint8_t* data, std::size_t size) {
  if (size < service::kZul3HeaderSize) return {size, "the header is not whole"};
  if (load<std::uint32_t>(data + service::kZul3LengthAt) != size) {
    return {service::kZul3LengthAt, "the length is not the number of bytes"};
  }
  const auto records = load<std::uint16_t>(data + service::kZul3RecordCountAt);
  const auto fields = load<std::uint16_t>(data + service::kZul3FieldCountAt);
  if ((records == 0) != (fields == 0)) {
    return {service::kZul3RecordCountAt, "a record has not been finished"};
  }
  Bytes left(data + service::kZul3HeaderSize, size - service::kZul3HeaderSize);
  FirstFields<service::kZul3Fields> first;
  const char* reason = nullptr;
  for (std::uint32_t i = 0; i < records && reason == nullptr; ++i) {
    left.AskAhead();
    reason = take_fields(left, fields, first);
  }
  if (reason == nullptr && left.Left() > 0) reason = "bytes lie behind the last field";
  return {size - left.Left(), reason};
}

/// Takes the record at the front of `block`.
const char* take_record(Bytes& block, FirstFields<service::kZul4Fields>& first) {
  Bytes record = service::ZUL4_record(block);
  if (record.Left() == 0) return "a record does not fit";
  const auto fields = load<std::uint16_t>(record.At() + service::kZul4FieldCountAt);
  const std::size_t whole = record.Left();
  record.Skip(service::kZul4RecordHead);
  const char* reason = take_fields(record, fields, first);
  if (reason == nullptr && record.Left() > 0) reason = "a record has bytes behind its last field";
  block.Skip(whole - record.Left());
  return reason;
}

Fault zul4_fault(const std::uint8_t* data, std::size_t size) {
  if (size < service::kZul4HeaderSize) return {size, "the header is not whole"};
  if (load<std::uint32_t>(data + service::kZul4LengthAt) != size) {
    return {service::kZul4LengthAt, "the length is not the number of bytes"};
  }
  Bytes left(data + service::kZul4HeaderSize, size - service::kZul4HeaderSize);
  FirstFields<service::kZul4Fields> first;
  const char* reason = nullptr;
  for (auto records = load<std::uint16_t>(data + service::kZul4RecordCountAt);
       records > 0 && reason == nullptr; --records) {
    reason = take_record(left, first);
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
  if (size > service::kLargestBlock) return {service::kLargestBlock, "no block is as large"};
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
}  // namespace wqd

bool ValidateData(cf_id format, const void* data, std::size_t size, std::size_t* offset,
                  const char** reason) {
  const wqd::Fault fault = wqd::fault_of(format, static_cast<const std::uint8_t*>(data), size);
  if (fault.reason == nullptr) return true;
  if (offset != nullptr) *offset = fault.offset;
  if (reason != nullptr) *reason = fault.reason;
  return false;
}
