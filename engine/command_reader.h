#pragma once
// The reader of command files, internal to the engine: the state of one pass over a file
// and the readers of each menu. engine/command.cpp holds the pass itself (lines, numbers,
// opening and closing menus, the dispatch of commands and data lines); each menu group
// has a file of its own:
//   command_top.cpp        top level and the layout menu
//   command_aquifer.cpp    aquifer menu
//   command_wells.cpp      well, ppwell, twell and sinkdisk menus
//   command_linesinks.cpp  linesink menu
//   command_polygons.cpp   inhomogeneity menu (inhomogeneities, walls, lakes)
//   command_extract.cpp    extract (with its flux lines), grid and trace menus
//   command_leakage.cpp    leakage menu

#include "engine/command.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarno::engine::reader {

inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

inline char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

inline std::string lower(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = lowerAscii(c);
  return r;
}

// The item in double quotes, for messages.
inline std::string quoted(std::string_view s) {
  std::string r;
  r.reserve(s.size() + 2);
  r += '"';
  r += s;
  r += '"';
  return r;
}

inline std::string_view trim(std::string_view s) {
  size_t b = 0, e = s.size();
  while (b < e && isBlank(s[b])) ++b;
  while (e > b && isBlank(s[e - 1])) --e;
  return s.substr(b, e - b);
}

// Text of a line for a message: shortened, control characters shown as '?'.
inline std::string shown(std::string_view s) {
  constexpr size_t kShown = 160;
  std::string r;
  size_t n = std::min(s.size(), kShown);
  r.reserve(n + 3);
  for (size_t i = 0; i < n; ++i) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    r.push_back((c < 32 && c != '\t') || c == 127 ? '?' : static_cast<char>(c));
  }
  if (s.size() > kShown) r += "...";
  return r;
}

// Thrown to end reading at a fatal problem.
struct StopReading {};

enum class Menu {
  Top,
  Aquifer,
  Layout,
  Well,
  PartialWell,
  TheisWell,
  SinkDisk,
  LineSink,
  Inhomogeneity,
  Leakage,
  Extract,
  Flux,
  Grid,
  Trace,
  TracePoints,
};

inline const char* menuName(Menu m) {
  switch (m) {
    case Menu::Top: return "top level";
    case Menu::Aquifer: return "aquifer menu";
    case Menu::Layout: return "layout menu";
    case Menu::Well: return "well menu";
    case Menu::PartialWell: return "ppwell menu";
    case Menu::TheisWell: return "twell menu";
    case Menu::SinkDisk: return "sinkdisk menu";
    case Menu::LineSink: return "linesink menu";
    case Menu::Inhomogeneity: return "inhomogeneity menu";
    case Menu::Leakage: return "leakage menu";
    case Menu::Extract: return "extract menu";
    case Menu::Flux: return "flux line of the extract menu";
    case Menu::Grid: return "grid menu";
    case Menu::Trace: return "trace menu";
    case Menu::TracePoints: return "points list of the trace menu";
  }
  return "menu";
}

inline bool isExtractWord(const std::string& w) {
  return w == "file" || w == "interface" || w == "flux" || w == "well" || w == "ppwell" || w == "theis" ||
         w == "linesink" || w == "inhomogeneity" || w == "leakage";
}

inline bool isTraceWord(const std::string& w) {
  return w == "picture" || w == "file" || w == "time" || w == "step" || w == "points" || w == "well" || w == "go";
}

inline bool isTopLevelWord(const std::string& w) {
  static const char* const kWords[] = {"error",  "message", "echo",     "picture",  "bfname",        "modelorigin",
                                       "title",  "aquifer", "layout",   "well",     "ppwell",        "twell",
                                       "sinkdisk", "linesink", "inhomogeneity", "leakage", "solve", "time",
                                       "save",   "load",    "extract",  "grid",     "trace",         "stop"};
  for (const char* k : kWords)
    if (w == k) return true;
  return false;
}

enum class WellMode { None, Discharge, Head };

struct StreamVertex {
  int line = 0;
  double x = 0, y = 0;
  std::optional<double> head;
  std::string label;
};

