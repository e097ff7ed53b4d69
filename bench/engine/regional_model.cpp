// The regional benchmark model family (see regional_model.h).
#include "bench/engine/regional_model.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace tarno::engine::bench {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kStep = 200.0;       // segment length
constexpr double kMainBand = 1200.0;  // tributaries end this far from the main river's axis
constexpr int kPerString = 100;  // a river is digitised in strings of at most this many segments
constexpr int kPolygonVertices = 24;  // vertices of an inhomogeneity (2 unknowns each)

// Uniform in [0, 1) from the generator's 32 bits: the same on every standard library.
struct Random {
  std::mt19937 rng;
  explicit Random(unsigned seed) : rng(seed) {}
  double u() { return rng() / 4294967296.0; }
};

// Segment ends in cells of 500 m, to keep wells and polygons away from the rivers.
class SegmentIndex {
 public:
  void add(double x1, double y1, double x2, double y2) {
    const int k = (int)segs_.size();
    segs_.push_back({x1, y1, x2, y2});
    cells_[key(x1, y1)].push_back(k);
    if (key(x2, y2) != key(x1, y1)) cells_[key(x2, y2)].push_back(k);
  }
  // The distance from (x, y) to the nearest segment, looked for within `reach` (<= 1000);
  // returns reach when none is nearer.
  double distance(double x, double y, double reach) const {
    double best = reach;
    const long long cx = cell(x), cy = cell(y);
    for (long long i = cx - 3; i <= cx + 3; ++i)
      for (long long j = cy - 3; j <= cy + 3; ++j) {
        auto it = cells_.find(pack(i, j));
        if (it == cells_.end()) continue;
        for (int k : it->second) best = std::min(best, segDistance(segs_[k], x, y));
      }
    return best;
  }

 private:
  struct Seg {
    double x1, y1, x2, y2;
  };
  static constexpr double kCell = 500.0;
  static long long cell(double v) { return (long long)std::floor(v / kCell); }
  static long long pack(long long i, long long j) { return (i << 32) ^ (j & 0xffffffffLL); }
  static long long key(double x, double y) { return pack(cell(x), cell(y)); }
  static double segDistance(const Seg& s, double x, double y) {
    const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
    const double l2 = dx * dx + dy * dy;
    double t = l2 > 0 ? ((x - s.x1) * dx + (y - s.y1) * dy) / l2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(x - s.x1 - t * dx, y - s.y1 - t * dy);
  }
  std::vector<Seg> segs_;
  std::unordered_map<long long, std::vector<int>> cells_;
};

// A meandering river as its vertices, `count` segments of kStep from (x, y) in the
// direction `dir` (radians), the direction swinging by up to 0.6 rad.
std::vector<std::pair<double, double>> meander(Random& r, double x, double y, double dir,
                                               int count) {
  std::vector<std::pair<double, double>> v{{x, y}};
  const double phase = 2.0 * kPi * r.u();
  const double wave = 30.0 + 20.0 * r.u();  // segments per meander
  for (int k = 0; k < count; ++k) {
    const double a = dir + 0.6 * std::sin(phase + 2.0 * kPi * k / wave) + 0.1 * (r.u() - 0.5);
    x += kStep * std::cos(a);
    y += kStep * std::sin(a);
    v.push_back({x, y});
  }
  return v;
}

}  // namespace

