// Every operation that allocates, with each of its allocations refused in turn: the operation is
// refused, what it was made on stands as it was, and it succeeds when there is memory again.
#include <wqdata/service/operations.h>
#include <wqdata/textsupport/helpers.h>
#include <wqdata/textsupport/myparser.h>
#include <wqdata/values/timezone.h>

#include "allocations.h"
#include "fieldvalue.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// Makes an object with `make` and has `operate` work on it, with the first allocation refused,
/// with the second, and so on until there is none left to refuse; then the same with all behind
/// that one refused too. `operate` tells whether it did its work, and `show` what the object holds:
/// without its work what it held before, else what it holds when nothing is refused.
template <typename Make, typename Operate, typename Show>
void Sweep(const std::string& name, Make make, Operate operate, Show show) {
  SCOPED_TRACE(name);
  auto model = make();
  const std::string before = show(model);
  ASSERT_TRUE(operate(model));
  const std::string after = show(model);
  for (const bool lasts : {false, true}) {
    for (int nth = 1;; ++nth) {
      auto object = make();
      bool done = false, reached = false;
      {
        const Refusal refusal(nth, lasts);
        done = operate(object);
        reached = refusal.Reached();
      }
      if (!reached) {
        EXPECT_GT(nth, 1) << "nothing was allocated";
        break;
      }
      EXPECT_EQ(show(object), done ? after : before) << "allocation " << nth;
      EXPECT_TRUE(done || operate(object)) << "allocation " << nth;
      EXPECT_EQ(show(object), after) << "allocation " << nth;
    }
  }
}

std::string Show(const DataBlockPtr& block) {
  std::ostringstream out;
  out << block->GetRecordCount() << " records, " << block->GetFieldCount() << " fields: ";
  return out.str() + BytesOf(*block);
}

/// A block with a record open and a field in it, and next to no room for more.
DataBlockPtr Filled(cf_id format) {
  DataBlockPtr block = NewBlock(format);
  static const std::string letters = Letters(65536);
  EXPECT_TRUE(block->AddBlob(FID{1}, letters.c_str(), 65536) ||
              (block->StartRecord() && block->Add(FID{1}, letters.c_str() + 1)));
  return block;
}

template <typename Operate>
void SweepBlock(cf_id format, const std::string& name, Operate operate) {
  const LogCapture log;
  Sweep(
      std::string(CfName(format)) + ' ' + name, [&] { return Filled(format); },
      [&](const DataBlockPtr& block) { return operate(*block); }, Show);
}

TEST(Shortage, AddingAField) {
  const std::string text = Letters(2000), strings = "a" + std::string(1, '\0');
  const double doubles[] = {1.5, 2.5};
  const std::int32_t longs[] = {1, 2};
  const std::int16_t shorts[] = {1, 2};
  const ZULDATE dates[] = {{1, 2, 2003}};
  const ZULTIME times[] = {{1, 2}};
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4}) {
    for (const int type : kFieldTypes) {
      CDataItem item = ItemOf(VectorOf(type, IsVector(type) || type == TYPE_STRING ? 2000 : 1));
      SweepBlock(format, "item of " + std::to_string(type),
                 [&](CDataBlock& block) { return block.Add(item); });
    }
    const auto sweep = [&](auto... values) {
      SweepBlock(format, "value", [&](CDataBlock& block) { return block.Add(FID{1}, values...); });
    };
    sweep(text.c_str()), sweep(2.5), sweep(std::int32_t{7}), sweep(std::int16_t{7});
    sweep(dates[0]), sweep(CZulDate(dates[0])), sweep(times[0]), sweep(CZulTime(times[0]));
    sweep(CFixPtNum(7, 105));
    SweepBlock(format, "error", [](CDataBlock& block) { return block.AddError(FID{1}, 3); });
    if (format == TEXT || format == CSV) continue;
    SweepBlock(format, "vectors", [&](CDataBlock& b) { return b.AddDoubleVector(1, doubles, 2); });
    SweepBlock(format, "vectors", [&](CDataBlock& b) { return b.AddLongVector(1, longs, 2); });
    SweepBlock(format, "vectors", [&](CDataBlock& b) { return b.AddShortVector(1, shorts, 2); });
    SweepBlock(format, "vectors", [&](CDataBlock& b) { return b.AddDateVector(1, dates, 1); });
    SweepBlock(format, "vectors", [&](CDataBlock& b) { return b.AddTimeVector(1, times, 1); });
    SweepBlock(format, "vectors",
               [&](CDataBlock& b) { return b.AddPriceVector(1, longs, 105, 2); });
    SweepBlock(format, "vectors",
               [&](CDataBlock& b) { return b.AddStringVector(1, strings.c_str(), 1, 2); });
  }
  SweepBlock(Btrieve, "blob", [&](CDataBlock& block) { return block.AddBlob(1, "blob", 4); });
}

