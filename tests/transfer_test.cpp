// Blocks added to blocks: every pair of encodings, and what one of them can't hold.
#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;
const Field kPad = {TYPE_ERROR, FID{0}, ValueBytes(std::int16_t{1})};

/// What a block of `format` printed from `source` holds, without the NUL at its end.
std::string Printed(cf_id format, CDataBlock& source) {
  const DataBlockPtr text = NewBlock(format);
  EXPECT_TRUE(text->Add(&source));
  std::string bytes = BytesOf(*text);
  EXPECT_EQ(bytes.back(), '\0');
  bytes.pop_back();
  return bytes;
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
    for (const cf_id from : kBinaryFormats) {
      SCOPED_TRACE(testing::Message() << round << ' ' << CfName(from));
      const Records sent = RandomRecords(random, from == ZUL3);
      std::string bytes = BytesOf(*Build(from, sent));
      const DataBlockPtr source = Wrap(from, bytes);
      for (const cf_id to : kBinaryFormats) {
        const DataBlockPtr target = NewBlock(to);
        ASSERT_TRUE(target->Add(source.get())) << CfName(to);
        Records expected = from == ZUL4 && to == ZUL3 ? Padded(sent) : sent;
        if (to == ZUL3 && expected.front().empty()) expected.clear();  // a record of none is none
        EXPECT_EQ(Read(*target), expected) << CfName(to);
      }
      const DataBlockPtr copy(CDataBlock::NewDataBlock(source.get()));
      EXPECT_TRUE(copy->GetFormat() == from && !copy->IsReadOnly() && BytesOf(*copy) == bytes);
    }
  }
}

TEST(Transfer, TakesTextAsAWalkMeetsIt) {
  std::string text = "1,a,2,N/A\n3,101 2/8\n4\tlast\n";
  text += '\0';
  const Fields last = {{TYPE_STRING, 4, "last"}};
  const Fields middle = {{TYPE_STRING, 3, "101 2/8"}, last[0]};
  const Fields first = {{TYPE_STRING, 1, "a"}, Missing(2), middle[0], last[0]};
  for (const cf_id wrapped : {TEXT, CSV}) {
    const DataBlockPtr source = Wrap(wrapped, text);
    const DataBlockPtr zul4 = NewBlock(ZUL4);
    EXPECT_TRUE(zul4->Add(source.get()));
    EXPECT_EQ(Read(*zul4), (Records{first, middle, last}));
    EXPECT_EQ(Printed(CSV, *source), "a,N/A,101 2/8,last\n101 2/8,last\nlast\n");
    // ZUL3 has one count for all records, the last one's: no padding for a source of text.
    const DataBlockPtr zul3 = NewBlock(ZUL3);
    EXPECT_TRUE(zul3->Add(source.get()));
    EXPECT_EQ(zul3->GetRecordCount(), 3);
    EXPECT_EQ(zul3->GetFieldCount(), 1);
  }
  std::string cut("1,a,2\0", 6);  // the second has no value
  EXPECT_EQ(Printed(CSV, *Wrap(TEXT, cut)), "a,N/A\n");
}

TEST(Transfer, PrintsEveryTypeAndVectorsAsRows) {
  const auto bytes = [](auto... elements) { return (ValueBytes(elements) + ...); };
  const std::string large = Letters(600);
  const std::pair<Fields, std::string> cases[] = {
      {{{TYPE_DOUBLE, 1, bytes(-1.5)},
        {TYPE_INT, 2, bytes(std::int16_t{-3})},
        {TYPE_LPACK, 3, bytes(810), 3},
        {TYPE_DATE, 4, bytes(ZULDATE{5, 1, 2004})},
        {TYPE_TIME, 5, bytes(ZULTIME{570, 15})},
        kPad,
        {TYPE_STRING, 6, large}},
       "-1.5000,-3,101 2/8,01/05/2004,09:30:15,N/A," + large + "\n"},
      {{LongField(1, 7),
        {TYPE_VECTOR_LPACK, 2, bytes(810, MISSING_LONG, 811), 3},
        {TYPE_VECTOR_DOUBLE, 3, bytes(1.5, -99999999.99)},
        {TYPE_VECTOR_STRING, 4, std::string("a;b\0\0N/A\0", 9)},
        {TYPE_VECTOR_LONG, 5, ""},
        Missing(6)},
       "7,101 2/8,1.5000,a;b,,N/A\n7,N/A,N/A,,,N/A\n7,101 3/8,N/A,N/A,,N/A\n"},
      {{{TYPE_VECTOR_DATE, 2, bytes(ZULDATE{5, 1, 2004}, ZULDATE{0, 0, 0})},
        {TYPE_VECTOR_TIME, 3, bytes(ZULTIME{570, 15}, ZULTIME{MISSING_TIME_MINUTES, 0})},
        {TYPE_VECTOR_INT, 4, bytes(std::int16_t{-3})},
        {TYPE_VECTOR_LONG, 5, bytes(-1, 70000)},
        {TYPE_VECTOR_STRING, 6, std::string("last\0", 5)},
        {TYPE_STRING, 7, large}},
       "01/05/2004,09:30:15,-3,-1,last," + large + "\nN/A,N/A,-3,70000,last," + large + "\n"},
      {{{TYPE_VECTOR_LONG, 5, ""}, {TYPE_VECTOR_STRING, 6, ""}}, ",\n"},
  };
  for (const Road road : kRoads) {  // what has no vectors may be written as text at once
    const auto& [record, line] = cases[0];
    EXPECT_EQ(BytesOf(*Build(CSV, {record}, road)), line) << static_cast<int>(road);
  }
  for (const cf_id from : kBinaryFormats) {
    for (auto [record, lines] : cases) {
      const DataBlockPtr source = Build(from, {record, record});
      EXPECT_EQ(Printed(CSV, *source), lines + lines) << CfName(from);
      std::replace(lines.begin(), lines.end(), ',', '\t');
      EXPECT_EQ(Printed(TEXT, *source), lines + lines) << CfName(from);
    }
  }
}

