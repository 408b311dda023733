// Vectors and blobs in items. The program has its own operator new, so that memory can run short.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include "fieldvalue.h"

namespace {

bool newFails = false;

void* AllocateOrThrow(std::size_t size) {
  void* const memory = std::malloc(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}

}  // namespace

void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return newFails ? nullptr : std::malloc(size);
}
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using wqd::CDataItem;
using wqd_test::Field;
using wqd_test::FieldOf;
using wqd_test::ItemOf;
using wqd_test::VectorOf;

constexpr int kVectorTypes[] = {TYPE_VECTOR_DOUBLE, TYPE_VECTOR_LONG,   TYPE_VECTOR_INT,
                                TYPE_VECTOR_LPACK,  TYPE_VECTOR_STRING, TYPE_VECTOR_DATE,
                                TYPE_VECTOR_TIME};

CDataItem Blob(FID id, std::string bytes) {
  CDataItem item(bytes.data(), static_cast<int>(bytes.size()));
  item.SetId(id);
  return item;
}

/// Items of every kind: vectors, empty ones, a blob, scalars, texts on both sides of 512 bytes.
std::vector<CDataItem> EveryKind() {
  std::vector<CDataItem> items;
  for (const int type : kVectorTypes) {
    for (const std::uint32_t count : {0u, 1u, 700u}) items.push_back(ItemOf(VectorOf(type, count)));
  }
  items.push_back(Blob(FID{3}, "blob"));
  items.emplace_back(FID{4}, -2.5);
  items.emplace_back(FID{5}, wqd::CFixPtNum(101, 102));
  items.emplace_back(FID{6}, std::string(511, 'x').c_str(), -1);
  items.emplace_back(FID{7}, std::string(2000, 'y').c_str(), -1);
  return items;
}

TEST(Vector, HoldsItsOwnCopyAndHasNoSingleValue) {
  for (const int type : kVectorTypes) {
    for (const std::uint32_t count : {0u, 1u, 5u, 700u}) {
      const Field field = VectorOf(type, count);
      CDataItem item = ItemOf(field);  // whose arrays are gone by now
      EXPECT_EQ(FieldOf(item), field);
      EXPECT_TRUE(item.GetVectorPtr() != nullptr && item.GetSize() == static_cast<int>(count));
      EXPECT_FALSE(item.IsNull() || item.IsIntegralType()) << field;
      EXPECT_TRUE(item.GetShort() == MISSING_SHORT && item.GetLong() == MISSING_LONG &&
                  item.GetFloat() == MISSING_DOUBLE &&
                  static_cast<double>(item.GetFPN()) == MISSING_DOUBLE &&
                  static_cast<ZULDATE>(item.GetDate()).month == 0 &&
                  static_cast<std::int32_t>(item.GetTime()) == MISSING_TIME_SECONDS)
          << field;
      char buffer[] = "as it was";
      EXPECT_TRUE(item.Print(buffer, 9) == 0 && std::string(buffer) == "as it was") << field;
      EXPECT_TRUE(type == TYPE_VECTOR_STRING || *item.GetString() == '\0') << field;
    }
  }
}

TEST(Vector, MarkersAreElementsAsAnyOther) {
  const std::int32_t longs[] = {1, MISSING_LONG};
  const std::int16_t shorts[] = {MISSING_SHORT};
  CDataItem item;
  item.SetVector(FID{1}, longs, 2);
  EXPECT_EQ(FieldOf(item), (Field{TYPE_VECTOR_LONG, 1, std::string("\1\0\0\0\0\0\0\x80", 8)}));
  item.SetVector(FID{1}, shorts, 1);
  EXPECT_EQ(FieldOf(item), (Field{TYPE_VECTOR_INT, 1, std::string("\0\x80", 2)}));
}

TEST(Vector, CopiesAndMovesGiveTheSourceWhateverTheTargetHeld) {
  for (CDataItem& source : EveryKind()) {
    const Field field = FieldOf(source);
    for (CDataItem& target : EveryKind()) {
      const Field before = FieldOf(target);
      target = source;
      ASSERT_EQ(FieldOf(target), field) << "over " << before;
      ASSERT_TRUE(source.GetVectorPtr() == nullptr ||
                  target.GetVectorPtr() != source.GetVectorPtr());
    }
    for (CDataItem& target : EveryKind()) {
      CDataItem moved = source;
      const Field before = FieldOf(target);
      target = std::move(moved);
      ASSERT_EQ(FieldOf(target), field) << "over " << before;
      moved.SetId(moved.GetId());  // NOLINT(bugprone-use-after-move): it has a defined state
      ASSERT_TRUE(moved.GetId() == 0 && moved.GetError() == 1);
      moved = target;
      ASSERT_EQ(FieldOf(moved), field);
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
  CDataItem item = ItemOf(VectorOf(TYPE_VECTOR_INT, 3));
  void* const block = item.GetVectorPtr();
  item.Set(FID{1}, std::int32_t{7});
  EXPECT_TRUE(item.GetType() == TYPE_LONG && item.GetVectorPtr() == block);
  item = CDataItem(FID{2}, std::string(600, 'a').c_str(), -1);
  item.SetError(FID{2}, 3);
  EXPECT_EQ(std::memcmp(item.GetVectorPtr(), "\1\0\2\0\3\0", 6), 0);
  item = ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 2));
  EXPECT_EQ(FieldOf(item), VectorOf(TYPE_VECTOR_DOUBLE, 2));
}

