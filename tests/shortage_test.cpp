// Every operation that allocates, with each of its allocations refused in turn: the operation is
// refused, what it was made on stands as it was, and it succeeds when there is memory again.
#include <wqdata/service/operations.h>
#include <wqdata/textsupport/helpers.h>
#include <wqdata/textsupport/myparser.h>
#include <wqdata/values/timezone.h>

#include <functional>

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

/// The same for an operation without an object.
template <typename Operate>
void Sweep(const std::string& name, Operate operate) {
  const auto none = [] { return 0; };
  Sweep(
      name, none, [&](int) { return operate(); }, [](int) { return ""; });
}

std::string Show(const DataBlockPtr& block) {
  std::ostringstream out;
  out << block->GetRecordCount() << " records, " << block->GetFieldCount() << " fields, at "
      << block->GetCurrentFieldId() << ": ";
  return out.str() + BytesOf(*block);
}

/// A block in whose first record a walk stands, with another one open and a field in it, and next
/// to no room for more.
DataBlockPtr Filled(cf_id format) {
  static const std::string letters = Letters(65529);
  DataBlockPtr block = NewBlock(format);
  EXPECT_TRUE(block->AddBlob(FID{1}, letters.c_str(), 65529) ||
              (block->StartRecord() && block->Add(FID{1}, 1) && block->Add(FID{2}, "a") &&
               block->EndRecord() && block->Close() && block->FirstRecord() &&
               block->StartRecord() && block->Add(FID{1}, letters.c_str())));
  return block;
}

template <typename Operate>
void SweepBlock(cf_id format, const std::string& name, Operate operate) {
  const LogCapture log;
  const auto make = [format] { return Filled(format); };
  const auto on_block = [&](const DataBlockPtr& block) { return operate(*block); };
  Sweep(CfName(format) + (' ' + name), make, on_block, Show);
}

TEST(Shortage, AddingAField) {
  const std::string text = Letters(2000);
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4}) {
    for (const Field& field : OneOfEach(2000)) {
      CDataItem item = ItemOf(field);
      SweepBlock(format, "item of " + std::to_string(field.type),
                 [&](CDataBlock& block) { return block.Add(item); });
    }
    SweepBlock(format, "text", [&](CDataBlock& block) { return block.Add(1, text.c_str()); });
  }
  SweepBlock(Btrieve, "blob", [](CDataBlock& block) { return block.AddBlob(1, "blob", 4); });
}

TEST(Shortage, RecordsAndTheEndOfABlock) {
  SweepBlock(TEXT, "EndRecord", [](CDataBlock& block) { return block.EndRecord(); });
  SweepBlock(CSV, "Close", [](CDataBlock& block) { return block.Close(); });
  // A record of ZUL4 that can't be opened refuses its fields.
  const LogCapture log;
  Sweep(
      "StartRecord", [] { return Filled(ZUL4); },
      [](const DataBlockPtr& block) {
        return block->EndRecord() && block->StartRecord() && block->GetRecordCount() == 3 &&
               block->Add(FID{2}, 7);
      },
      [](const DataBlockPtr& block) { return std::to_string(block->GetRecordCount()); });
}

TEST(Shortage, TheFirstFieldOfABlock) {
  const LogCapture log;
  for (const cf_id format : kBinaryFormats) {
    Sweep(
        CfName(format), [format] { return NewBlock(format); },
        [](const DataBlockPtr& block) {
          return (block->GetRecordCount() > 0 || block->StartRecord()) && block->Add(FID{1}, 7);
        },
        [](const DataBlockPtr& block) {
          return block->FirstRecord() && block->FindField(FID{1}) ? "there" : "not there";
        });
  }
}

TEST(Shortage, ReadingAField) {
  for (const cf_id format : kBinaryFormats) {
    for (const int type : {TYPE_STRING, TYPE_VECTOR_LONG, TYPE_VECTOR_STRING}) {
      const DataBlockPtr block = Build(format, {{VectorOf(type, 700)}});
      Sweep(
          CfName(format), [] { return CDataItem(FID{1}, "short", -1); },
          [&block](CDataItem& item) {
            return block->FirstRecord() && block->GetField(FID{9}, &item);
          },
          [](CDataItem& item) { return testing::PrintToString(FieldOf(item).bytes); });
    }
  }
}

TEST(Shortage, MakingABlock) {
  const LogCapture log;
  const int instances = CDataBlock::_instances;
  char bytes[] = "1,a";
  const auto sweep = [](const char* name, auto create) {
    Sweep(name, [&] { return DataBlockPtr(create()) != nullptr; });
  };
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4, Btrieve}) {
    sweep("new", [&] { return CDataBlock::NewDataBlock(format); });
    sweep("wrapped", [&] { return CDataBlock::NewDataBlock(format, bytes, 4); });
  }
  sweep("fixed", [&] { return CDataBlock::FixedSizeDataBlock(ZUL4, bytes, 4); });
  EXPECT_EQ(CDataBlock::_instances, instances);
}

