/// quotes [FILE]: carries a price history through the encodings and back, and says what arrived.
///
/// It reads a price file and puts a record for each day, with typed fields, and one for each month,
/// with a vector, into a ZUL4 block. That goes into ZUL3, whose bytes are wrapped as a receiver
/// would, back into ZUL4, is copied, and printed as CSV. After each step every value is compared
/// with those of the file. The last line is "identical", or the first difference. Prices of the
/// file that a price can't hold are rounded when they are read, and counted. Exit status: 0 for
/// identical, 1 for a difference or a file that can't be read, 2 for a wrong call.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <wqdata/blocks/datablock.h>
#include <wqdata/textsupport/myparser.h>

#include "quotefile.h"
#include "records.h"
#include "summary.h"

#ifndef QUOTES_DEFAULT_FILE
#define QUOTES_DEFAULT_FILE "examples/data/sp500-2000.csv"
#endif

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

FileQuotes ReadFile(const char* path) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "rb"));
  if (file == nullptr) throw std::runtime_error(std::strerror(errno));
  return ReadQuotes(file.get());
}

/// The milliseconds that `work` takes, the best of five times.
template <typename Work>
double Milliseconds(Work work) {
  using Clock = std::chrono::steady_clock;
  double best = std::numeric_limits<double>::max();
  for (int i = 0; i < 5; ++i) {
    const auto start = Clock::now();
    work();
    best = std::min(best, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }
  return best;
}

void WalkFields(wqd::CDataBlock& block) {
  wqd::CDataItem item;
  for (bool more = block.FirstRecord(); more; more = block.NextRecord()) {
    for (bool field = block.FirstField(); field; field = block.NextField()) {
      block.GetCurrentField(&item);
    }
  }
}

const char* TextOf(wqd::CDataBlock& block) { return static_cast<const char*>(block.GetData()); }

void SplitLines(const char* text) {
  wqd::CMyParser parser(text, ",\t\n");
  for (std::string value; parser.NextField(value);) continue;
}

/// A line of the table: the block is written by a transfer from ZUL4 and read by a walk of its
/// fields, or as text by splitting its lines into values.
void PrintCost(cf_id format, wqd::CDataBlock& source) {
  const bool text = format == TEXT || format == CSV;
  const wqd::DataBlockPtr block = ConvertBlock(format, source);
  const double write = Milliseconds([&] { ConvertBlock(format, source); });
  const double read = Milliseconds([&] { text ? SplitLines(TextOf(*block)) : WalkFields(*block); });
  std::printf("%-8s %9d %9.2f %9.2f\n", CfName(format), block->GetDataSize(), write, read);
}

int CountMissing(const std::vector<Record>& records) {
  int missing = 0;
  for (const Record& record : records) {
    for (const wqd::CDataItem& item : record) missing += item.IsNull() ? 1 : 0;
  }
  return missing;
}

/// Returns the first difference on the whole road, with the step that showed it, or nothing.
std::string Travel(std::vector<Record>& records) {
  const wqd::DataBlockPtr sent = BuildBlock(ZUL4, records);
  const wqd::DataBlockPtr zul3 = ConvertBlock(ZUL3, *sent);
  const wqd::DataBlockPtr received(
      wqd::CDataBlock::NewDataBlock(ZUL3, zul3->GetData(), zul3->GetDataSize()));
  const wqd::DataBlockPtr back = ConvertBlock(ZUL4, *received);
  const wqd::DataBlockPtr copy(wqd::CDataBlock::NewDataBlock(back.get()));
  const wqd::DataBlockPtr csv = ConvertBlock(CSV, *copy);
  const struct {
    const char* step;
    wqd::CDataBlock* block;
  } steps[] = {{"ZUL4", sent.get()},
               {"ZUL3 received", received.get()},
               {"ZUL4 again", back.get()},
               {"copy", copy.get()}};
  for (const auto& [step, block] : steps) {
    const std::string difference = FindDifference(*block, records);
    if (!difference.empty()) return std::string(step) + ", " + difference;
  }
  const std::string difference = FindTextDifference(TextOf(*csv), kFieldsPerQuote, records);
  return difference.empty() ? "" : "CSV, " + difference;
}

/// Returns whether all that was read arrived, whatever the encoding.
bool Run(const char* path) {
  const FileQuotes file = ReadFile(path);
  std::vector<Record> records = MakeRecords(file.quotes);
  PrintHistory(stdout, file.quotes);
  std::printf("%-15s %d\n", "missing values", CountMissing(records));
  std::printf("%-15s %d\n\n", "rounded prices", file.rounded);
  const wqd::DataBlockPtr sent = BuildBlock(ZUL4, records);
  std::printf("%-8s %9s %9s %9s\n", "", "bytes", "write ms", "read ms");
  for (const cf_id format : {TEXT, CSV, ZUL3, ZUL4}) PrintCost(format, *sent);
  const std::string difference = Travel(records);
  std::printf("\n%s\n", difference.empty() ? "identical" : difference.c_str());
  return difference.empty();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
    std::fprintf(stderr, "usage: quotes [FILE]\n");
    return 2;
  }
  const char* const path = argc == 2 ? argv[1] : QUOTES_DEFAULT_FILE;
  try {
    return Run(path) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quotes: %s: %s\n", path, error.what());
    return 1;
  }
}
