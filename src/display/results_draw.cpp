// The drawing of contour lines and pathlines from the solver's files.
//
// Choices made here:
//   - contour labels are 8-point Arial in the contour colour, centred on the
//     midpoint of the labelled segment;
//   - "Show Paths" off hides the pathlines themselves while their marks are still
//     written and drawn; the "Pathlines" switch off draws nothing at all;
//   - time marks are measured along the first value of a path point, elevation marks
//     along the second; a mark is a small disc (symbol 5) for time and a cross
//     (symbol 7, half size) for elevation, both in the pathline colour.
#include "display/results_draw.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "core/coords.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "core/format.h"
#include "display/draw_common.h"
#include "display/draw_marks.h"
#include "solver/plot_files.h"
#include "solver/solve_controller.h"
#include "store/database.h"

namespace tarno {

namespace {

constexpr int kContourLabelPoints = 8;
constexpr const char* kContourLabelFont = "Arial";

std::filesystem::path SolverFile(const DrawContext& ctx, const std::string& extension) {
  const SolutionView& s = ctx.state.solution;
  return FindFileNoCase(s.directory, s.baseName + extension);
}

std::vector<WorldPoint> Points(const std::vector<double>& xs, const std::vector<double>& ys) {
  std::vector<WorldPoint> points;
  for (std::size_t i = 0; i < xs.size() && i < ys.size(); ++i) points.push_back({xs[i], ys[i]});
  return points;
}

double Length(const std::vector<std::vector<WorldPoint>>& pieces) {
  double length = 0.0;
  for (const auto& piece : pieces)
    for (std::size_t i = 1; i < piece.size(); ++i)
      length += std::hypot(piece[i].x - piece[i - 1].x, piece[i].y - piece[i - 1].y);
  return length;
}

}  // namespace

std::vector<std::vector<WorldPoint>> SplitAroundBox(const std::vector<double>& xs,
                                                    const std::vector<double>& ys,
                                                    const LabelBox& box) {
  std::vector<std::vector<WorldPoint>> pieces;
  const std::size_t n = std::min(xs.size(), ys.size());
  if (n == 0) return pieces;
  const double a = box.angle * 3.14159265358979 / 180.0;
  const double c = std::cos(a), s = std::sin(a);
  // A point in the box's own frame: u along the baseline, v across it (up).
  auto frame = [&](double x, double y) {
    const double dx = x - box.x, dy = y - box.y;
    return std::pair<double, double>{dx * c + dy * s, -dx * s + dy * c};
  };
  auto inside = [&](double x, double y) {
    const auto [u, v] = frame(x, y);
    return u > -box.halfLength && u < box.halfLength && v > -box.below && v < box.above;
  };

  std::vector<WorldPoint> current;
  if (!inside(xs[0], ys[0])) current.push_back({xs[0], ys[0]});
  for (std::size_t i = 1; i < n; ++i) {
    const WorldPoint p{xs[i - 1], ys[i - 1]}, q{xs[i], ys[i]};
    // The part of the segment inside the box, [t0, t1], by clipping its parameter
    // against the four sides in the box's frame.
    const auto [u0, v0] = frame(p.x, p.y);
    const auto [u1, v1] = frame(q.x, q.y);
    double t0 = 0.0, t1 = 1.0;
    bool hit = true;
    auto clip = [&](double start, double delta, double low, double high) {
      if (delta == 0.0) {
        if (start <= low || start >= high) hit = false;
        return;
      }
      double ta = (low - start) / delta, tb = (high - start) / delta;
      if (ta > tb) std::swap(ta, tb);
      t0 = std::max(t0, ta);
      t1 = std::min(t1, tb);
    };
    clip(u0, u1 - u0, -box.halfLength, box.halfLength);
    clip(v0, v1 - v0, -box.below, box.above);
    if (!hit || !(t1 > t0)) {
      current.push_back(q);
      continue;
    }
    auto at = [&](double t) { return WorldPoint{p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)}; };
    if (t0 > 0.0) current.push_back(at(t0));
    if (current.size() >= 2) pieces.push_back(current);
    current.clear();
    if (t1 < 1.0) current = {at(t1), q};
  }
  if (current.size() >= 2) pieces.push_back(current);
  return pieces;
}

