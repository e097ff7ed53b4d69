#pragma once
// The command language of the solver: a reader that turns a command file into
// a list of steps (what to build, solve, save, load and extract, in order) and a
// list of the problems met on the way. The reader does no mathematics and opens
// no files; it only reads text, so that it can be exercised with any input.
//
// Rules of the language as read here:
// - one command per line; LF or CR LF line ends; lines of blanks are skipped;
// - a line whose first character is '*' is a comment;
// - keywords are case-insensitive and may carry trailing blanks; leading blanks
//   are not required (the wall lines "slurry ..." have none);
// - a line whose first item is a number (or, in the extract menu, the word
//   "gage" or "lake_stage") is a data line of the open menu;
// - numbers come in fixed or exponent form, with or without a digit before the
//   point (".1234567E+02", "-.5E+01", "12.000000E+00");
// - answer lines ("yes", "y") are accepted anywhere and change nothing;
// - " quit" closes the innermost open menu and does nothing at the top level;
//   a top-level command met inside a menu closes the open menus first (reported);
// - a parameter field ("!name!", "! name !") where a number belongs is fatal;
// - an unknown command or an unreadable data line is reported and skipped;
// - " stop" ends the file; later lines are not read.

#include "engine/model.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarno::engine {

// Something the reader or the run has to tell the user, tied to a line.
struct Diagnostic {
  int line = 0;          // 1-based line of the command file; 0 when not tied to a line
  std::string text;      // the line as read (shortened when very long)
  std::string message;   // what is wrong and what was done about it
};

// ---- Elements, in the model's own types ------------------------------------

// Everything an element menu added to the model, as the command file gives it: the
// reader fills the model's types (engine/model.h) with the line of each element; the
// run checks each element once (engine/run_model.cpp) and adds those it keeps. A
// string's lake links stay as given (`lakeName`, `levels`) until the run makes it a
// lake edge; its label is set by the run from its first segment's.
struct ModelElements {
  std::vector<Well> wells;
  std::vector<PartialWell> partialWells;
  std::vector<TheisWell> theisWells;
  std::vector<Pond> ponds;
  std::vector<LineSinkString> lineSinks;
  std::vector<Inhomogeneity> inhomogeneities;
  std::vector<Wall> walls;
  std::vector<Lake> lakes;
  bool empty() const {
    return wells.empty() && partialWells.empty() && theisWells.empty() && ponds.empty() && lineSinks.empty() &&
           inhomogeneities.empty() && walls.empty() && lakes.empty();
  }
};

// What one aquifer menu set; unset values keep what they were.
struct AquiferInput {
  std::optional<double> base, permeability, thickness, porosity;
  std::optional<std::array<double, 3>> interface;  // fresh gravity, salt gravity, sea level
  std::optional<std::array<double, 2>> uniflow;    // Qx0, Qy0
  std::optional<std::array<double, 3>> reference;  // x, y, head
  int interfaceLine = 0;
};

struct WindowInput {
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;  // Left, Bottom, Right, Top
};

// ---- Results requested --------------------------------------------------

struct ExtractPoint {
  enum class Kind { Point, Gage, LakeStage };
  int line = 0;
  Kind kind = Kind::Point;
  double x = 0, y = 0;
  std::optional<double> z;  // elevation of evaluation, when the line gives one
  std::string label;
};

enum class ExtractRequest {
  WellDischarge,
  WellHead,
  PartialWellDischarge,
  PartialWellHead,
  TheisWell,
  LineSinkDischarge,
  LineSinkHead,
  Inhomogeneity,
  Leakage,
};

struct FluxLineInput {
  int line = 0;
  std::string label;
  std::vector<std::array<double, 2>> points;
};

struct InterfacePointInput {
  int line = 0;
  double x = 0, y = 0;
  // A ` cell_leakage x y` line: the leakage rate of the grid cell under the point
  // instead of the interface's elevation.
  bool cellLeakage = false;
};

struct ExtractInput {
  int line = 0;
  std::string file;  // as given after " file", empty when none was given
  std::vector<ExtractPoint> points;
  std::vector<InterfacePointInput> interfacePoints;
  std::vector<ExtractRequest> requests;  // in the order given, each once
  std::vector<FluxLineInput> fluxLines;
};

// What a grid is computed from: the settings in force when " go" is read.
struct GridSettings {
  std::optional<WindowInput> window;                // none: the layout window
  std::optional<std::array<double, 2>> elevations;  // Z of the two corners, when given
  int horizontalPoints = 0;                         // 0: not given
  std::string plot;                                 // empty: not given (heads)
};

// One action of a grid menu. The order of go, save, minusgrid and surfer within
// a block matters (a save keeps the grid computed last, a surfer writes the grid
// as it stands after the differences before it), so they are kept in one list.
struct GridAction {
  enum class Kind { Go, Save, MinusGrid, Surfer };
  Kind kind = Kind::Go;
  int line = 0;
  std::string name;       // save, minusgrid, surfer
  GridSettings settings;  // go
};

