#include <wqdata/blocks/fielditem.h>
#include <wqdata/service/operations.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

template <typename Value>
Value element(const service::FieldView& view) {
  return service::load<Value>(view.elements);
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

bool fill_known(const service::FieldView& view, CDataItem& item) {
  if (service::is_vector(view.type)) return fill_vector(view, item);
  if (view.type == TYPE_STRING) {
    return item.SetText(view.id, reinterpret_cast<const char*>(view.elements), view.count);
  }
  fill_scalar(view, item);
  return true;
}

}  // namespace

bool fill_item(const service::FieldView& view, CDataItem* item, const char* reader) {
  if (view.layout != nullptr) return item == nullptr || fill_known(view, *item);
  if (item == nullptr) return false;
  item->SetError(view.id, kMissing);
  service::log_error("Unhandled type<%d> for fid<%d> inside %s::GetCurrentField", view.type,
                     int{view.id}, reader);
  return false;
}

}  // namespace wqd
