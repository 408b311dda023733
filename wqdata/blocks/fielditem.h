/// Between the fields of the binary formats and items.
#ifndef WQDATA_BLOCKS_FIELDITEM_H_
#define WQDATA_BLOCKS_FIELDITEM_H_

#include <wqdata/items/dataitem.h>
#include <wqdata/service/fieldlayout.h>

namespace wqd {

/// What a time becomes on its way through `CZulTime`, in an item as in a record: its minutes and
/// seconds together. Mostly that is the time as it was, without a division.
inline ZULTIME brought_together(const ZULTIME& time) {
  return time.seconds < 60 ? time : ZULTIME(CZulTime(time));
}

/// Reads a field of any kind but those of a fixed size and texts, which `read_other_field` has
/// left.
std::uint32_t read_any_field(const service::FieldFormat& format, service::Bytes bytes,
                             CDataItem* item, const char* reader);

/// Sets an item from a field of a fixed size by `set`, which is given the element. The type is
/// known when the code is compiled, as in `write_fixed_field`.
template <const service::FieldFormat& format, int type, typename Element, typename Set>
std::uint32_t read_fixed_field(service::Bytes bytes, Set set) {
  constexpr service::FieldLayout layout = format.layouts[type];
  static_assert(layout.fixedSize == layout.elementsAt + sizeof(Element));
  if (bytes.Left() < layout.fixedSize) return 0;
  set(service::load<Element>(bytes.At() + layout.elementsAt));
  return layout.fixedSize;
}

template <const service::FieldFormat& format>
std::uint32_t read_price(service::Bytes bytes, CDataItem& item) {
  const auto id = service::load<FID>(bytes.At() + sizeof(std::uint16_t));
  return read_fixed_field<format, TYPE_LPACK, std::int32_t>(bytes, [&](std::int32_t price) {
    constexpr std::size_t kBaseCodeAt = format.layouts[TYPE_LPACK].baseCodeAt;
    item.SetPrice(id, price, service::load<std::uint16_t>(bytes.At() + kBaseCodeAt));
  });
}

template <const service::FieldFormat& format>
[[gnu::always_inline]] inline std::uint32_t read_text(service::Bytes bytes, CDataItem& item) {
  std::uint32_t length = 0;
  if (!service::measure_text(format, bytes, length)) return 0;
  const auto id = service::load<FID>(bytes.At() + sizeof(std::uint16_t));
  constexpr std::size_t kTextAt = format.layouts[TYPE_STRING].elementsAt;
  const auto* const text = reinterpret_cast<const char*>(bytes.At() + kTextAt);
  if (!item.SetText(id, text, length, bytes.Left() - kTextAt)) return 0;
  return static_cast<std::uint32_t>(service::text_field_size<format>(length));
}

/// Reads the field at the front of `bytes` into `item`, unless it is null, when it is a number, a
/// date, a time or an error: its size, or 0, and all other fields are for `read_other_field`. Both
/// go through the item's own `Set`, so that markers become error items. No function is called from
/// here, which spares the caller to save registers for each field.
template <const service::FieldFormat& format>
[[gnu::always_inline]] inline std::uint32_t read_value(service::Bytes bytes, CDataItem* item) {
  if (item == nullptr || bytes.Left() < service::kFieldHead) return 0;
  const auto id = service::load<FID>(bytes.At() + sizeof(std::uint16_t));
  const auto set = [item, id](auto value) { item->Set(id, value); };
  const auto type = service::load<std::uint16_t>(bytes.At());
  switch (type) {
    case TYPE_DOUBLE: return read_fixed_field<format, TYPE_DOUBLE, double>(bytes, set);
    case TYPE_LONG: return read_fixed_field<format, TYPE_LONG, std::int32_t>(bytes, set);
    case TYPE_INT: return read_fixed_field<format, TYPE_INT, std::int16_t>(bytes, set);
    case TYPE_DATE:
      return read_fixed_field<format, TYPE_DATE, ZULDATE>(
          bytes, [set](ZULDATE date) { set(CZulDate(date)); });
    case TYPE_TIME:
      return read_fixed_field<format, TYPE_TIME, ZULTIME>(
          bytes, [set](ZULTIME time) { set(brought_together(time)); });
    default: break;  // a case far from the others would cost all of them more tests
  }
  if (type != TYPE_ERROR) return 0;
  return read_fixed_field<format, TYPE_ERROR, std::int16_t>(
      bytes, [item, id](std::int16_t error) { item->SetError(id, error); });
}

/// Reads a field that `read_value` gave 0 for. Gives its size, or 0: with the item as it was when
/// the field does not fit, and when there is no memory for a text or a vector; with the error item
/// of value 2 for an unknown type, and a line in the log that names the class `reader`.
template <const service::FieldFormat& format>
std::uint32_t read_other_field(service::Bytes bytes, CDataItem* item, const char* reader) {
  if (item != nullptr && bytes.Left() >= service::kFieldHead) {
    const auto type = service::load<std::uint16_t>(bytes.At());
    if (type == TYPE_STRING) return read_text<format>(bytes, *item);
    if (type == TYPE_LPACK) return read_price<format>(bytes, *item);
  }
  return read_any_field(format, bytes, item, reader);
}

/// Calls `append` with the type, the value as a record holds it, and of a price the base code.
/// False for an item that is no value of a fixed size, and else what `append` answers.
template <typename Append>
bool append_scalar(const CDataItem& item, Append append) {
  switch (item.GetType()) {
    case TYPE_DOUBLE: return append.template operator()<TYPE_DOUBLE>(item.GetFloat());
    case TYPE_LONG: return append.template operator()<TYPE_LONG>(item.GetLong());
    case TYPE_INT: return append.template operator()<TYPE_INT>(item.GetShort());
    case TYPE_DATE: return append.template operator()<TYPE_DATE>(ZULDATE(item.GetDate()));
    case TYPE_TIME: return append.template operator()<TYPE_TIME>(ZULTIME(item.GetTime()));
    case TYPE_ERROR: return append.template operator()<TYPE_ERROR>(item.GetError());
    case TYPE_LPACK: {
      const CFixPtNum price = item.GetFPN();
      const auto baseCode = static_cast<std::uint16_t>(price.GetBaseCode());
      return append.template operator()<TYPE_LPACK>(static_cast<std::int32_t>(price), baseCode);
    }
    default: return false;
  }
}

}  // namespace wqd

#endif  // WQDATA_BLOCKS_FIELDITEM_H_