class Reader {
 public:
  explicit Reader(const ParameterValues* values) : values_(values) {}

  CommandFile run(std::string_view text);

 private:
  CommandFile out_;
  const ParameterValues* values_ = nullptr;
  std::vector<Menu> menus_;  // open menus, innermost last; empty at the top level
  int lineNo_ = 0;
  std::string_view text_;
  std::vector<std::string_view> items_;
  size_t dataItems_ = 0;
  bool dataCapReported_ = false;
  size_t suppressed_ = 0;

  // Open blocks.
  int blockLine_ = 0;
  AquiferInput aquifer_;
  ModelElements elements_;
  WellMode wellMode_ = WellMode::None;
  bool lineSinkDischarge_ = false;  // linesink menu in discharge mode
  std::optional<size_t> string_;    // index of the open string in elements_.lineSinks
  std::vector<StreamVertex> streamVertices_;
  bool streamClosed_ = false;       // the bare last vertex of the stream was read
  // The open polygon: its kind and its index in elements_.inhomogeneities, walls or lakes.
  enum class PolygonKind { Inhomogeneity, Wall, Lake };
  std::optional<std::pair<PolygonKind, size_t>> polygon_;
  ExtractInput extract_;
  FluxLineInput flux_;
  GridInput grid_;
  TraceInput trace_;
  LeakageInput leakage_;

  Menu menu() const { return menus_.empty() ? Menu::Top : menus_.back(); }
  void pushStep(int line, StepData data) { out_.steps.push_back(Step{line, std::move(data)}); }
  LineSinkString* openString() { return string_ ? &elements_.lineSinks[*string_] : nullptr; }
  std::vector<Vertex>* openVertices();
  // Text after the keyword (the first item), trimmed.
  std::string argumentText() const { return rest(1); }

  // ---- the pass (command.cpp) ----------------------------------------------

  void report(std::string message);
  [[noreturn]] void fatal(std::string message);
  void readAll(std::string_view text);
  void readLine(std::string_view line);
  // Reads items [from, from + n) as numbers. A parameter field is fatal; any
  // other unreadable item makes the result false.
  bool numbers(size_t from, size_t n, double* out);
  // A parameter field where a number belongs: its value from the parameter value file.
  double parameterValue(size_t index);
  [[noreturn]] void parameterField(size_t index);
  // The rest of the line from item `from` on, as written (inner blanks kept).
  std::string rest(size_t from) const;
  bool takeDataItem();
  void unreadable(const char* expected);
  void openMenu(Menu m);
  void closeMenu();
  bool readMenuCommand(const std::string& w);
  // The top-level words that open a menu.
  static const Menu* menuOfWord(const std::string& w);
  void readData();

  // ---- top level and layout (command_top.cpp) -------------------------------

  bool readTopCommand(const std::string& w);
  void readWindow();
  void readSolve();

  // ---- aquifer (command_aquifer.cpp) -----------------------------------------

  bool readAquiferCommand(const std::string& w);

  // ---- wells and sink disks (command_wells.cpp) ------------------------------

  bool needMode();
  void readWell();
  void readPartialWell();
  void readTheisWell();
  void readSinkDisk();

  // ---- line-sinks (command_linesinks.cpp) ------------------------------------

  void closeString();
  void startString(LineSinkKind kind);
  bool readLineSinkCommand(const std::string& w);
  void readLineSinkData();

  // ---- inhomogeneities, walls, lakes (command_polygons.cpp) -----------------

  bool readPolygonCommand(const std::string& w);
  void readVertex();

  // ---- extract, flux, grid, trace (command_extract.cpp) ----------------------

  bool readExtractCommand(const std::string& w);
  void readExtractPoint();
  void readFluxPoint();
  bool readGridCommand(const std::string& w);
  bool readTraceCommand(const std::string& w);
  void readTracePoint();

  // ---- leakage (command_leakage.cpp) -----------------------------------------

  bool readLeakageCommand(const std::string& w);
};

}  // namespace tarno::engine::reader
