/// Between the fields of the binary formats and items.
#ifndef WQDATA_BLOCKS_FIELDITEM_H_
#define WQDATA_BLOCKS_FIELDITEM_H_

#include <wqdata/items/dataitem.h>
#include <wqdata/service/fieldlayout.h>

namespace wqd {

/// Fills `item`, unless it is null, with a field, through the item's own `Set`, so that markers
/// become error items. False, with the item as it was, when there is no memory for a text or a
/// vector; false for a type that is unknown, with the error item of value 2 and a line in the log
/// that names the class `reader`.
bool fill_item(const service::FieldView& view, CDataItem* item, const char* reader);

}  // namespace wqd

#endif  // WQDATA_BLOCKS_FIELDITEM_H_
