// The shape classes: the bytes of the files they write, what they read back, their
// errors, and what they do with files that don't hold together.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>

#include "basemaps/shapefile.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

std::int32_t BE(const std::string& b, std::size_t at) {
  std::uint32_t v = 0;
  for (int i = 0; i < 4; ++i) v = (v << 8) | static_cast<unsigned char>(b.at(at + i));
  return static_cast<std::int32_t>(v);
}
std::int32_t LE(const std::string& b, std::size_t at) {
  std::uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(b.at(at + i));
  return static_cast<std::int32_t>(v);
}
double Dbl(const std::string& b, std::size_t at) {
  std::uint64_t v = 0;
  for (int i = 7; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(b.at(at + i));
  return std::bit_cast<double>(v);
}
void SetBE(std::string& b, std::size_t at, std::int32_t value) {
  const auto v = static_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) b.at(at + i) = static_cast<char>((v >> (24 - 8 * i)) & 0xFF);
}
void SetLE(std::string& b, std::size_t at, std::int32_t value) {
  const auto v = static_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) b.at(at + i) = static_cast<char>((v >> (8 * i)) & 0xFF);
}

CPart Part(std::initializer_list<std::pair<double, double>> pts) {
  CPart p;
  for (auto [x, y] : pts) p.Add(x, y);
  return p;
}

class ShapeFileTest : public ::testing::Test {
 protected:
  std::string Spec(const std::string& name) const { return (dir_ / name).string(); }
  std::string Shp(const std::string& base) const { return test::ReadFile(dir_ / (base + ".shp")); }
  std::string Shx(const std::string& base) const { return test::ReadFile(dir_ / (base + ".shx")); }

  // A polyline file of two records: two parts of 2 and 3 points, then one of 2.
  void WriteRoads() {
    CShapeFile f;
    f.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kCreate, ShapeType::PolyLine);
    CPolyLine a;
    a.Add(Part({{1, 2}, {3, 4}}));
    a.Add(Part({{-5, 6}, {7, 8.5}, {9, -10}}));
    f.Add(a);
    CPolyLine b;
    b.Add(Part({{100, 200}, {101, 201}}));
    f.Add(b);
  }

  // What a reading of `base` raises for record `index`.
  std::optional<ShapeFileError> ErrorOf(const std::string& base, int index) {
    try {
      CShapeFile f;
      f.SetFileSpec(CFileName(Spec(base + ".shp")), CShapeFile::kOpenExisting);
      f.Item(index);
    } catch (const ShapeFileError& e) {
      return e;
    }
    return std::nullopt;
  }

  test::TempDir dir_{"tarno-shapefile"};
};

TEST_F(ShapeFileTest, ANewFileHasTwoEmptyHeadersOfFiftyWords) {
  CShapeFile f;
  f.SetFileSpec(CFileName(Spec("empty.shp")), CShapeFile::kCreate, ShapeType::Polygon);
  EXPECT_EQ(f.Count(), 0);
  for (const std::string& b : {Shp("empty"), Shx("empty")}) {
    ASSERT_EQ(b.size(), 100u);
    EXPECT_EQ(BE(b, 0), 9994);
    for (int k = 4; k < 24; ++k) EXPECT_EQ(b[k], 0);
    EXPECT_EQ(BE(b, 24), 50);
    EXPECT_EQ(LE(b, 28), 1000);
    EXPECT_EQ(LE(b, 32), 5);
    for (int k = 36; k < 100; ++k) EXPECT_EQ(b[k], 0) << k;  // extent 0 and the unused ranges
  }
  // It opens again as an empty polygon file.
  CShapeFile g;
  g.SetFileSpec(CFileName(Spec("empty.shp")), CShapeFile::kOpenExisting);
  EXPECT_EQ(g.Count(), 0);
  EXPECT_EQ(g.FileType(), ShapeType::Polygon);
}

