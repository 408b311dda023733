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

/// By the size given, by the length in the header, and by that alone.
TEST(Hostile, WhatIsCutIsRefusedAndTheRestIsRead) {
  for (const cf_id format : kBinaryFormats) {
    const std::size_t header = format == ZUL3 ? 12 : 8;
    std::vector<Words> records;
    Words meanings;
    std::vector<std::size_t> ends = {header};  // of the records
    for (const auto& [kind, name, value, bytes] : GoldenEntries(format)) {
      if (kind != "field" && kind != "read") continue;
      records.push_back({bytes});
      meanings.push_back(value.substr(value.find(' ') + 1));
      ends.push_back(ends.back() + (format == ZUL4 ? 8 : 0) + bytes.size());
    }
    const std::string whole = BlockOf(format, records);
    ASSERT_TRUE(records.size() > 32 && ends.back() == whole.size());
    for (std::size_t size = 0; size <= whole.size(); ++size) {
      const auto fit = std::upper_bound(ends.begin() + 1, ends.end(), size) - ends.begin() - 1;
      std::string declared = whole;
      if (size >= header) declared.replace(format == ZUL3 ? 2 : 0, 4, Word(size, 4));
      for (const auto& [bytes, given] : {std::pair(whole.substr(0, size), static_cast<int>(size)),
                                         std::pair(declared, static_cast<int>(whole.size())),
                                         std::pair(declared.substr(0, size), -1)}) {
        if (size < header && given != static_cast<int>(size)) continue;  // has no length
        std::vector<char> exact(bytes.begin(), bytes.end());
        const DataBlockPtr block(CDataBlock::NewDataBlock(format, exact.data(), given));
        Words fields = Walk(*block);
        if (!fields.empty() && fields.back() == "refused") fields.pop_back();  // the one cut
        ASSERT_EQ(fields, Words(meanings.begin(), meanings.begin() + fit)) << size << ' ' << given;
      }
    }
  }
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
    for (std::size_t size = 0; size < (from == ZUL3 ? 12 : 8); ++size) {
      std::string cut = whole.substr(0, size);
      EXPECT_FALSE(NewBlock(ZUL4)->Add(Wrap(from, cut).get())) << size;
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
