#include "engine/trace.h"

#include "core/solver_files.h"

#include "engine/fast_eval.h"
#include "engine/grid.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <ostream>

namespace tarno::engine {

const char* pathEndName(PathEnd e) {
  switch (e) {
    case PathEnd::MaxTime: return "maximum time";
    case PathEnd::Well: return "entered a well";
    case PathEnd::LineSink: return "entered a line-sink";
    case PathEnd::Window: return "left the window";
    case PathEnd::Dry: return "dry aquifer";
    case PathEnd::Ignored: return "outside the model (behind a bounding wall)";
    case PathEnd::Wall: return "stopped at an impermeable wall";
    case PathEnd::WaterTable: return "reached the water table";
    case PathEnd::Stagnant: return "stagnation point";
    case PathEnd::Steps: return "step limit";
  }
  return "";
}

namespace {

constexpr double kPi = 3.14159265358979323846;

struct SinkWell {
  double x, y, radius, discharge;
};

struct SinkSegment {
  double x1, y1, x2, y2, strength;
  double xmin, xmax, ymin, ymax;
};

// A segment of a wall that no water passes, with its unit tangent.
struct Barrier {
  SinkSegment g;  // strength unused
  double tx = 0, ty = 0, length = 0;
};

// The velocity field along a path: forward velocities (v = Q / (n b), the rate
// of the relative elevation) and what the point record needs.
struct Sample {
  bool wet = false;
  double vx = 0, vy = 0;  // forward
  double rzeta = 0;       // forward d zeta / dt divided by zeta: -N / (n b)
  double recharge = 0;
  double head = 0, base = 0, thickness = 0;  // base: the bottom of the water (base or interface)
};

Sample sample(const FieldEvaluator& s, double x, double y) {
  Sample r;
  const PointValues p = s.evaluate(x, y);
  r.head = p.head;
  if (!(p.head > kDryLimit) || !std::isfinite(p.head)) return r;
  // The water a particle moves in lies between the base, or the salt water interface
  // where it stands above the base, and the top of the saturated zone (p.z): paths keep
  // their relative elevation in it and so stay above the interface.
  r.base = p.base;
  if (auto zi = interfaceElevation(s.solution().model().aquifer, p.head, p.base)) r.base = *zi;
  r.thickness = p.z - r.base;
  const double n = p.porosity;
  if (!(r.thickness > 0) || !(n > 0)) return r;
  r.vx = p.qx / (n * r.thickness);
  r.vy = p.qy / (n * r.thickness);
  r.recharge = p.recharge;
  r.rzeta = -p.recharge / (n * r.thickness);
  if (!std::isfinite(r.vx) || !std::isfinite(r.vy) || !std::isfinite(r.rzeta)) return r;
  r.wet = true;
  return r;
}

// Where the segment a -> b first crosses segment g, as a fraction of a -> b.
bool crossing(double ax, double ay, double bx, double by, const SinkSegment& g, double& u) {
  const double rx = bx - ax, ry = by - ay, sx = g.x2 - g.x1, sy = g.y2 - g.y1;
  const double den = rx * sy - ry * sx;
  if (den == 0.0) return false;
  const double qx = g.x1 - ax, qy = g.y1 - ay;
  const double t = (qx * sy - qy * sx) / den;
  const double v = (qx * ry - qy * rx) / den;
  if (t < 0.0 || t > 1.0 || v < 0.0 || v > 1.0) return false;
  u = t;
  return true;
}

// Squared distance from a point to a segment (compared with squared limits: these
// tests run over every sink at every step).
double squaredDistanceToSegment(double x, double y, const SinkSegment& g) {
  const double sx = g.x2 - g.x1, sy = g.y2 - g.y1;
  const double l2 = sx * sx + sy * sy;
  double t = l2 > 0 ? ((x - g.x1) * sx + (y - g.y1) * sy) / l2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  const double dx = x - g.x1 - t * sx, dy = y - g.y1 - t * sy;
  return dx * dx + dy * dy;
}

// Every kind of well: fully and partially penetrating, and transient wells with their
// discharge at the time of evaluation.
std::vector<WellResult> allWells(const Solution& s) {
  std::vector<WellResult> all = s.wellResults();
  for (const auto& w : s.partialWellResults()) all.push_back(w);
  for (const auto& w : s.theisWellResults()) all.push_back(w);
  return all;
}

// The segments of the line-sinks in the cells of a uniform lattice over their extent, so
// that a step looks only at the segments near it. Each segment is listed in every cell
// its box overlaps (a segment may come up more than once in a query: the stop rules take
// a minimum or ask whether any segment qualifies, so repeats change nothing).
class SegmentCells {
 public:
  void build(const std::vector<SinkSegment>& segs) {
    cells_.clear();
    if (segs.size() < kFewSegments) return;
    x0_ = y0_ = std::numeric_limits<double>::infinity();
    double x1 = -x0_, y1 = -y0_;
    for (const SinkSegment& g : segs) {
      x0_ = std::min(x0_, g.xmin);
      y0_ = std::min(y0_, g.ymin);
      x1 = std::max(x1, g.xmax);
      y1 = std::max(y1, g.ymax);
    }
    if (!std::isfinite(x0_) || !std::isfinite(y0_) || !std::isfinite(x1) || !std::isfinite(y1)) return;
    // About two segments per cell.
    const double area = std::max((x1 - x0_) * (y1 - y0_), 1e-300);
    size_ = std::sqrt(2.0 * area / static_cast<double>(segs.size()));
    size_ = std::max({size_, (x1 - x0_) / 4096.0, (y1 - y0_) / 4096.0, 1e-300});
    nx_ = static_cast<int>((x1 - x0_) / size_) + 1;
    ny_ = static_cast<int>((y1 - y0_) / size_) + 1;
    cells_.assign(static_cast<size_t>(nx_) * ny_, {});
    for (size_t k = 0; k < segs.size(); ++k) {
      const SinkSegment& g = segs[k];
      for (int j = cellY(g.ymin); j <= cellY(g.ymax); ++j)
        for (int i = cellX(g.xmin); i <= cellX(g.xmax); ++i)
          cells_[static_cast<size_t>(j) * nx_ + i].push_back(static_cast<int>(k));
    }
  }
  bool built() const { return !cells_.empty(); }
  // Calls f(k) for every segment whose cell overlaps the box; false when the box spans
  // more cells than there are segments (the caller then looks at all of them).
  template <class F>
  bool visit(double bx0, double bx1, double by0, double by1, F&& f) const {
    const int i0 = cellX(bx0), i1 = cellX(bx1), j0 = cellY(by0), j1 = cellY(by1);
    if ((static_cast<double>(i1 - i0) + 1) * (j1 - j0 + 1) > kFewSegments) return false;
    for (int j = j0; j <= j1; ++j)
      for (int i = i0; i <= i1; ++i)
        for (int k : cells_[static_cast<size_t>(j) * nx_ + i]) f(k);
    return true;
  }

