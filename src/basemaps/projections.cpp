#include "basemaps/projections.h"

#include <proj.h>
#include <sqlite3.h>

#include <cctype>
#include <cmath>
#include <cstdio>
#include <mutex>

namespace tarno {

namespace {

struct Zone {
  int code;
  const char* state;
  const char* zone;
};

// The state plane zones by FIPS code, states in alphabetical order. The single-zone
// states have no zone name. Michigan has both its old transverse Mercator zones
// (2101 to 2103) and its Lambert zones (2111 to 2113).
constexpr Zone kStatePlane[] = {
    {101, "ALABAMA", "EAST"},
    {102, "ALABAMA", "WEST"},
    {5001, "ALASKA", "ZONE NO. 1"},
    {5002, "ALASKA", "ZONE NO. 2"},
    {5003, "ALASKA", "ZONE NO. 3"},
    {5004, "ALASKA", "ZONE NO. 4"},
    {5005, "ALASKA", "ZONE NO. 5"},
    {5006, "ALASKA", "ZONE NO. 6"},
    {5007, "ALASKA", "ZONE NO. 7"},
    {5008, "ALASKA", "ZONE NO. 8"},
    {5009, "ALASKA", "ZONE NO. 9"},
    {5010, "ALASKA", "ZONE NO. 10"},
    {201, "ARIZONA", "EAST"},
    {202, "ARIZONA", "CENTRAL"},
    {203, "ARIZONA", "WEST"},
    {301, "ARKANSAS", "NORTH"},
    {302, "ARKANSAS", "SOUTH"},
    {401, "CALIFORNIA", "ZONE I"},
    {402, "CALIFORNIA", "ZONE II"},
    {403, "CALIFORNIA", "ZONE III"},
    {404, "CALIFORNIA", "ZONE IV"},
    {405, "CALIFORNIA", "ZONE V"},
    {406, "CALIFORNIA", "ZONE VI"},
    {407, "CALIFORNIA", "ZONE VII"},
    {501, "COLORADO", "NORTH"},
    {502, "COLORADO", "CENTRAL"},
    {503, "COLORADO", "SOUTH"},
    {600, "CONNECTICUT", ""},
    {700, "DELAWARE", ""},
    {901, "FLORIDA", "EAST"},
    {902, "FLORIDA", "WEST"},
    {903, "FLORIDA", "NORTH"},
    {1001, "GEORGIA", "EAST"},
    {1002, "GEORGIA", "WEST"},
    {5101, "HAWAII", "ZONE 1"},
    {5102, "HAWAII", "ZONE 2"},
    {5103, "HAWAII", "ZONE 3"},
    {5104, "HAWAII", "ZONE 4"},
    {5105, "HAWAII", "ZONE 5"},
    {1101, "IDAHO", "EAST"},
    {1102, "IDAHO", "CENTRAL"},
    {1103, "IDAHO", "WEST"},
    {1201, "ILLINOIS", "EAST"},
    {1202, "ILLINOIS", "WEST"},
    {1301, "INDIANA", "EAST"},
    {1302, "INDIANA", "WEST"},
    {1401, "IOWA", "NORTH"},
    {1402, "IOWA", "SOUTH"},
    {1501, "KANSAS", "NORTH"},
    {1502, "KANSAS", "SOUTH"},
    {1601, "KENTUCKY", "NORTH"},
    {1602, "KENTUCKY", "SOUTH"},
    {1701, "LOUISIANA", "NORTH"},
    {1702, "LOUISIANA", "SOUTH"},
    {1703, "LOUISIANA", "OFFSHORE"},
    {1801, "MAINE", "EAST"},
    {1802, "MAINE", "WEST"},
    {1900, "MARYLAND", ""},
    {2001, "MASSACHUSETTS", "MAINLAND"},
    {2002, "MASSACHUSETTS", "ISLAND"},
    {2101, "MICHIGAN", "EAST (TM)"},
    {2102, "MICHIGAN", "CENTRAL (TM)"},
    {2103, "MICHIGAN", "WEST (TM)"},
    {2111, "MICHIGAN", "NORTH"},
    {2112, "MICHIGAN", "CENTRAL"},
    {2113, "MICHIGAN", "SOUTH"},
    {2201, "MINNESOTA", "NORTH"},
    {2202, "MINNESOTA", "CENTRAL"},
    {2203, "MINNESOTA", "SOUTH"},
    {2301, "MISSISSIPPI", "EAST"},
    {2302, "MISSISSIPPI", "WEST"},
    {2401, "MISSOURI", "EAST"},
    {2402, "MISSOURI", "CENTRAL"},
    {2403, "MISSOURI", "WEST"},
    {2501, "MONTANA", "NORTH"},
    {2502, "MONTANA", "CENTRAL"},
    {2503, "MONTANA", "SOUTH"},
    {2601, "NEBRASKA", "NORTH"},
    {2602, "NEBRASKA", "SOUTH"},
    {2701, "NEVADA", "EAST"},
    {2702, "NEVADA", "CENTRAL"},
    {2703, "NEVADA", "WEST"},
    {2800, "NEW HAMPSHIRE", ""},
    {2900, "NEW JERSEY", ""},
    {3001, "NEW MEXICO", "EAST"},
    {3002, "NEW MEXICO", "CENTRAL"},
    {3003, "NEW MEXICO", "WEST"},
    {3101, "NEW YORK", "EAST"},
    {3102, "NEW YORK", "CENTRAL"},
    {3103, "NEW YORK", "WEST"},
    {3104, "NEW YORK", "LONG ISLAND"},
    {3200, "NORTH CAROLINA", ""},
    {3301, "NORTH DAKOTA", "NORTH"},
    {3302, "NORTH DAKOTA", "SOUTH"},
    {3401, "OHIO", "NORTH"},
    {3402, "OHIO", "SOUTH"},
    {3501, "OKLAHOMA", "NORTH"},
    {3502, "OKLAHOMA", "SOUTH"},
    {3601, "OREGON", "NORTH"},
    {3602, "OREGON", "SOUTH"},
    {3701, "PENNSYLVANIA", "NORTH"},
    {3702, "PENNSYLVANIA", "SOUTH"},
    {3800, "RHODE ISLAND", ""},
    {3901, "SOUTH CAROLINA", "NORTH"},
    {3902, "SOUTH CAROLINA", "SOUTH"},
    {4001, "SOUTH DAKOTA", "NORTH"},
    {4002, "SOUTH DAKOTA", "SOUTH"},
    {4100, "TENNESSEE", ""},
    {4201, "TEXAS", "NORTH"},
    {4202, "TEXAS", "NORTH CENTRAL"},
    {4203, "TEXAS", "CENTRAL"},
    {4204, "TEXAS", "SOUTH CENTRAL"},
    {4205, "TEXAS", "SOUTH"},
    {4301, "UTAH", "NORTH"},
    {4302, "UTAH", "CENTRAL"},
    {4303, "UTAH", "SOUTH"},
    {4400, "VERMONT", ""},
    {4501, "VIRGINIA", "NORTH"},
    {4502, "VIRGINIA", "SOUTH"},
    {4601, "WASHINGTON", "NORTH"},
    {4602, "WASHINGTON", "SOUTH"},
    {4701, "WEST VIRGINIA", "NORTH"},
    {4702, "WEST VIRGINIA", "SOUTH"},
    {4801, "WISCONSIN", "NORTH"},
    {4802, "WISCONSIN", "CENTRAL"},
    {4803, "WISCONSIN", "SOUTH"},
    {4901, "WYOMING", "EAST"},
    {4902, "WYOMING", "EAST CENTRAL"},
    {4903, "WYOMING", "WEST CENTRAL"},
    {4904, "WYOMING", "WEST"},
};

std::string Pad(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

// "  101 - " : the code right-aligned in five, then " - ".
std::string CodePart(int code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%5d - ", code);
  return buffer;
}

std::vector<ProjectionRow> BuildList() {
  std::vector<ProjectionRow> rows;
  rows.push_back({0, Pad(CodePart(0) + "UNKNOWN", 40)});
  for (int zone = 1; zone <= 36; ++zone) {
    char name[16];
    std::snprintf(name, sizeof name, "UTM ZONE %2d", zone);
    rows.push_back({zone, Pad(CodePart(zone) + name, 40)});
  }
  for (const Zone& z : kStatePlane) {
    rows.push_back({z.code, Pad(CodePart(z.code) + Pad(z.state, 16) + z.zone, 40)});
  }
  rows.push_back({5201, Pad(CodePart(5201) + "PUERTO RICO AND VIRGIN ISLANDS", 40)});
  rows.push_back({5202, Pad(CodePart(5202) + Pad("VIRGIN ISLANDS", 16) + "ST. CROIX", 40)});
  // The row says 5300 but stands for 5200: the code the older maps carry.
  rows.push_back({5200, Pad(CodePart(5300) + "AMERICAN SAMOA", 40)});
  rows.push_back({5400, Pad(CodePart(5400) + "GUAM ISLAND", 40)});
  return rows;
}

std::string Lower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::map<int, int> ReadStatePlaneCodes(Datum datum) {
  PJ_CONTEXT* ctx = proj_context_create();
  const char* dbPath = proj_context_get_database_path(ctx);
  const std::string path = dbPath != nullptr ? dbPath : "";
  proj_context_destroy(ctx);
  if (path.empty()) throw Error("The PROJ database (proj.db) cannot be found.");
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    const std::string why = db != nullptr ? sqlite3_errmsg(db) : "out of memory";
    sqlite3_close(db);
    throw Error("Cannot open the PROJ database " + path + ": " + why);
  }
  // "NAD_1983_StatePlane_Minnesota_Central_FIPS_2202" but not "..._FIPS_2202_Feet".
  const std::string prefix = datum == Datum::NAD27 ? "NAD_1927" : "NAD_1983";
  const std::string sql =
      "select alt_name, code from alias_name where table_name = 'projected_crs' and "
      "auth_name = 'EPSG' and alt_name glob '" +
      prefix +
      "_StatePlane_*_FIPS_[0-9][0-9][0-9][0-9]' "
      "order by cast(code as integer)";
  sqlite3_stmt* stmt = nullptr;
  std::map<int, int> codes;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    const std::string why = sqlite3_errmsg(db);
    sqlite3_close(db);
    throw Error("Cannot read the PROJ database " + path + ": " + why);
  }
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    const std::string name = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    const int epsg = std::atoi(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1)));
    const int fips = std::atoi(name.substr(name.size() - 4).c_str());
    codes.emplace(fips, epsg);  // a name given twice keeps its older (lower) code
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return codes;
}

}  // namespace

