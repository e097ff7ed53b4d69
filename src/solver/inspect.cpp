#include "solver/inspect.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/error.h"
#include "core/file_find.h"
#include "core/format.h"
#include "core/solver_files.h"
#include "core/text.h"
#include "elements/command_block.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;
namespace layout = solver_files;

namespace {

constexpr const char* kInspectFile = "_INSPECT.DAT";
constexpr const char* kInspectExtract = "_INSPECT.XTR";
constexpr const char* kTraceFile = "_TRACE.DAT";
constexpr const char* kTracePath = "_TRACE.PTH";

void Put(std::ostream& out, const std::string& line) { PutLine(out, line); }

std::string F(double value, const char* mask) { return FormatNumber(value, mask); }

// The header lines of a small command file, with its own logs.
void Header(std::ostream& out, const std::string& first, const char* error, const char* message,
            const char* echo) {
  Put(out, first);
  Put(out, std::string(" error ") + error);
  Put(out, " yes");
  Put(out, std::string(" message ") + message);
  Put(out, " yes");
  Put(out, std::string(" echo ") + echo);
  Put(out, " yes");
  Put(out, " picture off");
  Put(out, " quit");
  Put(out, " ");
}

std::string Field(double v) {
  // The exponent form keeps five significant digits; from 1E+05 on it would drop
  // units of a coordinate, so those are written in full.
  // Built by appends: GCC 12 warns falsely (-Wrestrict) on " " + a std::string.
  if (std::fabs(v) >= 1e5) return std::string(1, ' ').append(F(v, "########.0"));
  return F(v, " 0.0000E+00");
}

struct ProjectFiles {
  std::string base;
  fs::path dir;
};

ProjectFiles ProjectFilesOf(Database& db) {
  Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
  if (!p.Step()) throw Error("The Project table has no row");
  return {p.GetText(0), fs::path(p.GetText(1))};
}

void RemoveNoCase(const fs::path& dir, const std::string& name) {
  for (;;) {
    const fs::path p = FindFileNoCase(dir, name);
    std::error_code ec;
    if (p.empty() || !fs::remove(p, ec)) return;
  }
}

std::vector<std::string> LinesOf(const fs::path& p) {
  std::vector<std::string> lines;
  std::ifstream in(p, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

void WriteText(const fs::path& p, const std::string& text) {
  std::ofstream out(p, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) throw Error("Cannot write the command file \"" + p.string() + "\"");
}

// Runs the solver on `commandFile` in the project's directory and waits. False,
// after the "Fatal execution error" message, when the run left TARNO.OPS or was
// ended by a signal.
bool RunSolver(SolveContext& ctx, Database& db, const ProjectFiles& pf,
               const std::string& commandFile) {
  UserInterface& ui = *ctx.ui;
  noexecutable(ui, ctx.programDirectory, kSolverProgram);
  ctx.Size = ModelGetSize(db, false, ui, ctx.leakageCells, ctx.modflow.GridPresent);
  RemoveNoCase(pf.dir, "TARNO.OPS");
  const pid_t pid =
      StartProgram(ctx.programDirectory / kSolverProgram, {std::to_string(ctx.Size), commandFile},
                   pf.dir, ctx.programOutput, ctx.solverErrors);
  const int status = WaitForTerm1(*ctx.waiter, pid);
  const fs::path ops = FindFileNoCase(pf.dir, "TARNO.OPS");
  if (ops.empty() && !EndedBySignal(status)) return true;
  std::vector<std::string> lines{"TARNO Encountered a fatal error: ", ""};
  if (!ops.empty()) {
    for (const auto& l : LinesOf(ops)) lines.push_back(l);
    std::error_code ec;
    fs::remove(ops, ec);
  } else {
    lines.push_back("The solver ended abnormally (signal " + std::to_string(status - 128) + ").");
  }
  ui.MessageBox("Fatal execution error", lines, Buttons::OK, Icon::Critical);
  return false;
}

// The point records of "_INSPECT.XTR", in order. Nothing, after the "Internal
// error" message, when one of them cannot be read.
std::optional<std::vector<InspectedPoint>> ReadInspection(const fs::path& file, UserInterface& ui) {
  std::vector<InspectedPoint> points;
  for (const std::string& line : LinesOf(file)) {
    if (line.empty() || line[0] != layout::kPointMark) continue;
    // The interface record follows the point it belongs to.
    if (const auto z = ParseInterfaceRecord(line)) {
      if (!points.empty()) points.back().interfaceElevation = *z;
      continue;
    }
    if (const auto rate = ParseCellLeakageRecord(line)) {
      if (!points.empty()) points.back().leakage = *rate;
      continue;
    }
    const auto p = ParseInspectedPoint(line);
    if (!p) {
      ui.MessageBox(
          "Internal error",
          {"Bad DATA record: Record in TARNO inspection file", "Cannot view model results"},
          Buttons::OK, Icon::Critical);
      return std::nullopt;
    }
    points.push_back(*p);
  }
  return points;
}

// Writes, runs and reads one inspection file. Nothing after a message.
std::optional<std::vector<InspectedPoint>> Inspect(SolveContext& ctx, Database& db,
                                                   const ProjectFiles& pf,
                                                   const InspectRequest& request, size_t expected) {
  RemoveNoCase(pf.dir, kInspectExtract);
  WriteText(pf.dir / kInspectFile, InspectCommandText(request));
  if (!RunSolver(ctx, db, pf, kInspectFile)) return std::nullopt;
  const fs::path xtr = FindFileNoCase(pf.dir, kInspectExtract);
  if (xtr.empty())
    throw Error("File not found: \"" + (pf.dir / kInspectExtract).string() + "\"",
                error_number::kFileNotFound);
  auto points = ReadInspection(xtr, *ctx.ui);
  if (points && points->size() < expected) {
    ctx.ui->MessageBox(
        "Internal error",
        {"Bad DATA record: Record in TARNO inspection file", "Cannot view model results"},
        Buttons::OK, Icon::Critical);
    return std::nullopt;
  }
  return points;
}

double SaturatedThickness(double head, double base, double thickness) {
  return std::max(0.0, std::min(head, base + thickness) - base);
}

}  // namespace

// ---- The settings dialog ---------------------------------------------------------

void InspectorDialog::Load(const InspectorSettings& s, bool basemapMeters) {
  Settings = s;
  dataStepSize = GeneralNumber(s.StepSize);
  lblStepUnit = basemapMeters ? "m" : "ft";
  tbElevation = GeneralNumber(s.Elevation);
  chkTop = s.InspectAtTop;
  chkTraceBackwards = s.TraceBackwards;
  Result = 2;
}

bool InspectorDialog::OK(UserInterface& ui) {
  InspectorSettings& s = Settings;
  const double step = Val(dataStepSize);
  if (!(step > 0)) {
    ui.MessageBox("Invalid Value", {"Invalid Step Size!", "Please enter a value larger than 0."},
                  Buttons::OK, Icon::Exclamation);
    return false;
  }
  s.StepSize = step;
  s.Elevation = Val(tbElevation);
  s.InspectAtTop = chkTop;
  s.TraceBackwards = chkTraceBackwards;
  Result = 1;
  return true;
}

// ---- Files -------------------------------------------------------------------------

std::optional<InspectedPoint> ParseInspectedPoint(const std::string& line) {
  namespace pt = layout::point;
  if (line.empty() || line[0] != layout::kPointMark) return std::nullopt;
  int n = 0;
  std::vector<std::string> f;
  ParseString(line.substr(1), std::string(1, layout::kFieldSeparator), f, n);
  if (n < pt::kNumbers) return std::nullopt;
  // Every number field must hold a number: a gage or lake stage record, or a cut
  // line, is no point of the inspection.
  for (int i = 1; i <= pt::kNumbers; ++i) {
    const std::string t = TrimST(f[i]);
    char* end = nullptr;
    std::strtod(t.c_str(), &end);
    if (t.empty() || end != t.c_str() + t.size()) return std::nullopt;
  }
  InspectedPoint p;
  p.x = Val(f[pt::kX]);
  p.y = Val(f[pt::kY]);
  p.z = Val(f[pt::kZ]);
  p.potential = Val(f[pt::kPotential]);
  p.qx = Val(f[pt::kQx]);
  p.qy = Val(f[pt::kQy]);
  p.vx = Val(f[pt::kVx]);
  p.vy = Val(f[pt::kVy]);
  p.head = Val(f[pt::kHead]);
  p.vz = Val(f[pt::kVz]);
  p.porosity = Val(f[pt::kPorosity]);
  p.conductivity = Val(f[pt::kConductivity]);
  p.base = Val(f[pt::kBase]);
  p.recharge = Val(f[pt::kRecharge]);
  return p;
}

std::optional<double> ParseInterfaceRecord(const std::string& line) {
  namespace wr = layout::word_record;
  if (line.empty() || line[0] != layout::kPointMark) return std::nullopt;
  int n = 0;
  std::vector<std::string> f;
  ParseString(line.substr(1), std::string(1, layout::kFieldSeparator), f, n);
  if (n < wr::kValue || TrimST(f[wr::kWord]) != wr::kInterfaceWord) return std::nullopt;
  return Val(TrimST(f[wr::kValue]));
}

std::optional<double> ParseCellLeakageRecord(const std::string& line) {
  namespace wr = layout::word_record;
  if (line.empty() || line[0] != layout::kPointMark) return std::nullopt;
  int n = 0;
  std::vector<std::string> f;
  ParseString(line.substr(1), std::string(1, layout::kFieldSeparator), f, n);
  if (n < wr::kValue || TrimST(f[wr::kWord]) != wr::kCellLeakageWord) return std::nullopt;
  return Val(TrimST(f[wr::kValue]));
}

std::string InspectCommandText(const InspectRequest& r) {
  std::ostringstream out;
  Header(out, std::string("* Written by TARNO for Windows ") + kTarnoVersion, "error_insp.log",
         "message_insp.log", "echo_inspect.log");
  Put(out, " load " + r.baseName);
  Put(out, " time " + GeneralNumber(r.time));
  Put(out, " extract ");
  Put(out, " file _INSPECT.XTR");
  Put(out, " y");
  // The point: the elevation's mask has no blank before it, so one is put between
  // Y and the elevation (the solver also reads the two glued). Without an
  // elevation the solver takes the top of the saturated zone.
  std::string point = F(r.x, "0.0000000E+00 ") + F(r.y, "0.0000000E+00");
  if (r.z) point += " " + F(*r.z, "######.00");
  Put(out, point);
  if (r.interfacePoint)
    Put(out, " interface " + F(r.x, "0.0000000E+00 ") + F(r.y, "0.0000000E+00 "));
  if (r.leakagePoint)
    Put(out, std::string(" ") + layout::word_record::kCellLeakageWord + " " +
                 F(r.x, "0.0000000E+00 ") + F(r.y, "0.0000000E+00 "));
  if (r.neighbours) {
    const double d = r.step;
    const double c[6][3] = {{r.x + d, r.y, r.neighbourZ}, {r.x - d, r.y, r.neighbourZ},
                            {r.x, r.y + d, r.neighbourZ}, {r.x, r.y - d, r.neighbourZ},
                            {r.x, r.y, r.neighbourZ + d}, {r.x, r.y, r.neighbourZ - d}};
    for (const auto& p : c)
      Put(out, F(p[0], "0.0000000E+00 ") + F(p[1], "0.0000000E+00 ") + F(p[2], "0.0000000E+00 "));
  }
  Put(out, " quit ");
  Put(out, " stop");
  return out.str();
}

std::vector<std::string> ModelResultsLines(const InspectedPoint& p, double xMap, double yMap) {
  std::vector<std::string> lines = {"X       " + Field(xMap), "Y       " + Field(yMap),
                                    "Z       " + Field(p.z), "Head" + Field(p.head)};
  if (p.interfaceElevation) lines.push_back("Interface Elevation " + Field(*p.interfaceElevation));
  if (p.leakage) lines.push_back("Leakage" + Field(*p.leakage));
  const std::vector<std::string> rest = {
          "Porosity" + Field(p.porosity),
          "Conductivity" + Field(p.conductivity),
          "Bottom Elev" + Field(p.base),
          "Recharge" + Field(p.recharge),
          "Velocity (X)" + Field(p.vx),
          "Velocity (Y)" + Field(p.vy),
          "Velocity (Z)" + Field(p.vz),
          "All data are in computational units, except",
          "the x,y-coordinates, which are in map units."};
  lines.insert(lines.end(), rest.begin(), rest.end());
  return lines;
}

void ComputeIntegrity(const InspectedPoint& c, const std::array<InspectedPoint, 6>& nb, double step,
                      double aquiferBase, double aquiferThickness, SolverIntegrity& out) {
  const double twoD = 2 * step;
  // Analytic: the solver's velocities; the Dupuit flow is divergence-free in three
  // dimensions, and the divergence of the discharge is the areal recharge.
  out.VxAnyl = c.vx;
  out.VyAnyl = c.vy;
  out.VzAnyl = c.vz;
  out.divqAnyl = 0.0;
  out.divCapQAnyl = c.recharge;
  // Numerical: Darcy's law on the central differences of the head (v = -k grad h / n).
  const double kn = c.porosity != 0 ? c.conductivity / c.porosity : 0.0;
  out.VxNum = -kn * (nb[0].head - nb[1].head) / twoD;
  out.VyNum = -kn * (nb[2].head - nb[3].head) / twoD;
  // The Dupuit heads do not vary with depth: the vertical velocity follows from
  // continuity, zero at the base and growing with the height above it.
  const double horizontal = (nb[0].vx - nb[1].vx) / twoD + (nb[2].vy - nb[3].vy) / twoD;
  out.VzNum = -(c.z - c.base) * horizontal;
  out.divqNum = horizontal + (nb[4].vz - nb[5].vz) / twoD;
  auto discharge = [&](const InspectedPoint& p, double v) {
    return v * p.porosity * SaturatedThickness(p.head, aquiferBase, aquiferThickness);
  };
  out.divCapQNum = (discharge(nb[0], nb[0].vx) - discharge(nb[1], nb[1].vx)) / twoD +
                   (discharge(nb[2], nb[2].vy) - discharge(nb[3], nb[3].vy)) / twoD;
}

// ---- Operations -----------------------------------------------------------------------

InspectReport ModelInspectResults(SolveContext& ctx, const InspectorSettings& inspector,
                                  double xMap, double yMap) {
  InspectReport report;
  UserInterface& ui = *ctx.ui;
  if (!ctx.state->SolutionPresent) {
    ui.MessageBox(kNoSolutionTitle, {kNoSolutionText});
    return report;
  }
  try {
    ModelSettings& s = *ctx.settings;
    Database db = Database::Open(ctx.projectPath);
    const ProjectFiles pf = ProjectFilesOf(db);
    const ModelFrame frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
    InspectRequest r;
    r.baseName = pf.base;
    r.time = ctx.state->SolutionTime;
    r.x = WToM_X(frame, xMap);
    r.y = WToM_Y(frame, yMap);
    if (!inspector.InspectAtTop) r.z = inspector.Elevation;
    r.interfacePoint = s.chkAddSaltwaterInterface;
    r.leakagePoint = ctx.modflow.GridPresent;
    r.step = inspector.StepSize * s.BasemapConvert;
    const bool integrity = inspector.IntegrityCheck;
    ui.PleaseWaitShow("Inspecting...", 0);
    std::optional<std::vector<InspectedPoint>> points;
    try {
      if (integrity && r.z) {
        // One run: the point and its six neighbours around the given elevation.
        r.neighbours = true;
        r.neighbourZ = *r.z;
        points = Inspect(ctx, db, pf, r, 7);
        ++report.solverRuns;
      } else {
        points = Inspect(ctx, db, pf, r, 1);
        ++report.solverRuns;
        if (points && integrity) {
          // At the top of the saturated zone the elevation is known only now: the
          // neighbours are asked for around it in a second run.
          InspectRequest n = r;
          n.interfacePoint = false;
          n.leakagePoint = false;
          n.neighbours = true;
          n.neighbourZ = points->front().z;
          n.z = points->front().z;
          auto around = Inspect(ctx, db, pf, n, 7);
          ++report.solverRuns;
          if (around)
            points->insert(points->end(), around->begin() + 1, around->begin() + 7);
          else
            points.reset();
        }
      }
    } catch (...) {
      ui.PleaseWaitHide();
      throw;
    }
    ui.PleaseWaitHide();
    if (!points || points->empty()) return report;
    report.ran = true;
    report.point = points->front();
    report.lines = ModelResultsLines(report.point, MToW_X(frame, report.point.x),
                                     MToW_Y(frame, report.point.y));
    ui.MessageBox("Model Results", report.lines);
    if (integrity && points->size() >= 7) {
      std::array<InspectedPoint, 6> nb;
      for (int i = 0; i < 6; ++i)
        nb[static_cast<size_t>(i)] = (*points)[static_cast<size_t>(i) + 1];
      Statement m = db.Prepare("select AQBase, aqthickness from Model");
      if (!m.Step()) throw Error("The Model table has no row");
      ComputeIntegrity(report.point, nb, r.step, m.GetDouble(0), Val(m.GetText(1)),
                       report.integrityValues);
      report.integrity = true;
      ui.ShowModal(report.integrityValues);
    }
  } catch (const UiPortFailure&) {
    throw;
  } catch (const Error& e) {
    TARNOErrorAnalysis(ui, "ModelInspectResults", e.what(), e.number());
  } catch (const std::exception& e) {
    TARNOErrorAnalysis(ui, "ModelInspectResults", e.what(), 0);
  }
  return report;
}

void SolverIntegrityCheck_Click(UserInterface& ui, InspectorSettings& inspector) {
  ui.MessageBox("Solver Integrity Check", {"Solver Integrity data will be supplied by using",
                                           "the Instant Inspector (Shift left-mouse click)."});
  inspector.IntegrityCheck = true;
}

bool SET_TIME_Click(SolveContext& ctx) {
  UserInterface& ui = *ctx.ui;
  if (!ctx.state->SolutionPresent) {
    ui.MessageBox("Can't set time",
                  {"You must have a valid solution before changing the time setting"});
    return false;
  }
  const auto text = ui.InputBox(
      "Enter the time for the grid.\nNote: this will be ignored if no Theis wells are used",
      "Solution Time", GeneralNumber(ctx.state->SolutionTime));
  if (!text) return false;
  ctx.state->SolutionTime = Val(*text);
  // The grid and the traces belong to the old time: the regrid computes them again.
  ClearGridAndTraceFlags(*ctx.state);
  SolveOptions o;
  o.ForceRegrid = true;
  o.Prompt = false;
  ModelRunTARNO(ctx, o);
  return true;
}

std::string TraceCommandText(const TraceRequest& r) {
  std::ostringstream out;
  Header(out, std::string("* Written by TARNO for Windows Beta ") + kTarnoVersion,
         "error_trace.log", "message_trc.log", "echo_trace.log");
  Put(out, " load " + r.baseName);
  Put(out, " time " + GeneralNumber(r.time));
  Put(out, " layout ");
  Put(out, " window " + F(r.left, "######0.00 ") + F(r.bottom, "######0.00 ") +
               F(r.right, "######0.00 ") + F(r.top, "######0.00 "));
  Put(out, " quit ");
  Put(out, " trace ");
  Put(out, " picture off");
  Put(out, " time " + r.maxTime);
  if (!r.stepText.empty()) Put(out, " step " + r.stepText);
  Put(out, " file _TRACE.PTH");
  Put(out, " y");
  Put(out, " points");
  Put(out, " " + F(r.x, "#######0.00 ") + F(r.y, "#######0.00 ") + F(r.z, "######.00") + " " +
               std::to_string(r.direction) + " ");
  Put(out, " quit ");
  Put(out, " go");
  Put(out, " quit");
  Put(out, " stop");
  return out.str();
}

std::optional<Pathline> ModelTraceOneStreamline(SolveContext& ctx,
                                                const InspectorSettings& inspector, double xMap,
                                                double yMap) {
  UserInterface& ui = *ctx.ui;
  if (!ctx.state->SolutionPresent) {
    ui.MessageBox(kNoSolutionTitle, {kNoSolutionText});
    return std::nullopt;
  }
  try {
    ModelSettings& s = *ctx.settings;
    Database db = Database::Open(ctx.projectPath);
    const ProjectFiles pf = ProjectFilesOf(db);
    const ModelFrame frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
    TraceRequest r;
    r.baseName = pf.base;
    r.time = ctx.state->SolutionTime;
    r.left = WToM_X(frame, ctx.window.Left);
    r.right = WToM_X(frame, ctx.window.Right);
    r.bottom = WToM_Y(frame, ctx.window.Bottom);
    r.top = WToM_Y(frame, ctx.window.Top);
    r.maxTime = s.tbMaxTime;
    if (!s.chkDefaultStep) r.stepText = s.tbStepSize;
    r.x = WToM_X(frame, xMap);
    r.y = WToM_Y(frame, yMap);
    // At the top of the saturated thickness: the top of the aquifer, which the
    // solver brings down to the water table where the aquifer is unconfined.
    r.z = inspector.InspectAtTop ? Val(s.tbBase) + Val(s.tbThickness) : inspector.Elevation;
    r.direction = inspector.TraceDirection();
    ui.PleaseWaitShow("Tracing...", 0);
    bool ok = false;
    try {
      RemoveNoCase(pf.dir, kTracePath);
      WriteText(pf.dir / kTraceFile, TraceCommandText(r));
      ok = RunSolver(ctx, db, pf, kTraceFile);
    } catch (...) {
      ui.PleaseWaitHide();
      throw;
    }
    ui.PleaseWaitHide();
    if (!ok) return std::nullopt;
    const fs::path pth = FindFileNoCase(pf.dir, kTracePath);
    if (pth.empty())
      throw Error("File not found: \"" + (pf.dir / kTracePath).string() + "\"",
                  error_number::kFileNotFound);
    const std::vector<Pathline> paths = ReadPathFile(pth);
    // The streamline joins the pathlines of the solution, drawn with them.
    fs::path all = FindFileNoCase(pf.dir, pf.base + ".PTH");
    if (all.empty()) all = pf.dir / (pf.base + ".PTH");
    {
      std::ofstream out(all, std::ios::binary | std::ios::app);
      for (const std::string& line : LinesOf(pth)) PutLine(out, line);
    }
    if (paths.empty()) return Pathline{};
    return paths.front();
  } catch (const UiPortFailure&) {
    throw;
  } catch (const Error& e) {
    TARNOErrorAnalysis(ui, "ModelTraceOneStreamline", e.what(), e.number());
  } catch (const std::exception& e) {
    TARNOErrorAnalysis(ui, "ModelTraceOneStreamline", e.what(), 0);
  }
  return std::nullopt;
}

}  // namespace tarno
