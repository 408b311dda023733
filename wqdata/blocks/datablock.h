#ifndef WQDATA_BLOCKS_DATABLOCK_H_
#define WQDATA_BLOCKS_DATABLOCK_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <wqdata/export.h>
#include <wqdata/types.h>

/// The format of a name, in any case: "TEXT", "CSV", "NOTXLTABLE", "ZUL3", "ZUL4" or "Btrieve".
/// INVALID for any other name and for null, with a line in the log. Safe on any thread.
WQDATA_API cf_id CfId(const char* name);

/// The name of a format, a constant text; "INVALID" for a number that is no format. Safe on any
/// thread.
WQDATA_API const char* CfName(cf_id format);

/// Whether the `size` bytes at `data` are one whole, well-formed block of `format`: all that their
/// header and their fields declare is there, and nothing else is. A program that takes records of
/// ZUL3 or ZUL4 from strangers asks once and then meets no field that can't be read.
///
///     std::size_t offset = 0;
///     const char* reason = "";
///     if (!ValidateData(ZUL3, data, size, &offset, &reason)) reject(offset, reason);
///
/// If not, `offset` receives the place of the first fault, counted from `data`: of a field or a
/// record its start, of a header the word, and `size` where something is missing at the end.
/// `reason` receives a constant text that says what is wrong there. Either may be null, and both
/// stay as they are when the answer is true. Values are not judged: a month of 13 is as good as
/// any.
///
/// - TEXT and CSV: any text and its NUL, or several. Btrieve: any bytes.
/// - ZUL3 and ZUL4: by the rules of docs/formats.md, and in ZUL3 with the last record finished.
/// - Any other format, null with a `size` above 0, and 2 GiB or more: false.
///
/// What `GetData` of a block that was written gives, where it is not null, is valid: in ZUL3 after
/// the `EndRecord` of each record, all of the same number of fields and none of them refused, and
/// in a text after its only `Close`, or several in a row. No more than the `size` bytes are read,
/// in time linear in `size` whatever they declare, and nothing is allocated. Safe on any thread.
WQDATA_API bool ValidateData(cf_id format, const void* data, std::size_t size,
                             std::size_t* offset = nullptr, const char** reason = nullptr);

namespace wqd {

class CDataItem;
class CFixPtNum;
class CZulDate;
class CZulTime;

/// The root of the block classes.
class WQDATA_API CDeletable {
 public:
  CDeletable() = default;

  /// A copy would count as no block of the factory: there are none.
  CDeletable(const CDeletable&) = delete;
  CDeletable& operator=(const CDeletable&) = default;
  virtual ~CDeletable();

 protected:
  /// Deletes this object.
  virtual void DeleteThis();