double ContourLabelAngle(double dx, double dy) {
  if (dx == 0.0) return 90.0;
  double angle = std::atan(dy / dx) * 180.0 / 3.14159265358979;
  if (angle < 0.0) angle += 360.0;
  return angle;
}

void ModelDrawContours(DrawContext& ctx) {
  RunOperation(ctx.ui, "ModelDrawContours", [&] {
    if (!ctx.state.layers.contours) return;
    {
      Statement st = ctx.db.Prepare("select CONTOURShow from Model");
      if (!st.Step() || !(st.GetDouble(0) > 0.0)) return;
    }
    const std::filesystem::path file = SolverFile(ctx, ".CTR");
    if (file.empty()) return;
    const std::vector<ContourPolyline> lines = ReadContourFile(file);

    const WorldWindow& w = ctx.state.Window;
    const double mx = 0.04 * (w.Right - w.Left);
    const double my = 0.04 * (w.Top - w.Bottom);
    const double lx1 = std::min(w.Left, w.Right) + std::abs(mx);
    const double lx2 = std::max(w.Left, w.Right) - std::abs(mx);
    const double ly1 = std::min(w.Bottom, w.Top) + std::abs(my);
    const double ly2 = std::max(w.Bottom, w.Top) - std::abs(my);
    const DisplayOptions& o = ctx.state.options;
    const ModelFrame& f = ctx.state.frame;

    // World units per device pixel, to size the labels' boxes.
    const double perPixel = ctx.g.vgGDIUnitsPerPixel() / 100.0;
    // Half the contour pen's width in pixels, as the layer sizes it from points.
    const double penHalf =
        0.5 * std::max(1.0, std::trunc(ctx.g.State().PixelsPerInchY * o.ContourWidth / 72.0));

    std::vector<double> xs, ys, px, py;
    for (const ContourPolyline& line : lines) {
      xs.clear();
      ys.clear();
      for (const PlotPoint& p : line.points) {
        xs.push_back(MToW_X(f, p.x));
        ys.push_back(MToW_Y(f, p.y));
      }
      if (xs.size() < 2) continue;
      // The label goes on the first segment whose midpoint is inside the margin.
      std::optional<LabelBox> label;
      std::string text;
      for (std::size_t i = 1; i < xs.size(); ++i) {
        const double cx = 0.5 * (xs[i - 1] + xs[i]);
        const double cy = 0.5 * (ys[i - 1] + ys[i]);
        if (cx < lx1 || cx > lx2 || cy < ly1 || cy > ly2) continue;
        text = FormatNumber(line.level, "###0.0");
        const VGraphGDI::TextSize size =
            ctx.g.TextExtent(text, kContourLabelPoints, kContourLabelFont);
        // A quarter of the text's height clear of it all round, beyond the pen.
        const double pad = 0.25 * size.height + penHalf;
        label = LabelBox{cx,
                         cy,
                         ContourLabelAngle(xs[i] - xs[i - 1], ys[i] - ys[i - 1]),
                         (0.5 * size.width + pad) * perPixel,
                         (0.25 * size.height + pad) * perPixel,
                         (size.height + pad) * perPixel};
        break;
      }
      if (!label) {
        draw::DrawWorldPolyline(ctx, xs, ys, o.ContourColor, o.ContourWidth, o.ContourType);
        continue;
      }
      std::vector<std::vector<WorldPoint>> pieces = SplitAroundBox(xs, ys, *label);
      // A line hardly larger than its label (a small closed contour) would all but
      // vanish under it: it is drawn whole, as it was before labels had gaps.
      if (Length(pieces) < 0.5 * Length({Points(xs, ys)})) pieces = {Points(xs, ys)};
      for (const std::vector<WorldPoint>& piece : pieces) {
        px.clear();
        py.clear();
        for (const WorldPoint& p : piece) {
          px.push_back(p.x);
          py.push_back(p.y);
        }
        draw::DrawWorldPolyline(ctx, px, py, o.ContourColor, o.ContourWidth, o.ContourType);
      }
      ctx.g.vgGDIWorldText(label->x, label->y, text, kContourLabelFont, kContourLabelPoints,
                           o.ContourColor, label->angle, 1, false);
    }
  });
}

