#include "calibration/ucode_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <sstream>

#include "calibration/estimation_support.h"
#include "core/error.h"
#include "core/format.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "solver/command_file.h"
#include "solver/solve_controller.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

constexpr const char* kEol = "\r\n";

// Spacer: the text padded with blanks to `width` (a longer text stays whole).
std::string Spacer(const std::string& text, int width) { return PadString(text, width, " "); }

std::string E5(double v) { return FormatPrintf("%1.5e", v); }

const char* RecordPrefix(const std::string& type) {
  if (type == "Piezometer") return "TP_";
  if (type == "Gage") return "TG_";
  return "TS_";
}

const char* Columns(const std::string& type) {
  if (type == "Piezometer") return "123_136";
  if (type == "Gage") return "44_56";
  return "50_62";
}

UcodeParameter Ranged(const std::string& tag, double start, bool log) {
  UcodeParameter p;
  p.tag = tag;
  p.start = start;
  p.min = std::min(start * 0.1, start * 10.0);
  p.max = std::max(start * 0.1, start * 10.0);
  p.log = log;
  return p;
}

}  // namespace

std::vector<UcodeParameter> UcodeParameters(Database& db) {
  std::vector<UcodeParameter> out;
  const ModelScenarios m = LoadModelScenarios(db);
  if (m.hydCondOn) out.push_back(Ranged(m.hydCondTag, m.hydCond, true));
  if (m.baseOn) {
    UcodeParameter p;
    p.tag = m.baseTag;
    p.start = m.base;
    p.min = m.base - (std::fabs(m.base) + 10.0);
    p.max = m.base + (std::fabs(m.base) + 10.0);
    out.push_back(p);
  }
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::LinesinkResistance))
    out.push_back(Ranged(t.tag, t.value, false));
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::InhomogeneityHydCond))
    out.push_back(Ranged(t.tag, t.value, true));
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::InhomogeneityRecharge))
    out.push_back(Ranged(t.tag, t.value == 0.0 ? 1e-25 : t.value, false));
  return out;
}

std::string UcodeModelCommandLine() {
#ifdef _WIN32
  return kUcodeBatchFile;
#else
  return std::string("./") + kUcodeShellFile;
#endif
}

std::string UcodeUniversalText(const std::vector<PestObservation>& observations,
                               const std::string& date, const std::string& modelCommandLine) {
  const std::string top = "#########################################";
  std::ostringstream s;
  s << top << kEol << "#####  UCODE Universal Input File   #####" << kEol
    << "#####                               #####" << kEol
    << "#####    Written by TARNO           #####" << kEol
    << "#####         " << date << "              #####" << kEol << top << kEol;
  s << "         1          # PHASE" << kEol;
  s << "##### Sensitivity and Regression Control" << kEol;
  s << "         1          # DIFFERENCING" << kEol << "  0.005000          # TOL" << kEol
    << "  0.000100          # SOSR" << kEol << "         0          # NOPT" << kEol
    << "        15          # MAX-ITER" << kEol << "  0.90000           # MAX-CHANGE" << kEol;
  s << "##### Inversion Code and Application Models" << kEol;
  s << "mrdrive             # INVERSION ALGORITHM" << kEol << "         1          # N-APPLICATIONS"
    << kEol << Spacer(modelCommandLine, 22) << "# APPLICATION MODEL EXECUTION COMMAND" << kEol;
  s << "##### Printing Options" << kEol;
  s << "         3          # SCALE-SENSITIVITIES" << kEol << "         1          # PRINT-INTERMEDIATE"
    << kEol << "         1          # GRAPH" << kEol << "         0          # NUMBER-RESIDUAL-SETS"
    << kEol;
  const std::string header = "# OBS-NAME   OBS-VALUE   STATISTIC   STAT-FLAG   PLOT-SYMBOL #";
  const std::string frame(header.size(), '#');
  const std::pair<const char*, const char*> sections[] = {
      {"Piezometer", "Head targets"}, {"Gage", "Stream Flow targets"}, {"Lake Stage", "Lake Stage targets"}};
  for (const auto& [type, title] : sections) {
    s << frame << kEol;
    s << Spacer(std::string("# ") + title, static_cast<int>(header.size()) - 1) << "#" << kEol;
    s << frame << kEol << header << kEol;
    for (const PestObservation& o : observations) {
      if (o.type != type) continue;
      s << Spacer(o.label, 13) << Spacer(FormatNumber(o.observed, "0000.00"), 12)
        << Spacer(FormatPrintf("%1.6f", o.ucodeWeight), 12) << Spacer("0", 12) << "#       "
        << RecordPrefix(o.type) << FormatNumber(static_cast<double>(o.vid), "000000") << kEol;
    }
  }
  return s.str();
}

