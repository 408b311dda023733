/// The code of README.md, compiled and run. What stands between a pair of markers is a block of the
/// README to the letter, which script/check-readme sees to; the rest checks what the code has done.
/// Exit status: 0 if all is as the README says, 1 otherwise.
// [tour: headers]
#include <wqdata/blocks/datablock.h>
#include <wqdata/items/dataitem.h>
#include <wqdata/service/servicelib.h>
#include <wqdata/textsupport/myparser.h>
#include <wqdata/values/date.h>
#include <wqdata/values/fixptnum.h>
#include <wqdata/values/time.h>
#include <wqdata/values/timezone.h>
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

/// The text of a price, a date or a time.
template <typename T>
std::string Shown(const T& value) {
  char text[40] = "";
  value.Print(text, sizeof text);
  return text;
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

void Prices() {
  // [tour: prices]
  const wqd::CFixPtNum price("101 2/8");  // base code 3, eighths
  const std::int32_t eighths = price;     // 810
  wqd::CFixPtNum decimal = price + 0.5;   // 101.75, base code 3 as before
  decimal.ChangeBase(105);                // four decimals
  char text[24];                          // room for any price
  decimal.Print(text, sizeof text);       // "101.7500"
  const bool equal = decimal == 101.75;   // to 0.00001

  const wqd::CFixPtNum missing("N/A");
  const std::int32_t marker = missing;  // MISSING_LONG
  // [/tour]
  Expect("prices, eighths", "810", std::to_string(eighths));
  Expect("prices, text", "101.7500", text);
  Expect("prices, equal", "true", equal ? "true" : "false");
  Expect("prices, marker", std::to_string(MISSING_LONG), std::to_string(marker));
}

void DatesAndTimes() {
  // [tour: dates]
  wqd::CZulDate date;
  const bool valid = date.Scan("02/28/2024");       // true; "2024-02-28" is read too
  date = date + 2;                                  // March 1: 2024 is a leap year
  const int weekday = date.DayOfWeek();             // 5, Friday
  const int days = date - wqd::CZulDate(1, 1, 70);  // 19783; month, day, year

  const wqd::CZulTime open("9:30");
  const wqd::CZulTime close = open + (6 * 60 + 30) * 60;                 // 16:00:00
  const bool trading = wqd::CZulTime(16, 0, 0).InInterval(open, close);  // false: up to the end
  // [/tour]
  Expect("dates, valid", "true", valid ? "true" : "false");
  Expect("dates, date", "03/01/2024", Shown(date));
  Expect("dates, weekday", "5", std::to_string(weekday));
  Expect("dates, days", "19783", std::to_string(days));
  Expect("dates, close", "16:00:00", Shown(close));
  Expect("dates, trading", "false", trading ? "true" : "false");
}

void TimeZones() {
  // [tour: zones]
  const wqd::CTimeZone newYork("Eastern Standard Time");  // "America/New_York" would do as well
  const wqd::CTimeZone tokyo("Tokyo Standard Time");

  wqd::CTimeStamp stamp;
  stamp.Set(wqd::CZulDate(7, 4, 2025), wqd::CZulTime(12, 0, 0), newYork);
  const std::int32_t seconds = stamp;  // 1751644800 seconds since 1970 began, in UTC
  stamp.ChangeTimeZone(tokyo);         // July 5, 01:00:00

  wqd::CTimeZone unknown;
  const bool found = unknown.Set("Atlantis Standard Time");  // false, and the zone is GMT
  // [/tour]
  Expect("zones, seconds", "1751644800", std::to_string(seconds));
  Expect("zones, Tokyo", "07/05/2025 01:00:00",
         Shown(stamp.GetDate()) + " " + Shown(stamp.GetTime()));
  Expect("zones, found", "false, GMT",
         (found ? "true" : "false") + std::string(unknown == wqd::CTimeZone() ? ", GMT" : ""));
}

void TypedFields() {
  // [tour: typed]
  constexpr FID kDay = 10;
  constexpr FID kTime = 11;
  constexpr FID kBid = 22;
  constexpr FID kAsk = 23;

  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(CSV));
  block->StartRecord();
  block->Add(kDay, wqd::CZulDate(2, 29, 2024));
  block->Add(kTime, wqd::CZulTime(9, 30, 0));
  block->Add(kBid, wqd::CFixPtNum("101 2/8"));
  block->Add(kAsk, wqd::CFixPtNum("N/A"));
  block->EndRecord();
  block->Close();  // "02/29/2024,09:30:00,101 2/8,N/A\n"

  const wqd::CDataItem received(kBid, "101 2/8", -1);
  const wqd::CFixPtNum bid = received.GetFPN();  // base code 3, value 101.25
  // [/tour]
  Expect("typed, block", "02/29/2024,09:30:00,101 2/8,N/A\n",
         static_cast<const char*>(block->GetData()));
  Expect("typed, bid", "101 2/8", Shown(bid));
}