 private:
  [[maybe_unused]] std::uint32_t m_word =
      0;  // copied by assignment; part of the layout and of nothing else
};

/// A container of records in one encoding. A record is a run of fields; a field is a value under a
/// field identifier. Which class stands behind a block is the library's matter: blocks come from
/// the factory functions, are driven through the virtual operations, and end in `FreeDataBlock`.
///
///     wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(CSV));
///     block->StartRecord();
///     block->Add(FID{22}, 101.25);
///     block->Add(FID{32}, std::int32_t{7});
///     block->EndRecord();
///     block->Close();                          // "101.2500,7\n"
///
/// To write: for each record `StartRecord`, any `Add`, each of which appends one field, and
/// `EndRecord`; after the last record `Close`. `StartRecord` and `EndRecord` come in pairs: what is
/// added outside such a pair has no defined place.
///
/// To read, a block has a cursor on a record and one on a field of it. `FirstRecord` and
/// `NextRecord` move the first, `FirstField`, `NextField` and `FindField` the second; false means
/// that there is nothing there. A reader calls `FirstField` after each move to a record.
///
///     for (bool more = block->FirstRecord(); more; more = block->NextRecord()) {
///       for (bool field = block->FirstField(); field; field = block->NextField()) {
///         if (block->GetCurrentField(&item)) use(item);
///       }
///     }
///
/// TEXT and CSV differ from the binary encodings in this:
/// - They write values alone, as `CDataItem::Print` does, and drop the identifiers. A line is the
///   values of a record with tabs (TEXT) or commas (CSV) between them; nothing is quoted.
/// - They read pairs of identifier and value, in either format with tab, comma and line end as
///   separators alike. Tokens are the fields of a `CMyParser`: quotes are taken out, white space at
///   the ends too, and of more than 255 characters the first 255 are left. Every value is a text,
///   or missing for "N/A". An identifier is read as `CDataItem::GetShort` reads a text.
/// - `NextRecord` goes to the next line, but a walk of fields runs on to the end of the text: the
///   loops above meet the fields of the last of n lines n times. A reader that wants one line's
///   fields counts them. `FindField` searches to the end of the text too, and an identifier without
///   a value, or that is no number, counts as 0 there.
/// - A block that was written can be walked after `Close`, from `FirstRecord` on, up to the first
///   `Close`. When an addition makes the block grow, the walk is over.
///
/// ZUL3 and ZUL4 keep the identifier and the type of each field; docs/formats.md has their bytes.
/// They hold at most 65535 records of at most 65535 fields, in less than 2 GiB.
/// - ZUL3 has one count of fields for all records: every record must have the same number. A record
///   is counted by `EndRecord`. Counts are 16 bits wide: of an item's vector the last 16000
///   elements are taken, a vector added directly may have 65535, and a vector of strings 65535
///   bytes. Adding a blob item is true, and leaves it out with a line in the log. A record that
///   lacks a refused field makes the ones before it unreadable too: end the block there. Between
///   `StartRecord` and the first addition the count is 0, and a walk or a transfer then meets other
///   records than were written; a record that stays empty is none.
/// - ZUL4 has a count for each record, and counts a record when it starts. Vectors go whole. A
///   blob item is refused. An addition moves the cursor to the record that is being written. Where
///   a record can't be opened, `StartRecord` is true as ever and each of its fields is refused.
/// - Behind the last field ZUL3 stays on it and ZUL4 stands on none. Behind the last record ZUL3
///   has no current field, until `FirstField` goes back to the last record's, and ZUL4 stays.
/// - A date or time goes into ZUL4 as it is when it is added directly. Through an item, and into
///   ZUL3, it goes with a year of 0 to 99 filled up and minutes and seconds brought together.
///
/// Btrieve has no records: `AddBlob` appends bytes, and nothing else is taken.
///
/// No operation throws. A writing operation is false when the encoding can't carry the value, when
/// memory or room runs out, and on a read-only block; the block then stands as it was, but for a
/// record in progress, and all that was written before stays readable. An operation that an
/// encoding does not have is false or 0.
///
/// A block and the items given to it share nothing. One block is used by one thread at a time;
/// different blocks are independent of each other.
class WQDATA_API CDataBlock : public CDeletable {
 public:
  /// For the classes of the encodings: programs call the factory functions.
  CDataBlock() = default;

  /// Copies the format and the read-only flag, and no content: both blocks keep the bytes that they
  /// have. A wrapped text that so becomes writable turns to bytes of its own with the first
  /// addition, and the caller's stay as they are. Not of use to programs, and safe.
  CDataBlock& operator=(const CDataBlock&) = default;

  /// The bytes of the block, null while there are none. They stay the block's (or, wrapped, the
  /// caller's) and are valid until the next writing operation or the block's end.
  virtual void* GetData() = 0;

  /// The number of those bytes. A wrapped text is not measured: 0.
  virtual int GetDataSize() = 0;

  /// Finished records, in ZUL4 started ones; 0 for a wrapped text, which is not counted.
  virtual int GetRecordCount() = 0;

  /// Fields of the current record; of a text block, of the record being written or written last,
  /// and 0 for a wrapped text.
  virtual int GetFieldCount() = 0;

  /// The largest element count among the vector fields of the current record, 0 without one. Of
  /// strings those are counted that its bytes hold, whatever their number is said to be. It moves
  /// the field cursor.
  virtual int GetVectorSize();

