#include "calibration/pest_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "calibration/estimation_support.h"
#include "core/error.h"
#include "core/format.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

constexpr const char* kEol = "\r\n";

std::string G(double v) { return GeneralNumber(v); }

// value * 0.1 and value / 0.1, the lower first for a value of zero or above.
void SignedBounds(double value, bool reverse, double& lower, double& upper) {
  if (!reverse) {
    lower = value * 0.1;
    upper = value / 0.1;
  } else {
    lower = value / 0.1;
    upper = value * 0.1;
  }
}

const char* GroupDataText(PestGroup g) {
  switch (g) {
    case PestGroup::Kh: return "Kh     1.0      0.0 1";
    case PestGroup::Base: return "Base   1.0      0.0 1";
    case PestGroup::Khi: return "Khi    1.0      0.0 1";
    case PestGroup::Rch: return "Rch    -1.0     0.0 1";
    case PestGroup::Res: return "Res    1.0      0.0 1";
  }
  return "";
}

const char* ObservationGroup(const std::string& type) {
  if (type == "Piezometer") return "Head";
  if (type == "Gage") return "Streamflow";
  return "Lakestage";
}

}  // namespace

const char* PestGroupName(PestGroup g) {
  switch (g) {
    case PestGroup::Kh: return "Kh";
    case PestGroup::Base: return "Base";
    case PestGroup::Khi: return "Khi";
    case PestGroup::Rch: return "Rch";
    case PestGroup::Res: return "Res";
  }
  return "";
}

bool AnyScenario(Database& db) {
  const ModelScenarios m = LoadModelScenarios(db);
  if (m.hydCondOn || m.baseOn) return true;
  if (AnyElementWhere(db, ElementKind::Inhomogeneity, "chkScenarioHydCond", "=", Value{std::int64_t{1}}) ||
      AnyElementWhere(db, ElementKind::Inhomogeneity, "chkScenarioRecharge", "=", Value{std::int64_t{1}}))
    return true;
  return AnyElementWhere(db, ElementKind::Linesink, "chkScenario", "=", Value{std::int64_t{1}});
}

std::vector<PestParameter> PestParameters(Database& db) {
  std::vector<PestParameter> out;
  const ModelScenarios m = LoadModelScenarios(db);
  if (m.hydCondOn) {
    PestParameter p{PestGroup::Kh, m.hydCondTag, m.hydCond, true, m.hydCond * 0.1, m.hydCond / 0.1};
    out.push_back(p);
  }
  if (m.baseOn) {
    PestParameter p{PestGroup::Base, m.baseTag, m.base, false, 0, 0};
    SignedBounds(m.base, m.base < 0, p.lower, p.upper);
    out.push_back(p);
  }
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::InhomogeneityHydCond)) {
    out.push_back({PestGroup::Khi, t.tag, t.value, true, t.value * 0.1, t.value / 0.1});
  }
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::InhomogeneityRecharge)) {
    PestParameter p{PestGroup::Rch, t.tag, t.value == 0.0 ? 1e-25 : t.value, false, 0, 0};
    SignedBounds(p.value, t.value < 0, p.lower, p.upper);
    out.push_back(p);
  }
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::LinesinkResistance)) {
    out.push_back({PestGroup::Res, t.tag, t.value, false, t.value * 0.1, t.value / 0.1});
  }
  return out;
}

std::vector<PestObservation> PestObservations(Database& db) {
  std::vector<PestObservation> out;
  const std::vector<Element> points = LoadAllRows(db, ElementKind::TestPoint);
  for (const char* type : {"Piezometer", "Gage", "Lake Stage"}) {
    for (const Element& e : points) {
      if (!EqualsIgnoreCase(e.row.Text("Type"), type)) continue;
      PestObservation o;
      o.label = e.row.Text("Label");
      o.type = type;
      o.vid = e.key;
      o.observed = std::string(type) == "Gage" ? e.row.Number("ObsStreamFlow") : e.row.Number("ObsHead");
      o.pestWeight = e.row.Number("PESTWeight");
      o.ucodeWeight = e.row.Number("UCODEWeight");
      out.push_back(std::move(o));
    }
  }
  return out;
}

std::string PestModelCommandLine() {
#ifdef _WIN32
  return kPestBatchFile;
#else
  return std::string("./") + kPestShellFile;
#endif
}

