// What the PEST and UCODE files share: the project's folder and base name, the
// scenario tags of the model row and of the element tables, and small text helpers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tarno {

class Database;

// The solver folder and base name of the project (Project.TARNOBasePath,
// Project.TARNOBaseName).
struct EstimationProject {
  std::filesystem::path dir;
  std::string base;
};
EstimationProject LoadEstimationProject(Database& db);

// The aquifer's scenario switches, tags and values from the Model row.
struct ModelScenarios {
  bool hydCondOn = false;
  bool baseOn = false;
  std::string hydCondTag;
  std::string baseTag;
  double hydCond = 0.0;
  double base = 0.0;
};
// The switches count only with a real tag: a tag of "__NONE__" (or none) is not a
// parameter, as the template writes no field for it.
ModelScenarios LoadModelScenarios(Database& db);

// The tagged values of the element tables.
enum class ScenarioField {
  InhomogeneityHydCond,   // Inhomogeneities: chkScenarioHydCond, ScenHydCond, HydCond
  InhomogeneityRecharge,  // Inhomogeneities: chkScenarioRecharge, ScenRecharge, Recharge
  LinesinkResistance,     // LinesinkStrings: chkScenario, ScenResistance, Resistance
};
struct TaggedValue {
  std::string tag;
  double value = 0.0;
};
// One entry per distinct tag among the rows whose switch is on (tags compared
// without regard to case, as the project file compares text), ordered by the tag
// without regard to case; the value is that of the first row by key that carries the
// tag. "__NONE__" is no tag.
std::vector<TaggedValue> DistinctTags(Database& db, ScenarioField field);

// Writes `text` to `path` as it stands (binary), replacing the file. Throws
// tarno::Error naming the file when it cannot be written.
void WriteTextFile(const std::filesystem::path& path, const std::string& text);

// The text of a whole file; throws tarno::Error naming the file when it cannot be read.
std::string ReadTextFile(const std::filesystem::path& path);

// A word for a POSIX shell: in single quotes unless it is plain.
std::string ShellQuoted(const std::string& word);

// One number through a printf format ("%1.6f", "%1.5e").
std::string FormatPrintf(const char* format, double value);

// A program of the estimation (pest, pestchek, perl) where it is installed: in the
// program directory first, then on the PATH. Empty when neither has it.
std::filesystem::path FindEstimationProgram(const std::filesystem::path& programDirectory,
                                            const std::string& name);

}  // namespace tarno
