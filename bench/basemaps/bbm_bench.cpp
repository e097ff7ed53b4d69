// BBM drawing on a QtCanvas image of 1600 x 1000 pixels. The maps are generated:
// 10,000 lines of 100 vertices each (one million vertices), random walks with
// vertices 25 m apart. Figures, median of BenchRuns(), as wall time and as the
// process's CPU time (the machine may be shared):
//   connect   reading the header and indexing the records;
//   full      coloured lines (data type -100004, width 1) over 80 x 50 km, the
//             whole map in the window (50 m a pixel, so the drawing keeps the
//             vertices a pixel or more apart) -- the target, under 0.3 s;
//   dense     the same lines over 20 x 12.5 km, whole map (12.5 m a pixel: every
//             vertex is drawn, two pixels apart; the image is mostly ink);
//   dlg       DLG roads over 20 x 12.5 km at the closest level: a tenth of them
//             primary roads two pixels wide, route labels on one line in ten;
//   zoom      the full map's window narrowed to a sixteenth (records outside are
//             skipped by their boxes);
//   commands  the full map's lines as a drawing-command stream.
#include <time.h>
#include <unistd.h>

#include <QImage>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "basemaps/bbm.h"
#include "basemaps/bbm_writer.h"
#include "bench.h"
#include "display/qt_canvas.h"
#include "display/vgraph.h"

using namespace tarno;

namespace {

constexpr int kLines = 10000;
constexpr int kVertices = 100;
constexpr double kTargetSeconds = 0.3;

// Forwards to the image's canvas and counts the points of the lines and polygons.
class CountingCanvas : public Canvas {
 public:
  explicit CountingCanvas(QtCanvas& to) : to_(to) {}
  int Width() const override { return to_.Width(); }
  int Height() const override { return to_.Height(); }
  int PixelsPerInchX() const override { return to_.PixelsPerInchX(); }
  int PixelsPerInchY() const override { return to_.PixelsPerInchY(); }
  void Polyline(const DevicePoint* p, int n, Colour c, int w, int s) override {
    points += n;
    to_.Polyline(p, n, c, w, s);
  }
  void Polygon(const DevicePoint* p, int n, Colour c, int w, int s, Colour f) override {
    points += n;
    to_.Polygon(p, n, c, w, s, f);
  }
  void Circle(int l, int t, int r, int b, Colour c, int w, int s, Colour f) override {
    to_.Circle(l, t, r, b, c, w, s, f);
  }
  void Text(DevicePoint at, std::string_view text, int h, int e, int a, Colour c,
            std::string_view font) override {
    to_.Text(at, text, h, e, a, c, font);
  }
  int TextWidth(std::string_view text, int h, std::string_view font) const override {
    return to_.TextWidth(text, h, font);
  }
  void SetClipRect(DevicePoint a, DevicePoint b) override { to_.SetClipRect(a, b); }
  void ResetClip() override { to_.ResetClip(); }
  void Clear(Colour background) override { to_.Clear(background); }
  long long points = 0;

 private:
  QtCanvas& to_;
};

struct Timing {
  double wall = 0;  // seconds
  double cpu = 0;
};

double CpuSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + t.tv_nsec * 1e-9;
}

Timing Median(int runs, const std::function<void()>& work) {
  std::vector<double> walls, cpus;
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    const double cpu = CpuSeconds();
    work();
    cpus.push_back(CpuSeconds() - cpu);
    walls.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(walls.begin(), walls.end());
  std::sort(cpus.begin(), cpus.end());
  return {walls[walls.size() / 2], cpus[cpus.size() / 2]};
}

void Print(const char* name, Timing t, double ink, long long points, const char* note) {
  std::printf("  %-9s %8.1f ms wall %8.1f ms cpu  %5.1f %% ink %8lld points drawn  %s\n", name,
              t.wall * 1000, t.cpu * 1000, ink, points, note);
}

// The walks of the map, in hundredths, over `width` x `height` metres, steps of 25 m.
void MakeWalks(double width, double height, std::vector<std::vector<std::int32_t>>& xs,
               std::vector<std::vector<std::int32_t>>& ys) {
  std::mt19937 rng(20261123);
  const double w100 = width * 100, h100 = height * 100;
  std::uniform_real_distribution<double> startX(0, w100), startY(0, h100), turn(-0.6, 0.6),
      heading(0, 6.283185307);
  xs.assign(kLines, {});
  ys.assign(kLines, {});
  for (int l = 0; l < kLines; ++l) {
    double x = startX(rng), y = startY(rng), a = heading(rng);
    for (int v = 0; v < kVertices; ++v) {
      xs[l].push_back(static_cast<std::int32_t>(x));
      ys[l].push_back(static_cast<std::int32_t>(y));
      a += turn(rng);
      x = std::clamp(x + 2500 * std::cos(a), 0.0, w100);
      y = std::clamp(y + 2500 * std::sin(a), 0.0, h100);
    }
  }
}

