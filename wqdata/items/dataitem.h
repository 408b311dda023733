#ifndef WQDATA_ITEMS_DATAITEM_H_
#define WQDATA_ITEMS_DATAITEM_H_

#include <cstddef>
#include <cstdint>

#include <wqdata/export.h>
#include <wqdata/types.h>
#include <wqdata/values/date.h>
#include <wqdata/values/fixptnum.h>
#include <wqdata/values/missing.h>
#include <wqdata/values/time.h>

namespace wqd {

/// The value of one field: an identifier, a type code, and a number, a price, a date, a time, a
/// text, a vector of these, a blob or an error marker. Blocks take an item for each field that is
/// added and fill one for each field that is read.
///
/// One rule shapes the class: a value that equals its type's missing marker (types.h) is never
/// held as a value. It makes the item a TYPE_ERROR item of that identifier with error value 2, and
/// every accessor turns such an item back into the marker of its own type:
///
///     CDataItem item(FID{7}, MISSING_LONG);
///     item.GetType();                       // TYPE_ERROR
///     item.GetShort();                      // MISSING_SHORT
///     item.GetString();                     // "N/A"
///
/// Error values: 1 for an item that was never given a value, 2 for a missing value; any other is
/// the caller's own.
///
/// No operation reports a failure or throws. An operation that finds no memory leaves the item as
/// it was; a constructor then leaves an error item of value 1. Numbers and texts of up to 511
/// bytes are held in the item itself and never allocate.
///
/// Items copy deeply and share nothing. An item is used by one thread at a time, for reading too,
/// since `GetString` writes into the item's own buffer.
class WQDATA_API CDataItem {
 public:
  /// The error item of identifier 0 and error value 1.
  CDataItem();

  /// Independent copies, see `Copy`.
  CDataItem(const CDataItem& other);
  CDataItem& operator=(const CDataItem& other);

  /// Take over the value of `other` without allocating; the result is that of a copy. The moved
  /// item becomes the error item of identifier 0 and error value 1 and can be used again; what its
  /// `GetString` returned before is void. Moving an item onto itself changes nothing.
  CDataItem(CDataItem&& other) noexcept;
  CDataItem& operator=(CDataItem&& other) noexcept;

  /// As the `Set` of the same arguments.
  CDataItem(FID id, std::int32_t value);
  CDataItem(FID id, double value);
  CDataItem(FID id, const char* text, int length);
  CDataItem(FID id, const CFixPtNum& value);
  CDataItem(FID id, const CZulDate& value);
  CDataItem(FID id, const ZULDATE& value);
  CDataItem(FID id, const CZulTime& value);
  CDataItem(FID id, const ZULTIME& value);

  /// The blob of `Set(data, size)`, with identifier 0; for a `size` of 0 as the default
  /// constructor.
  CDataItem(void* data, int size);

  /// With `isError` false as `Set(id, value)`. With `isError` true the error item of error value
  /// `value`, without a test for a marker.
  CDataItem(FID id, std::int16_t value, bool isError = false);

  ~CDataItem();

  /// Store a number. One that equals its marker (for a double: lies less than 0.01 from it) gives
  /// the error item of `id` with error value 2. A NaN is a value.
  void Set(FID id, std::int16_t value) { SetValue(id, TYPE_INT, m_value.asShort, value); }
  void Set(FID id, std::int32_t value) { SetValue(id, TYPE_LONG, m_value.asLong, value); }
  void Set(FID id, double value) { SetValue(id, TYPE_DOUBLE, m_value.asDouble, value); }

  /// Store a price, with the low 16 bits of its base code; a date, cut to the widths of a ZULDATE;
  /// a time as minutes and seconds. A price less than 0.01 from MISSING_DOUBLE, a date whose month
  /// is 0 and a time whose minutes are MISSING_TIME_MINUTES give the error item of `id` with error
  /// value 2. Nothing else is tested: month 13 is stored.
  void Set(FID id, const CFixPtNum& value);
  void Set(FID id, const CZulDate& value) { Set(id, static_cast<ZULDATE>(value)); }
  void Set(FID id, const ZULDATE& value) { SetValue(id, TYPE_DATE, m_value.asDate, value); }
  void Set(FID id, const CZulTime& value) { Set(id, static_cast<ZULTIME>(value)); }
  void Set(FID id, const ZULTIME& value) { SetValue(id, TYPE_TIME, m_value.asTime, value); }

