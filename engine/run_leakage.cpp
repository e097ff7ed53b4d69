// Step handlers of leakage to the model below: the leakage menu, the cell grid and
// files, the update of the rates after each solve and the checks.
#include "engine/run_steps.h"

namespace tarno::engine::running {

void Runner::leakProblems(int line, const std::vector<LeakageFileProblem>& ps) {
  for (const auto& p : ps)
    logs_.problem(line, "", "leakage: " + p.file + (p.line > 0 ? " line " + std::to_string(p.line) : "") + ": " +
                                p.message);
}

// The grid of <base>.del, placed at the leakage origin (or the corner in the file).
std::optional<LeakageGrid> Runner::loadLeakageGrid(int line) {
  const std::string name = leakBase() + ".del";
  std::vector<LeakageFileProblem> ps;
  LeakageGrid g;
  auto p = findFileNoCase(workDir_, name);
  const bool ok = readLeakageGrid(p ? *p : workDir_ / name, g, ps);
  leakProblems(line, ps);
  if (!ok) return std::nullopt;
  // The origin of the command file, or of the loaded solution (the inspection's
  // command file gives none).
  if (model_.leakageOriginGiven) {
    g.x0 = model_.leakageX0;
    g.y0 = model_.leakageY0;
  } else if (g.cornerInFile) {
    g.x0 = g.fileX;
    g.y0 = g.fileY;
  } else {
    logs_.problem(line, "", "leakage: no \"origin\" given and none in " + name + "; the grid's corner is put at 0 0");
  }
  return g;
}

bool Runner::loadCellFile(int line, const LeakageGrid& g, const std::string& ext, std::vector<double>& values) {
  const std::string name = leakBase() + ext;
  std::vector<LeakageFileProblem> ps;
  auto p = findFileNoCase(workDir_, name);
  const bool ok = readCellValues(p ? *p : workDir_ / name, g, values, ps);
  leakProblems(line, ps);
  return ok;
}

// Resistances and heads below (and the sub-grid when its switch is on).
std::optional<LeakageExchange> Runner::loadExchange(int line, const LeakageGrid& g) {
  LeakageExchange ex;
  if (!loadCellFile(line, g, ".rla", ex.resistance) || !loadCellFile(line, g, ".lhd", ex.lowerHead))
    return std::nullopt;
  const bool average = leakSolve_ && (*leakSolve_)[1] != 0;
  const bool subgrid = average && (*leakSolve_)[3] != 0;
  ex.addAquiferResistance = leakSolve_ && (*leakSolve_)[2] != 0;
  ex.defaultPoints = average ? 3 : 1;
  if (subgrid) {
    std::vector<double> res;
    if (loadCellFile(line, g, ".grs", res))
      for (double r : res) ex.resolution.push_back(std::clamp((int)std::lround(r), 1, 100));
  }
  return ex;
}

void Runner::apply(int line, const LeakageInput& l) {
  if (l.origin) {
    // Not a change of the model: the origin places the grid when its files are read.
    model_.leakageOriginGiven = true;
    model_.leakageX0 = (*l.origin)[0];
    model_.leakageY0 = (*l.origin)[1];
    logs_.message("Leakage grid origin: " + number((*l.origin)[0]) + " " + number((*l.origin)[1]));
  }
  if (l.solve) {
    leakSolve_ = l.solve;
    leakLine_ = line;
    const auto& v = *l.solve;
    if (v[0] == 0) {
      if (!model_.leakage.empty()) modelChanged_ = true;
      model_.leakage.clear();
      leakUpdatePending_ = false;
      logs_.message("Leakage to the model below: not included");
    } else if (auto g = loadLeakageGrid(line)) {
      if (loadCellFile(line, *g, ".vlk", g->leakage)) {
        model_.leakage = g->cells();
        modelChanged_ = true;
        leakUpdatePending_ = true;
        double total = 0.0;
        for (const auto& c : model_.leakage) total += c.rate * (c.x2 - c.x1) * (c.y2 - c.y1);
        logs_.message("Leakage to the model below: " + std::to_string(g->rows) + " x " + std::to_string(g->cols) +
                      " cells, " + std::to_string(model_.leakage.size()) + " with a rate, total " + number(total) +
                      "; relaxation " + number(v[4]));
      } else {
        logs_.problem(line, "", "leakage: without the cells' rates the leakage is left out of the solution");
      }
    }
  }
  for (const auto& c : l.checks) checkLeakageAt(line, c);
}

// After a solve: the leakage from the heads, relaxed, written for the model below.
void Runner::updateLeakage() {
  if (!leakUpdatePending_ || !solution_ || !solution_->solved()) return;
  leakUpdatePending_ = false;
  const int line = leakLine_;
  auto g = loadLeakageGrid(line);
  if (!g || !loadCellFile(line, *g, ".vlk", g->leakage)) return;
  auto ex = loadExchange(line, *g);
  if (!ex) {
    logs_.problem(line, "", "leakage: without resistances and heads below the leakage was not updated");
    return;
  }
  const double relax = (*leakSolve_)[4];
  std::vector<double> next(g->leakage.size()), error(g->leakage.size());
  double used = 0.0, computed = 0.0, written = 0.0;
  for (int r = 0; r < g->rows; ++r)
    for (int c = 0; c < g->cols; ++c) {
      const int i = g->index(r, c);
      const int n = ex->resolution.empty() ? ex->defaultPoints : ex->resolution[i];
      const double q = cellLeakageFromHeads(*g, *ex, *solution_, r, c, n);
      const auto box = g->cell(r, c);
      const double area = (box[2] - box[0]) * (box[3] - box[1]);
      error[i] = q - g->leakage[i];
      next[i] = g->leakage[i] + relax * error[i];
      used += g->leakage[i] * area;
      computed += q * area;
      written += next[i] * area;
    }
  for (const auto& [ext, values] : {std::pair<const char*, const std::vector<double>*>{".vlk", &next}, {".vle", &error}}) {
    const fs::path p = prepareOutputFile(workDir_, leakBase() + ext);
    if (writeCellValues(p, *g, *values)) logs_.wrote(ext == std::string(".vlk") ? "leakage" : "leakage error", p);
    else logs_.problem(line, "", "leakage: " + p.filename().string() + " could not be written");
  }
  logs_.message("Leakage to the model below: used " + number(used) + ", computed from the heads " + number(computed) +
                ", written " + number(written) + " (relaxation " + number(relax) + ")");
}

void Runner::checkLeakageAt(int line, const std::array<double, 5>& c) {
  if (!solution_ || !solution_->solved()) {
    logs_.problem(line, "", "leakage \"check\" before any solve or load: there are no heads; line skipped");
    return;
  }
  auto g = loadLeakageGrid(line);
  if (!g) return;
  // The rates the solution used, cell by cell (the .vlk file may hold newer ones).
  g->leakage.assign((size_t)g->rows * g->cols, 0.0);
  for (const auto& cell : solution_->model().leakage) {
    const double x = 0.5 * (cell.x1 + cell.x2) - g->x0, yTop = g->y0 + g->height() - 0.5 * (cell.y1 + cell.y2);
    int col = 0, row = 0;
    for (double acc = g->colSize[0]; col + 1 < g->cols && x > acc; acc += g->colSize[++col]) {}
    for (double acc = g->rowSize[0]; row + 1 < g->rows && yTop > acc; acc += g->rowSize[++row]) {}
    g->leakage[g->index(row, col)] = cell.rate;
  }
  auto ex = loadExchange(line, *g);
  const int n = std::max(1, (int)std::lround(c[4]));
  const LeakageCheckResult r = checkLeakage(*g, ex ? &*ex : nullptr, *solution_, c[0], c[1], c[2], c[3], n);
  leakCheck_ = r;
  logs_.message("Leakage check over " + number(c[0]) + " " + number(c[1]) + " " + number(c[2]) + " " + number(c[3]) +
                ": " + std::to_string(r.cells) + " cells, " + std::to_string(n) + " x " + std::to_string(n) +
                " points in each");
  logs_.message("  Total leakage in selected cells: " + number(r.total));
  if (r.integratedKnown) {
    logs_.message("  Total integrated leakage (upper head - lower head)/resistance: " + number(r.integrated));
    logs_.message("  Water balance error in subgrid: " + number(100.0 * r.error()) + "%");
  } else {
    logs_.problem(line, "", "leakage \"check\": without resistances and heads below only the total of the rates is known");
  }
}

}  // namespace tarno::engine::running
