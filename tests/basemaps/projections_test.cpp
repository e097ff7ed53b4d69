// The projection list of the reprojection dialogs and the zones' coordinate systems.
#include "basemaps/projections.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tarno {
namespace {

TEST(ProjectionList, HasItsRowsInOrderAndForm) {
  const auto& rows = ProjectionList();
  ASSERT_EQ(rows.size(), 171u);
  for (const auto& row : rows) {
    EXPECT_EQ(row.text.size(), 40u) << '"' << row.text << '"';
    EXPECT_EQ(row.text.substr(5, 3), " - ") << row.text;
  }
  EXPECT_EQ(rows.front().text, "    0 - UNKNOWN                         ");
  EXPECT_EQ(rows.front().code, 0);
  EXPECT_EQ(rows[1].text, "    1 - UTM ZONE  1                     ");
  EXPECT_EQ(rows[36].text, "   36 - UTM ZONE 36                     ");
  EXPECT_EQ(rows[36].code, 36);
  EXPECT_EQ(rows[37].text, "  101 - ALABAMA         EAST            ");
  EXPECT_EQ(rows[38].text, "  102 - ALABAMA         WEST            ");
  EXPECT_EQ(rows[39].text, " 5001 - ALASKA          ZONE NO. 1      ");
  EXPECT_EQ(rows.back().text, " 5400 - GUAM ISLAND                     ");
  EXPECT_EQ(rows.back().code, 5400);
  EXPECT_EQ(rows[167].text, " 5201 - PUERTO RICO AND VIRGIN ISLANDS  ");
  EXPECT_EQ(rows[168].text, " 5202 - VIRGIN ISLANDS  ST. CROIX       ");
  EXPECT_EQ(rows[169].text, " 5300 - AMERICAN SAMOA                  ");
}

TEST(ProjectionList, AmericanSamoaIsPairedWith5200) {
  const auto& rows = ProjectionList();
  EXPECT_EQ(rows[169].code, 5200);
  EXPECT_EQ(ProjectionIndexOfCode(5200), 169);
  EXPECT_FALSE(ProjectionIndexOfCode(5300).has_value());
}

TEST(ProjectionList, StatePlaneZonesRunByStateWithUniqueCodes) {
  const auto& rows = ProjectionList();
  std::set<int> codes;
  for (const auto& row : rows) EXPECT_TRUE(codes.insert(row.code).second) << row.code;
  // 134 state plane rows (the four territories' rows included), states in order.
  int statePlane = 0;
  std::string previous;
  for (std::size_t i = 37; i < 167; ++i) {
    ++statePlane;
    const std::string state = rows[i].text.substr(8, 16);
    EXPECT_LE(previous, state) << rows[i].text;
    previous = state;
    // The code printed is the code paired.
    EXPECT_EQ(std::stoi(rows[i].text.substr(0, 5)), rows[i].code);
  }
  EXPECT_EQ(statePlane + 4, 134);
  EXPECT_EQ(rows[ProjectionIndexOfCode(2202).value()].text,
            " 2202 - MINNESOTA       CENTRAL         ");
  EXPECT_EQ(rows[ProjectionIndexOfCode(4904).value()].text,
            " 4904 - WYOMING         WEST            ");
  EXPECT_EQ(rows[ProjectionIndexOfCode(600).value()].text,
            "  600 - CONNECTICUT                     ");
  EXPECT_EQ(ProjectionName(2202), "MINNESOTA CENTRAL");
  EXPECT_EQ(ProjectionName(15), "UTM ZONE 15");
  EXPECT_EQ(ProjectionName(9999), "ZONE 9999");
}

TEST(Datum, ReadFromNamesAndDirectories) {
  EXPECT_EQ(DatumFromText("NAD27"), Datum::NAD27);
  EXPECT_EQ(DatumFromText("nad83"), Datum::NAD83);
  EXPECT_EQ(DatumFromText("/opt/tarno/nad83sp"), Datum::NAD83);
  EXPECT_EQ(DatumFromText("/opt/tarno/NAD27SP/"), Datum::NAD27);
  EXPECT_EQ(DatumFromText("C:\\TARNO\\NAD83SP"), Datum::NAD83);
  EXPECT_FALSE(DatumFromText("WGS84").has_value());
  EXPECT_FALSE(DatumFromText("/opt/nad83sp/other").has_value());
}

TEST(ZoneSystems, UtmAndStatePlaneUnderBothDatums) {
  EXPECT_EQ(CrsDefinition(15, Datum::NAD83),
            "+proj=utm +zone=15 +datum=NAD83 +units=m +no_defs +type=crs");
  EXPECT_EQ(CrsDefinition(2202, Datum::NAD83), "EPSG:26992");  // metres
  EXPECT_EQ(CrsDefinition(2202, Datum::NAD27), "EPSG:26792");  // US survey feet
  EXPECT_EQ(CrsDefinition(2101, Datum::NAD27), "EPSG:5623");   // Michigan's old TM zone
  EXPECT_EQ(CrsDefinition(5200, Datum::NAD83), "EPSG:32161");
  // No "_Feet" system slips in under NAD83.
  for (const auto& [fips, epsg] : StatePlaneEpsgCodes(Datum::NAD83)) {
    EXPECT_NE(epsg, 26850) << fips;
  }
  // 125 metre systems in PROJ's names, two of them for Kentucky North (1601).
  EXPECT_EQ(StatePlaneEpsgCodes(Datum::NAD83).size(), 124u);
  EXPECT_EQ(StatePlaneEpsgCodes(Datum::NAD27).count(2111), 0u);
}

TEST(ZoneSystems, AZoneWithoutASystemIsRefusedByName) {
  try {
    CrsDefinition(407, Datum::NAD83);
    FAIL() << "no NAD83 system for California VII";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("407 (CALIFORNIA ZONE VII)"), std::string::npos)
        << e.what();
    EXPECT_NE(std::string(e.what()).find("NAD83"), std::string::npos);
  }
  EXPECT_THROW(CrsDefinition(0, Datum::NAD27), Error);
  EXPECT_THROW(CrsDefinition(5400, Datum::NAD27), Error);
  EXPECT_THROW(ZoneTransform(15, 2501, Datum::NAD83), Error);  // Montana North: NAD27 only
}

TEST(ZoneSystems, TransformGoesBothWays) {
  ZoneTransform there(15, 2202, Datum::NAD83);
  ZoneTransform back(2202, 15, Datum::NAD83);
  double x = 480000.0, y = 4990000.0;
  ASSERT_TRUE(there.Apply(x, y));
  EXPECT_GT(x, 800000.0);  // east of Minnesota Central's false easting
  ASSERT_TRUE(back.Apply(x, y));
  EXPECT_NEAR(x, 480000.0, 1e-6);
  EXPECT_NEAR(y, 4990000.0, 1e-6);
}

}  // namespace
}  // namespace tarno
