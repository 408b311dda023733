#include <sys/wait.h>

#include <cfloat>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "quoteblocks.h"
#include "quotefile.h"
#include "summary.h"

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

const std::string kHeader = "date,open,high,low,close,adjclose,volume\n";

std::vector<Quote> Read(const std::string& text) {
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

std::string Text(wqd::CDataBlock& block) { return static_cast<const char*>(block.GetData()); }

ReceivedQuotes Receive(std::string text) {
  const wqd::DataBlockPtr block(
      wqd::CDataBlock::NewDataBlock(TEXT, text.data(), static_cast<int>(text.size()) + 1));
  return ReceiveQuotes(*block);
}

struct Outcome {
  int status;
  std::string output;
};

/// The program's exit status and what it wrote to both streams.
Outcome RunQuotes(const std::string& arguments) {
  Outcome run{-1, ""};
  std::FILE* const pipe = popen(("'" QUOTES_PROGRAM "' 2>&1 " + arguments).c_str(), "r");
  if (pipe == nullptr) return run;
  for (int c = std::getc(pipe); c != EOF; c = std::getc(pipe)) {
    run.output += static_cast<char>(c);
  }
  const int status = pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

const std::vector<Quote> kTwoDays = {
    {"2024-02-29", 1.5, 3393.52002, 0.1, 100000.0, -2.0, 11456230000.0},
    {"2024-03-01", 1.0, std::nullopt, 1.0, 1.0, 1.0, std::nullopt},
};

const std::string kTwoDaysAsPairs =
    "1,2024-02-29,10,1.5,11,3393.52002,12,0.1,13,100000,14,-2,20,11456230000\n"
    "1,2024-03-01,10,1,11,N/A,12,1,13,1,14,1,20,N/A\n";

TEST(QuoteFile, ReadsDays) {
  const std::string days = "2024-02-29,1.50,3393.520020,0.1,1e5,-2,11456230000\n\n";
  EXPECT_EQ(Read(kHeader + days + "2024-03-01,1,N/A,1,1,1,"), kTwoDays);
  EXPECT_EQ(Read(kHeader + days + "2024-03-01,1,,1,1,1,N/A\r\n"), kTwoDays);
}

TEST(QuoteFile, SaysWhatIsWrong) {
  const std::string good = "2024-02-29,1,1,1,1,1,1\n";
  const struct {
    std::string text;
    std::string expected;
  } cases[] = {
      {"", "line 1: the header is not 'date,open,high,low,close,adjclose,volume'"},
      {"date,open\n" + good,
       "line 1: the header is not 'date,open,high,low,close,adjclose,volume'"},
      {kHeader + "\n", "there is no day in the file"},
      {kHeader + good + "2024-03-01,1,1,1,1,1\n", "line 3: 6 values instead of 7"},
      {kHeader + good + "\n2024-03-01,1,1,1,1,1,1,\n", "line 4: 8 values instead of 7"},
      {kHeader + "2023-02-29,1,1,1,1,1,1\n", "line 2: '2023-02-29' is not a date"},
      {kHeader + "2024-2-029,1,1,1,1,1,1\n", "line 2: '2024-2-029' is not a date"},
      {kHeader + "N/A,1,1,1,1,1,1\n", "line 2: 'N/A' is not a date"},
      {kHeader + "2024-02-29,1,1,1x,1,1,1\n", "line 2: low '1x' is not a number"},
      {kHeader + "2024-02-29,inf,1,1,1,1,1\n", "line 2: open 'inf' is not a number"},
      {kHeader + "2024-02-29,1,1,1,1,1e999,1\n", "line 2: adjclose '1e999' is not a number"},
      {kHeader + "2024-02-29,1,1,1,1,1,1.5\n",
       "line 2: volume '1.5' is not a whole number from 0 to below 2^53"},
      {kHeader + "2024-02-29,1,1,1,1,1,-1\n",
       "line 2: volume '-1' is not a whole number from 0 to below 2^53"},
      {kHeader + "2024-02-29,1,1,1,1,1,9007199254740993\n",
       "line 2: volume '9007199254740993' is not a whole number from 0 to below 2^53"},
      {kHeader + "2024-02-29,1,1,1,1,1,9007199254740991\n", "no error"},
      {kHeader + "2024-02-29,\"1\n\",1,1,1,1,1\n", "line 2: a quote spans the line end"},
      {kHeader + "2024-02-29,1,1,1,1,1," + std::string(233, '0') + "\n", "no error"},
      {kHeader + "2024-02-29,1,1,1,1,1," + std::string(234, '0') + "\n",
       "line 2: the line is too long, or a quote is open"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(ReadError(text), expected) << text;
}

TEST(QuoteBlocks, WritesValuesAndPairs) {
  const struct {
    cf_id format;
    Layout layout;
    std::string expected;
  } cases[] = {
      {CSV, Layout::kValues,
       "2024-02-29,1.5,3393.52002,0.1,100000,-2,11456230000\n2024-03-01,1,N/A,1,1,1,N/A\n"},
      {TEXT, Layout::kValues,
       "2024-02-29\t1.5\t3393.52002\t0.1\t100000\t-2\t11456230000\n"
       "2024-03-01\t1\tN/A\t1\t1\t1\tN/A\n"},
      {CSV, Layout::kPairs, kTwoDaysAsPairs},
  };
  for (const auto& [format, layout, expected] : cases) {
    EXPECT_EQ(Text(*BuildQuotes(format, layout, kTwoDays)), expected) << CfName(format);
  }
}

TEST(QuoteBlocks, WritesCsvThatReadsAsFile) {
  EXPECT_EQ(Read(kHeader + Text(*BuildQuotes(CSV, Layout::kValues, kTwoDays))), kTwoDays);
}

TEST(QuoteBlocks, RefusesFormatWithoutBlock) {
  EXPECT_THROW(BuildQuotes(NOTXLTABLE, Layout::kValues, kTwoDays), std::runtime_error);
}

TEST(QuoteBlocks, ReceivesPairs) {
  const ReceivedQuotes two = Receive(kTwoDaysAsPairs);
  EXPECT_EQ(two.quotes, kTwoDays);
  EXPECT_EQ(two.missing, 2);

  const ReceivedQuotes other = Receive("20,7,999,8,1,2024-02-29,11,5 1/2");
  ASSERT_EQ(other.quotes.size(), 1U);
  EXPECT_EQ(other.quotes[0], (Quote{"2024-02-29", {}, 5.5, {}, {}, {}, 7.0}));

  EXPECT_EQ(Receive("").quotes.size(), 0U);
}

TEST(QuoteBlocks, NumbersReadBackTheSame) {
  for (const double number : {0.0, -0.1, 1.0 / 3, 1438.359985, 4294967296.0, 1e22, DBL_MIN}) {
    EXPECT_EQ(std::stod(NumberText(number)), number) << NumberText(number);
  }
}

TEST(Summary, CountsWhatIsEqual) {
  std::vector<Quote> other = kTwoDays;
  EXPECT_EQ(CountEqualValues(kTwoDays, other), 14U);
  other[0].volume = 11456230000.0 - 8589934592.0;  // the low 32 bits alone
  other[1].high = 0.0;                             // a missing value is no 0
  other[1].date.clear();
  EXPECT_EQ(CountEqualValues(kTwoDays, other), 11U);
  other.pop_back();
  EXPECT_EQ(CountEqualValues(kTwoDays, other), 6U);
}

TEST(Quotes, SummarisesFileWithMissingValues) {
  const Outcome run = RunQuotes("'" QUOTES_SOURCE_DIR "/missing.csv'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "days            4\n"
            "first day       2024-02-28\n"
            "last day        2024-03-04\n"
            "highest high    105.25 on 2024-02-29\n"
            "lowest low      97.5 on 2024-02-28\n"
            "largest volume  2147483648 on 2024-03-04\n"
            "missing values  9\n"
            "TEXT block      161 bytes\n"
            "CSV block       161 bytes\n"
            "pairs           241 bytes\n"
            "received        28 of 28 values equal those of the file\n");
}

/// The figures are those that awk finds in the file.
TEST(Quotes, SummarisesSampleData) {
  const Outcome run = RunQuotes("'" QUOTES_SAMPLE_FILE "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "days            5105\n"
            "first day       2000-01-03\n"
            "last day        2020-04-17\n"
            "highest high    3393.52002 on 2020-02-19\n"
            "lowest low      666.789978 on 2009-03-06\n"
            "largest volume  11456230000 on 2008-10-10\n"
            "missing values  0\n"
            "TEXT block      406855 bytes\n"
            "CSV block       406855 bytes\n"
            "pairs           508955 bytes\n"
            "received        35735 of 35735 values equal those of the file\n");
}

/// A field of received text is cut at 255 characters, which such a price has more of.
TEST(Quotes, FailsIfOtherValuesArrive) {
  const Outcome run =
      RunQuotes("/dev/stdin <<END\n" + kHeader + "2024-02-29,1e300,1,1,1,1,1\nEND\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("6 of 7 values equal"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("quotes: /dev/stdin: what was received differs from the file\n"),
            std::string::npos)
      << run.output;
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
  };
  for (const auto& [arguments, status, output] : cases) {
    const Outcome run = RunQuotes(arguments);
    EXPECT_EQ(run.status, status) << arguments;
    EXPECT_EQ(run.output, output) << arguments;
  }
}

}  // namespace
