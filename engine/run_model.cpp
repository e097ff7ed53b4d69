// Step handlers that build the model: title, base name, origin, aquifer, window and the
// element menus, with the one check of each kind of element (wells, partially
// penetrating and transient wells, lakes with their stage tables, line-sink strings with
// their lake links and outlet ratings).
#include "engine/run_steps.h"

#include <iterator>

namespace tarno::engine {

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

// The one place where the elements of a menu enter the model: each is checked by the
// check of its kind (below), which reports what is wrong, mends what can be mended and
// says whether the element is kept. The checks of the syntax (numbers, vertices of a
// stream, location codes) are the reader's; the solve's preparation checks the shapes
// of area elements. The kinds are checked in the order wells, partially penetrating
// wells, transient wells, lakes, strings: the order of the problems the run keeps.
void Runner::apply(int, const ModelElements& e) {
  ModelElements kept = e;
  std::erase_if(kept.wells, [this](Well& w) { return !check(w); });
  std::erase_if(kept.partialWells, [this](PartialWell& w) { return !check(w); });
  std::erase_if(kept.theisWells, [this](TheisWell& w) { return !check(w); });
  std::erase_if(kept.lakes, [this](Lake& l) { return !check(l); });
  std::erase_if(kept.lineSinks, [this](LineSinkString& ls) { return !check(ls); });
  if (kept.empty()) return;
  auto append = [](auto& to, auto& from) { std::move(from.begin(), from.end(), std::back_inserter(to)); };
  append(model_.wells, kept.wells);
  append(model_.partialWells, kept.partialWells);
  append(model_.theisWells, kept.theisWells);
  append(model_.lineSinks, kept.lineSinks);
  append(model_.ponds, kept.ponds);
  append(model_.inhomogeneities, kept.inhomogeneities);
  append(model_.walls, kept.walls);
  append(model_.lakes, kept.lakes);
  modelChanged_ = true;
}

// A well whose radius is not positive is skipped.
bool Runner::check(const Well& w) {
  if (w.radius > 0) return true;
  logs_.problem(w.line, "", "well " + w.label + " has a radius that is not positive; the well was skipped");
  return false;
}

// Partially penetrating wells: a radius that is not positive skips the well (as for
// plain wells); a screen whose top lies below its bottom is mended by swapping the two.
// A screen that reaches outside the saturated zone is clipped by the solve, which
// reports it.
bool Runner::check(PartialWell& w) {
  if (!(w.radius > 0)) {
    logs_.problem(w.line, "", "partially penetrating well " + w.label + ": radius " + number(w.radius) +
                                  " is not positive; the well was skipped");
    return false;
  }
  if (w.top < w.bottom) {
    logs_.problem(w.line, "", "partially penetrating well " + w.label + ": the top of the screen " + number(w.top) +
                                  " lies below its bottom " + number(w.bottom) + "; the two were swapped");
    std::swap(w.top, w.bottom);
  }
  return true;
}

// Transient wells: a schedule line whose storage coefficient or radius is not positive
// is skipped. A line that starts after the time of evaluation is no error (a cyclic
// schedule lists every switch); the solve counts such lines in the message log.
bool Runner::check(const TheisWell& w) {
  std::string why;
  if (!(w.storage > 0)) why = "storage coefficient " + number(w.storage) + " is not positive";
  else if (!(w.radius > 0)) why = "radius " + number(w.radius) + " is not positive";
  if (!why.empty()) {
    logs_.problem(w.line, "", "transient well " + w.label + ": " + why + "; the schedule line was skipped");
    return false;
  }
  if (w.storage > 1)
    logs_.problem(w.line, "", "transient well " + w.label + ": storage coefficient " + number(w.storage) +
                                  " is above 1; it is used as given");
  return true;
}

// A lake of fewer than three vertices is reported (the solve leaves it out); its stage
// table is read.
bool Runner::check(Lake& l) {
  readLakeTable(l);
  return true;
}

// A line-sink string: the string is named after its first segment; a stream with a
// " Lake" or " Levels" line becomes a lake edge; a stream's outlet rating table is read.
bool Runner::check(LineSinkString& ls) {
  if (ls.segments.empty()) return false;
  if (ls.kind == LineSinkKind::Stream && (ls.lakeName || ls.levels)) {
    // A lake edge: the end inflow of a routed string is here the lake's evaporation
    // less its precipitation; the name after " Lake" is not used (it groups nothing).
    ls.lake.on = true;
    ls.lake.netEvaporation = ls.endInflow;
    ls.endInflow = 0.0;
    ls.outletTable.clear();
    ls.inlet = false;
    if (ls.levels) {
      ls.lake.bottom = (*ls.levels)[0];
      ls.lake.estimate = (*ls.levels)[1];
    } else {
      ls.lake.estimate = ls.segments.front().value;
    }
  }
  ls.label = stringLabelOf(ls.segments.front().label);
  readOutletRating(ls);
  return true;
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
