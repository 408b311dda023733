#include <gtest/gtest.h>
#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "fieldvalue.h"
#include "support.h"

namespace {

using namespace wqd_test;
using Records = std::vector<Fields>;

const Field kPad = {TYPE_ERROR, FID{0}, ValueBytes(std::int16_t{1})};

Field Missing(FID id) { return {TYPE_ERROR, id, ValueBytes(std::int16_t{2})}; }

Field TextField(FID id, const std::string& text) { return {TYPE_STRING, id, text}; }

wqd::DataBlockPtr Build(cf_id format, const Records& records) {
  wqd::DataBlockPtr block = NewBlock(format);
  for (const Fields& record : records) {
    EXPECT_TRUE(block->StartRecord());
    for (const Field& field : record) EXPECT_TRUE(Add(*block, field, Road::kDirect)) << field;
    EXPECT_TRUE(block->EndRecord());
  }
  return block;
}

/// A read-only block around bytes, which outlive it.
wqd::DataBlockPtr Wrap(cf_id format, std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  return wqd::DataBlockPtr(wqd::CDataBlock::NewDataBlock(format, bytes.data(), size));
}

/// What a block of `format` printed from `source` holds, without the NUL at its end.
std::string Printed(cf_id format, wqd::CDataBlock& source) {
  const wqd::DataBlockPtr text = NewBlock(format);
  EXPECT_TRUE(text->Add(&source));
  std::string bytes = BytesOf(*text);
  EXPECT_EQ(bytes.back(), '\0');
  bytes.pop_back();
  return bytes;
}

std::size_t RowsOf(const Field& field) {
  const bool vector = field.type >= TYPE_VECTOR_DOUBLE && field.type <= TYPE_VECTOR_TIME;
  if (!vector) return 0;
  return field.type == TYPE_VECTOR_STRING
             ? static_cast<std::size_t>(std::count(field.bytes.begin(), field.bytes.end(), '\0'))
             : field.Count();
}

/// The text of a field in a row, from its plain bytes.
std::string Cell(const Field& field, std::size_t row) {
  const std::size_t elements = RowsOf(field);
  const bool vector = field.type >= TYPE_VECTOR_DOUBLE && field.type <= TYPE_VECTOR_TIME;
  if (vector && elements == 0) return "";
  const std::size_t index = std::min(row, elements - 1);
  if (field.type == TYPE_VECTOR_STRING) {
    const char* string = field.bytes.c_str();
    for (std::size_t i = 0; i < index; ++i) string += std::strlen(string) + 1;
    return string;
  }
  Field element = field;
  if (vector) {
    element.type -= 10;  // the codes of vectors are those of their elements, and 10
    element.bytes = field.bytes.substr(index * WidthOf(field.type), WidthOf(field.type));
    element.baseCode = static_cast<std::uint16_t>(field.baseCode);
  }
  return ItemOf(element).GetString();
}

std::string Lines(const Records& records, const std::string& separator) {
  std::string lines;
  for (const Fields& record : records) {
    std::size_t rows = 1;
    for (const Field& field : record) rows = std::max(rows, RowsOf(field));
    for (std::size_t row = 0; row < rows; ++row) {
      for (std::size_t i = 0; i < record.size(); ++i) {
        lines += (i > 0 ? separator : "") + Cell(record[i], row);
      }
      lines += '\n';
    }
  }
  return lines;
}

/// Records of random fields, some of them missing; all as long as the first, or of any length.
Records RandomRecords(std::mt19937& random, bool uniform) {
  Records records(1 + random() % 5);
  for (Fields& record : records) {
    const std::size_t any = random() % 9;
    record.resize(uniform ? std::max<std::size_t>(1, records.front().size()) : any);
    if (uniform && &record == &records.front()) record.resize(1 + any);
    for (Field& field : record) {
      field = random() % 8 == 0 ? Missing(static_cast<FID>(random())) : RandomField(random);
      const bool text = field.type == TYPE_STRING || field.type == TYPE_VECTOR_STRING;
      // A text of the format's own signs has no way back, and none of them stands for a NUL.
      for (char& c : field.bytes) c = text && c == '\n' ? 'n' : c;
    }
  }
  return records;
}

Records Padded(Records records) {
  std::size_t longest = 0;
  for (const Fields& record : records) longest = std::max(longest, record.size());
  for (Fields& record : records) record.resize(longest, kPad);
  return records;
}

TEST(Transfer, CarriesEveryFieldBetweenBinaryBlocks) {
  std::mt19937 random(20261123);
  for (int round = 0; round < (kSanitized ? 60 : 400); ++round) {
    for (const cf_id from : {ZUL3, ZUL4}) {
      const Records sent = RandomRecords(random, from == ZUL3);
      std::string bytes = BytesOf(*Build(from, sent));
      const wqd::DataBlockPtr source = Wrap(from, bytes);
      for (const cf_id to : {ZUL3, ZUL4}) {
        const wqd::DataBlockPtr target = NewBlock(to);
        ASSERT_TRUE(target->Add(source.get())) << round << CfName(from) << CfName(to);
        Records expected = from == ZUL4 && to == ZUL3 ? Padded(sent) : sent;
        // A ZUL3 record of no field is none.
        if (to == ZUL3 && expected.front().empty()) expected.clear();
        EXPECT_EQ(Read(*target), expected) << round << CfName(from) << CfName(to);
      }
      const std::string before = bytes;
      const wqd::DataBlockPtr copy(wqd::CDataBlock::NewDataBlock(source.get()));
      EXPECT_EQ(copy->GetFormat(), from);
      EXPECT_FALSE(copy->IsReadOnly());
      EXPECT_EQ(BytesOf(*copy), bytes) << round;
      EXPECT_EQ(bytes, before);
    }
  }
}

TEST(Transfer, PrintsEveryFieldOfBinaryBlocks) {
  std::mt19937 random(5);
  for (int round = 0; round < (kSanitized ? 60 : 300); ++round) {
    for (const cf_id from : {ZUL3, ZUL4}) {
      const Records sent = RandomRecords(random, from == ZUL3);
      const wqd::DataBlockPtr source = Build(from, sent);
      EXPECT_EQ(Printed(TEXT, *source), Lines(sent, "\t")) << round << CfName(from);
      EXPECT_EQ(Printed(CSV, *source), Lines(sent, ",")) << round << CfName(from);
    }
  }
}

TEST(Transfer, TakesTextAsAWalkMeetsIt) {
  std::string text = "1,a,2,N/A\n3,101 2/8\n4\tlast\n";
  text += '\0';
  const Fields last = {TextField(4, "last")};
  const Fields middle = {TextField(3, "101 2/8"), last[0]};
  const Fields first = {TextField(1, "a"), Missing(2), middle[0], last[0]};
  for (const cf_id wrapped : {TEXT, CSV}) {
    const wqd::DataBlockPtr source = Wrap(wrapped, text);
    const wqd::DataBlockPtr zul4 = NewBlock(ZUL4);
    EXPECT_TRUE(zul4->Add(source.get()));
    EXPECT_EQ(Read(*zul4), (Records{first, middle, last}));
    EXPECT_EQ(Printed(CSV, *source), "a,N/A,101 2/8,last\n101 2/8,last\nlast\n");
    // ZUL3 has one count for all records, the last one's: no padding for a source of text.
    const wqd::DataBlockPtr zul3 = NewBlock(ZUL3);
    EXPECT_TRUE(zul3->Add(source.get()));
    EXPECT_EQ(zul3->GetRecordCount(), 3);
    EXPECT_EQ(zul3->GetFieldCount(), 1);
  }
}

TEST(Transfer, PadsShorterRecordsInZul3Alone) {
  const Field one = LongField(1, 11);
  const Fields five = {one, one, one, one, one};
  const Records records = {{one, one}, five, {}, {one, one, one}};
  const wqd::DataBlockPtr zul4 = Build(ZUL4, records);
  const wqd::DataBlockPtr zul3 = NewBlock(ZUL3);
  ASSERT_TRUE(zul3->Add(zul4.get()));
  EXPECT_EQ(Read(*zul3), (Records{{one, one, kPad, kPad, kPad},
                                  five,
                                  {kPad, kPad, kPad, kPad, kPad},
                                  {one, one, one, kPad, kPad}}));
  EXPECT_EQ(Printed(CSV, *zul3),
            "11,11,N/A,N/A,N/A\n11,11,11,11,11\nN/A,N/A,N/A,N/A,N/A\n"
            "11,11,11,N/A,N/A\n");
}

TEST(Transfer, PrintsVectorsAsRows) {
  const auto bytes = [](auto... elements) { return (ValueBytes(elements) + ...); };
  const Records records = {
      {LongField(1, 7),
       {TYPE_VECTOR_LPACK, 2, bytes(810, MISSING_LONG, 811), 3},
       {TYPE_VECTOR_DOUBLE, 3, bytes(1.5, -99999999.99)},
       {TYPE_VECTOR_STRING, 4, std::string("a,b\0\0N/A\0", 9)},
       {TYPE_VECTOR_LONG, 5, ""},
       Missing(6)},
      {LongField(1, 8)},
      {{TYPE_VECTOR_DATE, 2, bytes(ZULDATE{5, 1, 2004}, ZULDATE{0, 0, 0})},
       {TYPE_VECTOR_TIME, 3, bytes(ZULTIME{570, 15}, ZULTIME{MISSING_TIME_MINUTES, 0})},
       {TYPE_VECTOR_INT, 4, bytes(std::int16_t{-3})},
       TextField(5, Letters(600))},
      {{TYPE_VECTOR_LONG, 5, ""}, {TYPE_VECTOR_STRING, 6, ""}},
  };
  EXPECT_EQ(Printed(CSV, *Build(ZUL4, records)),
            "7,101 2/8,1.5000,a,b,,N/A\n7,N/A,N/A,,,N/A\n7,101 3/8,N/A,N/A,,N/A\n8\n"
            "01/05/2004,09:30:15,-3," +
                Letters(600) + "\nN/A,N/A,-3," + Letters(600) + "\n,\n");
}

TEST(Transfer, KnowsItsPairs) {
  char data[] = "12345";
  const Field one = LongField(1, 11);
  const auto bytes = NewBlock(Btrieve);
  ASSERT_TRUE(bytes->AddBlob(FID{0}, data, 5));
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4, Btrieve}) {
    const wqd::DataBlockPtr block = NewBlock(format);
    EXPECT_FALSE(block->Add(static_cast<wqd::CDataBlock*>(nullptr)));
    // A source without records leaves nothing, but that text is closed.
    EXPECT_EQ(block->Add(NewBlock(ZUL4).get()), format != Btrieve) << CfName(format);
    EXPECT_EQ(BytesOf(*block), std::string(format <= CSV ? 1 : 0, '\0')) << CfName(format);
    EXPECT_TRUE(block->Add(bytes.get())) << CfName(format);
    const std::string closed(format <= CSV ? 2 : 0, '\0');
    EXPECT_EQ(BytesOf(*block), format == Btrieve ? "12345" : closed) << CfName(format);

    const std::int32_t instances = wqd::CDataBlock::_instances;
    const bool copied = format == ZUL3 || format == ZUL4;
    const wqd::DataBlockPtr copy(wqd::CDataBlock::NewDataBlock(block.get()));
    EXPECT_EQ(copy != nullptr, copied) << CfName(format);
    EXPECT_EQ(wqd::CDataBlock::_instances, instances + (copied ? 1 : 0));
  }
  EXPECT_EQ(wqd::CDataBlock::NewDataBlock(static_cast<const wqd::CDataBlock*>(nullptr)), nullptr);

  EXPECT_TRUE(bytes->Add(bytes.get()));
  EXPECT_EQ(BytesOf(*bytes), "1234512345");
  for (const cf_id format : {CSV, ZUL3, ZUL4}) {
    const wqd::DataBlockPtr block = Build(format, {{one, one}});
    const std::string before = BytesOf(*block);
    EXPECT_FALSE(block->Add(block.get()));
    EXPECT_EQ(BytesOf(*block), before);
  }
  const wqd::DataBlockPtr csv = NewBlock(CSV);
  const wqd::DataBlockPtr source = Build(ZUL3, {{one}, {one}});
  EXPECT_TRUE(csv->Add(source.get()) && csv->Add(source.get()));
  EXPECT_EQ(BytesOf(*csv), std::string("11\n11\n\0"
                                       "11\n11\n\0",
                                       14));
}

