// Lake edges: the secant iteration on the stages of lakes drawn by their shores. See
// engine/lake_edge.h for the formulation.
#include "engine/lake_edge.h"

#include "engine/area.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tarno::engine {

namespace {

std::string num(double v) {
  char b[40];
  std::snprintf(b, sizeof b, "%.6E", v);
  return b;
}

// The shore: the string's vertices, closing implicitly (a last vertex on the first is
// dropped).
std::vector<detail::Pt> shoreOf(const LineSinkString& ls) {
  std::vector<detail::Pt> p;
  for (const Segment& g : ls.segments) p.push_back({g.x1, g.y1});
  if (!ls.segments.empty()) {
    const Segment& last = ls.segments.back();
    const Segment& first = ls.segments.front();
    const double size = std::hypot(last.x2 - first.x1, last.y2 - first.y1);
    if (size > 1e-9 * (1.0 + std::fabs(first.x1) + std::fabs(first.y1))) p.push_back({last.x2, last.y2});
  }
  return p;
}

double areaOf(const std::vector<detail::Pt>& p) {
  return p.size() < 3 ? 0.0 : std::fabs(detail::signedArea(p));
}

double distanceToShore(const std::vector<detail::Pt>& p, double x, double y) {
  double best = std::numeric_limits<double>::infinity();
  for (size_t i = 0, n = p.size(); i < n; ++i) {
    const detail::Pt& a = p[i];
    const detail::Pt& b = p[(i + 1) % n];
    const double dx = b.x - a.x, dy = b.y - a.y, L2 = dx * dx + dy * dy;
    const double t = L2 > 0 ? std::clamp(((x - a.x) * dx + (y - a.y) * dy) / L2, 0.0, 1.0) : 0.0;
    best = std::min(best, std::hypot(a.x + t * dx - x, a.y + t * dy - y));
  }
  return best;
}

// In the lake or on its shore (within a thousandth of the lake's size).
bool inLake(const std::vector<detail::Pt>& p, double x, double y) {
  if (p.size() >= 3 && detail::insidePolygon(p, x, y)) return true;
  double size = std::sqrt(areaOf(p));
  if (!(size > 0)) {
    // A shore of two vertices (an open edge): its length gives the scale.
    for (size_t i = 1; i < p.size(); ++i) size = std::max(size, std::hypot(p[i].x - p[0].x, p[i].y - p[0].y));
  }
  return distanceToShore(p, x, y) <= 1e-3 * size;
}

struct EdgeLake {
  int string = 0;  // index in the model's line-sinks
  std::vector<detail::Pt> shore;
  double area = 0.0;
  std::vector<int> inlets, outlets;  // indices of linked routed strings
  // The iteration: the present stage and the last two evaluations.
  double stage = 0.0;
  bool havePrev = false;
  double prevStage = 0.0, prevResidual = 0.0;
  double second = 0.0;  // the second estimate, used by the first step
  bool dry = false;
  bool converged = false;
};

// The engine's copy: the lake edges as head-specified strings at their stages (drains at
// the bottom when dry), the linked strings ending at or starting from the lakes.
Model prepared(const Model& model, const std::vector<EdgeLake>& lakes) {
  Model m = model;
  for (const EdgeLake& e : lakes) {
    LineSinkString& ls = m.lineSinks[e.string];
    ls.kind = e.dry ? LineSinkKind::Drain : LineSinkKind::Head;
    ls.lake.stage = e.dry ? ls.lake.bottom : e.stage;
    ls.lake.dry = e.dry;
    ls.lake.solved = true;
    ls.lake.inlets.clear();
    ls.lake.outlets.clear();
    for (Segment& g : ls.segments) g.value = ls.lake.stage;
    for (int i : e.inlets) {
      LineSinkString& in = m.lineSinks[i];
      in.end = true;
      in.inlet = false;
      ls.lake.inlets.push_back(in.label);
    }
    for (int i : e.outlets) {
      LineSinkString& out = m.lineSinks[i];
      out.endInflow = e.dry ? 0.0 : ratingFlow(out.outletRating, e.stage);
      out.outletTable.clear();
      ls.lake.outlets.push_back(out.label);
    }
  }
  return m;
}

struct EdgeBalance {
  double groundwater = 0.0;  // > 0 into the lake
  double inflow = 0.0, outflow = 0.0, evaporation = 0.0;
  double Residual() const { return groundwater + inflow - outflow - evaporation; }
  double Largest() const {
    return std::max({std::fabs(groundwater), inflow, outflow, std::fabs(evaporation)});
  }
};

// The stream flow at the end of a routed string in a solution.
double endFlow(const std::vector<SegmentResult>& segs, const std::string& string) {
  double q = 0.0;
  for (const SegmentResult& r : segs)
    if (r.stringLabel == string) q = r.baseFlow + r.overlandFlow;  // the last one stays
  return q;
}

EdgeBalance balanceOf(const Solution& s, const std::vector<SegmentResult>& segs, const LineSinkString& ls,
                      double area) {
  EdgeBalance b;
  for (const SegmentResult& r : segs)
    if (r.stringLabel == ls.label) b.groundwater += r.discharge;
  for (const std::string& n : ls.lake.inlets) b.inflow += endFlow(segs, n);
  for (const LineSinkString& o : s.model().lineSinks)
    for (const std::string& n : ls.lake.outlets)
      if (o.label == n) b.outflow += o.endInflow;
  b.evaporation = ls.lake.netEvaporation * area;
  return b;
}

constexpr double kEdgeClosure = 1e-7;
constexpr int kEdgeSolves = 60;

}  // namespace

