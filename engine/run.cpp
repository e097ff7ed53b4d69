#include "engine/run.h"

#include "engine/extract.h"
#include "engine/files.h"
#include "engine/grid.h"
#include "engine/lake.h"
#include "engine/lake_edge.h"
#include "engine/leakage.h"
#include "engine/logs.h"
#include "engine/report.h"
#include "engine/saltwater.h"
#include "engine/solution.h"
#include "engine/trace.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <map>
#include <new>
#include <optional>
#include <sstream>
#include <system_error>

namespace fs = std::filesystem;

namespace tarno::engine {

namespace {

// A grid without " horizontalpoints" gets this many points across.
constexpr int kDefaultGridPoints = 50;
// The most points of one grid (about 80 MB of values).
constexpr double kMaxGridPoints = 1.0e7;

// The most particles traced by one trace block.
constexpr size_t kMaxParticles = 100000;

// Ends the run: the lines go to TARNO.OPS.
struct RunFatal {
  int line = 0;
  std::vector<std::string> lines;
};

std::string number(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.6G", v);
  return buf;
}

std::string stringLabelOf(const std::string& segmentLabel) {
  size_t us = segmentLabel.rfind('_');
  return (us == std::string::npos || us == 0) ? segmentLabel : segmentLabel.substr(0, us);
}

LineSinkKind toKind(StringKind k) {
  switch (k) {
    case StringKind::Discharge: return LineSinkKind::Discharge;
    case StringKind::Head: return LineSinkKind::Head;
    case StringKind::Drain: return LineSinkKind::Drain;
    case StringKind::Gallery: return LineSinkKind::Gallery;
    case StringKind::Stream: return LineSinkKind::Stream;
  }
  return LineSinkKind::Head;
}

std::string clockText() {
  std::time_t t = std::time(nullptr);
  char buf[64];
  std::tm tmv{};
  localtime_r(&t, &tmv);
  std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tmv);
  return buf;
}

void removeStaleFatalReport(const fs::path& workDir) {
  std::error_code ec;
  // Only one spelling can be found at a time; a few rounds remove them all.
  for (int i = 0; i < 8; ++i) {
    auto p = findFileNoCase(workDir, kFatalReportName);
    if (!p || !fs::remove(*p, ec)) break;
  }
}

}  // namespace

void applyAquifer(Model& model, const AquiferInput& a) {
  Aquifer& q = model.aquifer;
  if (a.base) q.base = *a.base;
  if (a.permeability) q.conductivity = *a.permeability;
  if (a.thickness) q.thickness = *a.thickness;
  if (a.porosity) q.porosity = *a.porosity;
  if (a.uniflow) {
    q.qx0 = (*a.uniflow)[0];
    q.qy0 = (*a.uniflow)[1];
  }
  if (a.reference) {
    q.hasReference = true;
    q.referenceX = (*a.reference)[0];
    q.referenceY = (*a.reference)[1];
    q.referenceHead = (*a.reference)[2];
  }
  if (a.interface) {
    q.hasInterface = true;
    q.freshGravity = (*a.interface)[0];
    q.saltGravity = (*a.interface)[1];
    q.seaLevel = (*a.interface)[2];
  }
}

void addElements(Model& model, const ElementsInput& e) {
  for (const WellInput& w : e.wells) {
    Well well;
    well.x = w.x;
    well.y = w.y;
    well.radius = w.radius;
    well.value = w.value;
    well.headSpecified = w.headSpecified;
    well.label = w.label;
    model.wells.push_back(std::move(well));
  }
  for (const PartialWellInput& w : e.partialWells) {
    PartialWell p;
    p.x = w.x;
    p.y = w.y;
    p.top = w.top;
    p.bottom = w.bottom;
    p.radius = w.radius;
    p.value = w.value;
    p.headSpecified = w.headSpecified;
    p.label = w.label;
    p.line = w.line;
    model.partialWells.push_back(std::move(p));
  }
  for (const TheisWellInput& w : e.theisWells) {
    TheisWell t;
    t.x = w.x;
    t.y = w.y;
    t.discharge = w.discharge;
    t.startTime = w.startTime;
    t.startHead = w.startHead;
    t.storage = w.storage;
    t.radius = w.radius;
    t.label = w.label;
    t.line = w.line;
    model.theisWells.push_back(std::move(t));
  }
  for (const StringInput& s : e.strings) {
    if (s.segments.empty()) continue;
    LineSinkString ls;
    ls.kind = toKind(s.kind);
    ls.resistance = s.resistance;
    ls.width = s.width;
    ls.locationCode = s.locationCode;
    ls.depth = s.depth;
    ls.pumping = s.pumping;
    ls.endInflow = s.endInflow;
    ls.end = s.endFlag;
    ls.overlandFlow = s.overlandFlow;
    ls.inlet = s.inlet;
    if (s.outletTable) ls.outletTable = *s.outletTable;
    if (s.kind == StringKind::Stream && (s.lakeTable || s.levels)) {
      // A lake edge: the end inflow of a routed string is here the lake's evaporation
      // less its precipitation; the name after " Lake" is not used (it groups nothing).
      ls.lake.on = true;
      ls.lake.netEvaporation = s.endInflow;
      ls.endInflow = 0.0;
      ls.outletTable.clear();
      ls.inlet = false;
      if (s.levels) {
        ls.lake.bottom = (*s.levels)[0];
        ls.lake.estimate = (*s.levels)[1];
      } else {
        ls.lake.estimate = s.segments.front().value;
      }
    }
    ls.label = stringLabelOf(s.segments.front().label);
    for (const SegmentInput& g : s.segments) ls.segments.push_back(Segment{g.x1, g.y1, g.x2, g.y2, g.value, g.label});
    model.lineSinks.push_back(std::move(ls));
  }
  for (const SinkDiskInput& d : e.sinkDisks) {
    Pond p;
    p.x = d.x1;
    p.y = d.y1;
    p.radius = std::hypot(d.x2 - d.x1, d.y2 - d.y1);
    p.value = d.value;
    p.headSpecified = d.headSpecified;
    p.label = d.label;
    p.line = d.line;
    model.ponds.push_back(std::move(p));
  }
  for (const PolygonInput& p : e.polygons) {
    auto param = [&](size_t i, double fallback) { return i < p.params.size() ? p.params[i] : fallback; };
    std::vector<Vertex> vertices;
    for (const VertexInput& v : p.vertices) vertices.push_back(Vertex{v.x, v.y, v.label});
    switch (p.kind) {
      case PolygonKind::Transmissivity: {
        Inhomogeneity in;
        in.conductivity = param(0, kAsAquifer);
        in.base = param(1, kAsAquifer);
        in.averageHead = param(2, kAsAquifer);
        in.extraction = param(3, 0.0);
        in.porosity = param(4, kAsAquifer);
        in.label = p.label;
        in.vertices = std::move(vertices);
        in.line = p.line;
        model.inhomogeneities.push_back(std::move(in));
        break;
      }
      case PolygonKind::WallOpen:
      case PolygonKind::WallClosed:
      case PolygonKind::WallOutside:
      case PolygonKind::WallInside: {
        Wall w;
        w.kind = p.kind == PolygonKind::WallOpen     ? WallKind::Open
                 : p.kind == PolygonKind::WallClosed ? WallKind::Closed
                 : p.kind == PolygonKind::WallOutside ? WallKind::Outside
                                                      : WallKind::Inside;
        w.conductivity = param(0, 0.0);
        w.thickness = param(1, 1.0);
        w.porosity = param(2, 0.3);
        w.bottom = param(3, model.aquifer.base);
        w.label = p.label;
        w.vertices = std::move(vertices);
        w.line = p.line;
        model.walls.push_back(std::move(w));
        break;
      }
      case PolygonKind::Lake: {
        Lake l;
        l.conductivity = param(0, kAsAquifer);
        l.precipitation = param(1, 0.0);
        l.evaporation = param(2, 0.0);
        l.resistance = param(3, 0.0);
        l.tableName = p.table;
        l.label = p.label;
        l.vertices = std::move(vertices);
        l.line = p.line;
        model.lakes.push_back(std::move(l));
        break;
      }
    }
  }
}