 private:
  static constexpr size_t kFewSegments = 256;  // fewer: every step looks at all of them
  int cellX(double x) const { return std::clamp(static_cast<int>(std::floor((x - x0_) / size_)), 0, nx_ - 1); }
  int cellY(double y) const { return std::clamp(static_cast<int>(std::floor((y - y0_) / size_)), 0, ny_ - 1); }
  double x0_ = 0, y0_ = 0, size_ = 1;
  int nx_ = 0, ny_ = 0;
  std::vector<std::vector<int>> cells_;
};

// The samples a path is taken to need when the evaluator's path is chosen.
constexpr long kSamplesOfAPath = 1000000;

class Tracer {
 public:
  // A path takes hundreds to thousands of samples: unless the settings say, the
  // evaluator's path follows from the model's size alone.
  Tracer(const Solution& s, const TraceSettings& st)
      : s_(s),
        field_(s, st.evaluation.value_or(FieldEvaluator::multipoleFor(s, kSamplesOfAPath)
                                             ? FieldEvaluator::Path::Multipole
                                             : FieldEvaluator::Path::Direct)),
        st_(st) {
    for (const WellResult& w : allWells(s))
      if (w.radius > 0 || w.discharge != 0) wells_.push_back(SinkWell{w.x, w.y, w.radius, w.discharge});
    for (const SegmentResult& g : s.segmentResults())
      if (g.strength != 0)
        segments_.push_back(SinkSegment{g.x1, g.y1, g.x2, g.y2, g.strength, std::min(g.x1, g.x2),
                                        std::max(g.x1, g.x2), std::min(g.y1, g.y2), std::max(g.y1, g.y2)});
    cells_.build(segments_);
    for (const BarrierSegment& b : s.barrierSegments()) {
      const double L = std::hypot(b.x2 - b.x1, b.y2 - b.y1);
      if (!(L > 0)) continue;
      barriers_.push_back(Barrier{SinkSegment{b.x1, b.y1, b.x2, b.y2, 0.0, std::min(b.x1, b.x2), std::max(b.x1, b.x2),
                                              std::min(b.y1, b.y2), std::max(b.y1, b.y2)},
                                  (b.x2 - b.x1) / L, (b.y2 - b.y1) / L, L});
    }
    const double cx = 0.5 * (st.x1 + st.x2), cy = 0.5 * (st.y1 + st.y2);
    const double hw = 0.75 * std::fabs(st.x2 - st.x1), hh = 0.75 * std::fabs(st.y2 - st.y1);
    xmin_ = cx - hw;
    xmax_ = cx + hw;
    ymin_ = cy - hh;
    ymax_ = cy + hh;
  }

