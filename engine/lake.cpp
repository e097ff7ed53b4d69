// Lakes: the stage table, the outer iteration that closes each lake's balance, and the
// results. The mathematics of the lake itself is that of an inhomogeneity with a uniform
// area sink (engine/area.cpp); see engine/lake.h for the formulation.
#include "engine/lake.h"

#include "engine/area.h"
#include "engine/lake_edge.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <limits>
#include <set>
#include <sstream>

namespace tarno::engine {

namespace {

std::string num(double v) {
  char b[40];
  std::snprintf(b, sizeof b, "%.6E", v);
  return b;
}

std::vector<detail::Pt> polygonOf(const std::vector<Vertex>& vs) {
  std::vector<detail::Pt> p;
  for (const Vertex& v : vs) p.push_back({v.x, v.y});
  return p;
}

bool usable(const Lake& l) {
  if (l.vertices.size() < 3) return false;
  for (const Vertex& v : l.vertices)
    if (!std::isfinite(v.x) || !std::isfinite(v.y)) return false;
  return std::fabs(detail::signedArea(polygonOf(l.vertices))) > 0.0;
}

double polygonArea(const Lake& l) { return std::fabs(detail::signedArea(polygonOf(l.vertices))); }

double surfaceOf(const Lake& l, double stage) {
  return l.table.empty() ? polygonArea(l) : stageArea(l.table, stage);
}

// A lake takes part in a solution when the engine accepted its polygon (it skips one
// whose edges cross another polygon's, and says so).
std::set<std::string> acceptedLabels(const Solution& s) {
  std::set<std::string> labels;
  for (const InhomogeneityResult& r : s.inhomogeneityResults()) labels.insert(r.label);
  return labels;
}

}  // namespace

namespace {

// Reads a table of numbers, `n` per line (commas, tabs and blanks separate them; blank
// lines and lines that begin with '!', '*' or '#' are skipped), with the first number
// (the stage) rising from line to line. `take` checks and keeps one line's numbers and
// returns false with the reason. False with the line named in `error` on the first bad
// line or when there is no line at all.
bool parseTable(const std::string& text, int n, const char* what, std::string& error,
                const std::function<bool(const std::vector<double>&, std::string&)>& take) {
  std::istringstream in(text);
  std::string line;
  int lineNo = 0;
  bool any = false;
  double lastStage = 0;
  while (std::getline(in, line)) {
    ++lineNo;
    for (char& c : line)
      if (c == ',' || c == '\t' || c == '\r') c = ' ';
    const size_t first = line.find_first_not_of(' ');
    if (first == std::string::npos || line[first] == '!' || line[first] == '*' ||
        line[first] == '#')
      continue;
    std::istringstream ls(line);
    std::vector<double> v(static_cast<size_t>(n));
    bool ok = true;
    for (double& x : v) ok = ok && static_cast<bool>(ls >> x);
    std::string extra;
    if (!ok || (ls >> extra)) {
      error = "line " + std::to_string(lineNo) + " is not " + what;
      return false;
    }
    std::string why;
    if (!take(v, why)) {
      error = "line " + std::to_string(lineNo) + " holds " + why;
      return false;
    }
    if (any && !(v[0] > lastStage)) {
      error = "line " + std::to_string(lineNo) + ": the stages do not rise";
      return false;
    }
    lastStage = v[0];
    any = true;
  }
  if (!any) {
    error = "it holds no rows";
    return false;
  }
  return true;
}

}  // namespace

bool parseStageTable(const std::string& text, std::vector<StageRow>& rows, std::string& error) {
  rows.clear();
  return parseTable(text, 3, "three numbers (stage, area, volume)", error,
                    [&](const std::vector<double>& v, std::string& why) {
                      const StageRow r{v[0], v[1], v[2]};
                      if (!std::isfinite(r.stage) || !std::isfinite(r.area) ||
                          !std::isfinite(r.volume) || r.area < 0 || r.volume < 0) {
                        why = "a negative or not finite area or volume";
                        return false;
                      }
                      rows.push_back(r);
                      return true;
                    });
}

bool parseRatingTable(const std::string& text, std::vector<std::pair<double, double>>& rows,
                      std::string& error) {
  rows.clear();
  return parseTable(text, 2, "two numbers (stage, discharge)", error,
                    [&](const std::vector<double>& v, std::string& why) {
                      if (!std::isfinite(v[0]) || !std::isfinite(v[1]) || v[1] < 0) {
                        why = "a negative or not finite discharge";
                        return false;
                      }
                      rows.emplace_back(v[0], v[1]);
                      return true;
                    });
}

bool readRatingTable(const std::filesystem::path& path,
                     std::vector<std::pair<double, double>>& rows, std::string& error) {
  std::ifstream f(path, std::ios::binary);
  if (!f) {
    error = "it cannot be opened";
    return false;
  }
  std::ostringstream text;
  text << f.rdbuf();
  return parseRatingTable(text.str(), rows, error);
}

bool readStageTable(const std::filesystem::path& path, std::vector<StageRow>& rows,
                    std::string& error) {
  std::ifstream f(path, std::ios::binary);
  if (!f) {
    error = "it cannot be opened";
    return false;
  }
  std::ostringstream text;
  text << f.rdbuf();
  return parseStageTable(text.str(), rows, error);
}

double stageArea(const std::vector<StageRow>& t, double s) {
  if (t.empty() || !(s >= t.front().stage)) return 0.0;
  if (s >= t.back().stage) return t.back().area;
  const auto it = std::upper_bound(t.begin(), t.end(), s,
                                   [](double v, const StageRow& r) { return v < r.stage; });
  const StageRow& b = *it;
  const StageRow& a = *(it - 1);
  return a.area + (b.area - a.area) * (s - a.stage) / (b.stage - a.stage);
}

double stageVolume(const std::vector<StageRow>& t, double s) {
  if (t.empty() || !(s >= t.front().stage)) return 0.0;
  if (s >= t.back().stage) return t.back().volume + t.back().area * (s - t.back().stage);
  const auto it = std::upper_bound(t.begin(), t.end(), s,
                                   [](double v, const StageRow& r) { return v < r.stage; });
  const StageRow& b = *it;
  const StageRow& a = *(it - 1);
  return a.volume + (b.volume - a.volume) * (s - a.stage) / (b.stage - a.stage);
}

Model withLakeElements(const Model& model) {
  Model m = model;
  // A loaded solution's model holds the lakes' inhomogeneities already: they are rebuilt.
  std::erase_if(m.inhomogeneities, [&](const Inhomogeneity& in) {
    return std::any_of(model.lakes.begin(), model.lakes.end(),
                       [&](const Lake& l) { return l.label == in.label; });
  });
  for (const Lake& l : model.lakes) {
    if (!usable(l)) continue;
    Inhomogeneity in;
    in.conductivity = l.conductivity;
    in.extraction = l.extraction;
    in.label = l.label;
    in.vertices = l.vertices;
    in.line = l.line;
    m.inhomogeneities.push_back(std::move(in));
    // Linked strings: an inlet ends in the lake (its flow goes no further down the
    // network), an outlet starts with the lake's outflow as its end inflow. The flags are
    // cleared in the engine's copy: the lake handles them.
    for (const Lake::Link& k : l.links)
      for (LineSinkString& ls : m.lineSinks) {
        if (ls.kind != LineSinkKind::Stream || ls.label != k.string) continue;
        if (k.inlet) {
          ls.inlet = false;
          ls.end = true;
        } else {
          ls.outletTable.clear();
          ls.endInflow = k.flow;
        }
      }
  }
  return m;
}

std::pair<double, double> lakeHeadPoint(const std::vector<Vertex>& vs) {
  const std::vector<detail::Pt> p = polygonOf(vs);
  double a = 0, cx = 0, cy = 0;
  for (size_t i = 0, n = p.size(); i < n; ++i) {
    const detail::Pt& u = p[i];
    const detail::Pt& v = p[(i + 1) % n];
    const double c = u.x * v.y - v.x * u.y;
    a += c;
    cx += (u.x + v.x) * c;
    cy += (u.y + v.y) * c;
  }
  if (a != 0.0) {
    cx /= 3.0 * a;
    cy /= 3.0 * a;
    if (detail::insidePolygon(p, cx, cy)) return {cx, cy};
  }
  // A polygon whose centroid lies outside it (a crescent): the inside grid point
  // nearest the centroid.
  double xmin = 1e300, xmax = -1e300, ymin = 1e300, ymax = -1e300;
  for (const auto& q : p) {
    xmin = std::min(xmin, q.x);
    xmax = std::max(xmax, q.x);
    ymin = std::min(ymin, q.y);
    ymax = std::max(ymax, q.y);
  }
  double best = 1e300, bx = p.front().x, by = p.front().y;
  const int n = 64;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const double x = xmin + (xmax - xmin) * (i + 0.5) / n,
                   y = ymin + (ymax - ymin) * (j + 0.5) / n;
      if (!detail::insidePolygon(p, x, y)) continue;
      const double d = std::hypot(x - cx, y - cy);
      if (d < best) {
        best = d;
        bx = x;
        by = y;
      }
    }
  return {bx, by};
}