std::string PestControlText(const std::vector<PestParameter>& parameters,
                            const std::vector<PestObservation>& observations,
                            std::int64_t testPointCount, const std::string& base,
                            const std::string& modelCommandLine) {
  bool groupUsed[5] = {false, false, false, false, false};
  for (const PestParameter& p : parameters) groupUsed[static_cast<int>(p.group)] = true;
  const int groupCount = static_cast<int>(std::count(std::begin(groupUsed), std::end(groupUsed), true));
  bool head = false, flow = false, lake = false;
  for (const PestObservation& o : observations) {
    if (o.type == "Piezometer") head = true;
    else if (o.type == "Gage") flow = true;
    else lake = true;
  }
  const int obsGroups = (head ? 1 : 0) + (flow ? 1 : 0) + (lake ? 1 : 0);

  std::ostringstream s;
  s << "pcf" << kEol << "* control data" << kEol << "restart estimation" << kEol;
  s << parameters.size() << ' ' << testPointCount << ' ' << groupCount << ' ' << 0 << ' '
    << obsGroups << kEol;
  s << "1  1  double  point  1  0  0" << kEol;
  s << "1.000000e+001  2.000000e+000  3.000000e-001  1.000000e-002  10" << kEol;
  s << "1.000000e+001  1.000000e+001  1.000000e-003" << kEol;
  s << "1.000000e-001 noaui" << kEol;
  s << "30 1.000000e-002  3  3  1.000000e-002  3" << kEol;
  s << "1  1  1" << kEol;
  s << "* parameter groups" << kEol;
  for (int g = 0; g < 5; ++g) {
    if (!groupUsed[g]) continue;
    s << PadString(PestGroupName(static_cast<PestGroup>(g)), 7, " ")
      << "relative   1.000000e-002  0.000000e+000  switch  2.000000e+000  parabolic" << kEol;
  }
  s << "* parameter data" << kEol;
  for (const PestParameter& p : parameters) {
    s << PadString(p.tag, 12, " ") << '\t' << (p.logTransform ? "log   factor  " : "none  factor  ")
      << G(p.value) << '\t' << G(p.lower) << '\t' << G(p.upper) << '\t' << GroupDataText(p.group)
      << kEol;
  }
  s << "* observation groups" << kEol;
  if (head) s << "Head" << kEol;
  if (flow) s << "Streamflow" << kEol;
  if (lake) s << "Lakestage" << kEol;
  s << "* observation data" << kEol;
  for (const PestObservation& o : observations) {
    s << o.label << ' ' << G(o.observed) << '\t' << FormatPrintf("%1.6f", o.pestWeight) << ' '
      << ObservationGroup(o.type) << kEol;
  }
  s << "* model command line" << kEol << modelCommandLine << kEol;
  s << "* model input/output" << kEol;
  s << base << ".tpl " << base << ".DAT" << kEol;
  s << base << ".ins " << base << ".XTR" << kEol;
  return s.str();
}

std::string PestInstructionText(const std::vector<PestObservation>& observations) {
  std::ostringstream s;
  s << "pif ~" << kEol << "~*~" << kEol;
  for (const PestObservation& o : observations) {
    const char* columns = o.type == "Piezometer" ? "123:136" : o.type == "Gage" ? "44:56" : "50:62";
    s << "l1 [" << o.label << "]" << columns << kEol;
  }
  return s.str();
}

std::string PestBatchText(const fs::path& programDirectory, int size, const std::string& base) {
  return "\"" + programDirectory.string() + "\\TARNO1.EXE\" " + std::to_string(size) + " " + base +
         ".dat" + kEol;
}

std::string PestShellText(const fs::path& programDirectory, int size, const std::string& base) {
  // The model input is named exactly as the control file names it: the solver takes
  // an exact match of the name first, and a <base>.dat left by a plain solve must
  // not be solved in place of the estimation program's <base>.DAT.
  return "#!/bin/sh\n"
         "# The model command of the PEST run: the solver on the file the estimation\n"
         "# program writes from the template.\n"
         "exec " +
         ShellQuoted((programDirectory / kSolverProgram).string()) + " " + std::to_string(size) +
         " " + ShellQuoted(base + ".DAT") + "\n";
}

