// Bytes of both record formats that are cut, or that declare what is not there.
#include "golden.h"

namespace {

using namespace wqd;
using namespace wqd_test;
using Words = std::vector<std::string>;

/// The fields of all records, one behind the other.
Words Walk(CDataBlock& block) {
  const LogCapture log;
  Words fields;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      CDataItem item;
      fields.push_back(block.GetCurrentField(&item) ? Meaning(item) : "refused");
    }
  }
  return fields;
}

/// Cuts a block of two records, with each field of the data files that can be read among them.
void ExpectWhatIsWholeInEachCut(cf_id format) {
  auto entries = GoldenEntries(format);
  std::erase_if(entries, [](const auto& e) { return e.kind != "field" && e.kind != "read"; });
  const std::size_t half = entries.size() / 2, header = format == ZUL3 ? 12 : 8;
  std::vector<Words> records(2);
  Words meanings;
  std::vector<std::size_t> ends;  // of the bytes that a field needs: of its own, or its record's
  std::size_t end = header;
  for (Words& record : records) {
    if (format == ZUL4) end += 8;
    for (std::size_t i = 0; i < half; ++i) {
      const Golden& entry = entries[meanings.size()];
      record.push_back(entry.bytes);
      meanings.push_back(entry.value.substr(entry.value.find(' ') + 1));
      ends.push_back(end += entry.bytes.size());
    }
    if (format == ZUL4) std::fill(ends.end() - static_cast<std::ptrdiff_t>(half), ends.end(), end);
  }
  const std::string whole = BlockOf(format, records);
  ASSERT_TRUE(half > 16 && end == whole.size());
  for (std::size_t size = 0; size <= end && !testing::Test::HasFailure(); ++size) {
    std::string declared = whole;
    if (size >= header) declared.replace(format == ZUL3 ? 2 : 0, 4, Word(size, 4));
    const std::string cut = whole.substr(0, size), both = declared.substr(0, size);
    // By the size given, by the length in the header, and by that alone.
    std::vector<std::pair<std::string, std::size_t>> inputs = {{cut, size}};
    if (size >= header) inputs.insert(inputs.end(), {{declared, end}, {both, SIZE_MAX}});
    for (const auto& [bytes, given] : inputs) {
      std::vector<char> exact(bytes.begin(), bytes.end());
      const DataBlockPtr block(
          CDataBlock::NewDataBlock(format, exact.data(), static_cast<int>(given)));
      Words fields = Walk(*block);
      if (!fields.empty() && fields.back() == "refused") fields.pop_back();  // the one that is cut
      const auto fit = std::upper_bound(ends.begin(), ends.end(), size) - ends.begin();
      EXPECT_EQ(fields, Words(meanings.begin(), meanings.begin() + fit)) << size << ' ' << given;
    }
  }
}

TEST(Hostile, WhatIsCutIsRefusedAndTheRestIsRead) {
  for (const cf_id format : kBinaryFormats) ExpectWhatIsWholeInEachCut(format);
}

TEST(Hostile, UnknownTypesAreLoggedAndEndAWalk) {
  const std::string known = BytesOfHex("03 00 00 01 07 00");
  for (const cf_id format : kBinaryFormats) {
    for (const int type : {0, 4, 9, 10, 14, 19, 98, 100, 102, 257, 65535}) {
      SCOPED_TRACE(testing::Message() << CfName(format) << ", type " << type);
      const std::string unknown = Word(static_cast<std::size_t>(type), 2) + Word(263, 2);
      std::string bytes = BlockOf(format, {{unknown, known}, {known, known}});
      const DataBlockPtr block = Wrap(format, bytes);
      CDataItem item(FID{5}, std::int32_t{6});
      const LogCapture log;
      EXPECT_FALSE(block->GetCurrentField(&item));
      EXPECT_EQ(std::to_string(item.GetId()) + ' ' + Meaning(item), "263 error 2");
      const std::string line = "Unhandled type<" + std::to_string(type) +
                               "> for fid<263> inside C" + (format == ZUL3 ? "Zul3" : "Zul4") +
                               "Block::GetCurrentField";
      EXPECT_EQ(log.lines(), (LogCapture::Lines{{-1, line}}));
      EXPECT_TRUE(block->GetCurrentFieldType() == type && block->GetCurrentFieldId() == 263);
      EXPECT_TRUE(!block->NextField() && block->FirstField() && block->GetCurrentFieldId() == 263);
      EXPECT_EQ(block->NextRecord(), format == ZUL4) << "where a record says its end";
    }
  }
}

TEST(Hostile, CountsBeyondTheBytesAreToldAndNotFollowed) {
  for (const cf_id format : kBinaryFormats) {
    int checked = 0;
    for (Golden& entry : GoldenEntries(format)) {
      if (entry.kind != "count") continue;
      const DataBlockPtr block = Wrap(format, entry.bytes);
      std::ostringstream value;
      value << block->GetDataSize() << " bytes, " << block->GetRecordCount() << " records, "
            << block->GetFieldCount() << " fields:";
      for (const std::string& field : Walk(*block)) value << ' ' << field;
      EXPECT_EQ(value.str(), entry.value) << CfName(format) << ' ' << entry.name;
      ++checked;
    }
    EXPECT_GT(checked, 5);
  }
}

TEST(Hostile, ATransferTakesNoFieldForAnotherRecordsAndNoStringForNone) {
  const std::string number = BytesOfHex("03 00 07 01 02 01");
  for (const cf_id from : kBinaryFormats) {
    const std::string whole = BlockOf(from, {{number, number}, {number, number}});
    const std::size_t fields = from == ZUL3 ? 10 : 12, records = from == ZUL3 ? 8 : 6;
    const std::pair<std::size_t, std::size_t> words[] = {
        {fields, 2}, {fields, 1}, {fields, 3}, {records, 3}};
    for (const auto& [at, word] : words) {
      std::string bytes = whole;
      bytes.replace(at, 2, Word(word, 2));
      const bool skipped = from == ZUL3 && at == fields && word == 1;  // what lies behind
      for (const cf_id to : kBinaryFormats) {
        const DataBlockPtr block = Wrap(from, bytes), target = NewBlock(to);
        EXPECT_EQ(target->Add(block.get()), bytes == whole || skipped) << at << ' ' << word;
      }
    }
    for (const std::size_t strings : {3u, 0u, 1u, 1000u}) {
      const std::string tail = "a" + Word(0, 1) + "bc" + Word(0, 1) + "d";
      const int width = from == ZUL3 ? 2 : 4;
      const std::string count = Word(strings, width), size = Word(tail.size(), width);
      std::string field = BytesOfHex("10 00 07 01");
      field += (from == ZUL3 ? size + count : count + size) + tail;
      std::string bytes = BlockOf(from, {{field, number}});
      const DataBlockPtr block = Wrap(from, bytes), target = NewBlock(CSV);
      EXPECT_TRUE(target->Add(block.get()));
      EXPECT_EQ(BytesOf(*target), "a,258\nbc,258\nd,258\n" + Word(0, 1)) << strings;
    }
  }
}

}  // namespace
