#include "calibration/estimator_files.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "calibration/estimation_support.h"
#include "core/error.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream in(line);
  std::string w;
  while (in >> w) words.push_back(w);
  return words;
}

std::string Trim(const std::string& s) {
  const auto b = s.find_first_not_of(" \t");
  if (b == std::string::npos) return {};
  const auto e = s.find_last_not_of(" \t");
  return s.substr(b, e - b + 1);
}

// A whole word as a number; false for anything else (trailing characters included).
bool ParseDouble(const std::string& word, double& out) {
  if (word.empty()) return false;
  errno = 0;
  char* end = nullptr;
  out = std::strtod(word.c_str(), &end);
  if (end == word.c_str() || errno == ERANGE || !std::isfinite(out)) return false;
  while (*end == ' ' || *end == '\t') ++end;
  return *end == '\0';
}

[[noreturn]] void Fail(const fs::path& file, std::size_t line, const std::string& text,
                       const std::string& why) {
  throw Error(file.string() + ", line " + std::to_string(line) + ": " + why + ": \"" + text + "\"");
}

double Number(const fs::path& file, std::size_t lineNo, const std::string& line,
              const std::string& word, const char* what) {
  double v = 0;
  if (!ParseDouble(word, v))
    Fail(file, lineNo, line, std::string("the ") + what + " \"" + word + "\" is no number");
  return v;
}

}  // namespace

std::string UpperName(std::string name) {
  for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return name;
}

ControlFile ReadControlFile(const fs::path& pst) {
  const std::vector<std::string> lines = SplitLines(ReadTextFile(pst));
  ControlFile cf;
  cf.path = pst;
  if (lines.empty() || Trim(lines[0]) != "pcf")
    Fail(pst, 1, lines.empty() ? "" : lines[0], "a control file begins with \"pcf\"");
  const fs::path dir = pst.parent_path();
  std::string section;
  int ioLine = 0;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    const std::size_t lineNo = i + 1;
    const std::string t = Trim(line);
    if (t.empty()) continue;
    if (t[0] == '*') {
      section = Trim(t.substr(1));
      continue;
    }
    const std::vector<std::string> w = Words(line);
    if (section == "parameter data") {
      if (w.size() < 9) Fail(pst, lineNo, line, "a parameter line has at least 9 items");
      ControlParameter p;
      p.name = w[0];
      p.transform = w[1];
      if (p.transform == "tied") Fail(pst, lineNo, line, "tied parameters are not supported");
      if (p.transform != "log" && p.transform != "none" && p.transform != "fixed")
        Fail(pst, lineNo, line, "unknown transform \"" + p.transform + "\"");
      p.value = Number(pst, lineNo, line, w[3], "value");
      p.lower = Number(pst, lineNo, line, w[4], "lower bound");
      p.upper = Number(pst, lineNo, line, w[5], "upper bound");
      p.group = w[6];
      p.scale = Number(pst, lineNo, line, w[7], "scale");
      p.offset = Number(pst, lineNo, line, w[8], "offset");
      if (p.lower > p.upper) Fail(pst, lineNo, line, "the lower bound exceeds the upper bound");
      if (p.transform == "log" && p.lower <= 0)
        Fail(pst, lineNo, line, "a log-transformed parameter needs positive bounds");
      if (p.value < p.lower || p.value > p.upper)
        Fail(pst, lineNo, line, "the value lies outside its bounds");
      for (const ControlParameter& q : cf.parameters)
        if (UpperName(q.name) == UpperName(p.name))
          Fail(pst, lineNo, line, "the parameter is named twice");
      cf.parameters.push_back(p);
    } else if (section == "observation data") {
      if (w.size() < 4) Fail(pst, lineNo, line, "an observation line has 4 items");
      ControlObservation o;
      o.name = w[0];
      o.value = Number(pst, lineNo, line, w[1], "observed value");
      o.weight = Number(pst, lineNo, line, w[2], "weight");
      if (o.weight < 0) Fail(pst, lineNo, line, "a weight cannot be negative");
      o.group = w[3];
      for (const ControlObservation& q : cf.observations)
        if (UpperName(q.name) == UpperName(o.name))
          Fail(pst, lineNo, line, "the observation is named twice");
      cf.observations.push_back(o);
    } else if (section == "model command line") {
      if (cf.modelCommand.empty()) cf.modelCommand = t;
    } else if (section == "model input/output") {
      if (w.size() != 2) Fail(pst, lineNo, line, "a model input/output line names two files");
      if (ioLine == 0) {
        cf.templateFile = fs::path(w[0]).is_absolute() ? fs::path(w[0]) : dir / w[0];
        cf.modelInput = w[1];
      } else if (ioLine == 1) {
        cf.instructionFile = fs::path(w[0]).is_absolute() ? fs::path(w[0]) : dir / w[0];
        cf.modelOutput = w[1];
      } else {
        Fail(pst, lineNo, line, "only one template and one instruction file are supported");
      }
      ++ioLine;
    }
    // The control data and the groups carry PEST's own settings; the estimator has
    // its own and passes over them.
  }
  if (cf.parameters.empty()) Fail(pst, lines.size(), "", "the control file has no parameter data");
  if (cf.observations.empty())
    Fail(pst, lines.size(), "", "the control file has no observation data");
  if (cf.modelCommand.empty())
    Fail(pst, lines.size(), "", "the control file has no model command line");
  if (ioLine < 2)
    Fail(pst, lines.size(), "", "the control file lacks its template or instruction file");
  return cf;
}

