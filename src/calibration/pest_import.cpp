#include "calibration/pest_import.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "calibration/estimation_support.h"
#include "calibration/pest_files.h"
#include "core/error.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

// The file's name as the messages give it: without ".par", which they append.
std::string ParName(const fs::path& parFile) {
  fs::path p = parFile;
  if (EqualsIgnoreCase(p.extension().string(), ".par")) p.replace_extension();
  return p.string();
}

std::string LowerCase(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

bool IsNumber(const std::string& text, double& value) {
  if (text.empty()) return false;
  const char* begin = text.c_str();
  char* end = nullptr;
  errno = 0;
  value = std::strtod(begin, &end);
  return end != begin && *end == '\0' && errno != ERANGE;
}

struct ParLine {
  int number = 0;
  std::string name;
  std::string valueText;
  double value = 0.0;
};

// The five places a value can go, in the order they are tried.
struct Place {
  const char* caption;
  bool model;               // the Model row, else an element table
  const char* flag;         // the switch field
  const char* tagField;
  const char* valueField;
  ElementKind kind;
};
const Place kPlaces[] = {
    {"Model Aquifer Hydraulic Conductivity:             ", true, "chkScenarioHydCond", "ScenHydCond",
     "AQHydCond", ElementKind::Inhomogeneity},
    {"Model Aquifer Base Elevation:                     ", true, "chkScenarioBaseElev",
     "ScenBaseElev", "AQBase", ElementKind::Inhomogeneity},
    {"Inhomogeneity Hydraulic Conductivity:             ", false, "chkScenarioHydCond",
     "ScenHydCond", "HydCond", ElementKind::Inhomogeneity},
    {"Inhomogeneity Recharge:                           ", false, "chkScenarioRecharge",
     "ScenRecharge", "Recharge", ElementKind::Inhomogeneity},
    {"Linesink Resistance:                              ", false, "chkScenario", "ScenResistance",
     "Resistance", ElementKind::Linesink},
};

}  // namespace

