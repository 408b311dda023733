// Writing the two binary record formats, and reading back what was written.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "fieldvalue.h"
#include "support.h"

namespace {

using wqd::CDataBlock;
using wqd::CDataItem;
using wqd::DataBlockPtr;
using wqd_test::Add;
using wqd_test::BytesOf;
using wqd_test::Field;
using wqd_test::Fields;
using wqd_test::kRoads;
using wqd_test::LogCapture;
using wqd_test::LongField;
using wqd_test::NewBlock;
using wqd_test::RandomField;
using wqd_test::Read;
using wqd_test::ReadRecord;
using wqd_test::Road;
using wqd_test::VectorOf;

constexpr cf_id kFormats[] = {ZUL3, ZUL4};

/// A block around bytes that begin at an odd address and end with their allocation.
struct Wrapped {
  explicit Wrapped(CDataBlock& written)
      : size(static_cast<std::size_t>(written.GetDataSize())), bytes(new char[size + 1]) {
    BytesOf(written).copy(bytes.get() + 1, size);
    block.reset(
        CDataBlock::NewDataBlock(written.GetFormat(), bytes.get() + 1, static_cast<int>(size)));
  }
  std::size_t size;
  std::unique_ptr<char[]> bytes;
  DataBlockPtr block;
};

/// Moves the cursors about.
void Wander(CDataBlock& block, std::mt19937& random) {
  for (int i = 0; i < 4; ++i) {
    switch (random() % 6) {
      case 0: block.FirstRecord(); break;
      case 1: block.NextRecord(); break;
      case 2: block.FirstField(); break;
      case 3: block.NextField(); break;
      case 4: block.FindField(static_cast<FID>(random())); break;
      default: block.GetVectorSize();
    }
  }
}

TEST(Zul, RandomBlocksReadBackAsTheyWereWrittenWhateverWasReadMeanwhile) {
  for (const cf_id format : kFormats) {
    for (unsigned seed = 0; seed < 60; ++seed) {
      SCOPED_TRACE(std::string(CfName(format)) + ", seed " + std::to_string(seed));
      std::mt19937 random(seed);
      const DataBlockPtr block = NewBlock(format);
      std::vector<Fields> records(random() % 12);
      const std::size_t common = 1 + random() % 9;
      for (Fields& fields : records) {
        ASSERT_TRUE(block->StartRecord());
        const std::size_t count = format == ZUL3 ? common : random() % 9;
        for (std::size_t i = 0; i < count; ++i) {
          fields.push_back(RandomField(random));
          ASSERT_TRUE(Add(*block, fields.back(), kRoads[random() % 3])) << fields.back();
          if (random() % 4 == 0) Wander(*block, random);
        }
        ASSERT_TRUE(block->EndRecord());
      }
      ASSERT_TRUE(block->Close());
      EXPECT_EQ(Read(*block), records);
      EXPECT_EQ(Read(*Wrapped(*block).block), records);
    }
  }
}

TEST(Zul, Counters) {
  const struct {
    const char* steps;  // Start, End, an Add of a long
    int records3, fields3, size3;
    int records4, fields4, size4;
  } cases[] = {
      {"", 0, 0, 0, 0, 0, 0},           {"E", 0, 0, 0, 0, 0, 0},
      {"S", 0, 0, 0, 1, 0, 16},         {"SE", 0, 0, 0, 1, 0, 16},
      {"SESE", 0, 0, 0, 2, 0, 24},      {"SAAA", 0, 3, 36, 1, 3, 40},
      {"SAAAE", 1, 3, 36, 1, 3, 40},    {"SAAAES", 1, 0, 36, 2, 0, 48},
      {"SAAAESE", 1, 3, 36, 2, 0, 48},  {"SAAESA", 1, 1, 36, 2, 1, 48},
      {"SAAESAAE", 2, 2, 44, 2, 2, 56}, {"SAEE", 2, 1, 20, 1, 1, 24},
  };
  for (const auto& c : cases) {
    for (const cf_id format : kFormats) {
      SCOPED_TRACE(std::string(CfName(format)) + ' ' + c.steps);
      const DataBlockPtr block = NewBlock(format);
      for (const char* step = c.steps; *step != '\0'; ++step) {
        EXPECT_TRUE(*step == 'S'   ? block->StartRecord()
                    : *step == 'E' ? block->EndRecord()
                                   : block->Add(FID{1}, 7));
      }
      EXPECT_EQ(block->GetRecordCount(), format == ZUL3 ? c.records3 : c.records4);
      EXPECT_EQ(block->GetFieldCount(), format == ZUL3 ? c.fields3 : c.fields4);
      EXPECT_EQ(block->GetDataSize(), format == ZUL3 ? c.size3 : c.size4);
      EXPECT_EQ(block->GetData() == nullptr, block->GetDataSize() == 0);
      EXPECT_TRUE(block->Close() && !block->IsReadOnly() && block->GetFormat() == format);
      if (block->GetData() == nullptr) {
        EXPECT_FALSE(block->FirstRecord() || block->NextRecord() || block->FirstField() ||
                     block->NextField() || block->FindField(FID{0}) || block->GetVectorSize() != 0);
      }
    }
  }
}

TEST(Zul, CursorsOverTwoRecordsOfThreeFields) {
  const struct {
    const char* steps;  // Record first, Next record, First field, next field, find 2, 5 or 9
    const char* zul3;   // of each step the result and the identifier that it stands on
    const char* zul4;
  } cases[] = {
      {"RnnnF", "+1+2+3-3+1", "+1+2+3-0+1"}, {"RNF", "+1+4+4", "+1+4+4"},
      {"RnnN", "+1+2+3+4", "+1+2+3+4"},      {"RnnnN", "+1+2+3-3+4", "+1+2+3-0+4"},
      {"RNNF", "+1+4-0+4", "+1+4-4+4"},      {"RNnnNF", "+1+4+5+6-0+4", "+1+4+5+6-6+4"},
      {"R2R59", "+1+2+1-3-3", "+1+2+1-0-0"}, {"R9N", "+1-3+4", "+1-0+4"},
      {"RN25R", "+1+4-6+5+1", "+1+4-0+5+1"},
  };
  for (const cf_id format : kFormats) {
    const DataBlockPtr written = NewBlock(format);
    for (FID id = 1; id <= 6; ++id) {
      ASSERT_TRUE((id % 3 != 1 || written->StartRecord()) && written->Add(id, int{id}) &&
                  (id % 3 != 0 || written->EndRecord()));
    }
    const Wrapped wrapped(*written);
    EXPECT_EQ(wrapped.block->GetCurrentFieldId(), 1);
    for (const auto& c : cases) {
      for (CDataBlock* block : {written.get(), wrapped.block.get()}) {
        std::string seen;
        for (const char* step = c.steps; *step != '\0'; ++step) {
          const bool moved = *step == 'R'   ? block->FirstRecord()
                             : *step == 'N' ? block->NextRecord()
                             : *step == 'F' ? block->FirstField()
                             : *step == 'n' ? block->NextField()
                                            : block->FindField(static_cast<FID>(*step - '0'));
          seen += (moved ? '+' : '-') + std::to_string(block->GetCurrentFieldId());
        }
        EXPECT_EQ(seen, format == ZUL3 ? c.zul3 : c.zul4) << CfName(format) << ' ' << c.steps;
      }
    }
  }
}

TEST(Zul, MissingValuesBecomeErrorFields) {
  const auto add = [](const auto& value) {
    return [value](CDataBlock& block) { return block.Add(FID{7}, value); };
  };
  const auto item = [](const auto& value) {
    return [value](CDataBlock& block) {
      CDataItem added(FID{7}, value);
      return block.Add(added);
    };
  };
  const struct {
    std::function<bool(CDataBlock&)> add;
    int type;
    int error = 0;
  } cases[] = {
      {add(MISSING_SHORT), TYPE_ERROR, 2},
      {add(std::int16_t{MISSING_SHORT + 1}), TYPE_INT},
      {add(MISSING_LONG), TYPE_ERROR, 2},
      {add(MISSING_LONG + 1), TYPE_LONG},
      {add(MISSING_DOUBLE), TYPE_ERROR, 2},
      {add(MISSING_DOUBLE + 0.009), TYPE_ERROR, 2},
      {add(MISSING_DOUBLE + 0.011), TYPE_DOUBLE},
      {add(wqd::CFixPtNum(MISSING_LONG, 102)), TYPE_ERROR, 2},
      {add(wqd::CFixPtNum(-2147483647, 101)), TYPE_LPACK},
      {add(ZULDATE{1, 0, 2004}), TYPE_ERROR, 2},
      {add(ZULDATE{0, 1, 0}), TYPE_DATE},
      {add(wqd::CZulDate()), TYPE_ERROR, 2},
      {add(ZULTIME{MISSING_TIME_MINUTES, 5}), TYPE_ERROR, 2},
      {add(ZULTIME{MISSING_TIME_MINUTES - 1, 59}), TYPE_TIME},
      {add(wqd::CZulTime(MISSING_TIME_SECONDS)), TYPE_ERROR, 2},
      {item(MISSING_LONG), TYPE_ERROR, 2},
      {item(wqd::CZulDate()), TYPE_ERROR, 2},
      {[](CDataBlock& block) { return block.AddError(FID{7}, 7); }, TYPE_ERROR, 7},
      {[](CDataBlock& block) { return block.AddError(FID{7}, MISSING_SHORT); }, TYPE_ERROR, -32768},
      {[](CDataBlock& block) {
         CDataItem text(FID{7}, "N/A", -1);
         return block.Add(text);
       },
       TYPE_ERROR, 2},
      {add("N/A"), TYPE_STRING, 2},
      {add(""), TYPE_STRING},
  };
  for (const cf_id format : kFormats) {
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(CfName(format)) + " case " + std::to_string(&c - cases));
      const DataBlockPtr block = NewBlock(format);
      ASSERT_TRUE(block->StartRecord() && c.add(*block) && block->EndRecord());
      CDataItem back;
      EXPECT_TRUE(block->FirstRecord() && block->GetField(FID{7}, &back));
      EXPECT_EQ(block->GetCurrentFieldType(), c.type);
      EXPECT_TRUE(back.GetError() == c.error && back.IsNull() == (c.error != 0));
    }
  }
}

