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
  elements_.wells.push_back(WellInput{lineNo_, v[0], v[1], v[2], v[3], wellMode_ == WellMode::Head, rest(4)});
}

void Reader::readPartialWell() {
  if (!needMode()) return;
  double v[6];
  if (!numbers(0, 6, v)) return unreadable("x y top bottom Q|h rw label");
  elements_.partialWells.push_back(
      PartialWellInput{lineNo_, v[0], v[1], v[2], v[3], v[4], v[5], wellMode_ == WellMode::Head, rest(6)});
}

void Reader::readTheisWell() {
  double v[7];
  if (!numbers(0, 7, v)) return unreadable("x y Q t0 h0 S rw label");
  elements_.theisWells.push_back(TheisWellInput{lineNo_, v[0], v[1], v[2], v[3], v[4], v[5], v[6], rest(7)});
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
  elements_.sinkDisks.push_back(
      SinkDiskInput{lineNo_, v[0], v[1], v[2], v[3], v[4], wellMode_ == WellMode::Head, rest(labelAt)});
}

}  // namespace tarno::engine::reader
