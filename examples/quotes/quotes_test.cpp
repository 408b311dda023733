#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quotefile.h"
#include "records.h"
#include "summary.h"

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

const std::string kHeader = "date,open,high,low,close,adjclose,volume\n";

FileQuotes Read(const std::string& text) {
  const File file(std::tmpfile());
  std::fwrite(text.data(), 1, text.size(), file.get());
  std::rewind(file.get());
  return ReadQuotes(file.get());
}

std::string ReadError(const std::string& text) {
  try {
    Read(text);
    return "no error";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// A line for each day, with the base code behind each price.
std::string Lines(const std::vector<Quote>& quotes) {
  std::string lines;
  for (const Quote& quote : quotes) {
    lines += DateText(quote.date);
    for (const PriceField& field : kPriceFields) {
      const wqd::CFixPtNum& price = quote.*field.price;
      lines += "," + PriceText(price) + ":" + std::to_string(price.GetBaseCode());
    }
    lines += "," + std::to_string(quote.volume) + "\n";
  }
  return lines;
}

struct Outcome {
  int status;
  std::string output;
};

/// The program's exit status and what it wrote to both streams.
Outcome RunQuotes(const std::string& arguments) {
  Outcome run{-1, ""};
  const std::string command = "'" QUOTES_PROGRAM "' 2>&1 " + arguments;
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return run;
  for (int c = std::getc(pipe); c != EOF; c = std::getc(pipe)) run.output += static_cast<char>(c);
  const int status = pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

const std::string kTwoDays =
    "2024-02-29,1469.250000,3393.520020,1 2/8,101^08,-2,11456230000\n"
    "2024-03-01,1,N/A,1,1,1,\n";

const std::string kTwoDaysRead =
    "2024-02-29,1469.250000:107,3393.52:110,1 2/8:3,101^08:15,-2:101,11456230000.000000\n"
    "2024-03-01,1:101,N/A:0,1:101,1:101,1:101,-99999999.999999\n";

TEST(QuoteFile, ReadsDays) {
  EXPECT_EQ(Lines(Read(kHeader + kTwoDays).quotes), kTwoDaysRead);
  EXPECT_EQ(Lines(Read(kHeader + "\n2024-03-01,1,,1,1,1,N/A\r\n").quotes),
            "2024-03-01,1:101,N/A:0,1:101,1:101,1:101,-99999999.999999\n");
}

TEST(QuoteFile, CountsRoundedPrices) {
  const std::string held = "2147.483647,3393.520000,101^08+,N/A,,1\n";
  const std::string rounded = "2147.483648,3393.520020,2147483648,1.000000001,-2147.483649,1\n";
  EXPECT_EQ(Read(kHeader + "2024-02-29," + held).rounded, 0);
  EXPECT_EQ(Read(kHeader + "2024-02-29," + rounded + "2024-03-01," + held).rounded, 5);
}

TEST(QuoteFile, SaysWhatIsWrong) {
  const std::string good = "2024-02-29,1,1,1,1,1,1\n";
  const std::string volume = kHeader + "2024-02-29,1,1,1,1,1,";
  const std::string notWhole = " is not a whole number from 0 to below 2^53";
  const struct {
    std::string text;
    std::string expected;
  } cases[] = {
      {kHeader + "\n", "there is no day in the file"},
      {kHeader + good + "2024-03-01,1,1,1,1,1\n", "line 3: 6 values instead of 7"},
      {kHeader + good + "\n2024-03-01,1,1,1,1,1,1,\n", "line 4: 8 values instead of 7"},
      {kHeader + "2023-02-29,1,1,1,1,1,1\n", "line 2: '2023-02-29' is not a date"},
      {kHeader + "2024-02-29x,1,1,1,1,1,1\n", "line 2: '2024-02-29x' is not a date"},
      {kHeader + "2024-02-29,1e5,1,1,1,1,1\n", "line 2: open '1e5' is not a price"},
      {volume + "1.5\n", "line 2: volume '1.5'" + notWhole},
      {volume + "1x\n", "line 2: volume '1x'" + notWhole},
      {volume + "nan\n", "line 2: volume 'nan'" + notWhole},
      {volume + "-1\n", "line 2: volume '-1'" + notWhole},
      {volume + "9007199254740992\n", "line 2: volume '9007199254740992'" + notWhole},
      {volume + "9007199254740991\n", "no error"},
      {kHeader + "2024-02-29,\"1\n\",1,1,1,1,1\n", "line 2: a quote spans the line end"},
      {volume + std::string(233, '0') + "\n", "no error"},
      {volume + std::string(234, '0') + "\n", "line 2: the line is too long, or a quote is open"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(ReadError(text), expected) << text;
}

/// Two days with the records of their months.
std::vector<Record> TwoMonths() { return MakeRecords(Read(kHeader + kTwoDays).quotes); }

TEST(Records, GoThroughEveryEncoding) {
  std::vector<Record> records = TwoMonths();
  ASSERT_EQ(records.size(), 4U);
  const wqd::DataBlockPtr zul4 = BuildBlock(ZUL4, records);
  const wqd::DataBlockPtr zul3 = ConvertBlock(ZUL3, *zul4);
  const wqd::DataBlockPtr csv = ConvertBlock(CSV, *zul3);
  EXPECT_EQ(FindDifference(*zul4, records), "");
  EXPECT_EQ(FindDifference(*zul3, records), "");
  const char* const text = static_cast<const char*>(csv->GetData());
  EXPECT_STREQ(text,
               "02/29/2024,1469.250000,3393.52,1 2/8,101^08,-2,11456230000.0000\n"
               "02/29/2024,11456230000.0000,N/A,N/A,N/A,N/A,N/A\n"
               "03/01/2024,1,N/A,1,1,1,N/A\n"
               "03/01/2024,N/A,N/A,N/A,N/A,N/A,N/A\n");
  EXPECT_EQ(FindTextDifference(text, kFieldsPerQuote, records), "");
  EXPECT_THROW(BuildBlock(NOTXLTABLE, records), std::runtime_error);
  EXPECT_THROW(ConvertBlock(Btrieve, *zul4), std::runtime_error);
}

/// The first difference of the ZUL4 block of the two months when one of its bytes is changed.
std::string DifferenceWith(std::size_t at) {
  std::vector<Record> records = TwoMonths();
  const wqd::DataBlockPtr block = BuildBlock(ZUL4, records);
  static_cast<char*>(block->GetData())[at] ^= 1;
  return FindDifference(*block, records);
}

/// By hand: a header of 8 bytes and a head of 8 for each record; a date takes 8 bytes, its day at
/// 4; a price 12, its code at 4 and its long at 8; a volume 12 and a vector 8 with its doubles.
TEST(Records, TellASingleBitThatChanged) {
  EXPECT_EQ(DifferenceWith(16 + 4),
            "record 1: field 1 '02/29/2024' expected, field 1 '02/28/2024' found");
  EXPECT_EQ(DifferenceWith(16 + 8 + 8),
            "record 1: field 10 '1469.250000' expected, field 10 '1469.250001' found");
  EXPECT_EQ(DifferenceWith(16 + 8 + 24 + 4),
            "record 1: field 12 '1 2/8' expected, field 12 '2 2/4' found");
  EXPECT_EQ(DifferenceWith(16 + 8 + 60 + 4 + 6),
            "record 1: field 20 '11456230000.0000' expected, field 20 '10919359088.0000' found");
  EXPECT_EQ(DifferenceWith(104 + 8 + 8),
            "record 2: field 31 '11456230000.0000' expected, field 31 '11456230000.0000' found");
}

TEST(Records, TellALineThatChanged) {
  std::vector<Record> records = TwoMonths();
  const wqd::DataBlockPtr csv = ConvertBlock(CSV, *BuildBlock(ZUL4, records));
  const struct {
    std::string from, to, difference;
  } changes[] = {
      {"101^08,", "101^09,", "record 1: field 13 '101^08' expected, field 13 '101^09' found"},
      {"N/A\n03/01/2024", "1\n03/01/2024", "record 2: field 0 'N/A' expected, field 0 '1' found"},
      {"30000.0000,N", "30001.0000,N",
       "record 2: field 31 '11456230000.0000' expected, field 31 '11456230001.0000' found"},
      {",N/A\n", "", ""},
  };
  const wqd::DataBlockPtr padded =
      ConvertBlock(CSV, *ConvertBlock(ZUL3, *BuildBlock(ZUL4, records)));
  for (const auto& [from, to, difference] : changes) {
    std::string text = static_cast<const char*>(padded->GetData());
    if (difference.empty()) {
      text.erase(text.rfind(from));
      EXPECT_EQ(FindTextDifference(text.c_str(), kFieldsPerQuote, records),
                "record 4: field 0 'N/A' expected, no value found");
      continue;
    }
    text.replace(text.find(from), from.size(), to);
    EXPECT_EQ(FindTextDifference(text.c_str(), kFieldsPerQuote, records), difference);
  }
}

/// What the program writes when all is well: the history, two counts, and the bytes of each
/// encoding with times, which are not the same twice.
void ExpectReport(const std::string& file, const std::string& history, int text, int zul3,
                  int zul4) {
  const Outcome run = RunQuotes("'" + file + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output.substr(0, history.size()), history);
  const auto line = [](const char* format, int bytes) {
    return format + std::string(" +") + std::to_string(bytes) +
           " +[0-9]+[.][0-9]+ +[0-9]+[.][0-9]+\n";
  };
  const std::string table = "\n +bytes +write ms +read ms\n" + line("TEXT", text) +
                            line("CSV", text) + line("ZUL3", zul3) + line("ZUL4", zul4);
  const std::string rest = run.output.substr(std::min(history.size(), run.output.size()));
  const testing::Matcher<std::string> whole = testing::MatchesRegex(table + "\nidentical\n");
  EXPECT_TRUE(whole.Matches(rest)) << run.output;
}

TEST(Quotes, CarriesAFileWithMissingValues) {
  ExpectReport(QUOTES_SOURCE_DIR "/missing.csv",
               "days            4\n"
               "first day       2024-02-28\n"
               "last day        2024-03-04\n"
               "highest high    105.25 on 2024-02-29\n"
               "lowest low      97.5 on 2024-02-28\n"
               "largest volume  2147483648 on 2024-03-04\n"
               "missing values  9\n"
               "rounded prices  0\n",
               255, 372, 386);
}

/// The figures are those that awk finds in the file.
TEST(Quotes, CarriesTheSampleData) {
  ExpectReport(QUOTES_SAMPLE_FILE,
               "days            5105\n"
               "first day       2000-01-03\n"
               "last day        2020-04-17\n"
               "highest high    3393.52 on 2020-02-19\n"
               "lowest low      666.789978 on 2009-03-06\n"
               "largest volume  11456230000 on 2008-10-10\n"
               "missing values  0\n"
               "rounded prices  4421\n",
               565584, 408938, 495944);
}

TEST(Quotes, RefusesMoreDaysThanABlockHoldsRecords) {
  std::string text = kHeader;
  for (int i = 0; i < 65535; ++i) text += "2024-02-29,1,1,1,1,1,1\n";
  std::vector<Record> records = MakeRecords(Read(text).quotes);
  try {
    BuildBlock(ZUL4, records);
    FAIL() << records.size();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the days are too many for ZUL4");
  }
}

TEST(Quotes, FailsWithMessage) {
  const struct {
    std::string arguments;
    int status;
    std::string output;
  } cases[] = {
      {"no-such-file", 1, "quotes: no-such-file: No such file or directory\n"},
      {"/", 1, "quotes: /: Is a directory\n"},
      {"/dev/null", 1,
       "quotes: /dev/null: line 1: the header is not "
       "'date,open,high,low,close,adjclose,volume'\n"},
      {"a b", 2, "usage: quotes [FILE]\n"},
      {"--help", 2, "usage: quotes [FILE]\n"},
  };
  for (const auto& [arguments, status, output] : cases) {
    const Outcome run = RunQuotes(arguments);
    EXPECT_EQ(run.status, status) << arguments;
    EXPECT_EQ(run.output, output) << arguments;
  }
}

}  // namespace
