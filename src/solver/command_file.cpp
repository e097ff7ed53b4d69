#include "solver/command_file.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <ostream>
#include <sstream>
#include <unordered_map>
#include <vector>

#include "core/error.h"
#include "core/format.h"
#include "core/rounding.h"
#include "core/text.h"
#include "elements/barrier.h"
#include "elements/command_block.h"
#include "elements/element_store.h"
#include "elements/extents.h"
#include "elements/inhomogeneity.h"
#include "elements/lake.h"
#include "elements/linesink.h"
#include "elements/observation.h"
#include "elements/well.h"
#include "solver/model_settings.h"
#include "solver/results_loader.h"
#include "store/database.h"

namespace tarno {

namespace {

void Put(std::ostream& out, const std::string& line) { PutLine(out, line); }

std::string F(double value, const char* mask) { return Masked(value, mask); }

// A number without a mask: the general form, a blank (or "-") before, a blank after.
std::string G(double value) { return Unmasked(value); }

// The window line's four numbers: Left, Bottom, Right, Top in model coordinates.
std::string WindowNumbers(const ModelFrame& frame, const MapWindow& w) {
  return F(WToM_X(frame, w.Left), "######0.00 ") + F(WToM_Y(frame, w.Bottom), "######0.00 ") +
         F(WToM_X(frame, w.Right), "######0.00 ") + F(WToM_Y(frame, w.Top), "######0.00 ");
}

void WriteLayout(std::ostream& out, const ModelFrame& frame, const MapWindow& w) {
  Put(out, " layout ");
  Put(out, " window " + WindowNumbers(frame, w));
  Put(out, " quit ");
}

void OriginAndTitle(std::ostream& out, const ElementWriterContext& ctx) {
  const ModelExtents& e = ctx.extents;
  const int code = BasemapConvertCode(ctx.frame.basemapConvert);
  Put(out, " modelorigin " + G(e.MinX) + " " + G(e.MinY) + " " +
               (code == 2 ? " 2 " : code == 0 ? " 0 " : " 1 "));
  Put(out, " title " + ctx.baseName);
}

void Aquifer(std::ostream& out, Database& db, const ElementWriterContext& ctx,
             const std::string& pad) {
  Statement m = db.Prepare("select * from Model");
  if (!m.Step()) throw Error("The Model table has no row");
  const ModelSettings& s = *ctx.settings;
  const double base = m.GetDouble("AQBase");
  const double thickness = Val(m.GetText("aqthickness"));
  const double k = m.GetDouble("AQHydCond");

  Put(out, " aquifer");
  // These two parameter fields do not depend on the template switch: a scenario
  // tag on the aquifer goes into a plain solve's file as well.
  if (s.chkScenarioBaseElev && s.tbScenario[2] != "__NONE__")
    Put(out, " base " + AquiferParameterField(s.tbScenario[2], pad));
  else
    Put(out, " base " + F(base, "#.00000E+00"));
  if (s.chkScenarioHydCond && s.tbScenario[1] != "__NONE__")
    Put(out, " permeability " + AquiferParameterField(s.tbScenario[1], pad));
  else
    Put(out, " permeability " + F(k, "#.0000000E+00"));
  Put(out, " thickness " + F(thickness, "#.0000000E+00"));
  Put(out, " porosity " + F(m.GetDouble("AQPorosity"), "#.0000000E+00"));
  if (s.chkAddSaltwaterInterface)
    Put(out, " interface " + F(m.GetDouble("freshWSpecGravity"), "#.0000000E+00") + " " +
                 F(m.GetDouble("saltWSpecGravity"), "#.0000000E+00") + " " +
                 F(m.GetDouble("LocalSeaLevel"), "#.0000000E+00"));
  if (const auto uniform = LoadUniformFlow(db)) {
    const Row& u = uniform->row;
    const double refHead = u.Number("UNIFLOWRefHead");
    double h = refHead - base;
    if (h > thickness) h = thickness;
    const double q = u.Number("UNIFLOWGradient") * k * h;
    const double angle = u.Number("UNIFLOWOrientation") * 3.14159265358979 / 180;
    Put(out, " uniflow      " + F(q * std::cos(angle), "#.0000000E+00 ") +
                 F(q * std::sin(angle), "#.0000000E+00 "));
    Put(out, " reference    " + F(WToM_X(ctx.frame, u.Number("UNIFLOWRefX")), "#.0000000E+00 ") +
                 F(WToM_Y(ctx.frame, u.Number("UNIFLOWRefY")), "#.0000000E+00 ") +
                 F(refHead, "#.0000000E+00 "));
  } else {
    // Far away: ten half-diagonals beyond the centre of the extents.
    const ModelExtents& e = ctx.extents;
    const double dx = e.MaxX - e.MinX;
    const double dy = e.MaxY - e.MinY;
    const double r = std::sqrt(dx * dx + dy * dy) / 2;
    const double cx = (e.MinX + e.MaxX) / 2;
    const double cy = (e.MinY + e.MaxY) / 2;
    Put(out, " reference    " + F(WToM_X(ctx.frame, cx + 10 * r), "#.0000000E+00 ") +
                 F(WToM_Y(ctx.frame, cy + 10 * r), "#.0000000E+00 ") +
                 F(ctx.state->ReferenceHead, "#.0000000E+00 "));
  }
  Put(out, " quit ");
}

void LeakageOrigin(std::ostream& out, const ElementWriterContext& ctx) {
  if (!ctx.modflow.GridPresent) return;
  Put(out, " leakage");
  Put(out, " origin " + G(WToM_X(ctx.frame, ctx.modflow.LeakageX)) + " " +
               G(WToM_Y(ctx.frame, ctx.modflow.LeakageY)));
  Put(out, " quit");
}

}  // namespace

void ToolsWriteTARNOElements(std::ostream& out, Database& db, const ElementWriterContext& ctx,
                             bool fillResults, bool isTemplate, const std::string& padCharacter,
                             int& modelLevel) {
  if (ctx.settings == nullptr || ctx.state == nullptr)
    throw InvalidArgumentError("ToolsWriteTARNOElements needs the model settings and the state");
  UserInterface* ui = isTemplate ? nullptr : ctx.ui;
  if (ui != nullptr) ui->PleaseWaitShow("Writing Data to Solver...", 0);
  try {
    std::optional<Transaction> tx;
    if (!isTemplate) {
      tx.emplace(db);
      db.Execute("DELETE * FROM WLResults;");
      db.Execute("DELETE * FROM LSResults;");
      db.Execute("DELETE * FROM INResults;");
      db.Execute("DELETE * FROM NFResults;");
      ClearLakeResults(db);
    }
    // Each kind's block from its unit of the element layer, its elements read once
    // (LoadAllRows for the strings and polygons, whose menus stand as soon as their
    // table has a row; LoadAll for the wells, which need their vertex).
    CommandWriterContext wc;
    wc.frame = ctx.frame;
    wc.isTemplate = isTemplate;
    wc.pad = padCharacter;
    std::optional<ResultRowSink> rows;
    if (fillResults && !isTemplate) rows.emplace(db);
    ResultRowSink* sink = rows ? &*rows : nullptr;
    OriginAndTitle(out, ctx);
    Aquifer(out, db, ctx, padCharacter);
    WriteLayout(out, ctx.frame, ctx.window);
    WriteLakeCommands(out, LoadAllRows(db, ElementKind::Lake), wc);
    WriteInhomogeneityCommands(out, LoadAllRows(db, ElementKind::Inhomogeneity), wc, sink);
    WriteBarrierCommands(out, LoadAllRows(db, ElementKind::Barrier), wc, sink);
    WriteWellCommands(out, LoadAll(db, ElementKind::Well), wc, sink);
    WriteLinesinkCommands(out, LoadAllRows(db, ElementKind::Linesink), wc, sink);
    LeakageOrigin(out, ctx);
    rows.reset();
    if (tx) tx->Commit();
    modelLevel = wc.level;
  } catch (...) {
    if (ui != nullptr) ui->PleaseWaitHide();
    throw;
  }
  if (ui != nullptr) ui->PleaseWaitHide();
}

ModelExtents ModelCheckExtents(Database& db, const MapWindow& savedWindow,
                               const std::optional<ModelExtents>& basemapExtents) {
  const ModelExtents e = ElementExtents(db, savedWindow, basemapExtents);
  Statement up = db.PrepareRaw("update Model set SOLVERX0=?, SOLVERY0=?");
  up.Bind(1, (e.MinX + e.MaxX) / 2).Bind(2, (e.MinY + e.MaxY) / 2);
  up.Run();
  return e;
}

ModelFrame ModelRestoreModelOrigin(Database& db, double basemapConvert) {
  Statement st = db.Prepare("select SOLVERX0,SOLVERY0 from Model;");
  if (!st.Step()) throw Error("The Model table has no row");
  ModelFrame f;
  f.originX = st.GetDouble("SOLVERX0");
  f.originY = st.GetDouble("SOLVERY0");
  f.basemapConvert = basemapConvert;
  return f;
}

std::string CommandFileName(int writeType, const std::string& baseName) {
  switch (writeType) {
    case kWriteNewSolve:
    case kWriteContinue:
      return baseName + ".dat";
    case kWriteRegrid:
      return "regrid.dat";
    case kWritePestTemplate:
    case kWriteUcodeTemplate:
      return baseName + ".tpl";
    default:
      return "";
  }
}

namespace {

void IterationsAdvice(Database& db, ModelSettings& s, UserInterface& ui) {
  const int iterations = s.Iterations();
  int minimum = 0;
  std::string text;
  if (s.chkConjunctive && iterations < 5) {
    minimum = 5;
    text =
        "For conunctive surface water - grondwater solutions it is recommended to use at least  "
        "      iterations.";
  } else if (iterations < 3 &&
             AnyElementWhere(db, ElementKind::Inhomogeneity, "ChangeB", "=", Value{std::int64_t{1}})) {
    minimum = 3;
    text =
        "For models containing inhomogeneities with base elevation different from default, it is "
        "recommended to use at least        iterations.";
  } else if (iterations < 2 &&
             AnyElementWhere(db, ElementKind::Linesink, "Resistance", ">", Value{0.0})) {
    minimum = 2;
    text =
        "For models containing linesinks with resistance, it is recommended to use at least      "
        "  iterations.";
  }
  if (minimum == 0) return;
  IterationsDialog dialog;
  dialog.lblRecommended = text;
  dialog.lblRecommendedIterations = minimum;
  dialog.tbIterations = s.tbIterations;
  ui.ShowModal(dialog);
  if (dialog.Result != 1) return;
  s.SetIterations(dialog.tbIterations);
  // The count the user confirmed is the project's from now on: the model settings
  // show it when they open again, and the next solve needs no advice.
  Statement up = db.PrepareRaw("update Model set SOLVERIterations=?");
  up.Bind(1, static_cast<std::int64_t>(s.Iterations()));
  up.Run();
}

void PrepareNewSolve(Database& db, SolutionState& state, UserInterface& ui) {
  Statement m = db.Prepare("select * from Model");
  if (!m.Step()) throw Error("The Model table has no row");
  if (m.GetInt64("UNIFLOWCompute") != 0) return;
  const double top = m.GetDouble("AQBase") + Val(m.GetText("aqthickness"));
  const Value yes{std::int64_t{1}};
  const bool lsMatch = AnyElementWhere(db, ElementKind::Linesink, "HeadSpecified", "=", yes);
  const bool wlMatch = AnyElementWhere(db, ElementKind::Well, "HeadSpecified", "=", yes);
  if (!lsMatch && !wlMatch) {
    if (top != state.ReferenceHead) {
      ui.MessageBox("Warning",
                    {"No head-specified conditions exist.",
                     "Reference head will be set to aquifer top."},
                    Buttons::OK, Icon::Exclamation);
      state.ReferenceHead = top;
    }
    return;
  }
  // Half of the mean head of the wells, as the query says; that value is what the
  // file gets.
  state.ReferenceHead = lsMatch ? HalfMeanHeadOfHeadLinesinks(db) : HalfMeanHeadOfHeadWells(db);
}

void ExtractBlock(std::ostream& out, Database& db, const ModelFrame& frame,
                  const std::string& base) {
  Put(out, " extract");
  Put(out, " file " + base);
  Put(out, " y");
  WriteTestPointExtracts(out, LoadAll(db, ElementKind::TestPoint), frame);
  for (const char* request : {" well discharge", " well head", " ppwell discharge", " ppwell head",
                              " Theis well", " linesink discharge", " linesink head",
                              " inhomogeneity"})
    Put(out, request);
  WriteFluxLineExtracts(out, LoadAllRows(db, ElementKind::FluxLine), frame);
  Put(out, " quit");
}

void GridBlock(std::ostream& out, const ModelFrame& frame, const MapWindow& w,
               const ModelSettings& s, SolutionState& state, const std::string& base) {
  Put(out, " grid");
  if (s.chkContourElevation) {
    const double z = Val(s.tbContourElevation);
    Put(out, " window " + F(WToM_X(frame, w.Left), "######0.00 ") +
                 F(WToM_Y(frame, w.Bottom), "######0.00 ") + F(z, "######0.00 ") +
                 F(WToM_X(frame, w.Right), "######0.00 ") + F(WToM_Y(frame, w.Top), "######0.00 ") +
                 F(z, "######0.00 "));
  } else {
    Put(out, " window " + WindowNumbers(frame, w));
  }
  Put(out, " dotmap off");
  Put(out, " horizontalpoints " + std::to_string(s.DetailedContours()));
  static const char* kPlot[6] = {" plot heads",     " plot potentials", " plot discharge",
                                 " plot interface", " plot stream",     " plot heads"};
  static const char* kNote[6] = {"Contours: Heads",     "Contours: Potentials",
                                 "Contours: Discharge", "Contours: Interface",
                                 "Contours: Stream Function", "Contours: Drawdowns"};
  const int option = s.ContourProperty();
  Put(out, kPlot[option]);
  state.Note = kNote[option];
  Put(out, " go");
  if (option == kContourHeads) {
    // The grid of heads is kept under the base name for a later drawdown run.
    Put(out, " save " + base);
    Put(out, " y");
  }
  if (option == kContourDrawdowns) Put(out, " minusgrid " + base);
  Put(out, " surfer " + base);
  Put(out, " y ");
  Put(out, " quit");
}

void TraceBlock(std::ostream& out, Database& db, const ModelFrame& frame, const ModelSettings& s,
                const std::string& base) {
  Put(out, " trace");
  Put(out, " picture off");
  Put(out, " file " + base);
  Put(out, " y ");
  Put(out, " time " + s.tbMaxTime);
  // The step line is written whatever the default-step box shows.
  Put(out, " step " + s.tbStepSize);
  WriteParticleTraces(out, LoadAll(db, ElementKind::Particle), frame,
                      Val(s.tbThickness) + Val(s.tbBase));
  WriteWellParticleCommands(out, LoadAll(db, ElementKind::Well), frame);
  Put(out, " go");
  Put(out, " quit");
}

}  // namespace

std::vector<std::pair<std::string, std::string>> AquiferParameterValues(Database& db,
                                                                        const ModelSettings& s) {
  std::vector<std::pair<std::string, std::string>> values;
  Statement m = db.Prepare("select AQBase, AQHydCond from Model");
  if (!m.Step()) throw Error("The Model table has no row");
  // The values as the untagged file writes them, so a tagged model solves exactly as
  // the untagged one.
  if (s.chkScenarioBaseElev && s.tbScenario[2] != "__NONE__")
    values.emplace_back(s.tbScenario[2], F(m.GetDouble("AQBase"), "#.00000E+00"));
  if (s.chkScenarioHydCond && s.tbScenario[1] != "__NONE__")
    values.emplace_back(s.tbScenario[1], F(m.GetDouble("AQHydCond"), "#.0000000E+00"));
  return values;
}

void WriteParameterValues(const std::filesystem::path& commandFile, Database& db,
                          const ModelSettings& s) {
  std::filesystem::path path = commandFile;
  path.replace_extension(".TPV");
  const auto values = AquiferParameterValues(db, s);
  std::error_code ec;
  if (values.empty()) {
    // Nothing tagged: no file, so that an old one cannot give values to a template.
    std::filesystem::remove(path, ec);
    return;
  }
  std::ostringstream out;
  Put(out, "* Parameter values of " + commandFile.filename().string() + ", written by TARNO");
  for (const auto& [tag, value] : values) Put(out, tag + " " + value);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw Error("Cannot write the parameter value file \"" + path.string() + "\"");
  file << out.str();
  file.close();
  if (!file) throw Error("Cannot write the parameter value file \"" + path.string() + "\"");
}

std::filesystem::path ModelWriteInputFile(int writeType, bool solveOnly, bool silent,
                                          CommandFileContext& ctx) {
  if (ctx.settings == nullptr || ctx.state == nullptr || ctx.ui == nullptr)
    throw InvalidArgumentError("ModelWriteInputFile needs the model settings, state and interface");
  ModelSettings& s = *ctx.settings;
  SolutionState& state = *ctx.state;
  UserInterface& ui = *ctx.ui;
  if (writeType < kWriteNewSolve || writeType > kWriteUcodeTemplate) {
    ui.MessageBox("Illegal Parameter",
                  {"Illegal WriteType specified in ModelWriteInputFile.",
                   "No Input file has been written."});
    return {};
  }

  Database db = Database::Open(ctx.projectPath);
  std::string base;
  std::filesystem::path dir;
  {
    Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
    if (!p.Step()) throw Error("The Project table has no row");
    base = p.GetText("TARNOBaseName");
    dir = p.GetText("TARNOBasePath");
  }
  const std::filesystem::path path = dir / CommandFileName(writeType, base);
  const bool regrid = writeType == kWriteRegrid;
  const char* suffix = regrid ? "_gr" : "";

  // The file is assembled in memory and written at the end: a failure on the way
  // leaves the old file as it was, and the solve controller deletes stale files.
  std::ostringstream out;
  if (writeType == kWritePestTemplate) Put(out, "ptf !");
  Put(out, std::string("* Written by TARNO for Windows ") + kTarnoVersion);
  Put(out, std::string(" error error") + suffix + ".log");
  Put(out, " yes");
  Put(out, std::string(" message message") + suffix + ".log");
  Put(out, " yes");
  Put(out, std::string(" echo echo") + suffix + ".log");
  Put(out, " yes");
  Put(out, " picture off");
  Put(out, " quit");
  Put(out, " ");
  Put(out, " bfname  " + base);

  ModelFrame frame;
  ModelExtents extents;
  if (writeType == kWriteNewSolve) {
    extents = ModelCheckExtents(db, ctx.window, ctx.basemapExtents);
    frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
    PrepareNewSolve(db, state, ui);
  } else {
    frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
  }

  if (writeType == kWriteNewSolve || writeType == kWritePestTemplate ||
      writeType == kWriteUcodeTemplate) {
    // Templates take the extents as they stand; the origin row is not touched.
    if (writeType != kWriteNewSolve) extents = ElementExtents(db, ctx.window, ctx.basemapExtents);
    ElementWriterContext ec;
    ec.settings = &s;
    ec.state = &state;
    ec.window = ctx.window;
    ec.extents = extents;
    ec.frame = frame;
    ec.baseName = base;
    ec.modflow = ctx.modflow;
    ec.ui = &ui;
    int level = 1;
    const bool isTemplate = writeType != kWriteNewSolve;
    // PEST reads a parameter's name from its field without the blanks around it, and
    // its control file pads the names with blanks: the fields are padded with blanks
    // too (to the same width), or PEST finds the names of the control file nowhere in
    // the template. UCODE's fields keep the underscores that its search strings and
    // function file were written for.
    const char* pad = writeType == kWritePestTemplate ? " " : writeType == kWriteUcodeTemplate ? "_" : "";
    ToolsWriteTARNOElements(out, db, ec, !isTemplate, isTemplate, pad, level);
  }

  if (writeType == kWriteNewSolve && !silent) IterationsAdvice(db, s, ui);

  WriteLayout(out, frame, ctx.window);
  if (writeType == kWriteContinue || regrid) Put(out, " load " + base);

  if (!regrid) {
    if (ctx.modflow.GridPresent && ctx.modflow.IncludeLeakage) {
      const ModflowLink& mf = ctx.modflow;
      Put(out, " leakage");
      Put(out, " solve " + std::to_string(mf.IncludeLeakage ? 1 : 0) + " " +
                   std::to_string(mf.UseAverageHeads ? 1 : 0) + " " +
                   std::to_string(mf.UpdateResistances ? 1 : 0) + " " +
                   std::to_string(mf.UseSubGrid ? 1 : 0) + " " + F(mf.relax, "######0.00 "));
      Put(out, " quit");
    }
    Statement m = db.Prepare("select * from Model");
    if (!m.Step()) throw Error("The Model table has no row");
    const std::int32_t iterations =
        writeType == kWriteContinue ? CLng(Val(ctx.continueIterations)) : s.Iterations();
    const std::int64_t outer = m.GetBool("outeriterationsflag") ? m.GetInt64("OuterIterations") : 3;
    const std::int64_t store = s.chkAddSaltwaterInterface ? 0 : m.GetInt64("StoreMatrixOnDisk");
    const int full = m.GetBool("FastSolution") ? 0 : 1;
    Put(out, " time 0");
    Put(out, std::string(s.chkConjunctive ? " solve conjunctive " : " solve ") +
                 std::to_string(iterations) + " " + std::to_string(outer) + " " +
                 std::to_string(store) + " " + std::to_string(full));
    Put(out, " ");
    Put(out, " save " + base);
    Put(out, "y");
  }

  // " time ", then blanks so that the time begins in column 15.
  std::string timeLine = " time ";
  timeLine.resize(14, ' ');
  Put(out, timeLine + G(state.SolutionTime));

  if (!solveOnly) {
    ExtractBlock(out, db, frame, base);
    if (s.chkContour && !state.ContoursPresent) {
      state.ContoursPresent = true;
      GridBlock(out, frame, ctx.window, s, state, base);
    }
    if (s.chkComputePaths && !state.PathsPresent) {
      state.PathsPresent = true;
      TraceBlock(out, db, frame, s, base);
    }
  }
  Put(out, " stop");

  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw Error("Cannot write the command file \"" + path.string() + "\"");
  file << out.str();
  file.close();
  if (!file) throw Error("Cannot write the command file \"" + path.string() + "\"");
  if (writeType == kWriteNewSolve) WriteParameterValues(path, db, s);
  return path;
}

}  // namespace tarno