  /// As `Set(id, CFixPtNum(price, baseCode))`, for records: the price is made where it stays.
  void SetPrice(FID id, std::int32_t price, int baseCode) {
    if (static_cast<std::int16_t>(baseCode) != baseCode) return Set(id, CFixPtNum(price, baseCode));
    SetHeader(id, TYPE_LPACK, sizeof(FPN));
    m_value.asPrice.Set(price, baseCode);
    if (m_value.asPrice.IsMissing()) SetError(id, kMissing);
  }

  /// Stores a copy of the first `length` bytes of `text`, or with a negative `length` of all
  /// before its first NUL; the copy is NUL-ended. `text` may be this item's own text or lie in it.
  ///
  /// A null `text`, and one whose first four bytes are "N/A" and its NUL, give the error item of
  /// `id` with error value 2, whatever `length` says: the bytes at `text` are read up to the first
  /// one that differs, be it behind `length`. Otherwise `length` bytes must be readable. They may
  /// hold NULs; `GetSize` counts them, while `Print` stops at the first. A text of 2^31 - 1 bytes
  /// or more leaves the item as it was.
  void Set(FID id, const char* text, int length);

  /// The same for the first `length` bytes. True when stored, or missing. A caller that knows of
  /// `readable` bytes at `text`, which must be there, may say so: where there are 8, a text up to
  /// that length is copied in one step.
  bool SetText(FID id, const char* text, std::size_t length, std::size_t readable = 0);

  /// Store a copy of `count` elements. They are not tested for missing-value markers. `values` may
  /// be this item's own vector; null with a count above 0, and a count beyond 2^31 - 1, leave the
  /// item as it was. The elements of a price vector are long prices that share one base code.
  void SetVector(FID id, const double* values, std::uint32_t count);
  void SetVector(FID id, const std::int32_t* values, std::uint32_t count);
  void SetVector(FID id, const std::int16_t* values, std::uint32_t count);
  void SetVector(FID id, const std::int32_t* values, std::uint16_t baseCode, std::uint32_t count);
  void SetVector(FID id, const ZULDATE* values, std::uint32_t count);
  void SetVector(FID id, const ZULTIME* values, std::uint32_t count);

  /// The same for NUL-ended strings, one behind the other, `size` bytes in all.
  void SetVector(FID id, const char* values, std::uint32_t size);

  /// The same for a vector of the code `type` whose elements lie at any address, as in a record;
  /// the base code is that of a price vector. True when stored. A `type` that is no vector's
  /// changes nothing. A walk calls it field after field: an old block that the elements fill at
  /// least to a quarter is used again, where the others always take a new one.
  bool SetVector(FID id, int type, const void* values, std::uint32_t count,
                 std::uint16_t baseCode = 0);

  /// Stores a copy of `size` bytes as a blob under the identifier that the item has. A `size` of 0
  /// or below, and null, change nothing. `data` may be this item's own block.
  void Set(void* data, int size);

  /// The error item of `id` and `error`, with no test.
  void SetError(FID id, std::int16_t error) {
    SetHeader(id, TYPE_ERROR, sizeof error);
    m_value.asShort = error;
  }

  /// Changes the identifier alone.
  void SetId(FID id) { m_id = id; }

  /// Makes this item an independent copy of `other`. A text whose bytes are "N/A" and its NUL
  /// becomes an error item, as in `Set`. Copying an item onto itself changes nothing.
  void Copy(const CDataItem& other);

  /// The field identifier.
  FID GetId() const { return m_id; }

  /// The type code, one of the TYPE_ constants.
  int GetType() const { return m_type; }

  /// The size of the value: bytes of a number (a price 16, a date or time 4, an error value 2), of
  /// a text with its NUL, of a blob, of the strings of a string vector; elements of any other
  /// vector. `GetLength` is the same number.
  int GetSize() const { return m_size; }
  int GetLength() { return m_size; }