TEST(Vector, OfACodeTakesVectorTypesAlone) {
  for (int type = -1; type <= 102; ++type) {
    CDataItem item(FID{1}, std::int32_t{7});
    const bool vector = std::count(std::begin(kVectorTypes), std::end(kVectorTypes), type) == 1;
    EXPECT_EQ(item.SetVector(FID{9}, type, VectorOf(TYPE_VECTOR_DOUBLE, 4).bytes.data(), 4), vector)
        << type;
    EXPECT_TRUE(vector ? item.GetType() == type && item.GetId() == 9 : item.GetLong() == 7) << type;
  }
}

TEST(Vector, RefusedSourcesLeaveTheItem) {
  for (CDataItem& item : EveryKind()) {
    const Field before = FieldOf(item);
    item.SetVector(FID{1}, static_cast<const double*>(nullptr), 1);
    item.SetVector(FID{1}, "a", 0x80000000u);
    item.SetVector(FID{1}, static_cast<const char*>(nullptr), 1);
    item.Set(nullptr, 4);
    char bytes[] = "ab";
    item.Set(bytes, 0);
    item.Set(bytes, -1);
    EXPECT_EQ(FieldOf(item), before);
  }
}

TEST(Blob, KeepsTheIdentifierOfTheItem) {
  char bytes[] = "abcd";
  for (CDataItem& item : EveryKind()) {
    const FID id = item.GetId();
    item.Set(bytes, 4);
    EXPECT_EQ(FieldOf(item), (Field{TYPE_EMPTY, id, "abcd"}));
    EXPECT_STREQ(item.GetString(), "");
  }
  EXPECT_TRUE(CDataItem(bytes, 2).GetId() == 0 && CDataItem(bytes, 2).GetSize() == 2);
  EXPECT_TRUE(CDataItem(bytes, 0).GetError() == 1 && CDataItem(bytes, -1).GetError() == 1);
}

TEST(StringVector, TextIsQuotedAndJoined) {
  const auto letters = [](std::size_t count) { return std::string(count, 'x'); };
  std::string many = "\"\"";
  for (int i = 1; i < 300; ++i) many += ",\"\"";
  const struct {
    std::string bytes;
    std::string text;
  } cases[] = {
      {"", ""},
      {std::string(1, '\0'), "\"\""},
      {std::string("ab\0c\0", 5), "\"ab\",\"c\""},
      {std::string("ab\0c", 4), "\"ab\",\"c\""},  // the last NUL is missing
      {std::string("\0\0a\0\0", 5), "\"\",\"\",\"a\",\"\""},
      {std::string("a,\"b\0", 5), "\"a,\"b\""},
      {std::string(300, '\0'), many},
      {letters(508) + '\0', '"' + letters(508) + '"'},
      {letters(509) + '\0', '"' + letters(509) + '"'},
      {letters(510) + '\0', '"' + letters(510) + '"'},
      {letters(511) + '\0', '"' + letters(511) + '"'},
      {letters(600) + '\0' + letters(5000), '"' + letters(600) + "\",\"" + letters(5000) + '"'},
  };
  for (const auto& c : cases) {
    CDataItem item(FID{1}, letters(700).c_str(), -1);
    item.SetVector(FID{1}, c.bytes.data(), static_cast<std::uint32_t>(c.bytes.size()));
    CDataItem fresh;
    for (CDataItem* each : {&item, &(fresh = item), &item}) {
      EXPECT_EQ(each->GetString(), c.text);
      EXPECT_EQ(FieldOf(*each), (Field{TYPE_VECTOR_STRING, 1, c.bytes}));
    }
  }
}

TEST(Vector, WithoutMemoryTheItemStaysAsItWas) {
  std::string bytes(600, 'b');
  for (CDataItem& item : EveryKind()) {
    const Field before = FieldOf(item);
    const CDataItem source = ItemOf(VectorOf(TYPE_VECTOR_LPACK, 3));
    const CDataItem blob = Blob(FID{8}, bytes);
    newFails = true;
    item.SetVector(FID{8}, bytes.data(), 600);
    item.SetVector(FID{8}, reinterpret_cast<const std::int32_t*>(bytes.data()), 101, 4);
    item.Set(bytes.data(), 600);
    item = source;
    item.Copy(blob);
    const CDataItem copy(blob);
    const CDataItem made(bytes.data(), 600);
    const CDataItem moved = std::move(item);
    newFails = false;
    EXPECT_TRUE(copy.GetError() == 1 && made.GetError() == 1);
    CDataItem whole = moved;
    EXPECT_EQ(FieldOf(whole), before);
  }
  CDataItem strings = ItemOf(VectorOf(TYPE_VECTOR_STRING, 600));
  newFails = true;
  EXPECT_STREQ(strings.GetString(), "");
  newFails = false;
  EXPECT_EQ(strings.GetString(), '"' + std::string(599, 'a') + '"');
}

}  // namespace
