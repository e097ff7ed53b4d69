// A project in a temporary folder and openers whose maps are plain files: a file
// opens when its first line is "ok", and its extents are the four numbers of the
// second line (Left Right Top Bottom) when there is one.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "basemaps/catalogue.h"
#include "core/error.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::test {

class FakeLayer : public BaseMapLayer {
 public:
  FakeLayer(std::string name, bool raster, std::optional<MapExtents> e)
      : name_(std::move(name)), raster_(raster), extents_(e) {}
  const std::string& Name() const override { return name_; }
  bool IsRaster() const override { return raster_; }
  std::optional<MapExtents> Extents() const override { return extents_; }
  void Draw(VGraphGDI&) override {}

 private:
  std::string name_;
  bool raster_;
  std::optional<MapExtents> extents_;
};

inline std::unique_ptr<BaseMapLayer> OpenFake(const BaseMapRow& row, bool raster) {
  std::ifstream in(row.MapName);
  std::string first;
  if (!in || !std::getline(in, first) || first != "ok")
    throw Error("The map " + row.MapName + " cannot be read");
  std::optional<MapExtents> e;
  std::string second;
  if (std::getline(in, second)) {
    std::istringstream s(second);
    MapExtents x;
    if (s >> x.Left >> x.Right >> x.Top >> x.Bottom) e = x;
  }
  return std::make_unique<FakeLayer>(row.MapName, raster, e);
}

class CatalogueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    project_ = (dir_ / "maps.trn").string();
    DBNewDatabase(project_, "maps", true, true);
    setenv("TARNO_CONFIG_DIR", (dir_ / "config").string().c_str(), 1);
    openers_.bbm = [](const BaseMapRow& r) { return OpenFake(r, false); };
    openers_.shape = openers_.bbm;
    openers_.cad = openers_.bbm;
    openers_.raster = [](const BaseMapRow& r) { return OpenFake(r, true); };
    openers_.worldFileExists = [this](const std::string& p) { return georeferenced_.count(p) > 0; };
    openers_.buildOverviews = [this](const std::string& p) { overviewsBuilt_.push_back(p); };
  }
  void TearDown() override { unsetenv("TARNO_CONFIG_DIR"); }

  // A map file that the fake openers read (good) or refuse.
  std::string Map(const std::string& name, bool good = true, const std::string& extents = "") {
    const std::string path = (dir_ / name).string();
    WriteFile(path, good ? "ok\n" + extents + "\n" : "garbage\n");
    return path;
  }

  TempDir dir_{"tarno-catalogue"};
  std::string project_;
  BaseMapOpeners openers_;
  std::set<std::string> georeferenced_;
  std::vector<std::string> overviewsBuilt_;
  ScriptedUserInterface ui_;
};

}  // namespace tarno::test
