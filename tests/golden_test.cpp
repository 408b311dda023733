// The bytes of both record formats against the library, in both directions, and against the page.
#include "golden.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// The values as the data files write them.
std::string ValueOf(const Records& records) {
  std::string text;
  for (const Fields& record : records) {
    if (&record != records.data()) text += " /";
    for (const Field& field : record) {
      if (!text.empty()) text += &field == record.data() ? " " : " ; ";
      text += std::to_string(field.id) + ' ' + Meaning(field);
    }
  }
  return text;
}

TEST(Golden, BytesReadAsTheValueAndTheValueIsWrittenAsTheBytes) {
  for (const cf_id format : kBinaryFormats) {
    int values = 0, refused = 0;
    for (const Golden& entry : GoldenEntries(format)) {
      if (entry.kind == "count") continue;
      SCOPED_TRACE(CfName(format) + (' ' + entry.name + ": " + Hex(entry.bytes)));
      std::string bytes = entry.kind == "block" ? entry.bytes : BlockOf(format, {{entry.bytes}});
      const DataBlockPtr block = Wrap(format, bytes);
      if (entry.kind == "none") {  // is no field, and leaves the item alone
        CDataItem item(FID{5}, std::int32_t{6});
        EXPECT_TRUE(block->FirstRecord());
        EXPECT_FALSE(block->GetCurrentField(&item) || block->GetCurrentField(nullptr) ||
                     block->GetField(FID{263}, &item) || block->NextField());
        EXPECT_EQ(ValueOf({{FieldOf(item)}}), "5 long 6");
        EXPECT_EQ(block->GetVectorSize(), 0);
        ++refused;
        continue;
      }
      const std::vector<Fields> records = Read(*block);
      EXPECT_EQ(ValueOf(records), entry.value);
      for (const Road road : kRoads) {
        if (entry.kind == "read") continue;
        const DataBlockPtr written = Build(format, records, road);
        EXPECT_TRUE(written->Close());
        EXPECT_EQ(Hex(BytesOf(*written)), Hex(bytes)) << "road " << int(road);
      }
      ++values;
    }
    EXPECT_TRUE(values > 40 && refused > 10) << CfName(format);
  }
}

/// In the page's fenced parts "name | value" stands above the lines of a dump, each of which begins
/// with the format that it belongs to, or with "both".
TEST(Golden, ThePageShowsTheseBytes) {
  for (const cf_id format : kBinaryFormats) {
    std::map<std::string, std::string> entries, dumps;
    for (const auto& [kind, name, value, bytes] : GoldenEntries(format)) {
      entries[name + " | " + value] = Hex(bytes);
    }
    std::ifstream page(WQDATA_SOURCE_DIR "/docs/formats.md");
    bool fenced = false;
    std::string named;
    for (std::string line; std::getline(page, line);) {
      if (line.starts_with("```")) fenced = !fenced;
      if (line.find(" | ") != std::string::npos) named = line;
      const bool own =
          line.starts_with("both ") || line.starts_with(format == ZUL3 ? "zul3 " : "zul4 ");
      if (fenced && own) dumps[named] += Hex(BytesOfHex(line.substr(5)));
    }
    EXPECT_GE(dumps.size(), 17u) << CfName(format) << " has a dump of each type and of a block";
    for (const auto& [dumped, bytes] : dumps) EXPECT_EQ(bytes, entries[dumped]) << dumped;
  }
}

}  // namespace
