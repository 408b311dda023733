/// Where the parts of a field stand in the binary formats. Both formats share one shape: a head of
/// type word and field identifier, words of count and base code by type, then the elements. Their
/// tables differ in the places, and in the width of a count. docs/formats.md says it in full.
#ifndef WQDATA_SERVICE_FIELDLAYOUT_H_
#define WQDATA_SERVICE_FIELDLAYOUT_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <wqdata/service/littleendian.h>
#include <wqdata/types.h>

namespace wqd::service {

inline constexpr std::uint8_t kFieldHead = 4;  // type word, field identifier

/// A field of one type. Offsets count from the start of the field; 0 stands for a word that the
/// type does not have. Eight bytes, which make an index a shift.
struct alignas(8) FieldLayout {
  std::uint8_t type;  ///< 0 for none
  std::uint8_t elementsAt;
  std::uint8_t width;       ///< of an element; a text and the strings of a vector count bytes
  std::uint8_t countAt;     ///< the number of elements; without it there is one, or a text's NUL
  std::uint8_t baseCodeAt;  ///< a word of 16 bits
  std::uint8_t stringsAt;   ///< the number of strings of a string vector
  std::uint8_t fixedSize;   ///< bytes of the field, 0 where a count or a text says how many
};

/// The layouts stand at their types: a walk looks one up for each field.
struct FieldFormat {
  static constexpr std::size_t kTypes = 128;