std::string FieldNumber(double value, int width) {
  char buf[64];
  // The exponent form with as many digits as fit; a plain form when it is shorter
  // and at least as precise.
  for (int digits = 15; digits >= 0; --digits) {
    std::snprintf(buf, sizeof buf, "%.*G", digits + 1, value);
    std::string g = buf;
    if (static_cast<int>(g.size()) <= width) return std::string(width - g.size(), ' ') + g;
    std::snprintf(buf, sizeof buf, "%.*E", digits, value);
    std::string e = buf;
    if (static_cast<int>(e.size()) <= width) return std::string(width - e.size(), ' ') + e;
  }
  throw Error("the parameter field of " + std::to_string(width) + " characters cannot hold " +
              std::to_string(value));
}

std::string FillTemplate(const std::string& templateText,
                         const std::map<std::string, double>& modelValues,
                         const std::string& templateName) {
  const std::vector<std::string> lines = SplitLines(templateText);
  if (lines.empty()) throw Error(templateName + ", line 1: the template is empty");
  const std::vector<std::string> head = Words(lines[0]);
  if (head.size() != 2 || (head[0] != "ptf" && head[0] != "PTF") || head[1].size() != 1)
    Fail(templateName, 1, lines[0], "a template begins with \"ptf\" and its marker");
  const char marker = head[1][0];
  std::string out;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    std::string filled;
    std::size_t pos = 0;
    while (true) {
      const std::size_t open = line.find(marker, pos);
      if (open == std::string::npos) {
        filled += line.substr(pos);
        break;
      }
      const std::size_t close = line.find(marker, open + 1);
      if (close == std::string::npos)
        Fail(templateName, i + 1, line, "a parameter field is not closed");
      const std::string name = UpperName(Trim(line.substr(open + 1, close - open - 1)));
      const auto it = modelValues.find(name);
      if (it == modelValues.end())
        Fail(templateName, i + 1, line, "the parameter field \"" + name + "\" has no parameter");
      filled += line.substr(pos, open - pos);
      filled += FieldNumber(it->second, static_cast<int>(close - open + 1));
      pos = close + 1;
    }
    out += filled;
    out += "\r\n";
  }
  return out;
}