  Path trace(const Particle& p) const {
    Path path;
    path.label = p.label;
    const int dir = p.direction < 0 ? -1 : 1;
    const double step = st_.step;
    double x = p.x, y = p.y, t = 0.0;
    Sample cur = sample(field_, x, y);
    if (!cur.wet) {
      path.points.push_back(PathPoint{x, y, 0.0, p.z, cur.head > kDryLimit ? cur.head : kDryHead});
      path.end = s_.ignored(x, y) ? PathEnd::Ignored : PathEnd::Dry;
      return path;
    }
    double zeta = std::clamp((p.z - cur.base) / cur.thickness, 0.0, 1.0);
    if (!std::isfinite(zeta)) zeta = 1.0;
    path.points.push_back(PathPoint{x, y, 0.0, cur.base + zeta * cur.thickness, cur.head});
    if (entersWell(x, y, dir, step)) return finish(path, PathEnd::Well);
    if (onLineSink(x, y, dir, step)) return finish(path, PathEnd::LineSink);
    while (true) {
      if (t >= st_.maxTime) return finish(path, PathEnd::MaxTime);
      if (path.steps >= st_.maxSteps) return finish(path, PathEnd::Steps);
      const double speed = std::hypot(cur.vx, cur.vy);
      if (!(speed > 0)) return finish(path, PathEnd::Stagnant);
      double length = std::min(step, 0.5 * nearestWell(x, y));
      length = std::max(length, 1e-6 * step);
      double dt = length / speed;
      if (!std::isfinite(dt)) return finish(path, PathEnd::Stagnant);
      bool lastStep = false;
      if (t + dt >= st_.maxTime) {
        dt = st_.maxTime - t;
        lastStep = true;
      }
      // Fourth-order Runge-Kutta; a stage in a dry or singular spot halves the step.
      double nx = 0, ny = 0, nz = 0;
      bool ok = false;
      bool advanced = false;  // the step was cut at a wall: the path is already moved on
      for (int tries = 0; tries < 30 && !ok && !advanced; ++tries) {
        const double h = dir * dt;
        auto f = [&](const Sample& q, double z, double& fx, double& fy, double& fz) {
          fx = q.vx;
          fy = q.vy;
          fz = q.rzeta * z;
        };
        double k1x, k1y, k1z, k2x, k2y, k2z, k3x, k3y, k3z, k4x, k4y, k4z;
        f(cur, zeta, k1x, k1y, k1z);
        const Sample s2 = sample(field_, x + 0.5 * h * k1x, y + 0.5 * h * k1y);
        const double z2 = zeta + 0.5 * h * k1z;
        Sample s3, s4;
        double z3 = 0, z4 = 0;
        if (s2.wet) {
          f(s2, z2, k2x, k2y, k2z);
          s3 = sample(field_, x + 0.5 * h * k2x, y + 0.5 * h * k2y);
          z3 = zeta + 0.5 * h * k2z;
          if (s3.wet) {
            f(s3, z3, k3x, k3y, k3z);
            s4 = sample(field_, x + h * k3x, y + h * k3y);
            z4 = zeta + h * k3z;
            if (s4.wet) {
              f(s4, z4, k4x, k4y, k4z);
              nx = x + h / 6.0 * (k1x + 2 * k2x + 2 * k3x + k4x);
              ny = y + h / 6.0 * (k1y + 2 * k2y + 2 * k3y + k4y);
              nz = zeta + h / 6.0 * (k1z + 2 * k2z + 2 * k3z + k4z);
              ok = true;
            }
          }
        }
        // A line-sink crossed by the first stage's straight step ends the path
        // even when the later stages turn back on its far side.
        double u = 2.0;
        const double px = x + h * k1x, py = y + h * k1y;
        // Both steps lie in this box; segments outside it cannot be crossed.
        const double bx0 = std::min({x, px, ok ? nx : x}), bx1 = std::max({x, px, ok ? nx : x});
        const double by0 = std::min({y, py, ok ? ny : y}), by1 = std::max({y, py, ok ? ny : y});
        double up = 2.0;
        auto crossed = [&](const SinkSegment& g) {
          if (g.strength * dir <= 0) return;
          if (g.xmax < bx0 || g.xmin > bx1 || g.ymax < by0 || g.ymin > by1) return;
          double w;
          if (ok && crossing(x, y, nx, ny, g, w) && w < u) u = w;
          if (crossing(x, y, px, py, g, w) && w < up) up = w;
        };
        if (!cells_.built() || !cells_.visit(bx0, bx1, by0, by1, [&](int k) { crossed(segments_[k]); }))
          for (const SinkSegment& g : segments_) crossed(g);
        // An impermeable wall crossed by either step: the step is cut where it meets the
        // wall, unless a line-sink comes first along the step.
        WallHit wall;
        if (!barriers_.empty()) {
          if (ok) wall = firstBarrier(x, y, nx, ny, bx0, bx1, by0, by1);
          WallHit straight = firstBarrier(x, y, px, py, bx0, bx1, by0, by1);
          if (straight.u < wall.u) {
            straight.straight = true;
            wall = straight;
          }
        }
        if (wall.u <= 1.0 && !(wall.u > std::min(u, up))) {
          const double ex = wall.straight ? x + wall.u * (px - x) : x + wall.u * (nx - x);
          const double ey = wall.straight ? y + wall.u * (py - y) : y + wall.u * (ny - y);
          const double ez = wall.straight ? zeta + wall.u * h * k1z : zeta + wall.u * (nz - zeta);
          const Barrier& b = barriers_[static_cast<size_t>(wall.index)];
          const double eps = nudge(x, y, step);
          if (std::sqrt(squaredDistanceToSegment(x, y, b.g)) > 1e-3 * step) {
            // Cut: the path goes on from the wall, on the side it came from.
            const double side = (b.tx * (y - b.g.y1) - b.ty * (x - b.g.x1)) >= 0 ? 1.0 : -1.0;
            const double cx = ex - side * eps * b.ty, cy = ey + side * eps * b.tx;
            const Sample c = sample(field_, cx, cy);
            ++path.steps;
            if (!c.wet) return finish(path, PathEnd::Wall);
            t += wall.u * dt;
            x = cx;
            y = cy;
            zeta = std::clamp(ez, 0.0, 1.0);
            cur = c;
            path.points.push_back(PathPoint{x, y, t, cur.base + zeta * cur.thickness, cur.head});
            advanced = true;
            break;
          }
          // At the wall already: the path turns along it, by the part of the straight
          // step (the velocity where the particle is) that runs along the wall, cut again
          // at any other wall on the way. The later stages of the step sampled the far
          // side and do not count. Where the flow meets the wall head on, nothing runs
          // along it and the path ends there.
          const double along = (px - x) * b.tx + (py - y) * b.ty;
          if (std::fabs(along) <= 1e-3 * step) return finish(path, PathEnd::Wall);
          double sx = x + along * b.tx, sy = y + along * b.ty, f = 1.0;
          const WallHit other = firstBarrier(x, y, sx, sy, std::min(x, sx), std::max(x, sx), std::min(y, sy),
                                             std::max(y, sy), wall.index);
          if (other.u <= 1.0) {
            // A corner that the flow presses into: nowhere to go.
            if (other.u * std::fabs(along) <= 1e-3 * step) return finish(path, PathEnd::Wall);
            const Barrier& o = barriers_[static_cast<size_t>(other.index)];
            const double side = (o.tx * (y - o.g.y1) - o.ty * (x - o.g.x1)) >= 0 ? 1.0 : -1.0;
            f = other.u;
            sx = x + f * (sx - x) - side * eps * o.ty;
            sy = y + f * (sy - y) + side * eps * o.tx;
          }
          const Sample c = sample(field_, sx, sy);
          ++path.steps;
          if (!c.wet) return finish(path, PathEnd::Wall);
          t += f * dt;
          x = sx;
          y = sy;
          zeta = std::clamp(zeta + f * h * k1z, 0.0, 1.0);
          cur = c;
          path.points.push_back(PathPoint{x, y, t, cur.base + zeta * cur.thickness, cur.head});
          advanced = true;
          break;
        }
        if (u <= 1.0 || up <= 1.0) {
          const bool onStep = u <= 1.0 && (up > 1.0 || u <= up);
          const double w = onStep ? u : up;
          const double ex = onStep ? x + w * (nx - x) : x + w * (px - x);
          const double ey = onStep ? y + w * (ny - y) : y + w * (py - y);
          const double ez = onStep ? zeta + w * (nz - zeta) : zeta + w * h * k1z;
          ++path.steps;
          Sample e = sample(field_, ex, ey);
          const double zz = std::clamp(ez, 0.0, 1.0);
          if (e.wet) path.points.push_back(PathPoint{ex, ey, t + w * dt, e.base + zz * e.thickness, e.head});
          return finish(path, PathEnd::LineSink);
        }
        if (!ok) {
          dt *= 0.5;
          lastStep = false;
        }
      }
      if (advanced) {
        if (t >= st_.maxTime) return finish(path, PathEnd::MaxTime);
        if (entersWell(x, y, dir, step)) return finish(path, PathEnd::Well);
        if (onLineSink(x, y, dir, step)) return finish(path, PathEnd::LineSink);
        if (x < xmin_ || x > xmax_ || y < ymin_ || y > ymax_) return finish(path, PathEnd::Window);
        continue;
      }
      if (!ok) return finish(path, PathEnd::Dry);
      const Sample next = sample(field_, nx, ny);
      if (!next.wet) return finish(path, s_.ignored(nx, ny) ? PathEnd::Ignored : PathEnd::Dry);
      ++path.steps;
      t += dt;
      x = nx;
      y = ny;
      const bool topReached = nz >= 1.0 && dir * next.recharge < 0;
      zeta = std::clamp(nz, 0.0, 1.0);
      cur = next;
      path.points.push_back(PathPoint{x, y, t, cur.base + zeta * cur.thickness, cur.head});
      if (lastStep) return finish(path, PathEnd::MaxTime);
      if (entersWell(x, y, dir, step)) return finish(path, PathEnd::Well);
      if (onLineSink(x, y, dir, step)) return finish(path, PathEnd::LineSink);
      if (x < xmin_ || x > xmax_ || y < ymin_ || y > ymax_) return finish(path, PathEnd::Window);
      if (topReached) return finish(path, PathEnd::WaterTable);
    }
  }

