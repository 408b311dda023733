// Blocks of text, written and read.
#include <wqdata/items/dataitem.h>

#include <cfloat>
#include <functional>

#include "support.h"

namespace {

using namespace wqd;
using namespace wqd_test;

DataBlockPtr Wrapped(const char* text, cf_id format = TEXT) {
  return DataBlockPtr(CDataBlock::NewDataBlock(format, const_cast<char*>(text), 0));
}

/// One writing operation; a value stands for its `Add`.
struct Step {
  Step(bool (CDataBlock::*call)()) : take(call) {}
  Step(CDataItem item) : take([item](CDataBlock& block) mutable { return block.Add(item); }) {}
  template <typename Value>
  Step(Value value) : take([value](CDataBlock& block) { return block.Add(FID{9}, value); }) {}
  std::function<bool(CDataBlock&)> take;
};
const Step kStart = &CDataBlock::StartRecord, kEnd = &CDataBlock::EndRecord,
           kClose = &CDataBlock::Close;

/// "2:b", or "none" for no current field. An error item's value is "#" and its number.
std::string Current(CDataBlock& block) {
  CDataItem item;
  if (!block.GetCurrentField(&item)) return "none";
  EXPECT_TRUE(block.GetCurrentFieldId() == item.GetId() && block.GetCurrentFieldType() == 0);
  EXPECT_EQ(item.GetType(), item.IsNull() ? TYPE_ERROR : TYPE_STRING);
  return std::to_string(item.GetId()) + ":" +
         (item.IsNull() ? "#" + std::to_string(item.GetError()) : item.GetString());
}

/// The fields from the first on, a blank behind each.
std::string Walk(CDataBlock& block) {
  std::string fields;
  for (bool more = block.FirstField(); more && fields.size() < 9999; more = block.NextField()) {
    fields += Current(block) + " ";
  }
  return fields;
}

TEST(Format, NamesAndNumbers) {
  const LogCapture log;
  ExpectRows(R"(TEXT => 1 | text => 1 | Csv => 2 | notxltable => 3 | zul3 => 4 | ZUL4 => 5
                BTRIEVE => 6 | INVALID => 0 | TEX => 0 | => 0)",
             [](const std::string& name) { return std::to_string(CfId(name.c_str())); });
  EXPECT_EQ(CfId(nullptr), INVALID);
  EXPECT_EQ(log.lines(), (LogCapture::Lines{{2, "CfID: Invalid format 'INVALID'"},
                                            {2, "CfID: Invalid format 'TEX'"},
                                            {2, "CfID: Invalid format ''"},
                                            {2, "CfID: null format"}}));
  std::string names;
  for (int i = -1; i < 8; ++i) names += CfName(cf_id(i)) + std::string(" ");
  EXPECT_EQ(names, "INVALID INVALID TEXT CSV NOTXLTABLE ZUL3 ZUL4 Btrieve INVALID ");
}

TEST(Factory, CountsItsBlocksAndLogsNothing) {
  const int before = CDataBlock::_instances;
  const char text[] = "1,a\n";
  const LogCapture log;
  for (const cf_id format : {INVALID, NOTXLTABLE, cf_id(7), cf_id(-1)}) {
    EXPECT_FALSE(NewBlock(format) || Wrapped(text, format)) << format;
    EXPECT_EQ(CDataBlock::FixedSizeDataBlock(format, nullptr, 0), nullptr) << format;
  }
  for (const cf_id format : {TEXT, CSV}) {
    const DataBlockPtr written = NewBlock(format), wrapped = Wrapped(text, format);
    const DataBlockPtr aroundNull = Wrapped(nullptr, format);
    EXPECT_EQ(CDataBlock::_instances, before + 3) << format;
    EXPECT_TRUE(written->GetFormat() == format && wrapped->GetFormat() == TEXT);
    EXPECT_TRUE(!written->IsReadOnly() && wrapped->IsReadOnly() && !aroundNull->IsReadOnly());
    EXPECT_TRUE(wrapped->GetData() == text && aroundNull->GetData() == nullptr) << format;
    EXPECT_FALSE(aroundNull->FirstRecord() || aroundNull->NextRecord() || aroundNull->FirstField());
    EXPECT_TRUE(aroundNull->Add(FID{1}, "a") && BytesOf(*aroundNull) == "a");
  }
  EXPECT_EQ(log.lines(), LogCapture::Lines{});
  EXPECT_EQ(CDataBlock::_instances, before);
}