ParImportResult ImportParFile(Database& db, const fs::path& parFile, UserInterface& ui,
                              const fs::path& logFile) {
  ParImportResult result;
  const std::string name = ParName(parFile);
  std::error_code ec;
  if (!fs::is_regular_file(parFile, ec)) {
    ui.MessageBox("File Not Found", {"Parameter File: " + name + ".par does not exist.",
                                     "Cannot import PEST optimized parameter values."});
    return result;
  }
  if (fs::file_size(parFile, ec) == 0) {
    ui.MessageBox("File Is Empty", {"Parameter File: " + name + ".par is empty."});
    return result;
  }

  // Read and check every line first.
  std::ifstream in(parFile, std::ios::binary);
  std::string line;
  std::vector<ParLine> lines;
  std::vector<std::string>& errors = result.errors;
  std::set<std::string> named;  // lower-case names of every parameter line
  auto bad = [&](int n, const std::string& what) {
    errors.push_back("line " + std::to_string(n) + ": " + what);
  };
  for (int n = 1; std::getline(in, line); ++n) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (n == 1) continue;  // "single point" or "double point"
    std::string blanks = line;
    for (char& c : blanks)
      if (c == '\t') c = ' ';
    std::vector<std::string> fields;  // one-based; fields[0] is ParseString's placeholder
    int count = 0;
    ParseString(blanks, " ", fields, count);
    fields.erase(fields.begin());
    fields.resize(static_cast<std::size_t>(count));
    if (fields.empty()) continue;
    // A parameter on a faulty line is reported for that line, not as missing.
    named.insert(LowerCase(TrimST(StripPaddedString(fields[0]))));
    if (fields.size() < 4) {
      bad(n, "the line is cut short (" + std::to_string(fields.size()) +
                 " of 4 fields: name, value, scale, offset): \"" + line + "\"");
      continue;
    }
    if (fields.size() > 4) {
      bad(n, "the line has " + std::to_string(fields.size()) +
                 " fields, not 4 (name, value, scale, offset): \"" + line + "\"");
      continue;
    }
    ParLine p;
    p.number = n;
    p.name = TrimST(StripPaddedString(fields[0]));
    p.valueText = fields[1];
    bool numbers = true;
    for (std::size_t i = 1; i < 4; ++i) {
      double v = 0;
      if (!IsNumber(fields[i], v)) {
        bad(n, "\"" + fields[i] + "\" is not a number (parameter \"" + p.name + "\")");
        numbers = false;
      } else if (i == 1) {
        p.value = v;
      }
    }
    if (numbers) lines.push_back(p);
  }

  // Which tags the project has: the parameters of its control file.
  const std::vector<PestParameter> parameters = PestParameters(db);
  auto known = [&](const std::string& tag) {
    for (const PestParameter& p : parameters)
      if (EqualsIgnoreCase(p.tag, tag)) return true;
    return false;
  };
  std::map<std::string, int> seen;  // lower-case name -> line
  for (const ParLine& p : lines) {
    std::string key = p.name;
    for (char& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (auto it = seen.find(key); it != seen.end()) {
      bad(p.number, "parameter \"" + p.name + "\" is given again (first on line " +
                        std::to_string(it->second) + ")");
      continue;
    }
    seen[key] = p.number;
    if (!known(p.name)) bad(p.number, "parameter \"" + p.name + "\" is no scenario of this project");
  }
  const bool anyParameterLine = !lines.empty() || !errors.empty();
  if (anyParameterLine) {
    for (const PestParameter& p : parameters) {
      std::string key = p.tag;
      for (char& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (!named.count(key)) errors.push_back("parameter \"" + p.tag + "\" of the project is missing");
    }
  }
  if (!errors.empty()) {
    std::vector<std::string> text = {"Parameter File: " + parFile.string()};
    const std::size_t shown = std::min<std::size_t>(errors.size(), 12);
    text.insert(text.end(), errors.begin(), errors.begin() + static_cast<long>(shown));
    if (errors.size() > shown)
      text.push_back("... and " + std::to_string(errors.size() - shown) + " more");
    text.push_back("No Parameters were imported.");
    ui.MessageBox(kBadParFileTitle, text, Buttons::OK, Icon::Exclamation);
    return result;
  }

  // Write every value to every place that carries its tag, in one transaction.
  {
    Transaction tx(db);
    std::vector<Element> inhomogeneities = LoadAllRows(db, ElementKind::Inhomogeneity);
    std::vector<Element> linesinks = LoadAllRows(db, ElementKind::Linesink);
    for (const ParLine& p : lines) {
      for (const Place& place : kPlaces) {
        bool wrote = false;
        if (place.model) {
          Statement m = db.Prepare(std::string("select ") + place.flag + ", " + place.tagField +
                                   " from Model");
          if (m.Step() && m.GetBool(0) && !m.IsNull(1) && EqualsIgnoreCase(m.GetText(1), p.name)) {
            m = Statement();
            Statement u = db.Prepare(std::string("update Model set ") + place.valueField + " = ?");
            u.Bind(1, p.value);
            u.Run();
            wrote = true;
          }
        } else {
          std::vector<Element>& rows =
              place.kind == ElementKind::Linesink ? linesinks : inhomogeneities;
          for (Element& e : rows) {
            if (!e.row.Flag(place.flag) || !EqualsIgnoreCase(e.row.Text(place.tagField), p.name))
              continue;
            e.row.Set(place.valueField, p.value);
            Update(db, e);
            wrote = true;
          }
        }
        if (wrote) {
          result.log.push_back(std::string(place.caption) + p.name + " = " + p.valueText);
          ++result.imported;
        }
      }
    }
    if (result.imported == 0) {
      tx.Rollback();
    } else {
      std::string text = "The following are the optimized parameters read in from the PEST run:\r\n";
      for (const std::string& l : result.log) text += l + "\r\n";
      WriteTextFile(logFile, text);
      result.logWritten = true;
      tx.Commit();
    }
  }

  if (result.imported == 0) {
    ui.MessageBox("No Parameters",
                  {"Error Importing Pest Parameters.", "The Scenarios were not found or ",
                   "there were no Parameters in the " + name + ".par file.",
                   "No Parameters were imported."});
    return result;
  }
  ui.MessageBox("PEST Parameters Imported",
                {"Optimized Parameters listed in the TARNO2PEST.log, and currently shown, have been",
                 "imported in the project and have been made the Current Values. ",
                 "You may also view these values through 'Model->Implement Scenarios'"});
  return result;
}

}  // namespace tarno