namespace {}  // namespace

double ratingFlow(const std::vector<std::pair<double, double>>& r, double s) {
  if (r.empty() || !(s >= r.front().first)) return 0.0;
  if (r.size() == 1) return r.front().second;
  size_t i = 1;
  while (i + 1 < r.size() && s > r[i].first) ++i;
  const auto& [s0, q0] = r[i - 1];
  const auto& [s1, q1] = r[i];
  return std::max(0.0, q0 + (q1 - q0) * (s - s0) / (s1 - s0));
}

namespace {

double inflowOf(const Lake& l) {
  double q = 0.0;
  for (const Lake::Link& k : l.links)
    if (k.inlet) q += k.flow;
  return q;
}

double outflowAt(const Lake& l, double s) {
  double q = 0.0;
  for (const Lake::Link& k : l.links)
    if (!k.inlet) q += ratingFlow(k.rating, s);
  return q;
}

double outflowUsed(const Lake& l) {
  double q = 0.0;
  for (const Lake::Link& k : l.links)
    if (!k.inlet) q += k.flow;
  return q;
}

// The exchange a lake of stage s needs to close its balance, per area of polygon, with
// the inflow of its inlets from the last solve and the outflow its outlets' ratings give.
double neededExtraction(const Lake& l, double s) {
  return ((l.evaporation - l.precipitation) * surfaceOf(l, s) - inflowOf(l) + outflowAt(l, s)) /
         polygonArea(l);
}

// The stage s that meets s = h + g (N(s) - N0) - N(s) c, with h the head under the lake
// from the last solve with exchange N0 and g the head's response to the exchange
// (estimated from the solves). N(s) is piecewise linear in s (between the rows of the
// stage table and of the outlets' ratings, and beyond them), so the root is found piece
// by piece.
double nextStage(const Lake& l, double h, double N0, double g) {
  const double c = l.resistance;
  auto f = [&](double s) {
    return s - h - g * (neededExtraction(l, s) - N0) + neededExtraction(l, s) * c;
  };
  std::vector<double> knots;
  for (const StageRow& r : l.table) knots.push_back(r.stage);
  for (const Lake::Link& k : l.links)
    for (const auto& r : k.rating) knots.push_back(r.first);
  std::sort(knots.begin(), knots.end());
  knots.erase(std::unique(knots.begin(), knots.end()), knots.end());
  const double big =
      1e6 * (1.0 + std::fabs(h) + (knots.empty() ? 0.0 : std::fabs(knots.back() - knots.front())));
  std::vector<double> pts;
  pts.push_back((knots.empty() ? h : knots.front()) - big);
  for (double k : knots) pts.push_back(k);
  pts.push_back((knots.empty() ? h : knots.back()) + big);
  // Roots of the linear pieces; the one nearest h (several exist only where the balance
  // has several states, e.g. rain on a lake whose area grows fast with its stage).
  double best = std::numeric_limits<double>::quiet_NaN();
  for (size_t i = 0; i + 1 < pts.size(); ++i) {
    const double a = pts[i], b = pts[i + 1];
    // f is linear within a piece; at a knot it may jump (a first area or discharge
    // that is not 0), so the piece's own value is taken just above its start.
    const double fa = i == 0 ? f(a) : f(a + 1e-12 * (b - a));
    const double fb = f(b - 1e-12 * (b - a));
    double r;
    if (fa == 0.0)
      r = a;
    else if ((fa < 0) == (fb < 0))
      continue;
    else
      r = a + (b - a) * fa / (fa - fb);
    if (!std::isfinite(best) || std::fabs(r - h) < std::fabs(best - h)) best = r;
  }
  if (!std::isfinite(best))
    best = knots.empty() ? h : knots.back();  // no state closes: the tables' top
  return best;
}

bool pointInLake(const Lake& l, double x, double y) {
  const std::vector<detail::Pt> p = polygonOf(l.vertices);
  if (detail::insidePolygon(p, x, y)) return true;
  // On the shore: within a thousandth of the lake's size of its boundary.
  const double tol = 1e-3 * std::sqrt(polygonArea(l));
  for (size_t i = 0, n = p.size(); i < n; ++i) {
    const detail::Pt& a = p[i];
    const detail::Pt& b = p[(i + 1) % n];
    const double dx = b.x - a.x, dy = b.y - a.y, L2 = dx * dx + dy * dy;
    const double t = L2 > 0 ? std::clamp(((x - a.x) * dx + (y - a.y) * dy) / L2, 0.0, 1.0) : 0.0;
    if (std::hypot(a.x + t * dx - x, a.y + t * dy - y) <= tol) return true;
  }
  return false;
}

// Links the routed strings marked inlet or outlet to the lakes their ends lie in (once:
// a loaded solution's lakes keep theirs).
void findLinks(Model& m, const std::vector<int>& active, const LineSink& log) {
  bool any = false;
  for (int i : active) any = any || !m.lakes[i].linksFound;
  if (!any) return;
  for (const LineSinkString& ls : m.lineSinks) {
    if (ls.kind != LineSinkKind::Stream || ls.segments.empty()) continue;
    const bool outlet = !ls.outletTable.empty();
    if (!ls.inlet && !outlet) continue;
    // A string may leave one lake and enter another; each end joins one lake at most.
    bool inletLinked = false, outletLinked = false;
    for (int i : active) {
      Lake& l = m.lakes[i];
      if (l.linksFound) continue;
      if (ls.inlet && !inletLinked &&
          pointInLake(l, ls.segments.back().x2, ls.segments.back().y2)) {
        l.links.push_back({ls.label, true, {}, 0.0});
        inletLinked = true;
      }
      if (outlet && !outletLinked &&
          pointInLake(l, ls.segments.front().x1, ls.segments.front().y1)) {
        l.links.push_back({ls.label, false, ls.outletRating, 0.0});
        outletLinked = true;
        if (ls.outletRating.empty() && log)
          log("Lake " + l.label + ": its outlet " + ls.label +
              " has no rating table; nothing flows out through it");
      }
    }
  }
  for (int i : active) m.lakes[i].linksFound = true;
}

// The flows of the inlets in a solution: the stream flow at the end of each inlet string.
void readInletFlows(Model& m, const std::vector<int>& active, const Solution& s) {
  bool any = false;
  for (int i : active)
    for (const Lake::Link& k : m.lakes[i].links) any = any || k.inlet;
  if (!any) return;
  const std::vector<SegmentResult> segs = s.segmentResults();
  for (int i : active)
    for (Lake::Link& k : m.lakes[i].links) {
      if (!k.inlet) continue;
      k.flow = 0.0;
      for (const SegmentResult& r : segs)
        if (r.stringLabel == k.string)
          k.flow = r.baseFlow + r.overlandFlow;  // the last one of the string stays
    }
}

// The lakes in an order in which a lake comes after every lake whose outlet flows into
// it (lakes on a loop of streams keep their order).
std::vector<int> upstreamFirst(const Model& m, const std::vector<int>& active) {
  std::vector<int> order, indeg(m.lakes.size(), 0);
  auto feeds = [&](int j, int i) {  // an outlet of lake j is an inlet of lake i
    for (const Lake::Link& o : m.lakes[j].links)
      if (!o.inlet)
        for (const Lake::Link& k : m.lakes[i].links)
          if (k.inlet && k.string == o.string) return true;
    return false;
  };
  for (int i : active)
    for (int j : active)
      if (i != j && feeds(j, i)) ++indeg[i];
  std::vector<char> placed(m.lakes.size(), 0);
  for (size_t round = 0; round < active.size(); ++round) {
    bool any = false;
    for (int i : active) {
      if (placed[i] || indeg[i] > 0) continue;
      placed[i] = 1;
      any = true;
      order.push_back(i);
      for (int k : active)
        if (!placed[k] && feeds(i, k)) --indeg[k];
    }
    if (!any) break;
  }
  for (int i : active)
    if (!placed[i]) order.push_back(i);
  return order;
}

struct LakeState {
  double stage = 0.0, head = 0.0;
  bool dry = false;
  bool dryAquifer = false;
};

LakeState stateOf(const Solution& s, const Lake& l) {
  LakeState st;
  const auto [px, py] = lakeHeadPoint(l.vertices);
  st.head = s.head(px, py);
  st.stage = st.head - l.extraction * l.resistance;
  // Over a dry aquifer (the head is the dry mark) the lake holds no water either.
  st.dryAquifer = st.head < -1000.0;
  st.dry = st.dryAquifer || (!l.table.empty() && st.stage < l.table.front().stage);
  return st;
}

// A lake's balance in the state the solution was built with (exchange, outflows) and
// the stage and inflows that followed from it.
LakeResult balanceOf(const Lake& l, const LakeState& st) {
  LakeResult r;
  r.label = l.label;
  if (!l.vertices.empty()) {
    r.firstLabel = l.vertices.front().label;
    r.lastLabel = l.vertices.back().label;
  }
  r.polygonArea = polygonArea(l);
  r.dry = st.dry;
  r.surfaceArea = st.dryAquifer ? 0.0 : surfaceOf(l, st.stage);
  r.hasTable = !l.table.empty();
  r.volume = r.hasTable && !st.dryAquifer ? stageVolume(l.table, st.stage) : 0.0;
  r.stage = st.dry ? kDryHead : st.stage;
  r.aquiferHead = st.head;
  r.precipitation = l.precipitation * r.surfaceArea;
  r.evaporation = l.evaporation * r.surfaceArea;
  const double exchange = l.extraction * r.polygonArea;
  if (exchange > 0)
    r.groundwaterIn = exchange;
  else
    r.groundwaterOut = -exchange;
  // Precipitation or evaporation of the wrong sign is counted on the other side.
  if (r.precipitation < 0) {
    r.evaporation -= r.precipitation;
    r.precipitation = 0;
  }
  if (r.evaporation < 0) {
    r.precipitation -= r.evaporation;
    r.evaporation = 0;
  }
  // Stream flow is never negative (a reach that would take more than reaches it goes dry).
  for (const Lake::Link& k : l.links) (k.inlet ? r.streamIn : r.streamOut) += k.flow;
  r.totalIn = r.precipitation + r.groundwaterIn + r.overlandIn + r.streamIn;
  r.totalOut = r.evaporation + r.groundwaterOut + r.overlandOut + r.streamOut;
  r.error = r.totalIn - r.totalOut;
  const double big = std::max(r.totalIn, r.totalOut);
  r.errorPercent = big > 0 ? 100.0 * std::fabs(r.error) / big : 0.0;
  return r;
}

}  // namespace