TEST(TextWriting, BytesAndCounts) {
  using namespace std::string_literals;
  char largest[400];
  std::snprintf(largest, sizeof largest, "%.4f", -DBL_MAX);
  *std::strchr(largest, *std::localeconv()->decimal_point) = '.';
  const std::string n700 = Letters(700);
  // The bytes have a bar for the separator, and behind them the counts of records and fields.
  const std::pair<std::vector<Step>, std::string> cases[] = {
      {{kStart, kEnd, kClose, kClose}, "\n\0\0 1 0"s},
      {{kStart, 1.5, 7, kEnd, kStart, "abc", kEnd, kClose}, "1.5000|7\nabc\n\0 2 1"s},
      {{"", 7, "", kEnd}, "|7|\n 1 3"},
      {{"a", kEnd, "b"}, "a\n|b 1 2"},
      {{MISSING_SHORT, MISSING_LONG, MISSING_DOUBLE, "N/A"}, "N/A|N/A|N/A|N/A 0 4"},
      {{INT32_MAX, INT32_MIN + 1, std::int16_t{-32767}}, "2147483647|-2147483647|-32767 0 3"},
      {{-0.00004, -DBL_MAX, 1.0}, "-0.0000|"s + largest + "|1.0000 0 3"},
      {{"a,\t\"b\"\r\n", "c"}, "a,\t\"b\"\r\n|c 0 2"},  // nothing is escaped
      {{CDataItem(FID{1}, n700.c_str(), 256), n700.c_str(), CDataItem(FID{1}, "ab\0c", 4)},
       Letters(256) + "|" + n700 + "|ab 0 3"},
  };
  for (const auto& [steps, expected] : cases) {
    for (const cf_id format : {TEXT, CSV}) {
      const DataBlockPtr block = NewBlock(format);
      EXPECT_TRUE(block->GetData() == nullptr && block->GetDataSize() == 0);
      for (const Step& step : steps) EXPECT_TRUE(step.take(*block)) << expected;
      EXPECT_FALSE(block->Add(FID{1}, nullptr) || block->AddBlob(FID{1}, "a", 1));
      const std::string counts = " " + std::to_string(block->GetRecordCount()) + " " +
                                 std::to_string(block->GetFieldCount());
      std::string bytes = expected;
      std::replace(bytes.begin(), bytes.end(), '|', format == CSV ? ',' : '\t');
      EXPECT_EQ(BytesOf(*block) + counts, bytes);
    }
  }
}

TEST(TextWriting, TextOfTheBlockItself) {
  // The value, or its separator, moves the bytes.
  for (const std::size_t length : {60000U, 65533U}) {
    const DataBlockPtr block = NewBlock(CSV);
    const std::string start = Letters(length);
    EXPECT_TRUE(block->Add(FID{1}, start.c_str()) && block->Close());
    EXPECT_TRUE(block->Add(FID{2}, static_cast<const char*>(block->GetData()) + 1));
    EXPECT_TRUE(BytesOf(*block) == start + '\0' + "," + Letters(length - 1)) << length;
  }
}