TEST(Transfer, StopsAtTheFirstRefusal) {
  const Field one = LongField(1, 11);
  const Field vector = VectorOf(TYPE_VECTOR_DOUBLE, 3);
  std::string record = BytesOf(*Build(ZUL4, {{one, one}, {one, vector, one}, {one}}));
  const wqd::DataBlockPtr source = Wrap(ZUL4, record);
  char room[80];
  const LogCapture log;
  const wqd::DataBlockPtr small(wqd::CDataBlock::FixedSizeDataBlock(ZUL4, room, sizeof room));
  EXPECT_FALSE(small->Add(source.get()));
  EXPECT_EQ(Read(*small), (Records{{one, one}, {one, vector}}));

  // The second field of the second record gets a type that no field has.
  record[8 + 8 + 16 + 8 + 8] = 10;
  const wqd::DataBlockPtr target = NewBlock(ZUL4);
  EXPECT_FALSE(target->Add(source.get()));
  EXPECT_EQ(Read(*target), (Records{{one, one}, {one}}));
  EXPECT_EQ(Printed(CSV, *source), "11,11\n11,N/A\n11\n");
  const std::string unknown = "Unhandled type<10> for fid<9> inside CZul4Block::GetCurrentField";
  EXPECT_EQ(log.lines(),
            (LogCapture::Lines{
                {1, "Couldn't allocate ZUL4 record size 80"}, {-1, unknown}, {-1, unknown}}));

  std::string bytes = BytesOf(*Build(ZUL3, {{one}}));
  const wqd::DataBlockPtr readOnly = Wrap(ZUL3, bytes);
  EXPECT_FALSE(readOnly->Add(target.get()));
  EXPECT_TRUE(readOnly->Add(NewBlock(ZUL3).get()));
}

