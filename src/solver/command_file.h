// The solver's command file: ModelWriteInputFile writes the whole file (header,
// logs, run commands, extraction, contour grid, tracing, " stop"), and within it
// ToolsWriteTARNOElements writes the aquifer and every element from the project's
// tables and prepares the blank rows of the result tables.
//
// The file is a line-oriented script in the solver's menu language. Every line,
// blank and picture mask is part of the format, including the irregular ones
// (the masks of the first well block, the literal zero of the sink disk with
// discharge, the capital I of the lake menu, the trace step line that is written
// whatever the default-step box shows). Lines end with CR LF.
//
// Both procedures take their inputs explicitly: the project file, the model
// settings, the program-wide solution state, the map window and the user interface
// for their messages, so that they run without a window.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/coords.h"
#include "core/ui_port.h"
#include "elements/extents.h"  // MapWindow, ModelExtents

namespace tarno {

class Database;
class ModelSettings;

// The five files ModelWriteInputFile can write.
enum WriteTypeCode : int {
  kWriteNewSolve = 1,      // <base>.dat: aquifer and elements, solve, save
  kWriteContinue = 2,      // <base>.dat: load the saved solution, more iterations
  kWriteRegrid = 3,        // regrid.dat: load, then only grid and trace
  kWritePestTemplate = 4,  // <base>.tpl, "ptf !" first
  kWriteUcodeTemplate = 5, // <base>.tpl
};

// The version written into the header line.
inline constexpr const char* kTarnoVersion = "2.2.4";

// The program-wide values that the writer reads and changes. ReferenceHead is the
// head far away when no uniform flow is computed; the two flags say that the grid
// or the traces of the present solution have been asked for already.
struct SolutionState {
  double ReferenceHead = 0.0;
  double SolutionTime = 0.0;
  bool ContoursPresent = false;
  bool PathsPresent = false;
  std::string Note;  // the map's note, set by the grid block
  // Set and cleared by the solve controller (solver/solve_controller.h): a solution
  // file belongs to the present model; the contourer has turned the grid into lines.
  bool SolutionPresent = false;
  bool ContourLinesPresent = false;
};

// The MODFLOW coupling as the writer sees it: whether a grid is defined, the
// solution switches of the leakage and the lower left corner of the leakage grid.
struct ModflowLink {
  bool GridPresent = false;
  bool IncludeLeakage = false;
  bool UseAverageHeads = false;
  bool UpdateResistances = false;
  bool UseSubGrid = false;
  double relax = 1.0;
  double LeakageX = 0.0;
  double LeakageY = 0.0;
};

// The advice dialog on the number of iterations ("Recommended # Iterations").
// The writer fills lblRecommended, lblRecommendedIterations and tbIterations; the
// dialog sets Result to 1 when the user confirms the text of tbIterations.
class IterationsDialog : public DialogModel {
 public:
  static constexpr const char* kName = "Iterations";
  static constexpr const char* kTitle = "Recommended # Iterations";
  std::string DialogName() const override { return kName; }

  // The advice with the recommended minimum set into the gap of blanks that
  // lblRecommended leaves for it.
  std::string AdviceText() const;
  // OK: a count that is not positive gets the message of the model settings ("Bad
  // Entry") and the dialog stays (false); otherwise Result is 1.
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }

  std::string lblRecommended;
  int lblRecommendedIterations = 0;
  std::string tbIterations;
  int Result = 2;  // 1 OK, 2 Cancel
};

// Everything ModelWriteInputFile reads besides its three arguments.
struct CommandFileContext {
  std::filesystem::path projectPath;  // the .trn file (ProjectSettings.DBName)
  ModelSettings* settings = nullptr;
  SolutionState* state = nullptr;
  MapWindow window;
  ModflowLink modflow;
  // The text of the iterations field of the continue dialog (write type 2).
  std::string continueIterations = "1";
  // Extents of the shown base maps, which widen the model's extents; none when no
  // base map is drawn.
  std::optional<ModelExtents> basemapExtents;
  UserInterface* ui = nullptr;
};

// Brings the extents and the model origin up to date before a solve: the extents
// of the elements (ElementExtents: all vertices, widened by the base maps, or the
// map window when there are no vertices; a single point widened by 1 in every
// direction; the uniform flow's reference point), and the origin, their centre,
// written to SOLVERX0 and SOLVERY0 of the Model row. Code that only shows the
// extents calls ElementExtents, which writes nothing.
ModelExtents ModelCheckExtents(Database& db, const MapWindow& savedWindow,
                               const std::optional<ModelExtents>& basemapExtents);

// The model origin and factor as they stand in the Model row
// ("select SOLVERX0,SOLVERY0 from Model;").
ModelFrame ModelRestoreModelOrigin(Database& db, double basemapConvert);

// The file a write type goes to, relative to the project's directory; empty for a
// type that does not exist.
std::string CommandFileName(int writeType, const std::string& baseName);

// Writes the command file of `writeType` into the project's directory
// (Project.TARNOBasePath) and returns its full path. Any other type shows the
// "Illegal Parameter" message and writes nothing (the result is then empty).
// Errors of the file system or the database are thrown (tarno::Error,
// tarno::StoreError); the caller's error trap reports them.
// The values of the aquifer's scenario tags that a plain solve's command file carries
// as parameter fields (tag, value as the untagged file writes it), and the parameter
// value file "<command file's base name>.TPV" beside the command file that gives them
// to the solver (removed when nothing is tagged). ModelWriteInputFile writes it with
// every new solve.
std::vector<std::pair<std::string, std::string>> AquiferParameterValues(Database& db,
                                                                        const ModelSettings& s);
void WriteParameterValues(const std::filesystem::path& commandFile, Database& db,
                          const ModelSettings& s);

std::filesystem::path ModelWriteInputFile(int writeType, bool solveOnly, bool silent,
                                          CommandFileContext& ctx);

// What ToolsWriteTARNOElements needs from its caller.
struct ElementWriterContext {
  const ModelSettings* settings = nullptr;
  const SolutionState* state = nullptr;
  MapWindow window;
  ModelExtents extents;
  ModelFrame frame;
  std::string baseName;  // the title line
  ModflowLink modflow;
  UserInterface* ui = nullptr;
};

// Appends the aquifer and element commands to `out` and, with `fillResults`,
// empties WLResults, LSResults, INResults and NFResults and inserts their blank
// rows (in one transaction). With `isTemplate` the scenario tags become parameter
// fields padded with `padCharacter`, and the result tables are left alone.
// `modelLevel` receives the model's complexity (1, 3, 4 or 6).
void ToolsWriteTARNOElements(std::ostream& out, Database& db, const ElementWriterContext& ctx,
                             bool fillResults, bool isTemplate, const std::string& padCharacter,
                             int& modelLevel);

}  // namespace tarno
