// Questions to a present solution at one point, without a new solve: the Instant
// Inspector ("_INSPECT.DAT", the "Model Results" box), the solver integrity check
// (difference quotients of the heads at six neighbours against the analytic
// velocities), the time of evaluation (SET_TIME) and one streamline through a point
// ("_TRACE.DAT").
//
// Each question writes a small command file of its own into the project's
// directory (with logs of its own, so that the logs of the last solve stay), runs
// the solver on it with " load " of the saved solution and reads the file it
// leaves. A run takes a few milliseconds for the solver; the rest is the start of
// the process.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "core/coords.h"
#include "core/ui_port.h"
#include "solver/plot_files.h"
#include "solver/solve_controller.h"
#include "solver/solve_dialogs.h"

namespace tarno {

// The settings of the Instant Inspector (the properties of its dialog), held by the
// session; a closed or newly opened project starts from these defaults.
struct InspectorSettings {
  double StepSize = 1.0;        // of the integrity check, in base map units
  double Elevation = 0.0;       // of evaluation, in computational units
  bool InspectAtTop = true;     // chkTop: at the top of the saturated thickness
  bool TraceBackwards = false;  // chkTraceBackwards: one streamline backward in time
  bool IntegrityCheck = false;  // switched on by the Solver Integrity Check entry
  // The direction of a traced streamline: 1 forward, -1 backward.
  int TraceDirection() const { return TraceBackwards ? -1 : 1; }
};

// "Instant Inspector Settings...": the dialog model of the settings above.
class InspectorDialog : public DialogModel {
 public:
  static constexpr const char* kName = "Inspector";
  static constexpr const char* kTitle = "Instant Inspector Settings...";
  static constexpr const char* kStepCaption = "Solver Integrity Step Size";
  static constexpr const char* kElevationCaption = "Inspection Elevation";
  static constexpr const char* kTopCaption = "Inspect at top of saturated thickness";
  static constexpr const char* kBackwardsCaption = "Trace backwards in time";
  std::string DialogName() const override { return kName; }

  // Fills the fields from `settings`; the unit of the step follows the base map's unit.
  void Load(const InspectorSettings& settings, bool basemapMeters);
  // A step size at or below zero: "Invalid Value" and the dialog stays (false).
  // Otherwise the fields go to Settings and Result is 1; the caller takes Settings.
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }

  InspectorSettings Settings;  // as loaded, and as accepted by OK

  std::string dataStepSize = "1";
  std::string lblStepUnit = "m";  // "m" or "ft"
  std::string tbElevation = "0";
  bool chkTop = true;
  bool chkTraceBackwards = false;
  int Result = 2;  // 1 OK, 2 Cancel
};

// The values of one point record of the inspection, in the solver's model units.
struct InspectedPoint {
  double x = 0, y = 0, z = 0;
  double potential = 0;
  double qx = 0, qy = 0;
  double vx = 0, vy = 0;
  double head = 0;
  double vz = 0;
  double porosity = 0, conductivity = 0, base = 0, recharge = 0;
  // The elevation of the salt water interface under the point, from the interface
  // record that follows the point when the interface is on (-9999: none there).
  std::optional<double> interfaceElevation;
  // The leakage rate of the leakage grid's cell under the point, from the cell
  // leakage record that follows the point when the project has a leakage grid.
  std::optional<double> leakage;
};

// The elevation of an interface record ("@", "interface", X, Y, the elevation);
// nothing when the line is no interface record.
std::optional<double> ParseInterfaceRecord(const std::string& line);
// The rate of a cell leakage record ("@", "cell_leakage", X, Y, the rate); nothing
// when the line is no such record.
std::optional<double> ParseCellLeakageRecord(const std::string& line);

// Reads a point record ("@" and its fields, core/solver_files.h); nothing when the
// line is no point record or has too few fields.
std::optional<InspectedPoint> ParseInspectedPoint(const std::string& line);

// What an inspection file asks for, in model coordinates.
struct InspectRequest {
  std::string baseName;
  double time = 0;
  double x = 0, y = 0;
  std::optional<double> z;  // nothing: at the top of the saturated zone
  bool interfacePoint = false;
  // The project has a leakage grid (ModflowTarno.GridPresent): the leakage of the
  // cell under the point is asked for too.
  bool leakagePoint = false;
  // The six neighbours of the integrity check: +-step along X, Y and Z.
  bool neighbours = false;
  double step = 0;        // model units
  double neighbourZ = 0;  // the elevation the neighbours are taken around
};

// The text of "_INSPECT.DAT" for a request (CR LF lines).
std::string InspectCommandText(const InspectRequest& request);

// The lines of the "Model Results" box for a point whose map coordinates are
// (xMap, yMap). Values go through " 0.0000E+00"; a value of 1E+05 or more in size
// through "########.0", since the exponent form would drop its units. The
// "Leakage" line stands after the head (and the interface) when the point carries
// the leakage of a grid cell.
std::vector<std::string> ModelResultsLines(const InspectedPoint& p, double xMap, double yMap);

// The integrity check from the centre and its six neighbours (order: x+, x-, y+,
// y-, z+, z-), `step` in model units. Aquifer base and thickness of the Model row
// give the saturated thickness of the discharge's divergence.
void ComputeIntegrity(const InspectedPoint& centre, const std::array<InspectedPoint, 6>& neighbours,
                      double step, double aquiferBase, double aquiferThickness,
                      SolverIntegrity& out);

// What an inspection did, for the callers and the tests.
struct InspectReport {
  bool ran = false;  // the solver ran and its point was read
  InspectedPoint point;
  std::vector<std::string> lines;  // of the "Model Results" box
  bool integrity = false;          // the integrity dialog was filled and shown
  SolverIntegrity integrityValues;
  int solverRuns = 0;
};

// The message of an inspection or a trace without a solution.
inline constexpr const char* kNoSolutionTitle = "Error";
inline constexpr const char* kNoSolutionText =
    "No solution is present.  Solve the model and try again.";

// ModelInspectResults: everything at the point (xMap, yMap) of the map. Without a
// solution the message above, before any file is written. Shows the "Model
// Results" box and, with the integrity check on, the SolverIntegrity dialog.
// Errors are reported by TARNOErrorAnalysis.
InspectReport ModelInspectResults(SolveContext& ctx, const InspectorSettings& inspector,
                                  double xMap, double yMap);

// SolverIntegrityCheck_Click: tells how the data come and switches the check on.
void SolverIntegrityCheck_Click(UserInterface& ui, InspectorSettings& inspector);

// SET_TIME_Click: asks for the time of evaluation and regrids. Without a solution
// the message "Can't set time". True when the time was changed.
bool SET_TIME_Click(SolveContext& ctx);

// The text of "_TRACE.DAT" for one streamline from (x, y, z) of the model, inside
// the map window given in model coordinates.
struct TraceRequest {
  std::string baseName;
  double time = 0;
  double left = 0, bottom = 0, right = 0, top = 0;
  std::string maxTime;   // the text of tbMaxTime
  std::string stepText;  // empty: the solver's default step
  double x = 0, y = 0, z = 0;
  int direction = 1;
};
std::string TraceCommandText(const TraceRequest& request);

// ModelTraceOneStreamline: traces the streamline through (xMap, yMap), appends its
// lines to "<base>.PTH" and returns it in model coordinates (nothing after a
// message). The caller redraws the pathlines.
std::optional<Pathline> ModelTraceOneStreamline(SolveContext& ctx,
                                                const InspectorSettings& inspector, double xMap,
                                                double yMap);

}  // namespace tarno