TEST_F(ShapeFileTest, PolylinesRoundTripWithRecordLayoutIndexAndExtent) {
  WriteRoads();
  const std::string shp = Shp("roads"), shx = Shx("roads");
  // Record 1: 44 + 4 x 2 parts + 16 x 5 points = 132 bytes, 66 words; record 2:
  // 44 + 4 + 32 = 80 bytes, 40 words.
  ASSERT_EQ(shp.size(), 100u + 8 + 132 + 8 + 80);
  ASSERT_EQ(shx.size(), 116u);
  EXPECT_EQ(BE(shp, 24), static_cast<std::int32_t>(shp.size() / 2));
  EXPECT_EQ(BE(shx, 24), 58);
  EXPECT_EQ(BE(shx, 100), 50);  // offset in words
  EXPECT_EQ(BE(shx, 104), 66);  // content length in words
  EXPECT_EQ(BE(shx, 108), 50 + 4 + 66);
  EXPECT_EQ(BE(shx, 112), 40);
  EXPECT_EQ(BE(shp, 100), 1);  // record number
  EXPECT_EQ(BE(shp, 104), 66);
  EXPECT_EQ(LE(shp, 108), 3);       // shape type
  EXPECT_EQ(LE(shp, 108 + 36), 2);  // parts
  EXPECT_EQ(LE(shp, 108 + 40), 5);  // points
  EXPECT_EQ(LE(shp, 108 + 44), 0);  // part starts: running sums
  EXPECT_EQ(LE(shp, 108 + 48), 2);
  // The extent in both headers: Xmin, Ymin, Xmax, Ymax.
  for (const std::string& b : {shp, shx}) {
    EXPECT_EQ(Dbl(b, 36), -5);
    EXPECT_EQ(Dbl(b, 44), -10);
    EXPECT_EQ(Dbl(b, 52), 101);
    EXPECT_EQ(Dbl(b, 60), 201);
  }

  CShapeFile f;
  f.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kOpenExisting);
  EXPECT_EQ(f.Count(), 2);
  EXPECT_EQ(f.FileType(), ShapeType::PolyLine);
  EXPECT_EQ(f.Left(), -5);
  EXPECT_EQ(f.Bottom(), -10);
  EXPECT_EQ(f.Right(), 101);
  EXPECT_EQ(f.Top(), 201);
  auto s = f.Item(1);
  auto* line = dynamic_cast<CPolyLine*>(s.get());
  ASSERT_NE(line, nullptr);
  ASSERT_EQ(line->Count(), 2);
  ASSERT_EQ(line->Item(1).Count(), 2);
  ASSERT_EQ(line->Item(2).Count(), 3);
  EXPECT_EQ(line->Item(2).Item(2).X(), 7);
  EXPECT_EQ(line->Item(2).Item(2).Y(), 8.5);
  EXPECT_EQ(line->Item(2).Item(3).Y(), -10);
  EXPECT_EQ(line->Left(), -5);
  EXPECT_EQ(line->Top(), 8.5);
  EXPECT_EQ(line->Item(2).Right(), 9);
  auto s2 = f.Item(2);
  EXPECT_EQ(static_cast<CPolyLine&>(*s2).Item(1).Item(2).X(), 101);
}

TEST_F(ShapeFileTest, AddingToAnOpenedFileAppendsAndWidensTheExtent) {
  WriteRoads();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kOpenExisting);
    CPolyLine c;
    c.Add(Part({{500, -50}, {0, 0}}));
    f.Add(c);
    EXPECT_EQ(f.Count(), 3);
    EXPECT_EQ(f.Right(), 500);
    EXPECT_EQ(f.Bottom(), -50);
    EXPECT_EQ(f.Top(), 201);
  }
  CShapeFile g;
  g.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kOpenExisting);
  EXPECT_EQ(g.Count(), 3);
  EXPECT_EQ(static_cast<CPolyLine&>(*g.Item(3)).Item(1).Item(1).X(), 500);
  EXPECT_EQ(static_cast<CPolyLine&>(*g.Item(1)).Count(), 2);
}