std::string UcodePrepareText(const std::vector<UcodeParameter>& parameters, bool recharge,
                             const std::string& base, const std::string& version) {
  const std::string top = "#########################################";
  std::ostringstream s;
  s << top << kEol << "#####     UCODE Prepare File        #####" << kEol
    << "#####   TARNO " << version << "   #####" << kEol << top << kEol;
  if (recharge)
    s << "F YES #### .fnc file used to reverse the sign on recharge rates" << kEol;
  else
    s << "F no #### no .fnc file used" << kEol;
  s << "< " << base << ".tpl" << kEol << "> " << base << ".DAT" << kEol << "#" << kEol;
  const std::string frame =
      "########################################### Parameter Data ###########################################";
  s << frame << kEol;
  s << "# SEARCH-STRING  START-VALUE    MIN             MAX             PERTURBATION    FORMAT  LOG  "
       "ESTIMATE#"
    << kEol;
  s << std::string(frame.size(), '#') << kEol;
  for (const UcodeParameter& p : parameters) {
    s << Spacer("!" + p.tag + "!", 17) << Spacer(E5(p.start), 15) << Spacer(E5(p.min), 16)
      << Spacer(E5(p.max), 16) << Spacer(E5(p.perturbation), 16) << "/!" << "%1.5e" << "!  "
      << Spacer(p.log ? "1" : "0", 5) << "1" << kEol;
  }
  s << "END" << kEol;
  return s.str();
}

std::string UcodeExtractText(const std::vector<PestObservation>& observations,
                             const std::string& base) {
  const std::string top = "#########################################";
  const std::string frame(48, '#');
  std::ostringstream s;
  s << top << kEol << "#####   UCODE Extract Input File    #####" << kEol << top << kEol;
  const std::pair<const char*, const char*> sections[] = {
      {"Piezometer", "##              Piezometers                   ##"},
      {"Gage", "##              Stream Gages                  ##"},
      {"Lake Stage", "##              Lake Stages                   ##"}};
  for (const auto& [type, title] : sections) {
    s << frame << kEol << title << kEol << frame << kEol;
    for (const PestObservation& o : observations) {
      if (o.type != type) continue;
      s << "<" << base << ".XTR" << kEol;
      s << "/" << RecordPrefix(o.type) << FormatNumber(static_cast<double>(o.vid), "000000") << "/"
        << kEol;
      s << "o " << o.label << kEol;
      s << "c" << Columns(o.type) << kEol;
    }
  }
  return s.str();
}

std::string UcodeFunctionText(const std::vector<std::string>& rechargeTags, const std::string& base) {
  std::ostringstream s;
  s << "# Reverse sign on all recharges." << kEol
    << "# The TARNO GUI and TARNO Solver differ in respect to the convention of the sign on all "
       "recharges"
    << kEol << "# The Solver requires the opposite sign of that which is stored in the project database."
    << kEol << "#" << kEol;
  s << ":file " << base << ".tpl" << kEol;
  for (const std::string& tag : rechargeTags)
    s << ":key " << tag << "_" << kEol << "    $x*-1.0" << kEol << "#" << kEol;
  return s.str();
}

