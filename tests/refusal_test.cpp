// What the binary blocks refuse, and what is left then; and how they grow. The program is linked
// with --wrap=realloc: memory can run short, and what a block moved away from can be spoiled.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <utility>

#include "fieldvalue.h"
#include "support.h"

namespace {
enum Memory { kPlain, kNone, kSpoiled } memory = kPlain;
int reallocs = 0;
}  // namespace

extern "C" {  // NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* old, std::size_t size) {
  ++reallocs;
  if (memory == kNone) return nullptr;
  if (memory == kPlain || old == nullptr) return __real_realloc(old, size);
  const std::size_t held = malloc_usable_size(old);
  void* const moved = std::malloc(size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, old, std::min(held, size));
  std::memset(old, 0xDD, held);
  std::free(old);
  return moved;
}
}  // NOLINTEND(bugprone-reserved-identifier)

namespace {

using wqd::CDataBlock;
using wqd::CDataItem;
using wqd::DataBlockPtr;
using wqd_test::Add;
using wqd_test::BytesOf;
using wqd_test::Field;
using wqd_test::Fields;
using wqd_test::ItemOf;
using wqd_test::kFieldTypes;
using wqd_test::LogCapture;
using wqd_test::LongField;
using wqd_test::NewBlock;
using wqd_test::Read;
using wqd_test::ReadRecord;
using wqd_test::Road;
using wqd_test::VectorOf;

constexpr cf_id kFormats[] = {ZUL3, ZUL4};

/// What becomes of realloc until its end.
struct MemoryIs {
  explicit MemoryIs(Memory kind) { memory = kind; }
  ~MemoryIs() { memory = kPlain; }
};

/// A field of each type.
Fields OneOfEach() {
  Fields fields;
  for (const int type : kFieldTypes) fields.push_back(VectorOf(type, 3));
  for (Field& field : fields) {
    const bool vector = field.type >= TYPE_VECTOR_DOUBLE && field.type <= TYPE_VECTOR_TIME;
    if (!vector && field.type != TYPE_STRING) field.bytes.resize(wqd_test::WidthOf(field.type));
    if (field.type == TYPE_DATE) field.bytes = wqd_test::ValueBytes(ZULDATE{31, 12, 2004});
    if (field.type == TYPE_TIME) field.bytes = wqd_test::ValueBytes(ZULTIME{1439, 59});
    if (field.type == TYPE_DOUBLE) field.bytes = wqd_test::ValueBytes(1.5);
  }
  return fields;
}

/// The writing operations that a block does not refuse.
std::string Accepted(CDataBlock& block) {
  std::string accepted = block.StartRecord() ? "StartRecord " : "";
  for (const Field& field : OneOfEach()) {
    for (const Road road : {Road::kDirect, Road::kItem}) {
      if (Add(block, field, road)) accepted += "Add of " + std::to_string(field.type) + ' ';
    }
  }
  if (block.AddBlob(FID{1}, "abc", 3)) accepted += "AddBlob ";
  if (block.EndRecord()) accepted += "EndRecord";
  return accepted;
}

TEST(Refused, Zul3SaysWhatItCouldNotAdd) {
  Field longs = VectorOf(TYPE_VECTOR_LONG, 16001);
  Field strings{TYPE_VECTOR_STRING, 9, std::string("ab\0c\0", 5)};
  Field longStrings = VectorOf(TYPE_VECTOR_STRING, 65541);
  const struct {
    CDataItem item;
    std::string value;
  } cases[] = {
      {CDataItem(FID{65535}, "a %d b", -1), "TYPE_STRING, val<a %d b>"},
      {CDataItem(FID{7}, 1.5), "TYPE_DOUBLE, val<1.500000>"},
      {CDataItem(FID{7}, -1e300), "TYPE_DOUBLE, val<-" + std::to_string(1e300) + '>'},
      {CDataItem(FID{7}, std::int16_t{-7}), "TYPE_INT, val<-7>"},
      {CDataItem(FID{7}, 2147483647), "TYPE_LONG, val<2147483647>"},
      {CDataItem(FID{7}, wqd::CFixPtNum(-1234, 102)), "TYPE_LPACK, val<-1234, 102>"},
      {CDataItem(FID{7}, ZULDATE{31, 12, 2004}), "TYPE_DATE, val<12/31/2004>"},
      {CDataItem(FID{7}, wqd::CZulTime(13, 45, 30)), "TYPE_TIME, val<825,30>"},
      {CDataItem(FID{7}, 5, true), "TYPE_ERROR, val<5>"},
      {ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 3)), "TYPE_VECTOR_DOUBLE, nElements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_LPACK, 0)), "TYPE_VECTOR_LPACK, nElements<0>"},
      {ItemOf(longs), "TYPE_VECTOR_LONG, nelements<16001>"},
      {ItemOf(VectorOf(TYPE_VECTOR_INT, 3)), "TYPE_VECTOR_INT, nelements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_DATE, 3)), "TYPE_VECTOR_DATE, nelements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_TIME, 3)), "TYPE_VECTOR_TIME, nelements<3>"},
      {ItemOf(strings), "TYPE_VECTOR_STRING, wSize<5>"},
      {ItemOf(longStrings), "TYPE_VECTOR_STRING, wSize<5>"},
  };
  const wqd_test::DecimalComma comma;
  for (const auto& c : cases) {
    CDataItem item = c.item;
    const DataBlockPtr block = NewBlock(ZUL3);
    const LogCapture log;
    const MemoryIs none(kNone);
    EXPECT_TRUE(block->StartRecord() && !block->Add(item)) << c.value;
    const std::string start =
        "CZul3Block::Add(CDataItem&) failed, fid<" + std::to_string(item.GetId()) + ">, ";
    const std::string type = "type<" + std::to_string(item.GetType()) + '>';
    EXPECT_EQ(log.lines(), (LogCapture::Lines{{1, start + c.value + ", m_allocSize<0>"},
                                              {1, start + type + ", m_allocSize<0>"}}));
  }
}