std::vector<UnsupportedKind> findUnsupported(const CommandFile& file) {
  std::vector<UnsupportedKind> kinds;
  const std::string leftOut = "they are left out and the rest of the model is solved without them";
  auto note = [&](const std::string& key, const std::string& words, int line, size_t count,
                  const std::string& result = "") {
    for (auto& k : kinds)
      if (k.key == key) {
        k.count += count;
        return;
      }
    kinds.push_back(UnsupportedKind{key, words, result.empty() ? leftOut : result, line, count});
  };
  for (const Step& step : file.steps) {
    if (auto* s = std::get_if<SolveCommand>(&step.data)) {
      if (s->conjunctive)
        note("conjunctive", "conjunctive solutions with a lower model (solve conjunctive)", step.line, 1,
             "solved as plain solves");
    }
  }
  return kinds;
}

namespace {

// The extract's source: the solution with its lakes and the run's last leakage check.
class RunSource : public LakeSolutionSource {
 public:
  RunSource(const Solution& s, const std::optional<LeakageCheckResult>& check) : LakeSolutionSource(s), check_(check) {}
  std::optional<std::vector<double>> leakageCheck() const override {
    if (!check_) return std::nullopt;
    if (!check_->integratedKnown) return std::vector<double>{check_->total};
    return std::vector<double>{check_->total, check_->integrated, check_->error()};
  }

 private:
  const std::optional<LeakageCheckResult>& check_;
};

class Runner {
 public:
  Runner(const CommandFile& file, fs::path commandFile, fs::path workDir, std::string sizeArg)
      : file_(file), commandFile_(std::move(commandFile)), workDir_(std::move(workDir)), sizeArg_(std::move(sizeArg)),
        logs_(workDir_) {}

  int run() {
    start_ = std::chrono::steady_clock::now();
    try {
      return runSteps();
    } catch (const RunFatal& f) {
      return fatal(f);
    } catch (const std::bad_alloc&) {
      return fatal(RunFatal{currentLine_, {"The solver ran out of memory while working on line " +
                                               std::to_string(currentLine_) + " of " + commandFile_.filename().string() + ".",
                                           "The model is too large for the memory of this computer."}});
    } catch (const std::exception& e) {
      return fatal(RunFatal{currentLine_, {"The solver stopped at line " + std::to_string(currentLine_) + " of " +
                                               commandFile_.filename().string() + ": " + e.what()}});
    }
  }

 private:
  const CommandFile& file_;
  fs::path commandFile_, workDir_;
  std::string sizeArg_;
  RunLogs logs_;
  Model model_;
  std::optional<Solution> solution_;
  bool modelChanged_ = false;
  int currentLine_ = 0;
  std::string baseName_;
  std::string started_;
  std::optional<SolveReport> lastSolve_;
  std::chrono::steady_clock::time_point start_;

  // Warnings of the engine go to the error log under the line of the step that
  // caused them. Set once per solution: setting the sink replays earlier warnings.
  void attachWarnings() {
    solution_->setWarningSink([this](const std::string& w) { logs_.problem(currentLine_, "", w); });
  }

  int fatal(const RunFatal& f) {
    for (const auto& l : f.lines) logs_.problem(f.line, "", "fatal: " + l);
    logs_.message("The run ended with a fatal error (see " + std::string(kFatalReportName) + ").");
    logs_.finish();
    logs_.writeFatalReport(f.lines);
    return kExitFatal;
  }

  std::string where(int line) const {
    return "line " + std::to_string(line) + " of " + commandFile_.filename().string();
  }

  int runSteps() {
    for (const Step& s : file_.steps)
      if (auto* l = std::get_if<LogCommand>(&s.data)) {
        if (l->kind == LogCommand::Kind::Error) logs_.openError(l->file, s.line);
        else if (l->kind == LogCommand::Kind::Message) logs_.openMessage(l->file, s.line);
        else logs_.openEcho(l->file, s.line, file_.lines);
      }
    logs_.message("tarno1: analytic element solver");
    started_ = clockText();
    logs_.message("Started " + started_);
    logs_.message("Command file: " + commandFile_.string() + " (" + std::to_string(file_.lines.size()) + " lines read)");
    if (!sizeArg_.empty()) {
      char* end = nullptr;
      long size = std::strtol(sizeArg_.c_str(), &end, 10);
      if (end == sizeArg_.c_str() || *end != '\0' || size < 0)
        logs_.problem(0, "", "the size argument \"" + sizeArg_ + "\" is not a number of equations; it is only logged, the run goes on");
      logs_.message("Estimated number of equations (from the caller): " + sizeArg_);
    }
    for (const Diagnostic& d : file_.problems) logs_.problem(d);
    for (const ParameterUse& u : file_.parameters)
      logs_.message("Line " + std::to_string(u.line) + ": the parameter field " + u.field + " takes the value " +
                    number(u.value) + " from the parameter value file");
    if (file_.fatal) {
      const Diagnostic& d = *file_.fatal;
      logs_.problem(Diagnostic{d.line, d.text, "fatal: " + d.message});
      throw RunFatal{0, {"The command file " + commandFile_.filename().string() + " cannot be solved.",
                         "Line " + std::to_string(d.line) + ": \"" + d.text + "\"",
                         d.message + "."}};
    }
    for (const UnsupportedKind& k : findUnsupported(file_))
      logs_.problem(k.firstLine, "",
                    k.words + " are not supported by this version: " + std::to_string(k.count) +
                        (k.count == 1 ? " item was" : " items were") + " read; " + k.result);

    for (const Step& step : file_.steps) {
      currentLine_ = step.line;
      if (std::get_if<StopCommand>(&step.data)) break;
      std::visit([&](const auto& d) { this->apply(step.line, d); }, step.data);
      if (std::get_if<SolveCommand>(&step.data)) updateLeakage();
    }
    if (!file_.stopped) logs_.message("End of the command file reached without \" stop\".");
    writeOutputReport();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    logs_.message("Files written: " + std::to_string(logs_.filesWritten().size()));
    for (const auto& f : logs_.filesWritten()) logs_.message("  " + f);
    logs_.message("Problems reported in the error log: " + std::to_string(logs_.problems().size()));
    logs_.message("Run finished " + clockText() + " after " + number(seconds) + " s");
    logs_.finish();
    return kExitOk;
  }

