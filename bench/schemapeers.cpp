// Apart from the other series, whose code compilers optimise otherwise beside so many headers.
#include "schemapeers.h"

#include <capnp/message.h>
#include <capnp/serialize.h>
#include <flatbuffers/minireflect.h>
#include <kj/io.h>
#include <rows.capnp.h>
#include <rows_generated.h>

#include "data.h"
#include "packed.h"

namespace wqd_bench {
namespace {

constexpr std::size_t kMostBytesOfRecord = 128;

/// As many words as all records take.
kj::ArrayPtr<capnp::word> room_of_messages() {
  static kj::Array<capnp::word> words =
      kj::heapArray<capnp::word>(rows().size() * kMostBytesOfRecord / sizeof(capnp::word));
  return words;
}

std::size_t bytes_of_messages = 0;
std::vector<std::uint8_t> tables;

/// Adds up what it visits.
struct TableSum : flatbuffers::IterationVisitor {
  std::uint64_t sum = 0;

  void Int(std::int32_t value, const char*) override { sum += digest(value); }
  void Short(std::int16_t value, const char*) override { sum += digest(std::int32_t{value}); }
  void Double(double value) override { sum += digest(value); }
  void String(const flatbuffers::String* text) override {
    sum += digest(text->c_str(), text->size());
  }
};

/// Calls `use` with each table, its size in front, once it was found valid; false for one that is
/// not.
template <typename Use>
bool each_table(Use use) {
  constexpr std::size_t kPrefix = sizeof(flatbuffers::uoffset_t);
  std::size_t at = 0;
  while (tables.size() - at >= kPrefix) {
    const std::uint8_t* const table = tables.data() + at;
    const std::size_t size = kPrefix + flatbuffers::ReadScalar<flatbuffers::uoffset_t>(table);
    if (size > tables.size() - at) return false;
    flatbuffers::Verifier verifier(table, size);
    if (!flat::VerifySizePrefixedRecordBuffer(verifier)) return false;
    use(table);
    at += size;
  }
  return at == tables.size();
}

}  // namespace

std::size_t build_messages() {
  capnp::word scratch[kMostBytesOfRecord / sizeof(capnp::word)] = {};
  kj::ArrayOutputStream output(room_of_messages().asBytes());
  for (const Row& row : rows()) {
    capnp::MallocMessageBuilder message(scratch);  // which leaves it zero again
    auto record = message.initRoot<capnproto::Record>();
    record.setNumber(row.number);
    record.setSmall(row.small);
    record.setReal(row.real);
    record.setPrice(row.price);
    record.setDate(packed(row.date));
    record.setTime(packed(row.time));
    record.setText(capnp::Text::Reader(row.text.data(), row.text.size()));
    record.setError(row.error);
    capnp::writeMessage(output, message);
  }
  return bytes_of_messages = output.getArray().size();
}

std::uint64_t read_messages() {
  std::uint64_t sum = 0;
  kj::ArrayPtr<const capnp::word> left =
      room_of_messages().slice(0, bytes_of_messages / sizeof(capnp::word));
  while (left.size() > 0) {
    capnp::FlatArrayMessageReader message(left);
    const auto record = message.getRoot<capnproto::Record>();
    const capnp::Text::Reader text = record.getText();
    sum += digest(record.getNumber()) + digest(std::int32_t{record.getSmall()}) +
           digest(record.getReal()) + digest(record.getPrice()) + digest(record.getDate()) +
           digest(record.getTime()) + digest(text.begin(), text.size()) +
           digest(std::int32_t{record.getError()});
    left = kj::arrayPtr(message.getEnd(), left.end());
  }
  return sum;
}

std::size_t build_tables() {
  static flatbuffers::FlatBufferBuilder builder;
  tables.clear();
  for (const Row& row : rows()) {
    builder.Clear();
    const auto text = builder.CreateString(row.text);
    builder.FinishSizePrefixed(flat::CreateRecord(builder, row.number, row.small, row.real,
                                                  row.price, packed(row.date), packed(row.time),
                                                  text, row.error));
    const std::uint8_t* const bytes = builder.GetBufferPointer();
    tables.insert(tables.end(), bytes, bytes + builder.GetSize());
  }
  return tables.size();
}

std::uint64_t read_tables() {
  std::uint64_t sum = 0;
  each_table([&sum](const std::uint8_t* at) {
    const flat::Record* const record = flat::GetSizePrefixedRecord(at);
    sum += digest(record->number()) + digest(std::int32_t{record->small()}) +
           digest(record->real()) + digest(record->price()) + digest(record->date()) +
           digest(record->time()) + digest(record->text()->c_str(), record->text()->size()) +
           digest(std::int32_t{record->error()});
  });
  return sum;
}

std::uint64_t walk_tables() {
  TableSum visitor;
  each_table([&visitor](const std::uint8_t* at) {
    flatbuffers::IterateFlatBuffer(at + sizeof(flatbuffers::uoffset_t), flat::RecordTypeTable(),
                                   &visitor);
  });
  return visitor.sum;
}

bool are_valid_tables() {
  return each_table([](const std::uint8_t*) {});
}

}  // namespace wqd_bench
