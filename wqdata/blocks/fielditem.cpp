#include <algorithm>
#include <cstring>

#include <wqdata/blocks/fielditem.h>
#include <wqdata/items/missing.h>

namespace wqd {
namespace {

template <typename Value>
Value element(const service::FieldView& view) {
  return service::load<Value>(view.elements);
}

/// A text tells in its item alone whether there was memory for it.
bool fill_text(const service::FieldView& view, CDataItem& item) {
  const auto* const text = reinterpret_cast<const char*>(view.elements);
  item.Set(view.id, text, static_cast<int>(view.count));
  if (item.GetId() != view.id) return false;
  if (is_missing(text)) return item.IsNull();
  return item.GetType() == TYPE_STRING && item.GetSize() - 1 == static_cast<int>(view.count) &&
         std::memcmp(item.GetString(), text, view.count) == 0;
}

bool fill_vector(const service::FieldView& view, CDataItem& item) {
  if (!item.SetVector(view.id, view.type, view.elements, view.count, view.baseCode)) return false;
  if constexpr (service::kSwapped) {
    service::move_elements_of(view.type, item.GetVectorPtr(), view.elements, view.count);
  }
  return true;
}

void fill_scalar(const service::FieldView& view, CDataItem& item) {
  switch (view.type) {
    case TYPE_DOUBLE: return item.Set(view.id, element<double>(view));
    case TYPE_LONG: return item.Set(view.id, element<std::int32_t>(view));
    case TYPE_INT: return item.Set(view.id, element<std::int16_t>(view));
    case TYPE_DATE: return item.Set(view.id, CZulDate(element<ZULDATE>(view)));
    case TYPE_TIME: return item.Set(view.id, CZulTime(element<ZULTIME>(view)));
    case TYPE_ERROR: return item.SetError(view.id, element<std::int16_t>(view));
    case TYPE_LPACK:
      return item.Set(view.id, CFixPtNum(element<std::int32_t>(view), view.baseCode));
    default: return item.SetError(view.id, kMissing);
  }
}

}  // namespace

bool fill_item(const service::FieldView& view, CDataItem& item) {
  if (view.layout != nullptr && view.type == TYPE_STRING) return fill_text(view, item);
  if (view.layout != nullptr && view.layout->countAt != 0) return fill_vector(view, item);
  fill_scalar(view, item);
  return view.layout != nullptr;
}

std::uint32_t count_strings(const void* strings, std::uint32_t bytes) {
  const auto* const begin = static_cast<const char*>(strings);
  if (bytes == 0) return 0;
  const auto ended = std::count(begin, begin + bytes, '\0');
  return static_cast<std::uint32_t>(ended) + (begin[bytes - 1] == '\0' ? 0 : 1);
}

}  // namespace wqd