TEST(Refused, OtherLines) {
  char bytes[] = "blob";
  CDataItem blob(bytes, 4);
  blob.SetId(FID{65535});
  for (const cf_id format : kFormats) {
    const DataBlockPtr block = NewBlock(format);
    ASSERT_TRUE(block->StartRecord());
    const LogCapture log;
    EXPECT_EQ(block->Add(blob), format == ZUL3);
    EXPECT_FALSE(block->Add(FID{1}, static_cast<const char*>(nullptr)));
    EXPECT_TRUE(block->GetFieldCount() == 0);
    const MemoryIs none(kNone);
    const std::string large(5000, 'a');
    EXPECT_FALSE(block->Add(FID{65535}, large.c_str()));
    EXPECT_FALSE(Add(*block, VectorOf(TYPE_VECTOR_INT, 5000), Road::kDirect));
    const LogCapture::Lines zul3 = {
        {2, "CZul3Block::Add(CDataItem&) failed, fid<65535>, TYPE_EMPTY, ignored"},
        {1, "BigZUL3_add_field failed for Add(FID, const char*), fid<65535>, sz<" + large +
                ">, m_allocSize<0>"}};
    EXPECT_EQ(log.lines(), format == ZUL3
                               ? zul3
                               : (LogCapture::Lines{{1, "Couldn't allocate ZUL4 record size 16"}}));
  }
}

TEST(Refused, WithoutMemoryTheBlockStandsAsItWasAndGoesOn) {
  for (const cf_id format : kFormats) {
    const DataBlockPtr block = NewBlock(format);
    const Fields fields = OneOfEach();
    {
      const MemoryIs none(kNone);
      const LogCapture log;
      EXPECT_TRUE(block->StartRecord());
      for (const Field& field : fields) EXPECT_FALSE(Add(*block, field, Road::kDirect)) << field;
      EXPECT_TRUE(block->EndRecord() && block->GetData() == nullptr &&
                  block->GetRecordCount() + block->GetFieldCount() + block->GetDataSize() == 0);
      EXPECT_EQ(log.lines().size(), format == ZUL3 ? 15u : 1u);
    }
    std::vector<Fields> expected(2, fields);
    for (int record = 0; record < 2; ++record) {
      ASSERT_TRUE(block->StartRecord());
      for (const Field& field : fields) {
        Field large = VectorOf(TYPE_VECTOR_INT, 60000);
        const std::string before = BytesOf(*block);
        {
          const MemoryIs none(kNone);
          EXPECT_FALSE(Add(*block, large, Road::kDirect));
        }
        EXPECT_TRUE(BytesOf(*block) == before) << field;
        EXPECT_TRUE(Add(*block, field, Road::kDirect)) << field;
      }
      EXPECT_TRUE(block->EndRecord());
    }
    EXPECT_EQ(Read(*block), expected);
  }
}

