// The files of a PEST run on the solver, written from the project's scenario tags
// (the parameters) and its test points (the observations).
//
//   <base>.pst    the control file
//   <base>.ins    the instruction file that reads the test points from <base>.XTR
//   <base>.tpl    the solver's command file with the tagged values as parameter fields
//   T-PEST.bat    the model command for Windows, as the estimation program runs it there
//   T-PEST.sh     the same command for this platform; this is the one the control file
//                 names here (the program directory's tarno1 on <base>.DAT)
//
// All files lie in the project's solver folder (Project.TARNOBasePath) under its
// base name (Project.TARNOBaseName).
//
// The API for other code (the estimator, tarnocmd, the dialog):
//
//   WritePestFiles(ctx, prompt)   every file of a project; the paths written, none
//                                 when the project has no scenario (after the
//                                 "No Scenarios" message)
//   PestParameters(db)            the parameter rows of the control file
//   PestObservations(db)          the observation rows, piezometers, gages, lake stages
//   PestControlText(...)          the texts of the single files, for tests and reuse
//
// Parameter names in the control file and in the template's fields are both the tag
// padded with blanks to 12 characters, so that the estimation program finds every
// parameter of the control file in the template.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

class Database;
struct SolveContext;

// The groups of parameters, in the order the control file lists them.
enum class PestGroup { Kh, Base, Khi, Rch, Res };
const char* PestGroupName(PestGroup g);

struct PestParameter {
  PestGroup group = PestGroup::Kh;
  std::string tag;       // the scenario tag as stored (not padded)
  double value = 0.0;    // the current value (a recharge of zero is 1e-25)
  bool logTransform = false;
  double lower = 0.0;
  double upper = 0.0;
};

struct PestObservation {
  std::string label;
  std::string type;   // "Piezometer", "Gage" or "Lake Stage"
  std::int64_t vid = 0;
  double observed = 0.0;
  double pestWeight = 1.0;
  double ucodeWeight = 1.0;
};

// Whether any value of the project carries a scenario tag (the model's conductivity
// or base, an inhomogeneity's conductivity or recharge, a line-sink's resistance).
bool AnyScenario(Database& db);

// The parameters in the order Kh, Base, Khi, Rch, Res; within Khi, Rch and Res one
// row per distinct tag (compared without regard to case, in the order of the tags),
// with the value of the first row (by key) that carries it.
std::vector<PestParameter> PestParameters(Database& db);

// The test points: piezometers, then gages, then lake stages, each in key order.
// Test points of any other type are not observations.
std::vector<PestObservation> PestObservations(Database& db);

// The model command line of the control file: "T-PEST.bat" on Windows; here the
// shell script beside it.
std::string PestModelCommandLine();
inline constexpr const char* kPestBatchFile = "T-PEST.bat";
inline constexpr const char* kPestShellFile = "T-PEST.sh";

// The texts of the files, lines ended by CR LF (the shell script by LF alone).
// `testPointCount` is the number of rows of TestPoints (NOBS), which counts test
// points of every type.
std::string PestControlText(const std::vector<PestParameter>& parameters,
                            const std::vector<PestObservation>& observations,
                            std::int64_t testPointCount, const std::string& base,
                            const std::string& modelCommandLine);
std::string PestInstructionText(const std::vector<PestObservation>& observations);
std::string PestBatchText(const std::filesystem::path& programDirectory, int size,
                          const std::string& base);
std::string PestShellText(const std::filesystem::path& programDirectory, int size,
                          const std::string& base);

// The advice shown before a template is written ("TPLIterPrompt"). The caller keeps
// one TemplatePromptMemory for the run of the program, so that "Don't show again"
// holds for PEST and UCODE apart.
class TemplatePrompt : public DialogModel {
 public:
  static constexpr const char* kName = "TPLIterPrompt";
  static constexpr const char* kCaption =
      "Number of Iterations                       (F1 for Help)";
  std::string DialogName() const override { return kName; }
  // The text of lblPest or lblUcode, by ExportType.
  std::string Text() const;

  std::string ExportType = "PEST";  // "PEST" or "UCODE"
  bool chkDontShow = false;
};

struct TemplatePromptMemory {
  bool dontShowPest = false;
  bool dontShowUcode = false;
};

// ToolsExportTARNO for the estimation programs: brings the extents up to date,
// invalidates the present solution (without a question), shows the prompt (when
// `prompt` is given and the user has not ticked it off for the type), and writes
// <base>.tpl with write type 4 (PEST) or 5 (UCODE) with the contour and path boxes of
// the model settings cleared for the time of the writing. Returns the path.
std::filesystem::path ExportEstimationTemplate(SolveContext& ctx, int writeType,
                                               TemplatePromptMemory* prompt);

// Writes <base>.tpl, <base>.ins, <base>.pst, T-PEST.bat and T-PEST.sh for the project
// of `ctx` (projectPath, settings, state, ui, programDirectory, window are used) and
// says "Write PEST" with the list. Without a scenario in the project it says "No
// Scenarios" and writes nothing. Returns the paths written, in that order. Errors of
// the files or the store are thrown.
std::vector<std::filesystem::path> WritePestFiles(SolveContext& ctx,
                                                  TemplatePromptMemory* prompt = nullptr,
                                                  bool announce = true);

}  // namespace tarno