// The outer iteration stops when every lake's balance closes to this fraction of its
// largest term (a tenth of what the results promise), or after kLakeSolves solves
// (or O of the solve command, when larger). Lakes linked by streams converge linearly:
// each solve takes the inflows of the one before.
constexpr double kLakeClosure = 1e-7;
constexpr int kLakeSolves = 100;

LakeSolveReport solveWithLakes(const Model& model, std::optional<Solution>& solution,
                               const SolveOptions& options, const LineSink& log,
                               const std::function<void(Solution&)>& attach) {
  LakeSolveReport rep;
  Model m = model;
  std::vector<int> active;
  for (int i = 0; i < (int)m.lakes.size(); ++i)
    if (usable(m.lakes[i])) active.push_back(i);
  findLinks(m, active, log);
  for (int i : active) {
    Lake& l = m.lakes[i];
    // A lake that has not been solved starts from the balance of a full lake.
    if (l.extraction == 0.0) {
      const double s = l.table.empty() ? 0.0 : l.table.back().stage;
      l.extraction = neededExtraction(l, s);
      for (Lake::Link& k : l.links)
        if (!k.inlet) k.flow = ratingFlow(k.rating, s);
    }
  }
  std::vector<double> prevH(m.lakes.size(), 0.0), prevN(m.lakes.size(), 0.0),
      gain(m.lakes.size(), 0.0);
  std::vector<int> order;
  std::vector<char> done(m.lakes.size(), 0);
  std::vector<std::string> solveLines;
  const int maxIter = active.empty() ? 1 : std::max(kLakeSolves, options.outerIterations);
  for (int it = 1; it <= maxIter; ++it) {
    solution.reset();
    solution.emplace(withLakeElements(m));
    // The message log gets one line per solve of the outer iteration and the full log of
    // the last solve only (a chain of lakes takes dozens of solves).
    solveLines.clear();
    rep.last = solution->solve(options, [&](const std::string& l) { solveLines.push_back(l); });
    ++rep.lakeIterations;
    if (it == 1) {
      const std::set<std::string> kept = acceptedLabels(*solution);
      std::erase_if(active, [&](int i) { return !kept.count(m.lakes[i].label); });
    }
    if (active.empty()) break;
    if (it == 1) order = upstreamFirst(m, active);
    readInletFlows(m, active, *solution);
    // The balance in the state of this solve.
    double worst = 0.0;
    std::string worstLake;
    std::vector<double> heads(m.lakes.size(), 0.0);
    std::vector<char> dryUnder(m.lakes.size(), 0);
    for (int i : active) {
      Lake& l = m.lakes[i];
      const LakeState st = stateOf(*solution, l);
      const LakeResult b = balanceOf(l, st);
      const double big = std::max(b.totalIn, b.totalOut);
      const double mismatch = std::fabs(outflowAt(l, st.stage) - outflowUsed(l));
      const double e = big > 0 ? (std::fabs(b.error) + mismatch) / big : 0.0;
      if (e > worst || worstLake.empty()) {
        worst = std::max(worst, e);
        worstLake = l.label;
      }
      heads[i] = st.head;
      dryUnder[i] = st.dryAquifer;
    }
    // The stage and exchange for the next solve, upstream lakes first: the change of an
    // upstream lake's outflow reaches the lake its outlet flows into along the stream, so
    // that lake's inflow is corrected by it at once (the stream's own gains stay those of
    // this solve). A chain of lakes then settles in a few solves rather than one lake per
    // solve.
    std::vector<double> next(m.lakes.size(), 0.0), nextStages(m.lakes.size(), 0.0);
    for (int i : order) {
      Lake& l = m.lakes[i];
      for (Lake::Link& k : l.links) {
        if (!k.inlet) continue;
        for (int j : active)
          for (const Lake::Link& o : m.lakes[j].links)
            if (!o.inlet && o.string == k.string && j != i && done[j])
              k.flow = std::max(0.0, k.flow + ratingFlow(o.rating, nextStages[j]) - o.flow);
      }
      const double h = heads[i];
      if (it > 1 && std::fabs(l.extraction - prevN[i]) > 1e-14 * (1.0 + std::fabs(l.extraction)))
        gain[i] = std::min(0.0, (h - prevH[i]) / (l.extraction - prevN[i]));
      prevH[i] = h;
      prevN[i] = l.extraction;
      if (dryUnder[i]) {
        // No water surface and no outflow: the lake passes what its inlets bring.
        nextStages[i] = kDryHead;
        next[i] = -inflowOf(l) / polygonArea(l);
      } else {
        nextStages[i] = nextStage(l, h, l.extraction, gain[i]);
        next[i] = neededExtraction(l, nextStages[i]);
      }
      done[i] = 1;
    }
    std::fill(done.begin(), done.end(), 0);
    if (log)
      log("Lake balance iteration " + std::to_string(it) + ": largest balance error " + num(worst) +
          " of the largest term (lake " + worstLake + ")");
    if (worst <= kLakeClosure) break;
    if (it == maxIter) {
      rep.converged = false;
      break;
    }
    for (int i : active) {
      Lake& l = m.lakes[i];
      l.extraction = next[i];
      for (Lake::Link& k : l.links)
        if (!k.inlet) k.flow = ratingFlow(k.rating, nextStages[i]);
    }
  }
  if (log) {
    if (rep.lakeIterations > 1) log("The last solve of the lakes' iteration:");
    for (const std::string& l : solveLines) log(l);
  }
  if (attach) attach(*solution);
  return rep;
}

