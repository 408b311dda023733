/// The records of the benchmarks in the encodings of other libraries, each in its best documented
/// way: a map of small numbers in MessagePack, a document with one-letter keys for each record in
/// BSON, buffers reused where they can be.
#ifndef WQDATA_BENCH_PEERS_H_
#define WQDATA_BENCH_PEERS_H_

#include <bson/bson.h>

#include <cstring>
#include <msgpack.hpp>
#include <vector>

#include "data.h"
#include "packed.h"

namespace wqd_bench {

inline void pack_rows(msgpack::sbuffer& buffer) {
  buffer.clear();
  msgpack::packer<msgpack::sbuffer> packer(buffer);
  for (const Row& row : rows()) {
    packer.pack_map(kFieldsOfRow);
    packer.pack_uint16(kNumber).pack_int32(row.number);
    packer.pack_uint16(kSmall).pack_int16(row.small);
    packer.pack_uint16(kReal).pack_double(row.real);
    packer.pack_uint16(kPrice).pack_int32(row.price);
    packer.pack_uint16(kDate).pack_int32(packed(row.date));
    packer.pack_uint16(kTime).pack_int32(packed(row.time));
    const auto length = static_cast<std::uint32_t>(row.text.size());
    packer.pack_uint16(kText).pack_str(length).pack_str_body(row.text.data(), length);
    packer.pack_uint16(kError).pack_int16(row.error);
  }
}

inline void pack_vectors(msgpack::sbuffer& buffer) {
  buffer.clear();
  msgpack::packer<msgpack::sbuffer> packer(buffer);
  const auto pack = [&packer](Id id, const auto& elements) {
    const std::size_t bytes = elements.size() * sizeof elements[0];
    packer.pack_uint16(id).pack_ext(bytes, 1).pack_ext_body(
        reinterpret_cast<const char*>(elements.data()), static_cast<std::uint32_t>(bytes));
  };
  for (const auto& [numbers, reals] : vector_rows()) {
    packer.pack_map(2);
    pack(kNumber, numbers);
    pack(kReal, reals);
  }
}

/// What a walk does with the bytes of a vector, which stand at any address: a program that computes
/// with the elements copies them into an array of its own, one that passes them on leaves them.
enum class Vectors { kCopied, kInPlace };

template <Vectors vectors, typename Element>
std::uint64_t visit_vector(const void* bytes, std::size_t size) {
  if constexpr (vectors == Vectors::kCopied) {
    static std::vector<Element> array;  // used again from field to field
    array.resize(size / sizeof(Element));
    bytes = std::memcpy(array.data(), bytes, size);
    benchmark::DoNotOptimize(array.data());
  }
  return digest_of_vector<Element>(bytes, size);
}

/// Adds up what it visits.
template <Vectors vectors>
struct MsgpackSum : msgpack::null_visitor {
  std::uint64_t sum = 0;
  std::uint64_t key = 0;
  bool inKey = false;

  bool start_map_key() { return inKey = true; }
  bool end_map_key() {
    inKey = false;
    return true;
  }
  bool visit_positive_integer(std::uint64_t value) {
    if (inKey) {
      key = value;
    } else {
      sum += digest(static_cast<std::int32_t>(value));
    }
    return true;
  }
  bool visit_negative_integer(std::int64_t value) {
    sum += digest(static_cast<std::int32_t>(value));
    return true;
  }
  bool visit_float64(double value) {
    sum += digest(value);
    return true;
  }
  bool visit_str(const char* text, std::uint32_t size) {
    sum += digest(text, size);
    return true;
  }
  bool visit_ext(const char* bytes, std::uint32_t size) {  // a type byte stands in front
    sum += key == kNumber ? visit_vector<vectors, std::int32_t>(bytes + 1, size - 1)
                          : visit_vector<vectors, double>(bytes + 1, size - 1);
    return true;
  }
};

template <Vectors vectors = Vectors::kCopied>
std::uint64_t walk(const msgpack::sbuffer& buffer) {
  MsgpackSum<vectors> visitor;
  std::size_t offset = 0;
  while (offset < buffer.size()) msgpack::parse(buffer.data(), buffer.size(), offset, visitor);
  return visitor.sum;
}

/// Documents back to back, as a file of them is.
class Bson {
 public:
  Bson() : m_writer(NewWriter()) {}
  ~Bson() {
    bson_writer_destroy(m_writer);
    bson_free(m_bytes);
  }
  Bson(const Bson&) = delete;
  Bson& operator=(const Bson&) = delete;