  std::array<FieldLayout, kTypes> layouts;
  bool wideCounts;  ///< counts of 32 bits, not of 16
};

/// A row of a format's table.
struct FieldRow {
  std::uint8_t type, elementsAt, width, countAt, baseCodeAt, stringsAt;
};

//                                   elements width count base strings
inline constexpr FieldRow kZul3Rows[] = {
    {TYPE_DOUBLE, 4, 8, 0, 0, 0},       {TYPE_LONG, 4, 4, 0, 0, 0},
    {TYPE_INT, 4, 2, 0, 0, 0},          {TYPE_LPACK, 6, 4, 0, 4, 0},
    {TYPE_STRING, 6, 1, 0, 0, 0},       {TYPE_DATE, 4, 4, 0, 0, 0},
    {TYPE_TIME, 4, 4, 0, 0, 0},         {TYPE_VECTOR_DOUBLE, 6, 8, 4, 0, 0},
    {TYPE_VECTOR_LONG, 6, 4, 4, 0, 0},  {TYPE_VECTOR_INT, 6, 2, 4, 0, 0},
    {TYPE_VECTOR_LPACK, 8, 4, 6, 4, 0}, {TYPE_VECTOR_STRING, 8, 1, 4, 0, 6},
    {TYPE_VECTOR_DATE, 6, 4, 4, 0, 0},  {TYPE_VECTOR_TIME, 6, 4, 4, 0, 0},
    {TYPE_EMPTY, 4, 0, 0, 0, 0},        {TYPE_ERROR, 4, 2, 0, 0, 0},
};

inline constexpr FieldRow kZul4Rows[] = {
    {TYPE_DOUBLE, 4, 8, 0, 0, 0},        {TYPE_LONG, 4, 4, 0, 0, 0},
    {TYPE_INT, 4, 2, 0, 0, 0},           {TYPE_LPACK, 8, 4, 0, 4, 0},
    {TYPE_STRING, 8, 1, 4, 0, 0},        {TYPE_DATE, 4, 4, 0, 0, 0},
    {TYPE_TIME, 4, 4, 0, 0, 0},          {TYPE_VECTOR_DOUBLE, 8, 8, 4, 0, 0},
    {TYPE_VECTOR_LONG, 8, 4, 4, 0, 0},   {TYPE_VECTOR_INT, 8, 2, 4, 0, 0},
    {TYPE_VECTOR_LPACK, 12, 4, 4, 8, 0}, {TYPE_VECTOR_STRING, 12, 1, 8, 0, 4},
    {TYPE_VECTOR_DATE, 8, 4, 4, 0, 0},   {TYPE_VECTOR_TIME, 8, 4, 4, 0, 0},
    {TYPE_EMPTY, 4, 0, 0, 0, 0},         {TYPE_ERROR, 4, 2, 0, 0, 0},
};

template <std::size_t Count>
constexpr std::array<FieldLayout, FieldFormat::kTypes> by_type(const FieldRow (&rows)[Count]) {
  std::array<FieldLayout, FieldFormat::kTypes> layouts{};
  for (const auto& [type, elementsAt, width, countAt, baseCodeAt, stringsAt] : rows) {
    const bool fixed = countAt == 0 && type != TYPE_STRING;
    const auto size = static_cast<std::uint8_t>(fixed ? elementsAt + width : 0);
    layouts[type] = {type, elementsAt, width, countAt, baseCodeAt, stringsAt, size};
  }
  return layouts;
}

inline constexpr FieldFormat kZul3Fields = {by_type(kZul3Rows), false};
inline constexpr FieldFormat kZul4Fields = {by_type(kZul4Rows), true};

/// The layout of a type, null for a type word that no field has.
inline const FieldLayout* find_layout(const FieldFormat& format, int type) {
  const auto index = static_cast<unsigned>(type);
  if (index >= FieldFormat::kTypes || format.layouts[index].type == 0) return nullptr;
  return &format.layouts[index];
}

/// True for the types of a field that counts its elements, the strings of one included; a text is
/// none.
inline bool is_vector(int type) { return type >= TYPE_VECTOR_DOUBLE && type <= TYPE_VECTOR_TIME; }

/// Moves elements of a type between a record and an array of the platform's byte order.
void move_elements_of(int type, void* to, const void* from, std::size_t count);

/// Writes the head of a field.
inline void write_head(std::uint8_t* at, int type, FID id) {
  store(at, static_cast<std::uint16_t>(type));
  store(at + sizeof(std::uint16_t), id);
}

/// The bytes of a field of fixed size.
template <const FieldFormat& format, int type>
inline constexpr std::size_t kFixedSize = format.layouts[type].fixedSize;

/// Writes a field of fixed size, all bytes of it. The type is known when the code is compiled, so
/// that nothing of its layout is left to look up for a value.
template <const FieldFormat& format, int type, typename Element>
void write_fixed_field(std::uint8_t* at, FID id, Element element, std::uint16_t baseCode = 0) {
  constexpr FieldLayout layout = format.layouts[type];
  static_assert(layout.fixedSize == layout.elementsAt + sizeof element);
  write_head(at, type, id);
  std::memset(at + kFieldHead, 0, layout.elementsAt - kFieldHead);
  if constexpr (layout.baseCodeAt != 0) store(at + layout.baseCodeAt, baseCode);
  store(at + layout.elementsAt, element);
}

/// The bytes of a text of `length` bytes as a field.
template <const FieldFormat& format>
constexpr std::uint64_t text_field_size(std::size_t length) {
  return std::uint64_t{format.layouts[TYPE_STRING].elementsAt} + length + 1;
}

/// Writes a text and its NUL as a field, all bytes of it. The text comes first, since it may lie
/// where the field does.
template <const FieldFormat& format>
void write_text_field(std::uint8_t* at, FID id, const char* text, std::size_t length) {
  constexpr FieldLayout layout = format.layouts[TYPE_STRING];
  std::memmove(at + layout.elementsAt, text, length);
  at[layout.elementsAt + length] = 0;
  write_head(at, TYPE_STRING, id);
  std::memset(at + kFieldHead, 0, layout.elementsAt - kFieldHead);
  if constexpr (layout.countAt != 0) store(at + layout.countAt, static_cast<std::uint32_t>(length));
}

/// A vector that is to be written.
struct VectorValue {
  int type;
  FID id;
  const void* elements;  ///< in the platform's byte order, at any address
  std::uint32_t count;   ///< of elements; of bytes for strings
  std::uint16_t baseCode = 0;
  std::uint32_t strings = 0;
};

/// The bytes that a vector takes as a field. 0 for one that the format can't carry: a count beyond
/// its word, no elements where some are counted, strings that are not as many as is said, or whose
/// last lacks its NUL.
std::uint64_t vector_field_size(const FieldFormat& format, const VectorValue& value);

/// Writes a vector of a `vector_field_size` above 0, all bytes of it. It may lie where the field
/// does.
void write_vector_field(const FieldFormat& format, const VectorValue& value, std::uint8_t* at);

/// A field in received bytes.
struct FieldView {
  int type = 0;
  FID id = 0;
  const FieldLayout* layout = nullptr;     ///< null for an unknown type: its extent is unknown
  const std::uint8_t* elements = nullptr;  ///< unaligned
  std::uint32_t count = 0;  ///< of elements; of bytes for strings, and for a text without its NUL
  std::uint16_t baseCode = 0;
  std::uint32_t strings = 0;
  std::uint64_t size = 0;  ///< bytes of the field, all of which are there
};

/// Finds the first NUL of `bytes`, and how many stand before it: mostly within two words, between
/// which no branch has to choose.
inline bool find_nul(Bytes bytes, std::uint32_t& length) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (bytes.Left() >= 2 * kWord) {
    const std::uint64_t first = zero_bytes(load<std::uint64_t>(bytes.At()));
    const std::uint64_t second = zero_bytes(load<std::uint64_t>(bytes.At() + kWord));
    const std::uint32_t inFirst = first_marked(first);
    const auto inSecond = static_cast<std::uint32_t>(kWord + first_marked(second));
    length = first != 0 ? inFirst : inSecond;
    if ((first | second) != 0) return true;
  }
  const void* const end = std::memchr(bytes.At(), 0, bytes.Left());
  if (end == nullptr) return false;
  length = static_cast<std::uint32_t>(static_cast<const std::uint8_t*>(end) - bytes.At());
  return true;
}

/// Finds the length of the text field at the front of `bytes`. False when the text and its NUL are
/// not all there.
inline bool measure_text(const FieldFormat& format, Bytes bytes, std::uint32_t& length) {
  const FieldLayout& layout = format.layouts[TYPE_STRING];
  const std::uint8_t* const field = bytes.At();
  if (!bytes.Skip(layout.elementsAt)) return false;
  if (layout.countAt != 0) {
    length = load<std::uint32_t>(field + layout.countAt);
    return length < bytes.Left() && bytes.At()[length] == 0;
  }
  return find_nul(bytes, length);
}

