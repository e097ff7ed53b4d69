#include "display/qt_canvas.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QImage>

#include "core/error.h"
#include "display/vgraph.h"

namespace tarno {
namespace {

// Fonts need a GUI application; one for the whole runner, whoever makes it first.
void EnsureApplication() {
  if (QCoreApplication::instance() != nullptr) return;
  static int argc = 1;
  static char name[] = "test_display";
  static char* argv[] = {name, nullptr};
  static QGuiApplication app(argc, argv);
}

const Colour kRed = Rgb(255, 0, 0);

QImage WhiteImage(int w, int h, double ratio = 1.0) {
  QImage image(static_cast<int>(w * ratio), static_cast<int>(h * ratio),
               QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(ratio);
  image.fill(Qt::white);
  return image;
}

bool IsWhite(const QImage& image, int x, int y) { return image.pixel(x, y) == qRgb(255, 255, 255); }
bool IsRed(const QImage& image, int x, int y) { return image.pixel(x, y) == qRgb(255, 0, 0); }

// The pixels that are not white inside a rectangle of physical pixels.
int Inked(const QImage& image, int x0, int y0, int x1, int y1) {
  int n = 0;
  for (int y = std::max(0, y0); y < std::min(image.height(), y1); ++y)
    for (int x = std::max(0, x0); x < std::min(image.width(), x1); ++x) n += !IsWhite(image, x, y);
  return n;
}

TEST(QtCanvas, SizeAndResolution) {
  QImage image = WhiteImage(120, 80);
  QtCanvas plain(image);
  EXPECT_EQ(plain.Width(), 120);
  EXPECT_EQ(plain.Height(), 80);
  EXPECT_EQ(plain.PixelsPerInchX(), 96);
  EXPECT_EQ(plain.PixelsPerInchY(), 96);
  QtCanvas page(image, 300, 600);
  EXPECT_EQ(page.PixelsPerInchX(), 300);
  EXPECT_EQ(page.PixelsPerInchY(), 600);
  QImage null;
  QtCanvas empty(null);
  EXPECT_EQ(empty.Width(), 0);
  const DevicePoint pts[2] = {{0, 0}, {5, 5}};
  empty.Polyline(pts, 2, kRed, 1, kPenSolid);  // nothing to draw on, no failure
}

TEST(QtCanvas, PolylineColoursItsPixelsOnly) {
  QImage image = WhiteImage(100, 50);
  {
    QtCanvas canvas(image);
    const DevicePoint pts[2] = {{10, 20}, {90, 20}};
    canvas.Polyline(pts, 2, kRed, 3, kPenSolid);
  }
  EXPECT_TRUE(IsRed(image, 50, 20));
  EXPECT_TRUE(IsRed(image, 50, 19));
  EXPECT_TRUE(IsRed(image, 50, 21));
  EXPECT_TRUE(IsWhite(image, 50, 23));
  EXPECT_TRUE(IsWhite(image, 50, 17));
  EXPECT_TRUE(IsWhite(image, 5, 20)) << "flat caps end at the first point";
  EXPECT_EQ(Inked(image, 0, 0, 100, 17), 0);
  EXPECT_EQ(Inked(image, 0, 24, 100, 50), 0);
}

TEST(QtCanvas, ThinnestPenIsOnePixelAndStylesShow) {
  QImage image = WhiteImage(100, 40);
  {
    QtCanvas canvas(image);
    const DevicePoint thin[2] = {{0, 5}, {99, 5}};
    canvas.Polyline(thin, 2, kRed, 0, kPenSolid);
    const DevicePoint dashed[2] = {{0, 15}, {99, 15}};
    canvas.Polyline(dashed, 2, kRed, 1, kPenDash);
    const DevicePoint none[2] = {{0, 25}, {99, 25}};
    canvas.Polyline(none, 2, kRed, 3, kPenNull);
  }
  EXPECT_TRUE(IsRed(image, 50, 5));
  EXPECT_TRUE(IsWhite(image, 50, 4));
  EXPECT_TRUE(IsWhite(image, 50, 6));
  int red = 0, white = 0;
  for (int x = 0; x < 100; ++x) {
    red += IsRed(image, x, 15);
    white += IsWhite(image, x, 15);
  }
  EXPECT_GT(red, 20) << "dashes";
  EXPECT_GT(white, 5) << "gaps";
  EXPECT_EQ(Inked(image, 0, 20, 100, 30), 0) << "the invisible pen";
}

TEST(QtCanvas, DiscFilledAndCircleOutlined) {
  QImage image = WhiteImage(100, 50);
  {
    QtCanvas canvas(image);
    canvas.Circle(10, 10, 30, 30, kRed, 1, kPenSolid, kRed);       // disc around (20, 20)
    canvas.Circle(60, 10, 80, 30, kRed, 1, kPenSolid, -1);         // ring around (70, 20)
    canvas.Circle(40, 40, 44, 44, Rgb(0, 0, 255), 1, kPenSolid, 0);  // filled black
  }
  EXPECT_TRUE(IsRed(image, 20, 20));
  EXPECT_TRUE(IsRed(image, 14, 20));
  EXPECT_TRUE(IsWhite(image, 8, 20));
  EXPECT_TRUE(IsWhite(image, 20, 8));
  EXPECT_TRUE(IsWhite(image, 70, 20)) << "the outline leaves the middle";
  EXPECT_GT(Inked(image, 79, 18, 82, 23), 0) << "the ring at radius 10";
  EXPECT_EQ(qRed(image.pixel(42, 42)), 0) << "fill colour 0 is black, not empty";
  EXPECT_EQ(qBlue(image.pixel(42, 42)), 0);
}

TEST(QtCanvas, PolygonFillsAndNegativeFillLeavesItEmpty) {
  QImage image = WhiteImage(100, 50);
  {
    QtCanvas canvas(image);
    const DevicePoint box[4] = {{10, 10}, {30, 10}, {30, 30}, {10, 30}};
    canvas.Polygon(box, 4, Rgb(0, 0, 255), 1, kPenSolid, kRed);
    const DevicePoint open[4] = {{60, 10}, {80, 10}, {80, 30}, {60, 30}};
    canvas.Polygon(open, 4, Rgb(0, 0, 255), 1, kPenSolid, -1);
  }
  EXPECT_TRUE(IsRed(image, 20, 20));
  EXPECT_EQ(image.pixel(10, 20), qRgb(0, 0, 255)) << "outlined with the pen";
  EXPECT_TRUE(IsWhite(image, 70, 20));
  EXPECT_EQ(image.pixel(60, 20), qRgb(0, 0, 255));
}

TEST(QtCanvas, ClipKeepsPixelsOutsideAndClearRemovesIt) {
  QImage image = WhiteImage(60, 40);
  QtCanvas canvas(image);
  canvas.SetClipRect({40, 30}, {20, 10});  // corners in any order
  const DevicePoint all[4] = {{0, 0}, {59, 0}, {59, 39}, {0, 39}};
  canvas.Polygon(all, 4, kRed, 1, kPenSolid, kRed);
  canvas.End();
  EXPECT_TRUE(IsRed(image, 20, 10));
  EXPECT_TRUE(IsRed(image, 39, 29));
  EXPECT_TRUE(IsWhite(image, 40, 20)) << "the right edge is outside";
  EXPECT_TRUE(IsWhite(image, 19, 20));
  EXPECT_TRUE(IsWhite(image, 30, 30)) << "the bottom edge is outside";
  EXPECT_TRUE(IsWhite(image, 30, 9));
  EXPECT_EQ(Inked(image, 0, 0, 60, 40), 20 * 20);

  // A clip lasts across End until reset; Clear drops it and fills everything.
  canvas.SetClipRect({0, 0}, {10, 10});
  canvas.Clear(Rgb(0, 255, 0));
  canvas.Polygon(all, 4, kRed, 1, kPenSolid, kRed);
  canvas.End();
  EXPECT_TRUE(IsRed(image, 50, 35));

  canvas.Clear(Rgb(0, 255, 0));
  canvas.SetClipRect({0, 0}, {10, 10});
  canvas.ResetClip();
  canvas.Polygon(all, 4, kRed, 1, kPenSolid, kRed);
  canvas.End();
  EXPECT_TRUE(IsRed(image, 50, 35));
}

TEST(QtCanvas, ImageIsStretchedIntoItsBoxAndNoDataLeavesTheSurface) {
  QImage image = WhiteImage(60, 40);
  {
    QtCanvas canvas(image);
    // Two pixels, red and no-data, over a box of 20 by 10 at (10, 10): each pixel
    // becomes a sharp block of 10 by 10.
    const std::uint32_t pixels[2] = {0xFFFF0000u, 0x00000000u};
    canvas.Image(10, 10, 20, 10, pixels, 2, 1);
    // Clipped like the other figures.
    canvas.SetClipRect({0, 30}, {5, 40});
    const std::uint32_t blue = 0xFF0000FFu;
    canvas.Image(0, 30, 10, 10, &blue, 1, 1);
  }
  EXPECT_TRUE(IsRed(image, 10, 10));
  EXPECT_TRUE(IsRed(image, 19, 19));
  EXPECT_TRUE(IsWhite(image, 20, 15));  // the no-data pixel
  EXPECT_TRUE(IsWhite(image, 29, 19));
  EXPECT_TRUE(IsWhite(image, 9, 10));
  EXPECT_TRUE(IsWhite(image, 10, 20));
  EXPECT_EQ(image.pixel(2, 35), qRgb(0, 0, 255));
  EXPECT_TRUE(IsWhite(image, 7, 35));
}

TEST(QtCanvas, HighDpiImageDrawsAtDoubleResolution) {
  QImage image = WhiteImage(100, 50, 2.0);
  ASSERT_EQ(image.width(), 200);
  QtCanvas canvas(image);
  EXPECT_EQ(canvas.Width(), 100);
  EXPECT_EQ(canvas.Height(), 50);
  const DevicePoint pts[2] = {{10, 20}, {90, 20}};
  canvas.Polyline(pts, 2, kRed, 1, kPenSolid);
  canvas.End();
  // Logical row 20 is physical rows 40 and 41, both fully covered: crisp.
  EXPECT_TRUE(IsRed(image, 100, 40));
  EXPECT_TRUE(IsRed(image, 100, 41));
  EXPECT_TRUE(IsWhite(image, 100, 39));
  EXPECT_TRUE(IsWhite(image, 100, 42));
  EXPECT_TRUE(IsWhite(image, 18, 40)) << "starts at logical 10, physical 20";
}

TEST(QtCanvas, TextStandsOnTheBaselineAndFollowsTheAlignment) {
  EnsureApplication();
  QImage image = WhiteImage(200, 200);
  QtCanvas canvas(image);
  canvas.Text({100, 40}, "HHHH", 20, 0, kAlignLeft + kAlignBaseline, 0, "Arial");
  canvas.End();
  EXPECT_GT(Inked(image, 100, 20, 200, 40), 40) << "above the baseline, right of the point";
  EXPECT_EQ(Inked(image, 0, 0, 99, 200), 0) << "nothing left of the point";
  EXPECT_EQ(Inked(image, 0, 42, 200, 200), 0) << "nothing below the baseline";

  canvas.Clear(Rgb(255, 255, 255));
  canvas.Text({100, 40}, "HHHH", 20, 0, kAlignRight + kAlignBaseline, 0, "Arial");
  canvas.End();
  EXPECT_GT(Inked(image, 0, 20, 100, 40), 40);
  EXPECT_EQ(Inked(image, 102, 0, 200, 200), 0) << "right-aligned ends at the point";

  canvas.Clear(Rgb(255, 255, 255));
  canvas.Text({100, 40}, "HHHH", 20, 0, kAlignCentre + kAlignBaseline, 0, "Times New Roman");
  canvas.End();
  EXPECT_GT(Inked(image, 70, 20, 100, 40), 10);
  EXPECT_GT(Inked(image, 100, 20, 130, 40), 10);
}

TEST(QtCanvas, TextWidthIsTheInkedWidthOfTheString) {
  EnsureApplication();
  QImage image = WhiteImage(300, 100);
  QtCanvas canvas(image);
  const int width = canvas.TextWidth("1234.5", 20, "Arial");
  canvas.Text({50, 60}, "1234.5", 20, 0, kAlignLeft + kAlignBaseline, 0, "Arial");
  canvas.End();
  // The ink lies within the measured advance, and fills most of it.
  EXPECT_EQ(Inked(image, 50 + width + 1, 0, 300, 100), 0);
  EXPECT_GT(Inked(image, 50 + width * 3 / 4, 30, 50 + width, 62), 0);
  EXPECT_GT(canvas.TextWidth("1234.56", 20, "Arial"), width);
  EXPECT_EQ(canvas.TextWidth("", 20, "Arial"), 0);
}

TEST(QtCanvas, TextRotatesCounterClockwise) {
  EnsureApplication();
  QImage image = WhiteImage(200, 200);
  QtCanvas canvas(image);
  canvas.Text({100, 150}, "HHHH", 20, 900, kAlignLeft + kAlignBaseline, kRed, "Courier New");
  canvas.End();
  // Upward from the point, the letters standing to its left.
  EXPECT_GT(Inked(image, 80, 90, 101, 150), 40);
  EXPECT_EQ(Inked(image, 0, 152, 200, 200), 0);
  EXPECT_EQ(Inked(image, 103, 0, 200, 200), 0);
}

TEST(QtMapSurface, ResizeCopyAndImage) {
  QtMapSurface map(2.0, 120, 120);
  QtMapSurface map2(2.0);
  map.Resize(50, 30);
  map2.Resize(50, 30);
  Canvas& c = map2.GetCanvas();
  EXPECT_EQ(c.Width(), 50);
  EXPECT_EQ(c.Height(), 30);
  EXPECT_EQ(map.GetCanvas().PixelsPerInchX(), 120);
  EXPECT_EQ(map2.Image().size(), QSize(100, 60));
  EXPECT_DOUBLE_EQ(map2.Image().devicePixelRatio(), 2.0);

  c.Circle(5, 5, 25, 25, kRed, 1, kPenSolid, kRed);  // the painter stays open
  map.CopyImageFrom(map2);
  EXPECT_TRUE(IsRed(map.Image(), 30, 30));
  // Drawing on the copy leaves the original as it was.
  map.GetCanvas().Clear(Rgb(0, 0, 255));
  EXPECT_TRUE(IsRed(map2.Image(), 30, 30));
  EXPECT_EQ(map.Image().pixel(30, 30), qRgb(0, 0, 255));

  map2.Resize(40, 20);
  EXPECT_EQ(Inked(map2.Image(), 0, 0, 80, 40), 0) << "a resize keeps nothing";
  map2.SetDevicePixelRatio(1.0);
  map2.Resize(40, 20);
  EXPECT_EQ(map2.Image().size(), QSize(40, 20));
}

TEST(QtMapSurface, CopiesOnlyImageSurfaces) {
  class Other : public MapSurface {
   public:
    Canvas& GetCanvas() override { return canvas; }
    void Resize(int, int) override {}
    void CopyImageFrom(MapSurface&) override {}
    RecordingCanvas canvas;
  } other;
  QtMapSurface map;
  EXPECT_THROW(map.CopyImageFrom(other), Error);
}

TEST(QtCanvas, UnderTheGraphicsLayer) {
  QImage image = WhiteImage(200, 100);
  QtCanvas canvas(image);
  VGraphGDI layer;
  WorldWindow w{0, 2000, 1000, 0};  // ten units a pixel
  ASSERT_EQ(layer.vgGDIInitObject(canvas, w, false, 100), 0);
  layer.vgGDIMarker(500, 500, 5, kRed, 1, 0, 1);  // a disc of radius 2 at (50, 50)
  const double xs[2] = {1000, 1800};
  const double ys[2] = {200, 200};
  layer.vgGDIPolyline(xs, ys, 2, kRed, 3.0, kPenSolid);  // 4 pixels at 96 dpi, row 80
  canvas.End();
  EXPECT_TRUE(IsRed(image, 50, 50));
  EXPECT_TRUE(IsWhite(image, 55, 50));
  EXPECT_TRUE(IsRed(image, 140, 80));
  EXPECT_TRUE(IsWhite(image, 140, 84));
}

}  // namespace
}  // namespace tarno