  // ---- steps ----------------------------------------------------------------

  void apply(int, const LogCommand&) {}
  void apply(int, const PictureCommand&) {}
  void apply(int, const StopCommand&) {}

  // ---- leakage to the model below (engine/leakage.h) -------------------------------

  std::optional<std::array<double, 5>> leakSolve_;  // include, average, update, subgrid, relax
  int leakLine_ = 0;
  bool leakUpdatePending_ = false;
  std::optional<LeakageCheckResult> leakCheck_;

  std::string leakBase() const { return baseName_.empty() ? commandFile_.stem().string() : baseName_; }

  void leakProblems(int line, const std::vector<LeakageFileProblem>& ps) {
    for (const auto& p : ps)
      logs_.problem(line, "", "leakage: " + p.file + (p.line > 0 ? " line " + std::to_string(p.line) : "") + ": " +
                                  p.message);
  }

  // The grid of <base>.del, placed at the leakage origin (or the corner in the file).
  std::optional<LeakageGrid> loadLeakageGrid(int line) {
    const std::string name = leakBase() + ".del";
    std::vector<LeakageFileProblem> ps;
    LeakageGrid g;
    auto p = findFileNoCase(workDir_, name);
    const bool ok = readLeakageGrid(p ? *p : workDir_ / name, g, ps);
    leakProblems(line, ps);
    if (!ok) return std::nullopt;
    // The origin of the command file, or of the loaded solution (the inspection's
    // command file gives none).
    if (model_.leakageOriginGiven) {
      g.x0 = model_.leakageX0;
      g.y0 = model_.leakageY0;
    } else if (g.cornerInFile) {
      g.x0 = g.fileX;
      g.y0 = g.fileY;
    } else {
      logs_.problem(line, "", "leakage: no \"origin\" given and none in " + name + "; the grid's corner is put at 0 0");
    }
    return g;
  }

  bool loadCellFile(int line, const LeakageGrid& g, const std::string& ext, std::vector<double>& values) {
    const std::string name = leakBase() + ext;
    std::vector<LeakageFileProblem> ps;
    auto p = findFileNoCase(workDir_, name);
    const bool ok = readCellValues(p ? *p : workDir_ / name, g, values, ps);
    leakProblems(line, ps);
    return ok;
  }

  // Resistances and heads below (and the sub-grid when its switch is on).
  std::optional<LeakageExchange> loadExchange(int line, const LeakageGrid& g) {
    LeakageExchange ex;
    if (!loadCellFile(line, g, ".rla", ex.resistance) || !loadCellFile(line, g, ".lhd", ex.lowerHead))
      return std::nullopt;
    const bool average = leakSolve_ && (*leakSolve_)[1] != 0;
    const bool subgrid = average && (*leakSolve_)[3] != 0;
    ex.addAquiferResistance = leakSolve_ && (*leakSolve_)[2] != 0;
    ex.defaultPoints = average ? 3 : 1;
    if (subgrid) {
      std::vector<double> res;
      if (loadCellFile(line, g, ".grs", res))
        for (double r : res) ex.resolution.push_back(std::clamp((int)std::lround(r), 1, 100));
    }
    return ex;
  }

  void apply(int line, const LeakageInput& l) {
    if (l.origin) {
      // Not a change of the model: the origin places the grid when its files are read.
      model_.leakageOriginGiven = true;
      model_.leakageX0 = (*l.origin)[0];
      model_.leakageY0 = (*l.origin)[1];
      logs_.message("Leakage grid origin: " + number((*l.origin)[0]) + " " + number((*l.origin)[1]));
    }
    if (l.solve) {
      leakSolve_ = l.solve;
      leakLine_ = line;
      const auto& v = *l.solve;
      if (v[0] == 0) {
        if (!model_.leakage.empty()) modelChanged_ = true;
        model_.leakage.clear();
        leakUpdatePending_ = false;
        logs_.message("Leakage to the model below: not included");
      } else if (auto g = loadLeakageGrid(line)) {
        if (loadCellFile(line, *g, ".vlk", g->leakage)) {
          model_.leakage = g->cells();
          modelChanged_ = true;
          leakUpdatePending_ = true;
          double total = 0.0;
          for (const auto& c : model_.leakage) total += c.rate * (c.x2 - c.x1) * (c.y2 - c.y1);
          logs_.message("Leakage to the model below: " + std::to_string(g->rows) + " x " + std::to_string(g->cols) +
                        " cells, " + std::to_string(model_.leakage.size()) + " with a rate, total " + number(total) +
                        "; relaxation " + number(v[4]));
        } else {
          logs_.problem(line, "", "leakage: without the cells' rates the leakage is left out of the solution");
        }
      }
    }
    for (const auto& c : l.checks) checkLeakageAt(line, c);
  }

  // After a solve: the leakage from the heads, relaxed, written for the model below.
  void updateLeakage() {
    if (!leakUpdatePending_ || !solution_ || !solution_->solved()) return;
    leakUpdatePending_ = false;
    const int line = leakLine_;
    auto g = loadLeakageGrid(line);
    if (!g || !loadCellFile(line, *g, ".vlk", g->leakage)) return;
    auto ex = loadExchange(line, *g);
    if (!ex) {
      logs_.problem(line, "", "leakage: without resistances and heads below the leakage was not updated");
      return;
    }
    const double relax = (*leakSolve_)[4];
    std::vector<double> next(g->leakage.size()), error(g->leakage.size());
    double used = 0.0, computed = 0.0, written = 0.0;
    for (int r = 0; r < g->rows; ++r)
      for (int c = 0; c < g->cols; ++c) {
        const int i = g->index(r, c);
        const int n = ex->resolution.empty() ? ex->defaultPoints : ex->resolution[i];
        const double q = cellLeakageFromHeads(*g, *ex, *solution_, r, c, n);
        const auto box = g->cell(r, c);
        const double area = (box[2] - box[0]) * (box[3] - box[1]);
        error[i] = q - g->leakage[i];
        next[i] = g->leakage[i] + relax * error[i];
        used += g->leakage[i] * area;
        computed += q * area;
        written += next[i] * area;
      }
    for (const auto& [ext, values] : {std::pair<const char*, const std::vector<double>*>{".vlk", &next}, {".vle", &error}}) {
      const fs::path p = prepareOutputFile(workDir_, leakBase() + ext);
      if (writeCellValues(p, *g, *values)) logs_.wrote(ext == std::string(".vlk") ? "leakage" : "leakage error", p);
      else logs_.problem(line, "", "leakage: " + p.filename().string() + " could not be written");
    }
    logs_.message("Leakage to the model below: used " + number(used) + ", computed from the heads " + number(computed) +
                  ", written " + number(written) + " (relaxation " + number(relax) + ")");
  }

