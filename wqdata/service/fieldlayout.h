/// Where the parts of a field stand in the binary formats. Both formats share one shape: a head of
/// type word and field identifier, words of count and base code by type, then the elements. Their
/// tables differ in the places, and in the width of a count. docs/formats.md says it in full.
#ifndef WQDATA_SERVICE_FIELDLAYOUT_H_
#define WQDATA_SERVICE_FIELDLAYOUT_H_

#include <cstdint>

#include <wqdata/service/littleendian.h>
#include <wqdata/types.h>

namespace wqd::service {

inline constexpr std::uint8_t kFieldHead = 4;  // type word, field identifier

/// A field of one type. Offsets count from the start of the field; 0 stands for a word that the
/// type does not have.
struct FieldLayout {
  std::uint8_t type;
  std::uint8_t elementsAt;
  std::uint8_t width;       ///< of an element; a text and the strings of a vector count bytes
  std::uint8_t countAt;     ///< the number of elements; without it there is one
  std::uint8_t baseCodeAt;  ///< a word of 16 bits
  std::uint8_t stringsAt;   ///< the number of strings of a string vector
};

struct FieldFormat {
  const FieldLayout* layouts;
  int layoutCount;
  bool wideCounts;       ///< counts of 32 bits, not of 16
  bool countsTextBytes;  ///< a text has its length in front, and not its NUL alone behind it
};

extern const FieldFormat kZul3Fields;
extern const FieldFormat kZul4Fields;

/// The layout of a type, null for a type word that no field has.
const FieldLayout* find_layout(const FieldFormat& format, int type);

/// True for the types of a field that counts its elements, the strings of one included; a text is
/// none.
inline bool is_vector(int type) { return type >= TYPE_VECTOR_DOUBLE && type <= TYPE_VECTOR_TIME; }

/// A field that is to be written.
struct FieldValue {
  int type;
  FID id;
  const void* elements;     ///< in the platform's byte order, at any address
  std::uint32_t count = 1;  ///< of elements; of bytes for a text, without its NUL
  std::uint16_t baseCode = 0;
  std::uint32_t strings = 0;
};

/// The bytes that a field takes. 0 for one that the format can't carry: a type without a layout, a
/// count beyond its word, no elements where some are counted, strings that are not as many as is
/// said, or whose last lacks its NUL.
std::uint64_t field_size(const FieldFormat& format, const FieldValue& value);

/// Writes a field of a `field_size` above 0, all bytes of it.
void write_field(const FieldFormat& format, const FieldValue& value, std::uint8_t* at);

/// A field in received bytes.
struct FieldView {
  int type = 0;
  FID id = 0;
  const FieldLayout* layout = nullptr;     ///< null for an unknown type: its extent is unknown
  const std::uint8_t* elements = nullptr;  ///< unaligned
  std::uint32_t count = 0;                 ///< as in `FieldValue`
  std::uint16_t baseCode = 0;
  std::uint32_t strings = 0;
  std::uint64_t size = 0;  ///< bytes of the field, all of which are there
};

/// Looks at the field at the front of `bytes`. False when its head, or what its type and counts
/// call for, is not all there; a text must have its NUL.
bool view_field(const FieldFormat& format, Bytes bytes, FieldView& view);

/// False for a string vector whose bytes are not just as many NUL-ended strings as it says.
bool holds_whole_strings(const FieldView& view);

/// The number of NUL-ended strings in `bytes` bytes, one without its NUL at the end included.
std::uint32_t count_strings(const void* strings, std::uint32_t bytes);

/// The number of elements of a vector, 0 for any other field. Of strings it is what the bytes hold,
/// whatever their number is said to be.
std::uint32_t vector_size(const FieldView& view);

/// Moves elements of a type between a record and an array of the platform's byte order.
void move_elements_of(int type, void* to, const void* from, std::size_t count);

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_FIELDLAYOUT_H_