bool hasLakeEdges(const Model& model) {
  return std::any_of(model.lineSinks.begin(), model.lineSinks.end(),
                     [](const LineSinkString& ls) { return ls.lake.on && !ls.segments.empty(); });
}

LakeSolveReport solveWithLakeEdges(const Model& model, std::optional<Solution>& solution,
                                   const SolveOptions& options, const LineSink& log,
                                   const std::function<void(Solution&)>& attach) {
  if (!hasLakeEdges(model)) return solveWithLakes(model, solution, options, log, attach);
  std::vector<EdgeLake> lakes;
  for (int i = 0; i < (int)model.lineSinks.size(); ++i) {
    const LineSinkString& ls = model.lineSinks[i];
    if (!ls.lake.on || ls.segments.empty()) continue;
    EdgeLake e;
    e.string = i;
    e.shore = shoreOf(ls);
    e.area = areaOf(e.shore);
    // The first estimate: the stage of the present solution, else the segments' head.
    e.stage = ls.lake.solved && !ls.lake.dry ? ls.lake.stage : ls.segments.front().value;
    e.second = ls.lake.estimate;
    if (std::fabs(e.second - e.stage) < 1e-6 * (1.0 + std::fabs(e.stage)))
      e.second = e.stage + std::max(0.1, 1e-3 * std::fabs(e.stage));
    lakes.push_back(std::move(e));
  }
  // Links: routed strings (not lake edges) that end in a lake flow into it; those that
  // start in one with an outlet rating flow out of it. A string links to the first lake
  // that holds its end.
  for (int j = 0; j < (int)model.lineSinks.size(); ++j) {
    const LineSinkString& ls = model.lineSinks[j];
    if (ls.kind != LineSinkKind::Stream || ls.lake.on || ls.segments.empty()) continue;
    const Segment& last = ls.segments.back();
    const Segment& first = ls.segments.front();
    for (EdgeLake& e : lakes)
      if (inLake(e.shore, last.x2, last.y2)) {
        e.inlets.push_back(j);
        break;
      }
    if (!ls.outletRating.empty())
      for (EdgeLake& e : lakes)
        if (inLake(e.shore, first.x1, first.y1)) {
          e.outlets.push_back(j);
          break;
        }
  }
  for (const EdgeLake& e : lakes)
    if (!(e.area > 0) && log)
      log("Lake edge " + model.lineSinks[e.string].label +
          ": its vertices enclose no area; evaporation and precipitation act on none");

  LakeSolveReport rep;
  std::vector<std::string> lines;
  const int maxIter = std::max(kEdgeSolves, options.outerIterations);
  bool settled = false;
  for (int it = 1; it <= maxIter; ++it) {
    lines.clear();
    const LakeSolveReport inner = solveWithLakes(prepared(model, lakes), solution, options,
                                                 [&](const std::string& l) { lines.push_back(l); }, {});
    rep.last = inner.last;
    rep.lakeIterations += inner.lakeIterations;
    if (!inner.converged) rep.converged = false;
    const std::vector<SegmentResult> segs = solution->segmentResults();
    double worst = 0.0;
    std::string worstLake;
    bool changed = false;
    for (EdgeLake& e : lakes) {
      const LineSinkString& ls = solution->model().lineSinks[e.string];
      const EdgeBalance b = balanceOf(*solution, segs, ls, e.area);
      const double r = b.Residual();
      const double big = b.Largest();
      const double err = e.dry ? 0.0 : (big > 0 ? std::fabs(r) / big : 0.0);
      if (err > worst || worstLake.empty()) {
        worst = std::max(worst, err);
        worstLake = ls.label;
      }
      e.converged = e.dry || err <= kEdgeClosure;
      if (e.converged) continue;
      // The next stage by the secant through the last two evaluations; the first step
      // goes to the second estimate.
      double next;
      if (!e.havePrev) {
        next = e.second;
      } else {
        const double slope = (r - e.prevResidual) / (e.stage - e.prevStage);
        if (std::isfinite(slope) && slope < 0)
          next = e.stage - r / slope;
        else  // more inflow than outflow raises the stage
          next = e.stage + (r > 0 ? 1.0 : -1.0) * std::max(std::fabs(e.stage - e.prevStage), 1e-3);
      }
      if (next < ls.lake.bottom) {
        if (e.stage <= ls.lake.bottom && r < 0) {
          // Held at its bottom the lake still loses more than it gets: it is dry.
          e.dry = true;
          e.converged = true;
          changed = true;
          continue;
        }
        next = ls.lake.bottom;
      }
      if (next != e.stage) {
        e.prevStage = e.stage;
        e.prevResidual = r;
        e.havePrev = true;
        e.stage = next;
        changed = true;
      }
    }
    if (log)
      log("Lake edge iteration " + std::to_string(it) + ": largest balance error " + num(worst) +
          " of the largest term (lake " + worstLake + ")");
    if (!changed) {
      settled = std::all_of(lakes.begin(), lakes.end(), [](const EdgeLake& e) { return e.converged; });
      break;
    }
  }
  if (!settled) rep.converged = false;
  if (log) {
    for (const std::string& l : lines) log(l);
  }
  if (attach) attach(*solution);
  return rep;
}