TEST_F(ShapeFileTest, PointsMultipointsAndPolygonsRoundTrip) {
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(Spec("p.shp")), CShapeFile::kCreate, ShapeType::Point);
    f.Add(CPoint(1.25, -2.5));
    f.Add(CPoint());
    f.Add(CPoint(3, 4));
    EXPECT_EQ(f.Left(), 1.25);
    EXPECT_EQ(f.Top(), 4);
  }
  EXPECT_EQ(Shp("p").size(), 100u + 28 + 12 + 28);  // a null record holds only its type
  CShapeFile f;
  f.SetFileSpec(CFileName(Spec("p.shp")), CShapeFile::kOpenExisting);
  ASSERT_EQ(f.Count(), 3);
  auto p = f.Item(1);
  EXPECT_EQ(static_cast<CPoint&>(*p).X(), 1.25);
  EXPECT_EQ(static_cast<CPoint&>(*p).Y(), -2.5);
  EXPECT_TRUE(f.Item(2)->IsNull());  // a null record of a point file is a null point
  EXPECT_EQ(static_cast<CPoint&>(*f.Item(3)).Y(), 4);

  {
    CShapeFile m;
    m.SetFileSpec(CFileName(Spec("m.shp")), CShapeFile::kCreate, ShapeType::MultiPoint);
    CMultiPoint mp;
    mp.Add(1, 1);
    mp.Add(2, 5);
    mp.Add(-3, 0);
    m.Add(mp);
  }
  EXPECT_EQ(BE(Shx("m"), 104), (40 + 48) / 2);
  CShapeFile m;
  m.SetFileSpec(CFileName(Spec("m.shp")), CShapeFile::kOpenExisting);
  auto mp = m.Item(1);
  ASSERT_EQ(static_cast<CMultiPoint&>(*mp).Count(), 3);
  EXPECT_EQ(static_cast<CMultiPoint&>(*mp).Item(3).X(), -3);
  EXPECT_EQ(mp->Top(), 5);

  {
    CShapeFile g;
    g.SetFileSpec(CFileName(Spec("g.shp")), CShapeFile::kCreate, ShapeType::Polygon);
    CPolygon poly;
    poly.Add(Part({{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}));
    poly.Add(Part({{2, 2}, {8, 2}, {8, 8}, {2, 2}}));
    g.Add(poly);
  }
  CShapeFile g;
  g.SetFileSpec(CFileName(Spec("g.shp")), CShapeFile::kOpenExisting);
  auto poly = g.Item(1);
  auto& pg = static_cast<CPolygon&>(*poly);
  ASSERT_EQ(pg.Count(), 2);
  EXPECT_EQ(pg.Item(2).Count(), 4);
  EXPECT_EQ(pg.Distance(1, 5), 0.0);                      // inside the outer ring
  EXPECT_NEAR(pg.Distance(6, 4), std::sqrt(2.0), 1e-12);  // inside the hole: to the hole's edge
  EXPECT_EQ(pg.Distance(15, 5), 5.0);
}

TEST_F(ShapeFileTest, IndexLookupFailsBelowOneAndBeyondTheCount) {
  WriteRoads();
  for (int index : {0, -1, 3, 1000000}) {
    const auto e = ErrorOf("roads", index);
    ASSERT_TRUE(e) << index;
    EXPECT_STREQ(e->what(), shape_text::kOffsetTooLarge);
    EXPECT_EQ(e->number(), shape_error::kOffsetTooLarge);
  }
  EXPECT_FALSE(ErrorOf("roads", 2));
}

TEST_F(ShapeFileTest, CreateOverAnExistingFileLosesItsContentWhateverTheCase) {
  WriteRoads();
  std::filesystem::rename(dir_ / "roads.shx", dir_ / "ROADS.SHX");
  CShapeFile f;
  f.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kCreate, ShapeType::Point);
  f.Add(CPoint(1, 1));
  EXPECT_FALSE(std::filesystem::exists(dir_ / "ROADS.SHX"));
  CShapeFile g;
  g.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kOpenExisting);
  EXPECT_EQ(g.Count(), 1);
  EXPECT_EQ(g.FileType(), ShapeType::Point);
}

TEST_F(ShapeFileTest, OpeningFindsFilesWithoutRegardToCase) {
  WriteRoads();
  std::filesystem::rename(dir_ / "roads.shp", dir_ / "Roads.SHP");
  CShapeFile f;
  f.SetFileSpec(CFileName(Spec("ROADS.shp")), CShapeFile::kOpenExisting);
  EXPECT_EQ(f.Count(), 2);
}

TEST_F(ShapeFileTest, SetFileSpecErrors) {
  CShapeFile f;
  try {
    f.SetFileSpec(CFileName(Spec("none.shp")), CShapeFile::kOpenExisting);
    FAIL();
  } catch (const ShapeFileError& e) {
    EXPECT_EQ(e.number(), static_cast<int>(0x8004020Cu));
    EXPECT_EQ(std::string(e.what()), "The specified file " + Spec("none.shp") + " does not exist.");
    EXPECT_EQ(e.Source(), "C_ShapeFile::SetFileSpec");
  }
  // A main file without its index.
  WriteRoads();
  std::filesystem::remove(dir_ / "roads.shx");
  try {
    f.SetFileSpec(CFileName(Spec("roads.shp")), CShapeFile::kOpenExisting);
    FAIL();
  } catch (const ShapeFileError& e) {
    EXPECT_EQ(std::string(e.what()),
              "The specified file " + Spec("roads.shx") + " does not exist.");
  }
  try {
    f.SetFileSpec(CFileName(Spec("new.shp")), CShapeFile::kCreate);
    FAIL();
  } catch (const ShapeFileError& e) {
    EXPECT_EQ(e.number(), static_cast<int>(0x8004020Du));
    EXPECT_STREQ(e.what(), shape_text::kShapeTypeRequired);
  }
  // A folder that is not there.
  try {
    f.SetFileSpec(CFileName(Spec("no-folder/new.shp")), CShapeFile::kCreate, ShapeType::Point);
    FAIL();
  } catch (const ShapeFileError& e) {
    EXPECT_NE(std::string(e.what()).find("no-folder"), std::string::npos) << e.what();
  }
  // Nothing is bound after a failure.
  EXPECT_THROW(f.Add(CPoint(1, 1)), ShapeFileError);
  EXPECT_THROW(f.Item(1), ShapeFileError);
}