TEST(Shortage, ATransferKeepsWhatItHasAndTheTargetGoesOn) {
  const Fields fields = OneOfEach(700);
  const LogCapture log;
  std::string text = "1,a,2,b";
  const DataBlockPtr sources[] = {Build(ZUL3, {fields, fields}), Build(ZUL4, {fields, fields}),
                                  Wrap(TEXT, text)};
  for (const DataBlockPtr& source : sources) {
    for (const cf_id to : {TEXT, ZUL3, ZUL4}) {
      const DataBlockPtr model = Filled(to);
      EXPECT_TRUE(model->EndRecord() && model->Add(source.get()));
      for (int nth = 2; nth > 0; ++nth) {  // twice each: by itself, and with all behind it
        SCOPED_TRACE(testing::Message() << CfName(source->GetFormat()) << " into " << CfName(to)
                                        << ", allocation " << nth / 2 << ' ' << nth % 2);
        const DataBlockPtr target = Filled(to);
        target->EndRecord();
        const std::string before = BytesOf(*target);
        bool done = false;
        {
          const Refusal refusal(nth / 2, nth % 2 == 0);
          done = target->Add(source.get());
          if (!refusal.Reached()) nth = -1;
        }
        EXPECT_TRUE(done || nth > 0);
        EXPECT_TRUE(!done || to == TEXT || BytesOf(*target) == BytesOf(*model));
        // What was there stands, behind what the header and its head count.
        EXPECT_TRUE(BytesOf(*target).substr(16, before.size() - 16) == before.substr(16));
        target->EndRecord();
        EXPECT_TRUE(target->Add(source.get()));
      }
    }
    if (source->GetFormat() == TEXT) continue;
    Sweep("copy", [&] {
      const DataBlockPtr copy(CDataBlock::NewDataBlock(source.get()));
      return copy != nullptr && copy->GetDataSize() == source->GetDataSize();
    });
  }
}

TEST(Shortage, Items) {
  const std::string text = Letters(2000);
  char* const bytes = const_cast<char*>(text.data());
  const CDataItem longText(FID{7}, bytes, -1), blob(bytes, 600);
  const CDataItem vector = ItemOf(VectorOf(TYPE_VECTOR_DOUBLE, 100));
  // With the size that each leads to, which no start has.
  const std::pair<int, std::function<void(CDataItem&)>> changes[] = {
      {2001, [&](CDataItem& item) { item.Set(FID{7}, bytes, -1); }},
      {2001, [&](CDataItem& item) { item.SetText(FID{7}, bytes, 2000); }},
      {600, [&](CDataItem& item) { item.Set(bytes, 600); }},
      {300, [&](CDataItem& item) { item.SetVector(FID{7}, TYPE_VECTOR_LONG, bytes, 300); }},
      {2001, [&](CDataItem& item) { item.Copy(longText); }},
      {100, [&](CDataItem& item) { item = vector; }},
      {600, [&](CDataItem& item) { item.Copy(blob); }}};
  const Field starts[] = {{TYPE_STRING, 1, "short"},
                          {TYPE_STRING, 1, Letters(700)},
                          {TYPE_DOUBLE, 1, ValueBytes(2.5)},
                          VectorOf(TYPE_VECTOR_LPACK, 200),
                          VectorOf(TYPE_VECTOR_STRING, 3)};
  for (const Field& start : starts) {
    for (const auto& change : changes) {
      Sweep(
          "change " + std::to_string(&change - changes), [&] { return ItemOf(start); },
          [&](CDataItem& item) { return change.second(item), item.GetSize() == change.first; },
          [](CDataItem& item) {
            return testing::PrintToString(FieldOf(item)) + FieldOf(item).bytes;
          });
    }
  }
  Sweep("new text", [&] { return CDataItem(FID{7}, bytes, -1).GetType() == TYPE_STRING; });
  Sweep("new blob", [&] { return CDataItem(bytes, 600).GetType() == TYPE_EMPTY; });
  for (const CDataItem* item : {&longText, &vector}) {
    Sweep("copy", [&] { return CDataItem(*item).GetType() == item->GetType(); });
  }
  Sweep(
      "GetString", [] { return ItemOf(VectorOf(TYPE_VECTOR_STRING, 600)); },
      [](CDataItem& item) { return *item.GetString() != '\0'; },
      [](CDataItem& item) { return std::to_string(item.GetSize()); });
}

TEST(Shortage, AllElse) {
  char path[512];
  Sweep("GetZulFileName",
        [&] { return GetZulFileName("a", "some name that is long", "b", path, 512) > 0; });
  Sweep("GetZulFileName to complete",
        [&] { return GetZulFileName(nullptr, nullptr, "b", path, 512) > 0; });
  Sweep(
      "GetTzInfo", [] { return CTimeZone(); },
      [](CTimeZone& zone) { return zone.Set("Eastern Standard Time"); },
      [](const CTimeZone& zone) {
        return std::to_string(zone.Bias) + (zone == CTimeZone() ? "GMT" : "");
      });
  static const std::string text = Letters(2000);
  struct Parsing {
    CMyParser parser{text.c_str(), nullptr};
    std::string field;
  };
  Sweep(
      "NextField", [] { return Parsing(); },
      [](Parsing& parsing) { return parsing.parser.NextField(parsing.field); },
      [](const Parsing& parsing) { return parsing.field; });
  std::size_t length = 0;  // of the line in the log, which is cut without memory
  set_log_sink(
      [](int, const char* line, void* to) { *static_cast<std::size_t*>(to) = std::strlen(line); },
      &length);
  Sweep("a long line", [&] {
    service::log_message(1, "%s", text.c_str());
    return length == text.size();
  });
  set_log_sink(nullptr, nullptr);
}

}  // namespace
