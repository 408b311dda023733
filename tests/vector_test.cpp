// Vectors and blobs in items.
#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

CDataItem Blob(FID id, std::string bytes) {
  CDataItem item(bytes.data(), static_cast<int>(bytes.size()));
  item.SetId(id);
  return item;
}

/// Items of every kind: vectors, empty ones, a blob, scalars, texts on both sides of 512 bytes.
std::vector<CDataItem> EveryKind() {
  std::vector<CDataItem> items = {Blob(FID{3}, "blob"),
                                  {FID{4}, -2.5},
                                  {FID{5}, CFixPtNum(101, 102)},
                                  {FID{6}, Letters(511).c_str(), -1},
                                  {FID{7}, Letters(2000).c_str(), -1}};
  for (const int type : kVectorTypes) {
    for (const std::uint32_t count : {0u, 1u, 700u}) items.push_back(ItemOf(VectorOf(type, count)));
  }
  return items;
}

TEST(Vector, HoldsItsOwnCopyAndHasNoSingleValue) {
  for (const int type : kVectorTypes) {
    for (const std::uint32_t count : {0u, 1u, 5u, 700u}) {
      const Field field = VectorOf(type, count);
      CDataItem item = ItemOf(field);  // whose arrays are gone by now
      EXPECT_EQ(FieldOf(item), field);
      char buffer[] = "as it was";
      EXPECT_TRUE(item.GetVectorPtr() != nullptr && !item.IsNull() && !item.IsIntegralType() &&
                  item.GetShort() == MISSING_SHORT && item.GetLong() == MISSING_LONG &&
                  item.GetFloat() == MISSING_DOUBLE && double{item.GetFPN()} == MISSING_DOUBLE &&
                  item.GetDate().Month() == 0 && int(item.GetTime()) == MISSING_TIME_SECONDS &&
                  item.Print(buffer, 9) == 0 && buffer == std::string("as it was") &&
                  (type == TYPE_VECTOR_STRING || *item.GetString() == '\0'))
          << field;
    }
  }
}

TEST(Vector, CopiesAndMovesGiveTheSourceWhateverTheTargetHeld) {
  for (CDataItem& source : EveryKind()) {
    const Field field = FieldOf(source);
    for (CDataItem& target : EveryKind()) {
      SCOPED_TRACE(testing::Message() << "over " << FieldOf(target));
      CDataItem copy = target;
      copy = source;
      ASSERT_EQ(FieldOf(copy), field);
      ASSERT_TRUE(source.GetVectorPtr() == nullptr || copy.GetVectorPtr() != source.GetVectorPtr());
      const void* const text = field.bytes.size() == 2000 ? copy.GetString() : nullptr;
      const CDataItem taken(std::move(copy));
      ASSERT_TRUE(text == nullptr || taken.GetString() == text) << "a large text changes hands";
      copy = taken;
      target = std::move(copy);
      ASSERT_EQ(FieldOf(target), field);
      copy.SetId(copy.GetId());  // NOLINT(bugprone-use-after-move): it has a defined state
      ASSERT_TRUE(copy.GetId() == 0 && copy.GetError() == 1);
      copy = target;
      ASSERT_EQ(FieldOf(copy), field);
    }
    CDataItem& self = source;
    self = source, source.Copy(self), self = std::move(source);
    EXPECT_EQ(FieldOf(self), field);
  }
}

TEST(Vector, MayBeMadeOfItsOwnElements) {
  CDataItem item = ItemOf(VectorOf(TYPE_VECTOR_LONG, 700));
  item.SetVector(FID{1}, static_cast<const std::int32_t*>(item.GetVectorPtr()) + 600, 100);
  const std::string tail = VectorOf(TYPE_VECTOR_LONG, 700).bytes.substr(2400);
  EXPECT_EQ(FieldOf(item), (Field{TYPE_VECTOR_LONG, 1, tail}));
  item.Set(static_cast<char*>(item.GetVectorPtr()) + 100, 300);
  EXPECT_EQ(FieldOf(item), (Field{TYPE_EMPTY, 1, tail.substr(100)}));
  item.SetVector(FID{2}, static_cast<const char*>(item.GetVectorPtr()), 300);
  EXPECT_EQ(FieldOf(item), (Field{TYPE_VECTOR_STRING, 2, tail.substr(100)}));
}

TEST(Vector, BlockOutlivesAScalarAndGoesWithTheNextVector) {
  const Field field = VectorOf(TYPE_VECTOR_INT, 3);
  CDataItem item = ItemOf(field);
  void* const block = item.GetVectorPtr();
  item.Set(FID{1}, std::int32_t{7});
  item = CDataItem(FID{2}, Letters(600).c_str(), -1);
  item.SetError(FID{2}, 3);
  EXPECT_TRUE(item.GetVectorPtr() == block && std::memcmp(block, field.bytes.data(), 6) == 0);
  item = ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 2));
  EXPECT_EQ(FieldOf(item), VectorOf(TYPE_VECTOR_DOUBLE, 2));
}

TEST(Vector, OfACodeTakesVectorTypesAlone) {
  for (int type = -1; type <= 102; ++type) {
    CDataItem item(FID{1}, 7);
    const bool vector = std::count(kVectorTypes.begin(), kVectorTypes.end(), type) == 1;
    EXPECT_EQ(item.SetVector(FID{9}, type, VectorOf(TYPE_VECTOR_DOUBLE, 4).bytes.data(), 4), vector)
        << type;
    EXPECT_TRUE(vector ? item.GetType() == type : item.GetLong() == 7) << type;
  }
}

TEST(Vector, RefusedSourcesLeaveTheItem) {
  char bytes[] = "abcd";
  for (CDataItem& item : EveryKind()) {
    const Field before = FieldOf(item);
    item.SetVector(FID{1}, static_cast<const double*>(nullptr), 1);
    item.SetVector(FID{1}, "a", 0x80000000u);
    item.Set(nullptr, 4);
    item.Set(bytes, 0);
    item.Set(bytes, -1);
    EXPECT_EQ(FieldOf(item), before);
    item.Set(bytes, 4);
    EXPECT_EQ(FieldOf(item), (Field{TYPE_EMPTY, before.id, "abcd"}));
  }
  EXPECT_TRUE(Blob(FID{0}, "").GetError() == 1 && CDataItem(nullptr, -1).GetError() == 1);
}

TEST(StringVector, TextIsQuotedAndJoined) {
  std::string many = "\"\"";
  for (int i = 1; i < 300; ++i) many += ",\"\"";
  std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {{"ab\0c", 4}, "\"ab\",\"c\""},  // the last NUL is missing
      {{"\0\0a\0\0", 5}, "\"\",\"\",\"a\",\"\""},
      {{"a,\"b\0", 5}, "\"a,\"b\""},
      {std::string(300, '\0'), many}};
  for (const std::size_t count : {508u, 509u, 510u, 511u, 5000u}) {
    cases.emplace_back(Letters(count) + '\0', '"' + Letters(count) + '"');
  }
  for (const auto& [bytes, text] : cases) {
    CDataItem item(FID{1}, Letters(700).c_str(), -1);
    item.SetVector(FID{1}, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    CDataItem fresh;
    for (CDataItem* each : {&item, &(fresh = item), &item}) {
      EXPECT_EQ(each->GetString(), text);
      EXPECT_EQ(FieldOf(*each), (Field{TYPE_VECTOR_STRING, 1, bytes}));
    }
  }
}

}  // namespace
