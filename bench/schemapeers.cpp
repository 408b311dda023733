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
std::vector<std::uint8_t> tagged_tables;

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

/// Calls `use` with each of the tables, its size in front, once it was found valid; false for one
/// that is not.
template <typename Table, typename Use>
bool each_table(const std::vector<std::uint8_t>& all, Use use) {
  constexpr std::size_t kPrefix = sizeof(flatbuffers::uoffset_t);
  std::size_t at = 0;
  while (all.size() - at >= kPrefix) {
    const std::uint8_t* const table = all.data() + at;
    const std::size_t size = kPrefix + flatbuffers::ReadScalar<flatbuffers::uoffset_t>(table);
    if (size > all.size() - at) return false;
    flatbuffers::Verifier verifier(table, size);
    if (!verifier.VerifySizePrefixedBuffer<Table>(nullptr)) return false;
    use(table);
    at += size;
  }
  return at == all.size();
}

/// Appends a record that is finished.
void append(const flatbuffers::FlatBufferBuilder& builder, std::vector<std::uint8_t>& all) {
  const std::uint8_t* const bytes = builder.GetBufferPointer();
  all.insert(all.end(), bytes, bytes + builder.GetSize());
}

std::uint64_t digest_of(const flatbuffers::String& text) {
  return digest(text.c_str(), text.size());
}

std::uint64_t digest_of(const flat::Field& field) {
  switch (field.value_type()) {
    case flat::Value_Number: return digest(field.value_as_Number()->value());
    case flat::Value_Small: return digest(std::int32_t{field.value_as_Small()->value()});
    case flat::Value_Real: return digest(field.value_as_Real()->value());
    case flat::Value_Price: return digest(field.value_as_Price()->value());
    case flat::Value_Date: return digest(field.value_as_Date()->value());
    case flat::Value_Time: return digest(field.value_as_Time()->value());
    case flat::Value_Text: return digest_of(*field.value_as_Text());
    case flat::Value_Error: return digest(std::int32_t{field.value_as_Error()->value()});
    default: return 0;
  }
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
    append(builder, tables);
  }
  return tables.size();
}

void build_tagged_tables() {
  flatbuffers::FlatBufferBuilder builder;
  tagged_tables.clear();
  for (const Row& row : rows()) {
    builder.Clear();
    const auto field = [&builder](Id id, flat::Value type, auto value) {
      return flat::CreateField(builder, id, type, value.Union());
    };
    const auto number = [&](Id id, flat::Value type, const auto& value) {
      return field(id, type, builder.CreateStruct(value));
    };
    const flatbuffers::Offset<flat::Field> fields[] = {
        number(kNumber, flat::Value_Number, flat::Number(row.number)),
        number(kSmall, flat::Value_Small, flat::Small(row.small)),
        number(kReal, flat::Value_Real, flat::Real(row.real)),
        number(kPrice, flat::Value_Price, flat::Price(row.price, kBaseCode)),
        number(kDate, flat::Value_Date, flat::Date(packed(row.date))),
        number(kTime, flat::Value_Time, flat::Time(packed(row.time))),
        field(kText, flat::Value_Text, builder.CreateString(row.text)),
        number(kError, flat::Value_Error, flat::Error(row.error))};
    builder.FinishSizePrefixed(
        flat::CreateTaggedRecord(builder, builder.CreateVector(fields, std::size(fields))));
    append(builder, tagged_tables);
  }
}

std::uint64_t read_tables() {
  std::uint64_t sum = 0;
  each_table<flat::Record>(tables, [&sum](const std::uint8_t* at) {
    const flat::Record* const record = flat::GetSizePrefixedRecord(at);
    sum += digest(record->number()) + digest(std::int32_t{record->small()}) +
           digest(record->real()) + digest(record->price()) + digest(record->date()) +
           digest(record->time()) + digest_of(*record->text()) +
           digest(std::int32_t{record->error()});
  });
  return sum;
}

std::uint64_t visit_tables() {
  TableSum visitor;
  each_table<flat::Record>(tables, [&visitor](const std::uint8_t* at) {
    flatbuffers::IterateFlatBuffer(at + sizeof(flatbuffers::uoffset_t), flat::RecordTypeTable(),
                                   &visitor);
  });
  return visitor.sum;
}

std::uint64_t walk_tagged_tables() {
  std::uint64_t sum = 0;
  each_table<flat::TaggedRecord>(tagged_tables, [&sum](const std::uint8_t* at) {
    const auto* const record = flatbuffers::GetSizePrefixedRoot<flat::TaggedRecord>(at);
    for (const flat::Field* const field : *record->fields()) sum += digest_of(*field);
  });
  return sum;
}

bool are_valid_tables() {
  return each_table<flat::Record>(tables, [](const std::uint8_t*) {});
}

std::uint8_t& start_of_a_table() { return tables[sizeof(flatbuffers::uoffset_t)]; }

}  // namespace wqd_bench