/// The size that `view_field` finds; 0 where that is false.
std::uint64_t viewed_field_size(const FieldFormat& format, Bytes bytes);

/// Looks at the field at the front of `bytes`. False when its head, or what its type and counts
/// call for, is not all there; a text must have its NUL.
bool view_field(const FieldFormat& format, Bytes bytes, FieldView& view);

/// A bit for each of the type codes below 64 whose fields all take `size` bytes.
template <const FieldFormat& format, std::size_t size>
inline constexpr std::uint64_t kTypesOfSize = [] {
  std::uint64_t types = 0;
  for (std::size_t type = 0; type < 64; ++type) {
    if (format.layouts[type].fixedSize == size) types |= std::uint64_t{1} << type;
  }
  return types;
}();

/// The size of a field of one value or a text: 0 for one that does not fit, and mostly for any
/// other. A branch for each size and no table, but where the bytes end: the place of the next field
/// then follows from predicted branches, and does not wait for the type word to be read. Inlined,
/// as are the loops around it, or the caller would wait for the size to be returned.
template <const FieldFormat& format>
[[gnu::always_inline]] inline std::uint64_t common_field_size(Bytes bytes) {
  constexpr std::size_t kLargestFixed = 12;
  static_assert(std::all_of(format.layouts.begin(), format.layouts.end(), [](FieldLayout layout) {
    return layout.fixedSize <= kLargestFixed && layout.fixedSize % 2 == 0;
  }));
  if (bytes.Left() < kFieldHead) return 0;
  const auto type = load<std::uint16_t>(bytes.At());
  if (bytes.Left() >= kLargestFixed) {
    const std::uint64_t bit = type < 64 ? std::uint64_t{1} << type : 0;
    if ((bit & kTypesOfSize<format, 8>) != 0) return 8;
    if ((bit & kTypesOfSize<format, 12>) != 0) return 12;
    if ((bit & kTypesOfSize<format, 10>) != 0) return 10;
    if ((bit & kTypesOfSize<format, 6>) != 0) return 6;
    if (type == TYPE_ERROR) return kFixedSize<format, TYPE_ERROR>;
  } else {
    const std::size_t fixed = type < FieldFormat::kTypes ? format.layouts[type].fixedSize : 0;
    if (fixed != 0) return fixed <= bytes.Left() ? fixed : 0;
  }
  std::uint32_t length = 0;
  const bool text = type == TYPE_STRING && measure_text(format, bytes, length);
  return text ? text_field_size<format>(length) : 0;
}

/// The size that `view_field` finds, for a walk that only steps over fields. 0 where that is false,
/// and for an unknown type.
template <const FieldFormat& format>
[[gnu::always_inline]] inline std::uint64_t field_size(Bytes bytes) {
  const std::uint64_t size = common_field_size<format>(bytes);
  return size != 0 ? size : viewed_field_size(format, bytes);
}

/// The bytes behind `count` fields at the front of `bytes`, none when one can't be stepped over.
template <const FieldFormat& format>
[[gnu::always_inline]] inline Bytes skip_fields(Bytes bytes, std::uint32_t count) {
  for (; count > 0; --count) {
    const std::uint64_t size = field_size<format>(bytes);
    if (size == 0) return {nullptr, 0};
    bytes.Skip(size);
  }
  return bytes;
}

/// Where a search ended: with the field that was found, else on the last field there is, or with
/// none when the bytes ended or could not be stepped over before.
struct FoundField {
  Bytes bytes;            ///< from the field on
  std::uint32_t skipped;  ///< fields before it
  bool found;
};

/// Searches the fields at the front of `bytes`, of which there are `most`, for the first with the
/// identifier `id`.
template <const FieldFormat& format>
[[gnu::always_inline]] inline FoundField find_field(Bytes bytes, FID id, std::uint32_t most) {
  for (std::uint32_t skipped = 0; bytes.Left() >= kFieldHead; ++skipped) {
    const bool matches = load<FID>(bytes.At() + sizeof(std::uint16_t)) == id;
    const std::uint64_t size = field_size<format>(bytes);
    const auto isUnknown = [bytes] {
      return find_layout(format, load<std::uint16_t>(bytes.At())) == nullptr;
    };
    if (matches && (size != 0 || isUnknown())) return {bytes, skipped, true};
    if (skipped + 1 >= most) return {bytes, skipped, false};
    if (size == 0) break;
    bytes.Skip(size);
  }
  return {{nullptr, 0}, 0, false};
}

/// False for a string vector whose bytes are not just as many NUL-ended strings as it says.
bool holds_whole_strings(const FieldView& view);

/// The number of NUL-ended strings in `bytes` bytes, one without its NUL at the end included.
std::uint32_t count_strings(const void* strings, std::uint32_t bytes);

/// The number of elements of a vector, 0 for any other field. Of strings it is what the bytes hold,
/// whatever their number is said to be.
std::uint32_t vector_size(const FieldView& view);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_FIELDLAYOUT_H_