  void checkLeakageAt(int line, const std::array<double, 5>& c) {
    if (!solution_ || !solution_->solved()) {
      logs_.problem(line, "", "leakage \"check\" before any solve or load: there are no heads; line skipped");
      return;
    }
    auto g = loadLeakageGrid(line);
    if (!g) return;
    // The rates the solution used, cell by cell (the .vlk file may hold newer ones).
    g->leakage.assign((size_t)g->rows * g->cols, 0.0);
    for (const auto& cell : solution_->model().leakage) {
      const double x = 0.5 * (cell.x1 + cell.x2) - g->x0, yTop = g->y0 + g->height() - 0.5 * (cell.y1 + cell.y2);
      int col = 0, row = 0;
      for (double acc = g->colSize[0]; col + 1 < g->cols && x > acc; acc += g->colSize[++col]) {}
      for (double acc = g->rowSize[0]; row + 1 < g->rows && yTop > acc; acc += g->rowSize[++row]) {}
      g->leakage[g->index(row, col)] = cell.rate;
    }
    auto ex = loadExchange(line, *g);
    const int n = std::max(1, (int)std::lround(c[4]));
    const LeakageCheckResult r = checkLeakage(*g, ex ? &*ex : nullptr, *solution_, c[0], c[1], c[2], c[3], n);
    leakCheck_ = r;
    logs_.message("Leakage check over " + number(c[0]) + " " + number(c[1]) + " " + number(c[2]) + " " + number(c[3]) +
                  ": " + std::to_string(r.cells) + " cells, " + std::to_string(n) + " x " + std::to_string(n) +
                  " points in each");
    logs_.message("  Total leakage in selected cells: " + number(r.total));
    if (r.integratedKnown) {
      logs_.message("  Total integrated leakage (upper head - lower head)/resistance: " + number(r.integrated));
      logs_.message("  Water balance error in subgrid: " + number(100.0 * r.error()) + "%");
    } else {
      logs_.problem(line, "", "leakage \"check\": without resistances and heads below only the total of the rates is known");
    }
  }

  void apply(int, const TitleCommand& c) {
    model_.title = c.text;
    logs_.message("Title: " + c.text);
  }

  void apply(int, const BaseNameCommand& c) {
    baseName_ = c.name;
    model_.baseName = c.name;
    logs_.message("Base name: " + c.name);
  }

  void apply(int, const OriginCommand& c) {
    model_.originX = c.x0;
    model_.originY = c.y0;
    model_.unitCode = c.code;
    logs_.message("Model origin (map units): " + number(c.x0) + " " + number(c.y0) + ", unit code " +
                  std::to_string(c.code) + "; coordinates that follow are model coordinates");
  }

  void apply(int line, const AquiferInput& a) {
    applyAquifer(model_, a);
    modelChanged_ = true;
    const Aquifer& q = model_.aquifer;
    if (q.conductivity <= 0) logs_.problem(line, "", "the aquifer's permeability is not positive");
    if (q.thickness <= 0) logs_.problem(line, "", "the aquifer's thickness is not positive");
    if (q.porosity <= 0 || q.porosity > 1) logs_.problem(line, "", "the aquifer's porosity is not between 0 and 1");
    logs_.message("Aquifer: base " + number(q.base) + ", permeability " + number(q.conductivity) + ", thickness " +
                  number(q.thickness) + ", porosity " + number(q.porosity));
    if (q.hasInterface) {
      std::string text = "Salt water interface: fresh water gravity " + number(q.freshGravity) +
                         ", salt water gravity " + number(q.saltGravity) + ", sea level " + number(q.seaLevel);
      if (auto toe = interfaceToe(q, q.base, q.conductivity, q.thickness))
        text += "; its toe (on the base) where the head is " + number(toe->head) + ", the potential " +
                number(toe->potential);
      else
        text += "; the base lies above sea level, no salt water reaches the aquifer";
      logs_.message(text);
    }
  }

  void apply(int, const WindowInput& w) {
    model_.window = Window{true, w.x1, w.y1, w.x2, w.y2};
    logs_.message("Window: " + number(w.x1) + " " + number(w.y1) + " " + number(w.x2) + " " + number(w.y2));
  }

  void apply(int, const ElementsInput& e) {
    for (const WellInput& w : e.wells)
      if (!(w.radius > 0))
        logs_.problem(w.line, "", "well " + w.label + " has a radius that is not positive; the well was skipped");
    ElementsInput kept = e;
    std::erase_if(kept.wells, [](const WellInput& w) { return !(w.radius > 0); });
    checkPartialWells(kept.partialWells);
    checkTheisWells(kept.theisWells);
    size_t wellsBefore = model_.wells.size() + model_.partialWells.size() + model_.theisWells.size();
    size_t stringsBefore = model_.lineSinks.size();
    size_t areasBefore = model_.inhomogeneities.size() + model_.walls.size() + model_.ponds.size();
    size_t lakesBefore = model_.lakes.size();
    addElements(model_, kept);
    for (size_t i = lakesBefore; i < model_.lakes.size(); ++i) readLakeTable(model_.lakes[i]);
    for (size_t i = stringsBefore; i < model_.lineSinks.size(); ++i) readOutletRating(model_.lineSinks[i]);
    if (model_.wells.size() + model_.partialWells.size() + model_.theisWells.size() != wellsBefore ||
        model_.lineSinks.size() != stringsBefore ||
        model_.inhomogeneities.size() + model_.walls.size() + model_.ponds.size() != areasBefore ||
        model_.lakes.size() != lakesBefore)
      modelChanged_ = true;
  }

  // The rating table of a stream that flows out of a lake (read here; the link to the
  // lake is made by the solve). Without one nothing flows out through the outlet.
  void readOutletRating(LineSinkString& ls) {
    const std::string name = ls.outletTable;
    if (ls.kind != LineSinkKind::Stream || name.empty() || name == "0" || name == "__NONE__") return;
    auto p = findFileNoCase(workDir_, name);
    std::string why;
    if (!p) why = "it was not found in " + workDir_.string();
    else if (readRatingTable(*p, ls.outletRating, why)) return;
    ls.outletRating.clear();
    logs_.problem(0, "", "stream " + ls.label + ": the outlet rating table " + name + " cannot be used (" + why +
                             "); nothing flows out of a lake through it");
  }

  // A lake's stage table, looked up in the working folder without regard to case. The
  // front end writes "0" or nothing for a lake without one. A lake whose table cannot be
  // read is solved without it (its water surface is its polygon).
  void readLakeTable(Lake& l) {
    if (l.vertices.size() < 3)
      logs_.problem(l.line, "", "lake " + l.label + " has " + std::to_string(l.vertices.size()) +
                                    " vertices, fewer than three; the lake is skipped");
    const std::string name = l.tableName;
    if (name.empty() || name == "0" || name == "__NONE__") return;
    auto p = findFileNoCase(workDir_, name);
    std::string why;
    if (!p) why = "it was not found in " + workDir_.string();
    else if (readStageTable(*p, l.table, why)) return;
    l.table.clear();
    logs_.problem(l.line, "", "lake " + l.label + ": the stage table " + name + " cannot be used (" + why +
                                  "); the lake is solved without it, its water surface is its polygon");
  }