  bson_t* Begin() {
    bson_t* document = nullptr;
    bson_writer_begin(m_writer, &document);
    return document;
  }
  void End() { bson_writer_end(m_writer); }

  /// Begins anew in the same buffer.
  void Clear() {
    bson_writer_destroy(m_writer);
    m_writer = NewWriter();
  }

  std::uint8_t* data() const { return m_bytes; }
  std::size_t size() const { return bson_writer_get_length(m_writer); }

 private:
  bson_writer_t* NewWriter() {
    return bson_writer_new(&m_bytes, &m_capacity, 0, bson_realloc_ctx, nullptr);
  }

  std::uint8_t* m_bytes = nullptr;
  std::size_t m_capacity = 0;
  bson_writer_t* m_writer;
};

inline void append_rows(Bson& bson) {
  for (const Row& row : rows()) {
    bson_t* const document = bson.Begin();
    bson_append_int32(document, "1", 1, row.number);
    bson_append_int32(document, "2", 1, row.small);
    bson_append_double(document, "3", 1, row.real);
    bson_append_int32(document, "4", 1, row.price);
    bson_append_int32(document, "5", 1, packed(row.date));
    bson_append_int32(document, "6", 1, packed(row.time));
    bson_append_utf8(document, "7", 1, row.text.data(), static_cast<int>(row.text.size()));
    bson_append_int32(document, "8", 1, row.error);
    bson.End();
  }
}

inline void append_vectors(Bson& bson) {
  for (const auto& [numbers, reals] : vector_rows()) {
    bson_t* const document = bson.Begin();
    const auto append = [document](const char* key, const auto& elements) {
      bson_append_binary(document, key, 1, BSON_SUBTYPE_BINARY,
                         reinterpret_cast<const std::uint8_t*>(elements.data()),
                         static_cast<std::uint32_t>(elements.size() * sizeof elements[0]));
    };
    append("1", numbers);
    append("3", reals);
    bson.End();
  }
}

/// Calls `use` with each document of a run of bytes.
template <typename Use>
void each_document(const Bson& bson, Use use) {
  for (std::size_t at = 0; at < bson.size();) {
    std::int32_t length = 0;
    std::memcpy(&length, bson.data() + at, sizeof length);
    bson_t document;
    if (!bson_init_static(&document, bson.data() + at, static_cast<std::size_t>(length))) return;
    use(document);
    at += static_cast<std::size_t>(length);
  }
}

template <Vectors vectors>
std::uint64_t digest(const bson_iter_t& field) {
  switch (bson_iter_type(&field)) {
    case BSON_TYPE_INT32: return digest(bson_iter_int32(&field));
    case BSON_TYPE_DOUBLE: return digest(bson_iter_double(&field));
    case BSON_TYPE_UTF8: {
      std::uint32_t length = 0;
      const char* const text = bson_iter_utf8(&field, &length);
      return digest(text, length);
    }
    case BSON_TYPE_BINARY: {
      std::uint32_t size = 0;
      const std::uint8_t* bytes = nullptr;
      bson_iter_binary(&field, nullptr, &size, &bytes);
      return *bson_iter_key(&field) == '1' ? visit_vector<vectors, std::int32_t>(bytes, size)
                                           : visit_vector<vectors, double>(bytes, size);
    }
    default: return 0;
  }
}

template <Vectors vectors = Vectors::kCopied>
std::uint64_t walk(const Bson& bson) {
  std::uint64_t sum = 0;
  each_document(bson, [&sum](const bson_t& document) {
    bson_iter_t field;
    bson_iter_init(&field, &document);
    while (bson_iter_next(&field)) sum += digest<vectors>(field);
  });
  return sum;
}

}  // namespace wqd_bench

#endif  // WQDATA_BENCH_PEERS_H_