TEST(Transfer, SaysWhatReadOnlyTextDoesNotTake) {
  char text[] = "1,a\n";
  const wqd::DataBlockPtr target(wqd::CDataBlock::NewDataBlock(TEXT, text, sizeof text));
  const wqd::DataBlockPtr source =
      Build(ZUL4, {{LongField(5, 1)}, {LongField(6, 1), VectorOf(TYPE_VECTOR_INT, 2)}});
  const LogCapture log;
  EXPECT_TRUE(target->Add(source.get()));
  const std::string row = "CTextBlock::AddBlock w/h vsize<2>, indata<ZUL4>, failed at add ";
  EXPECT_EQ(log.lines(),
            (LogCapture::Lines{{1,
                                "CTextBlock::AddBlock: inblock<ZUL4>, Add(item) failed for <5>, "
                                "datablocklen<52>"},
                               {1, row + "<6> w/h type<2>"},
                               {1, row + "<9> w/h type<13>"},
                               {1, row + "<6> w/h type<2>"},
                               {1, row + "<9> w/h type<13>"}}));
  EXPECT_STREQ(text, "1,a\n");
}

TEST(Transfer, KeepsToWhatABlockIsWhateverItsFormatSays) {
  const wqd::DataBlockPtr source = Build(ZUL4, {{LongField(1, 11)}});
  for (const cf_id is : {TEXT, ZUL3, ZUL4, Btrieve}) {
    for (const cf_id says : {TEXT, ZUL3, ZUL4, Btrieve}) {
      const wqd::DataBlockPtr block = NewBlock(is);
      *block = *NewBlock(says);
      const bool taken = block->Add(source.get());
      EXPECT_EQ(taken,
                is == TEXT ? says != Btrieve : is != Btrieve && (says == ZUL3 || says == ZUL4))
          << CfName(is) << CfName(says);
    }
  }
}

TEST(Transfer, PrintsLongVectorsAtALinearCost) {
  const auto seconds = [](std::uint32_t count) {
    Field strings = VectorOf(TYPE_VECTOR_STRING, 2 * count);
    for (std::size_t i = 1; i < strings.bytes.size(); i += 2) strings.bytes[i] = '\0';
    const wqd::DataBlockPtr source = Build(ZUL4, {{VectorOf(TYPE_VECTOR_LONG, count), strings}});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_GT(Printed(CSV, *source).size(), count);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  seconds(1000);
  EXPECT_LT(seconds(300'000), 40 * seconds(30'000));
}

}  // namespace