  // Partially penetrating wells: a radius that is not positive skips the well (as for
  // plain wells); a screen whose top lies below its bottom is mended by swapping the two.
  // A screen that reaches outside the saturated zone is clipped by the solve, which
  // reports it.
  void checkPartialWells(std::vector<PartialWellInput>& wells) {
    std::erase_if(wells, [this](const PartialWellInput& w) {
      if (w.radius > 0) return false;
      logs_.problem(w.line, "", "partially penetrating well " + w.label + ": radius " + number(w.radius) +
                                    " is not positive; the well was skipped");
      return true;
    });
    for (PartialWellInput& w : wells)
      if (w.top < w.bottom) {
        logs_.problem(w.line, "", "partially penetrating well " + w.label + ": the top of the screen " + number(w.top) +
                                      " lies below its bottom " + number(w.bottom) + "; the two were swapped");
        std::swap(w.top, w.bottom);
      }
  }

  // Transient wells: a schedule line whose storage coefficient or radius is not positive
  // is skipped. A line that starts after the time of evaluation is no error (a cyclic
  // schedule lists every switch); the solve counts such lines in the message log.
  void checkTheisWells(std::vector<TheisWellInput>& wells) {
    std::erase_if(wells, [this](const TheisWellInput& w) {
      std::string why;
      if (!(w.storage > 0)) why = "storage coefficient " + number(w.storage) + " is not positive";
      else if (!(w.radius > 0)) why = "radius " + number(w.radius) + " is not positive";
      if (why.empty()) return false;
      logs_.problem(w.line, "", "transient well " + w.label + ": " + why + "; the schedule line was skipped");
      return true;
    });
    for (const TheisWellInput& w : wells)
      if (w.storage > 1)
        logs_.problem(w.line, "", "transient well " + w.label + ": storage coefficient " + number(w.storage) +
                                      " is above 1; it is used as given");
  }

  void apply(int line, const SolveCommand& c) {
    if (!model_.lakes.empty() || hasLakeEdges(model_)) {
      solveLakes(line, c);
      return;
    }
    if (!solution_ || modelChanged_) {
      solution_.reset();
      solution_.emplace(model_);
      attachWarnings();
      modelChanged_ = false;
    } else {
      logs_.message("Continuing the iterations of the present solution.");
    }
    solution_->setTime(model_.time);
    SolveOptions opt;
    opt.innerIterations = c.inner;
    opt.outerIterations = c.outer;
    opt.storeOnDisk = c.store != 0;
    opt.fullFactorisation = c.full != 0;
    logs_.message("Solve (" + where(line) + "): " + std::to_string(c.inner) + " inner, " + std::to_string(c.outer) +
                  " outer iterations at most");
    SolveReport r;
    try {
      r = solution_->solve(opt, [this](const std::string& l) { logs_.message(l); });
    } catch (const FatalError& e) {
      solution_.reset();
      throw RunFatal{line, {"The model could not be solved (" + where(line) + ").", e.what()}};
    }
    // The engine writes the counts, the iterations, the water balance and the
    // times to the message log itself (through the callback above), and warns
    // through the warning sink when the iterations did not meet every condition.
    // The output report at the end of the run tells the last solve.
    lastSolve_ = r;
  }

  // A model with lakes is solved afresh by each solve: the lakes' outer iteration
  // rebuilds the solution with each new exchange through the lake bottoms.
  size_t lakeCount() const {
    size_t n = model_.lakes.size();
    for (const LineSinkString& ls : model_.lineSinks) n += ls.lake.on ? 1 : 0;
    return n;
  }

  void solveLakes(int line, const SolveCommand& c) {
    SolveOptions opt;
    opt.innerIterations = c.inner;
    opt.outerIterations = c.outer;
    opt.storeOnDisk = c.store != 0;
    opt.fullFactorisation = c.full != 0;
    logs_.message("Solve (" + where(line) + "): " + std::to_string(c.inner) + " inner, " + std::to_string(c.outer) +
                  " outer iterations at most, with " + std::to_string(lakeCount()) + " lakes");
    // The lakes start from the exchange of the present solution, when there is one.
    Model start = model_;
    if (solution_ && solution_->solved())
      for (Lake& l : start.lakes)
        for (const Lake& k : solution_->model().lakes)
          if (k.label == l.label) l.extraction = k.extraction;
    for (LineSinkString& ls : start.lineSinks)
      if (ls.lake.on && solution_ && solution_->solved())
        for (const LineSinkString& k : solution_->model().lineSinks)
          if (k.lake.on && k.lake.solved && k.label == ls.label) {
            ls.lake.stage = k.lake.stage;
            ls.lake.dry = k.lake.dry;
            ls.lake.solved = true;
          }
    LakeSolveReport r;
    try {
      r = solveWithLakeEdges(start, solution_, opt, [this](const std::string& l) { logs_.message(l); },
                         [this](Solution&) { attachWarnings(); });
    } catch (const FatalError& e) {
      solution_.reset();
      throw RunFatal{line, {"The model could not be solved (" + where(line) + ").", e.what()}};
    }
    modelChanged_ = false;
    if (!r.converged)
      logs_.problem(line, "", "the balance of the lakes had not closed after " + std::to_string(r.lakeIterations) +
                                  " solves; the stages are those of the last one");
    logs_.message("Lakes: " + std::to_string(r.lakeIterations) + " solves of the model to close their balances");
    for (const auto& l : formatLakeBalance(lakeResults(*solution_))) logs_.message(l);
    lastSolve_ = r.last;
  }

  // <name>.OUT, the report of the run for a person to read, after a run that solved.
  // A run that only loads a solution (a regrid, an inspection) leaves the report of
  // the solve in place.
  void writeOutputReport() {
    if (!lastSolve_ || !solution_ || !solution_->solved()) return;
    const std::string name = baseName_.empty() ? commandFile_.stem().string() : baseName_;
    fs::path p = prepareOutputFile(workDir_, name + ".OUT");
    RunReportHeader header;
    header.title = model_.title;
    header.baseName = name;
    header.commandFile = commandFile_.filename().string();
    header.started = started_;
    header.time = model_.time;
    std::ostringstream text;
    LakeSolutionSource source(*solution_);
    writeRunReport(text, header, solution_->model(), *lastSolve_, source);
    // The lakes' balances (engine/lake.h), in the words of the message log.
    const std::vector<LakeResult> lakes = lakeResults(*solution_);
    if (!lakes.empty()) {
      text << "\nLakes\n=====\n";
      for (const std::string& l : formatLakeBalance(lakes)) text << l << '\n';
    }
    if (writeText(p, text.str())) logs_.wrote("output report", p);
    else logs_.problem(0, "", "the output report " + p.filename().string() + " could not be written");
  }