TEST(Refused, FieldsBeyond65535) {
  for (const cf_id format : kFormats) {
    const DataBlockPtr block = NewBlock(format);
    ASSERT_TRUE(block->StartRecord());
    for (int i = 0; i < 65535; ++i) ASSERT_TRUE(block->Add(static_cast<FID>(i), i)) << i;
    const std::string before = BytesOf(*block);
    const LogCapture log;
    for (const Field& field : OneOfEach()) {
      EXPECT_FALSE(Add(*block, field, Road::kDirect) || Add(*block, field, Road::kItem)) << field;
    }
    EXPECT_TRUE(BytesOf(*block) == before && block->GetFieldCount() == 65535);
    ASSERT_EQ(log.lines().size(), format == ZUL3 ? 45u : 16u);
    const std::string line = log.lines().back().second;
    const int room = std::atoi(line.substr(line.rfind('<') + 1).c_str());
    EXPECT_TRUE(format == ZUL3 ? room >= block->GetDataSize() && room < 1 << 24
                               : line == "Couldn't allocate ZUL4 record size 524296")
        << line;
    ASSERT_TRUE(block->EndRecord() && block->FirstRecord());
    const Fields fields = ReadRecord(*block);
    ASSERT_EQ(fields.size(), 65535u);
    EXPECT_EQ(fields.back(), LongField(65534, 65534));
  }
}

TEST(Refused, RecordsBeyond65535) {
  for (const cf_id format : kFormats) {
    const DataBlockPtr block = NewBlock(format);
    for (int i = 0; i < 65535; ++i) {
      ASSERT_TRUE(block->StartRecord() && block->Add(FID{1}, i) && block->EndRecord()) << i;
    }
    EXPECT_TRUE(block->StartRecord());
    EXPECT_EQ(block->Add(FID{1}, 7), format == ZUL3);  // the record is opened by its end, or start
    EXPECT_EQ(block->EndRecord(), format == ZUL4);
    EXPECT_EQ(block->GetRecordCount(), 65535);
    int records = 0;
    CDataItem item;
    for (bool more = block->FirstRecord(); more; more = block->NextRecord(), ++records) {
      ASSERT_TRUE(block->FirstField() && block->GetCurrentField(&item));
      ASSERT_TRUE(item.GetLong() == records && !block->NextField());
    }
    EXPECT_EQ(records, 65535);
  }
}

/// A block that is written, one around bytes of a caller, or one that writes into them.
struct Sample {
  enum Manner { kWritten, kWrapped, kFixed };

  Sample(cf_id format, Manner how) : manner(how), block(NewBlock(format)), bytes(1 << 12, '\0') {
    if (manner == kFixed)
      block.reset(CDataBlock::FixedSizeDataBlock(format, bytes.data(), 1 << 12));
    if (!block->AddBlob(FID{1}, "12", 2)) {
      EXPECT_TRUE(block->StartRecord() && block->Add(FID{1}, "12") && block->Add(FID{2}, 7) &&
                  block->EndRecord() && block->Close());
    }
    if (manner == kWrapped) {
      bytes = BytesOf(*block);
      block.reset(CDataBlock::NewDataBlock(format, bytes.data(), static_cast<int>(bytes.size())));
    }
    before = bytes;
  }

  Manner manner;
  DataBlockPtr block;
  std::string bytes;
  std::string before;
};

TEST(Refused, WrappedBytesAreNeverWrittenWhateverIsAssigned) {
  constexpr std::pair<cf_id, Sample::Manner> kSamples[] = {
      {TEXT, Sample::kWritten}, {TEXT, Sample::kWrapped},    {ZUL3, Sample::kWritten},
      {ZUL3, Sample::kWrapped}, {ZUL4, Sample::kWritten},    {ZUL4, Sample::kWrapped},
      {ZUL4, Sample::kFixed},   {Btrieve, Sample::kWritten},
  };
  for (const auto& [format, manner] : kSamples) {
    const Sample plain(format, manner);
    EXPECT_EQ(plain.block->IsReadOnly(), manner == Sample::kWrapped);
    EXPECT_EQ(Accepted(*plain.block).empty(), manner == Sample::kWrapped) << CfName(format);
    for (const auto& [sourceFormat, sourceManner] : kSamples) {
      SCOPED_TRACE(testing::Message() << CfName(format) << ' ' << manner << " = "
                                      << CfName(sourceFormat) << ' ' << sourceManner);
      const Sample to(format, manner);
      const Sample from(sourceFormat, sourceManner);
      const std::string held = BytesOf(*to.block);
      const std::string source = BytesOf(*from.block);
      static_cast<CDataBlock&>(*to.block) = *from.block;
      EXPECT_EQ(to.block->IsReadOnly(), from.block->IsReadOnly());
      const bool zul = format == ZUL3 || format == ZUL4;
      const bool refuses =
          (from.block->IsReadOnly() && format != Btrieve) || (zul && manner == Sample::kWrapped);
      const std::string accepted = Accepted(*to.block);
      EXPECT_EQ(accepted.empty(), refuses) << accepted;
      EXPECT_TRUE(manner == Sample::kFixed ? !refuses || to.bytes == to.before
                                           : to.bytes == to.before);
      EXPECT_TRUE(!refuses || BytesOf(*to.block) == held);
      EXPECT_TRUE(BytesOf(*from.block) == source && from.bytes == from.before);
      CDataItem item;
      EXPECT_EQ(to.block->FirstRecord() && to.block->GetField(FID{2}, &item) && item.GetLong() == 7,
                zul);
    }
  }
}