TEST(Zul, VectorsAtTheirLimits) {
  for (const int type : {TYPE_VECTOR_DOUBLE, TYPE_VECTOR_LONG, TYPE_VECTOR_INT, TYPE_VECTOR_LPACK,
                         TYPE_VECTOR_DATE, TYPE_VECTOR_TIME, TYPE_VECTOR_STRING}) {
    for (const std::uint32_t count : {0u, 1u, 15999u, 16000u, 16001u, 65535u, 65536u, 131072u}) {
      for (const cf_id format : kFormats) {
        for (const Road road : {Road::kDirect, Road::kItem}) {
          Field field = VectorOf(type, count);
          SCOPED_TRACE(testing::Message()
                       << CfName(format) << (road == Road::kItem ? ", item " : ", ") << count
                       << " of type " << type);
          const bool limited = format == ZUL3 && road == Road::kItem && type != TYPE_VECTOR_STRING;
          const bool fits = format == ZUL4 || limited || count <= 65535;
          const DataBlockPtr block = NewBlock(format);
          const LogCapture log;
          ASSERT_TRUE(block->StartRecord() && block->Add(FID{1}, 5));
          const std::string before = BytesOf(*block);
          EXPECT_EQ(Add(*block, field, road), fits);
          EXPECT_EQ(log.lines().size(), fits || road == Road::kDirect ? 0u : 2u);
          if (!fits) {
            EXPECT_TRUE(BytesOf(*block) == before);
            continue;
          }
          if (limited && count > 16000) {
            field.bytes.erase(0, (count - 16000) * wqd_test::WidthOf(type));
          }
          ASSERT_TRUE(block->Add(FID{2}, 6) && block->EndRecord() && block->FirstRecord());
          const Fields expected = {LongField(1, 5), field, LongField(2, 6)};
          EXPECT_TRUE(ReadRecord(*block) == expected);
          const bool strings = type == TYPE_VECTOR_STRING;
          EXPECT_EQ(block->GetVectorSize(),
                    static_cast<int>(strings ? std::min(count, 1u) : field.Count()));
        }
      }
    }
  }
}

