/// Between the fields of the binary formats and items.
#ifndef WQDATA_BLOCKS_FIELDITEM_H_
#define WQDATA_BLOCKS_FIELDITEM_H_

#include <wqdata/items/dataitem.h>
#include <wqdata/service/fieldlayout.h>

namespace wqd {

/// The field that was read last, by its offset, and its size. A step behind it then need neither
/// look at it again nor wait for its type word: it follows from the branch that read it.
struct ReadField {
  std::uint32_t offset = 0;  ///< 0 for none
  std::uint32_t size = 0;
};

/// `read_field` for fields of a varying size, or of none; and for any, with a null `item`.
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
std::uint32_t read_text(service::Bytes bytes, FID id, CDataItem& item) {
  std::uint32_t length = 0;
  if (!service::measure_text(format, bytes, length)) return 0;
  const std::uint8_t* const text = bytes.At() + format.layouts[TYPE_STRING].elementsAt;
  if (!item.SetText(id, reinterpret_cast<const char*>(text), length)) return 0;
  return static_cast<std::uint32_t>(service::text_field_size<format>(length));
}

/// Reads the field at the front of `bytes` into `item`, unless it is null, through the item's own
/// `Set`, so that markers become error items. Gives the size of the field, or 0: with the item as
/// it was when the field does not fit, and when there is no memory for a text or a vector; with the
/// error item of value 2 for an unknown type, and a line in the log that names the class `reader`.
template <const service::FieldFormat& format>
std::uint32_t read_field(service::Bytes bytes, CDataItem* item, const char* reader) {
  if (item == nullptr || bytes.Left() < service::kFieldHead) {
    return read_any_field(format, bytes, item, reader);
  }
  const auto id = service::load<FID>(bytes.At() + sizeof(std::uint16_t));
  const auto set = [item, id](auto value) { item->Set(id, value); };
  switch (service::load<std::uint16_t>(bytes.At())) {
    case TYPE_DOUBLE: return read_fixed_field<format, TYPE_DOUBLE, double>(bytes, set);
    case TYPE_LONG: return read_fixed_field<format, TYPE_LONG, std::int32_t>(bytes, set);
    case TYPE_INT: return read_fixed_field<format, TYPE_INT, std::int16_t>(bytes, set);
    case TYPE_DATE:
      return read_fixed_field<format, TYPE_DATE, ZULDATE>(
          bytes, [set](ZULDATE date) { set(CZulDate(date)); });
    case TYPE_TIME:
      return read_fixed_field<format, TYPE_TIME, ZULTIME>(
          bytes, [set](ZULTIME time) { set(CZulTime(time)); });
    case TYPE_ERROR:
      return read_fixed_field<format, TYPE_ERROR, std::int16_t>(
          bytes, [item, id](std::int16_t error) { item->SetError(id, error); });
    case TYPE_LPACK:
      return read_fixed_field<format, TYPE_LPACK, std::int32_t>(
          bytes, [item, id, bytes](std::int32_t price) {
            constexpr std::size_t kBaseCodeAt = format.layouts[TYPE_LPACK].baseCodeAt;
            item->SetPrice(id, price, service::load<std::uint16_t>(bytes.At() + kBaseCodeAt));
          });
    case TYPE_STRING: return read_text<format>(bytes, id, *item);
    default: return read_any_field(format, bytes, item, reader);
  }
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
