// Command reader: data lines of the well, ppwell, twell and sinkdisk menus.
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

bool Reader::needMode() {
  if (wellMode_ != WellMode::None) return true;
  report(std::string("data line in the ") + menuName(menu()) + " before \" discharge\" or \" head\"; line skipped");
  return false;
}

void Reader::readWell() {
  if (!needMode()) return;
  double v[4];
  if (!numbers(0, 4, v)) return unreadable(wellMode_ == WellMode::Head ? "x y h rw label" : "x y Q rw label");
  Well w;
  w.x = v[0];
  w.y = v[1];
  w.value = v[2];
  w.radius = v[3];
  w.headSpecified = wellMode_ == WellMode::Head;
  w.label = rest(4);
  w.line = lineNo_;
  elements_.wells.push_back(std::move(w));
}

void Reader::readPartialWell() {
  if (!needMode()) return;
  double v[6];
  if (!numbers(0, 6, v)) return unreadable("x y top bottom Q|h rw label");
  PartialWell w;
  w.x = v[0];
  w.y = v[1];
  w.top = v[2];
  w.bottom = v[3];
  w.value = v[4];
  w.radius = v[5];
  w.headSpecified = wellMode_ == WellMode::Head;
  w.label = rest(6);
  w.line = lineNo_;
  elements_.partialWells.push_back(std::move(w));
}

void Reader::readTheisWell() {
  double v[7];
  if (!numbers(0, 7, v)) return unreadable("x y Q t0 h0 S rw label");
  TheisWell w;
  w.x = v[0];
  w.y = v[1];
  w.discharge = v[2];
  w.startTime = v[3];
  w.startHead = v[4];
  w.storage = v[5];
  w.radius = v[6];
  w.label = rest(7);
  w.line = lineNo_;
  elements_.theisWells.push_back(std::move(w));
}

void Reader::readSinkDisk() {
  if (!needMode()) return;
  double v[5];
  if (!numbers(0, 5, v)) return unreadable(wellMode_ == WellMode::Head ? "x1 y1 x2 y2 h label" : "x1 y1 x2 y2 N 0 label");
  size_t labelAt = 5;
  if (wellMode_ == WellMode::Discharge && items_.size() > 6) {
    // The discharge form carries a literal zero before the label.
    double zero = 0;
    if (numbers(5, 1, &zero)) labelAt = 6;
  }
  // The pond's centre and a point on its rim.
  Pond p;
  p.x = v[0];
  p.y = v[1];
  p.radius = std::hypot(v[2] - v[0], v[3] - v[1]);
  p.value = v[4];
  p.headSpecified = wellMode_ == WellMode::Head;
  p.label = rest(labelAt);
  p.line = lineNo_;
  elements_.ponds.push_back(std::move(p));
}

}  // namespace tarno::engine::reader