std::string UcodeBatchText(const fs::path& baseDirectory, int size, const std::string& base) {
  return baseDirectory.string() + "\\TARNO1.EXE " + std::to_string(size) + " " + base + ".dat" + kEol;
}

std::string UcodeShellText(const fs::path& programDirectory, int size, const std::string& base) {
  // The input as the prepare file names it (see PestShellText).
  return "#!/bin/sh\n"
         "# The application model of the UCODE run: the solver on the file UCODE writes\n"
         "# from the template.\n"
         "exec " +
         ShellQuoted((programDirectory / kSolverProgram).string()) + " " + std::to_string(size) +
         " " + ShellQuoted(base + ".DAT") + "\n";
}

std::vector<std::string> UcodeInputFiles(const std::string& base) {
  return {base + ".uni", base + ".pre", base + ".ext", base + ".fnc",
          base + ".tpl", kUcodeBatchFile, kUcodeShellFile};
}

std::vector<fs::path> WriteUcodeFiles(SolveContext& ctx, TemplatePromptMemory* prompt,
                                      const std::string& date) {
  if (ctx.ui == nullptr) throw InvalidArgumentError("WriteUcodeFiles needs a user interface");
  UserInterface& ui = *ctx.ui;
  EstimationProject project;
  {
    Database db = Database::Open(ctx.projectPath);
    if (!AnyScenario(db)) {
      ui.MessageBox("No Scenarios", {"There are no Scenarios in this project!",
                                     "No UCODE Input files will be written."});
      return {};
    }
    project = LoadEstimationProject(db);
  }
  const fs::path& dir = project.dir;
  const std::string& base = project.base;
  std::error_code ec;
  for (const std::string& name : UcodeInputFiles(base)) fs::remove(dir / name, ec);

  std::vector<fs::path> written;
  written.push_back(ExportEstimationTemplate(ctx, kWriteUcodeTemplate, prompt));
  Database db = Database::Open(ctx.projectPath);
  const int size = ModelGetSize(db, false, ui, ctx.leakageCells, ctx.modflow.GridPresent);
  WriteTextFile(dir / kUcodeBatchFile, UcodeBatchText(dir, size, base));
  written.push_back(dir / kUcodeBatchFile);
  WriteTextFile(dir / kUcodeShellFile, UcodeShellText(ctx.programDirectory, size, base));
  ::chmod((dir / kUcodeShellFile).c_str(), 0755);
  written.push_back(dir / kUcodeShellFile);

  std::vector<std::string> rechargeTags;
  for (const TaggedValue& t : DistinctTags(db, ScenarioField::InhomogeneityRecharge))
    rechargeTags.push_back(t.tag);
  if (!rechargeTags.empty()) {
    WriteTextFile(dir / (base + ".fnc"), UcodeFunctionText(rechargeTags, base));
    written.push_back(dir / (base + ".fnc"));
  }
  std::string today = date;
  if (today.empty()) {
    const std::time_t now = std::time(nullptr);
    char buffer[16];
    std::strftime(buffer, sizeof buffer, "%m/%d/%y", std::localtime(&now));
    today = buffer;
  }
  const std::vector<PestObservation> observations = PestObservations(db);
  WriteTextFile(dir / (base + ".uni"),
                UcodeUniversalText(observations, today, UcodeModelCommandLine()));
  written.push_back(dir / (base + ".uni"));
  WriteTextFile(dir / (base + ".pre"),
                UcodePrepareText(UcodeParameters(db), !rechargeTags.empty(), base, kTarnoVersion));
  written.push_back(dir / (base + ".pre"));
  WriteTextFile(dir / (base + ".ext"), UcodeExtractText(observations, base));
  written.push_back(dir / (base + ".ext"));
  return written;
}

}  // namespace tarno
