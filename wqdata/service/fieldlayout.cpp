#include <algorithm>
#include <iterator>

#include <wqdata/service/fieldlayout.h>

namespace wqd::service {
namespace {

constexpr std::uint64_t kTextEnd = 1;  // the NUL behind a text

std::uint64_t size_of(const FieldLayout& layout, std::uint64_t count) {
  const std::uint64_t end = layout.type == TYPE_STRING ? kTextEnd : 0;
  return layout.elementsAt + layout.width * count + end;
}

/// Writes a count or a base code. Behind the base code of a wide format there are two bytes of
/// zero, so that all words between the head and the elements are of one width.
void store_word(const FieldFormat& format, std::uint8_t* at, std::uint32_t word) {
  if (format.wideCounts) {
    store(at, word);
  } else {
    store(at, static_cast<std::uint16_t>(word));
  }
}

std::uint32_t load_word(const FieldFormat& format, const std::uint8_t* at) {
  return format.wideCounts ? load<std::uint32_t>(at) : load<std::uint16_t>(at);
}

bool are_whole_strings(const void* elements, std::uint32_t size, std::uint32_t strings) {
  if (elements == nullptr || size == 0) return size == 0 && strings == 0;
  const bool ended = static_cast<const char*>(elements)[size - 1] == '\0';
  return ended && count_strings(elements, size) == strings;
}

}  // namespace

std::uint64_t vector_field_size(const FieldFormat& format, const VectorValue& value) {
  const FieldLayout& layout = *find_layout(format, value.type);
  const std::uint32_t mostCounted = format.wideCounts ? UINT32_MAX : UINT16_MAX;
  if (value.count > mostCounted) return 0;
  if (value.elements == nullptr && value.count > 0) return 0;
  if (layout.stringsAt != 0 && !are_whole_strings(value.elements, value.count, value.strings)) {
    return 0;
  }
  return size_of(layout, value.count);
}

void write_vector_field(const FieldFormat& format, const VectorValue& value, std::uint8_t* at) {
  const FieldLayout& layout = *find_layout(format, value.type);
  move_elements_of(value.type, at + layout.elementsAt, value.elements, value.count);
  write_head(at, value.type, value.id);
  store_word(format, at + layout.countAt, value.count);
  if (layout.baseCodeAt != 0) store_word(format, at + layout.baseCodeAt, value.baseCode);
  if (layout.stringsAt != 0) store_word(format, at + layout.stringsAt, value.strings);
}

bool view_field(const FieldFormat& format, Bytes bytes, FieldView& view) {
  if (bytes.Left() < kFieldHead) return false;
  const std::uint8_t* const at = bytes.At();
  view = {};
  view.type = load<std::uint16_t>(at);
  view.id = load<FID>(at + sizeof(std::uint16_t));
  view.layout = find_layout(format, view.type);
  if (view.layout == nullptr) return true;
  const FieldLayout& layout = *view.layout;
  if (bytes.Left() < layout.elementsAt) return false;
  view.elements = at + layout.elementsAt;
  view.count = 1;
  if (view.type == TYPE_STRING) {
    if (!measure_text(format, bytes, view.count)) return false;
  } else if (layout.countAt != 0) {
    view.count = load_word(format, at + layout.countAt);
  }
  view.baseCode = layout.baseCodeAt != 0 ? load<std::uint16_t>(at + layout.baseCodeAt) : 0;
  view.strings = layout.stringsAt != 0 ? load_word(format, at + layout.stringsAt) : 0;
  view.size = size_of(layout, view.count);
  return view.size <= bytes.Left();
}

std::uint64_t viewed_field_size(const FieldFormat& format, Bytes bytes) {
  FieldView view;
  return view_field(format, bytes, view) ? view.size : 0;
}

bool holds_whole_strings(const FieldView& view) {
  return view.layout == nullptr || view.layout->stringsAt == 0 ||
         are_whole_strings(view.elements, view.count, view.strings);
}

std::uint32_t count_strings(const void* strings, std::uint32_t bytes) {
  const auto* const begin = static_cast<const char*>(strings);
  if (bytes == 0) return 0;
  const auto ended = std::count(begin, begin + bytes, '\0');
  return static_cast<std::uint32_t>(ended) + (begin[bytes - 1] == '\0' ? 0 : 1);
}

std::uint32_t vector_size(const FieldView& view) {
  if (view.layout == nullptr || !is_vector(view.type)) return 0;
  return view.layout->stringsAt != 0 ? count_strings(view.elements, view.count) : view.count;
}

void move_elements_of(int type, void* to, const void* from, std::size_t count) {
  switch (type) {
    case TYPE_DOUBLE:
    case TYPE_VECTOR_DOUBLE: return move_elements<double>(to, from, count);
    case TYPE_INT:
    case TYPE_ERROR:
    case TYPE_VECTOR_INT: return move_elements<std::int16_t>(to, from, count);
    case TYPE_DATE:
    case TYPE_VECTOR_DATE: return move_elements<ZULDATE>(to, from, count);
    case TYPE_TIME:
    case TYPE_VECTOR_TIME: return move_elements<ZULTIME>(to, from, count);
    case TYPE_STRING:
    case TYPE_VECTOR_STRING: return move_elements<char>(to, from, count);
    default: return move_elements<std::int32_t>(to, from, count);
  }
}

}  // namespace wqd::service