std::string WriteColoured(const std::filesystem::path& dir, const char* name, double width,
                          double height, bool commandForm) {
  std::vector<std::vector<std::int32_t>> xs, ys;
  MakeWalks(width, height, xs, ys);
  BbmHeaderFields fields;
  fields.title = "Benchmark lines";
  const std::string path = (dir / name).string();
  if (commandForm) {
    fields.dataType = bbm::kCommands;
    BbmCommandWriter commands(fields);
    commands.Colour(1);
    for (int l = 0; l < kLines; ++l) {
      commands.MoveTo(xs[l][0], ys[l][0]);
      for (int v = 1; v < kVertices; ++v) commands.LineTo(xs[l][v], ys[l][v]);
    }
    commands.End();
    commands.Save(path);
  } else {
    fields.dataType = bbm::kColoured;
    BbmRecordWriter records(fields);
    for (int l = 0; l < kLines; ++l) records.AddLine(l + 1, xs[l], ys[l], {{1, Rgb(0, 0, 160)}});
    records.Save(path);
  }
  return path;
}

std::string WriteRoads(const std::filesystem::path& dir, double width, double height) {
  std::vector<std::vector<std::int32_t>> xs, ys;
  MakeWalks(width, height, xs, ys);
  BbmHeaderFields fields;
  fields.title = "Benchmark roads";
  fields.description = "ROADS";
  fields.dataType = bbm::kAttributed;
  BbmRecordWriter records(fields);
  for (int l = 0; l < kLines; ++l) {
    // Primary roads (201 to 209, two pixels wide) on one line in ten, the rest
    // minor roads (210 to 217).
    std::vector<BbmPair> pairs = {{170, l % 10 == 0 ? 201 + l % 9 : 210 + l % 8}};
    if (l % 10 == 0) pairs.push_back({173, 1 + l % 40});
    records.AddLine(l + 1, xs[l], ys[l], pairs);
  }
  const std::string path = (dir / "roads.bbm").string();
  records.Save(path);
  return path;
}

}  // namespace

int BenchBbm() {
  const int runs = BenchRuns();
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("tarno-bench-bbm-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  int failures = 0;
  try {
    const std::string full = WriteColoured(dir, "full.bbm", 80000, 50000, false);
    const std::string dense = WriteColoured(dir, "dense.bbm", 20000, 12500, false);
    const std::string commands = WriteColoured(dir, "commands.bbm", 80000, 50000, true);
    const std::string roads = WriteRoads(dir, 20000, 12500);

    QImage image(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    QtCanvas qt(image, 96, 96);
    CountingCanvas canvas(qt);
    VGraphGDI g;
    // The share of the image that was drawn on, to see that a figure drew the map.
    auto ink = [&] {
      long long n = 0;
      for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) n += (row[x] & 0xFFFFFF) != 0xFFFFFF;
      }
      return 100.0 * static_cast<double>(n) / (image.width() * image.height());
    };
    std::vector<double> inks;
    std::vector<long long> points;
    auto drawIn = [&](const std::string& path, WorldWindow w) {
      BBMap map;
      map.Connect(path);
      const Timing t = Median(runs, [&] {
        WorldWindow window = w;
        canvas.Clear(Rgb(255, 255, 255));
        g.vgGDIInitObject(canvas, window, false, 10.0);
        map.Draw(g, true, true, true);
        qt.End();
      });
      inks.push_back(ink());
      points.push_back(canvas.points / runs);
      canvas.points = 0;
      return t;
    };
    const Timing connect = Median(runs, [&] {
      BBMap m;
      m.Connect(full);
    });
    const Timing fullTime = drawIn(full, {0, 80000, 50000, 0});
    const Timing denseTime = drawIn(dense, {0, 20000, 12500, 0});
    const Timing dlgTime = drawIn(roads, {0, 20000, 12500, 0});
    const Timing zoomTime = drawIn(full, {30000, 50000, 31250, 18750});
    const Timing commandTime = drawIn(commands, {0, 80000, 50000, 0});

    std::printf("BBM, %d lines x %d vertices (%lld bytes), 1600 x 1000 image, median of %d:\n",
                kLines, kVertices, static_cast<long long>(std::filesystem::file_size(full)), runs);
    std::printf("  connect   %8.1f ms wall %8.1f ms cpu\n", connect.wall * 1000,
                connect.cpu * 1000);
    Print("full", fullTime, inks[0], points[0],
          fullTime.wall < kTargetSeconds ? "(target 300 ms)" : "(target 300 ms) MISSED");
    Print("dense", denseTime, inks[1], points[1], "(every vertex drawn, 2 pixels apart)");
    Print("dlg", dlgTime, inks[2], points[2], "(DLG roads, closest level, labels)");
    Print("zoom", zoomTime, inks[3], points[3], "(a sixteenth of the full map)");
    Print("commands", commandTime, inks[4], points[4], "(the full map as a command stream)");
    if (fullTime.wall >= kTargetSeconds) ++failures;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "BBM benchmark failed: %s\n", e.what());
    ++failures;
  }
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
  return failures;
}
