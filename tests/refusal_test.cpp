// What the binary blocks refuse, and what is left then.
#include "allocations.h"
#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// The writing operations that a block does not refuse.
std::string Accepted(CDataBlock& block) {
  std::string accepted = block.StartRecord() ? "StartRecord " : "";
  for (const Field& field : OneOfEach(3)) {
    for (const Road road : {Road::kDirect, Road::kItem}) {
      if (Add(block, field, road)) accepted += "Add of " + std::to_string(field.type) + ' ';
    }
  }
  if (block.AddBlob(FID{1}, "abc", 3)) accepted += "AddBlob ";
  if (block.EndRecord()) accepted += "EndRecord";
  return accepted;
}

TEST(Refused, Zul3SaysWhatItCouldNotAdd) {
  const std::string largest = (InLocale(), std::to_string(1e300));
  const std::pair<CDataItem, std::string> cases[] = {
      {CDataItem(FID{65535}, "a %d b", -1), "TYPE_STRING, val<a %d b>"},
      {CDataItem(FID{7}, 1.5), "TYPE_DOUBLE, val<1.500000>"},
      {CDataItem(FID{7}, -1e300), "TYPE_DOUBLE, val<-" + largest + '>'},
      {CDataItem(FID{7}, std::int16_t{-7}), "TYPE_INT, val<-7>"},
      {CDataItem(FID{7}, 2147483647), "TYPE_LONG, val<2147483647>"},
      {CDataItem(FID{7}, CFixPtNum(-1234, 102)), "TYPE_LPACK, val<-1234, 102>"},
      {CDataItem(FID{7}, ZULDATE{31, 12, 2004}), "TYPE_DATE, val<12/31/2004>"},
      {CDataItem(FID{7}, CZulTime(13, 45, 30)), "TYPE_TIME, val<825,30>"},
      {CDataItem(FID{7}, 5, true), "TYPE_ERROR, val<5>"},
      {ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 3)), "TYPE_VECTOR_DOUBLE, nElements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_LPACK, 0)), "TYPE_VECTOR_LPACK, nElements<0>"},
      {ItemOf(VectorOf(TYPE_VECTOR_LONG, 16001)), "TYPE_VECTOR_LONG, nelements<16001>"},
      {ItemOf(VectorOf(TYPE_VECTOR_INT, 3)), "TYPE_VECTOR_INT, nelements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_DATE, 3)), "TYPE_VECTOR_DATE, nelements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_TIME, 3)), "TYPE_VECTOR_TIME, nelements<3>"},
      {ItemOf(VectorOf(TYPE_VECTOR_STRING, 65541)), "TYPE_VECTOR_STRING, wSize<5>"},
  };
  const DecimalComma comma;
  for (const auto& [given, value] : cases) {
    CDataItem item = given;
    const DataBlockPtr block = NewBlock(ZUL3);
    const LogCapture log;
    const Shortage none;
    EXPECT_TRUE(block->StartRecord() && !block->Add(item)) << value;
    const std::string id = std::to_string(item.GetId()), code = std::to_string(item.GetType());
    const std::string start = "CZul3Block::Add(CDataItem&) failed, fid<" + id + ">, ";
    EXPECT_EQ(log.lines(), (LogCapture::Lines{{1, start + value + ", m_allocSize<0>"},
                                              {1, start + "type<" + code + ">, m_allocSize<0>"}}));
  }
}

TEST(Refused, OtherLines) {
  char bytes[] = "blob";
  CDataItem blob(bytes, 4);
  const std::string large(5000, 'a');
  const LogCapture::Lines lines[] = {
      {{2, "CZul3Block::Add(CDataItem&) failed, fid<0>, TYPE_EMPTY, ignored"},
       {1, "BigZUL3_add_field failed for Add(FID, const char*), fid<65535>, sz<" + large +
               ">, m_allocSize<0>"}},
      {{1, "Couldn't allocate ZUL4 record size 16"}}};
  for (const cf_id format : kBinaryFormats) {
    const DataBlockPtr block = NewBlock(format);
    const LogCapture log;
    EXPECT_TRUE(block->StartRecord() && block->Add(blob) == (format == ZUL3));
    EXPECT_FALSE(block->Add(FID{1}, static_cast<const char*>(nullptr)));
    EXPECT_EQ(block->GetFieldCount(), 0);
    const Shortage none;
    EXPECT_FALSE(block->Add(FID{65535}, large.c_str()));
    EXPECT_FALSE(Add(*block, VectorOf(TYPE_VECTOR_INT, 5000)));
    EXPECT_EQ(log.lines(), lines[format == ZUL4]);
  }
}

