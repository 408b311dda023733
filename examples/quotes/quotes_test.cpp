#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blockfiles.h"
#include "quoteblocks.h"
#include "quotefile.h"
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

ReceivedQuotes Receive(std::string text) {
  return ReceiveQuotes(TEXT, text.data(), static_cast<int>(text.size()) + 1);
}

struct Outcome {
  int status;
  std::string output;
};

/// The program's exit status and what it wrote to both streams.
Outcome RunQuotes(const std::string& arguments, const std::string& environment = "") {
  Outcome run{-1, ""};
  const std::string command = environment + " '" QUOTES_PROGRAM "' 2>&1 " + arguments;
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return run;
  for (int c = std::getc(pipe); c != EOF; c = std::getc(pipe)) run.output += static_cast<char>(c);
  const int status = pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

const std::string kMissingFile = "'" QUOTES_SOURCE_DIR "/missing.csv'";

const std::string kTwoDays =
    "2024-02-29,1469.250000,3393.520020,1 2/8,101^08,-2,11456230000\n"
    "2024-03-01,1,N/A,1,1,1,\n";

const std::string kTwoDaysAsPairs =
    "1,02/29/2024,10,1469.250000,11,3393.52,12,1 2/8,13,101^08,14,-2,20,11456230000.0000\n"
    "1,03/01/2024,10,1,11,N/A,12,1,13,1,14,1,20,N/A\n";

/// What is read from the file; the text of a price with code 110 shows another code.
std::string TwoDaysAsLines(int codeOfHigh) {
  return "2024-02-29,1469.250000:107,3393.52:" + std::to_string(codeOfHigh) +
         ",1 2/8:3,101^08:15,-2:101,11456230000.000000\n"
         "2024-03-01,1:101,N/A:0,1:101,1:101,1:101,-99999999.999999\n";
}

TEST(QuoteFile, ReadsDays) {
  EXPECT_EQ(Lines(Read(kHeader + kTwoDays).quotes), TwoDaysAsLines(110));
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

TEST(QuoteBlocks, WritesValuesAndPairs) {
  const struct {
    cf_id format;
    Layout layout;
    std::string expected;
  } cases[] = {
      {TEXT, Layout::kValues,
       "02/29/2024\t1469.250000\t3393.52\t1 2/8\t101^08\t-2\t11456230000.0000\n"
       "03/01/2024\t1\tN/A\t1\t1\t1\tN/A\n"},
      {CSV, Layout::kPairs, kTwoDaysAsPairs},
  };
  const std::vector<Quote> quotes = Read(kHeader + kTwoDays).quotes;
  for (const auto& [format, layout, expected] : cases) {
    const wqd::DataBlockPtr block = BuildQuotes(format, layout, quotes);
    EXPECT_STREQ(static_cast<const char*>(block->GetData()), expected.c_str()) << CfName(format);
  }
  EXPECT_THROW(BuildQuotes(NOTXLTABLE, Layout::kValues, quotes), std::runtime_error);
}

TEST(QuoteBlocks, ReceivesPairs) {
  const ReceivedQuotes two = Receive(kTwoDaysAsPairs);
  EXPECT_EQ(Lines(two.quotes), TwoDaysAsLines(103));
  EXPECT_EQ(two.missing, 2);
  EXPECT_EQ(Lines(Receive("20,7,999,8,1,2024-02-29,11,5 1/2").quotes),
            "2024-02-29,N/A:0,5 1/2:1,N/A:0,N/A:0,N/A:0,7.000000\n");
}

/// By hand: a header of 12 or 8 bytes, a date of 8, a price of 10 or 12, a volume of 12, a missing
/// value of 6, and in ZUL4 8 more for each record.
TEST(QuoteBlocks, CarriesPricesWithTheirCodesInBinary) {
  const struct {
    cf_id format;
    int bytes;
  } cases[] = {{ZUL3, 12 + 70 + 60}, {ZUL4, 8 + 88 + 76}};
  for (const auto& [format, bytes] : cases) {
    const wqd::DataBlockPtr block =
        BuildQuotes(format, Layout::kValues, Read(kHeader + kTwoDays).quotes);
    EXPECT_EQ(block->GetDataSize(), bytes) << CfName(format);
    const ReceivedQuotes two = ReceiveQuotes(format, block->GetData(), bytes);
    EXPECT_EQ(Lines(two.quotes), TwoDaysAsLines(110)) << CfName(format);
    EXPECT_EQ(two.missing, 2) << CfName(format);
  }
}

TEST(Summary, CountsEqualValues) {
  const std::vector<Quote> quotes = Read(kHeader + kTwoDays).quotes;
  EXPECT_EQ(CountEqualValues(quotes, Receive(kTwoDaysAsPairs).quotes, CSV), 14U);
  EXPECT_EQ(CountEqualValues(quotes, Receive(kTwoDaysAsPairs).quotes, ZUL4), 13U);
  const struct {
    const char* what;
    void (*change)(Quote& first, Quote& second);
  } cases[] = {
      {"the next price", [](Quote& first, Quote&) { first.open.Set(1469.250001, 107); }},
      {"another base code", [](Quote& first, Quote&) { first.adjClose.ChangeBase(0); }},
      {"0 for missing", [](Quote&, Quote& second) { second.high = wqd::CFixPtNum(); }},
      {"the next day", [](Quote& first, Quote&) { ++first.date; }},
  };
  for (const auto& [what, change] : cases) {
    std::vector<Quote> other = quotes;
    change(other[0], other[1]);
    EXPECT_EQ(CountEqualValues(quotes, other, CSV), 13U) << what;
    EXPECT_EQ(CountEqualValues(quotes, other, ZUL3), 13U) << what;
  }
  EXPECT_EQ(CountEqualValues(quotes, {quotes[0]}, ZUL4), 7U);
}

TEST(Quotes, SummarisesFileWithMissingValues) {
  const Outcome run = RunQuotes(kMissingFile);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "days            4\n"
            "first day       2024-02-28\n"
            "last day        2024-03-04\n"
            "highest high    105.25 on 2024-02-29\n"
            "lowest low      97.5 on 2024-02-28\n"
            "largest volume  2147483648 on 2024-03-04\n"
            "missing values  9\n"
            "rounded prices  0\n"
            "TEXT            171 bytes\n"
            "CSV             171 bytes\n"
            "pairs           251 bytes, 28 of 28 values equal those sent\n"
            "ZUL3            252 bytes, 28 of 28 values equal those sent\n"
            "ZUL4            306 bytes, 28 of 28 values equal those sent\n");
}

/// The figures are those that awk finds in the file.
TEST(Quotes, SummarisesSampleData) {
  const Outcome run = RunQuotes("'" QUOTES_SAMPLE_FILE "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "days            5105\n"
            "first day       2000-01-03\n"
            "last day        2020-04-17\n"
            "highest high    3393.52 on 2020-02-19\n"
            "lowest low      666.789978 on 2009-03-06\n"
            "largest volume  11456230000 on 2008-10-10\n"
            "missing values  0\n"
            "rounded prices  4421\n"
            "TEXT            427915 bytes\n"
            "CSV             427915 bytes\n"
            "pairs           530015 bytes, 35735 of 35735 values equal those sent\n"
            "ZUL3            357362 bytes, 35735 of 35735 values equal those sent\n"
            "ZUL4            449248 bytes, 35735 of 35735 values equal those sent\n");
}

TEST(Quotes, KeepsFilesWhenAsked) {
  const BlockDirectory directory;
  const std::string place = "TMPDIR='" + directory.Path().string() + "'";
  EXPECT_EQ(RunQuotes(kMissingFile, place).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
  EXPECT_EQ(RunQuotes(kMissingFile, "TMPDIR=/dev/null").status, 1);

  const std::filesystem::path kept = directory.Path() / "made" / "here";
  EXPECT_EQ(RunQuotes("--keep '" + kept.string() + "' " + kMissingFile).status, 0);
  std::vector<char> zul3 = ReadBytes(kept / "quotes.zul3");
  std::vector<char> zul4 = ReadBytes(kept / "quotes.zul4");
  ASSERT_EQ(zul3.size(), 252U);
  ASSERT_EQ(zul4.size(), 306U);
  EXPECT_EQ(Lines(ReceiveQuotes(ZUL3, zul3.data(), 252).quotes),
            Lines(ReceiveQuotes(ZUL4, zul4.data(), 306).quotes));
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
      {"--keep /dev/null " + kMissingFile, 1,
       "quotes: " QUOTES_SOURCE_DIR "/missing.csv: cannot make /dev/null\n"},
      {"a b", 2, "usage: quotes [--keep DIRECTORY] [FILE]\n"},
      {"--keep", 2, "usage: quotes [--keep DIRECTORY] [FILE]\n"},
  };
  for (const auto& [arguments, status, output] : cases) {
    const Outcome run = RunQuotes(arguments);
    EXPECT_EQ(run.status, status) << arguments;
    EXPECT_EQ(run.output, output) << arguments;
  }
}

}  // namespace