 private:
  const Solution& s_;
  const FieldEvaluator field_;
  const TraceSettings& st_;
  std::vector<SinkWell> wells_;
  std::vector<SinkSegment> segments_;
  SegmentCells cells_;  // over segments_
  std::vector<Barrier> barriers_;
  double xmin_ = 0, xmax_ = 0, ymin_ = 0, ymax_ = 0;

  static Path& finish(Path& p, PathEnd e) {
    p.end = e;
    return p;
  }

  struct WallHit {
    double u = 2.0;  // fraction of the step where it meets the wall (> 1: none)
    int index = -1;
    bool straight = false;  // on the first stage's straight step
  };

  // The first barrier that the step a -> b crosses (the box holds the step), leaving out
  // the barrier `skip`.
  WallHit firstBarrier(double ax, double ay, double bx, double by, double x0, double x1, double y0, double y1,
                       int skip = -1) const {
    WallHit hit;
    for (size_t k = 0; k < barriers_.size(); ++k) {
      const SinkSegment& g = barriers_[k].g;
      if (static_cast<int>(k) == skip) continue;
      if (g.xmax < x0 || g.xmin > x1 || g.ymax < y0 || g.ymin > y1) continue;
      double w;
      if (crossing(ax, ay, bx, by, g, w) && w < hit.u) {
        hit.u = w;
        hit.index = static_cast<int>(k);
      }
    }
    return hit;
  }

