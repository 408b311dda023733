/// quotes [--keep DIRECTORY] [FILE]: carries a price history through blocks and says what arrived.
///
/// It reads a price file and sends a record for each day in three ways: as pairs of identifier and
/// value in text, and as ZUL3 and ZUL4 through the files quotes.zul3 and quotes.zul4. It walks what
/// arrived as a receiver would and compares every value with the one sent. The files stand in a
/// temporary directory, which is removed, or in DIRECTORY, where they stay. Prices of the file that
/// a price can't hold are rounded, and counted. Exit status: 0 if all values are equal, 1 for a
/// file that can't be read or written or a difference, 2 for a wrong call.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <wqdata/blocks/datablock.h>

#include "blockfiles.h"
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

/// What came out of a way through one encoding.
struct Delivery {
  const char* name;
  cf_id format;
  int bytes;
  ReceivedQuotes received;
};

Delivery SendPairs(const std::vector<Quote>& quotes) {
  const wqd::DataBlockPtr block = BuildQuotes(CSV, Layout::kPairs, quotes);
  const int bytes = block->GetDataSize();
  return {"pairs", CSV, bytes, ReceiveQuotes(CSV, block->GetData(), bytes)};
}

/// What is read back is the file's: the block that was written is gone by then.
Delivery SendFile(cf_id format, const char* fileName, const std::vector<Quote>& quotes,
                  const BlockDirectory& directory) {
  const std::filesystem::path path = directory.Path() / fileName;
  WriteBlock(path, *BuildQuotes(format, Layout::kValues, quotes));
  std::vector<char> bytes = ReadBytes(path);
  const int size = static_cast<int>(bytes.size());
  return {CfName(format), format, size, ReceiveQuotes(format, bytes.data(), size)};
}

void PrintSize(cf_id format, const std::vector<Quote>& quotes) {
  const wqd::DataBlockPtr block = BuildQuotes(format, Layout::kValues, quotes);
  std::printf("%-15s %d bytes\n", CfName(format), block->GetDataSize());
}

/// Returns whether every value that was sent arrived.
bool PrintDelivery(const Delivery& delivery, const std::vector<Quote>& sent) {
  const std::vector<Quote>& received = delivery.received.quotes;
  const std::size_t values = sent.size() * kFieldsPerQuote;
  const std::size_t equal = CountEqualValues(sent, received, delivery.format);
  std::printf("%-15s %d bytes, %zu of %zu values equal those sent\n", delivery.name, delivery.bytes,
              equal, values);
  return equal == values && received.size() == sent.size();
}

/// Returns whether every value that was read arrived, whatever the encoding.
bool Report(const FileQuotes& file, const BlockDirectory& directory) {
  const Delivery deliveries[] = {
      SendPairs(file.quotes),
      SendFile(ZUL3, "quotes.zul3", file.quotes, directory),
      SendFile(ZUL4, "quotes.zul4", file.quotes, directory),
  };
  const ReceivedQuotes& last = std::end(deliveries)[-1].received;
  PrintHistory(stdout, last.quotes);
  std::printf("%-15s %d\n", "missing values", last.missing);
  std::printf("%-15s %d\n", "rounded prices", file.rounded);
  PrintSize(TEXT, file.quotes);
  PrintSize(CSV, file.quotes);
  bool all = true;
  for (const Delivery& delivery : deliveries) all = PrintDelivery(delivery, file.quotes) && all;
  return all;
}

struct Call {
  bool valid = true;
  const char* keep = nullptr;
  const char* file = QUOTES_DEFAULT_FILE;
};

Call ReadCall(int argc, char** argv) {
  Call call;
  int next = 1;
  if (argc > 2 && std::string_view(argv[1]) == "--keep") {
    call.keep = argv[2];
    next = 3;
  }
  if (argc > next) call.file = argv[next];
  call.valid = argc <= next + 1 && std::string_view(call.file) != "--keep";
  return call;
}

bool Run(const Call& call) {
  const FileQuotes file = ReadFile(call.file);
  return call.keep == nullptr ? Report(file, BlockDirectory())
                              : Report(file, BlockDirectory(call.keep));
}

}  // namespace

int main(int argc, char** argv) {
  const Call call = ReadCall(argc, argv);
  if (!call.valid) {
    std::fprintf(stderr, "usage: quotes [--keep DIRECTORY] [FILE]\n");
    return 2;
  }
  try {
    if (Run(call)) return 0;
    std::fprintf(stderr, "quotes: %s: what was received differs from what was sent\n", call.file);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quotes: %s: %s\n", call.file, error.what());
  }
  return 1;
}