TEST(Shortage, RecordsAndTheEndOfABlock) {
  const LogCapture log;
  const auto ended = [](cf_id format, int letters) {
    DataBlockPtr block = NewBlock(format);
    EXPECT_TRUE(block->StartRecord() &&
                block->Add(FID{1}, Letters(static_cast<std::size_t>(letters)).c_str()));
    return block;
  };
  Sweep(
      "EndRecord", [&] { return ended(TEXT, 65536); },
      [](const DataBlockPtr& block) { return block->EndRecord(); }, Show);
  Sweep(
      "Close", [&] { return ended(CSV, 65536); },
      [](const DataBlockPtr& block) { return block->Close(); }, Show);
  // A record of ZUL4 that can't be opened refuses its fields.
  Sweep(
      "StartRecord", [&] { return ended(ZUL4, 1000); },
      [](const DataBlockPtr& block) {
        return block->EndRecord() && block->StartRecord() && block->GetRecordCount() == 2 &&
               block->Add(FID{2}, 7);
      },
      [](const DataBlockPtr& block) { return block->GetRecordCount() == 2 ? "two" : "one"; });
}

TEST(Shortage, MakingABlock) {
  const LogCapture log;
  const int instances = CDataBlock::_instances;
  char bytes[] = "1,a";
  const auto sweep = [](const char* name, auto create) {
    Sweep(
        name, [] { return DataBlockPtr(); },
        [&](DataBlockPtr& block) {
          block.reset(create());
          return block != nullptr;
        },
        [](const DataBlockPtr& block) { return std::to_string(block ? block->GetFormat() : -1); });
  };
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4, Btrieve}) {
    sweep("new", [&] { return CDataBlock::NewDataBlock(format); });
    sweep("wrapped", [&] { return CDataBlock::NewDataBlock(format, bytes, 4); });
  }
  sweep("fixed", [&] { return CDataBlock::FixedSizeDataBlock(ZUL4, bytes, 4); });
  EXPECT_EQ(CDataBlock::_instances, instances);
}

TEST(Shortage, ATransferKeepsWhatItHasAndTheTargetGoesOn) {
  Fields fields;
  for (const int type : kFieldTypes) {
    fields.push_back(VectorOf(type, IsVector(type) || type == TYPE_STRING ? 700 : 1));
  }
  const LogCapture log;
  for (const cf_id from : kBinaryFormats) {
    const DataBlockPtr source = NewBlock(from);
    for (int record = 0; record < 2; ++record) {
      source->StartRecord();
      for (const Field& field : fields) EXPECT_TRUE(Add(*source, field));
      source->EndRecord();
    }
    for (const cf_id to : {TEXT, ZUL3, ZUL4}) {
      for (int nth = 1; nth > 0; ++nth) {
        SCOPED_TRACE(std::string(CfName(from)) + " into " + CfName(to) + ' ' + std::to_string(nth));
        const DataBlockPtr target = Filled(to);
        target->EndRecord();
        const std::string before = BytesOf(*target);
        bool done = false;
        {
          const Refusal refusal(nth, nth % 2 == 0);
          done = target->Add(source.get());
          if (!refusal.Reached()) nth = -1;
        }
        EXPECT_TRUE(done || nth > 0);
        // The first record stands, behind what the header and its head count.
        EXPECT_TRUE(BytesOf(*target).substr(16, before.size() - 16) == before.substr(16));
        target->EndRecord();
        EXPECT_TRUE(target->Add(source.get()));
      }
    }
    Sweep(
        "copy", [] { return DataBlockPtr(); },
        [&](DataBlockPtr& block) {
          block.reset(CDataBlock::NewDataBlock(source.get()));
          return block != nullptr && block->GetDataSize() == source->GetDataSize();
        },
        [](const DataBlockPtr&) { return "a copy is what it could hold"; });
  }
}