std::string TemplatePrompt::Text() const {
  // lblPest and lblUcode say the same.
  return "Make sure that \"Number of Iterations (inner loop)\" on the Model>Settings>Solver tab is "
         "set to the maximum iterations needed (as anticipated) and use the associated Advanced "
         "button to set solver convergence criteria. Make sure that the file\"convergence.tab\" "
         "resides in the working directory for the " +
         std::string(ExportType == "UCODE" ? "UCODE" : "PEST") + " controlled TARNO runs.";
}

fs::path ExportEstimationTemplate(SolveContext& ctx, int writeType, TemplatePromptMemory* prompt) {
  if (ctx.settings == nullptr || ctx.state == nullptr || ctx.ui == nullptr)
    throw InvalidArgumentError("the template needs the model settings, state and interface");
  {
    Database db = Database::Open(ctx.projectPath);
    ModelCheckExtents(db, ctx.window, ctx.basemapExtents);
  }
  {
    // The invalidation waits for nothing, but takes only a complete context.
    BlockingWaiter blocking;
    SolveContext invalidate = ctx;
    if (invalidate.waiter == nullptr) invalidate.waiter = &blocking;
    InvalidateSolution(invalidate, false, true);
  }
  if (prompt != nullptr) {
    bool& dontShow = writeType == kWriteUcodeTemplate ? prompt->dontShowUcode : prompt->dontShowPest;
    if (!dontShow) {
      TemplatePrompt p;
      p.ExportType = writeType == kWriteUcodeTemplate ? "UCODE" : "PEST";
      ctx.ui->ShowModal(p);
      dontShow = p.chkDontShow;
    }
  }
  ModelSettings& s = *ctx.settings;
  const bool contour = s.chkContour;
  const bool paths = s.chkComputePaths;
  s.chkContour = false;
  s.chkComputePaths = false;
  CommandFileContext cc;
  cc.projectPath = ctx.projectPath;
  cc.settings = ctx.settings;
  cc.state = ctx.state;
  cc.window = ctx.window;
  cc.modflow = ctx.modflow;
  cc.basemapExtents = ctx.basemapExtents;
  cc.ui = ctx.ui;
  fs::path written;
  try {
    written = ModelWriteInputFile(writeType, false, true, cc);
  } catch (...) {
    s.chkContour = contour;
    s.chkComputePaths = paths;
    throw;
  }
  s.chkContour = contour;
  s.chkComputePaths = paths;
  return written;
}

std::vector<fs::path> WritePestFiles(SolveContext& ctx, TemplatePromptMemory* prompt,
                                     bool announce) {
  if (ctx.ui == nullptr) throw InvalidArgumentError("WritePestFiles needs a user interface");
  UserInterface& ui = *ctx.ui;
  EstimationProject project;
  {
    Database db = Database::Open(ctx.projectPath);
    if (!AnyScenario(db)) {
      ui.MessageBox("No Scenarios", {"There are no Scenarios in this project!",
                                     "No PEST Input files will be written."});
      return {};
    }
    project = LoadEstimationProject(db);
  }
  std::vector<fs::path> written;
  written.push_back(ExportEstimationTemplate(ctx, kWritePestTemplate, prompt));

  Database db = Database::Open(ctx.projectPath);
  const std::vector<PestParameter> parameters = PestParameters(db);
  const std::vector<PestObservation> observations = PestObservations(db);
  const std::int64_t count = CountElements(db, ElementKind::TestPoint);
  const int size = ModelGetSize(db, false, ui, ctx.leakageCells, ctx.modflow.GridPresent);
  db.Close();

  const fs::path& dir = project.dir;
  const std::string& base = project.base;
  WriteTextFile(dir / (base + ".ins"), PestInstructionText(observations));
  written.push_back(dir / (base + ".ins"));
  WriteTextFile(dir / (base + ".pst"),
                PestControlText(parameters, observations, count, base, PestModelCommandLine()));
  written.push_back(dir / (base + ".pst"));
  WriteTextFile(dir / kPestBatchFile, PestBatchText(ctx.programDirectory, size, base));
  written.push_back(dir / kPestBatchFile);
  WriteTextFile(dir / kPestShellFile, PestShellText(ctx.programDirectory, size, base));
  ::chmod((dir / kPestShellFile).c_str(), 0755);
  written.push_back(dir / kPestShellFile);

  if (announce) {
    std::vector<std::string> lines = {"The following files were written:"};
    for (const fs::path& p : written) lines.push_back("- " + p.string());
    ui.MessageBox("Write PEST", lines);
  }
  return written;
}

}  // namespace tarno