TEST(Refused, FieldsAndRecordsBeyond65535) {
  for (const cf_id format : kBinaryFormats) {
    const DataBlockPtr wide = NewBlock(format);
    Fields fields;
    Records records;
    EXPECT_TRUE(wide->StartRecord());
    for (int i = 0; i < 65535; ++i) {
      fields.push_back(LongField(static_cast<FID>(i), i));
      records.push_back({LongField(FID{1}, i)});
      ASSERT_TRUE(wide->Add(static_cast<FID>(i), i));
    }
    const std::string before = BytesOf(*wide);
    const LogCapture log;
    for (const Field& field : OneOfEach(3)) {
      EXPECT_FALSE(Add(*wide, field) || Add(*wide, field, Road::kItem)) << field;
    }
    ASSERT_TRUE(BytesOf(*wide) == before && log.lines().size() == (format == ZUL3 ? 45u : 16u));
    const std::string line = log.lines().back().second;
    const int room = std::atoi(line.substr(line.rfind('<') + 1).c_str());
    EXPECT_TRUE(format == ZUL3 ? room >= wide->GetDataSize() && room < 1 << 24
                               : line == "Couldn't allocate ZUL4 record size 524296")
        << line;
    EXPECT_TRUE(wide->EndRecord() && Read(*wide) == Records{fields});
    const DataBlockPtr high = Build(format, records);
    EXPECT_FALSE(high->Add(Build(ZUL4, {{LongField(FID{1}, 7)}}).get()));
    EXPECT_TRUE(format == ZUL3 || !high->Add(Build(ZUL4, {{}}).get()));
    EXPECT_TRUE(high->StartRecord());
    EXPECT_EQ(high->Add(FID{1}, 7), format == ZUL3);  // the record is opened by its end, or start
    EXPECT_EQ(high->EndRecord(), format == ZUL4);
    EXPECT_TRUE(Read(*high) == records);
  }
}

TEST(Refused, WrappedBytesAreNeverWrittenWhateverIsAssigned) {
  enum Manner { kWritten, kWrapped, kFixed };
  constexpr std::pair<cf_id, Manner> kSamples[] = {
      {TEXT, kWritten}, {TEXT, kWrapped}, {ZUL3, kWritten}, {ZUL3, kWrapped},
      {ZUL4, kWritten}, {ZUL4, kWrapped}, {ZUL4, kFixed},   {Btrieve, kWritten}};
  std::string text = "1,a";
  const DataBlockPtr sources[] = {nullptr, NewBlock(CSV), Wrap(TEXT, text)};
  for (const auto& [format, manner] : kSamples) {
    for (const DataBlockPtr& source : sources) {
      SCOPED_TRACE(testing::Message()
                   << CfName(format) << ' ' << manner << ", source " << &source - sources);
      std::string bytes(1 << 12, '\0');
      DataBlockPtr block = NewBlock(format);
      if (manner == kFixed)
        block.reset(CDataBlock::FixedSizeDataBlock(format, bytes.data(), 1 << 12));
      EXPECT_TRUE(block->AddBlob(FID{1}, "12", 2) ||
                  (block->StartRecord() && block->Add(FID{1}, "12") && block->Add(FID{2}, 7) &&
                   block->EndRecord() && block->Close()));
      const std::string held = BytesOf(*block);
      if (manner == kWrapped) block = Wrap(format, bytes = held);
      const std::string before = bytes;
      if (source != nullptr) *block = *source;
      EXPECT_EQ(block->IsReadOnly(), source == nullptr ? manner == kWrapped : source == sources[2]);
      const bool zul = format == ZUL3 || format == ZUL4;
      const bool refuses =
          (block->IsReadOnly() && format != Btrieve) || (zul && manner == kWrapped);
      const std::string accepted = Accepted(*block);
      EXPECT_EQ(accepted.empty(), refuses) << accepted;
      EXPECT_TRUE(bytes == before || (manner == kFixed && !refuses));
      EXPECT_TRUE(!refuses || format == TEXT || BytesOf(*block) == held);
      CDataItem item;
      EXPECT_EQ(block->FirstRecord() && block->GetField(FID{2}, &item) && item.GetLong() == 7, zul);
    }
  }
}