  /// The format; of a text that was wrapped as CSV, TEXT.
  virtual cf_id GetFormat();

  /// True for a block around bytes that a caller handed in.
  virtual bool IsReadOnly();

  /// Opens a record: the fields added from now on are counted anew. True but on a read-only block.
  virtual bool StartRecord() = 0;

  /// Finishes the record, and counts it where it was not counted before. A second call without a
  /// `StartRecord` counts it again. In ZUL3 a record without fields is not counted, and one beyond
  /// 65535 is refused.
  virtual bool EndRecord() = 0;

  /// Append one field. A value that equals the missing marker of its type (types.h) is written as
  /// an error field of value 2. A price that its base code can't hold has no long price and no
  /// text: it arrives as missing.
  virtual bool Add(FID id, const ZULTIME& value);
  virtual bool Add(FID id, const CZulTime& value);
  virtual bool Add(FID id, const ZULDATE& value);
  virtual bool Add(FID id, const CZulDate& value);
  virtual bool Add(FID id, const CFixPtNum& value);
  virtual bool Add(FID id, double value);
  virtual bool Add(FID id, std::int32_t value);
  virtual bool Add(FID id, std::int16_t value);

  /// Appends the value of `item` under the item's identifier; a text up to its first NUL.
  virtual bool Add(CDataItem& item) = 0;

  /// Appends the NUL-ended `text` as it stands, "N/A" too; false for null. `text` may lie in
  /// the block itself.
  virtual bool Add(FID id, const char* text) = 0;

  /// Appends the contents of `source`, from its first record on, whatever the two encodings are.
  /// The cursors of `source` end behind its last record, or where the transfer ended; nothing else
  /// of it changes. False for null, for this block itself (but a Btrieve block appends what it
  /// holds), and at the first field that can't be read, or field or record that is refused: the
  /// records before it are whole, and the one in progress stays open.
  ///
  /// - Into ZUL3 and ZUL4: the fields of each record with identifier, type and value. When a ZUL4
  ///   block goes into ZUL3, missing fields with identifier 0 fill each record up to the number of
  ///   fields of the longest. Text arrives as texts and missing values, the first record with the
  ///   fields of all lines, each further one with those from its line on, as a walk meets them:
  ///   since these records differ in length, ZUL3 can't say where they end, and of more than one
  ///   line takes what `ValidateData` refuses. A price of an unknown base code arrives as missing.
  /// - Into TEXT and CSV: a line for each record, as `CDataItem::Print` writes the fields. A record
  ///   with vectors gives as many lines as the longest has elements, the scalars in each of them
  ///   and the last element of a shorter vector again; a vector of no elements is an empty field.
  ///   `Close` follows. True, whatever was lost: a field that can't be read is "N/A", one that is
  ///   refused is left out with a line in the log, and a block without room takes no more records.
  /// - Into Btrieve: the bytes of a Btrieve block, and false for any other.
  bool Add(CDataBlock* source);

  /// Finishes the block after its last record. A text block gets a NUL, which `GetDataSize` counts,
  /// at each call; where it can't grow by one, the result is false, and a NUL stands uncounted
  /// behind its bytes. The others need none.
  virtual bool Close();

  /// Appends an error field of the value `error`.
  virtual bool AddError(FID id, std::int16_t error);

  /// Append one field of `size` bytes (Btrieve alone), or of `count` elements (ZUL3 and ZUL4),
  /// which are copied and may lie in the block itself. A null pointer with a count above 0 is
  /// false. `AddStringVector` takes `count` NUL-ended strings, one behind the other, of `bytes`
  /// bytes in all, and is false for any other number of them; `AddPriceVector` takes prices in the
  /// scale of `baseCode`.
  virtual bool AddBlob(FID id, const void* data, std::uint32_t size);
  virtual bool AddShortVector(FID id, const std::int16_t* values, std::uint32_t count);
  virtual bool AddLongVector(FID id, const std::int32_t* values, std::uint32_t count);
  virtual bool AddDoubleVector(FID id, const double* values, std::uint32_t count);
  virtual bool AddDateVector(FID id, const ZULDATE* values, std::uint32_t count);
  virtual bool AddTimeVector(FID id, const ZULTIME* values, std::uint32_t count);
  virtual bool AddStringVector(FID id, const char* strings, std::uint32_t count,
                               std::uint32_t bytes);
  virtual bool AddPriceVector(FID id, const std::int32_t* prices, std::int16_t baseCode,
                              std::uint32_t count);

