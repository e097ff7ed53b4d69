// The BBM reader: header of both forms, the version rule, the index of records,
// failures on bad files, GetBBMProjection, and the writer's layout.
#include <gtest/gtest.h>

#include <filesystem>

#include "basemaps/bbm.h"
#include "basemaps/bbm_format.h"
#include "basemaps/bbm_writer.h"
#include "bbm_fixture.h"

namespace tarno::testing {
namespace {

std::string Patched(std::string bytes, std::size_t offset, std::int32_t value) {
  unsigned char b[4];
  bbm::PutInt32(b, value);
  bytes.replace(offset, 4, reinterpret_cast<const char*>(b), 4);
  return bytes;
}

// A DLG map of two lines, a point and an area over the first line.
BbmRecordWriter SmallMap(std::string description = "ROAD") {
  BbmRecordWriter w(BbmTest::Fields(bbm::kAttributed, std::move(description)));
  w.AddLine(11, {1000, 2000, 3000}, {1000, 1500, 1000}, {{170, 201}});
  w.AddLine(12, {5000, 6000}, {5000, 6000}, {{50, 412}, {50, 610}});
  w.AddPoint(21, 4000, 4500, {{300, 1}});
  w.AddArea(31, {1}, {{50, 101}});
  return w;
}

TEST_F(BbmTest, RecordHeaderAndIndexAreReadAsWritten) {
  const std::string path = Save(SmallMap());
  BBMap map(&ui_);
  map.Connect(path);
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.Fname(), path);
  EXPECT_EQ(map.ConnectName(), path);
  const BbmHeader& h = map.Header();
  EXPECT_EQ(h.VersionText(), "1.0.2");
  EXPECT_EQ(h.Title, "Test map");
  EXPECT_EQ(h.Description, "ROAD");
  EXPECT_EQ(h.DataType, bbm::kAttributed);
  EXPECT_EQ(h.Projection, 17);
  EXPECT_EQ(h.Multiplier, 100);
  EXPECT_EQ(h.PointCount, 1);
  EXPECT_EQ(h.LineCount, 2);
  EXPECT_EQ(h.AreaCount, 1);
  EXPECT_EQ(h.X1, 1000);
  EXPECT_EQ(h.Y1, 1000);
  EXPECT_EQ(h.X2, 6000);
  EXPECT_EQ(h.Y2, 6000);
  EXPECT_DOUBLE_EQ(map.Left(), 10.0);
  EXPECT_DOUBLE_EQ(map.Right(), 60.0);
  EXPECT_DOUBLE_EQ(map.Top(), 60.0);
  EXPECT_DOUBLE_EQ(map.Bottom(), 10.0);

