// Shared fixture of the solver coupling tests: a new project in a temporary
// directory, helpers to insert elements with their geometry, and file helpers.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "elements/element_store.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::testing {

class SolverProject : public ::testing::Test {
 protected:
  void SetUp() override {
    temp_.emplace("tarno_solver");
    dir_ = temp_->Path();
    path_ = dir_ / "model.trn";
    DBNewDatabase(path_, "Solver test", true, true);
    db_ = Database::Open(path_);
    Statement st = db_.PrepareRaw("update Project set TARNOBaseName=?, TARNOBasePath=?");
    st.Bind(1, std::string("golden")).Bind(2, dir_.string());
    st.Run();
  }

  void TearDown() override {
    db_.Close();
    temp_.reset();
  }

  // SQL straight to SQLite.
  void Sql(const std::string& sql) { db_.ExecuteRaw(sql); }

  // A stand-alone vertex; returns its VID.
  std::int64_t Point(double x, double y) { return AddVertex(db_, x, y, -1, -1); }

  // A string of vertices with Seq 0, 100, 200, ... (the Seq numbers the golden files
  // were written with); returns its PID.
  std::int64_t String(const std::vector<std::pair<double, double>>& xy, bool closed = false) {
    const std::int64_t pid = AddPolygon(db_, closed ? 1 : 0);
    std::int64_t seq = 0;
    for (const auto& [x, y] : xy) {
      AddVertex(db_, x, y, pid, seq);
      seq += 100;
    }
    return pid;
  }

  // One element of each kind, with numbers chosen so that every value of the file
  // can be worked out by hand. The extents are 0..200 by 0..100, so the model
  // origin is (100, 50) and model coordinates are map coordinates minus that.
  void BuildGoldenProject() {
    Sql("update Model set AQBase=0, AQThickness='20', AQHydCond=10, AQPorosity=0.25");
    const auto w1 = Point(120, 60);
    [[maybe_unused]] const auto w2 = Point(80, 40);  // its vertex is what counts
    const auto tp = Point(150, 75);
    const auto gage = Point(50, 25);
    const auto particle = Point(110, 55);
    ASSERT_EQ(w1, 1);
    ASSERT_EQ(particle, 5);
    Sql("insert into Wells (VID, Head, Radius, Label, NParticles, StartElev) values (1, 500, 0.5, "
        "'W1', 4, 5)");
    Sql("insert into Wells (VID, Head, Radius, Label, HeadSpecified) values (2, 12.5, 0.25, 'W2', "
        "1)");
    Sql("insert into TestPoints (VID, ObsHead, Label, Type) values (" + std::to_string(tp) +
        ", 11, 'TP1', 'Piezometer')");
    Sql("insert into TestPoints (VID, ObsHead, ObsStreamFlow, Label, Type) values (" +
        std::to_string(gage) + ", 0, 20, 'G1', 'Gage')");
    Sql("insert into Particles (VID, Elevation, SatdThick, Forward) values (5, 3, 1, 1)");
    ASSERT_EQ(String({{10, 10}, {30, 10}, {30, 30}}), 1);
    Sql("insert into Lakes (PID, Label, InterriorConductivity, AddedRechargeRate, "
        "Evapotranspiration, Resistance, Width, StageTableFilename, Color) values (1, 'L1', 100, "
        "0.002, 0.001, 10, 1, 'lake1.stg', 0)");
    ASSERT_EQ(String({{0, 0}, {40, 0}, {40, 20}}), 2);
    Sql("insert into Inhomogeneities (PID, Label, HydCond, BottomElevation, AverageHead, "
        "Recharge, Porosity, ChangeK, ChangeP) values (2, 'I1', 5, 3, 7, 0.001, 0.3, 1, 1)");
    ASSERT_EQ(String({{60, 90}, {100, 90}}), 3);
    Sql("insert into NoFlowStrings (PID, Label, HydCond, Thickness, Porosity, BottomElevation, "
        "Closed) values (3, 'B1', 0.01, 0.5, 0.25, 2, 0)");
    ASSERT_EQ(String({{150, 0}, {150, 40}, {180, 40}}), 4);
    Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
        "Resistance) values (4, 'S1', 0, 1, 8, 5)");
    ASSERT_EQ(String({{0, 100}, {200, 100}}), 5);
    Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
        "Resistance, Width, Depth) values (5, 'S2', 1, 10, 12, 2, 3, 1.5)");
    ASSERT_EQ(String({{190, 10}, {190, 50}, {190, 70}}), 6);
    Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
        "Resistance, Width, Depth, Routing, EndStream, EndInflow, OverlandFlow) values (6, 'R1', "
        "1, 9, 7, 1, 2, 0.5, 1, 1, 100, 0.5)");
    ASSERT_EQ(String({{100, 0}, {100, 100}}), 7);
    Sql("insert into FluxInspect (Label, PID) values ('F1', 7)");
  }

  // The settings as the dialog would show them for the project now.
  ModelSettings LoadSettings() {
    ModelSettings s;
    s.Load(db_);
    return s;
  }

  std::filesystem::path Dir() const { return dir_; }
  std::filesystem::path ProjectPath() const { return path_; }

  static std::string ReadFile(const std::filesystem::path& p) { return test::ReadFile(p); }

  static std::string DataFile(const std::string& name) {
    return ReadFile(std::filesystem::path(TARNO_TEST_DATA_DIR) / name);
  }

  // The lines of a CR LF text, without their line ends. Fails the test when a line
  // ends with a bare LF.
  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
      const std::size_t lf = text.find('\n', start);
      if (lf == std::string::npos) {
        lines.push_back(text.substr(start));
        ADD_FAILURE() << "text does not end with a line end";
        break;
      }
      if (lf == start || text[lf - 1] != '\r') ADD_FAILURE() << "bare LF in line " << lines.size() + 1;
      lines.push_back(text.substr(start, lf > start ? lf - 1 - start : 0));
      start = lf + 1;
    }
    return lines;
  }

  std::int64_t Count(const std::string& table) {
    Statement st = db_.PrepareRaw("select count(*) from " + table);
    st.Step();
    return st.GetInt64(0);
  }

  Database db_;

 private:
  std::optional<test::TempDir> temp_;
  std::filesystem::path dir_;
  std::filesystem::path path_;
};

// Compares two lists of lines and reports the first difference with its line number.
inline ::testing::AssertionResult SameLines(const std::vector<std::string>& expected,
                                            const std::vector<std::string>& actual) {
  const std::size_t n = std::min(expected.size(), actual.size());
  for (std::size_t i = 0; i < n; ++i) {
    if (expected[i] != actual[i])
      return ::testing::AssertionFailure() << "line " << i + 1 << ":\n  expected [" << expected[i]
                                           << "]\n  actual   [" << actual[i] << "]";
  }
  if (expected.size() != actual.size())
    return ::testing::AssertionFailure()
           << "line count " << actual.size() << ", expected " << expected.size()
           << (actual.size() > n ? "; first extra line [" + actual[n] + "]"
                                 : "; first missing line [" + expected[n] + "]");
  return ::testing::AssertionSuccess();
}

}  // namespace tarno::testing
