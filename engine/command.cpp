#include "engine/command.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

namespace tarno::engine {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

std::string lower(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = lowerAscii(c);
  return r;
}

// The item in double quotes, for messages.
std::string quoted(std::string_view s) {
  std::string r;
  r.reserve(s.size() + 2);
  r += '"';
  r += s;
  r += '"';
  return r;
}

std::string_view trim(std::string_view s) {
  size_t b = 0, e = s.size();
  while (b < e && isBlank(s[b])) ++b;
  while (e > b && isBlank(s[e - 1])) --e;
  return s.substr(b, e - b);
}

// Text of a line for a message: shortened, control characters shown as '?'.
std::string shown(std::string_view s) {
  constexpr size_t kShown = 160;
  std::string r;
  size_t n = std::min(s.size(), kShown);
  r.reserve(n + 3);
  for (size_t i = 0; i < n; ++i) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    r.push_back((c < 32 && c != '\t') || c == 127 ? '?' : static_cast<char>(c));
  }
  if (s.size() > kShown) r += "...";
  return r;
}

}  // namespace

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

namespace {

// Thrown to end reading at a fatal problem.
struct StopReading {};

enum class Menu {
  Top,
  Aquifer,
  Layout,
  Well,
  PartialWell,
  TheisWell,
  SinkDisk,
  LineSink,
  Inhomogeneity,
  Leakage,
  Extract,
  Flux,
  Grid,
  Trace,
  TracePoints,
};

const char* menuName(Menu m) {
  switch (m) {
    case Menu::Top: return "top level";
    case Menu::Aquifer: return "aquifer menu";
    case Menu::Layout: return "layout menu";
    case Menu::Well: return "well menu";
    case Menu::PartialWell: return "ppwell menu";
    case Menu::TheisWell: return "twell menu";
    case Menu::SinkDisk: return "sinkdisk menu";
    case Menu::LineSink: return "linesink menu";
    case Menu::Inhomogeneity: return "inhomogeneity menu";
    case Menu::Leakage: return "leakage menu";
    case Menu::Extract: return "extract menu";
    case Menu::Flux: return "flux line of the extract menu";
    case Menu::Grid: return "grid menu";
    case Menu::Trace: return "trace menu";
    case Menu::TracePoints: return "points list of the trace menu";
  }
  return "menu";
}

bool isExtractWord(const std::string& w) {
  return w == "file" || w == "interface" || w == "flux" || w == "well" || w == "ppwell" || w == "theis" ||
         w == "linesink" || w == "inhomogeneity" || w == "leakage";
}

bool isTraceWord(const std::string& w) {
  return w == "picture" || w == "file" || w == "time" || w == "step" || w == "points" || w == "well" || w == "go";
}

bool isTopLevelWord(const std::string& w) {
  static const char* const kWords[] = {"error",  "message", "echo",     "picture",  "bfname",        "modelorigin",
                                       "title",  "aquifer", "layout",   "well",     "ppwell",        "twell",
                                       "sinkdisk", "linesink", "inhomogeneity", "leakage", "solve", "time",
                                       "save",   "load",    "extract",  "grid",     "trace",         "stop"};
  for (const char* k : kWords)
    if (w == k) return true;
  return false;
}

enum class WellMode { None, Discharge, Head };

struct StreamVertex {
  int line = 0;
  double x = 0, y = 0;
  std::optional<double> head;
  std::string label;
};

class Reader {
 public:
  explicit Reader(const ParameterValues* values) : values_(values) {}

  CommandFile run(std::string_view text) {
    try {
      readAll(text);
    } catch (const StopReading&) {
    }
    if (suppressed_ > 0)
      out_.problems.push_back({0, "", std::to_string(suppressed_) + " further problems were found and not listed"});
    return std::move(out_);
  }

 private:
  CommandFile out_;
  const ParameterValues* values_ = nullptr;
  std::vector<Menu> menus_;  // open menus, innermost last; empty at the top level
  int lineNo_ = 0;
  std::string_view text_;
  std::vector<std::string_view> items_;
  size_t dataItems_ = 0;
  bool dataCapReported_ = false;
  size_t suppressed_ = 0;