  ASSERT_EQ(map.LineIndex().size(), 2u);
  const BBMRecordIndex& first = map.LineIndex()[0];
  EXPECT_EQ(first.Id, 11);
  EXPECT_EQ(first.Position, 296 + 36);  // after the fixed fields of the first record
  EXPECT_EQ(first.Vertices, 3);
  EXPECT_EQ(first.AttrPairs, 1);
  EXPECT_EQ(first.Xmin, 1000);
  EXPECT_EQ(first.Ymax, 1500);
  const BBMRecordIndex& second = map.LineIndex()[1];
  EXPECT_EQ(second.Position, first.Position + 8 + 3 * 8 + 36);
  ASSERT_EQ(map.PointIndex().size(), 1u);
  EXPECT_EQ(map.PointIndex()[0].X, 4000);
  EXPECT_EQ(map.PointIndex()[0].Y, 4500);
  ASSERT_EQ(map.AreaIndex().size(), 1u);
  EXPECT_EQ(map.AreaIndex()[0].Boundaries, 1);
  EXPECT_EQ(map.AreaIndex()[0].Xmax, 0);  // an area has no box
  ui_.Verify();
}

TEST_F(BbmTest, InfoListsTheHeaderOfEachForm) {
  const std::string path = Save(SmallMap());
  BBMap map(&ui_);
  map.Connect(path);
  const std::vector<std::string> expected = {
      "Filename:         " + path,   "Version:          1.0.2", "Title:            Test map",
      "Source:           bbm tests", "Description:      ROAD",  "Data type:        -100000",
      "Projection:       17",        "Multiplier:       100",   "Number of Points: 1",
      "Number of Lines:  2",         "Number of Areas:  1",     "Bounding box",
      "             X1:  1000",      "             Y1:  1000",  "             X2:  6000",
      "             Y2:  6000"};
  ui_.ExpectMessage("BBM File Header", expected);
  map.ShowInfo();
  ui_.Verify();

  BbmCommandWriter c(Fields(bbm::kCommands), 640, 480);
  c.MoveTo(0, 0);
  c.LineTo(100, 200);
  c.End();
  BBMap commands;
  commands.Connect(Save(c, "cmd.bbm"));
  ASSERT_TRUE(commands.Connected());
  const auto lines = commands.InfoLines();
  ASSERT_EQ(lines.size(), 15u);
  EXPECT_EQ(lines[5], "Data type:        -100006");
  EXPECT_EQ(lines[8], "Logical Pixels X: 640");
  EXPECT_EQ(lines[9], "Logical Pixels Y: 480");
  EXPECT_EQ(lines[10], "Bounding box");
  EXPECT_EQ(lines[13], "             X2:  100");
}

TEST_F(BbmTest, VersionRuleAcceptsUpTo102) {
  struct Case {
    int major, minor, patch;
    bool ok;
  } cases[] = {{1, 0, 2, true},  {0, 0, 0, true},  {1, 0, 3, false},
               {1, 1, 0, false}, {2, 0, 0, false}, {0, 0, 1, true}};
  for (const Case& c : cases) {
    BbmHeaderFields f = Fields(bbm::kAttributed);
    f.major = c.major, f.minor = c.minor, f.patch = c.patch;
    BbmRecordWriter w(f);
    w.AddLine(1, {0, 10}, {0, 10}, {{50, 412}});
    const std::string path = Save(w);
    const std::string version =
        std::to_string(c.major) + "." + std::to_string(c.minor) + "." + std::to_string(c.patch);
    BBMap map(&ui_);
    if (c.ok) {
      map.Connect(path);
      EXPECT_TRUE(map.Connected()) << version;
    } else {
      ui_.ExpectMessage("BBM file error!",
                        {"Illegal BBM version found in file " + path + ": " + version})
          .WithIcon(Icon::Critical);
      EXPECT_THROW(map.Connect(path), BbmError) << version;
      EXPECT_FALSE(map.Connected());
    }
    ui_.Verify();
  }
}

TEST_F(BbmTest, WrongSignatureShowsTheBoxAndFails) {
  std::string bytes = SmallMap().Bytes();
  bytes[0] = 'X';
  const std::string path = SaveBytes(bytes);
  BBMap map(&ui_);
  ui_.ExpectMessage("BBM file error!",
                    {"Illegal BBM file header found in file " + path + " --XBBM"})
      .WithIcon(Icon::Critical);
  EXPECT_THROW(map.Connect(path), BbmError);
  EXPECT_FALSE(map.Connected());
  ui_.Verify();

  // Shorter than a signature: the box shows what there is.
  const std::string tiny = SaveBytes("*B", "tiny.bbm");
  ui_.ExpectMessage("BBM file error!", {"Illegal BBM file header found in file " + tiny + " --*B"});
  EXPECT_THROW(map.Connect(tiny), BbmError);
  ui_.Verify();
}

TEST_F(BbmTest, MissingFileStaysNotConnectedSilently) {
  BBMap map(&ui_);
  map.Connect((temp_ / "absent.bbm").string());
  map.Connect(temp_.Path().string());  // a folder is no file either
  EXPECT_FALSE(map.Connected());
  ui_.ExpectMessage("Not Connected", {"Cannot access map -- not connected"})
      .WithIcon(Icon::Critical);
  EXPECT_EQ(map.ConnectName(), "");
  ui_.Verify();
}

TEST_F(BbmTest, DefaultColourFollowsDescriptionAndDataType) {
  const std::pair<const char*, Colour> dlg[] = {
      {"HYDROGRAPHY", Rgb(0, 192, 192)}, {"ROADS", PaletteColour(2)}, {"MISC", PaletteColour(3)},
      {"HYPS", PaletteColour(6)},        {"RAIL", PaletteColour(0)},  {"hydr", PaletteColour(0)}};
  for (const auto& [description, colour] : dlg) {
    BBMap map;
    map.color(12345);
    map.Connect(Save(SmallMap(description)));
    EXPECT_EQ(map.color(), colour) << description;
  }
  for (const std::int32_t type : {bbm::kColoured, bbm::kUnattributed}) {
    BbmRecordWriter w(Fields(type, "HYDR"));
    w.AddLine(1, {0, 10}, {0, 10}, {});
    BBMap map;
    map.color(12345);
    map.Connect(Save(w));
    EXPECT_EQ(map.color(), 0) << type;
  }
  // The command form keeps whatever colour the map had.
  BbmCommandWriter c(Fields(bbm::kCommands, "HYDR"));
  c.End(false);
  BBMap map;
  map.color(12345);
  map.Connect(Save(c));
  EXPECT_TRUE(map.Connected());
  EXPECT_EQ(map.color(), 12345);
}

TEST_F(BbmTest, UnknownRecordTypeEndsTheIndexWithoutMessage) {
  BbmRecordWriter w(Fields(bbm::kAttributed));
  w.AddLine(1, {0, 10}, {0, 10}, {{50, 412}});
  w.AddEndMark(0);
  w.AddLine(2, {20, 30}, {20, 30}, {{50, 412}});
  w.AddPoint(3, 5, 5, {{300, 1}});
  BBMap map(&ui_);
  map.Connect(Save(w));
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.LineIndex().size(), 1u);
  EXPECT_TRUE(map.PointIndex().empty());
  map.Draw(g_, true, true, true);
  EXPECT_EQ(OpsOf(Kind::Polyline).size(), 1u);
  ui_.Verify();
}