TEST(FixedBuffer, OfEverySizeTakesWhatFitsAndTouchesNothingElse) {
  const Fields fields = OneOfEach();
  const LogCapture log;
  int enough = 0;
  for (int size = -1; enough < 2; ++size) {
    SCOPED_TRACE(size);
    const auto held = static_cast<std::size_t>(std::max(size, 0));
    std::vector<char> buffer(held + 1, 'x');  // at an odd address
    const DataBlockPtr fixed(CDataBlock::FixedSizeDataBlock(ZUL4, buffer.data() + 1, size));
    const DataBlockPtr model = NewBlock(ZUL4);  // is given what fits
    EXPECT_TRUE(!fixed->IsReadOnly() && (fixed->GetData() == buffer.data() + 1) == (size >= 8));
    std::vector<Fields> expected;
    bool all = true;
    for (int record = 0; record < 2; ++record) {
      const int free = size - std::max(fixed->GetDataSize(), 8);
      EXPECT_TRUE(fixed->StartRecord());
      if (free >= 8) model->StartRecord(), expected.emplace_back();
      for (const Field& field : fields) {
        const DataBlockPtr alone = NewBlock(ZUL4);
        ASSERT_TRUE(alone->StartRecord() && Add(*alone, field, Road::kDirect));
        const bool fits = free >= 8 && alone->GetDataSize() - 16 <= size - model->GetDataSize();
        ASSERT_EQ(Add(*fixed, field, Road::kDirect), fits) << field;
        if (fits) expected.back().push_back(field);
        if (fits) Add(*model, field, Road::kDirect);
        all = all && fits;
      }
      EXPECT_TRUE(fixed->EndRecord());
    }
    EXPECT_TRUE(expected.empty() || BytesOf(*fixed) == BytesOf(*model));
    EXPECT_EQ(Read(*fixed), expected);
    const auto used = static_cast<std::size_t>(fixed->GetDataSize());
    EXPECT_EQ(std::count(buffer.begin() + 1 + static_cast<std::ptrdiff_t>(used), buffer.end(), 'x'),
              static_cast<std::ptrdiff_t>(held - used));
    enough += all ? 1 : 0;
  }
  const DataBlockPtr none(CDataBlock::FixedSizeDataBlock(ZUL4, nullptr, 100));
  EXPECT_EQ(Accepted(*none), "StartRecord EndRecord");
  EXPECT_EQ(none->GetData(), nullptr);
}

TEST(Growth, TextInTheBlockItselfIsTakenAsItStoodThere) {
  const MemoryIs spoiled(kSpoiled);
  const std::string text(40, 'y');
  for (const cf_id format : kFormats) {
    const DataBlockPtr block = NewBlock(format);
    ASSERT_TRUE(block->StartRecord() && block->Add(FID{1}, text.c_str()));
    for (int i = 0; i < 2000; ++i) {
      const auto* const data = static_cast<const char*>(block->GetData());
      ASSERT_TRUE(block->Add(FID{1}, data + (format == ZUL3 ? 18 : 24)));
    }
    ASSERT_TRUE(block->EndRecord() && block->FirstRecord());
    EXPECT_EQ(ReadRecord(*block), Fields(2001, Field{TYPE_STRING, 1, text})) << CfName(format);
  }
}

