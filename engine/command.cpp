#include "engine/command.h"

#include "engine/command_reader.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

namespace tarno::engine {

using reader::isBlank;
using reader::trim;

std::optional<double> parseNumber(std::string_view t) {
  if (t.empty()) return std::nullopt;
  bool negative = false;
  if (t[0] == '+' || t[0] == '-') {
    negative = t[0] == '-';
    t.remove_prefix(1);
  }
  // Only digits, one point and an exponent: this keeps out "inf", "nan", hex forms.
  if (t.empty() || !(std::isdigit(static_cast<unsigned char>(t[0])) || t[0] == '.')) return std::nullopt;
  // Fortran-style exponents ("1.0D+00") are read as E.
  std::string buf(t);
  for (char& c : buf)
    if (c == 'd' || c == 'D') c = 'E';
  double v = 0;
  auto r = std::from_chars(buf.data(), buf.data() + buf.size(), v, std::chars_format::general);
  if (r.ec != std::errc() || r.ptr != buf.data() + buf.size() || !std::isfinite(v)) return std::nullopt;
  return negative ? -v : v;
}

bool isParameterField(std::string_view token) {
  return token.size() >= 2 && token.front() == '!' && token.back() == '!';
}

std::vector<std::string_view> splitItems(std::string_view line) {
  std::vector<std::string_view> items;
  size_t i = 0, n = line.size();
  while (i < n) {
    while (i < n && isBlank(line[i])) ++i;
    if (i >= n) break;
    size_t start = i;
    if (line[i] == '!') {
      // A parameter field runs to its closing mark, blanks included.
      size_t close = line.find('!', i + 1);
      if (close != std::string_view::npos) {
        items.push_back(line.substr(start, close + 1 - start));
        i = close + 1;
        continue;
      }
    }
    while (i < n && !isBlank(line[i])) ++i;
    items.push_back(line.substr(start, i - start));
  }
  return items;
}

std::vector<std::string_view> splitGluedNumbers(const std::vector<std::string_view>& items) {
  std::vector<std::string_view> out;
  out.reserve(items.size() + 2);
  for (std::string_view t : items) {
    if (parseNumber(t) || isParameterField(t)) {
      out.push_back(t);
      continue;
    }
    // Where the next number starts: after an exponent of two digits, or at a
    // sign that does not belong to an exponent.
    size_t cut = std::string_view::npos;
    for (size_t i = 1; i < t.size() && cut == std::string_view::npos; ++i) {
      char c = t[i];
      char before = t[i - 1];
      bool exponentSign = before == 'E' || before == 'e' || before == 'D' || before == 'd';
      if ((c == '-' || c == '+') && !exponentSign) cut = i;
      if ((c == 'E' || c == 'e' || c == 'D' || c == 'd') && i + 3 < t.size() && (t[i + 1] == '+' || t[i + 1] == '-') &&
          std::isdigit(static_cast<unsigned char>(t[i + 2])) && std::isdigit(static_cast<unsigned char>(t[i + 3])))
        cut = i + 4 < t.size() ? i + 4 : std::string_view::npos;
    }
    if (cut != std::string_view::npos && parseNumber(t.substr(0, cut)) && parseNumber(t.substr(cut))) {
      out.push_back(t.substr(0, cut));
      out.push_back(t.substr(cut));
    } else {
      out.push_back(t);
    }
  }
  return out;
}

namespace reader {

CommandFile Reader::run(std::string_view text) {
  try {
    readAll(text);
  } catch (const StopReading&) {
  }
  if (suppressed_ > 0)
    out_.problems.push_back({0, "", std::to_string(suppressed_) + " further problems were found and not listed"});
  return std::move(out_);
}

void Reader::report(std::string message) {
  if (out_.problems.size() >= kMaxProblems) {
    ++suppressed_;
    return;
  }
  out_.problems.push_back({lineNo_, shown(text_), std::move(message)});
}

void Reader::fatal(std::string message) {
  out_.fatal = Diagnostic{lineNo_, shown(text_), std::move(message)};
  throw StopReading{};
}

void Reader::readAll(std::string_view text) {
  size_t pos = 0;
  while (pos < text.size()) {
    size_t nl = text.find('\n', pos);
    size_t end = nl == std::string_view::npos ? text.size() : nl;
    std::string_view line = text.substr(pos, end - pos);
    pos = nl == std::string_view::npos ? text.size() : nl + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++lineNo_;
    if (line.size() > kMaxLineLength) {
      out_.lines.emplace_back(line.substr(0, kMaxLineLength));
      text_ = line;
      report("line longer than " + std::to_string(kMaxLineLength) + " characters; line skipped");
      continue;
    }
    out_.lines.emplace_back(line);
    text_ = line;
    readLine(line);
    if (out_.stopped) return;
  }
  ++lineNo_;
  text_ = {};
  // The end of the file closes what is still open.
  if (!menus_.empty()) {
    lineNo_ = static_cast<int>(out_.lines.size());
    text_ = out_.lines.empty() ? std::string_view() : std::string_view(out_.lines.back());
    report(std::string("the file ends inside the ") + menuName(menu()) + " (a \" quit\" is missing); the menu was closed");
    while (!menus_.empty()) closeMenu();
  }
}

void Reader::readLine(std::string_view line) {
  if (!line.empty() && line[0] == '*') return;  // comment
  if (trim(line).empty()) return;
  items_ = splitItems(line);
  if (items_.empty()) return;
  char first = items_[0][0];
  bool dataLine = std::isdigit(static_cast<unsigned char>(first)) || first == '.' || first == '-' ||
                  first == '+' || first == '!';
  std::string word = lower(items_[0]);
  if (!dataLine && (menu() == Menu::Extract) && (word == "gage" || word == "lake_stage")) dataLine = true;
  if (dataLine) {
    readData();
    return;
  }
  if (word == "y" || word == "yes") return;  // answer to an overwrite question
  if (word == "quit") {
    if (!menus_.empty()) closeMenu();
    return;
  }
  if (readMenuCommand(word)) return;
  if (menu() != Menu::Top && isTopLevelWord(word)) {
    report(std::string("\"") + std::string(items_[0]) + "\" is not a command of the " + menuName(menu()) +
           "; the menu was taken as closed (a \" quit\" is missing)");
    while (!menus_.empty()) closeMenu();
    readTopCommand(word);
    return;
  }
  report(std::string("unknown command \"") + std::string(items_[0]) + "\" in the " + menuName(menu()) +
         "; line skipped");
}

// Reads items [from, from + n) as numbers. A parameter field is fatal; any
// other unreadable item makes the result false.
bool Reader::numbers(size_t from, size_t n, double* out) {
  if (items_.size() < from + n) return false;
  for (size_t i = 0; i < n; ++i) {
    std::string_view t = items_[from + i];
    if (isParameterField(t)) {
      out[i] = parameterValue(from + i);
      continue;
    }
    auto v = parseNumber(t);
    if (!v) return false;
    out[i] = *v;
  }
  return true;
}

// A parameter field where a number belongs: its value from the parameter value file.
double Reader::parameterValue(size_t index) {
  const std::string_view field = items_[index];
  const std::string_view name = trim(field.substr(1, field.size() - 2));
  if (values_ == nullptr)
    fatal("item " + std::to_string(index + 1) + " is the parameter field \"" + std::string(field) +
          "\" where a number belongs, and there is no parameter value file beside the command file. "
          "This file is an estimation template: its parameter fields must be replaced by values before it "
          "can be solved, so it cannot be solved as it stands");
  const std::optional<double> v = values_->find(name);
  if (!v)
    fatal("item " + std::to_string(index + 1) + " is the parameter field \"" + std::string(field) +
          "\" where a number belongs, and the parameter value file " + values_->file + " has no value for \"" +
          std::string(name) + "\". This file is an estimation template: its parameter fields must be replaced " +
          "by values before it can be solved, so it cannot be solved as it stands");
  out_.parameters.push_back({lineNo_, std::string(field), *v});
  return *v;
}

void Reader::parameterField(size_t index) {
  fatal("item " + std::to_string(index + 1) + " is the parameter field \"" + std::string(items_[index]) +
        "\" where a number belongs. This file is an estimation template: its parameter fields must be "
        "replaced by values before it can be solved, so it cannot be solved as it stands");
}

// The rest of the line from item `from` on, as written (inner blanks kept).
std::string Reader::rest(size_t from) const {
  if (from >= items_.size()) return {};
  const char* b = items_[from].data();
  const char* e = items_.back().data() + items_.back().size();
  return std::string(trim(std::string_view(b, static_cast<size_t>(e - b))));
}

bool Reader::takeDataItem() {
  if (dataItems_ >= kMaxDataItems) {
    if (!dataCapReported_) {
      report("more than " + std::to_string(kMaxDataItems) + " data lines; this and all further data lines skipped");
      dataCapReported_ = true;
    }
    return false;
  }
  ++dataItems_;
  return true;
}

void Reader::unreadable(const char* expected) {
  report(std::string("data line cannot be read (expected ") + expected + "); line skipped");
}

void Reader::openMenu(Menu m) {
  menus_.push_back(m);
  blockLine_ = lineNo_;
  switch (m) {
    case Menu::Aquifer: aquifer_ = {}; break;
    case Menu::Well:
    case Menu::PartialWell:
    case Menu::TheisWell:
    case Menu::SinkDisk:
    case Menu::LineSink:
    case Menu::Inhomogeneity:
      elements_ = {};
      wellMode_ = m == Menu::TheisWell ? WellMode::Discharge : WellMode::None;
      lineSinkDischarge_ = false;
      string_.reset();
      polygon_.reset();
      streamVertices_.clear();
      streamClosed_ = false;
      break;
    case Menu::Extract: extract_ = {}; extract_.line = lineNo_; break;
    case Menu::Grid: grid_ = {}; grid_.line = lineNo_; break;
    case Menu::Trace: trace_ = {}; trace_.line = lineNo_; break;
    case Menu::Leakage: leakage_ = {}; leakage_.line = lineNo_; break;
    default: break;
  }
}

void Reader::closeMenu() {
  Menu m = menu();
  menus_.pop_back();
  switch (m) {
    case Menu::Aquifer: pushStep(blockLine_, std::move(aquifer_)); break;
    case Menu::Well:
    case Menu::PartialWell:
    case Menu::TheisWell:
    case Menu::SinkDisk:
    case Menu::LineSink:
    case Menu::Inhomogeneity:
      closeString();
      polygon_.reset();
      if (!elements_.empty()) pushStep(blockLine_, std::move(elements_));
      elements_ = {};
      break;
    case Menu::Extract: pushStep(extract_.line, std::move(extract_)); break;
    case Menu::Flux:
      extract_.fluxLines.push_back(std::move(flux_));
      flux_ = {};
      break;
    case Menu::Grid: pushStep(grid_.line, std::move(grid_)); break;
    case Menu::Trace: pushStep(trace_.line, std::move(trace_)); break;
    case Menu::Leakage: pushStep(leakage_.line, std::move(leakage_)); break;
    default: break;
  }
}

bool Reader::readMenuCommand(const std::string& w) {
  switch (menu()) {
    case Menu::Top: return readTopCommand(w);
    case Menu::Aquifer: return readAquiferCommand(w);
    case Menu::Layout:
      if (w == "window") {
        readWindow();
        return true;
      }
      return false;
    case Menu::Well:
    case Menu::PartialWell:
    case Menu::SinkDisk:
      if (w == "discharge") wellMode_ = WellMode::Discharge;
      else if (w == "head") wellMode_ = WellMode::Head;
      else return false;
      return true;
    case Menu::TheisWell:
      if (w == "discharge") wellMode_ = WellMode::Discharge;
      else return false;
      return true;
    case Menu::LineSink: return readLineSinkCommand(w);
    case Menu::Inhomogeneity: return readPolygonCommand(w);
    case Menu::Leakage: return readLeakageCommand(w);
    case Menu::Extract: return readExtractCommand(w);
    case Menu::Flux:
    case Menu::TracePoints: {
      // A command of the enclosing menu ends the list of points.
      Menu inner = menu();
      bool known = inner == Menu::Flux ? isExtractWord(w) : isTraceWord(w);
      if (!known) return false;
      report(std::string("the ") + menuName(inner) + " was not closed by \" quit\"; it was taken as closed");
      closeMenu();
      return readMenuCommand(w);
    }
    case Menu::Grid: return readGridCommand(w);
    case Menu::Trace: return readTraceCommand(w);
  }
  return false;
}

// The top-level words that open a menu.
const Menu* Reader::menuOfWord(const std::string& w) {
  static const std::pair<const char*, Menu> kMenus[] = {
      {"aquifer", Menu::Aquifer},         {"layout", Menu::Layout},     {"well", Menu::Well},
      {"ppwell", Menu::PartialWell},      {"twell", Menu::TheisWell},   {"sinkdisk", Menu::SinkDisk},
      {"linesink", Menu::LineSink},       {"inhomogeneity", Menu::Inhomogeneity},
      {"leakage", Menu::Leakage},         {"extract", Menu::Extract},   {"grid", Menu::Grid},
      {"trace", Menu::Trace},
  };
  for (const auto& [word, menu] : kMenus)
    if (w == word) return &menu;
  return nullptr;
}

void Reader::readData() {
  if (!takeDataItem()) return;
  switch (menu()) {
    case Menu::Well: readWell(); return;
    case Menu::PartialWell: readPartialWell(); return;
    case Menu::TheisWell: readTheisWell(); return;
    case Menu::SinkDisk: readSinkDisk(); return;
    case Menu::LineSink: readLineSinkData(); return;
    case Menu::Inhomogeneity: readVertex(); return;
    case Menu::Extract: readExtractPoint(); return;
    case Menu::Flux: readFluxPoint(); return;
    case Menu::TracePoints: readTracePoint(); return;
    default:
      // A parameter field is fatal wherever it stands.
      for (size_t i = 0; i < items_.size(); ++i)
        if (isParameterField(items_[i])) parameterField(i);
      report(std::string("data line in the ") + menuName(menu()) + ", where none belongs; line skipped");
      return;
  }
}

}  // namespace reader

CommandFile parseCommandFile(std::string_view text, const ParameterValues* values) {
  return reader::Reader(values).run(text);
}

std::optional<double> ParameterValues::find(std::string_view name) const {
  name = trim(name);
  for (const auto& [n, v] : values) {
    if (n.size() != name.size()) continue;
    bool same = true;
    for (size_t i = 0; i < n.size() && same; ++i)
      same = std::tolower(static_cast<unsigned char>(n[i])) == std::tolower(static_cast<unsigned char>(name[i]));
    if (same) return v;
  }
  return std::nullopt;
}

ParameterValues parseParameterValues(std::string_view text, std::string file, std::vector<std::string>* problems) {
  ParameterValues out;
  out.file = std::move(file);
  int lineNo = 0;
  size_t pos = 0;
  while (pos <= text.size()) {
    size_t nl = text.find('\n', pos);
    if (nl == std::string_view::npos) nl = text.size();
    std::string_view line = text.substr(pos, nl - pos);
    pos = nl + 1;
    ++lineNo;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    const std::vector<std::string_view> items = splitItems(line);
    if (items.empty() || items.front().front() == '*') {
      if (nl == text.size()) break;
      continue;
    }
    std::optional<double> v = items.size() == 2 ? parseNumber(items[1]) : std::nullopt;
    if (!v) {
      if (problems)
        problems->push_back("line " + std::to_string(lineNo) + ": \"" + std::string(line) +
                            "\" is not a parameter name and a number; line skipped");
    } else {
      out.values.emplace_back(std::string(items[0]), *v);
    }
    if (nl == text.size()) break;
  }
  return out;
}

}  // namespace tarno::engine