std::vector<LakeResult> lakeResults(const Solution& solution) {
  std::vector<LakeResult> out;
  if (!solution.solved()) return out;
  const std::set<std::string> kept = acceptedLabels(solution);
  for (const Lake& l : solution.model().lakes)
    if (usable(l) && kept.count(l.label)) out.push_back(balanceOf(l, stateOf(solution, l)));
  for (LakeResult& r : lakeEdgeResults(solution)) out.push_back(std::move(r));
  return out;
}

std::vector<std::string> formatLakeBalance(const std::vector<LakeResult>& lakes) {
  std::vector<std::string> l;
  for (const LakeResult& r : lakes) {
    l.push_back("Lake " + r.label + " (vertices " + r.firstLabel + " to " + r.lastLabel +
                "): area " + num(r.polygonArea) + ", water surface " + num(r.surfaceArea) +
                (r.hasTable ? ", volume " + num(r.volume) : std::string()) + ", stage " +
                (r.dry ? std::string("dry") : num(r.stage)) + ", aquifer head under the lake " +
                num(r.aquiferHead));
    l.push_back("  in:  precipitation " + num(r.precipitation) + ", groundwater " +
                num(r.groundwaterIn) + ", overland flow " + num(r.overlandIn) + ", stream flow " +
                num(r.streamIn) + ", total " + num(r.totalIn));
    l.push_back("  out: evapotranspiration " + num(r.evaporation) + ", groundwater " +
                num(r.groundwaterOut) + ", overland flow " + num(r.overlandOut) + ", stream flow " +
                num(r.streamOut) + ", total " + num(r.totalOut));
    char b[64];
    std::snprintf(b, sizeof b, "%.4f", r.errorPercent);
    l.push_back("  balance error " + num(r.error) + " (" + b + " %)");
  }
  return l;
}

