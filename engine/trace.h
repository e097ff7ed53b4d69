#pragma once
// Pathlines of a solution, three-dimensional in the Dupuit sense.
//
// The horizontal velocity is the discharge vector divided by porosity times the
// saturated thickness b: v = Q / (n b). Under the Dupuit assumption the
// horizontal velocity does not vary over the vertical, so the flow beneath a
// particle is the fraction zeta = (z - B) / b of the whole discharge, and that
// flow is kept along the path: water that enters as recharge N at the water
// table (the areal divergence of the flow, div Q = N) stacks on top, and no water
// enters or leaves at the base. Along a streamtube zeta |Q| w is constant and
// d(|Q| w)/ds = w div Q, which gives
//
//     d zeta / dt = - zeta N / (n b)
//
// and the elevation of the particle is z = B + zeta b. Recharge pushes particles
// down; without recharge a particle keeps its relative position in the
// saturated thickness (so it follows the water table down in unconfined flow).
//
// Integration: classical fourth-order Runge-Kutta in (x, y, zeta) over time.
// Each step's time increment is chosen so that the step is about the step
// length s at the velocity of its start; near a well (of any kind) the length is
// at most half the distance to it, so that the 1/r velocity around a well is
// followed accurately. A backward trace runs with the velocity reversed; times
// are counted from the start and are never negative.
//
// Walls that pass no water (Solution::barrierSegments) are never crossed: a step that
// would cross one is cut where it meets it and the path goes on from there; a particle
// at such a wall turns along it (by the part of its velocity that runs along the wall)
// and ends there only where the flow meets the wall head on (PathEnd::Wall).
//
// A path ends (in this order of testing, after each step):
// - at its maximum time (the last step is shortened to end on it exactly);
// - where it enters a well that takes water in the direction of tracing (a
//   pumping well forward, an injecting one backward): within the well's radius
//   or one step length of its centre;
// - where it crosses, or comes within 1e-3 of a step length of, a line-sink
//   segment that takes water in the direction of tracing (strength > 0 forward,
//   < 0 backward); the path ends on the segment;
// - where it leaves the window enlarged by half its size (the width and height
//   grow by half, about the same centre);
// - where the aquifer is dry (the last point written is the last wet one);
// - where it reaches the water table in an area that takes water out of the top
//   in the direction of tracing (zeta reaches 1; backward this is where the
//   water entered as recharge);
// - where the velocity vanishes (a stagnation point);
// - after 100,000 steps.

#include "core/solver_files.h"
#include "engine/fast_eval.h"
#include "engine/solution.h"

#include <iosfwd>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace tarno::engine {

struct TraceSettings {
  double maxTime = std::numeric_limits<double>::infinity();  // longest travel time (days)
  double step = 1.0;                                         // step length (> 0)
  // The window: paths end where they leave it enlarged by half its size.
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  int maxSteps = 100000;
  // How the velocities are evaluated; none: chosen by the model's size (fast_eval.h).
  std::optional<FieldEvaluator::Path> evaluation;
};

struct Particle {
  double x = 0, y = 0, z = 0;  // z: starting elevation (clipped to the saturated zone)
  int direction = 1;           // 1 forward, -1 backward in time
  std::string label;           // the text of the LABEL line
};

enum class PathEnd { MaxTime, Well, LineSink, Window, Dry, Ignored, Wall, WaterTable, Stagnant, Steps };
const char* pathEndName(PathEnd e);

struct PathPoint {
  double x = 0, y = 0;
  double time = 0;       // travel time from the start, >= 0
  double elevation = 0;  // z of the particle
  double head = 0;       // head at the point (kDryHead at a dry start)
};

struct Path {
  std::string label;
  std::vector<PathPoint> points;  // at least the start
  PathEnd end = PathEnd::MaxTime;
  int steps = 0;
};

// The particles of a " well x y z n" line: n particles on a circle of the
// well's radius around the well nearest to (x, y) (it must lie within twice its
// radius, or 1e-6 of the coordinates' size, of the point), at angles
// 2 pi (i + 1/2) / n from the x axis, i = 0 .. n-1; backward from a pumping
// well, forward from an injecting one. Empty, with the reason in `why`, when no
// well is there or the well takes no water.
std::vector<Particle> wellParticles(const Solution& solution, double x, double y, double z, int n,
                                    std::string* why);

// Traces every particle (in parallel over particles); the paths come back in
// the order of the particles.
std::vector<Path> tracePaths(const Solution& solution, const std::vector<Particle>& particles,
                             const TraceSettings& settings);

// The most points written of one path: the front end keeps at most 50,000 of a
// path, so a longer path is written thinned (every k-th point, and always its
// last point).
inline constexpr size_t kMaxWrittenPathPoints = solver_files::path_file::kMaxPoints;

// The .PTH file: per path "LABEL <label>", "START", one line per point (a
// 6-character counter, then X, Y, time, elevation and head, each %14.6E, from
// columns 7, 21, 35, 49 and 63), "END".
void writePathFile(std::ostream& out, const std::vector<Path>& paths);

}  // namespace tarno::engine