TEST_F(ShapeFileTest, AddRefusesShapesOfAnotherType) {
  struct Case {
    ShapeType file;
    std::unique_ptr<IShape> shape;
    const char* text;
  };
  std::vector<Case> cases;
  cases.push_back(
      {ShapeType::PolyLine, std::make_unique<CPoint>(1, 1), shape_text::kCannotAddPoint});
  cases.push_back(
      {ShapeType::Polygon, std::make_unique<CMultiPoint>(), shape_text::kCannotAddPoint});
  cases.push_back(
      {ShapeType::Point, std::make_unique<CPolyLine>(), shape_text::kCannotAddPolyLine});
  cases.push_back(
      {ShapeType::PolyLine, std::make_unique<CPolygon>(), shape_text::kCannotAddPolygon});
  cases.push_back({ShapeType::Point, std::make_unique<CRect>(), shape_text::kInvalidShapeType});
  for (auto& c : cases) {
    CShapeFile f;
    f.SetFileSpec(CFileName(Spec("t.shp")), CShapeFile::kCreate, c.file);
    try {
      f.Add(*c.shape);
      ADD_FAILURE() << c.text;
    } catch (const ShapeFileError& e) {
      EXPECT_STREQ(e.what(), c.text);
      EXPECT_EQ(e.number(), static_cast<int>(0x80040210u));
      EXPECT_EQ(e.Source(), "CShapeFile::Add");
    }
    EXPECT_EQ(f.Count(), 0);
    EXPECT_EQ(Shp("t").size(), 100u);
  }
}

TEST_F(ShapeFileTest, NullRecordsOfLineFilesAreATypeMismatchForItemButNullForItemOrNull) {
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(Spec("n.shp")), CShapeFile::kCreate, ShapeType::PolyLine);
    f.Add(CPolyLine());  // no parts: written as a null record
  }
  const auto e = ErrorOf("n", 1);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kTypeMismatch);
  CShapeFile f;
  f.SetFileSpec(CFileName(Spec("n.shp")), CShapeFile::kOpenExisting);
  EXPECT_TRUE(f.ItemOrNull(1)->IsNull());
  EXPECT_EQ(f.Left(), 0);  // a null shape leaves the extent
}

