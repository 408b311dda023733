// The bytes of both record formats against the library, in both directions, and against the page.
#include <gtest/gtest.h>

#include <array>
#include <set>

#include "golden.h"

namespace {

using wqd::CDataBlock;
using wqd::CDataItem;
using wqd::DataBlockPtr;
using wqd_test::Field;
using wqd_test::Golden;
using wqd_test::GoldenEntries;
using wqd_test::Hex;
using wqd_test::Road;
using Records = std::vector<std::vector<Field>>;

constexpr cf_id kFormats[] = {ZUL3, ZUL4};

std::string WholeBlock(cf_id format, const Golden& entry) {
  return entry.kind == "block" ? entry.bytes : wqd_test::BlockOf(format, {{entry.bytes}});
}

std::string Shown(cf_id format, const Golden& entry) {
  return std::string(CfName(format)) + ' ' + entry.name + ": " + Hex(entry.bytes);
}

DataBlockPtr Wrapped(cf_id format, std::string& bytes) {
  return DataBlockPtr(
      CDataBlock::NewDataBlock(format, bytes.data(), static_cast<int>(bytes.size())));
}

Records ReadAll(CDataBlock& block) {
  Records records;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    records.emplace_back();
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      CDataItem item;
      EXPECT_TRUE(block.GetCurrentField(&item));
      EXPECT_EQ(block.GetCurrentFieldId(), item.GetId());
      records.back().push_back(wqd_test::FieldOf(item));
    }
    EXPECT_EQ(block.GetFieldCount(), static_cast<int>(records.back().size()));
  }
  EXPECT_EQ(block.GetRecordCount(), static_cast<int>(records.size()));
  return records;
}

/// The values as the data files write them.
std::string ValueOf(const Records& records) {
  std::string text;
  for (const auto& record : records) {
    if (&record != records.data()) text += " /";
    for (const Field& field : record) {
      if (!text.empty()) text += &field == record.data() ? " " : " ; ";
      text += std::to_string(field.id) + ' ' + Meaning(field);
    }
  }
  return text;
}

std::string Written(cf_id format, const Records& records, Road road) {
  const DataBlockPtr block(CDataBlock::NewDataBlock(format));
  for (const auto& record : records) {
    EXPECT_TRUE(block->StartRecord());
    for (const Field& field : record) EXPECT_TRUE(Add(*block, field, road)) << field;
    EXPECT_TRUE(block->EndRecord());
  }
  EXPECT_TRUE(block->Close());
  const auto size = static_cast<std::size_t>(block->GetDataSize());
  return {static_cast<const char*>(block->GetData()), size};
}

TEST(Golden, BytesReadAsTheValueAndTheValueIsWrittenAsTheBytes) {
  for (const cf_id format : kFormats) {
    int checked = 0;
    for (const Golden& entry : GoldenEntries(format)) {
      if (entry.kind == "none" || entry.kind == "count") continue;
      SCOPED_TRACE(Shown(format, entry));
      std::string bytes = WholeBlock(format, entry);
      const Records records = ReadAll(*Wrapped(format, bytes));
      EXPECT_EQ(ValueOf(records), entry.value);
      for (const Road road : wqd_test::kRoads) {
        EXPECT_TRUE(entry.kind == "read" || Hex(Written(format, records, road)) == Hex(bytes))
            << "road " << static_cast<int>(road) << ": " << Hex(Written(format, records, road));
      }
      ++checked;
    }
    EXPECT_GT(checked, 40) << CfName(format);
  }
}

TEST(Golden, WhatDoesNotFitIsNoFieldAndLeavesTheItemAlone) {
  for (const cf_id format : kFormats) {
    int checked = 0;
    for (const Golden& entry : GoldenEntries(format)) {
      if (entry.kind != "none") continue;
      SCOPED_TRACE(Shown(format, entry));
      std::string bytes = WholeBlock(format, entry);
      const DataBlockPtr block = Wrapped(format, bytes);
      CDataItem item(FID{5}, std::int32_t{6});
      EXPECT_TRUE(block->FirstRecord());
      EXPECT_FALSE(block->GetCurrentField(&item) || block->GetCurrentField(nullptr) ||
                   block->GetField(FID{263}, &item) || block->NextField());
      EXPECT_EQ(ValueOf({{wqd_test::FieldOf(item)}}), "5 long 6");
      EXPECT_EQ(block->GetVectorSize(), 0);
      ++checked;
    }
    EXPECT_GT(checked, 10) << CfName(format);
  }
}

/// The dumps of the page. In its fenced parts "name | value" stands above the lines of a dump, each
/// of which begins with the format that it belongs to, or with "both".
std::array<std::map<std::string, Golden>, 2> DumpsOfThePage() {
  std::array<std::map<std::string, Golden>, 2> dumps;
  std::ifstream page(WQDATA_SOURCE_DIR "/docs/formats.md");
  bool fenced = false;
  std::string name, value;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("```")) fenced = !fenced;
    const std::size_t bar = line.find(" | ");
    if (fenced && bar != std::string::npos) {
      name = line.substr(0, bar);
      value = line.substr(bar + 3);
    }
    const bool both = line.starts_with("both ");
    for (std::size_t i = 0; i < 2; ++i) {
      if (!fenced || !(both || line.starts_with(i == 0 ? "zul3 " : "zul4 "))) continue;
      dumps[i][name].value = value;
      dumps[i][name].bytes += wqd_test::BytesOfHex(line.substr(5));
    }
  }
  return dumps;
}

TEST(Golden, ThePageShowsTheseBytes) {
  const auto dumps = DumpsOfThePage();
  for (std::size_t i = 0; i < 2; ++i) {
    std::map<std::string, Golden> entries;
    for (const Golden& entry : GoldenEntries(kFormats[i])) entries[entry.name] = entry;
    std::set<char> types;
    for (const auto& [name, dump] : dumps[i]) {
      EXPECT_EQ(dump.value, entries[name].value) << name;
      EXPECT_EQ(Hex(dump.bytes), Hex(entries[name].bytes)) << name;
      if (entries[name].kind != "block") types.insert(dump.bytes[0]);
    }
    EXPECT_EQ(types.size(), 16u) << CfName(kFormats[i]) << " has a dump of each type";
    EXPECT_TRUE(dumps[i].contains("two_records")) << CfName(kFormats[i]);
  }
}

}  // namespace