std::vector<LakeResult> lakeEdgeResults(const Solution& solution) {
  std::vector<LakeResult> out;
  if (!solution.solved()) return out;
  std::vector<SegmentResult> segs;
  for (const LineSinkString& ls : solution.model().lineSinks) {
    if (!ls.lake.on || !ls.lake.solved || ls.segments.empty()) continue;
    if (segs.empty()) segs = solution.segmentResults();
    const std::vector<detail::Pt> shore = shoreOf(ls);
    LakeResult r;
    r.label = ls.label;
    r.firstLabel = ls.segments.front().label;
    r.lastLabel = ls.segments.back().label;
    r.polygonArea = areaOf(shore);
    r.dry = ls.lake.dry;
    r.surfaceArea = r.dry ? 0.0 : r.polygonArea;
    r.stage = r.dry ? kDryHead : ls.lake.stage;
    if (shore.size() >= 3) {
      std::vector<Vertex> vs;
      for (const auto& p : shore) vs.push_back(Vertex{p.x, p.y, ""});
      const auto [px, py] = lakeHeadPoint(vs);
      r.aquiferHead = solution.head(px, py);
    } else {
      r.aquiferHead = solution.head(ls.segments.front().x1, ls.segments.front().y1);
    }
    const EdgeBalance b = balanceOf(solution, segs, ls, r.polygonArea);
    if (b.groundwater > 0)
      r.groundwaterIn = b.groundwater;
    else
      r.groundwaterOut = -b.groundwater;
    r.streamIn = b.inflow;
    r.streamOut = b.outflow;
    if (b.evaporation >= 0)
      r.evaporation = b.evaporation;
    else
      r.precipitation = -b.evaporation;
    if (r.dry) {
      // A dry lake: evaporation takes what reaches the bed, and no more.
      r.precipitation = 0.0;
      r.evaporation = std::max(0.0, r.groundwaterIn + r.streamIn - r.groundwaterOut - r.streamOut);
    }
    r.totalIn = r.precipitation + r.groundwaterIn + r.overlandIn + r.streamIn;
    r.totalOut = r.evaporation + r.groundwaterOut + r.overlandOut + r.streamOut;
    r.error = r.totalIn - r.totalOut;
    const double big = std::max(r.totalIn, r.totalOut);
    r.errorPercent = big > 0 ? 100.0 * std::fabs(r.error) / big : 0.0;
    out.push_back(std::move(r));
  }
  return out;
}

std::pair<double, double> nearestLakeEdgeStage(const Solution& solution, double x, double y) {
  double best = std::numeric_limits<double>::infinity();
  double stage = std::numeric_limits<double>::quiet_NaN();
  if (!solution.solved()) return {stage, best};
  for (const LineSinkString& ls : solution.model().lineSinks) {
    if (!ls.lake.on || !ls.lake.solved || ls.segments.empty()) continue;
    const double d = distanceToShore(shoreOf(ls), x, y);
    if (d < best) {
      best = d;
      stage = ls.lake.dry ? kDryHead : ls.lake.stage;
    }
  }
  return {stage, best};
}

}  // namespace tarno::engine
