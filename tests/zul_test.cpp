// Writing the two binary record formats, and reading back what was written.
#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// Takes a step: Start, End, an Add of a long, Record first, Next record, First field, next field,
/// the size of Vectors, or the field of a digit.
bool Take(CDataBlock& block, char step) {
  switch (step) {
    case 'S': return block.StartRecord();
    case 'E': return block.EndRecord();
    case 'A': return block.Add(FID{1}, 7);
    case 'R': return block.FirstRecord();
    case 'N': return block.NextRecord();
    case 'F': return block.FirstField();
    case 'n': return block.NextField();
    case 'V': return block.GetVectorSize() != 0;
    default: return block.FindField(static_cast<FID>(step - '0'));
  }
}

TEST(Zul, WhatIsReadMeanwhileLeavesTheWritingAlone) {
  for (unsigned seed = 0; seed < 120; ++seed) {
    const cf_id format = kBinaryFormats[seed % 2];
    SCOPED_TRACE(CfName(format) + (", seed " + std::to_string(seed)));
    std::mt19937 random(seed);
    const Records records = RandomRecords(random, format == ZUL3);
    const DataBlockPtr block = NewBlock(format);
    for (const Fields& fields : records) {
      ASSERT_TRUE(block->StartRecord());
      for (const Field& field : fields) {
        ASSERT_TRUE(Add(*block, field, kRoads[random() % 3])) << field;
        for (auto steps = random() % 16; steps < 4; ++steps) Take(*block, "RNFnV0"[random() % 6]);
      }
      ASSERT_TRUE(block->EndRecord());
    }
    EXPECT_EQ(BytesOf(*block), BytesOf(*Build(format, records)));
  }
}

TEST(Zul, Counters) {
  // Records, fields and bytes of ZUL3, and of ZUL4.
  const auto counts_after = [](const std::string& steps) {
    std::string counts;
    for (const cf_id format : kBinaryFormats) {
      const DataBlockPtr block = NewBlock(format);
      for (const char step : steps) EXPECT_TRUE(Take(*block, step)) << step << " of " << steps;
      const int size = block->GetDataSize();
      counts += (counts.empty() ? "" : " / ") + std::to_string(block->GetRecordCount()) + ' ' +
                std::to_string(block->GetFieldCount()) + ' ' + std::to_string(size);
      EXPECT_EQ(block->GetData() == nullptr, size == 0);
      for (const char step : {'R', 'N', 'F', 'n', 'V', '0'}) {
        EXPECT_FALSE(size == 0 && Take(*block, step)) << step << " after " << steps;
      }
    }
    return counts;
  };
  ExpectRows(R"(
      => 0 0 0 / 0 0 0 | E => 0 0 0 / 0 0 0 | SE => 0 0 0 / 1 0 16 | SESE => 0 0 0 / 2 0 24
      SAAA => 0 3 36 / 1 3 40 | SAAAE => 1 3 36 / 1 3 40 | SAAAES => 1 0 36 / 2 0 48
      SAAAESE => 1 3 36 / 2 0 48 | SAAAESEE => 1 3 36 / 2 0 48 | SAAESA => 1 1 36 / 2 1 48
      SAAESAAE => 2 2 44 / 2 2 56 | SAEE => 2 1 20 / 1 1 24)",
             counts_after);
}

