// Command reader: the extract menu (points, gages, interface points, flux lines, requests), the grid
// menu and the trace menu.
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

bool Reader::readExtractCommand(const std::string& w) {
  if (w == "file") {
    extract_.file = argumentText();
    if (extract_.file.empty()) report("no file name after \"file\"; line skipped");
    return true;
  }
  if (w == "interface" || w == "cell_leakage") {
    double v[2];
    if (!numbers(1, 2, v))
      report("\"" + w + "\" needs two numbers (x y); line skipped");
    else
      extract_.interfacePoints.push_back(
          InterfacePointInput{lineNo_, v[0], v[1], w == "cell_leakage"});
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

void Reader::readExtractPoint() {
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

void Reader::readFluxPoint() {
  double v[2];
  if (!numbers(0, 2, v)) return unreadable("x y");
  flux_.points.push_back({v[0], v[1]});
}

bool Reader::readGridCommand(const std::string& w) {
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

bool Reader::readTraceCommand(const std::string& w) {
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

void Reader::readTracePoint() {
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

}  // namespace tarno::engine::reader
