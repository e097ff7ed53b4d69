// Command reader: commands of the top level and of the layout menu: logs, titles, the origin, menus
// opened, the window, solve, time, save, load and stop.
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

bool Reader::readTopCommand(const std::string& w) {
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

void Reader::readWindow() {
  double v[4];
  if (!numbers(1, 4, v)) {
    report("\"window\" needs four numbers (left, bottom, right, top); line skipped");
    return;
  }
  pushStep(lineNo_, WindowInput{v[0], v[1], v[2], v[3]});
}

void Reader::readSolve() {
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
  // An optional word after the numbers chooses the method of the linear solution.
  if (const size_t at = from + 4; at < items_.size()) {
    const std::string m = lower(items_[at]);
    if (m == "dense") c.method = SolveCommand::Method::Dense;
    else if (m == "compressed") c.method = SolveCommand::Method::Compressed;
    else if (m == "automatic") c.method = SolveCommand::Method::Automatic;
    else
      report("the method \"" + std::string(items_[at]) +
             "\" of \"solve\" is not dense, compressed or automatic; taken as automatic");
  }
  pushStep(lineNo_, c);
}

}  // namespace tarno::engine::reader