Model MakeRegionalModel(int unknowns, unsigned seed) {
  Random r(seed);
  const int n = std::max(unknowns, 20);
  const double S = 1000.0 * std::sqrt((double)n);  // side of the basin
  const double yc = 0.5 * S;

  Model m;
  m.title = "regional basin, " + std::to_string(n) + " unknowns, seed " + std::to_string(seed);
  m.aquifer.base = 0.0;
  m.aquifer.conductivity = 10.0;
  m.aquifer.thickness = 20.0;
  m.aquifer.porosity = 0.25;
  m.aquifer.hasReference = true;
  m.aquifer.referenceX = -2.0 * S;
  m.aquifer.referenceY = yc;
  m.aquifer.referenceHead = 30.0 + 3e-4 * S;

  const int headWells = n / 200;
  const int polygons = n >= 2000 ? 3 : (n >= 300 ? 1 : 0);
  const int segments = n - 1 - headWells - 2 * kPolygonVertices * polygons;

  SegmentIndex index;
  int stringCount = 0;
  // Adds the river (vertices downstream last) as strings of up to kPerString segments;
  // `head0` is the head at its first vertex, `slope` its fall per metre along it.
  auto addRiver = [&](const std::vector<std::pair<double, double>>& v, double head0, double slope) {
    double along = 0.0;
    for (size_t k = 0; k + 1 < v.size();) {
      LineSinkString ls;
      ls.kind = LineSinkKind::Head;
      ls.resistance = 5.0 + 10.0 * r.u();
      ls.width = 5.0 + 15.0 * r.u();
      ls.label = "RIV" + std::to_string(stringCount++);
      for (int j = 0; j < kPerString && k + 1 < v.size(); ++j, ++k) {
        Segment g;
        g.x1 = v[k].first;
        g.y1 = v[k].second;
        g.x2 = v[k + 1].first;
        g.y2 = v[k + 1].second;
        const double len = std::hypot(g.x2 - g.x1, g.y2 - g.y1);
        g.value = head0 - slope * (along + 0.5 * len);
        along += len;
        g.label = ls.label + "_" + std::to_string(j);
        index.add(g.x1, g.y1, g.x2, g.y2);
        ls.segments.push_back(g);
      }
      m.lineSinks.push_back(std::move(ls));
    }
  };
  auto mainHead = [&](double x) { return 30.0 + 2e-4 * (S - x); };

  // The main river, west to east across the middle of the basin.
  const int mainSegs = std::min(segments, (int)std::ceil(S / kStep * 1.08));
  const auto mainRiver = meander(r, 0.0, yc, 0.0, mainSegs);
  addRiver(mainRiver, mainHead(0.0), 2e-4 * S / (mainSegs * kStep));

  // Tributaries from both sides, each built from the main river outwards and then
  // reversed so that it flows towards the main river.
  const int rest = segments - mainSegs;
  const int fit = std::max(1, (int)((0.5 * S - kMainBand - 500.0) / kStep));
  const int tributaries = rest > 0 ? (rest + fit - 1) / fit : 0;
  const int perSide = (tributaries + 1) / 2;
  const double spacing = S / (perSide + 1);
  std::vector<double> tribX;
  for (int t = 0; t < tributaries; ++t) {
    const int side = t % 2 == 0 ? 1 : -1;
    const int slot = t / 2;
    const double x = spacing * (slot + (side > 0 ? 1.0 : 0.5)) + 0.1 * spacing * (r.u() - 0.5);
    const int count = rest / tributaries + (t < rest % tributaries ? 1 : 0);
    auto v = meander(r, x, yc + side * kMainBand, side * 0.5 * kPi, count);
    std::reverse(v.begin(), v.end());
    const double len = count * kStep;
    addRiver(v, mainHead(x) + 5e-4 * len + 0.5, 5e-4);
    if (side > 0) tribX.push_back(x);
  }

  // A few inhomogeneities with recharge, midway between tributaries of the north side.
  struct Circle {
    double x, y, R;
  };
  std::vector<Circle> circles;
  const double R = std::min(0.25 * spacing, 0.15 * S);
  for (int t = 0; t + 1 < (int)tribX.size() && (int)circles.size() < polygons; ++t) {
    const double x = 0.5 * (tribX[t] + tribX[t + 1]), y = yc + 0.5 * (kMainBand + 0.5 * S);
    bool clear = true;
    for (const auto& ls : m.lineSinks)
      for (const auto& g : ls.segments)
        if (std::hypot(g.x1 - x, g.y1 - y) < R + 300.0) clear = false;
    if (clear) circles.push_back({x, y, R});
  }
  // Small models without room between tributaries: smaller circles wherever they fit.
  for (int tries = 0; tries < 500 && (int)circles.size() < polygons; ++tries) {
    const double x = S * (0.1 + 0.8 * r.u()), y = S * (0.1 + 0.8 * r.u()), rr = std::min(R, 600.0);
    bool clear = index.distance(x, y, 1000.0) >= rr + 300.0;
    for (const auto& c : circles) clear = clear && std::hypot(x - c.x, y - c.y) > c.R + rr + 500.0;
    if (clear) circles.push_back({x, y, rr});
  }
  for (size_t i = 0; i < circles.size() && (int)i < polygons; ++i) {
    const Circle& c = circles[i];
    Inhomogeneity h;
    h.conductivity = i % 2 == 0 ? 25.0 : 4.0;
    h.extraction = -5e-4;  // recharge of 0.5 mm/d
    h.averageHead = mainHead(c.x) + 2.0;
    h.label = "INH" + std::to_string(i);
    for (int k = 0; k < kPolygonVertices; ++k) {
      const double a = 2.0 * kPi * k / kPolygonVertices;
      const double rr = c.R * (1.0 + 0.1 * std::sin(3.0 * a + i));
      h.vertices.push_back(
          {c.x + rr * std::cos(a), c.y + rr * std::sin(a), h.label + "_" + std::to_string(k)});
    }
    m.inhomogeneities.push_back(std::move(h));
  }

  // Wells: head-specified ones (unknowns) and discharge ones (n / 100), at least 150 m
  // from any river and 100 m from any polygon's boundary.
  auto place = [&](double& x, double& y) {
    for (int tries = 0; tries < 1000; ++tries) {
      x = S * (0.05 + 0.9 * r.u());
      y = S * (0.05 + 0.9 * r.u());
      if (index.distance(x, y, 150.0) < 150.0) continue;
      bool nearEdge = false;
      for (const auto& c : circles)
        if (std::fabs(std::hypot(x - c.x, y - c.y) - c.R) < 0.15 * c.R + 100.0) nearEdge = true;
      if (!nearEdge) return;
    }
  };
  for (int i = 0; i < headWells; ++i) {
    Well w;
    place(w.x, w.y);
    w.radius = 0.2;
    w.headSpecified = true;
    w.value = mainHead(w.x) - 1.0 - 2.0 * r.u();
    w.label = "WH" + std::to_string(i);
    m.wells.push_back(w);
  }
  for (int i = 0; i < n / 100; ++i) {
    Well w;
    place(w.x, w.y);
    w.radius = 0.2;
    w.value = 200.0 + 1300.0 * r.u();
    w.label = "WQ" + std::to_string(i);
    m.wells.push_back(w);
  }
  m.window = {true, -0.05 * S, -0.05 * S, 1.05 * S, 1.05 * S};
  return m;
}