TEST(Zul, CursorsOverTwoRecordsOfThreeFields) {
  // Of each step the result and the identifier that it stands on, of ZUL3 and of ZUL4.
  const auto walk = [](const std::string& steps) {
    std::string walks;
    for (const cf_id format : kBinaryFormats) {
      const DataBlockPtr written =
          Build(format, {{LongField(1, 1), LongField(2, 2), LongField(3, 3)},
                         {LongField(4, 4), LongField(5, 5), LongField(6, 6)}});
      std::string bytes = '-' + BytesOf(*written);  // they begin at an odd address
      const DataBlockPtr wrapped(
          CDataBlock::NewDataBlock(format, &bytes[1], static_cast<int>(bytes.size() - 1)));
      EXPECT_EQ(wrapped->GetCurrentFieldId(), 1);
      walks += walks.empty() ? "" : " ";
      for (const char step : steps) {
        const char sign = Take(*written, step) ? '+' : '-';
        walks += sign + std::to_string(written->GetCurrentFieldId());
        EXPECT_EQ(Take(*wrapped, step) ? '+' : '-', sign) << CfName(format) << ' ' << steps;
        EXPECT_EQ(wrapped->GetCurrentFieldId(), written->GetCurrentFieldId()) << steps;
      }
    }
    return walks;
  };
  ExpectRows(R"(
      RnnnF => +1+2+3-3+1 +1+2+3-0+1 | RNF => +1+4+4 +1+4+4 | RnnN => +1+2+3+4 +1+2+3+4
      RnnnN => +1+2+3-3+4 +1+2+3-0+4 | RNNF => +1+4-0+4 +1+4-4+4
      RNnnNF => +1+4+5+6-0+4 +1+4+5+6-6+4 | R2R59 => +1+2+1-3-3 +1+2+1-0-0
      R9N => +1-3+4 +1-0+4 | RN25R => +1+4-6+5+1 +1+4-0+5+1)",
             walk);
}

TEST(Zul, ASearchFindsTheFirstFieldAndLeavesTheWalkAlone) {
  std::mt19937 random(3);
  for (int run = 0; run < 100; ++run) {
    const cf_id format = kBinaryFormats[run % 2];
    // Runs of records begin alike, mostly with values of fixed sizes.
    Records records(40, Fields(11));
    for (std::size_t i = 0; i < records.size(); ++i) {
      if (i % 10 != 0) records[i] = records[i - 1];
      for (Field& field : records[i]) {
        if (i % 10 == 0 || random() % 40 == 0) field = RandomField(random);
        while (IsVector(field.type) && random() % 40 != 0) field = RandomField(random);
        field.id %= 16;
      }
    }
    const DataBlockPtr block = Build(format, records);
    for (int walk = 0; walk < 20; ++walk) {
      bool there = block->FirstRecord();
      std::size_t at = 0;
      for (const std::size_t end = random() % records.size(); at < end; ++at)
        there = block->NextRecord();
      const Fields& record = records[at];
      CDataItem item;
      ASSERT_TRUE(there && block->GetCurrentField(&item) && FieldOf(item) == record.front());
      for (auto searches = random() % 20; searches > 0; --searches) {
        const auto id = static_cast<FID>(random() % 16);
        const auto sought = [id](const Field& field) { return field.id == id; };
        const auto expected = std::find_if(record.begin(), record.end(), sought);
        ASSERT_EQ(block->FindField(id), expected != record.end());
        if (expected == record.end()) continue;
        ASSERT_TRUE(block->GetCurrentField(&item) && FieldOf(item) == *expected);
      }
    }
  }
}

TEST(Zul, MissingValuesBecomeErrorFieldsOnBothRoads) {
  const auto expect = [](int type, int error, const auto& value) {
    for (const cf_id format : kBinaryFormats) {
      const DataBlockPtr block = NewBlock(format);
      CDataItem item(FID{7}, value), back;
      EXPECT_TRUE(block->StartRecord() && block->Add(FID{7}, value) && block->Add(item));
      for (bool more = block->FirstRecord(); more; more = block->NextField()) {
        EXPECT_TRUE(block->GetCurrentField(&back) && block->GetCurrentFieldType() == type &&
                    back.GetError() == error && back.IsNull() == (error != 0))
            << CfName(format) << ' ' << testing::PrintToString(value);
      }
    }
  };
  const auto expect_errors = [&](const auto&... values) { (expect(TYPE_ERROR, 2, values), ...); };
  expect_errors(MISSING_SHORT, MISSING_LONG, MISSING_DOUBLE, MISSING_DOUBLE + 0.009,
                CFixPtNum(MISSING_LONG, 102), CFixPtNum(MISSING_DOUBLE + 0.009, 3),
                ZULDATE{1, 0, 2004}, CZulDate(), ZULTIME{MISSING_TIME_MINUTES, 5},
                CZulTime(MISSING_TIME_SECONDS));
  expect(TYPE_DOUBLE, 0, MISSING_DOUBLE + 0.011);
  expect(TYPE_LPACK, 0, CFixPtNum(-2147483647, 101));
  expect(TYPE_DATE, 0, ZULDATE{0, 1, 0});
  expect(TYPE_TIME, 0, ZULTIME{MISSING_TIME_MINUTES - 1, 59});
  for (const cf_id format : kBinaryFormats) {
    const DataBlockPtr block = NewBlock(format);
    EXPECT_TRUE(block->StartRecord() && block->Add(FID{7}, "N/A") && block->FirstRecord());
    EXPECT_EQ(block->GetCurrentFieldType(), TYPE_STRING) << "a text is written as it is";
  }
}