TEST(FixedBuffer, OfEverySizeTakesWhatFitsAndTouchesNothingElse) {
  const Fields fields = OneOfEach(3);
  const LogCapture log;
  bool all = false;
  for (int size = -1; !all; ++size) {
    SCOPED_TRACE(size);
    std::string buffer(static_cast<std::size_t>(std::max(size, 0)) + 2, 'x');
    const DataBlockPtr fixed(CDataBlock::FixedSizeDataBlock(ZUL4, &buffer[1], size));  // at odd
    EXPECT_TRUE(!fixed->IsReadOnly() && (fixed->GetData() == &buffer[1]) == (size >= 8));
    Records expected;
    all = true;
    for (int record = 0; record < 2; ++record) {
      const bool opens = size - std::max(fixed->GetDataSize(), 8) >= 8;
      EXPECT_TRUE(fixed->StartRecord());
      if (opens) expected.emplace_back();
      for (const Field& field : fields) {
        const DataBlockPtr alone = NewBlock(ZUL4);
        ASSERT_TRUE(alone->StartRecord() && Add(*alone, field));
        const bool fits = opens && alone->GetDataSize() - 16 <= size - fixed->GetDataSize();
        ASSERT_EQ(Add(*fixed, field), fits) << field;
        if (fits) expected.back().push_back(field);
        all = all && fits;
      }
      EXPECT_TRUE(fixed->EndRecord());
    }
    EXPECT_TRUE(expected.empty() || BytesOf(*fixed) == BytesOf(*Build(ZUL4, expected)));
    EXPECT_EQ(Read(*fixed), expected);
    const auto used = static_cast<std::size_t>(fixed->GetDataSize());
    EXPECT_TRUE(buffer[0] == 'x' && buffer.find_first_not_of('x', used + 1) == std::string::npos);
  }
  const DataBlockPtr none(CDataBlock::FixedSizeDataBlock(ZUL4, nullptr, 100));
  EXPECT_TRUE(none->GetData() == nullptr && Accepted(*none) == "StartRecord EndRecord");
}

TEST(FixedBuffer, TakesAValueFromWhereItsFieldWillBe) {
  for (std::size_t at = 8; at < 60; ++at) {
    for (const Field& field : {Field{TYPE_STRING, 1, "a text of 23 characters"},
                               VectorOf(TYPE_VECTOR_LONG, 5), VectorOf(TYPE_VECTOR_STRING, 20)}) {
      std::string buffer(100, 'x');
      const DataBlockPtr block(CDataBlock::FixedSizeDataBlock(ZUL4, buffer.data(), 100));
      ASSERT_TRUE(block->StartRecord());
      char* const source = &buffer[8 + at];
      std::memcpy(source, (field.bytes + '\0').data(), field.bytes.size() + 1);
      EXPECT_TRUE(field.type == TYPE_STRING ? block->Add(1, source)
                  : field.type == TYPE_VECTOR_STRING
                      ? block->AddStringVector(FID{9}, source, 1, 20)
                      : block->AddLongVector(FID{9}, reinterpret_cast<std::int32_t*>(source), 5));
      EXPECT_EQ(Read(*block), (Records{{field}})) << at;
    }
  }
}

TEST(Btrieve, HoldsACopyAndNothingButBytes) {
  char bytes[] = "abcdefg";
  for (const int size : {-1, 0, 7}) {
    const DataBlockPtr block(CDataBlock::NewDataBlock(Btrieve, bytes, size));
    bytes[0] = 'x';
    const std::string held = size == 7 ? "abcdefg" : "";
    EXPECT_TRUE(BytesOf(*block) == held && (block->GetData() == nullptr) == (size != 7)) << size;
    bytes[0] = 'a';
    EXPECT_EQ(Accepted(*block), "AddBlob ");
    EXPECT_TRUE(block->AddBlob(FID{0}, nullptr, 0) && !block->AddBlob(FID{0}, nullptr, 1));
    EXPECT_TRUE(block->AddBlob(FID{7}, bytes, 4) && block->AddBlob(FID{7}, bytes, 0));
    EXPECT_EQ(BytesOf(*block), held + "abcabcd");
  }
  const DataBlockPtr empty(CDataBlock::NewDataBlock(Btrieve, nullptr, 7));
  EXPECT_TRUE(empty->GetData() == nullptr && empty->GetFormat() == Btrieve && empty->Close());
}

}  // namespace