// Damaged files: each must fail with an error, never read outside its bytes.
TEST_F(ShapeFileTest, DamagedFilesFailWithTheirErrors) {
  WriteRoads();
  const std::string shp = Shp("roads"), shx = Shx("roads");
  auto write = [&](const std::string& s, const std::string& x) {
    ASSERT_TRUE(test::WriteFile(dir_ / "bad.shp", s));
    ASSERT_TRUE(test::WriteFile(dir_ / "bad.shx", x));
  };

  // A wrong file code in the index.
  std::string x = shx;
  SetBE(x, 0, 9995);
  write(shp, x);
  auto e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kInvalidShxCode);
  // An index shorter than its header.
  write(shp, shx.substr(0, 60));
  e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kInvalidShxCode);

  // An index entry pointing past the main file.
  x = shx;
  SetBE(x, 108, 100000);
  write(shp, x);
  e = ErrorOf("bad", 2);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kOffsetTooLarge);
  EXPECT_FALSE(ErrorOf("bad", 1));

  // The index pointing at the other record.
  x = shx;
  SetBE(x, 100, 50 + 4 + 66);
  SetBE(x, 104, 40);
  write(shp, x);
  e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kRecordMismatch);

  // Index and main file disagreeing on a length.
  x = shx;
  SetBE(x, 112, 30);
  write(shp, x);
  e = ErrorOf("bad", 2);
  ASSERT_TRUE(e);
  EXPECT_EQ(e->number(), shape_error::kRecordMismatch);
  EXPECT_NE(std::string(e->what()).find("bad.shp"), std::string::npos);

  // A length that runs past the end of the main file.
  x = shx;
  std::string s = shp;
  SetBE(x, 112, 4000);
  SetBE(s, 100 + 8 + 132 + 4, 4000);
  write(s, x);
  e = ErrorOf("bad", 2);
  ASSERT_TRUE(e);
  EXPECT_EQ(e->number(), shape_error::kBadRecord);
  EXPECT_NE(std::string(e->what()).find("runs past the end"), std::string::npos);

  // Point and part counts larger than the record.
  s = shp;
  SetLE(s, 108 + 40, 1000);
  write(s, shx);
  e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_EQ(e->number(), shape_error::kBadRecord);
  s = shp;
  SetLE(s, 108 + 36, -1);
  write(s, shx);
  EXPECT_TRUE(ErrorOf("bad", 1));
  // A part start table out of order, or beyond the points.
  s = shp;
  SetLE(s, 108 + 48, 9);
  write(s, shx);
  e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_NE(std::string(e->what()).find("part start table"), std::string::npos);
  s = shp;
  SetLE(s, 108 + 44, 1);
  SetLE(s, 108 + 48, 0);
  write(s, shx);
  EXPECT_TRUE(ErrorOf("bad", 1));

  // A record of another type than the file.
  s = shp;
  SetLE(s, 108, 5);
  write(s, shx);
  e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kTypeMismatch);

  // An index header claiming more entries than the file holds: the count follows
  // the header, the lookup the bytes that are there.
  x = shx;
  SetBE(x, 24, 58 + 400);
  write(shp, x);
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(Spec("bad.shp")), CShapeFile::kOpenExisting);
    EXPECT_EQ(f.Count(), 102);
    EXPECT_NO_THROW(f.Item(2));
  }
  e = ErrorOf("bad", 3);
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), shape_text::kOffsetTooLarge);

  // A file of an unhandled type (PolygonZ).
  x = shx;
  SetLE(x, 32, 15);
  write(shp, x);
  e = ErrorOf("bad", 1);
  ASSERT_TRUE(e);
  EXPECT_NE(std::string(e->what()).find("type 15"), std::string::npos);
}

TEST(ShapeClassesTest, CollectionsAreIndexedFromOneAndKeepTheirBoxes) {
  CPart part;
  part.Add(5, 5);
  part.Add(-1, 7);
  part.Add(3, -2);
  EXPECT_EQ(part.Left(), -1);
  EXPECT_EQ(part.Top(), 7);
  part.Remove(2);
  EXPECT_EQ(part.Left(), 3);
  EXPECT_EQ(part.Top(), 5);
  EXPECT_THROW(part.Item(0), Error);
  EXPECT_THROW(part.Item(3), Error);
  EXPECT_THROW(part.Remove(5), Error);

  CPolyLine line;
  line.Add(part);
  EXPECT_NEAR(line.Distance(4, 10), std::hypot(1.0, 5.0), 1e-12);  // nearest vertex (5, 5)
  EXPECT_EQ(line.Distance(4, 1.5), 0.0);                           // on the segment
  line.MakeNull();
  EXPECT_TRUE(line.IsNull());
  EXPECT_TRUE(std::isinf(line.Distance(0, 0)));

  CRect r;
  EXPECT_TRUE(r.IsEmpty());
  r.MakeXY(10, 0, 0, 20);
  EXPECT_EQ(r.Left(), 0);
  EXPECT_EQ(r.Right(), 10);
  EXPECT_EQ(r.Top(), 20);
  EXPECT_EQ(r.Bottom(), 0);
  EXPECT_EQ(r.Distance(5, 5), 0);
  EXPECT_EQ(r.Distance(13, 24), 5);
  EXPECT_TRUE(r.Intersects(10, 30, 20, 40));  // touching corners meet
  EXPECT_FALSE(r.Intersects(10.5, 30, 20, 40));
}

TEST(CFileNameTest, SplitsBaseAndExtension) {
  CFileName f("/data/maps.v2/roads.shp");
  EXPECT_EQ(f.GetBaseName(), "/data/maps.v2/roads");
  EXPECT_EQ(f.GetExtension(), "shp");
  f.SetExtension(".shx");
  EXPECT_EQ(f.GetFileSpec(), "/data/maps.v2/roads.shx");
  CFileName g("/data/maps.v2/roads");
  EXPECT_EQ(g.GetBaseName(), "/data/maps.v2/roads");
  EXPECT_EQ(g.GetExtension(), "");
  EXPECT_EQ(g.GetFileSpec(), "/data/maps.v2/roads");
  g.SetBaseName("C:\\maps\\lakes");
  g.SetExtension("dbf");
  EXPECT_EQ(g.GetFileSpec(), "C:\\maps\\lakes.dbf");
}

}  // namespace
}  // namespace tarno