std::vector<PathMark> TimeMarks(const std::vector<PathPoint>& path, double step) {
  std::vector<PathMark> marks;
  if (path.size() < 2 || !(step > 0.0)) return marks;
  double t = step;
  for (std::size_t i = 1; i < path.size(); ++i) {
    const PathPoint& a = path[i - 1];
    const PathPoint& b = path[i];
    if (b.value1 < a.value1) continue;  // time never runs back along a path
    while (t <= b.value1) {
      if (t >= a.value1) {
        const double span = b.value1 - a.value1;
        const double f = span > 0.0 ? (t - a.value1) / span : 0.0;
        marks.push_back({a.x + f * (b.x - a.x), a.y + f * (b.y - a.y), 0});
      }
      t += step;
    }
  }
  return marks;
}

std::vector<PathMark> ElevationMarks(const std::vector<PathPoint>& path, double step) {
  std::vector<PathMark> marks;
  if (path.size() < 2 || !(step > 0.0)) return marks;
  for (std::size_t i = 1; i < path.size(); ++i) {
    const PathPoint& a = path[i - 1];
    const PathPoint& b = path[i];
    const double za = a.value2, zb = b.value2;
    if (za == zb) continue;
    auto at = [&](double z, int direction) {
      const double f = (z - za) / (zb - za);
      marks.push_back({a.x + f * (b.x - a.x), a.y + f * (b.y - a.y), direction});
    };
    if (zb > za) {
      // Upward: the multiples above the first point up to and including the second.
      for (double k = std::floor(za / step) + 1.0; k * step <= zb; k += 1.0) at(k * step, 1);
    } else {
      // Downward: the multiples below the first point down to the second.
      for (double k = std::ceil(za / step) - 1.0; k * step >= zb; k -= 1.0) at(k * step, -1);
    }
  }
  return marks;
}

std::string PrintZones(const std::vector<std::string>& items) {
  std::string line;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) {
      const std::size_t zone = (line.size() / 14 + 1) * 14;
      line.append(zone - line.size(), ' ');
    }
    line += items[i];
  }
  return line;
}

namespace {

std::string PrintNumber(double v) { return StrNumber(v) + " "; }

}  // namespace

void ModelDrawPathlines(DrawContext& ctx) {
  RunOperation(ctx.ui, "ModelDrawPathlines", [&] {
    if (!ctx.state.layers.pathlines) return;
    const std::filesystem::path file = SolverFile(ctx, ".PTH");
    if (file.empty()) return;
    const std::vector<Pathline> paths = ReadPathFile(file);

    const LayerSwitches& l = ctx.state.layers;
    const DisplayOptions& o = ctx.state.options;
    const ModelFrame& f = ctx.state.frame;
    const std::filesystem::path dir = file.parent_path();
    std::ofstream tfile(dir / "TICMARKST.TIC", std::ios::binary | std::ios::trunc);
    std::ofstream zfile(dir / "TICMARKSZ.TIC", std::ios::binary | std::ios::trunc);
    if (!tfile || !zfile)
      throw Error("Cannot create the mark files in " + dir.string(), error_number::kFileNotFound);

    std::vector<PathPoint> world;
    std::vector<double> xs, ys;
    for (const Pathline& path : paths) {
      if (path.points.size() < 2) continue;
      world.clear();
      xs.clear();
      ys.clear();
      for (const PathPoint& p : path.points) {
        PathPoint w = p;
        w.x = MToW_X(f, p.x);
        w.y = MToW_Y(f, p.y);
        world.push_back(w);
        xs.push_back(w.x);
        ys.push_back(w.y);
      }
      if (l.showPaths)
        draw::DrawWorldPolyline(ctx, xs, ys, o.PathlineColor, o.PathlineWidth, o.PathlineType);
      if (l.timeMarkStep > 0.0) {
        for (const PathMark& m : TimeMarks(world, l.timeMarkStep)) {
          tfile << PrintZones({PrintNumber(m.x), PrintNumber(m.y)}) << "\r\n";
          ctx.g.vgGDIMarker(m.x, m.y, 5, o.PathlineColor, 1, 0.0, 1.0);
        }
      }
      if (l.elevationMarkStep > 0.0) {
        for (const PathMark& m : ElevationMarks(world, l.elevationMarkStep)) {
          zfile << PrintZones({PrintNumber(m.x), PrintNumber(m.y),
                               PrintNumber(static_cast<double>(m.direction))})
                << "\r\n";
          ctx.g.vgGDIMarker(m.x, m.y, 7, o.PathlineColor, 1, 0.0, 0.5);
        }
      }
    }
  });
}

}  // namespace tarno
