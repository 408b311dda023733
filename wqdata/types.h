/// The vocabulary that every part of the library shares: field identifiers, block formats, item
/// type codes, the packed records of the value types, and the markers of missing values.
///
/// All of it stands at global scope, since programs store these numbers and records in their own
/// files and messages. Every width and value here is fixed for good, on every platform.
#ifndef WQDATA_TYPES_H_
#define WQDATA_TYPES_H_

#include <cstddef>
#include <cstdint>

/// Identifies a field within a record: 0 to 65535. Write a literal 0 as `FID{0}`: a bare 0 is as
/// good a null pointer, and ambiguous where an operation has a form for either.
using FID = std::uint16_t;

/// The encoding of a block.
enum cf_id : std::int32_t {
  INVALID = 0,     ///< no block
  TEXT = 1,        ///< lines of tab-separated text
  CSV = 2,         ///< lines of comma-separated text
  NOTXLTABLE = 3,  ///< a name only: there is no such block
  ZUL3 = 4,        ///< binary ZUL3 record
  ZUL4 = 5,        ///< binary ZUL4 record
  Btrieve = 6,     ///< opaque bytes
};

/// How one item compares with another.
enum CmpRc : int {
  CMP_GREATER = 1,    ///< this item is greater than the other
  CMP_EQUAL = 0,      ///< the two are equal, or the text matches the pattern
  CMP_LESS = -1,      ///< this item is less than the other, or the two have no order
  CMP_INVALID = -99,  ///< the two can't be compared
};

/// Type codes of an item, and the type words of fields in the binary encodings. 0, 4, 9, 10, 14
/// and 19 are not in use.
inline constexpr int TYPE_DOUBLE = 1;          ///< 64-bit floating point
inline constexpr int TYPE_LONG = 2;            ///< signed 32 bits
inline constexpr int TYPE_INT = 3;             ///< signed 16 bits
inline constexpr int TYPE_LPACK = 5;           ///< a price with its base code
inline constexpr int TYPE_STRING = 6;          ///< text
inline constexpr int TYPE_DATE = 7;            ///< ZULDATE
inline constexpr int TYPE_TIME = 8;            ///< ZULTIME
inline constexpr int TYPE_VECTOR_DOUBLE = 11;  ///< vectors hold elements of one type
inline constexpr int TYPE_VECTOR_LONG = 12;
inline constexpr int TYPE_VECTOR_INT = 13;
inline constexpr int TYPE_VECTOR_LPACK = 15;   ///< prices that share one base code
inline constexpr int TYPE_VECTOR_STRING = 16;  ///< NUL-ended strings, one behind the other
inline constexpr int TYPE_VECTOR_DATE = 17;
inline constexpr int TYPE_VECTOR_TIME = 18;
inline constexpr int TYPE_EMPTY = 99;   ///< raw bytes (a blob)
inline constexpr int TYPE_ERROR = 101;  ///< no value; an error value says why

/// Markers of missing values. An item that is given one becomes a TYPE_ERROR item; an accessor of
/// such an item answers with the marker of its own type.
inline constexpr std::int16_t MISSING_SHORT = -32768;
/// Of longs, and of prices as integers in every base code.
inline constexpr std::int32_t MISSING_LONG = INT32_MIN;
/// Recognised within a band: every double less than 0.01 away counts as missing.
inline constexpr double MISSING_DOUBLE = -99999999.999999;
/// In the minutes of a ZULTIME. A real time of day has 0 to 1439 there.
inline constexpr std::uint16_t MISSING_TIME_MINUTES = 2323;
/// The same as seconds since midnight.
inline constexpr std::int32_t MISSING_TIME_SECONDS = MISSING_TIME_MINUTES * 60;

/// A calendar date in four bytes. Month 0 marks a missing date. No operation refuses other numbers.
struct ZULDATE {
  std::int8_t day;     ///< 1 to 31 in a real date
  std::int8_t month;   ///< 1 to 12 in a real date
  std::uint16_t year;  ///< the full year; of 0 to 99, two digits
};

/// A time of day in four bytes.
struct ZULTIME {
  std::uint16_t minutes;  ///< whole minutes since midnight, 0 to 1439 in a real time
  std::uint16_t seconds;  ///< seconds within the minute, 0 to 59 in a real time
};

/// A price as a number, with its base code: how the price is scaled and written.
struct FPN {
  alignas(8) double value;  ///< the number itself, missing near MISSING_DOUBLE
  std::int16_t baseCode;    ///< the low 16 bits of a code, sign-extended when read
};

/// A price as an integer in the scale of its base code, packed without a gap.
#pragma pack(push, 1)
struct LPACK {
  std::uint16_t baseCode;  ///< the low 16 bits of a code, zero-extended when read
  std::int32_t price;      ///< missing when MISSING_LONG
};
#pragma pack(pop)

#if defined(_WIN32)
#include <windows.h>
#else
/// A reading of a calendar clock, in the layout of the platform that has one.
struct SYSTEMTIME {
  std::uint16_t wYear;
  std::uint16_t wMonth;      ///< 1 to 12
  std::uint16_t wDayOfWeek;  ///< 0 for Sunday to 6
  std::uint16_t wDay;
  std::uint16_t wHour;
  std::uint16_t wMinute;
  std::uint16_t wSecond;
  std::uint16_t wMilliseconds;
};
#endif

static_assert(sizeof(ZULDATE) == 4 && offsetof(ZULDATE, day) == 0 &&
              offsetof(ZULDATE, month) == 1 && offsetof(ZULDATE, year) == 2);
static_assert(sizeof(ZULTIME) == 4 && offsetof(ZULTIME, minutes) == 0 &&
              offsetof(ZULTIME, seconds) == 2);
static_assert(sizeof(FPN) == 16 && offsetof(FPN, value) == 0 && offsetof(FPN, baseCode) == 8);
static_assert(sizeof(LPACK) == 6 && offsetof(LPACK, baseCode) == 0 && offsetof(LPACK, price) == 2);
static_assert(sizeof(SYSTEMTIME) == 16 && offsetof(SYSTEMTIME, wDay) == 6);

#endif  // WQDATA_TYPES_H_
