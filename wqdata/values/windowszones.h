/// The zone files that stand for the zone names of the platform that has a registry.
#ifndef WQDATA_VALUES_WINDOWSZONES_H_
#define WQDATA_VALUES_WINDOWSZONES_H_

#include <span>
#include <string_view>

namespace wqd::values {

struct PlatformZone {
  const char* name;
  const char* file;     ///< relative to the folder of zone files
  const char* oldFile;  ///< its name before it was renamed, or null
};

/// Every zone, sorted by name. "GMT Standard Time" is not among them: it is UTC in this library,
/// and needs no file.
std::span<const PlatformZone> platform_zones();

/// The zone of this name in any case, or null.
const PlatformZone* find_platform_zone(std::string_view name);

}  // namespace wqd::values

#endif  // WQDATA_VALUES_WINDOWSZONES_H_