  void apply(int, const TimeCommand& c) {
    model_.time = c.time;
    if (solution_) solution_->setTime(c.time);
    logs_.message("Time of evaluation: " + number(c.time) + " days");
    if (solution_ && solution_->solved() && !model_.theisWells.empty()) {
      int started = 0, later = 0;
      for (const TheisWellResult& w : solution_->theisWellResults()) {
        started += w.activeLines;
        later += w.lines - w.activeLines;
      }
      logs_.message("  transient wells: " + std::to_string(started) + " schedule lines have started by this time" +
                    (later > 0 ? ", " + std::to_string(later) + " start later and have no effect yet" : ""));
    }
  }

  void apply(int line, const SaveCommand& c) {
    if (!solution_) {
      logs_.problem(line, "", "\"save\" before any solve or load: there is no solution to save; line skipped");
      return;
    }
    fs::path p = prepareOutputFile(workDir_, withDefaultExtension(c.name, ".SOL"));
    try {
      solution_->save(p.string());
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& e) {
      logs_.problem(line, "", std::string("the solution could not be written to ") + p.filename().string() + ": " +
                                  e.what());
      return;
    }
    logs_.wrote("solution", p);
  }

  void apply(int line, const LoadCommand& c) {
    std::string name = withDefaultExtension(c.name, ".SOL");
    auto p = findFileNoCase(workDir_, name);
    if (!p)
      throw RunFatal{line,
                     {"The saved solution " + name + " was not found in " + workDir_.string() + " (" + where(line) + ").",
                      "Solve the model again to create it."}};
    try {
      solution_.reset();
      solution_.emplace(Solution::load(p->string()));
      attachWarnings();
    } catch (const FatalError& e) {
      solution_.reset();
      throw RunFatal{line, {"The saved solution " + p->filename().string() + " cannot be loaded (" + where(line) + ").",
                            e.what()}};
    }
    // The window and time of the command file, when given, stay in force.
    Window window = model_.window;
    double time = model_.time;
    model_ = solution_->model();
    if (window.given) model_.window = window;
    if (time != 0) {
      model_.time = time;
      solution_->setTime(time);
    }
    modelChanged_ = false;
    logs_.message("Loaded the solution " + p->filename().string() + ": " + std::to_string(model_.wells.size()) +
                  " wells, " + std::to_string(model_.lineSinks.size()) + " line-sink strings, " +
                  std::to_string(solution_->unknowns()) + " equations");
  }

  void apply(int line, const ExtractInput& x) {
    std::string name = x.file;
    if (name.empty()) {
      name = baseName_.empty() ? commandFile_.stem().string() : baseName_;
      logs_.problem(line, "", "the extract menu names no file; the results go to " + withDefaultExtension(name, ".XTR"));
    }
    fs::path p = prepareOutputFile(workDir_, withDefaultExtension(name, ".XTR"));
    if (!solution_) {
      logs_.problem(line, "", "\"extract\" before any solve or load: there are no results; " + p.filename().string() +
                                  " was not written");
      return;
    }
    if (!solution_->solved()) {
      logs_.problem(line, "", "\"extract\" before the model was solved: there are no results; " +
                                  p.filename().string() + " was not written");
      return;
    }
    if (modelChanged_)
      logs_.problem(line, "", "elements or aquifer data given after the last solve are not in the solution that " +
                                  p.filename().string() + " reports");
    std::ostringstream text;
    int nonFinite = 0;
    RunSource source(*solution_, leakCheck_);
    writeExtract(text, x, source, &nonFinite);
    if (nonFinite > 0)
      logs_.problem(line, "", std::to_string(nonFinite) + " values of " + p.filename().string() +
                                  " could not be computed (not finite) and were written as -9999");
    std::ofstream f(p, std::ios::binary | std::ios::trunc);
    f << text.str();
    f.close();
    if (!f) {
      logs_.problem(line, "", "the extract file " + p.filename().string() + " could not be written");
      return;
    }
    logs_.wrote("extract file", p);
  }

  // ---- grids ------------------------------------------------------------------

  // Grids kept by " save" in this run, by name (any case); a kept grid is also
  // written to <name>.KGR, so that a later run's " minusgrid" finds it.
  std::map<std::string, Grid> keptGrids_;

  static std::string lowerName(const std::string& s) {
    std::string r;
    for (char c : s) r += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return r;
  }

  static std::string keptGridFile(const std::string& name) { return name + ".KGR"; }

  bool writeText(const fs::path& p, const std::string& text) {
    std::ofstream f(p, std::ios::binary | std::ios::trunc);
    f << text;
    f.close();
    return static_cast<bool>(f);
  }

  std::optional<Grid> computeGridFor(const GridAction& a) {
    const int line = a.line;
    if (!solution_ || !solution_->solved()) {
      logs_.problem(line, "", "grid \"go\" before the model was solved or loaded: no grid was computed");
      return std::nullopt;
    }
    const GridSettings& st = a.settings;
    int across = st.horizontalPoints;
    if (across < 2) {
      across = kDefaultGridPoints;
      logs_.problem(line, "", "the grid menu gives no \"horizontalpoints\"; " + std::to_string(across) +
                                  " points across were used");
    }
    GridQuantity quantity = GridQuantity::Heads;
    if (auto q = gridQuantity(st.plot)) quantity = *q;
    std::optional<GridGeometry> geometry;
    const Window& layout = model_.window;
    if (st.window) {
      geometry = gridGeometry(st.window->x1, st.window->y1, st.window->x2, st.window->y2, across);
      if (!geometry) {
        geometry = layout.given ? gridGeometry(layout.x1, layout.y1, layout.x2, layout.y2, across) : std::nullopt;
        logs_.problem(line, "", "the grid window " + number(st.window->x1) + " " + number(st.window->y1) + " " +
                                    number(st.window->x2) + " " + number(st.window->y2) + " has no width or no height; " +
                                    (geometry ? "the layout window was used" : "no grid was computed"));
        if (!geometry) return std::nullopt;
      }
    } else if (layout.given) {
      geometry = gridGeometry(layout.x1, layout.y1, layout.x2, layout.y2, across);
      if (!geometry) {
        logs_.problem(line, "", "the grid has no window of its own and the layout window has no width or no height; "
                                "no grid was computed");
        return std::nullopt;
      }
    } else {
      logs_.problem(line, "", "the grid has no window and no layout window was given; no grid was computed");
      return std::nullopt;
    }
    if (static_cast<double>(geometry->nx) * geometry->ny > kMaxGridPoints) {
      const double shrink = std::sqrt(kMaxGridPoints / (static_cast<double>(geometry->nx) * geometry->ny));
      const int reduced = std::max(2, static_cast<int>(geometry->nx * shrink));
      logs_.problem(line, "", std::to_string(geometry->nx) + " x " + std::to_string(geometry->ny) +
                                  " grid points are more than " + number(kMaxGridPoints) + "; " +
                                  std::to_string(reduced) + " points across were used");
      geometry = gridGeometry(geometry->xlo, geometry->ylo, geometry->xhi, geometry->yhi, reduced);
      while (geometry && static_cast<double>(geometry->nx) * geometry->ny > kMaxGridPoints && geometry->nx > 2)
        geometry = gridGeometry(geometry->xlo, geometry->ylo, geometry->xhi, geometry->yhi, geometry->nx - 1);
      if (!geometry || static_cast<double>(geometry->nx) * geometry->ny > kMaxGridPoints) {
        logs_.problem(line, "", "the grid window is too narrow for a grid of bounded size; no grid was computed");
        return std::nullopt;
      }
    }
    if (modelChanged_)
      logs_.problem(line, "", "elements or aquifer data given after the last solve are not in the solution that the "
                              "grid shows");
    if (quantity == GridQuantity::Interface && !model_.aquifer.hasInterface)
      logs_.problem(line, "", "\"plot interface\": the aquifer has no salt water interface; every point of the grid "
                              "is blank");
    const auto t0 = std::chrono::steady_clock::now();
    Grid grid = computeGrid(*solution_, *geometry, quantity);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::string text = "Grid of " + std::string(gridQuantityName(quantity)) + ": " + std::to_string(geometry->nx) +
                       " x " + std::to_string(geometry->ny) + " points over " + number(geometry->xlo) + " " +
                       number(geometry->ylo) + " " + number(geometry->xhi) + " " + number(geometry->yhi) + " in " +
                       number(seconds) + " s";
    if (st.elevations)
      text += "; the elevations of evaluation (" + number((*st.elevations)[0]) + ", " + number((*st.elevations)[1]) +
              ") do not change these values";
    logs_.message(text);
    if (grid.nonFinite > 0)
      logs_.message("  " + std::to_string(grid.nonFinite) +
                    (quantity == GridQuantity::Stream
                         ? " points where no stream function exists (inside recharge polygons and ponds, well "
                           "centres) are blank"
                         : " points where no finite value exists (well centres) are blank"));
    if (quantity == GridQuantity::Stream) {
      int active = 0;
      for (const auto& w : solution_->theisWellResults()) active += w.activeLines > 0;
      if (active > 0)
        logs_.message("  the stream function leaves out the " + std::to_string(active) +
                      " transient wells pumping at this time: their water comes from storage, and no stream "
                      "function includes it");
    }
    return grid;
  }