TEST(Shortage, Items) {
  const std::string text = Letters(2000);
  const CDataItem longText(FID{7}, text.c_str(), -1), blob(const_cast<char*>(text.data()), 600);
  const CDataItem vector = ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 100));
  const Field starts[] = {{TYPE_STRING, 1, "short"},
                          {TYPE_STRING, 1, Letters(700)},
                          {TYPE_DOUBLE, 1, ValueBytes(2.5)},
                          VectorOf(TYPE_VECTOR_LPACK, 200),
                          VectorOf(TYPE_VECTOR_STRING, 3)};
  const auto show = [](CDataItem& item) {
    std::ostringstream out;
    out << FieldOf(item);
    return out.str() + FieldOf(item).bytes;
  };
  for (const Field& start : starts) {
    const auto sweep = [&](const char* name, int type, int size, auto operate) {
      Sweep(
          name, [&] { return ItemOf(start); },
          [&](CDataItem& item) {
            operate(item);
            return item.GetType() == type && item.GetSize() == size;
          },
          show);
    };
    sweep("Set text", TYPE_STRING, 2001,
          [&](CDataItem& item) { item.Set(FID{7}, text.c_str(), -1); });
    sweep("SetText", TYPE_STRING, 2001,
          [&](CDataItem& item) { item.SetText(FID{7}, text.c_str(), 2000); });
    sweep("Set blob", TYPE_EMPTY, 600,
          [&](CDataItem& item) { item.Set(const_cast<char*>(text.data()), 600); });
    sweep("SetVector", TYPE_VECTOR_LONG, 100,
          [&](CDataItem& item) { item.SetVector(FID{7}, TYPE_VECTOR_LONG, text.data(), 100); });
    sweep("Copy of a text", TYPE_STRING, 2001, [&](CDataItem& item) { item.Copy(longText); });
    sweep("= of a vector", TYPE_VECTOR_DOUBLE, 100, [&](CDataItem& item) { item = vector; });
    sweep("Copy of a blob", TYPE_EMPTY, 600, [&](CDataItem& item) { item.Copy(blob); });
  }
}

TEST(Shortage, NewItemsAndTextsOfItems) {
  const std::string text = Letters(2000);
  const CDataItem longText(FID{7}, text.c_str(), -1);
  const CDataItem vector = ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 100));
  const auto sweep = [](const char* name, auto create) {
    Sweep(
        name, [] { return CDataItem(); },
        [&](CDataItem& item) {
          item = create();
          return item.GetType() != TYPE_ERROR;
        },
        [](CDataItem& item) { return item.GetType() == TYPE_ERROR ? "an error" : "an item"; });
  };
  sweep("text", [&] { return CDataItem(FID{7}, text.c_str(), -1); });
  sweep("blob", [&] { return CDataItem(const_cast<char*>(text.data()), 600); });
  sweep("copy", [&] { return CDataItem(longText); });
  sweep("copy of a vector", [&] { return CDataItem(vector); });
  Sweep(
      "GetString", [] { return ItemOf(VectorOf(TYPE_VECTOR_STRING, 600)); },
      [](CDataItem& item) { return *item.GetString() != '\0'; },
      [](CDataItem& item) { return std::to_string(item.GetSize()); });
}

TEST(Shortage, AllElse) {
  char path[512];
  const auto none = [] { return 0; };
  const auto nothing = [](int) { return ""; };
  Sweep(
      "GetZulFileName", none,
      [&](int) { return GetZulFileName("a", "some name that is long", "b", path, 512) > 0; },
      nothing);
  Sweep(
      "GetZulFileName to complete", none,
      [&](int) { return GetZulFileName(nullptr, nullptr, "b", path, 512) > 0; }, nothing);
  Sweep(
      "GetTzInfo", [] { return CTimeZone(); },
      [](CTimeZone& zone) { return zone.Set("Eastern Standard Time"); },
      [](const CTimeZone& zone) { return std::to_string(zone == CTimeZone()); });
  static const std::string fields = Letters(100) + ",b";
  struct Parsing {
    CMyParser parser{fields.c_str(), nullptr};
    std::string field;
  };
  Sweep(
      "NextField", [] { return Parsing(); },
      [](Parsing& parsing) { return parsing.parser.NextField(parsing.field); },
      [](const Parsing& parsing) { return parsing.field; });
  const std::string text = Letters(2000);
  std::size_t length = 0;  // of the line in the log, which is cut without memory
  set_log_sink(
      [](int, const char* line, void* to) { *static_cast<std::size_t*>(to) = std::strlen(line); },
      &length);
  Sweep(
      "a long line", none,
      [&](int) {
        service::log_message(1, "%s", text.c_str());
        return length == 2000;
      },
      nothing);
  set_log_sink(nullptr, nullptr);
}

}  // namespace
