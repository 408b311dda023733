/// The code of README.md, compiled and run. What stands between a pair of markers is a block of the
/// README to the letter, which script/check-readme sees to; the rest checks what the code has done.
/// Exit status: 0 if all is as the README says, 1 otherwise.
// [tour: headers]
#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/servicelib.h>
#include <wqdata/textsupport/myparser.h>
// [/tour]

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

int differences = 0;

void Expect(const char* what, std::string_view expected, std::string_view actual) {
  if (actual == expected) return;
  ++differences;
  std::fprintf(stderr, "%s: '%.*s' instead of '%.*s'\n", what, static_cast<int>(actual.size()),
               actual.data(), static_cast<int>(expected.size()), expected.data());
}

std::string Joined(const Texts& texts) {
  std::string all;
  for (const std::string& text : texts) all += "[" + text + "]";
  return all;
}

void Build() {
  // [tour: build]
  constexpr FID kPrice = 22;
  constexpr FID kSize = 32;
  constexpr FID kVenue = 40;

  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(CSV));
  block->StartRecord();
  block->Add(kPrice, 101.25);
  block->Add(kSize, std::int32_t{700});
  block->Add(kVenue, "XLON");
  block->EndRecord();
  block->StartRecord();
  block->Add(kPrice, 101.5);
  block->Add(kSize, MISSING_LONG);
  block->Add(kVenue, "XPAR");
  block->EndRecord();
  block->Close();

  const char* text = static_cast<const char*>(block->GetData());
  // "101.2500,700,XLON\n101.5000,N/A,XPAR\n", and a NUL that GetDataSize() counts
  // [/tour]
  Expect("build", "101.2500,700,XLON\n101.5000,N/A,XPAR\n", text);
  Expect("build, size", std::to_string(std::string_view(text).size() + 1),
         std::to_string(block->GetDataSize()));
}

void Walk() {
  Texts seen;
  const auto use = [&seen](const wqd::CDataItem& item) {
    seen.push_back(std::to_string(item.GetId()) + "=" + item.GetString());
  };
  // [tour: walk]
  char received[] = "22,101.25,32,700\n22,101.5,32,N/A\n";
  constexpr int kFieldsPerLine = 2;

  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(TEXT, received, sizeof received));
  wqd::CDataItem item;
  for (bool more = block->FirstRecord(); more; more = block->NextRecord()) {
    bool field = block->FirstField();
    for (int i = 0; field && i < kFieldsPerLine; ++i) {
      if (block->GetCurrentField(&item)) use(item);
      field = block->NextField();
    }
  }
  // [/tour]
  Expect("walk", "[22=101.25][32=700][22=101.5][32=N/A]", Joined(seen));
}

void Find() {
  // [tour: find]
  char received[] = "22,101 2/8,32,700";
  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(TEXT, received, sizeof received));
  wqd::CDataItem item;
  double price = MISSING_DOUBLE;
  if (block->GetField(FID{22}, &item)) price = item.GetFloat();  // 101.25
  const bool known = block->GetField(FID{99}, &item);            // false, item stays as it was
  // [/tour]
  Expect("find, price", "101.250000", std::to_string(price));
  Expect("find, known", "no, item 22",
         (known ? "yes, item " : "no, item ") + std::to_string(item.GetId()));
}

void Items() {
  // [tour: items]
  const wqd::CDataItem size(FID{32}, std::int32_t{700});
  const wqd::CDataItem price(FID{22}, "101.25", -1);
  const wqd::CDataItem missing(FID{32}, MISSING_LONG);

  const double number = size.GetFloat();           // 700.0
  const std::int32_t whole = price.GetLong();      // 101
  const bool null = missing.IsNull();              // true
  const std::int16_t marker = missing.GetShort();  // MISSING_SHORT
  const char* text = missing.GetString();          // "N/A"
  // [/tour]
  Expect("items, number", "700.000000", std::to_string(number));
  Expect("items, whole", "101", std::to_string(whole));
  Expect("items, null", "true", null ? "true" : "false");
  Expect("items, marker", std::to_string(MISSING_SHORT), std::to_string(marker));
  Expect("items, text", "N/A", text);
}

void Parse() {
  Texts fields;
  // [tour: parse]
  wqd::CMyParser parser("XLON, \"Smith, Jones\" ,700\n", ",\n");
  std::string field;
  while (parser.NextField(field)) fields.push_back(field);
  // "XLON", "Smith, Jones", "700", and "" behind the line end
  // [/tour]
  Expect("parse", "[XLON][Smith, Jones][700][]", Joined(fields));
}

void Log() {
  // [tour: log]
  std::vector<std::string> lines;
  const LogSink sink = [](int level, const char* text, void* context) {
    static_cast<std::vector<std::string>*>(context)->push_back(std::to_string(level) + " " + text);
  };
  set_log_sink(sink, &lines);
  const cf_id format = CfId("XML");  // INVALID; logs "CfID: Invalid format 'XML'" at level 2
  set_log_sink(nullptr, nullptr);    // back to standard error
  // [/tour]
  Expect("log", "[2 CfID: Invalid format 'XML']", Joined(lines));
  Expect("log, format", "INVALID", CfName(format));
}

}  // namespace

int main() {
  Build();
  Walk();
  Find();
  Items();
  Parse();
  Log();
  return differences == 0 ? 0 : 1;
}
