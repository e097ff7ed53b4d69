// File writers of the run: the output report (.OUT), the extract file (.XTR), the
// grids (.GRD and kept .KGR) and the pathline file (.PTH).
#include "engine/run_steps.h"

namespace tarno::engine::running {

// <name>.OUT, the report of the run for a person to read, after a run that solved.
// A run that only loads a solution (a regrid, an inspection) leaves the report of
// the solve in place.
void Runner::writeOutputReport() {
  if (!lastSolve_ || !solution_ || !solution_->solved()) return;
  const std::string name = baseName_.empty() ? commandFile_.stem().string() : baseName_;
  fs::path p = prepareOutputFile(workDir_, name + ".OUT");
  RunReportHeader header;
  header.title = model_.title;
  header.baseName = name;
  header.commandFile = commandFile_.filename().string();
  header.started = started_;
  header.time = model_.time;
  std::ostringstream text;
  LakeSolutionSource source(*solution_);
  writeRunReport(text, header, solution_->model(), *lastSolve_, source);
  // The lakes' balances (engine/lake.h), in the words of the message log.
  const std::vector<LakeResult> lakes = lakeResults(*solution_);
  if (!lakes.empty()) {
    text << "\nLakes\n=====\n";
    for (const std::string& l : formatLakeBalance(lakes)) text << l << '\n';
  }
  if (writeText(p, text.str())) logs_.wrote("output report", p);
  else logs_.problem(0, "", "the output report " + p.filename().string() + " could not be written");
}

void Runner::apply(int line, const ExtractInput& x) {
  std::string name = x.file;
  if (name.empty()) {
    name = baseName_.empty() ? commandFile_.stem().string() : baseName_;
    logs_.problem(line, "", "the extract menu names no file; the results go to " + withDefaultExtension(name, ".XTR"));
  }
  fs::path p = prepareOutputFile(workDir_, withDefaultExtension(name, ".XTR"));
  if (!solution_) {
    logs_.problem(line, "", "\"extract\" before any solve or load: there are no results; " + p.filename().string() +
                                " was not written");
    return;
  }
  if (!solution_->solved()) {
    logs_.problem(line, "", "\"extract\" before the model was solved: there are no results; " +
                                p.filename().string() + " was not written");
    return;
  }
  if (modelChanged_)
    logs_.problem(line, "", "elements or aquifer data given after the last solve are not in the solution that " +
                                p.filename().string() + " reports");
  std::ostringstream text;
  int nonFinite = 0;
  RunSource source(*solution_, leakCheck_);
  writeExtract(text, x, source, &nonFinite);
  if (nonFinite > 0)
    logs_.problem(line, "", std::to_string(nonFinite) + " values of " + p.filename().string() +
                                " could not be computed (not finite) and were written as -9999");
  std::ofstream f(p, std::ios::binary | std::ios::trunc);
  f << text.str();
  f.close();
  if (!f) {
    logs_.problem(line, "", "the extract file " + p.filename().string() + " could not be written");
    return;
  }
  logs_.wrote("extract file", p);
}

std::string Runner::lowerName(const std::string& s) {
  std::string r;
  for (char c : s) r += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return r;
}

bool Runner::writeText(const fs::path& p, const std::string& text) {
  std::ofstream f(p, std::ios::binary | std::ios::trunc);
  f << text;
  f.close();
  return static_cast<bool>(f);
}

std::optional<Grid> Runner::computeGridFor(const GridAction& a) {
  const int line = a.line;
  if (!solution_ || !solution_->solved()) {
    logs_.problem(line, "", "grid \"go\" before the model was solved or loaded: no grid was computed");
    return std::nullopt;
  }
  const GridSettings& st = a.settings;
  int across = st.horizontalPoints;
  if (across < 2) {
    across = kDefaultGridPoints;
    logs_.problem(line, "", "the grid menu gives no \"horizontalpoints\"; " + std::to_string(across) +
                                " points across were used");
  }
  GridQuantity quantity = GridQuantity::Heads;
  if (auto q = gridQuantity(st.plot)) quantity = *q;
  std::optional<GridGeometry> geometry;
  const Window& layout = model_.window;
  if (st.window) {
    geometry = gridGeometry(st.window->x1, st.window->y1, st.window->x2, st.window->y2, across);
    if (!geometry) {
      geometry = layout.given ? gridGeometry(layout.x1, layout.y1, layout.x2, layout.y2, across) : std::nullopt;
      logs_.problem(line, "", "the grid window " + number(st.window->x1) + " " + number(st.window->y1) + " " +
                                  number(st.window->x2) + " " + number(st.window->y2) + " has no width or no height; " +
                                  (geometry ? "the layout window was used" : "no grid was computed"));
      if (!geometry) return std::nullopt;
    }
  } else if (layout.given) {
    geometry = gridGeometry(layout.x1, layout.y1, layout.x2, layout.y2, across);
    if (!geometry) {
      logs_.problem(line, "", "the grid has no window of its own and the layout window has no width or no height; "
                              "no grid was computed");
      return std::nullopt;
    }
  } else {
    logs_.problem(line, "", "the grid has no window and no layout window was given; no grid was computed");
    return std::nullopt;
  }
  if (static_cast<double>(geometry->nx) * geometry->ny > kMaxGridPoints) {
    const double shrink = std::sqrt(kMaxGridPoints / (static_cast<double>(geometry->nx) * geometry->ny));
    const int reduced = std::max(2, static_cast<int>(geometry->nx * shrink));
    logs_.problem(line, "", std::to_string(geometry->nx) + " x " + std::to_string(geometry->ny) +
                                " grid points are more than " + number(kMaxGridPoints) + "; " +
                                std::to_string(reduced) + " points across were used");
    geometry = gridGeometry(geometry->xlo, geometry->ylo, geometry->xhi, geometry->yhi, reduced);
    while (geometry && static_cast<double>(geometry->nx) * geometry->ny > kMaxGridPoints && geometry->nx > 2)
      geometry = gridGeometry(geometry->xlo, geometry->ylo, geometry->xhi, geometry->yhi, geometry->nx - 1);
    if (!geometry || static_cast<double>(geometry->nx) * geometry->ny > kMaxGridPoints) {
      logs_.problem(line, "", "the grid window is too narrow for a grid of bounded size; no grid was computed");
      return std::nullopt;
    }
  }
  if (modelChanged_)
    logs_.problem(line, "", "elements or aquifer data given after the last solve are not in the solution that the "
                            "grid shows");
  if (quantity == GridQuantity::Interface && !model_.aquifer.hasInterface)
    logs_.problem(line, "", "\"plot interface\": the aquifer has no salt water interface; every point of the grid "
                            "is blank");
  const auto t0 = std::chrono::steady_clock::now();
  Grid grid = computeGrid(*solution_, *geometry, quantity);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  std::string text = "Grid of " + std::string(gridQuantityName(quantity)) + ": " + std::to_string(geometry->nx) +
                     " x " + std::to_string(geometry->ny) + " points over " + number(geometry->xlo) + " " +
                     number(geometry->ylo) + " " + number(geometry->xhi) + " " + number(geometry->yhi) + " in " +
                     number(seconds) + " s";
  if (st.elevations)
    text += "; the elevations of evaluation (" + number((*st.elevations)[0]) + ", " + number((*st.elevations)[1]) +
            ") do not change these values";
  logs_.message(text);
  if (grid.nonFinite > 0)
    logs_.message("  " + std::to_string(grid.nonFinite) +
                  (quantity == GridQuantity::Stream
                       ? " points where no stream function exists (inside recharge polygons and ponds, well "
                         "centres) are blank"
                       : " points where no finite value exists (well centres) are blank"));
  if (quantity == GridQuantity::Stream) {
    int active = 0;
    for (const auto& w : solution_->theisWellResults()) active += w.activeLines > 0;
    if (active > 0)
      logs_.message("  the stream function leaves out the " + std::to_string(active) +
                    " transient wells pumping at this time: their water comes from storage, and no stream "
                    "function includes it");
  }
  return grid;
}

std::optional<Grid> Runner::findKeptGrid(const std::string& name, int line) {
  auto it = keptGrids_.find(lowerName(name));
  if (it != keptGrids_.end()) return it->second;
  auto p = findFileNoCase(workDir_, keptGridFile(name));
  if (!p) return std::nullopt;
  std::ifstream in(*p, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  try {
    return parseSurferGrid(text.str());
  } catch (const std::exception& e) {
    logs_.problem(line, "", "the kept grid " + p->filename().string() + " cannot be read (" + e.what() + ")");
    return std::nullopt;
  }
}

void Runner::apply(int line, const GridInput& g) {
  std::optional<Grid> grid;
  if (!g.go)
    logs_.problem(line, "", "the grid menu has no \"go\": no grid was computed");
  for (const GridAction& a : g.actions) {
    currentLine_ = a.line;
    switch (a.kind) {
      case GridAction::Kind::Go: grid = computeGridFor(a); break;
      case GridAction::Kind::Save: {
        if (!grid) {
          logs_.problem(a.line, "", "grid \"save " + a.name + "\": no grid has been computed to keep; line skipped");
          break;
        }
        keptGrids_[lowerName(a.name)] = *grid;
        fs::path p = prepareOutputFile(workDir_, keptGridFile(a.name));
        if (writeText(p, formatSurferGrid(*grid, 16))) logs_.wrote("kept grid", p);
        else logs_.problem(a.line, "", "the kept grid " + p.filename().string() + " could not be written; it is kept "
                                       "for this run only");
        break;
      }
      case GridAction::Kind::MinusGrid: {
        if (!grid) {
          logs_.problem(a.line, "", "\"minusgrid " + a.name + "\": no grid has been computed; line skipped");
          break;
        }
        std::optional<Grid> kept = findKeptGrid(a.name, a.line);
        if (!kept) {
          logs_.problem(a.line, "", "\"minusgrid\": no grid is kept under the name " + a.name + " (no " +
                                        keptGridFile(a.name) + "); the grid stays as it is");
          break;
        }
        std::string why;
        if (!subtractGrid(*grid, *kept, &why))
          logs_.problem(a.line, "", "\"minusgrid " + a.name + "\": " + why + "; the grid stays as it is");
        else
          logs_.message("Grid minus the kept grid " + a.name);
        break;
      }
      case GridAction::Kind::Surfer: {
        fs::path p = prepareOutputFile(workDir_, withDefaultExtension(a.name, ".GRD"));
        if (!grid) {
          logs_.problem(a.line, "", "\"surfer\": no grid has been computed; " + p.filename().string() +
                                        " was not written");
          break;
        }
        if (writeText(p, formatSurferGrid(*grid))) logs_.wrote("grid file", p);
        else logs_.problem(a.line, "", "the grid file " + p.filename().string() + " could not be written");
        break;
      }
    }
  }
}

// The box that stands in for the window when none was given: the elements and
// the particles, with a margin.
std::array<double, 4> Runner::traceBox(const std::vector<Particle>& particles) const {
  double x1 = 1e300, y1 = 1e300, x2 = -1e300, y2 = -1e300;
  auto add = [&](double x, double y) {
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    x1 = std::min(x1, x);
    x2 = std::max(x2, x);
    y1 = std::min(y1, y);
    y2 = std::max(y2, y);
  };
  for (const Particle& p : particles) add(p.x, p.y);
  for (const Well& w : model_.wells) add(w.x, w.y);
  for (const PartialWell& w : model_.partialWells) add(w.x, w.y);
  for (const TheisWell& w : model_.theisWells) add(w.x, w.y);
  for (const LineSinkString& s : model_.lineSinks)
    for (const Segment& g : s.segments) {
      add(g.x1, g.y1);
      add(g.x2, g.y2);
    }
  if (x1 > x2) return {-1000, -1000, 1000, 1000};
  const double margin = std::max({0.1 * (x2 - x1), 0.1 * (y2 - y1), 100.0});
  return {x1 - margin, y1 - margin, x2 + margin, y2 + margin};
}

void Runner::apply(int line, const TraceInput& tr) {
  if (!tr.go) {
    logs_.problem(line, "", "the trace menu has no \"go\": nothing was traced and no pathline file was written");
    return;
  }
  currentLine_ = tr.goLine;
  std::string name = tr.file;
  if (name.empty()) {
    name = baseName_.empty() ? commandFile_.stem().string() : baseName_;
    logs_.problem(line, "", "the trace menu names no file; the paths go to " + withDefaultExtension(name, ".PTH"));
  }
  fs::path p = prepareOutputFile(workDir_, withDefaultExtension(name, ".PTH"));
  if (!solution_ || !solution_->solved()) {
    logs_.problem(tr.goLine, "", "trace \"go\" before the model was solved or loaded: nothing was traced; " +
                                     p.filename().string() + " was not written");
    return;
  }
  std::vector<Particle> particles;
  for (size_t i = 0; i < tr.points.size(); ++i) {
    const TracePointInput& q = tr.points[i];
    if (particles.size() >= kMaxParticles) {
      logs_.problem(q.line, "", "trace: more than " + std::to_string(kMaxParticles) +
                                    " particles in one block; this and the later points were skipped");
      break;
    }
    particles.push_back(Particle{q.x, q.y, q.z, q.direction < 0 ? -1 : 1, "particle " + std::to_string(i + 1)});
  }
  for (const TraceWellInput& w : tr.wells) {
    if (particles.size() >= kMaxParticles) {
      logs_.problem(w.line, "", "trace: more than " + std::to_string(kMaxParticles) +
                                    " particles in one block; this and the later well lines were skipped");
      break;
    }
    std::string why;
    std::vector<Particle> more = wellParticles(*solution_, w.x, w.y, w.z, w.particles, &why);
    if (more.empty()) logs_.problem(w.line, "", "trace \"well\": " + why + "; no particles were started here");
    particles.insert(particles.end(), more.begin(), more.end());
  }
  TraceSettings st;
  const Window& win = model_.window;
  if (win.given && win.x1 != win.x2 && win.y1 != win.y2 && std::isfinite(win.x1 + win.x2 + win.y1 + win.y2)) {
    st.x1 = win.x1;
    st.y1 = win.y1;
    st.x2 = win.x2;
    st.y2 = win.y2;
  } else {
    auto b = traceBox(particles);
    st.x1 = b[0];
    st.y1 = b[1];
    st.x2 = b[2];
    st.y2 = b[3];
    logs_.message("Trace: no layout window with a width and a height; the paths end " +
                  std::string("outside the box of the elements and particles enlarged by half"));
  }
  const double defaultStep = 0.004 * std::hypot(st.x2 - st.x1, st.y2 - st.y1);
  st.step = defaultStep;
  if (tr.step && *tr.step > 0 && std::isfinite(*tr.step)) {
    st.step = *tr.step;
  } else if (tr.step) {
    logs_.problem(tr.stepLine, "", "the trace step " + number(*tr.step) + " is not positive; the step " +
                                       number(defaultStep) + " (0.004 of the window's diagonal) was used");
  } else {
    logs_.message("Trace: no step given; the step is " + number(defaultStep) + " (0.004 of the window's diagonal)");
  }
  if (tr.time && *tr.time > 0) {
    st.maxTime = *tr.time;
  } else if (tr.time) {
    logs_.problem(tr.timeLine, "", "the longest travel time " + number(*tr.time) +
                                       " is not positive; the paths were traced without a time limit");
  }
  // A model without particles is common (nothing to trace is asked for): the run
  // says so in the message log, not as a problem in the error log.
  if (particles.empty())
    logs_.message("Trace: there are no particles to trace; " + p.filename().string() + " holds no paths");
  if (modelChanged_)
    logs_.problem(tr.goLine, "", "elements or aquifer data given after the last solve are not in the solution that "
                                 "the paths follow");
  const auto t0 = std::chrono::steady_clock::now();
  std::vector<Path> paths = tracePaths(*solution_, particles, st);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  std::ostringstream text;
  writePathFile(text, paths);
  if (!writeText(p, text.str())) {
    logs_.problem(tr.goLine, "", "the pathline file " + p.filename().string() + " could not be written");
    return;
  }
  logs_.wrote("pathline file", p);
  std::map<PathEnd, int> ends;
  long steps = 0;
  for (const Path& path : paths) {
    ++ends[path.end];
    steps += path.steps;
  }
  logs_.message("Traced " + std::to_string(paths.size()) + " paths (" + std::to_string(steps) + " steps, step " +
                number(st.step) + ", longest time " + (std::isfinite(st.maxTime) ? number(st.maxTime) : "none") +
                ") in " + number(seconds) + " s");
  for (const auto& [end, count] : ends)
    logs_.message("  " + std::to_string(count) + " ended: " + pathEndName(end));
}

}  // namespace tarno::engine::running
