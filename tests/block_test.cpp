#include <gtest/gtest.h>
#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>

#include <cfloat>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "support.h"

namespace {

using wqd::CDataBlock;
using wqd::CDataItem;
using wqd::DataBlockPtr;
using wqd_test::LogCapture;
using Pair = std::pair<int, std::string>;
using Pairs = std::vector<Pair>;

DataBlockPtr NewBlock(cf_id format) { return DataBlockPtr(CDataBlock::NewDataBlock(format)); }

DataBlockPtr Wrapped(const char* text, cf_id format = TEXT) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): a wrapped text is never written
  return DataBlockPtr(CDataBlock::NewDataBlock(format, const_cast<char*>(text), 0));
}

std::string BytesOf(CDataBlock& block) {
  return {static_cast<const char*>(block.GetData()), static_cast<std::size_t>(block.GetDataSize())};
}

std::string A(std::size_t count) { return std::string(count, 'A'); }

/// One writing operation: a value stands for its `Add`.
enum Call { kStart, kEnd, kClose };
using Step = std::variant<Call, double, std::int32_t, std::int16_t, const char*, CDataItem>;

struct Writer {
  bool operator()(Call call) const {
    return call == kStart ? block.StartRecord() : call == kEnd ? block.EndRecord() : block.Close();
  }
  bool operator()(CDataItem item) const { return block.Add(item); }
  template <typename Value>
  bool operator()(Value value) const {
    return block.Add(FID{9}, value);
  }
  CDataBlock& block;
};

/// The current field, or that there is none. An error item's value is "#" and its number.
Pair CurrentPair(CDataBlock& block) {
  CDataItem item;
  if (!block.GetCurrentField(&item)) return {-1, "no field"};
  EXPECT_EQ(block.GetCurrentFieldId(), item.GetId());
  EXPECT_EQ(block.GetCurrentFieldType(), 0);
  if (item.IsNull()) return {item.GetId(), "#" + std::to_string(item.GetError())};
  EXPECT_EQ(item.GetType(), TYPE_STRING);
  return {item.GetId(), item.GetString()};
}

Pairs WalkFields(CDataBlock& block) {
  Pairs pairs;
  for (bool more = block.FirstField(); more && pairs.size() < 1000; more = block.NextField()) {
    pairs.push_back(CurrentPair(block));
  }
  return pairs;
}

TEST(Format, NamesAndNumbers) {
  const struct {
    const char* name;
    cf_id format;
    LogCapture::Lines log;
  } cases[] = {
      {"TEXT", TEXT, {}},
      {"text", TEXT, {}},
      {"Csv", CSV, {}},
      {"notxltable", NOTXLTABLE, {}},
      {"zul3", ZUL3, {}},
      {"ZUL4", ZUL4, {}},
      {"BTRIEVE", Btrieve, {}},
      {"INVALID", INVALID, {{2, "CfID: Invalid format 'INVALID'"}}},
      {"TEX", INVALID, {{2, "CfID: Invalid format 'TEX'"}}},
      {"", INVALID, {{2, "CfID: Invalid format ''"}}},
      {nullptr, INVALID, {{2, "CfID: null format"}}},
  };
  for (const auto& c : cases) {
    const LogCapture log;
    EXPECT_EQ(CfId(c.name), c.format) << (c.name != nullptr ? c.name : "null");
    EXPECT_EQ(log.lines(), c.log);
  }
  const char* const names[] = {"INVALID", "INVALID", "TEXT",    "CSV",    "NOTXLTABLE",
                               "ZUL3",    "ZUL4",    "Btrieve", "INVALID"};
  for (int i = -1; i < 8; ++i) EXPECT_STREQ(CfName(cf_id(i)), names[i + 1]) << i;
}

