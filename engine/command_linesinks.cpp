// Command reader: the linesink menu: strings of each kind, their properties and their segments
// (streams as lists of vertices).
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

void Reader::closeString() {
  if (!string_) return;
  LineSinkString& s = elements_.lineSinks[*string_];
  if (s.kind == LineSinkKind::Stream) {
    if (streamVertices_.size() == 1) {
      int saved = lineNo_;
      lineNo_ = streamVertices_[0].line;
      report("stream string of one vertex has no segment; string skipped");
      lineNo_ = saved;
    }
    for (size_t i = 0; i + 1 < streamVertices_.size(); ++i) {
      const StreamVertex& a = streamVertices_[i];
      const StreamVertex& b = streamVertices_[i + 1];
      s.segments.push_back(Segment{a.x, a.y, b.x, b.y, a.head.value_or(0), a.label, a.line});
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
  if (s.segments.empty() && s.kind != LineSinkKind::Discharge) {
    // A string without segments adds nothing to the model.
    elements_.lineSinks.erase(elements_.lineSinks.begin() + static_cast<std::ptrdiff_t>(*string_));
  }
  string_.reset();
}

void Reader::startString(LineSinkKind kind) {
  closeString();
  LineSinkString s;
  s.line = lineNo_;
  s.kind = kind;
  elements_.lineSinks.push_back(std::move(s));
  string_ = elements_.lineSinks.size() - 1;
  lineSinkDischarge_ = false;
}

bool Reader::readLineSinkCommand(const std::string& w) {
  if (w == "discharge") {
    closeString();
    lineSinkDischarge_ = true;
    return true;
  }
  if (w == "head" || w == "drain" || w == "gallery") {
    startString(w == "head" ? LineSinkKind::Head : w == "drain" ? LineSinkKind::Drain : LineSinkKind::Gallery);
    return true;
  }
  if (w == "stream") {
    double q = 0;
    if (items_.size() > 1 && !numbers(1, 1, &q)) {
      report("the end inflow of \"stream\" cannot be read; taken as 0");
      q = 0;
    }
    startString(LineSinkKind::Stream);
    openString()->endInflow = q;
    return true;
  }
  static const char* const kProperties[] = {"resistance", "width", "depth", "pumping", "end", "inlet",
                                             "outlet", "lake", "levels", "overlandflow"};
  bool property = false;
  for (const char* p : kProperties) property = property || w == p;
  if (!property) return false;
  LineSinkString* s = openString();
  if (!s || s->kind == LineSinkKind::Discharge) {
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
    s->end = true;
    return true;
  }
  // Links of streams to lakes and outlets.
  if (s->linkLine == 0) s->linkLine = lineNo_;
  if (w == "inlet") s->inlet = true;
  else if (w == "outlet") s->outletTable = argumentText();
  else if (w == "lake") s->lakeName = argumentText();
  else {  // levels
    if (!numbers(1, 2, v)) {
      report("\"Levels\" needs two numbers (discharge and head); line skipped");
      return true;
    }
    s->levels = std::array<double, 2>{v[0], v[1]};
  }
  return true;
}

void Reader::readLineSinkData() {
  LineSinkString* s = openString();
  if (lineSinkDischarge_ || (s && s->kind == LineSinkKind::Discharge)) {
    double v[5];
    if (!numbers(0, 5, v)) return unreadable("x1 y1 x2 y2 sigma label");
    Segment seg{v[0], v[1], v[2], v[3], v[4], rest(5), lineNo_};
    // Segments that join end to start make one string.
    if (!s || s->segments.empty() || s->segments.back().x2 != seg.x1 || s->segments.back().y2 != seg.y1) {
      string_.reset();
      LineSinkString fresh;
      fresh.line = lineNo_;
      fresh.kind = LineSinkKind::Discharge;
      elements_.lineSinks.push_back(std::move(fresh));
      string_ = elements_.lineSinks.size() - 1;
      s = openString();
    }
    s->segments.push_back(std::move(seg));
    return;
  }
  if (!s) {
    report("data line in the linesink menu before a mode word (discharge, head, drain, gallery or stream); line skipped");
    return;
  }
  if (s->kind == LineSinkKind::Stream) {
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
  s->segments.push_back(Segment{v[0], v[1], v[2], v[3], v[4], rest(5), lineNo_});
}

}  // namespace tarno::engine::reader