TEST_F(BbmTest, TruncatedAndOverrunFilesFailNamingTheFile) {
  const std::string good = SmallMap().Bytes();
  auto expectFailure = [&](const std::string& bytes, const std::string& name, const char* part) {
    const std::string path = SaveBytes(bytes, name);
    BBMap map(&ui_);
    try {
      map.Connect(path);
      ADD_FAILURE() << name << " connected";
    } catch (const BbmError& e) {
      EXPECT_NE(std::string(e.what()).find(path), std::string::npos) << e.what();
      EXPECT_NE(std::string(e.what()).find(part), std::string::npos) << e.what();
    }
    EXPECT_FALSE(map.Connected()) << name;
  };
  // Cut inside the header, inside the first line's vertices, inside a record type.
  expectFailure(good.substr(0, 200), "header.bbm", "truncated");
  expectFailure(good.substr(0, 296 + 40), "vertices.bbm", "line record 1");
  expectFailure(good + "\x01\x7F", "tail.bbm", "truncated");
  // A vertex count far beyond the file.
  expectFailure(Patched(good, 296 + 16, 0x10000000), "overrun.bbm", "line record 1");
  expectFailure(Patched(good, 296 + 16, -5), "negative.bbm", "negative count");
  // Counts whose product leaves 64 bits: vertices times the bytes of a vertex.
  expectFailure(Patched(Patched(good, 296 + 16, 0x7FFFFFFF), 296 + 8, 0x7FFFFFFF), "product.bbm",
                "line record 1");
  // More line records than the header counts.
  expectFailure(Patched(good, bbm::kCountsOffset + 4, 1), "counts.bbm", "more line records");
  expectFailure(Patched(good, bbm::kCountsOffset, -1), "header-counts.bbm",
                "negative record count");
  ui_.Verify();
}

TEST_F(BbmTest, FewerRecordsThanCountedKeepsWhatIsThere) {
  const std::string bytes = Patched(SmallMap().Bytes(), bbm::kCountsOffset + 4, 1000000000);
  BBMap map;
  map.Connect(SaveBytes(bytes));
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.LineIndex().size(), 2u);
  EXPECT_EQ(map.Header().LineCount, 1000000000);
}