void Binary() {
  Texts seen;
  const auto use = [&seen](const wqd::CDataItem& item) {
    seen.push_back(std::to_string(item.GetId()) + "=" + std::to_string(item.GetType()) + ":" +
                   item.GetString());
  };
  // [tour: binary]
  constexpr FID kDay = 10;
  constexpr FID kBid = 22;
  constexpr FID kVolume = 33;

  wqd::DataBlockPtr sent(wqd::CDataBlock::NewDataBlock(ZUL4));
  sent->StartRecord();
  sent->Add(kDay, wqd::CZulDate(2, 29, 2024));
  sent->Add(kBid, wqd::CFixPtNum("101 2/8"));
  sent->Add(kVolume, MISSING_DOUBLE);
  sent->EndRecord();
  sent->Close();
  void* bytes = sent->GetData();               // the block's own
  const int size = sent->GetDataSize();        // 42
  const int records = sent->GetRecordCount();  // 1

  wqd::DataBlockPtr received(wqd::CDataBlock::NewDataBlock(ZUL4, bytes, size));
  wqd::CDataItem item;
  for (bool more = received->FirstRecord(); more; more = received->NextRecord()) {
    for (bool field = received->FirstField(); field; field = received->NextField()) {
      if (received->GetCurrentField(&item)) use(item);  // a date, a price in eighths, an error item
    }
  }
  // [/tour]
  Expect("binary, size", "42", std::to_string(size));
  Expect("binary, records", "1", std::to_string(records));
  Expect("binary, items", "[10=7:02/29/2024][22=5:101 2/8][33=101:N/A]", Joined(seen));
}

void Vectors() {
  Texts seen;
  const auto use = [&seen](const wqd::CFixPtNum& price) { seen.push_back(Shown(price)); };
  // [tour: vectors]
  constexpr FID kBids = 24;
  constexpr std::int16_t kEighths = 3;
  const std::int32_t bids[] = {810, 808, MISSING_LONG};

  wqd::DataBlockPtr block(wqd::CDataBlock::NewDataBlock(ZUL4));
  block->StartRecord();
  block->AddPriceVector(kBids, bids, kEighths, 3);
  block->EndRecord();
  block->Close();

  wqd::CDataItem item;
  block->FirstRecord();
  if (block->GetField(kBids, &item) && item.GetType() == TYPE_VECTOR_LPACK) {
    const auto* prices = static_cast<const std::int32_t*>(item.GetVectorPtr());
    for (int i = 0; i < item.GetSize(); ++i) {
      use(wqd::CFixPtNum(prices[i], item.GetBaseCode()));  // 101 2/8, 101 0/8, N/A
    }
  }
  // [/tour]
  Expect("vectors", "[101 2/8][101 0/8][N/A]", Joined(seen));
}

void Convert() {
  // [tour: convert]
  constexpr FID kDay = 10;
  constexpr FID kCloses = 25;
  const double closes[] = {101.25, 101.5, 102};

  wqd::DataBlockPtr sent(wqd::CDataBlock::NewDataBlock(ZUL4));
  sent->StartRecord();
  sent->Add(kDay, wqd::CZulDate(2, 29, 2024));
  sent->AddDoubleVector(kCloses, closes, 3);
  sent->EndRecord();
  sent->StartRecord();
  sent->Add(kDay, wqd::CZulDate(3, 31, 2024));
  sent->EndRecord();

  wqd::DataBlockPtr zul3(wqd::CDataBlock::NewDataBlock(ZUL3));
  const bool whole = zul3->Add(sent.get());  // true

  wqd::DataBlockPtr csv(wqd::CDataBlock::NewDataBlock(CSV));
  csv->Add(zul3.get());
  const char* text = static_cast<const char*>(csv->GetData());
  // "02/29/2024,101.2500\n02/29/2024,101.5000\n02/29/2024,102.0000\n03/31/2024,N/A\n"

  wqd::DataBlockPtr copy(wqd::CDataBlock::NewDataBlock(zul3.get()));  // of ZUL3 and ZUL4 alone
  // [/tour]
  Expect("convert, whole", "true", whole ? "true" : "false");
  Expect("convert, text",
         "02/29/2024,101.2500\n02/29/2024,101.5000\n02/29/2024,102.0000\n03/31/2024,N/A\n", text);
  const auto bytes = [](wqd::CDataBlock& block) {
    return std::string_view(static_cast<const char*>(block.GetData()),
                            static_cast<std::size_t>(block.GetDataSize()));
  };
  Expect("convert, copy", bytes(*zul3), bytes(*copy));
}

void Compute() {
  // [tour: compute]
  wqd::CDataItem bid(FID{22}, wqd::CFixPtNum("101 2/8"));
  wqd::CDataItem ask(FID{23}, "101.375", -1);
  wqd::CDataItem two(FID{0}, std::int32_t{2});
  wqd::CDataItem missing(FID{24}, MISSING_LONG);
  wqd::CDataItem pattern(FID{0}, "101*", -1);

  const bool crossed = bid >= ask;               // false
  wqd::CDataItem sum = bid + ask;                // a double, under identifier 0
  const double middle = (sum / two).GetFloat();  // 101.3125
  const bool matches = ask == pattern;           // true: the text on the right is a pattern
  const CmpRc order = missing.Compare(two);      // CMP_INVALID; all six operators are false
  const bool known = !(bid + missing).IsNull();  // false
  // [/tour]
  Expect("compute, crossed", "false", crossed ? "true" : "false");
  Expect("compute, middle", "101.312500", std::to_string(middle));
  Expect("compute, matches", "true", matches ? "true" : "false");
  Expect("compute, order", std::to_string(CMP_INVALID), std::to_string(order));
  Expect("compute, known", "false", known ? "true" : "false");
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
  Prices();
  DatesAndTimes();
  TimeZones();
  TypedFields();
  Binary();
  Vectors();
  Convert();
  Compute();
  Parse();
  Log();
  return differences == 0 ? 0 : 1;
}