  // How far from a wall a path that meets it is put, on its own side: far enough above
  // round-off of the coordinates that the side is never in doubt.
  static double nudge(double x, double y, double step) {
    return std::max(1e-6 * step, 1e-12 * (std::fabs(x) + std::fabs(y)));
  }

  double nearestWell(double x, double y) const {
    double d2 = std::numeric_limits<double>::infinity();
    for (const SinkWell& w : wells_) d2 = std::min(d2, (x - w.x) * (x - w.x) + (y - w.y) * (y - w.y));
    return std::sqrt(d2);
  }

  bool onLineSink(double x, double y, int dir, double step) const {
    const double limit = 1e-3 * step;
    auto near = [&](const SinkSegment& g) {
      if (g.strength * dir <= 0) return false;
      // Bounding box first: most segments are far away.
      if (x < g.xmin - limit || x > g.xmax + limit || y < g.ymin - limit || y > g.ymax + limit) return false;
      return squaredDistanceToSegment(x, y, g) <= limit * limit;
    };
    bool found = false;
    if (cells_.built() &&
        cells_.visit(x - limit, x + limit, y - limit, y + limit, [&](int k) { found = found || near(segments_[k]); }))
      return found;
    for (const SinkSegment& g : segments_)
      if (near(g)) return true;
    return false;
  }

