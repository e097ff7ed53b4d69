#include "calibration/estimation_support.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "core/error.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

bool IsTag(const std::string& tag) { return !tag.empty() && tag != "__NONE__"; }

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

}  // namespace

EstimationProject LoadEstimationProject(Database& db) {
  Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
  if (!p.Step()) throw Error("The Project table has no row");
  EstimationProject out;
  out.base = p.GetText("TARNOBaseName");
  out.dir = p.GetText("TARNOBasePath");
  return out;
}

ModelScenarios LoadModelScenarios(Database& db) {
  Statement m = db.Prepare(
      "select chkScenarioHydCond, chkScenarioBaseElev, ScenHydCond, ScenBaseElev, AQHydCond, "
      "AQBase from Model");
  if (!m.Step()) throw Error("The Model table has no row");
  ModelScenarios s;
  s.hydCondTag = m.IsNull("ScenHydCond") ? "" : m.GetText("ScenHydCond");
  s.baseTag = m.IsNull("ScenBaseElev") ? "" : m.GetText("ScenBaseElev");
  s.hydCondOn = m.GetBool("chkScenarioHydCond") && IsTag(s.hydCondTag);
  s.baseOn = m.GetBool("chkScenarioBaseElev") && IsTag(s.baseTag);
  s.hydCond = m.GetDouble("AQHydCond");
  s.base = m.GetDouble("AQBase");
  return s;
}

std::vector<TaggedValue> DistinctTags(Database& db, ScenarioField field) {
  ElementKind kind = ElementKind::Inhomogeneity;
  const char* flag = "chkScenarioHydCond";
  const char* tagField = "ScenHydCond";
  const char* valueField = "HydCond";
  if (field == ScenarioField::InhomogeneityRecharge) {
    flag = "chkScenarioRecharge";
    tagField = "ScenRecharge";
    valueField = "Recharge";
  } else if (field == ScenarioField::LinesinkResistance) {
    kind = ElementKind::Linesink;
    flag = "chkScenario";
    tagField = "ScenResistance";
    valueField = "Resistance";
  }
  const std::vector<Element> rows = LoadAllRows(db, kind);  // in key order
  std::vector<TaggedValue> out;
  for (const Element& e : rows) {
    if (!e.row.Flag(flag)) continue;
    const std::string tag = e.row.Text(tagField);
    if (!IsTag(tag)) continue;
    const bool seen = std::any_of(out.begin(), out.end(),
                                  [&](const TaggedValue& t) { return EqualsIgnoreCase(t.tag, tag); });
    if (seen) continue;
    // The value of the first row with the tag, whether or not its switch is on.
    for (const Element& f : rows) {
      if (EqualsIgnoreCase(f.row.Text(tagField), tag)) {
        out.push_back({tag, f.row.Number(valueField)});
        break;
      }
    }
  }
  std::stable_sort(out.begin(), out.end(), [](const TaggedValue& a, const TaggedValue& b) {
    return Lower(a.tag) < Lower(b.tag);
  });
  return out;
}

void WriteTextFile(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw Error("Cannot write the file \"" + path.string() + "\"");
  file << text;
  file.close();
  if (!file) throw Error("Cannot write the file \"" + path.string() + "\"");
}

std::string ReadTextFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Error("Cannot read the file \"" + path.string() + "\"");
  std::ostringstream s;
  s << file.rdbuf();
  return s.str();
}

std::string ShellQuoted(const std::string& word) {
  const bool plain =
      !word.empty() && word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                              "0123456789./_-+,:@%") == std::string::npos;
  if (plain) return word;
  std::string q = "'";
  for (char c : word) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string FormatPrintf(const char* format, double value) {
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

fs::path FindEstimationProgram(const fs::path& programDirectory, const std::string& name) {
  std::error_code ec;
  if (!programDirectory.empty()) {
    const fs::path local = programDirectory / name;
    if (fs::is_regular_file(local, ec) && ::access(local.c_str(), X_OK) == 0) return local;
  }
  const char* path = std::getenv("PATH");
  if (path == nullptr) return {};
  std::stringstream dirs(path);
  std::string dir;
  while (std::getline(dirs, dir, ':')) {
    if (dir.empty()) continue;
    const fs::path candidate = fs::path(dir) / name;
    if (fs::is_regular_file(candidate, ec) && ::access(candidate.c_str(), X_OK) == 0)
      return candidate;
  }
  return {};
}

}  // namespace tarno