namespace {

// Numbers in full precision, so that the file's model is the model in memory.
std::string num(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

}  // namespace

void WriteCommandFile(const Model& m, std::ostream& out, const std::string& name,
                      const std::string& method,
                      const std::vector<std::pair<double, double>>& points) {
  const char* eol = "\r\n";
  out << "* " << m.title << eol << " error error.log" << eol << " message message.log" << eol
      << " echo echo.log" << eol << " bfname " << name << eol << " title " << m.title << eol;
  const Aquifer& a = m.aquifer;
  out << " aquifer" << eol << " base " << num(a.base) << eol << " permeability "
      << num(a.conductivity) << eol << " thickness " << num(a.thickness) << eol << " porosity "
      << num(a.porosity) << eol;
  if (a.hasReference)
    out << " reference " << num(a.referenceX) << ' ' << num(a.referenceY) << ' '
        << num(a.referenceHead) << eol;
  out << " quit" << eol;
  if (m.window.given)
    out << " layout" << eol << " window " << num(m.window.x1) << ' ' << num(m.window.y1) << ' '
        << num(m.window.x2) << ' ' << num(m.window.y2) << eol << " quit" << eol;
  for (bool head : {false, true}) {
    bool any = false;
    for (const Well& w : m.wells) any = any || w.headSpecified == head;
    if (!any) continue;
    out << " well" << eol << (head ? " head" : " discharge") << eol;
    for (const Well& w : m.wells)
      if (w.headSpecified == head)
        out << "  " << num(w.x) << ' ' << num(w.y) << ' ' << num(w.value) << ' ' << num(w.radius)
            << ' ' << w.label << eol;
    out << " quit" << eol;
  }
  if (!m.lineSinks.empty()) {
    out << " linesink" << eol;
    for (const LineSinkString& ls : m.lineSinks) {
      // This family has head-specified strings only.
      out << " head" << eol << " resistance " << num(ls.resistance) << eol << " width "
          << num(ls.width) << " 0" << eol << " depth " << num(ls.depth) << eol;
      for (const Segment& g : ls.segments)
        out << "  " << num(g.x1) << ' ' << num(g.y1) << ' ' << num(g.x2) << ' ' << num(g.y2) << ' '
            << num(g.value) << ' ' << g.label << eol;
    }
    out << " quit" << eol;
  }
  for (const Inhomogeneity& h : m.inhomogeneities) {
    out << " inhomogeneity" << eol << " transmissivity " << num(h.conductivity) << ' '
        << num(h.base) << ' ' << num(h.averageHead) << ' ' << num(h.extraction) << ' '
        << num(h.porosity) << ' ' << h.label << eol;
    for (const Vertex& v : h.vertices)
      out << "  " << num(v.x) << ' ' << num(v.y) << ' ' << v.label << eol;
    out << " quit" << eol;
  }
  out << " time 0" << eol << " solve 1 1 0 1" << (method.empty() ? "" : " " + method) << eol;
  out << " extract" << eol << " file " << name << eol << " y" << eol;
  for (size_t k = 0; k < points.size(); ++k)
    out << "  " << num(points[k].first) << ' ' << num(points[k].second) << " TP_" << k << eol;
  out << " well discharge" << eol << " well head" << eol << " linesink head" << eol << " quit"
      << eol << " stop" << eol;
}

std::map<std::string, double> ExtractHeads(const std::string& path) {
  std::map<std::string, double> h;
  std::ifstream f(path);
  std::string line, section;
  while (std::getline(f, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    if (line[0] == '*') {
      section = line;
      continue;
    }
    if (line[0] == '@' && line.size() > 136) {
      const size_t sp = line.find_last_of(' ');
      h[line.substr(sp + 1)] = std::strtod(line.substr(122, 14).c_str(), nullptr);
      continue;
    }
    const int at = section == "* discharge specified wells"   ? 4
                   : section == "* head specified line sinks" ? 5
                                                              : -1;
    if (at < 0) continue;
    std::vector<std::string> fields;
    std::stringstream s(line);
    for (std::string x; std::getline(s, x, ',');) fields.push_back(x);
    if ((int)fields.size() > at + 1)
      h[fields.back().substr(1)] = std::strtod(fields[at].c_str(), nullptr);
  }
  return h;
}

}  // namespace tarno::engine::bench