TEST(Factory, FormatsAndInstanceCount) {
  const int before = CDataBlock::_instances;
  const char text[] = "1,a\n";
  const LogCapture log;
  for (const cf_id format : {INVALID, NOTXLTABLE, cf_id(7), cf_id(-1)}) {
    EXPECT_FALSE(NewBlock(format) || Wrapped(text, format)) << format;
    EXPECT_EQ(CDataBlock::FixedSizeDataBlock(format, nullptr, 0), nullptr) << format;
  }
  EXPECT_EQ(CDataBlock::_instances, before);
  for (const cf_id format : {TEXT, CSV}) {
    const DataBlockPtr written = NewBlock(format);
    const DataBlockPtr wrapped = Wrapped(text, format);
    const DataBlockPtr aroundNull = Wrapped(nullptr, format);
    EXPECT_EQ(CDataBlock::_instances, before + 3) << format;
    EXPECT_TRUE(written->GetFormat() == format && !written->IsReadOnly()) << format;
    EXPECT_TRUE(wrapped->GetFormat() == TEXT && wrapped->IsReadOnly()) << format;
    EXPECT_TRUE(aroundNull->GetFormat() == TEXT && !aroundNull->IsReadOnly()) << format;
    EXPECT_TRUE(wrapped->GetData() == text && aroundNull->GetData() == nullptr) << format;
    EXPECT_FALSE(aroundNull->FirstRecord() || aroundNull->NextRecord() || aroundNull->FirstField());
    EXPECT_TRUE(aroundNull->Add(FID{1}, "a") && BytesOf(*aroundNull) == "a");
  }
  CDataBlock::FreeDataBlock(nullptr);
  EXPECT_EQ(log.lines(), LogCapture::Lines{});
  const auto work = [] {
    for (int i = 0; i < 5000; ++i) NewBlock(CSV);
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(CDataBlock::_instances, before);
}

/// A block with nothing but what every block must have, and which tells what it was given.
class PlainBlock final : public CDataBlock {
 public:
  using CDataBlock::Add;
  void* GetData() override { return nullptr; }
  int GetDataSize() override { return 0; }
  int GetRecordCount() override { return 0; }
  int GetFieldCount() override { return 0; }
  bool StartRecord() override { return true; }
  bool EndRecord() override { return true; }
  bool Add(FID, const char*) override { return false; }
  bool Add(CDataItem& item) override {
    given = std::to_string(item.GetId()) + " type " + std::to_string(item.GetType()) + ": " +
            item.GetString() + ", " + std::to_string(item.GetError());
    return accepts;
  }
  std::string given;
  bool accepts = true;
};

TEST(BlockDefaults, AnswerFalseOrZero) {
  ++CDataBlock::_instances;  // as the factory does
  const DataBlockPtr block(new PlainBlock);
  EXPECT_TRUE(block->Close() && block->GetFormat() == INVALID && !block->IsReadOnly());
  const std::int16_t number = 1;
  const std::int32_t price = 1;
  const double real = 1;
  const ZULDATE date{1, 1, 2000};
  const ZULTIME time{1, 1};
  CDataItem item(FID{3}, price);
  EXPECT_FALSE(block->AddBlob(FID{1}, "a", 1) || block->AddShortVector(FID{1}, &number, 1) ||
               block->AddLongVector(FID{1}, &price, 1) || block->AddDoubleVector(FID{1}, &real, 1));
  EXPECT_FALSE(block->AddDateVector(FID{1}, &date, 1) || block->AddTimeVector(FID{1}, &time, 1) ||
               block->AddStringVector(FID{1}, "a", 1, 2) ||
               block->AddPriceVector(FID{1}, &price, 105, 1));
  EXPECT_FALSE(block->FirstRecord() || block->NextRecord() || block->FirstField() ||
               block->NextField() || block->FindField(FID{3}));
  EXPECT_FALSE(block->GetField(FID{3}, &item) || block->GetCurrentField(&item));
  EXPECT_TRUE(item.GetId() == 3 && item.GetType() == TYPE_LONG);
  EXPECT_EQ(block->GetVectorSize() + block->GetCurrentFieldId() + block->GetCurrentFieldType(), 0);
}

TEST(BlockDefaults, ScalarsGoThroughAnItem) {
  const std::pair<Step, std::string> cases[] = {
      {2.0, "9 type 1: 2.0000, 0"},          {7, "9 type 2: 7, 0"},
      {std::int16_t{-3}, "9 type 3: -3, 0"}, {-99999999.995, "9 type 101: N/A, 2"},
      {MISSING_LONG, "9 type 101: N/A, 2"},  {MISSING_SHORT, "9 type 101: N/A, 2"},
  };
  ++CDataBlock::_instances;
  const DataBlockPtr owner(new PlainBlock);
  auto& block = static_cast<PlainBlock&>(*owner);
  for (const auto& [value, expected] : cases) {
    block.accepts = !block.accepts;
    EXPECT_EQ(std::visit(Writer{block}, value), block.accepts) << expected;
    EXPECT_EQ(block.given, expected);
  }
  EXPECT_TRUE(block.AddError(FID{9}, MISSING_SHORT));
  EXPECT_EQ(block.given, "9 type 101: N/A, -32768");
  block.accepts = false;
  EXPECT_FALSE(block.AddError(FID{9}, 1) || block.Add(FID{9}, 7));
}

TEST(BlockAssignment, CopiesFormatAndFlagAlone) {
  const char text[] = "5,a\n";
  const DataBlockPtr csv = NewBlock(CSV);
  const DataBlockPtr written = NewBlock(TEXT);
  const DataBlockPtr wrapped = Wrapped(text);
  *wrapped = *csv;
  EXPECT_TRUE(wrapped->GetFormat() == CSV && !wrapped->IsReadOnly());
  EXPECT_TRUE(wrapped->GetData() == text && wrapped->FirstRecord());
  EXPECT_TRUE(wrapped->Add(FID{1}, "b") && wrapped->Add(FID{1}, "c"));
  EXPECT_TRUE(BytesOf(*wrapped) == "b,c" && !wrapped->FirstRecord());
  EXPECT_TRUE(written->Add(FID{1}, "y"));
  for (CDataBlock* block : {csv.get(), written.get()}) {  // without and with a buffer
    *block = *Wrapped(text);
    EXPECT_FALSE(!block->IsReadOnly() || block->Add(FID{1}, "z"));
  }
  EXPECT_EQ(BytesOf(*written), "y");
  EXPECT_STREQ(text, "5,a\n");
}

TEST(TextWriting, BytesAndCounts) {
  using namespace std::string_literals;
  char largest[400];
  std::snprintf(largest, sizeof largest, "%.4f", -DBL_MAX);
  const std::string n255 = A(255);
  const std::string n700 = A(700);
  const struct {
    std::vector<Step> steps;
    std::string bytes;  // with a vertical bar for the separator
    int records;
    int fields;
  } cases[] = {
      {{kClose}, "\0"s, 0, 0},
      {{kStart, kEnd, kClose, kClose}, "\n\0\0"s, 1, 0},
      {{kStart, 1.5, 7, kEnd, kStart, "abc", kEnd, kClose}, "1.5000|7\nabc\n\0"s, 2, 1},
      {{"", 7, "", kEnd}, "|7|\n", 1, 3},
      {{"a", kEnd, "b"}, "a\n|b", 1, 2},
      {{MISSING_SHORT, MISSING_LONG, MISSING_DOUBLE, "N/A"}, "N/A|N/A|N/A|N/A", 0, 4},
      {{CDataItem(FID{1}, 5, true), CDataItem()}, "N/A|N/A", 0, 2},
      {{INT32_MAX, INT32_MIN + 1, std::int16_t{-32767}}, "2147483647|-2147483647|-32767", 0, 3},
      {{-0.00004, -DBL_MAX, 1.0}, "-0.0000|"s + largest + "|1.0000", 0, 3},
      {{"a,\t\"b\"\r\n", "c"}, "a,\t\"b\"\r\n|c", 0, 2},  // nothing is escaped
      {{CDataItem(FID{1}, n255.c_str(), -1), CDataItem(FID{1}, n700.c_str(), 256),
        CDataItem(FID{1}, n700.c_str(), -1), CDataItem(FID{1}, "ab\0c", 4)},
       n255 + "|" + n255 + "A|" + n700 + "|ab",
       0,
       4},
  };
  for (const auto& c : cases) {
    for (const auto& [format, separator] : {std::pair{TEXT, '\t'}, std::pair{CSV, ','}}) {
      const DataBlockPtr block = NewBlock(format);
      EXPECT_TRUE(block->GetData() == nullptr && block->GetDataSize() == 0);
      for (const Step& step : c.steps) EXPECT_TRUE(std::visit(Writer{*block}, step)) << c.bytes;
      EXPECT_FALSE(block->Add(FID{1}, nullptr) || block->AddBlob(FID{1}, "a", 1));
      std::string expected = c.bytes;
      for (char& byte : expected) byte = byte == '|' ? separator : byte;
      EXPECT_EQ(BytesOf(*block), expected);
      EXPECT_EQ(block->GetRecordCount(), c.records) << c.bytes;
      EXPECT_EQ(block->GetFieldCount(), c.fields) << c.bytes;
    }
  }
}

TEST(TextWriting, RandomFieldsAcrossGrowth) {
  std::mt19937 random(7);
  const DataBlockPtr block = NewBlock(TEXT);
  std::string expected;
  for (int i = 0; i < 5000; ++i) {
    const std::string text = A(random() % (i % 100 == 0 ? 90000 : 60));
    const auto number = static_cast<std::int32_t>(random() | 1u);
    const bool asText = random() % 2 == 0;
    EXPECT_TRUE(asText ? block->Add(FID{1}, text.c_str()) : block->Add(FID{1}, number));
    expected += (i == 0 ? "" : "\t") + (asText ? text : std::to_string(number));
  }
  EXPECT_TRUE(BytesOf(*block) == expected) << block->GetDataSize() << " bytes";
}

TEST(TextWriting, TextOfTheBlockItself) {
  for (const std::size_t length :
       {60000U, 65533U}) {  // the value, or its separator, moves the bytes
    const DataBlockPtr block = NewBlock(CSV);
    const std::string start = A(length);
    EXPECT_TRUE(block->Add(FID{1}, start.c_str()) && block->Close());
    EXPECT_TRUE(block->Add(FID{2}, static_cast<const char*>(block->GetData()) + 1));
    EXPECT_TRUE(BytesOf(*block) == start + '\0' + "," + A(length - 1)) << length;
  }
}

TEST(TextReading, Pairs) {
  const struct {
    std::string text;
    Pairs pairs;
  } cases[] = {
      {"1,a,2,b\n3,c\n", {{1, "a"}, {2, "b"}, {3, "c"}}},
      {"1\n2,\r\n3", {{1, "2"}, {0, "3"}}},
      {"5,\"a\tb\nc\"", {{5, "a\tb\nc"}}},
      {"5,N/A,6,\" N/A\",7,n/a", {{5, "#2"}, {6, "#2"}, {7, "n/a"}}},
      {"abc,x, +12z,y,,z", {{0, "x"}, {12, "y"}, {0, "z"}}},
      {"65535,a,65536,b,65543,c,-1,d", {{65535, "a"}, {0, "b"}, {7, "c"}, {65535, "d"}}},
      {"7,", {{7, ""}}},
      {"7", {{-1, "no field"}}},
      {"7,a,8", {{7, "a"}, {-1, "no field"}}},
      {"1," + A(300) + ",2,b", {{1, A(255)}, {2, "b"}}},
      {"", {}},
  };
  for (const auto& c : cases) {
    for (const auto& [format, comma] : {std::pair{TEXT, ','}, {TEXT, '\t'}, {CSV, '\t'}}) {
      std::string text = c.text;
      for (char& byte : text) byte = byte == ',' ? comma : byte;
      SCOPED_TRACE(testing::PrintToString(text));
      const DataBlockPtr block = Wrapped(text.c_str(), format);
      const bool any = !c.pairs.empty();
      EXPECT_EQ(CurrentPair(*block), any ? c.pairs[0] : Pair(-1, "no field"));  // as it was made
      EXPECT_EQ(block->FirstRecord(), any);
      EXPECT_EQ(WalkFields(*block), c.pairs);
      EXPECT_FALSE(block->NextField() || block->GetCurrentField(nullptr));
      EXPECT_EQ(block->GetCurrentFieldId(), 0);
    }
  }
}

TEST(TextReading, RecordsAndFields) {
  const DataBlockPtr block = Wrapped("1,a,2,b\n3,c\n1,d\n");
  EXPECT_TRUE(block->NextField() && block->GetCurrentField(nullptr));
  EXPECT_EQ(CurrentPair(*block), Pair(2, "b"));  // reading leaves the cursor
  EXPECT_TRUE(block->FirstField() && block->NextField());
  EXPECT_EQ(CurrentPair(*block), Pair(2, "b"));
  EXPECT_TRUE(block->FindField(FID{1}));
  EXPECT_EQ(CurrentPair(*block), Pair(1, "a"));
  EXPECT_TRUE(block->FindField(FID{3}));
  EXPECT_EQ(CurrentPair(*block), Pair(3, "c"));
  CDataItem item(FID{8}, std::int32_t{9});
  EXPECT_FALSE(block->GetField(FID{4}, &item) || block->NextField());
  EXPECT_TRUE(item.GetId() == 8 && item.GetLong() == 9);
  EXPECT_TRUE(block->GetField(FID{2}, &item) && item.GetId() == 2);
  EXPECT_STREQ(item.GetString(), "b");
  for (const Pairs& pairs : {Pairs{{3, "c"}, {1, "d"}}, Pairs{{1, "d"}}, Pairs{}, Pairs{}}) {
    EXPECT_EQ(block->NextRecord(), !pairs.empty());
    EXPECT_EQ(WalkFields(*block), pairs);
  }
  EXPECT_TRUE(block->FirstRecord() && WalkFields(*block).size() == 4);
  EXPECT_FALSE(Wrapped("1,a")->NextRecord());
}

TEST(TextReading, WrittenBlockIsWalkedUpToItsFirstClose) {
  const DataBlockPtr block = NewBlock(CSV);
  EXPECT_TRUE(block->Add(FID{1}, 5) && block->Add(FID{2}, 1.5) && block->EndRecord());
  EXPECT_FALSE(block->FirstRecord() || block->NextRecord() || block->FirstField() ||
               block->NextField() || block->FindField(FID{5}) || block->GetCurrentField(nullptr));
  const Pairs pairs = {{5, "1.5000"}};
  EXPECT_TRUE(block->Close() && block->FirstRecord());
  EXPECT_TRUE(block->Add(FID{1}, "9,unseen"));
  EXPECT_EQ(WalkFields(*block), pairs);
  EXPECT_TRUE(block->Add(FID{1}, A(1000000).c_str()));  // moves the bytes from under the walk
  EXPECT_FALSE(block->FirstField() || block->NextField() || block->NextRecord());
  EXPECT_TRUE(block->FirstRecord());
  EXPECT_EQ(WalkFields(*block), pairs);
  EXPECT_FALSE(block->NextRecord());
}

TEST(TextReading, WrappedTextIsNotWritten) {
  char text[] = "1,a\n2,b\n";
  const DataBlockPtr block = Wrapped(text);
  EXPECT_TRUE(block->NextField());
  for (const Step& step : {Step{kStart}, Step{kEnd}, Step{kClose}, Step{"a"}, Step{""}, Step{7}}) {
    EXPECT_FALSE(std::visit(Writer{*block}, step)) << "alternative " << step.index();
    EXPECT_EQ(CurrentPair(*block), Pair(2, "b")) << "alternative " << step.index();
    EXPECT_EQ(block->GetDataSize() + block->GetRecordCount() + block->GetFieldCount(), 0);
  }
  EXPECT_TRUE(block->GetData() == text && std::strcmp(text, "1,a\n2,b\n") == 0);
}

}  // namespace
