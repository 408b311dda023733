#include <gtest/gtest.h>
#include <sys/wait.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "quotefile.h"
#include "records.h"
#include "summary.h"

namespace {

using wqd::DataBlockPtr;

const std::string kHeader = "date,open,high,low,close,adjclose,volume\n";

const std::string kTwoDays =
    "2024-02-29,1469.250000,3393.520020,1 2/8,101^08,-2,11456230000\n"
    "\n2024-03-01,1,N/A,1,1,1,\r\n";

FileQuotes Read(const std::string& text) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  std::fwrite(text.data(), 1, text.size(), file.get());
  std::rewind(file.get());
  return ReadQuotes(file.get());
}

template <typename Action>
std::string ErrorOf(Action action) {
  try {
    action();
    return "no error";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(QuoteFile, CountsRoundedPrices) {
  const std::string held = "2147.483647,3393.520000,101^08+,N/A,,1\n";
  const std::string rounded = "2147.483648,3393.520020,2147483648,1.000000001,-2147.483649,1\n";
  EXPECT_EQ(Read(kHeader + "2024-02-29," + held).rounded, 0);
  EXPECT_EQ(Read(kHeader + "2024-02-29," + rounded + "2024-03-01," + held).rounded, 5);
}

TEST(QuoteFile, SaysWhatIsWrong) {
  const std::string good = "2024-02-29,1,1,1,1,1,1\n";
  const std::string volume = "2024-02-29,1,1,1,1,1,";
  const std::string notWhole = " is not a whole number from 0 to below 2^53";
  const std::pair<std::string, std::string> cases[] = {
      {"\n", "there is no day in the file"},
      {good + "2024-03-01,1,1,1,1,1\n", "line 3: 6 values instead of 7"},
      {good + "\n2024-03-01,1,1,1,1,1,1,\n", "line 4: 8 values instead of 7"},
      {"2023-02-29,1,1,1,1,1,1\n", "line 2: '2023-02-29' is not a date"},
      {"2024-02-29x,1,1,1,1,1,1\n", "line 2: '2024-02-29x' is not a date"},
      {"2024-02-29,1e5,1,1,1,1,1\n", "line 2: open '1e5' is not a price"},
      {volume + "1.5\n", "line 2: volume '1.5'" + notWhole},
      {volume + "1x\n", "line 2: volume '1x'" + notWhole},
      {volume + "nan\n", "line 2: volume 'nan'" + notWhole},
      {volume + "-1\n", "line 2: volume '-1'" + notWhole},
      {volume + "9007199254740992\n", "line 2: volume '9007199254740992'" + notWhole},
      {volume + "9007199254740991\n", "no error"},
      {"2024-02-29,\"1\n\",1,1,1,1,1\n", "line 2: a quote spans the line end"},
      {volume + std::string(233, '0') + "\n", "no error"},
      {volume + std::string(234, '0') + "\n", "line 2: the line is too long, or a quote is open"},
  };
  for (const auto& [lines, error] : cases) {
    EXPECT_EQ(ErrorOf([&text = lines] { Read(kHeader + text); }), error) << lines;
  }
}

/// Two days with the records of their months.
std::vector<Record> TwoMonths() { return MakeRecords(Read(kHeader + kTwoDays).quotes); }

TEST(Records, GoThroughEveryEncoding) {
  std::vector<Record> records = TwoMonths();
  const DataBlockPtr zul4 = BuildBlock(ZUL4, records);
  const DataBlockPtr zul3 = ConvertBlock(ZUL3, *zul4);
  const DataBlockPtr csv = ConvertBlock(CSV, *zul3);
  EXPECT_EQ(FindDifference(*zul4, records), "");
  EXPECT_EQ(FindDifference(*zul3, records), "");
  const char* const text = static_cast<const char*>(csv->GetData());
  EXPECT_STREQ(text,
               "02/29/2024,1469.250000,3393.52,1 2/8,101^08,-2,11456230000.0000\n"
               "02/29/2024,11456230000.0000,N/A,N/A,N/A,N/A,N/A\n"
               "03/01/2024,1,N/A,1,1,1,N/A\n"
               "03/01/2024,N/A,N/A,N/A,N/A,N/A,N/A\n");
  EXPECT_EQ(FindTextDifference(text, kFieldsPerQuote, records), "");
  EXPECT_EQ(ErrorOf([&] { ConvertBlock(Btrieve, *zul4); }), "cannot convert into Btrieve");
  const std::vector<Quote> days(65535, Read(kHeader + kTwoDays).quotes.front());
  records = MakeRecords(days);
  EXPECT_EQ(ErrorOf([&] { BuildBlock(ZUL4, records); }), "the days are too many for ZUL4");
}

TEST(Records, TellASingleBitAndALineThatChanged) {
  std::vector<Record> records = TwoMonths();
  // By hand: a header of 8 bytes and a head of 8 for each record; a date takes 8 bytes, its day at
  // 4; a price 12, its code at 4; a volume 12 and a vector 8 with its doubles.
  const std::pair<std::size_t, const char*> bits[] = {
      {16 + 4, "record 1: field 1 '02/29/2024' expected, field 1 '02/28/2024' found"},
      {16 + 8 + 24 + 4, "record 1: field 12 '1 2/8' expected, field 12 '2 2/4' found"},
      {104 + 8 + 8,
       "record 2: field 31 '11456230000.0000' expected, field 31 '11456230000.0000' found"},
  };
  for (const auto& [at, difference] : bits) {
    const DataBlockPtr block = BuildBlock(ZUL4, records);
    static_cast<char*>(block->GetData())[at] ^= 1;
    EXPECT_EQ(FindDifference(*block, records), difference);
  }
  const DataBlockPtr csv = ConvertBlock(CSV, *ConvertBlock(ZUL3, *BuildBlock(ZUL4, records)));
  const std::tuple<std::string, std::string, std::string> lines[] = {
      {"101^08,", "101^09,", "record 1: field 13 '101^08' expected, field 13 '101^09' found"},
      {"N/A\n03/01/2024", "1\n03/01/2024", "record 2: field 0 'N/A' expected, field 0 '1' found"},
      {"30000.0000,N", "30001.0000,N",
       "record 2: field 31 '11456230000.0000' expected, field 31 '11456230001.0000' found"},
      {"03/01/2024,N/A,N/A,N/A,N/A,N/A,N/A\n", "03/01/2024,N/A",
       "record 4: field 0 'N/A' expected, no value found"},
  };
  for (const auto& [from, to, difference] : lines) {
    std::string text = static_cast<const char*>(csv->GetData());
    text.replace(text.find(from), from.size(), to);
    EXPECT_EQ(FindTextDifference(text.c_str(), kFieldsPerQuote, records), difference);
  }
}

/// The program's exit status, and behind it what it wrote to both streams.
std::string RunQuotes(const std::string& arguments) {
  std::FILE* const pipe = popen((QUOTES_PROGRAM " 2>&1 " + arguments).c_str(), "r");
  std::string output;
  for (int c = std::getc(pipe); c != EOF; c = std::getc(pipe)) output += static_cast<char>(c);
  const int status = pclose(pipe);
  return std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) + " " + output;
}

/// What the program writes when all is well: the history, and the bytes of each encoding with
/// times, which are not the same twice. The figures of the sample are those that awk finds in it.
TEST(Quotes, CarriesAFileThroughEveryEncoding) {
  const struct {
    std::string file, history;
    int text, zul3, zul4;
  } cases[] = {{QUOTES_SOURCE_DIR "/missing.csv",
                "days            4\n"
                "first day       2024-02-28\n"
                "last day        2024-03-04\n"
                "highest high    105.25 on 2024-02-29\n"
                "lowest low      97.5 on 2024-02-28\n"
                "largest volume  2147483648 on 2024-03-04\n"
                "missing values  9\n"
                "rounded prices  0\n",
                255, 372, 386},
               {QUOTES_SAMPLE_FILE,
                "days            5105\n"
                "first day       2000-01-03\n"
                "last day        2020-04-17\n"
                "highest high    3393.52 on 2020-02-19\n"
                "lowest low      666.789978 on 2009-03-06\n"
                "largest volume  11456230000 on 2008-10-10\n"
                "missing values  0\n"
                "rounded prices  4421\n",
                565584, 408938, 495944}};
  for (const auto& [file, history, text, zul3, zul4] : cases) {
    const auto line = [](std::string format, int bytes) {
      format.append(" +").append(std::to_string(bytes));
      return format.append(" +[0-9]+[.][0-9]+ +[0-9]+[.][0-9]+\n");
    };
    const testing::Matcher<std::string> report = testing::MatchesRegex(
        "0 " + history + "\n +bytes +write ms +read ms\n" + line("TEXT", text) + line("CSV", text) +
        line("ZUL3", zul3) + line("ZUL4", zul4) + "\nidentical\n");
    const std::string output = RunQuotes("'" + file + "'");
    EXPECT_TRUE(report.Matches(output)) << output;
  }
}

TEST(Quotes, FailsWithMessage) {
  const std::pair<std::string, std::string> cases[] = {
      {"no-such-file", "1 quotes: no-such-file: No such file or directory\n"},
      {"/", "1 quotes: /: Is a directory\n"},
      {"/dev/null",
       "1 quotes: /dev/null: line 1: the header is not "
       "'date,open,high,low,close,adjclose,volume'\n"},
      {"a b", "2 usage: quotes [FILE]\n"},
      {"--help", "2 usage: quotes [FILE]\n"},
  };
  for (const auto& [arguments, outcome] : cases) EXPECT_EQ(RunQuotes(arguments), outcome);
}

}  // namespace