struct GridInput {
  int line = 0;
  GridSettings settings;  // as they stand at the end of the block
  std::vector<GridAction> actions;
  bool go = false;        // at least one " go"
};

struct TracePointInput {
  int line = 0;
  double x = 0, y = 0, z = 0, direction = 1;
};

struct TraceWellInput {
  int line = 0;
  double x = 0, y = 0, z = 0;
  int particles = 0;
};

// A trace block: the particles are traced at its end when it held a " go".
struct TraceInput {
  int line = 0;
  std::string file;
  int fileLine = 0;
  std::optional<double> time, step;
  int timeLine = 0, stepLine = 0;
  std::vector<TracePointInput> points;
  std::vector<TraceWellInput> wells;
  bool go = false;
  int goLine = 0;
};

struct LeakageInput {
  int line = 0;
  std::optional<std::array<double, 2>> origin;
  std::optional<std::array<double, 5>> solve;
  std::vector<std::array<double, 5>> checks;
};

// ---- Steps --------------------------------------------------------------

struct LogCommand {
  enum class Kind { Error, Message, Echo };
  Kind kind = Kind::Error;
  std::string file;
};
struct TitleCommand { std::string text; };
struct BaseNameCommand { std::string name; };
struct OriginCommand { double x0 = 0, y0 = 0; int code = 2; };
struct PictureCommand { std::string setting; };
struct SolveCommand {
  int inner = 1, outer = 3, store = 0, full = 1;
  bool conjunctive = false;
  // The word after the four numbers: how the linear systems are solved.
  enum class Method { Automatic, Dense, Compressed } method = Method::Automatic;
};
struct TimeCommand { double time = 0; };
struct SaveCommand { std::string name; };
struct LoadCommand { std::string name; };
struct StopCommand {};

using StepData = std::variant<LogCommand, TitleCommand, BaseNameCommand, OriginCommand, PictureCommand,
                              AquiferInput, WindowInput, ModelElements, SolveCommand, TimeCommand,
                              SaveCommand, LoadCommand, ExtractInput, GridInput, TraceInput,
                              LeakageInput, StopCommand>;

struct Step {
  int line = 0;
  StepData data;
};

// The values of an estimation template's parameter fields for a plain solve: the
// parameter value file "<name>.TPV" beside the command file, one line per parameter, its
// name, blanks, its value; lines that start with '*' are comments.
struct ParameterValues {
  std::string file;  // its name, for the messages
  std::vector<std::pair<std::string, double>> values;
  // The value of a field's name (the marks and padding blanks removed), compared
  // without regard to case; none when the file lacks it.
  std::optional<double> find(std::string_view name) const;
};
// Reads the text of a parameter value file; a line that is neither a comment, empty, nor
// a name and a number is reported in `problems` ("line N: ...") and skipped.
ParameterValues parseParameterValues(std::string_view text, std::string file,
                                     std::vector<std::string>* problems = nullptr);

// A parameter field that took its value from the parameter value file.
struct ParameterUse {
  int line = 0;
  std::string field;  // as written, with its marks
  double value = 0.0;
};

// The whole command file as read.
struct CommandFile {
  std::vector<std::string> lines;    // every line read (up to " stop"), line ends removed
  std::vector<Step> steps;           // in the order of the file
  std::vector<Diagnostic> problems;  // reported in the error log, the run goes on
  std::optional<Diagnostic> fatal;   // set when reading had to stop (a parameter field)
  bool stopped = false;              // " stop" was read
  std::vector<ParameterUse> parameters;  // fields read from the parameter value file
};

// Limits that keep the reader bounded whatever the input.
inline constexpr size_t kMaxLineLength = 65536;    // longer lines are reported and skipped
inline constexpr size_t kMaxDataItems = 20000000;  // data lines kept, all kinds together
inline constexpr size_t kMaxProblems = 10000;      // further problems are counted, not listed
inline constexpr int kMaxWellParticles = 10000;   // particles of one " well" line of a trace

// Reads a command file. A parameter field where a number belongs takes its value from
// `values`; without them, or when they lack the field's name, the field is fatal.
CommandFile parseCommandFile(std::string_view text, const ParameterValues* values = nullptr);

// Reads one number as the command files write it: fixed or exponent form, an
// optional sign, with or without a digit before the point. The whole token must
// be used, and the value must be finite.
std::optional<double> parseNumber(std::string_view token);

// True when `token` is a parameter field of an estimation template ("!name!").
bool isParameterField(std::string_view token);

// Splits a line into items: blanks and tabs separate items; a parameter field
// written with inner blanks ("! name !") is one item.
std::vector<std::string_view> splitItems(std::string_view line);

// Separates numbers that a mask wrote without a blank between them: after an
// exponent of two digits ("4.5678900E+0310.00") or at a sign that does not
// belong to an exponent ("10.00-1"). Items that are numbers, or that cannot be
// split into two numbers, stay as they are.
std::vector<std::string_view> splitGluedNumbers(const std::vector<std::string_view>& items);

}  // namespace tarno::engine