TEST(Zul, StringVectorsMustHoldAsManyWholeStringsAsIsSaid) {
  const struct {
    std::string bytes;
    std::uint32_t count;
    bool fits;
  } cases[] = {
      {"", 0, true},
      {"", 1, false},
      {std::string("ab\0c\0", 5), 2, true},
      {std::string("ab\0c\0", 5), 1, false},
      {std::string("ab\0c\0", 5), 3, false},
      {std::string("ab\0c", 4), 2, false},
      {std::string("ab\0c", 4), 1, false},
      {std::string(65535, '\0'), 65535, true},
  };
  for (const cf_id format : kFormats) {
    for (const auto& c : cases) {
      SCOPED_TRACE(testing::Message()
                   << CfName(format) << ", " << c.count << " in " << c.bytes.size());
      const DataBlockPtr block = NewBlock(format);
      const auto size = static_cast<std::uint32_t>(c.bytes.size());
      ASSERT_TRUE(block->StartRecord());
      EXPECT_EQ(block->AddStringVector(FID{9}, c.bytes.data(), c.count, size), c.fits);
      EXPECT_FALSE(block->AddStringVector(FID{9}, nullptr, 1, 1));
      EXPECT_EQ(block->FirstRecord() && block->FirstField(), c.fits);
      EXPECT_EQ(block->GetVectorSize(), c.fits ? static_cast<int>(c.count) : 0);
    }
  }
}
}  // namespace