std::map<std::string, double> ReadObservations(const std::string& instructionText,
                                               const std::string& instructionName,
                                               const std::string& outputText,
                                               const std::string& outputName) {
  const std::vector<std::string> ins = SplitLines(instructionText);
  const std::vector<std::string> out = SplitLines(outputText);
  if (ins.empty()) throw Error(instructionName + ", line 1: the instruction file is empty");
  const std::vector<std::string> head = Words(ins[0]);
  if (head.size() != 2 || (head[0] != "pif" && head[0] != "PIF") || head[1].size() != 1)
    Fail(instructionName, 1, ins[0], "an instruction file begins with \"pif\" and its marker");
  const char marker = head[1][0];
  std::map<std::string, double> values;
  long cursor = -1;  // the output line the instructions stand on; before the first
  for (std::size_t i = 1; i < ins.size(); ++i) {
    const std::string& line = ins[i];
    const std::size_t lineNo = i + 1;
    std::size_t p = 0;
    while (p < line.size()) {
      if (line[p] == ' ' || line[p] == '\t') {
        ++p;
        continue;
      }
      if (line[p] == marker) {
        const std::size_t close = line.find(marker, p + 1);
        if (close == std::string::npos)
          Fail(instructionName, lineNo, line, "a marker is not closed");
        const std::string text = line.substr(p + 1, close - p - 1);
        bool found = false;
        for (long k = cursor + 1; k < static_cast<long>(out.size()); ++k) {
          if (out[static_cast<std::size_t>(k)].find(text) != std::string::npos) {
            cursor = k;
            found = true;
            break;
          }
        }
        if (!found)
          throw Error(outputName + ": the marker \"" + text + "\" of " + instructionName +
                      ", line " + std::to_string(lineNo) + ", was not found");
        p = close + 1;
      } else if (line[p] == 'l' || line[p] == 'L') {
        std::size_t e = p + 1;
        while (e < line.size() && std::isdigit(static_cast<unsigned char>(line[e]))) ++e;
        if (e == p + 1) Fail(instructionName, lineNo, line, "a line advance needs a count");
        const long n = std::stol(line.substr(p + 1, e - p - 1));
        cursor += n;
        if (cursor >= static_cast<long>(out.size()))
          throw Error(outputName + ": the file ends before the line that " + instructionName +
                      ", line " + std::to_string(lineNo) + ", reads");
        p = e;
      } else if (line[p] == '[') {
        const std::size_t close = line.find(']', p);
        if (close == std::string::npos)
          Fail(instructionName, lineNo, line, "an observation name is not closed");
        const std::string name = UpperName(line.substr(p + 1, close - p - 1));
        std::size_t e = close + 1;
        while (e < line.size() && line[e] != ' ' && line[e] != '\t') ++e;
        const std::string cols = line.substr(close + 1, e - close - 1);
        const std::size_t colon = cols.find(':');
        int first = 0, last = 0;
        if (colon == std::string::npos || std::sscanf(cols.c_str(), "%d:%d", &first, &last) != 2 ||
            first < 1 || last < first)
          Fail(instructionName, lineNo, line, "columns are given as first:last");
        if (cursor < 0) Fail(instructionName, lineNo, line, "a value is read before any line");
        const std::string& o = out[static_cast<std::size_t>(cursor)];
        const std::string field = static_cast<std::size_t>(first) <= o.size()
                                      ? Trim(o.substr(static_cast<std::size_t>(first - 1),
                                                      static_cast<std::size_t>(last - first + 1)))
                                      : std::string();
        double v = 0;
        if (!ParseDouble(field, v))
          throw Error(outputName + ", line " + std::to_string(cursor + 1) + ": columns " + cols +
                      " hold no number for \"" + name + "\": \"" + field + "\"");
        values[name] = v;
        p = e;
      } else {
        Fail(instructionName, lineNo, line, "unknown instruction");
      }
    }
  }
  return values;
}

std::string ParFileText(const std::vector<ControlParameter>& parameters,
                        const std::vector<double>& values) {
  std::string s = "single point\r\n";
  char buf[160];
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    std::snprintf(buf, sizeof buf, "%-12s %22.15E %12.5E %12.5E\r\n", parameters[i].name.c_str(),
                  values[i], parameters[i].scale, parameters[i].offset);
    s += buf;
  }
  return s;
}

}  // namespace tarno