double nearestLakeStage(const Solution& solution, double x, double y) {
  double best = std::numeric_limits<double>::infinity();
  const Lake* nearest = nullptr;
  if (!solution.solved()) return std::numeric_limits<double>::quiet_NaN();
  const std::set<std::string> kept = acceptedLabels(solution);
  for (const Lake& l : solution.model().lakes) {
    if (!usable(l) || !kept.count(l.label)) continue;
    const size_t n = l.vertices.size();
    for (size_t i = 0; i < n; ++i) {
      const Vertex& a = l.vertices[i];
      const Vertex& b = l.vertices[(i + 1) % n];
      const double dx = b.x - a.x, dy = b.y - a.y, L2 = dx * dx + dy * dy;
      const double t = L2 > 0 ? std::clamp(((x - a.x) * dx + (y - a.y) * dy) / L2, 0.0, 1.0) : 0.0;
      const double d = std::hypot(a.x + t * dx - x, a.y + t * dy - y);
      if (d < best) {
        best = d;
        nearest = &l;
      }
    }
  }
  // A lake drawn by its shore may lie nearer.
  const auto [edgeStage, edgeDistance] = nearestLakeEdgeStage(solution, x, y);
  if (edgeDistance < best) return edgeStage;
  if (!nearest) return std::numeric_limits<double>::quiet_NaN();
  const LakeState st = stateOf(solution, *nearest);
  return st.dry ? kDryHead : st.stage;
}

double LakeSolutionSource::lakeStage(double x, double y) const {
  const double s = nearestLakeStage(s_, x, y);
  return std::isnan(s) ? s_.head(x, y) : s;
}

std::vector<LakeResult> LakeSolutionSource::lakes() const { return lakeResults(s_); }

std::vector<InhomogeneityResult> LakeSolutionSource::inhomogeneities() const {
  std::vector<InhomogeneityResult> all = s_.inhomogeneityResults();
  const auto& lakes = s_.model().lakes;
  std::erase_if(all, [&](const InhomogeneityResult& r) {
    return std::any_of(lakes.begin(), lakes.end(),
                       [&](const Lake& l) { return l.label == r.label; });
  });
  return all;
}

}  // namespace tarno::engine