TEST(Zul, VectorsAtTheirLimits) {
  const auto expect = [](cf_id format, Road road, int type, std::uint32_t count) {
    const bool strings = type == TYPE_VECTOR_STRING;
    const bool limited = format == ZUL3 && road == Road::kItem && !strings;
    const bool fits = format == ZUL4 || limited || count <= 65535;
    Field field = VectorOf(type, count);
    const DataBlockPtr block = NewBlock(format);
    const LogCapture log;
    ASSERT_TRUE(block->StartRecord() && block->Add(FID{1}, 5));
    const std::string before = BytesOf(*block);
    EXPECT_EQ(Add(*block, field, road), fits);
    EXPECT_EQ(log.lines().size(), fits || road == Road::kDirect ? 0u : 2u);
    EXPECT_EQ(BytesOf(*block) == before, !fits);
    if (!fits) return;
    if (limited && count > 16000) field.bytes.erase(0, (count - 16000) * WidthOf(type));
    ASSERT_TRUE(block->Add(FID{2}, 6) && block->EndRecord());
    EXPECT_TRUE(Read(*block) == (std::vector<Fields>{{LongField(1, 5), field, LongField(2, 6)}}));
    const auto size = static_cast<int>(strings ? std::min(count, 1u) : field.Count());
    EXPECT_TRUE(block->FirstRecord() && block->GetVectorSize() == size);
  };
  for (const int type : kVectorTypes) {
    for (const std::uint32_t count : {0u, 1u, 16000u, 16001u, 65535u, 65536u, 131072u}) {
      SCOPED_TRACE(testing::Message()
                   << count << " of type " << type << ": ZUL3, item, ZUL4, item");
      for (const cf_id format : kBinaryFormats) {
        expect(format, Road::kDirect, type, count);
        expect(format, Road::kItem, type, count);
      }
    }
  }
}

TEST(Zul, StringVectorsMustHoldAsManyWholeStringsAsIsSaid) {
  using namespace std::string_literals;
  const std::string bytes = "ab\0c\0"s;
  for (const cf_id format : kBinaryFormats) {
    for (const std::uint32_t size : {0u, 1u, 3u, 4u, 5u}) {
      for (const std::uint32_t count : {0u, 1u, 2u, 3u}) {
        SCOPED_TRACE(testing::Message() << CfName(format) << ", " << count << " in " << size);
        const bool fits = size == 0 ? count == 0 : size == 3 ? count == 1 : size == 5 && count == 2;
        const DataBlockPtr block = NewBlock(format);
        ASSERT_TRUE(block->StartRecord() && !block->AddStringVector(FID{9}, nullptr, 1, 1));
        EXPECT_EQ(block->AddStringVector(FID{9}, bytes.data(), count, size), fits);
        EXPECT_EQ(block->FirstRecord() && block->FirstField(), fits);
        EXPECT_EQ(block->GetVectorSize(), fits ? static_cast<int>(count) : 0);
      }
    }
  }
}

}  // namespace