TEST(Transfer, KnowsItsPairs) {
  const DataBlockPtr bytes = NewBlock(Btrieve);
  ASSERT_TRUE(bytes->AddBlob(FID{0}, "12345", 5));
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4, Btrieve}) {
    const DataBlockPtr block = NewBlock(format);
    EXPECT_FALSE(block->Add(static_cast<CDataBlock*>(nullptr)));
    // A source without records leaves nothing, but that text is closed.
    EXPECT_EQ(block->Add(NewBlock(ZUL4).get()), format != Btrieve) << CfName(format);
    EXPECT_TRUE(block->Add(bytes.get())) << CfName(format);
    const std::string closed(format <= CSV ? 2 : 0, '\0');
    EXPECT_EQ(BytesOf(*block), format == Btrieve ? "12345" : closed) << CfName(format);
    const DataBlockPtr copy(CDataBlock::NewDataBlock(block.get()));
    EXPECT_EQ(copy != nullptr, format == ZUL3 || format == ZUL4) << CfName(format);
  }
  EXPECT_EQ(CDataBlock::NewDataBlock(static_cast<const CDataBlock*>(nullptr)), nullptr);
  EXPECT_TRUE(bytes->Add(bytes.get()) && BytesOf(*bytes) == "1234512345");
  for (const cf_id format : {CSV, ZUL3, ZUL4}) {
    const DataBlockPtr block = Build(format, {{LongField(1, 11)}});
    const std::string before = BytesOf(*block);
    EXPECT_TRUE(!block->Add(block.get()) && BytesOf(*block) == before) << CfName(format);
  }
}

TEST(Transfer, StopsAtTheFirstRefusal) {
  const Field one = LongField(1, 11);
  const Field vector = VectorOf(TYPE_VECTOR_DOUBLE, 3);
  std::string record = BytesOf(*Build(ZUL4, {{one, one}, {one, vector, one}, {one}}));
  const DataBlockPtr source = Wrap(ZUL4, record);
  char room[80];
  const LogCapture log;
  const DataBlockPtr small(CDataBlock::FixedSizeDataBlock(ZUL4, room, sizeof room));
  EXPECT_FALSE(small->Add(source.get()));
  EXPECT_EQ(Read(*small), (Records{{one, one}, {one, vector}}));

  // The second field of the second record gets a type that no field has.
  record[8 + 8 + 16 + 8 + 8] = 10;
  const DataBlockPtr target = NewBlock(ZUL4);
  EXPECT_FALSE(target->Add(source.get()));
  EXPECT_EQ(Read(*target), (Records{{one, one}, {one}}));
  EXPECT_EQ(Printed(CSV, *source), "11,11\n11,N/A\n11\n");
  const std::string unknown = "Unhandled type<10> for fid<9> inside CZul4Block::GetCurrentField";
  EXPECT_EQ(log.lines(),
            (LogCapture::Lines{
                {1, "Couldn't allocate ZUL4 record size 80"}, {-1, unknown}, {-1, unknown}}));
}

TEST(Transfer, SaysWhatReadOnlyTextDoesNotTake) {
  char text[] = "1,a\n";
  const DataBlockPtr target(CDataBlock::NewDataBlock(TEXT, text, sizeof text));
  const DataBlockPtr source =
      Build(ZUL4, {{LongField(5, 1)}, {LongField(6, 1), VectorOf(TYPE_VECTOR_INT, 2)}});
  const LogCapture log;
  EXPECT_TRUE(target->Add(source.get()));
  const std::string row = "CTextBlock::AddBlock w/h vsize<2>, indata<ZUL4>, failed at add ";
  const LogCapture::Lines lines = {
      {1, "CTextBlock::AddBlock: inblock<ZUL4>, Add(item) failed for <5>, datablocklen<52>"},
      {1, row + "<6> w/h type<2>"},
      {1, row + "<9> w/h type<13>"}};
  EXPECT_EQ(log.lines(), (LogCapture::Lines{lines[0], lines[1], lines[2], lines[1], lines[2]}));
  EXPECT_STREQ(text, "1,a\n");
}

TEST(Transfer, KeepsToWhatABlockIsWhateverItsFormatSays) {
  const DataBlockPtr source = Build(ZUL4, {{LongField(1, 11)}});
  for (const cf_id is : {TEXT, ZUL3, ZUL4, Btrieve}) {
    for (const cf_id says : {TEXT, ZUL3, ZUL4, Btrieve}) {
      const DataBlockPtr block = NewBlock(is);
      *block = *NewBlock(says);
      const bool zul = is != Btrieve && (says == ZUL3 || says == ZUL4);
      EXPECT_EQ(block->Add(source.get()), zul || (is == TEXT && says == TEXT)) << is << says;
    }
  }
}

TEST(Transfer, PrintsLongVectorsAtALinearCost) {
  ExpectLinearCost(30'000, [](int rows) {
    const auto count = static_cast<std::uint32_t>(rows);
    Field strings = VectorOf(TYPE_VECTOR_STRING, 2 * count);
    for (std::size_t i = 1; i < strings.bytes.size(); i += 2) strings.bytes[i] = '\0';
    const DataBlockPtr source = Build(ZUL4, {{VectorOf(TYPE_VECTOR_LONG, count), strings}});
    EXPECT_GT(Printed(CSV, *source).size(), count);
  });
}

}  // namespace
