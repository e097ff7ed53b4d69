// The projection zones that maps are reprojected between, and their coordinate
// reference systems.
//
// The list shown by the reprojection dialogs has 171 rows of 40 characters, meant
// for a fixed-pitch font: "    0 - UNKNOWN", the UTM zones 1 to 36, then the state
// plane zones by their FIPS codes, state by state in alphabetical order, ending with
// Puerto Rico, the Virgin Islands, American Samoa and Guam. Each row is paired with
// its numeric code; the row of American Samoa (5300) is paired with the code 5200,
// as the maps made by the older tools carry it.
//
// A code becomes a coordinate reference system under a datum (NAD27 or NAD83): UTM
// zone n is "+proj=utm +zone=n" on the datum, in metres; a state plane zone is the
// EPSG system that PROJ's database names "NAD_1927_StatePlane_<...>_FIPS_<code>" or
// "NAD_1983_StatePlane_<...>_FIPS_<code>" (NAD27 zones in US survey feet, NAD83 zones
// in metres). A zone with no such system under the datum is refused by name.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/error.h"

namespace tarno {

struct ProjectionRow {
  int code = 0;
  std::string text;  // 40 characters
};

enum class Datum { NAD27, NAD83 };

namespace projection_text {
inline constexpr const char* kListFont = "Courier New";
inline constexpr int kRowWidth = 40;
inline constexpr int kRowCount = 171;
inline constexpr const char* kNad27 = "NAD27";
inline constexpr const char* kNad83 = "NAD83";
// The datum directories handed to the programs: their last part names the datum.
inline constexpr const char* kNad27Dir = "nad27sp";
inline constexpr const char* kNad83Dir = "nad83sp";
}  // namespace projection_text

// The 171 rows, in their order.
const std::vector<ProjectionRow>& ProjectionList();
// The position (from 0) of the first row paired with `code`; none if no row is.
std::optional<int> ProjectionIndexOfCode(int code);
// The row's text without the code and trailing blanks ("MINNESOTA       CENTRAL"
// becomes "MINNESOTA CENTRAL"), for messages; "ZONE <code>" for a code not listed.
std::string ProjectionName(int code);

const char* DatumName(Datum datum);
// "NAD27", "NAD83" (any case), or a datum directory whose last part is "nad27sp" or
// "nad83sp" (any case, with or without a closing separator). None otherwise.
std::optional<Datum> DatumFromText(std::string_view text);

// The EPSG codes of the state plane zones under a datum, by FIPS code, read from
// PROJ's database. Throws Error when the database cannot be read.
const std::map<int, int>& StatePlaneEpsgCodes(Datum datum);

// The coordinate system of a code under a datum, as PROJ takes it: "+proj=utm ..." or
// "EPSG:<n>". Throws Error naming the zone when it has none (the code 0, a code not
// in the list, a zone that the datum does not have).
std::string CrsDefinition(int code, Datum datum);

// A transformation between two zones under one datum, with x east and y north on
// both sides (PROJ's axis order normalised), in each system's own unit.
class ZoneTransform {
 public:
  // Throws Error naming the zone that has no system, or PROJ's reason.
  ZoneTransform(int fromCode, int toCode, Datum datum);
  ~ZoneTransform();
  ZoneTransform(const ZoneTransform&) = delete;
  ZoneTransform& operator=(const ZoneTransform&) = delete;
  // Transforms a point in place; false when PROJ cannot (the point is left as it was).
  bool Apply(double& x, double& y) const;

 private:
  void* context_ = nullptr;
  void* transform_ = nullptr;
};

}  // namespace tarno
