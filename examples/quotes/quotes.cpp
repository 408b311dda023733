/// quotes [FILE]: carries a price history through blocks of text and says what arrived.
///
/// It reads a price file, writes a record for each day as TEXT and as CSV, sends the same days as
/// pairs of identifier and value, walks the pairs as a receiver would, and compares every value
/// with the one sent. Prices of the file that a price can't hold are rounded, and counted. Exit
/// status: 0 if all values are equal, 1 for a file that can't be read or a difference, 2 for a
/// wrong call.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>

#include <wqdata/blocks/datablock.h>

#include "quoteblocks.h"
#include "quotefile.h"
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

ReceivedQuotes ReceiveText(void* text, int size) {
  const wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(TEXT, text, size));
  if (block == nullptr) throw std::runtime_error("cannot wrap the received text");
  return ReceiveQuotes(*block);
}

/// Returns whether every value that was read arrived.
bool Report(const FileQuotes& file) {
  const wqd::DataBlockPtr text = BuildQuotes(TEXT, Layout::kValues, file.quotes);
  const wqd::DataBlockPtr csv = BuildQuotes(CSV, Layout::kValues, file.quotes);
  const wqd::DataBlockPtr pairs = BuildQuotes(CSV, Layout::kPairs, file.quotes);
  const ReceivedQuotes received = ReceiveText(pairs->GetData(), pairs->GetDataSize());
  const std::size_t values = file.quotes.size() * kFieldsPerQuote;
  const std::size_t equal = CountEqualValues(file.quotes, received.quotes);

  PrintHistory(stdout, received.quotes);
  std::printf("%-15s %d\n", "missing values", received.missing);
  std::printf("%-15s %d\n", "rounded prices", file.rounded);
  std::printf("%-15s %d bytes\n", "TEXT block", text->GetDataSize());
  std::printf("%-15s %d bytes\n", "CSV block", csv->GetDataSize());
  std::printf("%-15s %d bytes\n", "pairs", pairs->GetDataSize());
  std::printf("%-15s %zu of %zu values equal those sent\n", "received", equal, values);
  return equal == values && received.quotes.size() == file.quotes.size();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    std::fprintf(stderr, "usage: quotes [FILE]\n");
    return 2;
  }
  const char* const path = argc == 2 ? argv[1] : QUOTES_DEFAULT_FILE;
  try {
    if (Report(ReadFile(path))) return 0;
    std::fprintf(stderr, "quotes: %s: what was received differs from what was sent\n", path);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quotes: %s: %s\n", path, error.what());
  }
  return 1;
}