const std::vector<ProjectionRow>& ProjectionList() {
  static const std::vector<ProjectionRow> rows = BuildList();
  return rows;
}

std::optional<int> ProjectionIndexOfCode(int code) {
  const auto& rows = ProjectionList();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].code == code) return static_cast<int>(i);
  }
  return std::nullopt;
}

std::string ProjectionName(int code) {
  const auto index = ProjectionIndexOfCode(code);
  if (!index) return "ZONE " + std::to_string(code);
  const std::string body = ProjectionList()[*index].text.substr(8);
  // Collapse the padding between state and zone into one blank.
  std::string out;
  for (char c : body) {
    if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
    out += c;
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

const char* DatumName(Datum datum) {
  return datum == Datum::NAD27 ? projection_text::kNad27 : projection_text::kNad83;
}

std::optional<Datum> DatumFromText(std::string_view text) {
  std::string t = Lower(text);
  while (!t.empty() && (t.back() == '/' || t.back() == '\\')) t.pop_back();
  const auto slash = t.find_last_of("/\\");
  if (slash != std::string::npos) t = t.substr(slash + 1);
  if (t == "nad27" || t == projection_text::kNad27Dir) return Datum::NAD27;
  if (t == "nad83" || t == projection_text::kNad83Dir) return Datum::NAD83;
  return std::nullopt;
}

const std::map<int, int>& StatePlaneEpsgCodes(Datum datum) {
  static std::mutex mutex;
  static std::optional<std::map<int, int>> nad27, nad83;
  std::lock_guard<std::mutex> lock(mutex);
  auto& slot = datum == Datum::NAD27 ? nad27 : nad83;
  if (!slot) slot = ReadStatePlaneCodes(datum);
  return *slot;
}

std::string CrsDefinition(int code, Datum datum) {
  if (code >= 1 && code <= 36) {
    return "+proj=utm +zone=" + std::to_string(code) + " +datum=" + DatumName(datum) +
           " +units=m +no_defs +type=crs";
  }
  if (code == 0) throw Error("The projection UNKNOWN (0) has no coordinate system.");
  const auto& codes = StatePlaneEpsgCodes(datum);
  const auto it = codes.find(code);
  if (it == codes.end() || !ProjectionIndexOfCode(code)) {
    throw Error("The zone " + std::to_string(code) + " (" + ProjectionName(code) +
                ") has no coordinate system under " + DatumName(datum) + ".");
  }
  return "EPSG:" + std::to_string(it->second);
}

ZoneTransform::ZoneTransform(int fromCode, int toCode, Datum datum) {
  const std::string from = CrsDefinition(fromCode, datum);
  const std::string to = CrsDefinition(toCode, datum);
  PJ_CONTEXT* ctx = proj_context_create();
  PJ* raw = proj_create_crs_to_crs(ctx, from.c_str(), to.c_str(), nullptr);
  if (raw == nullptr) {
    const std::string why = proj_context_errno_string(ctx, proj_context_errno(ctx));
    proj_context_destroy(ctx);
    throw Error("No transformation from " + from + " to " + to + ": " + why);
  }
  PJ* normal = proj_normalize_for_visualization(ctx, raw);
  proj_destroy(raw);
  if (normal == nullptr) {
    proj_context_destroy(ctx);
    throw Error("No transformation from " + from + " to " + to + ".");
  }
  context_ = ctx;
  transform_ = normal;
}

ZoneTransform::~ZoneTransform() {
  proj_destroy(static_cast<PJ*>(transform_));
  proj_context_destroy(static_cast<PJ_CONTEXT*>(context_));
}

bool ZoneTransform::Apply(double& x, double& y) const {
  PJ_COORD in = proj_coord(x, y, 0, 0);
  PJ_COORD out = proj_trans(static_cast<PJ*>(transform_), PJ_FWD, in);
  if (out.xy.x == HUGE_VAL || out.xy.y == HUGE_VAL || std::isnan(out.xy.x) ||
      std::isnan(out.xy.y)) {
    proj_errno_reset(static_cast<PJ*>(transform_));
    return false;
  }
  x = out.xy.x;
  y = out.xy.y;
  return true;
}

}  // namespace tarno
