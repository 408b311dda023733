// Damaged bytes of both record formats, placed so that a read of one byte too many is a fault.
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <set>

#include "golden.h"

namespace {

using namespace wqd;
using namespace wqd_test;
using Words = std::vector<std::string>;

std::string input;  // of the walk that runs

/// Names the bytes that a walk has left. The access is then made again, and ends the program.
void NameInput(int) {
  if (write(STDERR_FILENO, input.data(), input.size()) < 0) std::abort();
  std::signal(SIGSEGV, SIG_DFL);
}

/// A block around read-only bytes that end where readable memory ends. One at a time.
DataBlockPtr Guarded(cf_id format, const std::string& bytes, int size, const std::string& damage) {
  constexpr std::size_t kRoom = 1 << 16;  // whole pages
  static char* const memory =
      static_cast<char*>(mmap(nullptr, 2 * kRoom, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  input = std::string(CfName(format)) + ", " + damage + ": " + Hex(bytes) + '\n';
  std::signal(SIGSEGV, NameInput);
  char* const at = memory + kRoom - bytes.size();
  mprotect(memory, kRoom, PROT_READ | PROT_WRITE);
  bytes.copy(at, bytes.size());
  mprotect(memory, kRoom, PROT_READ);
  return DataBlockPtr(CDataBlock::NewDataBlock(format, at, size));
}

/// What the current field means. One that is refused leaves the item alone; one of an unknown type
/// has an identifier and is missing.
std::string ReadField(CDataBlock& block) {
  CDataItem item(FID{5}, std::int16_t{77}, true);
  const bool known = block.GetCurrentField(nullptr);
  if (block.GetCurrentField(&item)) return Meaning(item);
  EXPECT_FALSE(known);
  const bool refused = item.GetError() == 77;
  EXPECT_EQ(item.GetId(), refused ? FID{5} : block.GetCurrentFieldId());
  EXPECT_EQ(item.GetError(), refused ? 77 : 2);
  return refused ? "refused" : "unknown";
}

/// Walks all of a block of `size` bytes. The fields, each record's behind the other's.
Words Walk(CDataBlock& block, std::size_t size) {
  const LogCapture log;
  Words fields, firsts, skipped;
  const auto stuck = [&] { return fields.size() + firsts.size() + skipped.size() > size; };
  EXPECT_LE(static_cast<std::size_t>(block.GetDataSize()), size);
  for (bool more = block.FirstRecord(); more && !stuck(); more = block.NextRecord()) {
    std::set<int> ids;
    firsts.push_back(block.FirstField() ? ReadField(block) : "none");
    for (bool field = block.FirstField(); field && !stuck(); field = block.NextField()) {
      fields.push_back(ReadField(block));
      if (fields.back() != "refused") ids.insert(block.GetCurrentFieldId());
    }
    EXPECT_LE(block.GetVectorSize(), static_cast<int>(size));
    for (const int id : {0, 256, 270, 290, 65535}) {
      EXPECT_EQ(block.FindField(static_cast<FID>(id)), ids.contains(id)) << "field " << id;
    }
  }
  for (bool more = block.FirstRecord(); more && !stuck(); more = block.NextRecord()) {
    skipped.push_back(block.FirstField() ? ReadField(block) : "none");
  }
  EXPECT_FALSE(stuck()) << "a walk without an end";
  EXPECT_EQ(skipped, firsts) << "records lie elsewhere when their fields are not walked";
  return fields;
}

/// A block of two records with every field of the data files that can be read, under identifiers
/// from 256 on.
class Hostile : public testing::TestWithParam<cf_id> {
 protected:
  Hostile() {
    auto entries = GoldenEntries(m_format);
    std::erase_if(entries, [](const auto& e) { return e.kind != "field" && e.kind != "read"; });
    const std::size_t half = entries.size() / 2;
    std::vector<Words> records(2);
    std::size_t end = m_header;
    for (std::size_t i = 0; i < 2 * half; ++i) {
      const auto& [kind, name, value, bytes] = entries[i];
      records[i / half].push_back(bytes.substr(0, 2) + Word(256 + i, 2) + bytes.substr(4));
      m_meanings.push_back(value.substr(value.find(' ') + 1));
      end += bytes.size() + (m_format == ZUL4 && i % half == 0 ? kRecordHead : 0);
      m_ends.push_back(end);
    }
    for (std::size_t i = 0; i < 2 * half && m_format == ZUL4; ++i) {
      m_ends[i] = m_ends[i / half * half + half - 1];
    }
    m_bytes = BlockOf(m_format, records);
  }

  /// Walks a block, and expects the fields that are whole in the first `intact` bytes as they are.
  Words WalkExpecting(std::size_t intact, const std::string& bytes, int size, std::size_t length,
                      const std::string& damage) const {
    const DataBlockPtr block = Guarded(m_format, bytes, size, damage);
    SCOPED_TRACE(input);
    Words fields = Walk(*block, length);
    for (std::size_t i = 0; i < m_ends.size() && m_ends[i] <= intact; ++i) {
      EXPECT_EQ(i < fields.size() ? fields[i] : "no field", m_meanings[i]) << "field " << i;
    }
    return fields;
  }

  static constexpr std::size_t kRecordHead = 8;
  const cf_id m_format = GetParam();
  const std::size_t m_header = m_format == ZUL3 ? 12 : 8;
  std::string m_bytes;
  Words m_meanings;
  std::vector<std::size_t> m_ends;  // of the bytes that a field needs: of its own, or its record's
};

INSTANTIATE_TEST_SUITE_P(, Hostile, testing::Values(ZUL3, ZUL4),
                         [](const auto& tested) { return CfName(tested.param); });

TEST_P(Hostile, WhatIsCutIsRefusedAndTheRestIsRead) {
  ASSERT_TRUE(m_meanings.size() > 32 && m_ends.back() == m_bytes.size());
  for (std::size_t size = 0; size <= m_bytes.size() && !HasFailure(); ++size) {
    const std::string cut = m_bytes.substr(0, size);
    std::string declared = m_bytes;
    if (size >= m_header) declared.replace(m_format == ZUL3 ? 2 : 0, 4, Word(size, 4));
    const std::pair<std::string, int> inputs[] = {
        {cut, static_cast<int>(size)},
        {declared, static_cast<int>(declared.size())},  // shorter by its header
        {declared.substr(0, size), -1}};
    for (const auto& [bytes, given] : inputs) {
      if (&bytes != &inputs[0].first && size < m_header) continue;
      const Words fields = WalkExpecting(size, bytes, given, size, "cut");
      for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_TRUE(fields[i] == "refused" || fields[i] == m_meanings.at(i)) << input << fields[i];
      }
    }
  }
}

TEST_P(Hostile, DamagedWords) {
  for (const std::size_t width : {2u, 4u}) {
    for (std::size_t at = 0; at + width <= m_bytes.size() && !HasFailure(); ++at) {
      std::uint32_t word = 0;
      for (std::size_t i = 0; i < width; ++i) {
        word |= std::uint32_t{static_cast<std::uint8_t>(m_bytes[at + i])} << 8 * i;
      }
      for (const std::uint32_t value : {0u, word + 1, word - 1, UINT32_MAX}) {
        std::string bytes = m_bytes;
        bytes.replace(at, width, Word(value, static_cast<int>(width)));
        WalkExpecting(at < m_header ? 0 : at, bytes, static_cast<int>(bytes.size()), bytes.size(),
                      "damaged at " + std::to_string(at));
      }
    }
  }
}

TEST_P(Hostile, UnknownTypesAreLoggedAndEndAWalk) {
  const std::string known = BytesOfHex("03 00 00 01 07 00");
  for (const int type : {0, 4, 9, 10, 14, 19, 98, 100, 102, 257, 65535}) {
    const std::string unknown = Word(static_cast<std::size_t>(type), 2) + Word(263, 2);
    const std::string bytes = BlockOf(m_format, {{unknown, known}, {known, known}});
    const DataBlockPtr block =
        Guarded(m_format, bytes, static_cast<int>(bytes.size()), "unknown type");
    SCOPED_TRACE(input);
    CDataItem item(FID{5}, std::int32_t{6});
    const LogCapture log;
    EXPECT_FALSE(block->GetCurrentField(&item));
    EXPECT_EQ(std::to_string(item.GetId()) + ' ' + Meaning(item), "263 error 2");
    const std::string line = "Unhandled type<" + std::to_string(type) + "> for fid<263> inside C" +
                             (m_format == ZUL3 ? "Zul3" : "Zul4") + "Block::GetCurrentField";
    EXPECT_EQ(log.lines(), (LogCapture::Lines{{-1, line}}));
    EXPECT_TRUE(block->GetCurrentFieldType() == type && block->GetCurrentFieldId() == 263);
    EXPECT_TRUE(!block->NextField() && block->FirstField() && block->GetCurrentFieldId() == 263);
    EXPECT_EQ(block->NextRecord(), m_format == ZUL4) << "where a record says its end";
  }
}

TEST_P(Hostile, CountsBeyondTheBytes) {
  int checked = 0;
  for (const Golden& entry : GoldenEntries(m_format)) {
    if (entry.kind != "count") continue;
    const auto size = static_cast<int>(entry.bytes.size());
    const DataBlockPtr block = Guarded(m_format, entry.bytes, size, entry.name);
    SCOPED_TRACE(input);
    std::ostringstream value;
    value << block->GetDataSize() << " bytes, " << block->GetRecordCount() << " records, "
          << block->GetFieldCount() << " fields:";
    for (const std::string& field : Walk(*block, entry.bytes.size())) value << ' ' << field;
    EXPECT_EQ(value.str(), entry.value);
    ++checked;
  }
  EXPECT_GT(checked, 5);
}

TEST_P(Hostile, ATransferTakesNoFieldForAnotherRecordsAndNoStringForNone) {
  const std::string number = BytesOfHex("03 00 07 01 02 01");
  const std::string whole = BlockOf(m_format, {{number, number}, {number, number}});
  const std::size_t fields = m_format == ZUL3 ? 10 : 12, records = m_format == ZUL3 ? 8 : 6;
  const std::pair<std::size_t, int> words[] = {{fields, 2}, {fields, 1}, {fields, 3}, {records, 3}};
  for (const auto& [at, word] : words) {
    std::string bytes = whole;
    bytes.replace(at, 2, Word(static_cast<std::size_t>(word), 2));
    const bool skipped = m_format == ZUL3 && at == fields && word == 1;  // what lies behind
    for (const cf_id to : kBinaryFormats) {
      const DataBlockPtr block = Wrap(m_format, bytes), target = NewBlock(to);
      EXPECT_EQ(target->Add(block.get()), bytes == whole || skipped) << at << ' ' << word;
    }
  }
  for (const int strings : {3, 0, 1, 1000}) {
    const std::string tail = "a" + Word(0, 1) + "bc" + Word(0, 1) + "d";
    const std::string count = Word(static_cast<std::size_t>(strings), m_format == ZUL3 ? 2 : 4);
    const std::string size = Word(tail.size(), m_format == ZUL3 ? 2 : 4);
    const std::string head =
        BytesOfHex("10 00 07 01") + (m_format == ZUL3 ? size + count : count + size);
    std::string bytes = BlockOf(m_format, {{head + tail, number}});
    const DataBlockPtr block = Wrap(m_format, bytes), target = NewBlock(CSV);
    EXPECT_TRUE(target->Add(block.get()));
    EXPECT_EQ(BytesOf(*target), "a,258\nbc,258\nd,258\n" + Word(0, 1)) << strings;
  }
}

}  // namespace
