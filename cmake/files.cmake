# Every file of the library. A test compares these lists with the tree and with what is installed.

set(wqdata_public_headers
  wqdata/blocks/datablock.h
  wqdata/export.h
  wqdata/items/dataitem.h
  wqdata/service/servicelib.h
  wqdata/textsupport/myparser.h
  wqdata/types.h
)

set(wqdata_internal_headers
  wqdata/blocks/textblock.h
  wqdata/service/fraction.h
  wqdata/service/memory.h
  wqdata/service/operations.h
  wqdata/service/text.h
)

set(wqdata_sources
  wqdata/blocks/datablock.cpp
  wqdata/blocks/textblock.cpp
  wqdata/items/dataitem.cpp
  wqdata/service/fraction.cpp
  wqdata/service/log.cpp
  wqdata/service/memory.cpp
  wqdata/service/text.cpp
  wqdata/textsupport/myparser.cpp
)