  /// Move to the first record, and to the next one.
  virtual bool FirstRecord();
  virtual bool NextRecord();

  /// Move to the first field of the current record, and to the next one.
  virtual bool FirstField();
  virtual bool NextField();

  /// Moves to the first field of the current record with the identifier `id`. When there is none
  /// the field cursor has run to the end.
  virtual bool FindField(FID id);

  /// `FindField`, then `GetCurrentField`. When there is no such field, `item` stays as it was.
  virtual bool GetField(FID id, CDataItem* item);

  /// Fills `item`, unless it is null, with the current field; false, with `item` as it was, when
  /// there is none, it is not whole, or there is no memory for it. One of an unknown type gives
  /// false, an error item of value 2 and a line in the log. A vector may lie in the block that the
  /// item had for its former one.
  virtual bool GetCurrentField(CDataItem* item);

  /// The identifier of the current field, 0 when there is none.
  virtual FID GetCurrentFieldId();

  /// The type code of the current field, 0 when there is none and always for text.
  virtual int GetCurrentFieldType();

  /// A new empty block, the caller's to free. Null for INVALID, NOTXLTABLE, a number that is no
  /// format, and without memory. Safe on any thread, as are the other factory functions.
  static CDataBlock* NewDataBlock(cf_id format);

  /// A read-only block around received bytes, standing on the first field of the first record, the
  /// caller's to free; null as above. The bytes stay the caller's, who keeps them alive and
  /// unchanged until the block is freed. Null `data` gives an empty writable block.
  ///
  /// - TEXT and CSV: the format of the block is TEXT; the text must end with a NUL, and `size` is
  ///   not used.
  /// - ZUL3 and ZUL4: `size` is the number of bytes at `data`. No operation reads beyond it, nor
  ///   beyond the length that the bytes declare. With a negative `size` that length is trusted.
  /// - Btrieve: the block holds a copy of the bytes, and is writable; null without memory for it.
  static CDataBlock* NewDataBlock(cf_id format, void* data, int size);

  /// A writable copy of a ZUL3 or ZUL4 block, the caller's to free, by `Add(CDataBlock*)`: where
  /// that ends early, the copy has what it holds by then. The cursors of `source` move, and nothing
  /// else of it. Null for a block of another format, for null and without memory.
  static CDataBlock* NewDataBlock(const CDataBlock* source);

  /// A writable block of ZUL4 that writes into the caller's buffer of `size` bytes, and refuses
  /// what has no room there; null for any other format and without memory. The buffer stays the
  /// caller's, who keeps it alive until the block is freed; what it held is overwritten from its
  /// start on, at once. A buffer of less than 8 bytes, and null, make a block that refuses every
  /// field.
  static CDataBlock* FixedSizeDataBlock(cf_id format, void* buffer, int size);

  /// Ends a block. Null is ignored.
  static void FreeDataBlock(CDataBlock* block);

  /// Blocks that the factory functions made, less all blocks that were ended. Safe on any thread.
  static std::atomic<std::int32_t> _instances;

 protected:
  ~CDataBlock() override;

  cf_id m_format = INVALID;
  bool m_readOnly = false;

 private:
  [[maybe_unused]] bool m_secondFlag =
      false;  // copied by assignment; part of the layout and of nothing else
};

/// Frees a block at the end of its `DataBlockPtr`.
struct FreeBlock {
  void operator()(CDataBlock* block) const { CDataBlock::FreeDataBlock(block); }
};

/// Owns a block from a factory function.
using DataBlockPtr = std::unique_ptr<CDataBlock, FreeBlock>;

}  // namespace wqd

#endif  // WQDATA_BLOCKS_DATABLOCK_H_