  /// True for an error item, whatever its error value.
  bool IsNull() const { return m_type == TYPE_ERROR; }

  /// True for TYPE_LONG and TYPE_INT.
  bool IsIntegralType() const { return m_type == TYPE_LONG || m_type == TYPE_INT; }

  /// The error value of an error item; 0 for any other.
  std::int16_t GetError() const { return IsNull() ? m_value.asShort : std::int16_t{0}; }

  /// The first byte of a text, the low 8 bits of a TYPE_INT; 0 for any other.
  unsigned char GetByte() const;

  /// The value as an integer. A TYPE_LONG gives `GetShort` its low 16 bits. A text gives what
  /// `atoi` reads, 0 for no number and the nearest number within 32 bits, of which `GetShort` takes
  /// the low 16 bits. Every other type, a double too, gives MISSING_SHORT or MISSING_LONG.
  std::int16_t GetShort() const { return m_type == TYPE_INT ? m_value.asShort : ConvertToShort(); }
  std::int32_t GetLong() const { return m_type == TYPE_LONG ? m_value.asLong : ConvertToLong(); }

  /// The value as a double. A text that holds "/" or "^" anywhere is read as a fraction of a price
  /// (`101 2/8`, `1/2`, `101^08`, the whole part at most 2^54; MISSING_DOUBLE if it is none), any
  /// other as `atof` reads it, with a decimal point in every locale. Types without a number give
  /// MISSING_DOUBLE.
  double GetFloat() const { return m_type == TYPE_DOUBLE ? m_value.asDouble : ConvertToFloat(); }

  /// The value as a price: a double with base code 110, a long or short with 101, a text as a price
  /// in any notation. Types without a price give base code 0 and MISSING_DOUBLE.
  CFixPtNum GetFPN() const { return m_type == TYPE_LPACK ? m_value.asPrice : ConvertToFPN(); }

  /// The value as a date; of a text, what `CZulDate::Scan` leaves. A year below 100 passes through
  /// the rule of two-digit years. Types without a date give the zero date.
  CZulDate GetDate() const {
    return m_type == TYPE_DATE ? CZulDate(m_value.asDate) : ConvertToDate();
  }

  /// The value as a time; a long or short counts minutes, a text is read by `CZulTime::Scan`. Types
  /// without a time give MISSING_TIME_SECONDS.
  CZulTime GetTime() const {
    return m_type == TYPE_TIME ? CZulTime(m_value.asTime) : ConvertToTime();
  }

  /// The elements of a vector, or the bytes of a blob. They stay the item's, and valid until its
  /// next `SetVector`, blob `Set`, `Copy` of either, a move from or to it, or its end. Not tested
  /// for the type: null for an item that never held any, and the old block for one that has since
  /// become a number or a text.
  void* GetVectorPtr() { return m_vector; }

  /// The base code of a TYPE_LPACK or TYPE_VECTOR_LPACK item. For other types the result has no
  /// meaning.
  std::int16_t GetBaseCode() const;

  /// The value as text: a text itself, a string vector as `"a","b"` with nothing escaped, any other
  /// type what `Print` writes, empty if it writes nothing or there is no memory. The result lives
  /// in this item, until the next `GetString` of a value that is no text, the next text stored
  /// here, a move from the item, or its end.
  const char* GetString() const { return m_type == TYPE_STRING ? m_string : ConvertToString(); }

  /// Compares this item with `other`. The type of this item alone says how, and `other` is read by
  /// the accessor of that type, whatever its own, a marker counting as the number that it is: a
  /// TYPE_LONG 5 is greater than a TYPE_DOUBLE 5.0, which has no value as a long, while the double
  /// equals the long.
  ///
  /// - A double or a price compares by `GetFloat`; a NaN on either side gives CMP_LESS.
  /// - A long compares by `GetLong`, a short by `GetShort`, a date by `GetDate`, a time by the
  ///   seconds since midnight.
  /// - A text compares with the text of `other` (`GetString`) as a pattern, see `MatchPattern`.
  /// - CMP_INVALID for an error item on either side, and for a vector or a blob as this item.
  ///
  /// Neither value changes; the string buffer of `other` may.
  CmpRc Compare(CDataItem& other);