TEST(TextReading, Pairs) {
  const std::pair<std::string, std::string> cases[] = {
      {"1,a,2,b\n3,c\n", "1:a 2:b 3:c "},
      {"1\n2,\r\n3", "1:2 0:3 "},
      {"5,\"a\tb\nc\"", "5:a\tb\nc "},
      {"5,N/A,6,\" N/A\",7,n/a", "5:#2 6:#2 7:n/a "},
      {"abc,x, +12z,y,,z", "0:x 12:y 0:z "},
      {"65535,a,65536,b,65543,c,-1,d", "65535:a 0:b 7:c 65535:d "},
      {"7,", "7: "},
      {"7,a,8", "7:a none "},
      {"1," + Letters(300) + ",2,b", "1:" + Letters(255) + " 2:b "},
      {"1," + std::string(253, ' ') + "N/A", "1:N/ "},  // cut, and no missing value
      {"", ""},
  };
  for (const auto& [given, fields] : cases) {
    for (const auto& [format, comma] : {std::pair{TEXT, ','}, {TEXT, '\t'}, {CSV, '\t'}}) {
      std::string text = given;
      std::replace(text.begin(), text.end(), ',', comma);
      SCOPED_TRACE(testing::PrintToString(text));
      const DataBlockPtr block = Wrapped(text.c_str(), format);
      const std::string first = Current(*block) + " ";  // as it was made
      EXPECT_EQ(block->FirstRecord() ? first : "", fields.substr(0, fields.find(' ') + 1));
      EXPECT_EQ(Walk(*block), fields);
      EXPECT_FALSE(block->NextField() || block->GetCurrentField(nullptr));
      EXPECT_EQ(block->GetCurrentFieldId(), 0);
    }
  }
}

TEST(TextReading, RecordsAndFields) {
  const DataBlockPtr block = Wrapped("1,a,2,b\n3,c\n1,d\n");
  EXPECT_TRUE(block->NextField() && block->GetCurrentField(nullptr));
  EXPECT_EQ(Current(*block) + Current(*block), "2:b2:b");  // reading leaves the cursor
  EXPECT_TRUE(block->FirstField() && block->NextField() && Current(*block) == "2:b");
  EXPECT_TRUE(block->FindField(FID{1}) && Current(*block) == "1:a");
  EXPECT_TRUE(block->FindField(FID{3}) && Current(*block) == "3:c");
  CDataItem item(FID{8}, std::int32_t{9});
  EXPECT_FALSE(block->GetField(FID{4}, &item) || block->NextField() || item.GetId() != 8);
  EXPECT_TRUE(block->GetField(FID{2}, &item) && item.GetString() == std::string("b"));
  for (const std::string fields : {"3:c 1:d ", "1:d ", "", ""}) {
    EXPECT_EQ(block->NextRecord(), !fields.empty());
    EXPECT_EQ(Walk(*block), fields);
  }
  EXPECT_TRUE(block->FirstRecord() && Walk(*block) == "1:a 2:b 3:c 1:d ");
  EXPECT_FALSE(Wrapped("1,a")->NextRecord());
}

TEST(TextReading, WrittenBlockIsWalkedUpToItsFirstClose) {
  const DataBlockPtr block = NewBlock(CSV);
  EXPECT_TRUE(block->Add(FID{1}, 5) && block->Add(FID{2}, 1.5) && block->EndRecord());
  EXPECT_FALSE(block->FirstRecord() || block->NextRecord() || block->FirstField() ||
               block->NextField() || block->FindField(FID{5}) || block->GetCurrentField(nullptr));
  EXPECT_TRUE(block->Close() && block->FirstRecord() && block->Add(FID{1}, "9,unseen"));
  EXPECT_EQ(Walk(*block), "5:1.5000 ");
  EXPECT_TRUE(block->Add(FID{1}, Letters(1000000).c_str()));  // moves the bytes from under the walk
  EXPECT_FALSE(block->FirstField() || block->NextField() || block->NextRecord());
  EXPECT_TRUE(block->FirstRecord());
  EXPECT_EQ(Walk(*block), "5:1.5000 ");
  EXPECT_FALSE(block->NextRecord());
}

}  // namespace
