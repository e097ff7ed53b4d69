// Replays the small fuzzing corpus of the shapefile readers: every input reads
// without a crash, fails only with an Error, and what reads holds together, through
// the classes and through the base map layer.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "basemaps/dbf.h"
#include "basemaps/shape_layer.h"
#include "basemaps/shapefile.h"
#include "display/canvas.h"
#include "display/vgraph.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;

struct Parts {
  std::string shx, shp, dbf;
};

// The layout of the fuzz target's inputs (fuzz/shape_fuzz.cpp): the lengths of the
// .shx and .shp parts in two bytes each, little-endian, then the parts; the rest
// is the .dbf.
Parts Split(const std::string& in) {
  Parts p;
  if (in.size() < 4) return p;
  auto u16 = [&](int at) {
    return static_cast<std::size_t>(static_cast<unsigned char>(in[at]) |
                                    (static_cast<unsigned char>(in[at + 1]) << 8));
  };
  const std::size_t shx = std::min(u16(0), in.size() - 4);
  const std::size_t shp = std::min(u16(2), in.size() - 4 - shx);
  p.shx = in.substr(4, shx);
  p.shp = in.substr(4 + shx, shp);
  p.dbf = in.substr(4 + shx + shp);
  return p;
}

TEST(ShapeCorpusTest, EveryInputReadsOrFailsWithAnError) {
  const fs::path dir = fs::path(TARNO_TEST_DATA_DIR) / "shape_corpus";
  ASSERT_TRUE(fs::is_directory(dir)) << dir;
  test::TempDir tmp("tarno-shape-corpus");
  int inputs = 0, opened = 0, records = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    ++inputs;
    const Parts p = Split(test::ReadFile(entry.path()));
    const std::string what = entry.path().filename().string();

    try {
      const DbfTable t = ReadDBFBytes(p.dbf, what);
      EXPECT_EQ(t.Records.size(), t.Deleted.size()) << what;
      for (const auto& r : t.Records) EXPECT_EQ(r.size(), t.Fields.size()) << what;
    } catch (const Error& e) {
      EXPECT_NE(std::string(e.what()).find(what), std::string::npos) << e.what();
    }

    ASSERT_TRUE(test::WriteFile(tmp / "c.shx", p.shx));
    ASSERT_TRUE(test::WriteFile(tmp / "c.shp", p.shp));
    ASSERT_TRUE(test::WriteFile(tmp / "c.dbf", p.dbf));
    try {
      CShapeFile f;
      f.SetFileSpec(CFileName((tmp / "c.shp").string()), CShapeFile::kOpenExisting);
      ++opened;
      EXPECT_THROW(f.Item(0), ShapeFileError) << what;
      EXPECT_THROW(f.Item(f.Count() + 1), ShapeFileError) << what;
      for (int i = 1; i <= std::min(f.Count(), 64); ++i) {
        try {
          const auto s = f.ItemOrNull(i);
          ++records;
          if (s->IsNull() || !std::isfinite(s->Left() + s->Right() + s->Top() + s->Bottom()))
            continue;
          EXPECT_LE(s->Left(), s->Right()) << what;
          EXPECT_LE(s->Bottom(), s->Top()) << what;
        } catch (const ShapeFileError& e) {
          EXPECT_FALSE(std::string(e.what()).empty());
        }
      }
    } catch (const ShapeFileError& e) {
      EXPECT_FALSE(std::string(e.what()).empty());
    }

    // The layer reads the whole map or throws an Error; a map it reads draws.
    BaseMapRow row;
    row.MapName = (tmp / "c.shp").string();
    row.UseColorField = true;
    row.ColorField = "ID";
    row.TextField = "NAME";
    try {
      auto layer = OpenShapeLayer(row);
      RecordingCanvas canvas(200, 200);
      VGraphGDI g;
      WorldWindow w{-100, 100, 100, -100};
      if (auto e = layer->Extents(); e && std::isfinite(e->Left + e->Right + e->Top + e->Bottom) &&
                                     e->Right - e->Left < 1e6 && e->Top - e->Bottom < 1e6)
        w = {e->Left - 1, e->Right + 1, e->Top + 1, e->Bottom - 1};
      if (g.vgGDIInitObject(canvas, w, false, 10.0) == 0) layer->Draw(g);
    } catch (const Error&) {}
  }
  EXPECT_GE(inputs, 6);
  EXPECT_GE(opened, 6);  // the seeds at least
  EXPECT_GT(records, 0);
}

}  // namespace
}  // namespace tarno
