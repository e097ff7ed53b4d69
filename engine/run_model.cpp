// Step handlers that build the model: title, base name, origin, aquifer, window and the
// element menus (with the checks of partially penetrating and transient wells, stage
// tables and outlet ratings).
#include "engine/run_steps.h"

namespace tarno::engine {

using running::toKind;
using running::stringLabelOf;

namespace running {

void Runner::apply(int, const TitleCommand& c) {
  model_.title = c.text;
  logs_.message("Title: " + c.text);
}

void Runner::apply(int, const BaseNameCommand& c) {
  baseName_ = c.name;
  model_.baseName = c.name;
  logs_.message("Base name: " + c.name);
}

void Runner::apply(int, const OriginCommand& c) {
  model_.originX = c.x0;
  model_.originY = c.y0;
  model_.unitCode = c.code;
  logs_.message("Model origin (map units): " + number(c.x0) + " " + number(c.y0) + ", unit code " +
                std::to_string(c.code) + "; coordinates that follow are model coordinates");
}

void Runner::apply(int line, const AquiferInput& a) {
  applyAquifer(model_, a);
  modelChanged_ = true;
  const Aquifer& q = model_.aquifer;
  if (q.conductivity <= 0) logs_.problem(line, "", "the aquifer's permeability is not positive");
  if (q.thickness <= 0) logs_.problem(line, "", "the aquifer's thickness is not positive");
  if (q.porosity <= 0 || q.porosity > 1) logs_.problem(line, "", "the aquifer's porosity is not between 0 and 1");
  logs_.message("Aquifer: base " + number(q.base) + ", permeability " + number(q.conductivity) + ", thickness " +
                number(q.thickness) + ", porosity " + number(q.porosity));
  if (q.hasInterface) {
    std::string text = "Salt water interface: fresh water gravity " + number(q.freshGravity) +
                       ", salt water gravity " + number(q.saltGravity) + ", sea level " + number(q.seaLevel);
    if (auto toe = interfaceToe(q, q.base, q.conductivity, q.thickness))
      text += "; its toe (on the base) where the head is " + number(toe->head) + ", the potential " +
              number(toe->potential);
    else
      text += "; the base lies above sea level, no salt water reaches the aquifer";
    logs_.message(text);
  }
}

void Runner::apply(int, const WindowInput& w) {
  model_.window = Window{true, w.x1, w.y1, w.x2, w.y2};
  logs_.message("Window: " + number(w.x1) + " " + number(w.y1) + " " + number(w.x2) + " " + number(w.y2));
}

void Runner::apply(int, const ElementsInput& e) {
  for (const WellInput& w : e.wells)
    if (!(w.radius > 0))
      logs_.problem(w.line, "", "well " + w.label + " has a radius that is not positive; the well was skipped");
  ElementsInput kept = e;
  std::erase_if(kept.wells, [](const WellInput& w) { return !(w.radius > 0); });
  checkPartialWells(kept.partialWells);
  checkTheisWells(kept.theisWells);
  size_t wellsBefore = model_.wells.size() + model_.partialWells.size() + model_.theisWells.size();
  size_t stringsBefore = model_.lineSinks.size();
  size_t areasBefore = model_.inhomogeneities.size() + model_.walls.size() + model_.ponds.size();
  size_t lakesBefore = model_.lakes.size();
  addElements(model_, kept);
  for (size_t i = lakesBefore; i < model_.lakes.size(); ++i) readLakeTable(model_.lakes[i]);
  for (size_t i = stringsBefore; i < model_.lineSinks.size(); ++i) readOutletRating(model_.lineSinks[i]);
  if (model_.wells.size() + model_.partialWells.size() + model_.theisWells.size() != wellsBefore ||
      model_.lineSinks.size() != stringsBefore ||
      model_.inhomogeneities.size() + model_.walls.size() + model_.ponds.size() != areasBefore ||
      model_.lakes.size() != lakesBefore)
    modelChanged_ = true;
}

// The rating table of a stream that flows out of a lake (read here; the link to the
// lake is made by the solve). Without one nothing flows out through the outlet.
void Runner::readOutletRating(LineSinkString& ls) {
  const std::string name = ls.outletTable;
  if (ls.kind != LineSinkKind::Stream || name.empty() || name == "0" || name == "__NONE__") return;
  auto p = findFileNoCase(workDir_, name);
  std::string why;
  if (!p) why = "it was not found in " + workDir_.string();
  else if (readRatingTable(*p, ls.outletRating, why)) return;
  ls.outletRating.clear();
  logs_.problem(0, "", "stream " + ls.label + ": the outlet rating table " + name + " cannot be used (" + why +
                           "); nothing flows out of a lake through it");
}

// A lake's stage table, looked up in the working folder without regard to case. The
// front end writes "0" or nothing for a lake without one. A lake whose table cannot be
// read is solved without it (its water surface is its polygon).
void Runner::readLakeTable(Lake& l) {
  if (l.vertices.size() < 3)
    logs_.problem(l.line, "", "lake " + l.label + " has " + std::to_string(l.vertices.size()) +
                                  " vertices, fewer than three; the lake is skipped");
  const std::string name = l.tableName;
  if (name.empty() || name == "0" || name == "__NONE__") return;
  auto p = findFileNoCase(workDir_, name);
  std::string why;
  if (!p) why = "it was not found in " + workDir_.string();
  else if (readStageTable(*p, l.table, why)) return;
  l.table.clear();
  logs_.problem(l.line, "", "lake " + l.label + ": the stage table " + name + " cannot be used (" + why +
                                "); the lake is solved without it, its water surface is its polygon");
}

// Partially penetrating wells: a radius that is not positive skips the well (as for
// plain wells); a screen whose top lies below its bottom is mended by swapping the two.
// A screen that reaches outside the saturated zone is clipped by the solve, which
// reports it.
void Runner::checkPartialWells(std::vector<PartialWellInput>& wells) {
  std::erase_if(wells, [this](const PartialWellInput& w) {
    if (w.radius > 0) return false;
    logs_.problem(w.line, "", "partially penetrating well " + w.label + ": radius " + number(w.radius) +
                                  " is not positive; the well was skipped");
    return true;
  });
  for (PartialWellInput& w : wells)
    if (w.top < w.bottom) {
      logs_.problem(w.line, "", "partially penetrating well " + w.label + ": the top of the screen " + number(w.top) +
                                    " lies below its bottom " + number(w.bottom) + "; the two were swapped");
      std::swap(w.top, w.bottom);
    }
}

// Transient wells: a schedule line whose storage coefficient or radius is not positive
// is skipped. A line that starts after the time of evaluation is no error (a cyclic
// schedule lists every switch); the solve counts such lines in the message log.
void Runner::checkTheisWells(std::vector<TheisWellInput>& wells) {
  std::erase_if(wells, [this](const TheisWellInput& w) {
    std::string why;
    if (!(w.storage > 0)) why = "storage coefficient " + number(w.storage) + " is not positive";
    else if (!(w.radius > 0)) why = "radius " + number(w.radius) + " is not positive";
    if (why.empty()) return false;
    logs_.problem(w.line, "", "transient well " + w.label + ": " + why + "; the schedule line was skipped");
    return true;
  });
  for (const TheisWellInput& w : wells)
    if (w.storage > 1)
      logs_.problem(w.line, "", "transient well " + w.label + ": storage coefficient " + number(w.storage) +
                                    " is above 1; it is used as given");
}

}  // namespace running

void applyAquifer(Model& model, const AquiferInput& a) {
  Aquifer& q = model.aquifer;
  if (a.base) q.base = *a.base;
  if (a.permeability) q.conductivity = *a.permeability;
  if (a.thickness) q.thickness = *a.thickness;
  if (a.porosity) q.porosity = *a.porosity;
  if (a.uniflow) {
    q.qx0 = (*a.uniflow)[0];
    q.qy0 = (*a.uniflow)[1];
  }
  if (a.reference) {
    q.hasReference = true;
    q.referenceX = (*a.reference)[0];
    q.referenceY = (*a.reference)[1];
    q.referenceHead = (*a.reference)[2];
  }
  if (a.interface) {
    q.hasInterface = true;
    q.freshGravity = (*a.interface)[0];
    q.saltGravity = (*a.interface)[1];
    q.seaLevel = (*a.interface)[2];
  }
}

void addElements(Model& model, const ElementsInput& e) {
  for (const WellInput& w : e.wells) {
    Well well;
    well.x = w.x;
    well.y = w.y;
    well.radius = w.radius;
    well.value = w.value;
    well.headSpecified = w.headSpecified;
    well.label = w.label;
    model.wells.push_back(std::move(well));
  }
  for (const PartialWellInput& w : e.partialWells) {
    PartialWell p;
    p.x = w.x;
    p.y = w.y;
    p.top = w.top;
    p.bottom = w.bottom;
    p.radius = w.radius;
    p.value = w.value;
    p.headSpecified = w.headSpecified;
    p.label = w.label;
    p.line = w.line;
    model.partialWells.push_back(std::move(p));
  }
  for (const TheisWellInput& w : e.theisWells) {
    TheisWell t;
    t.x = w.x;
    t.y = w.y;
    t.discharge = w.discharge;
    t.startTime = w.startTime;
    t.startHead = w.startHead;
    t.storage = w.storage;
    t.radius = w.radius;
    t.label = w.label;
    t.line = w.line;
    model.theisWells.push_back(std::move(t));
  }
  for (const StringInput& s : e.strings) {
    if (s.segments.empty()) continue;
    LineSinkString ls;
    ls.kind = toKind(s.kind);
    ls.resistance = s.resistance;
    ls.width = s.width;
    ls.locationCode = s.locationCode;
    ls.depth = s.depth;
    ls.pumping = s.pumping;
    ls.endInflow = s.endInflow;
    ls.end = s.endFlag;
    ls.overlandFlow = s.overlandFlow;
    ls.inlet = s.inlet;
    if (s.outletTable) ls.outletTable = *s.outletTable;
    if (s.kind == StringKind::Stream && (s.lakeTable || s.levels)) {
      // A lake edge: the end inflow of a routed string is here the lake's evaporation
      // less its precipitation; the name after " Lake" is not used (it groups nothing).
      ls.lake.on = true;
      ls.lake.netEvaporation = s.endInflow;
      ls.endInflow = 0.0;
      ls.outletTable.clear();
      ls.inlet = false;
      if (s.levels) {
        ls.lake.bottom = (*s.levels)[0];
        ls.lake.estimate = (*s.levels)[1];
      } else {
        ls.lake.estimate = s.segments.front().value;
      }
    }
    ls.label = stringLabelOf(s.segments.front().label);
    for (const SegmentInput& g : s.segments) ls.segments.push_back(Segment{g.x1, g.y1, g.x2, g.y2, g.value, g.label});
    model.lineSinks.push_back(std::move(ls));
  }
  for (const SinkDiskInput& d : e.sinkDisks) {
    Pond p;
    p.x = d.x1;
    p.y = d.y1;
    p.radius = std::hypot(d.x2 - d.x1, d.y2 - d.y1);
    p.value = d.value;
    p.headSpecified = d.headSpecified;
    p.label = d.label;
    p.line = d.line;
    model.ponds.push_back(std::move(p));
  }
  for (const PolygonInput& p : e.polygons) {
    auto param = [&](size_t i, double fallback) { return i < p.params.size() ? p.params[i] : fallback; };
    std::vector<Vertex> vertices;
    for (const VertexInput& v : p.vertices) vertices.push_back(Vertex{v.x, v.y, v.label});
    switch (p.kind) {
      case PolygonKind::Transmissivity: {
        Inhomogeneity in;
        in.conductivity = param(0, kAsAquifer);
        in.base = param(1, kAsAquifer);
        in.averageHead = param(2, kAsAquifer);
        in.extraction = param(3, 0.0);
        in.porosity = param(4, kAsAquifer);
        in.label = p.label;
        in.vertices = std::move(vertices);
        in.line = p.line;
        model.inhomogeneities.push_back(std::move(in));
        break;
      }
      case PolygonKind::WallOpen:
      case PolygonKind::WallClosed:
      case PolygonKind::WallOutside:
      case PolygonKind::WallInside: {
        Wall w;
        w.kind = p.kind == PolygonKind::WallOpen     ? WallKind::Open
                 : p.kind == PolygonKind::WallClosed ? WallKind::Closed
                 : p.kind == PolygonKind::WallOutside ? WallKind::Outside
                                                      : WallKind::Inside;
        w.conductivity = param(0, 0.0);
        w.thickness = param(1, 1.0);
        w.porosity = param(2, 0.3);
        w.bottom = param(3, model.aquifer.base);
        w.label = p.label;
        w.vertices = std::move(vertices);
        w.line = p.line;
        model.walls.push_back(std::move(w));
        break;
      }
      case PolygonKind::Lake: {
        Lake l;
        l.conductivity = param(0, kAsAquifer);
        l.precipitation = param(1, 0.0);
        l.evaporation = param(2, 0.0);
        l.resistance = param(3, 0.0);
        l.tableName = p.table;
        l.label = p.label;
        l.vertices = std::move(vertices);
        l.line = p.line;
        model.lakes.push_back(std::move(l));
        break;
      }
    }
  }
}

std::vector<UnsupportedKind> findUnsupported(const CommandFile& file) {
  std::vector<UnsupportedKind> kinds;
  const std::string leftOut = "they are left out and the rest of the model is solved without them";
  auto note = [&](const std::string& key, const std::string& words, int line, size_t count,
                  const std::string& result = "") {
    for (auto& k : kinds)
      if (k.key == key) {
        k.count += count;
        return;
      }
    kinds.push_back(UnsupportedKind{key, words, result.empty() ? leftOut : result, line, count});
  };
  for (const Step& step : file.steps) {
    if (auto* s = std::get_if<SolveCommand>(&step.data)) {
      if (s->conjunctive)
        note("conjunctive", "conjunctive solutions with a lower model (solve conjunctive)", step.line, 1,
             "solved as plain solves");
    }
  }
  return kinds;
}

}  // namespace tarno::engine