/// The processor time of `run(10 * count)` over that of `run(count)`: of three attempts, since
/// noise may spoil one, the first below `enough`, or the last.
double Tenfold(int count, double enough, const std::function<void(int)>& run) {
  double ratio = enough;
  for (int attempt = 0; attempt < 3 && ratio >= enough; ++attempt) {
    const std::clock_t begin = std::clock();
    run(count);
    const std::clock_t middle = std::clock();
    run(10 * count);
    ratio = static_cast<double>(std::clock() - middle) / static_cast<double>(middle - begin + 1);
  }
  return ratio;
}

TEST(Growth, CostsWhatTheRecordsCost) {
  for (const cf_id format : kFormats) {
    const auto write = [format](int records) {
      reallocs = 0;
      const DataBlockPtr block = NewBlock(format);
      bool done = true;
      for (int record = 0; record < records; ++record) {
        done = done && block->StartRecord();
        for (int i = 0; i < 50; ++i) done = done && block->Add(static_cast<FID>(i), record);
        done = done && block->EndRecord();
      }
      EXPECT_TRUE(done && block->GetRecordCount() == records && block->GetFieldCount() == 50);
      EXPECT_LT(reallocs, 60) << records;
    };
    EXPECT_LT(Tenfold(6000, 40, write), 40) << CfName(format);
  }
}

TEST(Btrieve, HoldsACopyAndNothingButBytes) {
  char bytes[] = "abcdefg";
  for (const int size : {-1, 0, 7}) {
    const DataBlockPtr block(CDataBlock::NewDataBlock(Btrieve, bytes, size));
    bytes[0] = 'x';
    EXPECT_EQ(BytesOf(*block), size == 7 ? "abcdefg" : "") << size;
    EXPECT_EQ(block->GetData() == nullptr, size != 7) << size;
    bytes[0] = 'a';
    EXPECT_EQ(Accepted(*block), "AddBlob ");
    EXPECT_TRUE(block->AddBlob(FID{0}, nullptr, 0) && !block->AddBlob(FID{0}, nullptr, 1));
    EXPECT_TRUE(block->AddBlob(FID{7}, bytes, 4) && block->AddBlob(FID{7}, bytes, 0));
    EXPECT_EQ(BytesOf(*block), size == 7 ? "abcdefgabcabcd" : "abcabcd");
    CDataItem item(FID{4}, 4);
    EXPECT_FALSE(block->FirstRecord() || block->NextRecord() || block->FirstField() ||
                 block->NextField() || block->FindField(FID{0}) || block->GetField(FID{0}, &item) ||
                 block->GetCurrentField(&item) || item.GetLong() != 4);
    EXPECT_TRUE(block->Close() && !block->IsReadOnly() && block->GetFormat() == Btrieve &&
                block->GetRecordCount() + block->GetFieldCount() + block->GetVectorSize() +
                        block->GetCurrentFieldId() + block->GetCurrentFieldType() ==
                    0);
  }
  const DataBlockPtr empty(CDataBlock::NewDataBlock(Btrieve, nullptr, 7));
  EXPECT_TRUE(empty != nullptr && empty->GetData() == nullptr && empty->GetDataSize() == 0);
  const MemoryIs none(kNone);
  EXPECT_EQ(CDataBlock::NewDataBlock(Btrieve, bytes, 7), nullptr);
  EXPECT_FALSE(NewBlock(Btrieve)->AddBlob(FID{1}, bytes, 1));
}

TEST(Btrieve, AppendsCostWhatTheirBytesCost) {
  const auto append = [](int count) {
    reallocs = 0;
    const DataBlockPtr block = NewBlock(Btrieve);
    std::string expected;
    for (int i = 0; i < count; ++i) {
      const std::string bytes = std::to_string(i) + std::string(40, 'b');
      expected += bytes;
      ASSERT_TRUE(block->AddBlob(FID{1}, bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    }
    EXPECT_TRUE(BytesOf(*block) == expected);
    EXPECT_LT(reallocs, 60) << count;
  };
  EXPECT_LT(Tenfold(20000, 40, append), 40);
}

TEST(Btrieve, MayBeGivenItsOwnBytes) {
  const MemoryIs spoiled(kSpoiled);
  const DataBlockPtr block = NewBlock(Btrieve);
  std::string expected = "ab";
  ASSERT_TRUE(block->AddBlob(FID{1}, "ab", 2));
  for (int i = 0; i < 14; ++i) {
    const auto size = static_cast<std::uint32_t>(expected.size());
    ASSERT_TRUE(block->AddBlob(FID{1}, static_cast<char*>(block->GetData()) + 1, size - 1));
    expected += expected.substr(1);
  }
  EXPECT_TRUE(BytesOf(*block) == expected);
}

}  // namespace