  // Open blocks.
  int blockLine_ = 0;
  AquiferInput aquifer_;
  ElementsInput elements_;
  WellMode wellMode_ = WellMode::None;
  bool lineSinkDischarge_ = false;  // linesink menu in discharge mode
  std::optional<size_t> string_;    // index of the open string in elements_.strings
  std::vector<StreamVertex> streamVertices_;
  bool streamClosed_ = false;       // the bare last vertex of the stream was read
  std::optional<size_t> polygon_;   // index of the open polygon in elements_.polygons
  ExtractInput extract_;
  FluxLineInput flux_;
  GridInput grid_;
  TraceInput trace_;
  LeakageInput leakage_;

  Menu menu() const { return menus_.empty() ? Menu::Top : menus_.back(); }

  void report(std::string message) {
    if (out_.problems.size() >= kMaxProblems) {
      ++suppressed_;
      return;
    }
    out_.problems.push_back({lineNo_, shown(text_), std::move(message)});
  }

  [[noreturn]] void fatal(std::string message) {
    out_.fatal = Diagnostic{lineNo_, shown(text_), std::move(message)};
    throw StopReading{};
  }

  void readAll(std::string_view text) {
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

  void readLine(std::string_view line) {
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

  // ---- numbers ----------------------------------------------------------

  // Reads items [from, from + n) as numbers. A parameter field is fatal; any
  // other unreadable item makes the result false.
  bool numbers(size_t from, size_t n, double* out) {
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
  double parameterValue(size_t index) {
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

  [[noreturn]] void parameterField(size_t index) {
    fatal("item " + std::to_string(index + 1) + " is the parameter field \"" + std::string(items_[index]) +
          "\" where a number belongs. This file is an estimation template: its parameter fields must be "
          "replaced by values before it can be solved, so it cannot be solved as it stands");
  }

  // The rest of the line from item `from` on, as written (inner blanks kept).
  std::string rest(size_t from) const {
    if (from >= items_.size()) return {};
    const char* b = items_[from].data();
    const char* e = items_.back().data() + items_.back().size();
    return std::string(trim(std::string_view(b, static_cast<size_t>(e - b))));
  }

  // Text after the keyword (the first item), trimmed.
  std::string argumentText() const { return rest(1); }

  bool takeDataItem() {
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

  void unreadable(const char* expected) {
    report(std::string("data line cannot be read (expected ") + expected + "); line skipped");
  }

  // ---- menus --------------------------------------------------------------

  void openMenu(Menu m) {
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

  void pushStep(int line, StepData data) { out_.steps.push_back(Step{line, std::move(data)}); }

  void closeMenu() {
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

  // ---- commands -----------------------------------------------------------

  bool readMenuCommand(const std::string& w) {
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
  static const Menu* menuOfWord(const std::string& w) {
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

  bool readTopCommand(const std::string& w) {
    if (w == "error" || w == "message" || w == "echo") {
      std::string file = argumentText();
      if (file.empty()) {
        report("no file name after \"" + std::string(items_[0]) + "\"; line skipped");
        return true;
      }
      LogCommand c;
      c.kind = w == "error" ? LogCommand::Kind::Error : w == "message" ? LogCommand::Kind::Message : LogCommand::Kind::Echo;
      c.file = file;
      pushStep(lineNo_, c);
    } else if (w == "picture") {
      pushStep(lineNo_, PictureCommand{argumentText()});
    } else if (w == "bfname") {
      pushStep(lineNo_, BaseNameCommand{argumentText()});
    } else if (w == "title") {
      pushStep(lineNo_, TitleCommand{argumentText()});
    } else if (w == "modelorigin") {
      double v[3] = {0, 0, 2};
      bool ok = numbers(1, 2, v);
      if (ok && items_.size() > 3) ok = numbers(3, 1, v + 2);
      if (!ok) {
        report("\"modelorigin\" needs the numbers X0 Y0 and a unit code; line skipped");
        return true;
      }
      int code = static_cast<int>(std::lround(std::clamp(v[2], -1e6, 1e6)));
      if (code < 0 || code > 2) {
        report("unit code " + std::string(items_[3]) + " of \"modelorigin\" is not 0, 1 or 2; taken as 2");
        code = 2;
      }
      pushStep(lineNo_, OriginCommand{v[0], v[1], code});
    } else if (const Menu* menu = menuOfWord(w)) {
      openMenu(*menu);
    } else if (w == "window") {
      readWindow();  // a window outside the layout menu sets the window all the same
    } else if (w == "solve") {
      readSolve();
    } else if (w == "time") {
      double t = 0;
      if (!numbers(1, 1, &t)) {
        report("\"time\" needs one number; line skipped");
        return true;
      }
      pushStep(lineNo_, TimeCommand{t});
    } else if (w == "save" || w == "load") {
      std::string name = argumentText();
      if (name.empty()) {
        report("no file name after \"" + std::string(items_[0]) + "\"; line skipped");
        return true;
      }
      if (w == "save") pushStep(lineNo_, SaveCommand{name});
      else pushStep(lineNo_, LoadCommand{name});
    } else if (w == "stop") {
      pushStep(lineNo_, StopCommand{});
      out_.stopped = true;
    } else {
      return false;
    }
    return true;
  }

  void readWindow() {
    double v[4];
    if (!numbers(1, 4, v)) {
      report("\"window\" needs four numbers (left, bottom, right, top); line skipped");
      return;
    }
    pushStep(lineNo_, WindowInput{v[0], v[1], v[2], v[3]});
  }

  void readSolve() {
    size_t from = 1;
    SolveCommand c;
    if (items_.size() > 1 && lower(items_[1]) == "conjunctive") {
      c.conjunctive = true;
      from = 2;
    }
    int* fields[4] = {&c.inner, &c.outer, &c.store, &c.full};
    const char* names[4] = {"inner iterations", "outer iterations", "matrix storage switch", "factorisation switch"};
    for (size_t i = 0; i < 4; ++i) {
      size_t at = from + i;
      if (at >= items_.size()) {
        report(std::string("\"solve\" has no value for the ") + names[i] + "; taken as " + std::to_string(*fields[i]));
        continue;
      }
      double v = 0;
      if (!numbers(at, 1, &v)) {
        report(std::string("the ") + names[i] + " \"" + std::string(items_[at]) + "\" of \"solve\" cannot be read; taken as " +
               std::to_string(*fields[i]));
        continue;
      }
      *fields[i] = static_cast<int>(std::lround(std::clamp(v, -1e9, 1e9)));
    }
    // Bounds that keep a run finite whatever the file asks for.
    constexpr int kMaxIterations = 1000;
    constexpr int kMaxOuter = 100;
    if (c.inner < 1) {
      report("the number of inner iterations is below 1; taken as 1");
      c.inner = 1;
    } else if (c.inner > kMaxIterations) {
      report("the number of inner iterations " + std::to_string(c.inner) + " is above " + std::to_string(kMaxIterations) +
             "; clipped to " + std::to_string(kMaxIterations));
      c.inner = kMaxIterations;
    }
    if (c.outer < 0) {
      report("the number of outer iterations is negative; taken as 0");
      c.outer = 0;
    } else if (c.outer > kMaxOuter) {
      report("the number of outer iterations " + std::to_string(c.outer) + " is above " + std::to_string(kMaxOuter) +
             "; clipped to " + std::to_string(kMaxOuter));
      c.outer = kMaxOuter;
    }
    pushStep(lineNo_, c);
  }

  bool readAquiferCommand(const std::string& w) {
    auto one = [&](std::optional<double>& target) {
      double v = 0;
      if (!numbers(1, 1, &v)) report(quoted(items_[0]) + " needs one number; line skipped");
      else target = v;
    };
    if (w == "base") one(aquifer_.base);
    else if (w == "permeability") one(aquifer_.permeability);
    else if (w == "thickness") one(aquifer_.thickness);
    else if (w == "porosity") one(aquifer_.porosity);
    else if (w == "interface") {
      std::array<double, 3> v{};
      if (!numbers(1, 3, v.data())) report("\"interface\" needs three numbers (fresh and salt water gravity, sea level); line skipped");
      else if (!(v[0] > 0.0) || !(v[1] > v[0]))
        report("\"interface\": the salt water gravity must exceed the fresh water gravity, and both be positive; "
               "line skipped");
      else {
        aquifer_.interface = v;
        aquifer_.interfaceLine = lineNo_;
      }
    } else if (w == "uniflow") {
      std::array<double, 2> v{};
      if (!numbers(1, 2, v.data())) report("\"uniflow\" needs two numbers (Qx0 Qy0); line skipped");
      else aquifer_.uniflow = v;
    } else if (w == "reference") {
      std::array<double, 3> v{};
      if (!numbers(1, 3, v.data())) report("\"reference\" needs three numbers (x y head); line skipped");
      else aquifer_.reference = v;
    } else {
      return false;
    }
    return true;
  }

  // ---- line-sinks ---------------------------------------------------------

  StringInput* openString() { return string_ ? &elements_.strings[*string_] : nullptr; }

  void closeString() {
    if (!string_) return;
    StringInput& s = elements_.strings[*string_];
    if (s.kind == StringKind::Stream) {
      if (streamVertices_.size() == 1) {
        int saved = lineNo_;
        lineNo_ = streamVertices_[0].line;
        report("stream string of one vertex has no segment; string skipped");
        lineNo_ = saved;
      }
      for (size_t i = 0; i + 1 < streamVertices_.size(); ++i) {
        const StreamVertex& a = streamVertices_[i];
        const StreamVertex& b = streamVertices_[i + 1];
        s.segments.push_back(SegmentInput{a.line, a.x, a.y, b.x, b.y, a.head.value_or(0), a.label});
      }
      if (!streamVertices_.empty() && streamVertices_.back().head && streamVertices_.size() > 1) {
        int saved = lineNo_;
        lineNo_ = streamVertices_.back().line;
        report("the last vertex of a stream carries a head and a label that no segment uses; they were ignored");
        lineNo_ = saved;
      }
      streamVertices_.clear();
      streamClosed_ = false;
    }
    if (s.segments.empty() && s.kind != StringKind::Discharge) {
      // A string without segments adds nothing to the model.
      elements_.strings.erase(elements_.strings.begin() + static_cast<std::ptrdiff_t>(*string_));
    }
    string_.reset();
  }

  void startString(StringKind kind) {
    closeString();
    StringInput s;
    s.line = lineNo_;
    s.kind = kind;
    elements_.strings.push_back(std::move(s));
    string_ = elements_.strings.size() - 1;
    lineSinkDischarge_ = false;
  }

  bool readLineSinkCommand(const std::string& w) {
    if (w == "discharge") {
      closeString();
      lineSinkDischarge_ = true;
      return true;
    }
    if (w == "head" || w == "drain" || w == "gallery") {
      startString(w == "head" ? StringKind::Head : w == "drain" ? StringKind::Drain : StringKind::Gallery);
      return true;
    }
    if (w == "stream") {
      double q = 0;
      if (items_.size() > 1 && !numbers(1, 1, &q)) {
        report("the end inflow of \"stream\" cannot be read; taken as 0");
        q = 0;
      }
      startString(StringKind::Stream);
      openString()->endInflow = q;
      return true;
    }
    static const char* const kProperties[] = {"resistance", "width", "depth", "pumping", "end", "inlet",
                                               "outlet", "lake", "levels", "overlandflow"};
    bool property = false;
    for (const char* p : kProperties) property = property || w == p;
    if (!property) return false;
    StringInput* s = openString();
    if (!s || s->kind == StringKind::Discharge) {
      report(quoted(items_[0]) + " stands where no head-specified or stream string is open; line skipped");
      return true;
    }
    double v[2] = {0, 0};
    if (w == "resistance" || w == "depth" || w == "pumping" || w == "overlandflow") {
      if (!numbers(1, 1, v)) {
        report(quoted(items_[0]) + " needs one number; line skipped");
        return true;
      }
      if (w == "resistance") s->resistance = v[0];
      else if (w == "depth") s->depth = v[0];
      else if (w == "pumping") {
        s->pumping = v[0];
        s->pumpingGiven = true;
      } else s->overlandFlow = v[0];
      return true;
    }
    if (w == "width") {
      if (!numbers(1, 1, v)) {
        report("\"width\" needs a width and a location code; line skipped");
        return true;
      }
      s->width = v[0];
      if (items_.size() > 2) {
        if (!numbers(2, 1, v + 1) || v[1] < 0 || v[1] > 2 || v[1] != std::floor(v[1]))
          report("location code \"" + std::string(items_[2]) + "\" of \"width\" is not 0, 1 or 2; taken as 0");
        else s->locationCode = static_cast<int>(v[1]);
      }
      return true;
    }
    if (w == "end") {
      s->endFlag = true;
      return true;
    }
    // Links of streams to lakes and outlets.
    if (s->lakeLinkLine == 0) s->lakeLinkLine = lineNo_;
    if (w == "inlet") s->inlet = true;
    else if (w == "outlet") s->outletTable = argumentText();
    else if (w == "lake") s->lakeTable = argumentText();
    else {  // levels
      if (!numbers(1, 2, v)) {
        report("\"Levels\" needs two numbers (discharge and head); line skipped");
        return true;
      }
      s->levels = std::array<double, 2>{v[0], v[1]};
    }
    return true;
  }

  // ---- inhomogeneities, walls, lakes --------------------------------------

  bool readPolygonCommand(const std::string& w) {
    PolygonInput p;
    p.line = lineNo_;
    size_t count = 0;
    if (w == "transmissivity") {
      p.kind = PolygonKind::Transmissivity;
      count = 5;
    } else if (w == "slurry") {
      if (items_.size() < 2) {
        report("\"slurry\" needs its kind (open, closed, outside or inside); line skipped");
        polygon_.reset();
        return true;
      }
      std::string kind = lower(items_[1]);
      if (kind == "open") p.kind = PolygonKind::WallOpen;
      else if (kind == "closed") p.kind = PolygonKind::WallClosed;
      else if (kind == "outside") p.kind = PolygonKind::WallOutside;
      else if (kind == "inside") p.kind = PolygonKind::WallInside;
      else {
        report("unknown wall kind \"" + std::string(items_[1]) + "\" (open, closed, outside or inside); line and its vertices skipped");
        polygon_.reset();
        return true;
      }
      count = 4;
    } else if (w == "lake") {
      p.kind = PolygonKind::Lake;
      count = 4;
    } else {
      return false;
    }
    size_t first = p.kind == PolygonKind::Transmissivity || p.kind == PolygonKind::Lake ? 1 : 2;
    p.params.resize(count);
    if (!numbers(first, count, p.params.data())) {
      report(quoted(items_[0]) + " needs " + std::to_string(count) +
             " numbers and a label; line and its vertices skipped");
      polygon_.reset();
      return true;
    }
    size_t after = first + count;
    if (p.kind == PolygonKind::Lake && items_.size() > after + 1) {
      // Lake: stage table, then the label.
      p.label = std::string(items_.back());
      const char* b = items_[after].data();
      const char* e = items_[items_.size() - 2].data() + items_[items_.size() - 2].size();
      p.table = std::string(b, static_cast<size_t>(e - b));
    } else {
      p.label = rest(after);
    }
    elements_.polygons.push_back(std::move(p));
    polygon_ = elements_.polygons.size() - 1;
    return true;
  }

  // ---- data lines -------------------------------------------------------------

  void readData() {
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

  bool needMode() {
    if (wellMode_ != WellMode::None) return true;
    report(std::string("data line in the ") + menuName(menu()) + " before \" discharge\" or \" head\"; line skipped");
    return false;
  }

  void readWell() {
    if (!needMode()) return;
    double v[4];
    if (!numbers(0, 4, v)) return unreadable(wellMode_ == WellMode::Head ? "x y h rw label" : "x y Q rw label");
    elements_.wells.push_back(WellInput{lineNo_, v[0], v[1], v[2], v[3], wellMode_ == WellMode::Head, rest(4)});
  }

  void readPartialWell() {
    if (!needMode()) return;
    double v[6];
    if (!numbers(0, 6, v)) return unreadable("x y top bottom Q|h rw label");
    elements_.partialWells.push_back(
        PartialWellInput{lineNo_, v[0], v[1], v[2], v[3], v[4], v[5], wellMode_ == WellMode::Head, rest(6)});
  }

  void readTheisWell() {
    double v[7];
    if (!numbers(0, 7, v)) return unreadable("x y Q t0 h0 S rw label");
    elements_.theisWells.push_back(TheisWellInput{lineNo_, v[0], v[1], v[2], v[3], v[4], v[5], v[6], rest(7)});
  }

  void readSinkDisk() {
    if (!needMode()) return;
    double v[5];
    if (!numbers(0, 5, v)) return unreadable(wellMode_ == WellMode::Head ? "x1 y1 x2 y2 h label" : "x1 y1 x2 y2 N 0 label");
    size_t labelAt = 5;
    if (wellMode_ == WellMode::Discharge && items_.size() > 6) {
      // The discharge form carries a literal zero before the label.
      double zero = 0;
      if (numbers(5, 1, &zero)) labelAt = 6;
    }
    elements_.sinkDisks.push_back(
        SinkDiskInput{lineNo_, v[0], v[1], v[2], v[3], v[4], wellMode_ == WellMode::Head, rest(labelAt)});
  }

  void readLineSinkData() {
    StringInput* s = openString();
    if (lineSinkDischarge_ || (s && s->kind == StringKind::Discharge)) {
      double v[5];
      if (!numbers(0, 5, v)) return unreadable("x1 y1 x2 y2 sigma label");
      SegmentInput seg{lineNo_, v[0], v[1], v[2], v[3], v[4], rest(5)};
      // Segments that join end to start make one string.
      if (!s || s->segments.empty() || s->segments.back().x2 != seg.x1 || s->segments.back().y2 != seg.y1) {
        string_.reset();
        StringInput fresh;
        fresh.line = lineNo_;
        fresh.kind = StringKind::Discharge;
        elements_.strings.push_back(std::move(fresh));
        string_ = elements_.strings.size() - 1;
        s = openString();
      }
      s->segments.push_back(std::move(seg));
      return;
    }
    if (!s) {
      report("data line in the linesink menu before a mode word (discharge, head, drain, gallery or stream); line skipped");
      return;
    }
    if (s->kind == StringKind::Stream) {
      if (streamClosed_) {
        report("vertex after the last vertex of a stream (the line \"x y\" without head ends a stream); line skipped");
        return;
      }
      double v[3];
      if (!numbers(0, 2, v)) return unreadable("x y h label, or x y for the last vertex");
      StreamVertex vx{lineNo_, v[0], v[1], std::nullopt, {}};
      if (items_.size() > 2) {
        if (!numbers(2, 1, v + 2)) return unreadable("x y h label, or x y for the last vertex");
        vx.head = v[2];
        vx.label = rest(3);
      } else {
        streamClosed_ = true;
      }
      streamVertices_.push_back(std::move(vx));
      return;
    }
    double v[5];
    if (!numbers(0, 5, v)) return unreadable("x1 y1 x2 y2 h label");
    s->segments.push_back(SegmentInput{lineNo_, v[0], v[1], v[2], v[3], v[4], rest(5)});
  }

  void readVertex() {
    if (!polygon_) {
      report("vertex line in the inhomogeneity menu without an open transmissivity, slurry or Lake line; line skipped");
      return;
    }
    double v[2];
    if (!numbers(0, 2, v)) return unreadable("x y label");
    elements_.polygons[*polygon_].vertices.push_back(VertexInput{lineNo_, v[0], v[1], rest(2)});
  }

  // ---- extract ----------------------------------------------------------------

  bool readExtractCommand(const std::string& w) {
    if (w == "file") {
      extract_.file = argumentText();
      if (extract_.file.empty()) report("no file name after \"file\"; line skipped");
      return true;
    }
    if (w == "interface") {
      double v[2];
      if (!numbers(1, 2, v)) report("\"interface\" needs two numbers (x y); line skipped");
      else extract_.interfacePoints.push_back(InterfacePointInput{lineNo_, v[0], v[1]});
      return true;
    }
    if (w == "flux") {
      flux_ = {};
      flux_.line = lineNo_;
      flux_.label = argumentText();
      menus_.push_back(Menu::Flux);
      return true;
    }
    std::optional<ExtractRequest> r;
    std::string second = items_.size() > 1 ? lower(items_[1]) : std::string();
    if (w == "well" || w == "ppwell" || w == "linesink") {
      bool pp = w == "ppwell";
      bool ls = w == "linesink";
      if (second == "discharge")
        r = ls ? ExtractRequest::LineSinkDischarge : pp ? ExtractRequest::PartialWellDischarge : ExtractRequest::WellDischarge;
      else if (second == "head")
        r = ls ? ExtractRequest::LineSinkHead : pp ? ExtractRequest::PartialWellHead : ExtractRequest::WellHead;
    } else if (w == "theis") {
      if (second == "well") r = ExtractRequest::TheisWell;
    } else if (w == "inhomogeneity") {
      r = ExtractRequest::Inhomogeneity;
    } else if (w == "leakage") {
      r = ExtractRequest::Leakage;
    } else {
      return false;
    }
    if (!r) {
      report("unknown request \"" + rest(0) + "\" in the extract menu; line skipped");
      return true;
    }
    if (std::find(extract_.requests.begin(), extract_.requests.end(), *r) == extract_.requests.end())
      extract_.requests.push_back(*r);
    return true;
  }

  void readExtractPoint() {
    // The inspection file writes Y and the elevation without a blank between them.
    items_ = splitGluedNumbers(items_);
    ExtractPoint p;
    p.line = lineNo_;
    std::string first = lower(items_[0]);
    size_t from = 0;
    if (first == "gage" || first == "lake_stage") {
      p.kind = first == "gage" ? ExtractPoint::Kind::Gage : ExtractPoint::Kind::LakeStage;
      from = 1;
    }
    double v[3];
    if (!numbers(from, 2, v)) return unreadable(from ? "gage x y label" : "x y [z] [label]");
    p.x = v[0];
    p.y = v[1];
    size_t labelAt = from + 2;
    if (p.kind == ExtractPoint::Kind::Point && items_.size() > labelAt) {
      if (isParameterField(items_[labelAt])) parameterField(labelAt);
      if (auto z = parseNumber(items_[labelAt])) {
        p.z = *z;
        ++labelAt;
      }
    }
    p.label = rest(labelAt);
    extract_.points.push_back(std::move(p));
  }

  void readFluxPoint() {
    double v[2];
    if (!numbers(0, 2, v)) return unreadable("x y");
    flux_.points.push_back({v[0], v[1]});
  }

  // ---- grid, trace, leakage ------------------------------------------------------

  bool readGridCommand(const std::string& w) {
    GridSettings& g = grid_.settings;
    if (w == "window") {
      double v[6];
      if (items_.size() >= 7 && numbers(1, 6, v)) {
        g.window = WindowInput{v[0], v[1], v[3], v[4]};
        g.elevations = std::array<double, 2>{v[2], v[5]};
      } else if (numbers(1, 4, v)) {
        g.window = WindowInput{v[0], v[1], v[2], v[3]};
        g.elevations.reset();
      } else {
        report("grid \"window\" needs four numbers, or six with elevations; line skipped");
      }
    } else if (w == "dotmap") {
    } else if (w == "horizontalpoints") {
      double n = 0;
      if (!numbers(1, 1, &n) || n < 2 || n > 100000) report("\"horizontalpoints\" needs a count from 2 to 100000; line skipped");
      else g.horizontalPoints = static_cast<int>(n);
    } else if (w == "plot") {
      std::string what = items_.size() > 1 ? lower(items_[1]) : std::string();
      if (what != "heads" && what != "potentials" && what != "discharge" && what != "interface" && what != "stream")
        report("\"plot\" needs heads, potentials, discharge, interface or stream; line skipped");
      else g.plot = what;
    } else if (w == "go") {
      grid_.go = true;
      grid_.actions.push_back(GridAction{GridAction::Kind::Go, lineNo_, {}, g});
    } else if (w == "save" || w == "minusgrid" || w == "surfer") {
      std::string name = argumentText();
      if (name.empty()) {
        report("no name after \"" + std::string(items_[0]) + "\"; line skipped");
      } else {
        auto kind = w == "save" ? GridAction::Kind::Save : w == "minusgrid" ? GridAction::Kind::MinusGrid
                                                                            : GridAction::Kind::Surfer;
        grid_.actions.push_back(GridAction{kind, lineNo_, name, {}});
      }
    } else {
      return false;
    }
    return true;
  }

  bool readTraceCommand(const std::string& w) {
    double v[4];
    if (w == "picture") {
    } else if (w == "file") {
      trace_.file = argumentText();
      trace_.fileLine = lineNo_;
      if (trace_.file.empty()) report("no name after \"file\"; the paths go to the base name's .PTH");
    } else if (w == "time" || w == "step") {
      if (!numbers(1, 1, v)) {
        report(quoted(items_[0]) + " needs one number; line skipped");
      } else {
        (w == "time" ? trace_.time : trace_.step) = v[0];
        (w == "time" ? trace_.timeLine : trace_.stepLine) = lineNo_;
      }
    } else if (w == "points") {
      menus_.push_back(Menu::TracePoints);
    } else if (w == "well") {
      if (!numbers(1, 4, v)) {
        report("trace \"well\" needs x y z and a number of particles; line skipped");
      } else if (!(v[3] >= 1)) {
        report("trace \"well\" needs at least one particle; line skipped");
      } else {
        if (v[3] > kMaxWellParticles)
          report("trace \"well\": more than " + std::to_string(kMaxWellParticles) + " particles; " +
                 std::to_string(kMaxWellParticles) + " are traced");
        int n = static_cast<int>(std::min(v[3], static_cast<double>(kMaxWellParticles)));
        trace_.wells.push_back(TraceWellInput{lineNo_, v[0], v[1], v[2], n});
      }
    } else if (w == "go") {
      trace_.go = true;
      if (trace_.goLine == 0) trace_.goLine = lineNo_;
    } else {
      return false;
    }
    return true;
  }

  void readTracePoint() {
    // The one-streamline file writes the elevation with two decimals and the
    // direction right after it ("10.00-1", "10.001").
    items_ = splitGluedNumbers(items_);
    if (items_.size() == 3) {
      std::string_view z = items_[2];
      size_t point = z.find('.');
      if (point != std::string_view::npos && z.find_first_of("EeDd") == std::string_view::npos &&
          z.size() > point + 3 && parseNumber(z.substr(point + 3))) {
        items_[2] = z.substr(0, point + 3);
        items_.push_back(z.substr(point + 3));
      }
    }
    double v[4] = {0, 0, 0, 1};
    if (!numbers(0, 3, v)) return unreadable("x y z direction");
    if (items_.size() > 3 && !numbers(3, 1, v + 3)) return unreadable("x y z direction");
    trace_.points.push_back(TracePointInput{lineNo_, v[0], v[1], v[2], v[3] < 0 ? -1.0 : 1.0});
  }

  bool readLeakageCommand(const std::string& w) {
    double v[5];
    if (w == "origin") {
      if (!numbers(1, 2, v)) report("leakage \"origin\" needs two numbers; line skipped");
      else leakage_.origin = std::array<double, 2>{v[0], v[1]};
    } else if (w == "solve") {
      if (!numbers(1, 5, v)) report("leakage \"solve\" needs five numbers; line skipped");
      else leakage_.solve = std::array<double, 5>{v[0], v[1], v[2], v[3], v[4]};
    } else if (w == "check") {
      if (!numbers(1, 5, v)) report("leakage \"check\" needs five numbers; line skipped");
      else leakage_.checks.push_back({v[0], v[1], v[2], v[3], v[4]});
    } else {
      return false;
    }
    return true;
  }
};

}  // namespace

CommandFile parseCommandFile(std::string_view text, const ParameterValues* values) {
  return Reader(values).run(text);
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
