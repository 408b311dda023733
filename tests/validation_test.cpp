// Which bytes are blocks, and where and why others are not.
#include "golden.h"

namespace {

using namespace wqd;
using namespace wqd_test;

/// The first fault of bytes, "valid" for none. They lie in a heap block of their size.
std::string FaultOf(cf_id format, const std::string& bytes) {
  const std::vector<char> exact(bytes.begin(), bytes.end());
  std::size_t offset = 12345;
  const char* reason = "untouched";
  const bool valid = ValidateData(format, exact.data(), exact.size(), &offset, &reason);
  EXPECT_EQ(ValidateData(format, exact.data(), exact.size()), valid);
  const std::string fault = std::to_string(offset) + ' ' + reason;
  if (!valid) return fault;
  EXPECT_EQ(fault, "12345 untouched");
  return "valid";
}

TEST(Validation, NamesTheFirstFault) {
  // The fields: an int, and strings of one string "a".
  constexpr const char* kZul3 = R"(
      => 0 the header is not whole
      00 00 0B 00 00 00 00 00 00 00 00 => 11 the header is not whole
      00 00 0C 00 00 00 00 00 00 00 00 00 => valid
      00 00 0D 00 00 00 00 00 00 00 00 00 => 2 the length is not the number of bytes
      00 00 0B 00 00 00 00 00 00 00 00 00 => 2 the length is not the number of bytes
      00 00 0C 00 00 00 00 00 01 00 00 00 => 8 a record has not been finished
      00 00 12 00 00 00 00 00 00 00 01 00 03 00 07 01 02 01 => 8 a record has not been finished
      00 00 12 00 00 00 00 00 01 00 01 00 03 00 07 01 02 01 => valid
      00 00 12 00 00 00 00 00 01 00 02 00 03 00 07 01 02 01 => 18 a field is missing
      00 00 12 00 00 00 00 00 FF FF FF FF 03 00 07 01 02 01 => 18 a field is missing
      00 00 13 00 00 00 00 00 01 00 01 00 03 00 07 01 02 01 00 => 18 bytes lie behind the last field
      00 00 11 00 00 00 00 00 01 00 01 00 03 00 07 01 02 => 12 a field does not fit
      00 00 18 00 00 00 00 00 01 00 02 00 03 00 07 01 02 01 03 01 07 01 02 01 => 18 the type of a field is unknown
      00 00 16 00 00 00 00 00 01 00 01 00 10 00 07 01 02 00 01 00 61 00 => valid
      00 00 16 00 00 00 00 00 01 00 01 00 10 00 07 01 02 00 02 00 61 00 => 12 the strings of a field are not as it says
      00 00 16 00 00 00 00 00 01 00 01 00 10 00 07 01 02 00 01 00 00 61 => 12 the strings of a field are not as it says
      00 00 14 00 00 00 00 00 01 00 01 00 10 00 07 01 00 00 01 00 => 12 the strings of a field are not as it says)";
  constexpr const char* kZul4 = R"(
      => 0 the header is not whole
      07 00 00 00 00 00 00 => 7 the header is not whole
      08 00 00 00 00 00 00 00 => valid
      09 00 00 00 00 00 00 00 => 0 the length is not the number of bytes
      09 00 00 00 00 00 00 00 00 => 8 bytes lie behind the last record
      08 00 00 00 00 00 01 00 => 8 a record does not fit
      10 00 00 00 00 00 01 00 08 00 00 00 00 00 00 00 => valid
      10 00 00 00 00 00 02 00 08 00 00 00 00 00 00 00 => 16 a record does not fit
      10 00 00 00 00 00 01 00 07 00 00 00 00 00 00 00 => 8 a record does not fit
      10 00 00 00 00 00 01 00 09 00 00 00 00 00 00 00 => 8 a record does not fit
      10 00 00 00 00 00 01 00 08 00 00 00 01 00 00 00 => 16 a field is missing
      16 00 00 00 00 00 01 00 0E 00 00 00 01 00 00 00 03 00 07 01 02 01 => valid
      16 00 00 00 00 00 01 00 0E 00 00 00 00 00 00 00 03 00 07 01 02 01 => 16 a record has bytes behind its last field
      16 00 00 00 00 00 01 00 0E 00 00 00 FF FF 00 00 03 00 07 01 02 01 => 22 a field is missing
      16 00 00 00 00 00 01 00 0E 00 00 00 01 00 00 00 09 00 07 01 02 01 => 16 the type of a field is unknown
      1A 00 00 00 00 00 01 00 12 00 00 00 01 00 00 00 06 00 07 01 01 00 00 00 41 42 => 16 a field does not fit)";
  constexpr const char* kText = R"(
      => 0 the text has no end | 00 => valid | 00 00 => valid | 31 2C 61 00 => valid
      31 2C 61 => 3 the text has no end | 31 00 00 32 00 => 3 bytes lie behind the end of the text)";
  const std::pair<cf_id, const char*> tables[] = {
      {ZUL3, kZul3}, {ZUL4, kZul4}, {TEXT, kText}, {CSV, kText}};
  for (const auto& tested : tables) {
    ExpectRows(tested.second,
               [&](const std::string& hex) { return FaultOf(tested.first, BytesOfHex(hex)); });
  }
  EXPECT_EQ(FaultOf(Btrieve, std::string(3, '\0')) + FaultOf(Btrieve, ""), "validvalid");
  for (const int format : {0, 3, 7, -1}) {
    EXPECT_EQ(FaultOf(static_cast<cf_id>(format), "a"), "0 there are no blocks of the format");
  }
  std::size_t offset = 0;
  const char* reason = nullptr;
  EXPECT_FALSE(ValidateData(ZUL4, nullptr, 8, &offset, &reason));
  EXPECT_STREQ(reason, "there are no bytes");
  EXPECT_FALSE(ValidateData(Btrieve, "", std::size_t{1} << 31, &offset, nullptr));
  EXPECT_EQ(offset, 2147483647u);
}