  bool entersWell(double x, double y, int dir, double step) const {
    for (const SinkWell& w : wells_) {
      if (w.discharge * dir <= 0) continue;
      const double r = std::max(w.radius, step);
      if ((x - w.x) * (x - w.x) + (y - w.y) * (y - w.y) <= r * r) return true;
    }
    return false;
  }
};

}  // namespace

std::vector<Particle> wellParticles(const Solution& solution, double x, double y, double z, int n, std::string* why) {
  std::vector<Particle> out;
  auto fail = [&](const std::string& s) {
    if (why) *why = s;
    return std::vector<Particle>{};
  };
  if (n < 1) return fail("no particles were asked for");
  const std::vector<WellResult> wells = allWells(solution);
  int best = -1;
  double bestDistance = 0;
  for (size_t i = 0; i < wells.size(); ++i) {
    const double d = std::hypot(wells[i].x - x, wells[i].y - y);
    if (best < 0 || d < bestDistance) {
      best = static_cast<int>(i);
      bestDistance = d;
    }
  }
  if (best < 0) return fail("the model has no well");
  const WellResult& w = wells[static_cast<size_t>(best)];
  const double tolerance = std::max(2.0 * w.radius, 1e-6 * (std::fabs(x) + std::fabs(y)));
  if (bestDistance > tolerance) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "no well stands at this point (the nearest, %s, is %.6G away)", w.label.c_str(),
                  bestDistance);
    return fail(buf);
  }
  if (w.discharge == 0) return fail("the well " + w.label + " takes no water and gives none");
  const int direction = w.discharge > 0 ? -1 : 1;
  const std::string name = w.label.empty() ? "well " + std::to_string(best + 1) : "well " + w.label;
  for (int i = 0; i < n; ++i) {
    const double a = 2.0 * kPi * (i + 0.5) / n;
    Particle p;
    p.x = w.x + w.radius * std::cos(a);
    p.y = w.y + w.radius * std::sin(a);
    p.z = z;
    p.direction = direction;
    p.label = name + " particle " + std::to_string(i + 1);
    out.push_back(std::move(p));
  }
  return out;
}

std::vector<Path> tracePaths(const Solution& solution, const std::vector<Particle>& particles,
                             const TraceSettings& settings) {
  std::vector<Path> paths(particles.size());
  const Tracer tracer(solution, settings);
#pragma omp parallel for schedule(dynamic, 1)
  for (long i = 0; i < static_cast<long>(particles.size()); ++i)
    paths[static_cast<size_t>(i)] = tracer.trace(particles[static_cast<size_t>(i)]);
  return paths;
}

void writePathFile(std::ostream& out, const std::vector<Path>& paths) {
  char buf[128];
  for (const Path& p : paths) {
    out << solver_files::path_file::kLabel << ' ' << p.label << "\n";
    out << solver_files::path_file::kStart << "\n";
    const size_t n = p.points.size();
    const size_t every =
        n > kMaxWrittenPathPoints ? (n - 1 + kMaxWrittenPathPoints - 3) / (kMaxWrittenPathPoints - 2) : 1;
    int counter = 0;
    for (size_t k = 0; k < n; ++k) {
      if (k % every != 0 && k != n - 1) continue;
      const PathPoint& q = p.points[k];
      ++counter;
      // The counter in its columns, then X, Y, time, elevation and head in theirs.
      namespace pl = solver_files::plot_line;
      std::snprintf(buf, sizeof buf, "%*d", pl::kCounterWidth, counter % 1000000);
      out << buf;
      for (double v : {q.x, q.y, q.time, q.elevation, q.head}) {
        std::snprintf(buf, sizeof buf, pl::kFormat, v);
        out << buf;
      }
      out << '\n';
    }
    out << solver_files::path_file::kEnd << "\n";
  }
}

}  // namespace tarno::engine
