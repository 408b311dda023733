#include <wqdata/blocks/fielditem.h>
#include <wqdata/service/operations.h>
#include <wqdata/values/missing.h>

namespace wqd {
namespace {

bool fill_vector(const service::FieldView& view, CDataItem& item) {
  if (!item.SetVector(view.id, view.type, view.elements, view.count, view.baseCode)) return false;
  if constexpr (service::kSwapped) {
    service::move_elements_of(view.type, item.GetVectorPtr(), view.elements, view.count);
  }
  return true;
}

bool fill(const service::FieldView& view, CDataItem& item) {
  if (service::is_vector(view.type)) return fill_vector(view, item);
  item.SetError(view.id, kMissing);  // the field of no value
  return true;
}

}  // namespace

std::uint32_t read_any_field(const service::FieldFormat& format, service::Bytes bytes,
                             CDataItem* item, const char* reader) {
  service::FieldView view;
  if (!service::view_field(format, bytes, view)) return 0;
  const auto size = static_cast<std::uint32_t>(view.size);
  if (view.layout != nullptr) return item == nullptr || fill(view, *item) ? size : 0;
  if (item == nullptr) return 0;
  item->SetError(view.id, kMissing);
  service::log_error("Unhandled type<%d> for fid<%d> inside %s::GetCurrentField", view.type,
                     int{view.id}, reader);
  return 0;
}

}  // namespace wqd