  /// By `Compare`. All six are false for two items that can't be compared.
  bool operator==(CDataItem& other);
  bool operator!=(CDataItem& other);
  bool operator<(CDataItem& other);
  bool operator<=(CDataItem& other);
  bool operator>(CDataItem& other);
  bool operator>=(CDataItem& other);

  /// The result of the calculation under identifier 0. Two longs or shorts give a TYPE_LONG, whose
  /// 32 bits wrap and whose quotient is truncated toward zero. Any other two operands count by
  /// `GetFloat` and give a TYPE_DOUBLE, two prices too. The error item of error value 2 comes of an
  /// operand without a number, a missing one, a division by zero, and a result that equals the
  /// missing marker of its type. Neither operand changes.
  CDataItem operator+(CDataItem& other);
  CDataItem operator-(CDataItem& other);
  CDataItem operator*(CDataItem& other);
  CDataItem operator/(CDataItem& other);

  /// Writes the value's text into `buffer`, touching at most `size` bytes: "%.4f" of a double (315
  /// characters at the most, a decimal point in every locale), "%d" of a long or short, a text up
  /// to its first NUL, "N/A" of an error item, a price in the notation of its base code, a date as
  /// "mm/dd/yyyy", a time as "hh:mm:ss". Other types write nothing, with the result 0.
  ///
  /// This is not the rule of snprintf. A text shorter than `size` is written with its NUL, and the
  /// result is its length. A text of exactly `size` characters is written without a NUL, and the
  /// result is `size`. Of a longer one the first `size` characters are written without a NUL, and
  /// the result is negative. A negative `size` counts as 0, for which `buffer` may be null. A price
  /// alone does not look at `size`: it needs room for 24 bytes.
  int Print(char* buffer, int size) const;

 private:
  static constexpr std::uint32_t kEmbeddedCapacity = 512;

  union Value {
    Value() : asPrice() {}

    double asDouble;
    std::int32_t asLong;
    std::int16_t asShort;
    ZULDATE asDate;
    ZULTIME asTime;
    CFixPtNum asPrice;
  };

  void SetHeader(FID id, int type, int size) {
    m_id = id;
    m_type = type;
    m_size = size;
  }

  template <typename Number>
  void SetValue(FID id, int type, Number& member, Number value) {
    if (is_missing(value)) return SetError(id, kMissing);
    SetHeader(id, type, sizeof value);
    member = value;
  }

  void Initialize();
  bool OwnsStringBuffer() const;
  void ReplaceStringBuffer(char* buffer, std::uint32_t capacity) const;
  bool ResizeStringBuffer(std::uint64_t size) const;
  bool StoreVector(FID id, int type, const void* values, std::uint32_t count,
                   std::uint16_t baseCode, bool reuse);
  bool StoreBlock(int type, const void* values, std::uint32_t count, bool reuse);
  void ReplaceBlock(void* block, std::uint64_t capacity);
  bool HoldsBlock() const;
  void CopyBlock(const CDataItem& other);
  const char* JoinStrings() const;
  void TakeHeader(const CDataItem& other);
  void TakeOver(CDataItem& other);

  std::int16_t ConvertToShort() const;
  std::int32_t ConvertToLong() const;
  double ConvertToFloat() const;
  const char* ConvertToString() const;
  CFixPtNum ConvertToFPN() const;
  CZulDate ConvertToDate() const;
  CZulTime ConvertToTime() const;

  FID m_id;
  int m_type;
  int m_size;
  Value m_value;
  mutable char* m_string;
  void* m_vector;
  std::uint64_t m_vectorCapacity;  // bytes of the block at m_vector
  mutable std::uint32_t m_capacity;
  mutable char m_buffer[kEmbeddedCapacity];
};

}  // namespace wqd

#endif  // WQDATA_ITEMS_DATAITEM_H_