/// Whether each field of the bytes can be read, and each record that they declare.
bool WalksWithoutFailure(cf_id format, std::string bytes) {
  const DataBlockPtr block = Wrap(format, bytes);
  const LogCapture log;
  CDataItem item;
  int records = 0;
  for (bool more = block->FirstRecord(); more; more = block->NextRecord(), ++records) {
    for (bool field = block->FirstField(); field; field = block->NextField()) {
      if (!block->GetCurrentField(&item)) return false;
    }
  }
  return records == block->GetRecordCount() && log.lines().empty();
}

TEST(Validation, AgreesWithTheReaderOnWhatIsWrittenAndOnEveryDamage) {
  std::mt19937 random(11);
  for (const cf_id format : kBinaryFormats) {
    int valid = 0;
    for (int run = 0; run < 40; ++run) {
      const std::string bytes = BytesOf(*Build(format, RandomRecords(random, format == ZUL3)));
      ASSERT_EQ(FaultOf(format, bytes), "valid") << Hex(bytes);
      for (std::size_t size = 0; size < std::min<std::size_t>(bytes.size(), 300); ++size) {
        ASSERT_NE(FaultOf(format, bytes.substr(0, size)), "valid") << size;
        std::string damaged = bytes;
        damaged[size] = static_cast<char>(damaged[size] + 1);
        if (FaultOf(format, damaged) != "valid") continue;
        ++valid;
        ASSERT_TRUE(WalksWithoutFailure(format, damaged)) << Hex(damaged);
      }
    }
    EXPECT_GT(valid, 1000);
  }
}

TEST(Validation, CostsAByteWhatItCostsInASmallBlock) {
  for (const cf_id format : kBinaryFormats) {
    SCOPED_TRACE(CfName(format));
    ExpectLinearCost(6000, [format](int records) {
      const std::vector<std::string> fields(6, Word(TYPE_EMPTY, 4));
      const auto count = static_cast<std::size_t>(records);
      EXPECT_EQ(FaultOf(format, BlockOf(format, std::vector(count, fields))), "valid");
    });
  }
}

}  // namespace
