// The files of a UCODE run on the solver, from the project's scenario tags and test
// points, all in the project's solver folder under its base name, lines ended by
// CR LF (the shell script by LF):
//
//   <base>.uni    universal input: control values and the observations
//   <base>.pre    prepare file: the parameter table
//   <base>.ext    extract file: where each observation stands in <base>.XTR
//   <base>.fnc    function file, only with recharge scenarios: the sign change
//   <base>.tpl    the solver's command file with parameter fields (write type 5)
//   T-UCODE.bat   the application model for Windows
//   T-UCODE.sh    the same for this platform, which the universal file names here
//
// Known limit: the prepare file's search strings are "!" + tag + "!", while the
// template's fields are padded to 12 characters ("!kaq_________!", "! kin_________ !");
// whether UCODE's substitution finds them could not be tried here (no UCODE at hand).
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "calibration/pest_files.h"

namespace tarno {

class Database;
struct SolveContext;

inline constexpr const char* kUcodeBatchFile = "T-UCODE.bat";
inline constexpr const char* kUcodeShellFile = "T-UCODE.sh";

// One row of the prepare file's parameter table.
struct UcodeParameter {
  std::string tag;
  double start = 0.0;
  double min = 0.0;
  double max = 0.0;
  double perturbation = 0.01;
  bool log = false;
};

// The rows in the order: the model's conductivity, the model's base, line-sink
// resistances, inhomogeneity conductivities, inhomogeneity recharges (distinct tags
// as for PEST). Conductivity, resistance and recharge range from a tenth to ten times
// the start value (a recharge of zero starts at 1e-25); the base from the start value
// less to the start value plus its magnitude and 10. Conductivities are estimated as
// logarithms.
std::vector<UcodeParameter> UcodeParameters(Database& db);

// The model command line of the universal file: "T-UCODE.bat" on Windows; here the
// shell script.
std::string UcodeModelCommandLine();

// The texts. `date` is "mm/dd/yy"; `version` the program's version.
std::string UcodeUniversalText(const std::vector<PestObservation>& observations,
                               const std::string& date, const std::string& modelCommandLine);
std::string UcodePrepareText(const std::vector<UcodeParameter>& parameters, bool recharge,
                             const std::string& base, const std::string& version);
std::string UcodeExtractText(const std::vector<PestObservation>& observations,
                             const std::string& base);
std::string UcodeFunctionText(const std::vector<std::string>& rechargeTags, const std::string& base);
std::string UcodeBatchText(const std::filesystem::path& baseDirectory, int size,
                           const std::string& base);
std::string UcodeShellText(const std::filesystem::path& programDirectory, int size,
                           const std::string& base);

// The input files of a UCODE run, in the order the dialog lists them.
std::vector<std::string> UcodeInputFiles(const std::string& base);

// cmdWriteUCODE: without a scenario says "No Scenarios" and writes nothing; else
// removes the old input files and writes the template, T-UCODE.bat and T-UCODE.sh,
// the function file (with recharge scenarios), the universal, prepare and extract
// files. `date` ("mm/dd/yy") defaults to today. Returns the paths written.
std::vector<std::filesystem::path> WriteUcodeFiles(SolveContext& ctx,
                                                   TemplatePromptMemory* prompt = nullptr,
                                                   const std::string& date = {});

}  // namespace tarno
