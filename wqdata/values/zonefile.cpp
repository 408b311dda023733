// A zone file, numbers in big-endian order:
//
//     block with times of 4 bytes · block with times of 8 bytes · "\n" POSIX TZ text "\n"
//
//     block = "TZif" · version 1 · unused 15 · counts 6 × 4: UT marks, standard marks, leap
//     seconds,
//             times, types, characters · times · type of each time, 1 · types of offset 4, daylight
//             flag 1, name 1 · characters · leap seconds of time, total 4 · marks, 1 each

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include <wqdata/service/text.h>
#include <wqdata/values/windowszones.h>
#include <wqdata/values/zonefile.h>

namespace wqd::values {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kMaxFileSize = 65536;
constexpr std::size_t kTypeSize = 6;

/// The sections of a block that refer to one another.
struct Block {
  std::uint8_t version;
  Bytes typeOfTime;
  Bytes types;
  Bytes characters;
  Bytes standardMarks;
  Bytes utMarks;
};

/// Moves `count` entries of `size` bytes from the front of `left` to `section`.
bool take(Bytes& left, std::uint64_t count, std::uint64_t size, Bytes& section) {
  const std::uint64_t length = count * size;  // of 32-bit factors
  if (length > left.size()) return false;
  section = left.first(static_cast<std::size_t>(length));
  left = left.subspan(static_cast<std::size_t>(length));
  return true;
}

std::uint32_t number_at(Bytes bytes, std::size_t at) {
  return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
         std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

bool take_block(Bytes& left, std::uint64_t timeSize, Block& block) {
  Bytes header, times, leapSeconds;
  if (!take(left, 1, 44, header) || std::memcmp(header.data(), "TZif", 4) != 0) return false;
  const auto count = [&](std::size_t index) { return number_at(header, 20 + 4 * index); };
  block.version = header[4];
  return take(left, count(3), timeSize, times) && take(left, count(3), 1, block.typeOfTime) &&
         take(left, count(4), kTypeSize, block.types) &&
         take(left, count(5), 1, block.characters) &&
         take(left, count(2), timeSize + 4, leapSeconds) &&
         take(left, count(1), 1, block.standardMarks) && take(left, count(0), 1, block.utMarks);
}

bool is_type(Bytes type, std::size_t characterCount) {
  return type[4] <= 1 && type[5] < characterCount;
}

bool is_consistent(const Block& block) {
  const std::size_t typeCount = block.types.size() / kTypeSize;
  for (std::size_t i = 0; i < typeCount; ++i) {
    if (!is_type(block.types.subspan(i * kTypeSize), block.characters.size())) return false;
  }
  const auto isCount = [&](Bytes marks) { return marks.empty() || marks.size() == typeCount; };
  const auto isIndex = [&](std::uint8_t index) { return index < typeCount; };
  return typeCount > 0 && !block.characters.empty() && block.characters.back() == 0 &&
         isCount(block.standardMarks) && isCount(block.utMarks) &&
         std::all_of(block.typeOfTime.begin(), block.typeOfTime.end(), isIndex);
}

/// What stands between the two line ends that the rest of the file must begin and end with.
bool footer_of(Bytes left, std::string_view& text) {
  if (left.size() < 2 || left.front() != '\n' || left.back() != '\n') return false;
  text = {reinterpret_cast<const char*>(left.data()) + 1, left.size() - 2};
  return true;
}

bool is_name_character(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || service::is_digit(c) || c == '+' ||
         c == '-' || c == '_';
}

/// A name that stays below the root that it is joined to, on every platform.
bool is_file_name(std::string_view name) {
  const auto isAllowed = [](char c) { return is_name_character(c) || c == '/'; };
  return !name.empty() && name.front() != '/' && name.back() != '/' &&
         name.find("//") == std::string_view::npos &&
         std::all_of(name.begin(), name.end(), isAllowed);
}

/// Only a regular file of a likely size is opened: another kind may block, or do something, and one
/// of no size may be a door to the system.
bool read_rule(const std::filesystem::path& path, ZoneRule& rule) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  const std::uintmax_t fileSize = std::filesystem::file_size(path, error);
  if (error || fileSize == 0 || fileSize > kMaxFileSize) return false;
  std::ifstream file(path, std::ios::binary);
  std::vector<std::uint8_t> bytes(kMaxFileSize + 1);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  const auto size = static_cast<std::size_t>(file.gcount());
  return size <= kMaxFileSize && zone_rule_from_file(Bytes(bytes).first(size), rule);
}

bool find_file(std::string_view name, std::span<const char* const> roots, ZoneRule& rule) {
  return is_file_name(name) && std::any_of(roots.begin(), roots.end(), [&](const char* root) {
           return read_rule(std::filesystem::path(root) / name, rule);
         });
}

bool find_named(std::string_view name, std::span<const char* const> roots, ZoneRule& rule) {
  const PlatformZone* const zone = find_platform_zone(name);
  if (zone == nullptr) return find_file(name, roots, rule);
  return find_file(zone->file, roots, rule) ||
         (zone->oldFile != nullptr && find_file(zone->oldFile, roots, rule));
}

}  // namespace

bool zone_rule_from_file(std::span<const std::uint8_t> bytes, ZoneRule& rule) {
  Block former{};
  Block block{};
  std::string_view footer;
  return take_block(bytes, 4, former) && former.version >= '2' && take_block(bytes, 8, block) &&
         block.version == former.version && is_consistent(block) && footer_of(bytes, footer) &&
         zone_rule_from_posix(footer, rule);
}

bool find_zone_rule(std::string_view name, std::span<const char* const> roots, ZoneRule& rule) {
  try {
    return name.size() <= kMaxZoneNameLength && find_named(name, roots, rule);
  } catch (...) {  // no memory for a path or a file
    return false;
  }
}

}  // namespace wqd::values