TEST_F(BbmTest, ProjectionIsReadAtItsOffset) {
  BbmHeaderFields f = Fields(bbm::kAttributed);
  f.projection = 3101;
  BbmRecordWriter w(f);
  EXPECT_EQ(GetBBMProjection(Save(w)), 3101);
  // Only the zone is read: a file with a wrong version still tells it.
  f.patch = 9;
  EXPECT_EQ(GetBBMProjection(Save(BbmRecordWriter(f), "v.bbm")), 3101);
  const std::string shortFile = SaveBytes(std::string(262, 'x'), "short.bbm");
  try {
    GetBBMProjection(shortFile);
    ADD_FAILURE() << "a short file has no projection";
  } catch (const BbmError& e) {
    EXPECT_NE(std::string(e.what()).find(shortFile), std::string::npos);
  }
  EXPECT_THROW(GetBBMProjection((temp_ / "none.bbm").string()), BbmError);
}

TEST_F(BbmTest, WriterLaysOutHeaderAndRefusesBadInput) {
  BbmHeaderFields f = Fields(bbm::kColoured);
  f.bounds = std::array<std::int32_t, 4>{-5, -6, 7, 8};
  BbmRecordWriter w(f);
  w.AddLine(1, {1, 2}, {3, 4}, {{1, 255}}, 1, {9, 10});
  const std::string bytes = w.Bytes();
  ASSERT_EQ(bytes.size(), 296u + 36 + 8 + 2 * 12);
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  EXPECT_EQ(bytes.substr(0, 4), "*BBM");
  EXPECT_EQ(bytes.substr(16, 8), "Test map");
  EXPECT_EQ(bytes[16 + 79], ' ');  // padded with blanks
  EXPECT_EQ(bbm::GetInt32(p + 256), bbm::kColoured);
  EXPECT_EQ(bbm::GetInt32(p + 272), 1);  // one line
  EXPECT_EQ(bbm::GetInt32(p + 280), -5);
  EXPECT_EQ(bbm::GetInt32(p + 292), 8);
  EXPECT_EQ(bbm::GetInt32(p + 296), bbm::kLineRecord);
  EXPECT_EQ(bbm::GetInt32(p + 296 + 36 + 8 + 8), 9);  // first vertex's extra value

  BbmHeaderFields longTitle = Fields(bbm::kAttributed);
  longTitle.title = std::string(81, 'a');
  EXPECT_THROW(BbmRecordWriter{longTitle}, InvalidArgumentError);
  EXPECT_THROW(BbmRecordWriter{Fields(bbm::kCommands)}, InvalidArgumentError);
  EXPECT_THROW(w.AddLine(2, {1, 2}, {3}, {}), InvalidArgumentError);
  EXPECT_THROW(w.AddLine(2, {1, 2}, {3, 4}, {}, 1, {1}), InvalidArgumentError);
  BbmCommandWriter c(Fields(bbm::kCommands));
  EXPECT_THROW(c.Colour(16), InvalidArgumentError);
  EXPECT_THROW(w.Save((temp_ / "no" / "such" / "dir.bbm").string()), Error);
}

TEST(BbmThinning, DropsVerticesWithinAPixelKeepingTheEnds) {
  const std::vector<std::int32_t> xs = {0, 3, 6, 9, 12, 100, 101, 102};
  const std::vector<std::int32_t> ys = {0, 1, 2, 3, 4, 50, 50, 51};
  std::vector<std::int32_t> ox, oy;
  ThinPolyline(xs.data(), ys.data(), 8, 10.0, ox, oy);
  EXPECT_EQ(ox, (std::vector<std::int32_t>{0, 12, 100, 102}));
  EXPECT_EQ(oy, (std::vector<std::int32_t>{0, 4, 50, 51}));
  ThinPolyline(xs.data(), ys.data(), 8, 0.0, ox, oy);
  EXPECT_EQ(ox, xs);
  ThinPolyline(xs.data(), ys.data(), 8, std::numeric_limits<double>::quiet_NaN(), ox, oy);
  EXPECT_EQ(ox, xs);
  ThinPolyline(xs.data(), ys.data(), 1, 10.0, ox, oy);
  EXPECT_EQ(ox, (std::vector<std::int32_t>{0}));
  // A line inside one pixel keeps both ends.
  ThinPolyline(xs.data(), ys.data(), 3, 1000.0, ox, oy);
  EXPECT_EQ(ox, (std::vector<std::int32_t>{0, 6}));
}

}  // namespace
}  // namespace tarno::testing