  std::optional<Grid> findKeptGrid(const std::string& name, int line) {
    auto it = keptGrids_.find(lowerName(name));
    if (it != keptGrids_.end()) return it->second;
    auto p = findFileNoCase(workDir_, keptGridFile(name));
    if (!p) return std::nullopt;
    std::ifstream in(*p, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    try {
      return parseSurferGrid(text.str());
    } catch (const std::exception& e) {
      logs_.problem(line, "", "the kept grid " + p->filename().string() + " cannot be read (" + e.what() + ")");
      return std::nullopt;
    }
  }

  void apply(int line, const GridInput& g) {
    std::optional<Grid> grid;
    if (!g.go)
      logs_.problem(line, "", "the grid menu has no \"go\": no grid was computed");
    for (const GridAction& a : g.actions) {
      currentLine_ = a.line;
      switch (a.kind) {
        case GridAction::Kind::Go: grid = computeGridFor(a); break;
        case GridAction::Kind::Save: {
          if (!grid) {
            logs_.problem(a.line, "", "grid \"save " + a.name + "\": no grid has been computed to keep; line skipped");
            break;
          }
          keptGrids_[lowerName(a.name)] = *grid;
          fs::path p = prepareOutputFile(workDir_, keptGridFile(a.name));
          if (writeText(p, formatSurferGrid(*grid, 16))) logs_.wrote("kept grid", p);
          else logs_.problem(a.line, "", "the kept grid " + p.filename().string() + " could not be written; it is kept "
                                         "for this run only");
          break;
        }
        case GridAction::Kind::MinusGrid: {
          if (!grid) {
            logs_.problem(a.line, "", "\"minusgrid " + a.name + "\": no grid has been computed; line skipped");
            break;
          }
          std::optional<Grid> kept = findKeptGrid(a.name, a.line);
          if (!kept) {
            logs_.problem(a.line, "", "\"minusgrid\": no grid is kept under the name " + a.name + " (no " +
                                          keptGridFile(a.name) + "); the grid stays as it is");
            break;
          }
          std::string why;
          if (!subtractGrid(*grid, *kept, &why))
            logs_.problem(a.line, "", "\"minusgrid " + a.name + "\": " + why + "; the grid stays as it is");
          else
            logs_.message("Grid minus the kept grid " + a.name);
          break;
        }
        case GridAction::Kind::Surfer: {
          fs::path p = prepareOutputFile(workDir_, withDefaultExtension(a.name, ".GRD"));
          if (!grid) {
            logs_.problem(a.line, "", "\"surfer\": no grid has been computed; " + p.filename().string() +
                                          " was not written");
            break;
          }
          if (writeText(p, formatSurferGrid(*grid))) logs_.wrote("grid file", p);
          else logs_.problem(a.line, "", "the grid file " + p.filename().string() + " could not be written");
          break;
        }
      }
    }
  }

  // ---- pathlines ----------------------------------------------------------------

  // The box that stands in for the window when none was given: the elements and
  // the particles, with a margin.
  std::array<double, 4> traceBox(const std::vector<Particle>& particles) const {
    double x1 = 1e300, y1 = 1e300, x2 = -1e300, y2 = -1e300;
    auto add = [&](double x, double y) {
      if (!std::isfinite(x) || !std::isfinite(y)) return;
      x1 = std::min(x1, x);
      x2 = std::max(x2, x);
      y1 = std::min(y1, y);
      y2 = std::max(y2, y);
    };
    for (const Particle& p : particles) add(p.x, p.y);
    for (const Well& w : model_.wells) add(w.x, w.y);
    for (const PartialWell& w : model_.partialWells) add(w.x, w.y);
    for (const TheisWell& w : model_.theisWells) add(w.x, w.y);
    for (const LineSinkString& s : model_.lineSinks)
      for (const Segment& g : s.segments) {
        add(g.x1, g.y1);
        add(g.x2, g.y2);
      }
    if (x1 > x2) return {-1000, -1000, 1000, 1000};
    const double margin = std::max({0.1 * (x2 - x1), 0.1 * (y2 - y1), 100.0});
    return {x1 - margin, y1 - margin, x2 + margin, y2 + margin};
  }

  void apply(int line, const TraceInput& tr) {
    if (!tr.go) {
      logs_.problem(line, "", "the trace menu has no \"go\": nothing was traced and no pathline file was written");
      return;
    }
    currentLine_ = tr.goLine;
    std::string name = tr.file;
    if (name.empty()) {
      name = baseName_.empty() ? commandFile_.stem().string() : baseName_;
      logs_.problem(line, "", "the trace menu names no file; the paths go to " + withDefaultExtension(name, ".PTH"));
    }
    fs::path p = prepareOutputFile(workDir_, withDefaultExtension(name, ".PTH"));
    if (!solution_ || !solution_->solved()) {
      logs_.problem(tr.goLine, "", "trace \"go\" before the model was solved or loaded: nothing was traced; " +
                                       p.filename().string() + " was not written");
      return;
    }
    std::vector<Particle> particles;
    for (size_t i = 0; i < tr.points.size(); ++i) {
      const TracePointInput& q = tr.points[i];
      if (particles.size() >= kMaxParticles) {
        logs_.problem(q.line, "", "trace: more than " + std::to_string(kMaxParticles) +
                                      " particles in one block; this and the later points were skipped");
        break;
      }
      particles.push_back(Particle{q.x, q.y, q.z, q.direction < 0 ? -1 : 1, "particle " + std::to_string(i + 1)});
    }
    for (const TraceWellInput& w : tr.wells) {
      if (particles.size() >= kMaxParticles) {
        logs_.problem(w.line, "", "trace: more than " + std::to_string(kMaxParticles) +
                                      " particles in one block; this and the later well lines were skipped");
        break;
      }
      std::string why;
      std::vector<Particle> more = wellParticles(*solution_, w.x, w.y, w.z, w.particles, &why);
      if (more.empty()) logs_.problem(w.line, "", "trace \"well\": " + why + "; no particles were started here");
      particles.insert(particles.end(), more.begin(), more.end());
    }
    TraceSettings st;
    const Window& win = model_.window;
    if (win.given && win.x1 != win.x2 && win.y1 != win.y2 && std::isfinite(win.x1 + win.x2 + win.y1 + win.y2)) {
      st.x1 = win.x1;
      st.y1 = win.y1;
      st.x2 = win.x2;
      st.y2 = win.y2;
    } else {
      auto b = traceBox(particles);
      st.x1 = b[0];
      st.y1 = b[1];
      st.x2 = b[2];
      st.y2 = b[3];
      logs_.message("Trace: no layout window with a width and a height; the paths end " +
                    std::string("outside the box of the elements and particles enlarged by half"));
    }
    const double defaultStep = 0.004 * std::hypot(st.x2 - st.x1, st.y2 - st.y1);
    st.step = defaultStep;
    if (tr.step && *tr.step > 0 && std::isfinite(*tr.step)) {
      st.step = *tr.step;
    } else if (tr.step) {
      logs_.problem(tr.stepLine, "", "the trace step " + number(*tr.step) + " is not positive; the step " +
                                         number(defaultStep) + " (0.004 of the window's diagonal) was used");
    } else {
      logs_.message("Trace: no step given; the step is " + number(defaultStep) + " (0.004 of the window's diagonal)");
    }
    if (tr.time && *tr.time > 0) {
      st.maxTime = *tr.time;
    } else if (tr.time) {
      logs_.problem(tr.timeLine, "", "the longest travel time " + number(*tr.time) +
                                         " is not positive; the paths were traced without a time limit");
    }
    // A model without particles is common (nothing to trace is asked for): the run
    // says so in the message log, not as a problem in the error log.
    if (particles.empty())
      logs_.message("Trace: there are no particles to trace; " + p.filename().string() + " holds no paths");
    if (modelChanged_)
      logs_.problem(tr.goLine, "", "elements or aquifer data given after the last solve are not in the solution that "
                                   "the paths follow");
    const auto t0 = std::chrono::steady_clock::now();
    std::vector<Path> paths = tracePaths(*solution_, particles, st);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::ostringstream text;
    writePathFile(text, paths);
    if (!writeText(p, text.str())) {
      logs_.problem(tr.goLine, "", "the pathline file " + p.filename().string() + " could not be written");
      return;
    }
    logs_.wrote("pathline file", p);
    std::map<PathEnd, int> ends;
    long steps = 0;
    for (const Path& path : paths) {
      ++ends[path.end];
      steps += path.steps;
    }
    logs_.message("Traced " + std::to_string(paths.size()) + " paths (" + std::to_string(steps) + " steps, step " +
                  number(st.step) + ", longest time " + (std::isfinite(st.maxTime) ? number(st.maxTime) : "none") +
                  ") in " + number(seconds) + " s");
    for (const auto& [end, count] : ends)
      logs_.message("  " + std::to_string(count) + " ended: " + pathEndName(end));
  }
};

}  // namespace

int runCommands(const CommandFile& file, const fs::path& commandFile, const fs::path& workDir, const std::string& sizeArg) {
  Runner r(file, commandFile, workDir, sizeArg);
  return r.run();
}

int runSolverProgram(const std::vector<std::string>& args, const fs::path& workDir) {
  RunLogs reporter(workDir);
  try {
    removeStaleFatalReport(workDir);
    if (args.size() < 2) {
      std::fprintf(stderr, "usage: tarno1 <size> <name>\n");
      reporter.writeFatalReport({"The solver was started without its two arguments: the estimated number of "
                                 "equations and the name of the command file."});
      return kExitUsage;
    }
    const std::string& nameArg = args[1];
    auto path = findCommandFile(workDir, nameArg);
    if (!path) {
      reporter.writeFatalReport({"The command file " + commandFileName(nameArg) + " was not found in " +
                                     workDir.string() + ".",
                                 "Nothing was solved."});
      return kExitFatal;
    }
    std::error_code ec;
    auto size = fs::file_size(*path, ec);
    constexpr std::uintmax_t kMaxFileSize = std::uintmax_t(1) << 31;
    if (ec || size > kMaxFileSize) {
      reporter.writeFatalReport({"The command file " + path->filename().string() + " cannot be read" +
                                 (ec ? ": " + ec.message() : std::string(": it is larger than 2 GB")) + "."});
      return kExitFatal;
    }
    std::ifstream in(*path, std::ios::binary);
    std::string text;
    text.resize(static_cast<size_t>(size));
    if (!in || !in.read(text.data(), static_cast<std::streamsize>(size))) {
      reporter.writeFatalReport({"The command file " + path->filename().string() + " cannot be read."});
      return kExitFatal;
    }
    // The parameter value file beside the command file gives the values of the fields
    // of an estimation template that a plain solve carries (the aquifer's scenario tags).
    std::optional<ParameterValues> values;
    std::vector<std::string> valueProblems;
    const std::string valuesName = path->stem().string() + ".TPV";
    if (auto vp = findFileNoCase(path->parent_path(), valuesName)) {
      std::ifstream vin(*vp, std::ios::binary);
      std::string vtext((std::istreambuf_iterator<char>(vin)), std::istreambuf_iterator<char>());
      values = parseParameterValues(vtext, vp->filename().string(), &valueProblems);
    }
    CommandFile file = parseCommandFile(text, values ? &*values : nullptr);
    for (const std::string& p : valueProblems)
      file.problems.insert(file.problems.begin(), Diagnostic{0, "", values->file + ", " + p});
    text.clear();
    text.shrink_to_fit();
    return runCommands(file, *path, workDir, args[0]);
  } catch (const std::bad_alloc&) {
    reporter.writeFatalReport({"The solver ran out of memory while reading the command file.",
                               "The model is too large for the memory of this computer."});
    return kExitFatal;
  } catch (const std::exception& e) {
    reporter.writeFatalReport({std::string("The solver stopped: ") + e.what()});
    return kExitFatal;
  }
}

}  // namespace tarno::engine
