// The model settings: the aquifer, the contour grid, the tracing of pathlines and
// the solver's options, all held in the single row of the Model table.
//
// ModelSettings is the dialog's model without a window. Load() fills the fields
// from the Model row, the desktop dialog (or a test) edits them, and Ok() checks
// every field in the dialog's order, stops at the first failure with its "Bad Entry"
// message and, when all pass, writes the row. Text fields keep their numbers as
// text, exactly as typed; they are read with the decimal parse of the rest of the
// program (an empty field reads as 0).
//
// The command file writer reads the same object: the iterations, the contour and
// path check boxes, the scenario tags of the aquifer, the unit factor.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "core/ui_port.h"

namespace tarno {

class Database;

// The things a contour grid can show, in the order of the dialog's option buttons.
// The value stored in CONTOURShow is the index + 1, negative when contours are off.
enum ContourKind : int {
  kContourHeads = 0,
  kContourPotentials = 1,
  kContourDischarge = 2,
  kContourInterface = 3,
  kContourStreamFunction = 4,
  kContourDrawdowns = 5,
};

// The grid resolution options.
enum ContourDetailOption : int {
  kContourCoarse = 0,    // CONTOURLevel 40
  kContourDetailed = 1,  // CONTOURLevel 80
  kContourCustom = 2,    // the value of tbContourLevel
};

// The default tracing step: 0.004 times the diagonal of the map window.
double ComputeDefaultStep(double x1, double y1, double x2, double y2);

// The most contour levels the contour program draws in one run.
inline constexpr long long kContourMaxLevels = 100000;

class ModelSettings {
 public:
  // Which field a failed check belongs to; the dialog brings its tab forward and
  // selects its text.
  enum class Field {
    None,
    Thickness,
    HydCond,
    Porosity,
    FreshGravity,
    SaltGravity,
    ContourMax,
    ContourInt,
    ContourLevel,
    ContourElevation,
    MaxTime,
    StepSize,
    Iterations,
    OuterIterations,
    ScenarioHydCond,
    ScenarioBaseElev,
  };

  // What an accepted OK changed, for the regrid and retrace questions.
  struct OkResult {
    bool accepted = false;
    Field failedField = Field::None;
    bool regrid = false;   // contour limits, level or kind changed
    bool retrace = false;  // tracing fields changed
    // The aquifer, the interface or the solver's settings changed: a solution of
    // the old settings no longer belongs to the model.
    bool invalidate = false;
  };

  // Reads the Model row ("select * from Model").
  void Load(Database& db);

  // Checks every field in order; the first failure shows its "Bad Entry" box
  // (exclamation icon) and returns that field. Nothing is written here.
  Field Validate(UserInterface& ui) const;

  // Validate, then write the Model row. On a failure nothing is written.
  OkResult Ok(Database& db, UserInterface& ui);

  // Selects a contour kind. Choosing the stream function swaps the interval field
  // to the number of stream lines and back, as the dialog does.
  void SelectContourProperty(int index);
  int ContourProperty() const { return contourProperty_; }
  // The caption of the interval field for the present kind.
  std::string ContourIntervalCaption() const;

  // The value written to CONTOURShow.
  int ContourShowValue() const;
  // The grid resolution in use: 40, 80 or the custom level.
  int DetailedContours() const;

  // The default step as its read-only field shows it: rounded to three
  // significant digits ("83.5", "0.0123", "1240"), as fine as a tracing step is
  // chosen by hand. The value itself stays as computed.
  std::string DefaultStepText() const;

  // Units.
  std::string LengthUnit() const { return computeMeters ? "meters" : "feet"; }
  std::string VelocityUnit() const { return computeMeters ? "meters/day" : "feet/day"; }

  // The inner iterations as the solve line writes them (the text of tbIterations
  // stored into a 32-bit integer; a text that is no number reads as 0).
  int Iterations() const;
  void SetIterations(const std::string& text) { tbIterations = text; }

  // Aquifer Properties.
  std::string tbBase = "0";
  std::string tbThickness = "1";
  std::string tbHydCond = "1";
  std::string tbRecharge = "0";
  std::string tbPorosity = "0.2";
  // Interface Flow.
  bool chkAddSaltwaterInterface = false;
  std::string tbFreshGravity = "1";
  std::string tbSaltGravity = "1.035";
  std::string tbAvgSeaLevel = "0";
  // Contours.
  bool chkContour = true;
  std::string tbContourMin = "0";
  std::string tbContourMax = "1";
  std::string tbContourInt = "1";  // the interval, or the number of stream lines
  int contourDetail = kContourCoarse;
  std::string tbContourLevel = "40";
  bool chkContourElevation = false;
  std::string tbContourElevation = "0";
  // Streamline Tracing Settings.
  bool chkComputePaths = true;
  std::string tbMaxTime = "3650";
  std::string tbStepSize = "1";
  bool chkDefaultStep = false;
  double DefaultStepSize = 0;  // shown by tbDefaultStepSize
  // Solver.
  std::string tbIterations = "1";
  bool chkOutsideLoop = false;
  std::string tbOuterIterations = "0";
  bool chkFastSolution = false;
  bool chkViewError = true;
  bool chkViewMessage = true;
  bool chkStoreMatrixOnDisk = false;
  bool chkConjunctive = false;
  // Scenarios: tbScenario[1] is the tag of the conductivity, tbScenario[2] that of
  // the base elevation; [0] is not used. No tag is an empty field here and
  // "__NONE__" in the store.
  bool chkScenarioHydCond = false;
  bool chkScenarioBaseElev = false;
  std::array<std::string, 3> tbScenario{"", "", ""};

  // Units of the project, from the Model row.
  bool basemapMeters = true;
  bool computeMeters = true;
  double BasemapConvert = 1.0;

 private:
  int contourProperty_ = kContourHeads;
  std::string hiddenInterval_ = "1";     // CONTOURInterval while stream lines show
  std::string hiddenStreamLines_ = "10";  // NumberStreamLines while the interval shows
  // What the grid and the traces depended on when the row was last read or written.
  std::string gridSnapshot_;
  std::string traceSnapshot_;
  std::string solutionSnapshot_;
  std::string GridSnapshot() const;
  std::string TraceSnapshot() const;
  std::string SolutionSnapshot() const;
};

}  // namespace tarno
