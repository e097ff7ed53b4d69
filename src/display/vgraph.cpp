#include "display/vgraph.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <string>

#include "core/error.h"
#include "core/rounding.h"
#include "core/ui_port.h"

namespace tarno {
namespace {

// The classic run-time error of an index outside an array.
constexpr int kSubscriptOutOfRange = 9;

constexpr double kPi = 3.14159265358979;

// A 32-bit sum or difference that must not leave 32 bits.
std::int32_t Checked(std::int64_t value) {
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max())
    throw OverflowError("Overflow: " + std::to_string(value) + " does not fit a 32-bit integer");
  return static_cast<std::int32_t>(value);
}
std::int32_t Add(std::int32_t a, std::int32_t b) {
  return Checked(static_cast<std::int64_t>(a) + b);
}
std::int32_t Sub(std::int32_t a, std::int32_t b) {
  return Checked(static_cast<std::int64_t>(a) - b);
}
std::int32_t Mul(std::int32_t a, std::int32_t b) {
  return Checked(static_cast<std::int64_t>(a) * b);
}

// A float division that fails on a zero divisor as the classic run time does.
double Divide(double a, double b) {
  if (b == 0.0) throw Error("Division by zero", error_number::kDivisionByZero);
  return a / b;
}

// The text alignment flags of the layer's alignment codes: 0 left, 1 and 4 centre,
// 2 right, anything else left; the baseline flag always.
int AlignmentFlags(int alignment) {
  int flags = kAlignLeft;
  if (alignment == 1 || alignment == 4)
    flags = kAlignCentre;
  else if (alignment == 2)
    flags = kAlignRight;
  return flags + kAlignBaseline;
}

// Keeps world units square on the device: the window grows in the direction in
// which it is too small for the surface, around its centre.
void CorrectAspect(WorldWindow& window, double inchesX, double inchesY) {
  const double scaleX = std::abs(window.Right - window.Left) / inchesX;
  const double scaleY = std::abs(window.Top - window.Bottom) / inchesY;
  if (scaleX <= scaleY) {
    const double h = window.Top - window.Bottom;
    const double c = (window.Left + window.Right) * 0.5;
    window.Right = c + h * 0.5 * inchesX / inchesY;
    window.Left = c - h * 0.5 * inchesX / inchesY;
  } else {
    const double w = window.Right - window.Left;
    const double c = (window.Top + window.Bottom) * 0.5;
    window.Top = c + w * 0.5 * inchesY / inchesX;
    window.Bottom = c - w * 0.5 * inchesY / inchesX;
  }
}

// True when a value in hundredths, rounded, fits a 32-bit integer.
bool FitsHundredths(double hundredths) {
  return std::isfinite(hundredths) &&
         std::nearbyint(hundredths) >= std::numeric_limits<std::int32_t>::min() &&
         std::nearbyint(hundredths) <= std::numeric_limits<std::int32_t>::max();
}

bool NoExtent(const WorldWindow& w, int deviceWidth, int deviceHeight, int ppiX, int ppiY) {
  return deviceWidth <= 0 || deviceHeight <= 0 || ppiX <= 0 || ppiY <= 0 || w.Left == w.Right ||
         w.Top == w.Bottom;
}

}  // namespace

WorldWindow AspectCorrected(const WorldWindow& window, int deviceWidth, int deviceHeight,
                            int pixelsPerInchX, int pixelsPerInchY) {
  WorldWindow w = window;
  if (NoExtent(w, deviceWidth, deviceHeight, pixelsPerInchX, pixelsPerInchY)) return w;
  CorrectAspect(w, static_cast<double>(deviceWidth) / pixelsPerInchX,
                static_cast<double>(deviceHeight) / pixelsPerInchY);
  return w;
}

WindowRange CheckWindowRange(const WorldWindow& window, int deviceWidth, int deviceHeight,
                             int pixelsPerInchX, int pixelsPerInchY) {
  if (NoExtent(window, deviceWidth, deviceHeight, pixelsPerInchX, pixelsPerInchY))
    return WindowRange::kFits;
  const WorldWindow w =
      AspectCorrected(window, deviceWidth, deviceHeight, pixelsPerInchX, pixelsPerInchY);
  const double width100 = std::abs(w.Right - w.Left) * 100;
  const double height100 = std::abs(w.Top - w.Bottom) * 100;
  // The sides, the width and height, and the far corners as the init sums them.
  for (double v : {w.Left * 100, w.Right * 100, w.Top * 100, w.Bottom * 100, width100,
                   height100, std::nearbyint(w.Left * 100) + std::nearbyint(width100),
                   std::nearbyint(w.Bottom * 100) + std::nearbyint(height100)}) {
    if (!FitsHundredths(v)) return WindowRange::kTooLarge;
  }
  if (std::nearbyint(width100) < deviceWidth || std::nearbyint(height100) < deviceHeight)
    return WindowRange::kTooSmall;
  return WindowRange::kFits;
}

WorldWindow WidenToSmallest(const WorldWindow& window, int deviceWidth, int deviceHeight,
                            int pixelsPerInchX, int pixelsPerInchY) {
  if (deviceWidth <= 0 || deviceHeight <= 0 || pixelsPerInchX <= 0 || pixelsPerInchY <= 0)
    return window;
  // One hundredth per pixel in both directions, with a little room so that the
  // rounding of the init stays on the right side of the limit.
  const double cx = (window.Left + window.Right) * 0.5;
  const double cy = (window.Top + window.Bottom) * 0.5;
  const double halfW = std::max(std::abs(window.Right - window.Left), (deviceWidth + 1) / 100.0) / 2;
  const double halfH = std::max(std::abs(window.Top - window.Bottom), (deviceHeight + 1) / 100.0) / 2;
  return WorldWindow{cx - halfW, cx + halfW, cy + halfH, cy - halfH};
}

void VGraphGDI::Message(const std::string& title, const std::vector<std::string>& lines,
                        Icon icon) {
  if (ui_ != nullptr) ui_->MessageBox(title, lines, Buttons::OK, icon);
}

// ---------------------------------------------------------------------------
// Binding a surface

int VGraphGDI::vgGDIInitObject(Canvas& surface, WorldWindow& window, bool showGrid,
                               double gridSpacing, bool* raisedWindowError) {
  int result = 0;
  try {
    s_.DefaultStyleFlag = 1;
    s_.DefaultColour = PaletteColour(0);
    s_.DefaultWidth = 0;

    s_.Surface = &surface;
    s_.DeviceWidth = surface.Width();
    s_.DeviceHeight = surface.Height();
    s_.PixelsPerInchX = surface.PixelsPerInchX();
    s_.PixelsPerInchY = surface.PixelsPerInchY();

    const double inchesX = Divide(s_.DeviceWidth, s_.PixelsPerInchX);
    const double inchesY = Divide(s_.DeviceHeight, s_.PixelsPerInchY);
    s_.SymbolUnit = Mul(s_.PixelsPerInchY, 10) / 72;

    if (s_.DeviceWidth == 0 || s_.DeviceHeight == 0 || window.Left == window.Right ||
        window.Top == window.Bottom) {
      result = 1;
    } else {
      CorrectAspect(window, inchesX, inchesY);

      s_.WorldX0 = CLng(window.Left * 100);
      s_.WorldY0 = CLng(window.Bottom * 100);
      s_.DeviceX0 = 0;
      s_.DeviceY0 = 0;
      s_.DeviceYBase = s_.DeviceHeight;
      s_.WindowWidth100 = CLng(std::abs(window.Right - window.Left) * 100);
      s_.WindowHeight100 = CLng(std::abs(window.Top - window.Bottom) * 100);
      s_.WorldX1 = Add(s_.WorldX0, s_.WindowWidth100);
      s_.WorldY1 = Add(s_.WorldY0, s_.WindowHeight100);

      s_.Initialized = 1;
      s_.TargetObject = &surface;
      result = 0;
    }

    CopyWindow(window);
    if (showGrid) DrawGrid(false, gridSpacing);
    else if (gridSpacing > 0) s_.GridSpacing = gridSpacing;
  } catch (const OverflowError&) {
    if (raisedWindowError != nullptr) *raisedWindowError = true;
    Message(vgraph_text::kAppTitle,
            {vgraph_text::kWindowRangeText, vgraph_text::kWindowRangeCause}, Icon::Critical);
  } catch (const UiPortFailure&) {
    throw;  // a test's script, not a drawing failure
  } catch (const Error& e) {
    Message(vgraph_text::kAppTitle,
            {vgraph_text::kInitErrorText + std::to_string(e.number()),
             vgraph_text::kErrorDescription + std::string(e.what())},
            Icon::Critical);
  } catch (const std::exception& e) {
    Message(vgraph_text::kAppTitle,
            {vgraph_text::kInitErrorText + std::to_string(error_number::kNone),
             vgraph_text::kErrorDescription + std::string(e.what())},
            Icon::Critical);
  }
  return result;
}

int VGraphGDI::vgGDIInitPrinter(Canvas& page, const WorldWindow& window, const Margins& margins,
                                bool showGrid, double gridSpacing) {
  s_.DefaultStyleFlag = 1;
  s_.DefaultColour = PaletteColour(0);
  s_.DefaultWidth = 0;
  s_.Surface = &page;

  const int horzRes = page.HorzRes();
  const int vertRes = page.VertRes();
  s_.PixelsPerInchX = page.PixelsPerInchX();
  s_.PixelsPerInchY = page.PixelsPerInchY();
  const int offsetX = page.PhysicalOffsetX();
  const int offsetY = page.PhysicalOffsetY();

  double paperX = Divide(static_cast<double>(horzRes) + 2.0 * offsetX, s_.PixelsPerInchX);
  double paperY = Divide(static_cast<double>(vertRes) + 2.0 * offsetY, s_.PixelsPerInchY);
  s_.SymbolUnit = Mul(s_.PixelsPerInchY, 10) / 72;

  if (horzRes == 0 || vertRes == 0 || window.Left == window.Right || window.Top == window.Bottom)
    return 1;

  // The window stays as it is; the drawing area shrinks to its aspect inside the
  // paper less the margins, and is centred on the printable area.
  paperX = paperX - margins.left - margins.right;
  paperY = paperY - margins.top - margins.bottom;
  const double scaleX = std::abs(window.Right - window.Left) / paperX;
  const double scaleY = std::abs(window.Top - window.Bottom) / paperY;
  const double scale = scaleX <= scaleY ? scaleY : scaleX;

  s_.DeviceWidth = CLng(std::abs(window.Right - window.Left) * s_.PixelsPerInchX / scale);
  s_.DeviceHeight = CLng(std::abs(window.Top - window.Bottom) * s_.PixelsPerInchY / scale);
  s_.WorldX0 = CLng(window.Left * 100);
  s_.WorldY0 = CLng(window.Bottom * 100);
  s_.DeviceYBase = vertRes;
  s_.WindowWidth100 = CLng(std::abs(window.Right - window.Left) * 100);
  s_.WindowHeight100 = CLng(std::abs(window.Top - window.Bottom) * 100);
  s_.WorldX1 = Add(s_.WorldX0, s_.WindowWidth100);
  s_.WorldY1 = Add(s_.WorldY0, s_.WindowHeight100);
  s_.DeviceX0 = CLng(Sub(horzRes, s_.DeviceWidth) * 0.5);
  s_.DeviceY0 = CLng(Sub(vertRes, s_.DeviceHeight) * 0.5);

  CopyWindow(window);

  DrawFrame();
  vgGDISetClipRegion(s_.Left, s_.Bottom, s_.Right, s_.Top);
  if (showGrid) DrawGrid(true, gridSpacing);
  else if (gridSpacing > 0) s_.GridSpacing = gridSpacing;
  DrawFrame();
  return 0;
}

void VGraphGDI::vgGDIEndPrinter(Canvas& page) {
  // A page's Refresh is its end of document: it sends what was drawn to the
  // printer. The state still describes the page until the next screen init.
  page.Refresh();
}

void VGraphGDI::vgGDIRefresh() {
  if (s_.Initialized == 1 && s_.TargetObject != nullptr) s_.TargetObject->Refresh();
}

void VGraphGDI::CopyWindow(const WorldWindow& window) {
  s_.Left = window.Left;
  s_.Right = window.Right;
  s_.Top = window.Top;
  s_.Bottom = window.Bottom;
  s_.Left100 = CLng(s_.Left * 100);
  s_.Right100 = CLng(s_.Right * 100);
  s_.Top100 = CLng(s_.Top * 100);
  s_.Bottom100 = CLng(s_.Bottom * 100);
}

void VGraphGDI::DrawFrame() {
  const double xs[5] = {s_.Left, s_.Left, s_.Right, s_.Right, s_.Left};
  const double ys[5] = {s_.Bottom, s_.Top, s_.Top, s_.Bottom, s_.Bottom};
  vgGDIPolyline(xs, ys, 5, PaletteColour(0), 0, kPenSolid);
}

void VGraphGDI::DrawGrid(bool printer) { DrawGrid(printer, s_.GridSpacing); }

void VGraphGDI::DrawGrid(bool printer, double gridSpacing) {
  if (!(gridSpacing > 0)) {
    Message(vgraph_text::kIllegalValueTitle, {vgraph_text::kIllegalSpacing}, Icon::Critical);
    return;
  }
  s_.GridSpacing = gridSpacing;

  // The screen's grid is dotted light grey with solid axes; on paper all lines are
  // solid, a thin grey with heavier axes.
  const Colour colour = printer ? Rgb(111, 111, 111) : PaletteColour(7);
  const int style = printer ? kPenSolid : kPenDot;
  const double width = printer ? 0.2 : 0.0;
  const double axisWidth = printer ? 0.5 : -1.0;

  const double startX = Int(s_.Left / gridSpacing) * gridSpacing;
  const double startY = Int(s_.Bottom / gridSpacing) * gridSpacing;
  double xs[2];
  double ys[2];

  // The positions are accumulated sums, as the lines have always been placed.
  for (double x = startX; x <= s_.Right; x = x + gridSpacing) {
    xs[0] = xs[1] = x;
    ys[0] = s_.Bottom;
    ys[1] = s_.Top;
    vgGDIPolyline(xs, ys, 2, colour, width, style);
  }
  if (s_.Left < 0 && s_.Right > 0) {
    xs[0] = xs[1] = 0;
    ys[0] = s_.Bottom;
    ys[1] = s_.Top;
    vgGDIPolyline(xs, ys, 2, colour, axisWidth, kPenSolid);
  }
  for (double y = startY; y <= s_.Top; y = y + gridSpacing) {
    xs[0] = s_.Left;
    xs[1] = s_.Right;
    ys[0] = ys[1] = y;
    vgGDIPolyline(xs, ys, 2, colour, width, style);
  }
  if (s_.Bottom < 0 && s_.Top > 0) {
    xs[0] = s_.Left;
    xs[1] = s_.Right;
    ys[0] = ys[1] = 0;
    vgGDIPolyline(xs, ys, 2, colour, axisWidth, kPenSolid);
  }
}

// ---------------------------------------------------------------------------
// Transformations

double VGraphGDI::vgGDIUnitsPerPixel() const {
  return static_cast<double>(s_.WindowWidth100) / s_.DeviceWidth;
}

DevicePoint VGraphGDI::vgGDIWorldToDevice(double x, double y) const {
  DevicePoint p;
  p.x = Add(CLng((x - s_.Left) * 100.0 * s_.DeviceWidth / s_.WindowWidth100), s_.DeviceX0);
  p.y = Sub(Sub(s_.DeviceYBase, CLng((y - s_.Bottom) * 100.0 * s_.DeviceHeight /
                                     s_.WindowHeight100)),
            s_.DeviceY0);
  return p;
}

DevicePoint VGraphGDI::vgGDIHundredthsToDevice(std::int32_t x, std::int32_t y) {
  // The truncation keeps base map lines steady while panning. An overflow here is
  // the zoom limit: it is told once per point and the point stays as far as it was
  // computed. Any other failure skips its statement.
  DevicePoint p;
  try {
    const std::int32_t dx = Sub(x, s_.WorldX0);
    try {
      const double perPixel = Divide(s_.WindowWidth100, s_.DeviceWidth);
      p.x = CLng(Fix(Divide(dx, perPixel)) + s_.DeviceX0);
    } catch (const OverflowError&) {
      throw;
    } catch (const Error&) {
    }
    const std::int32_t dy = Sub(y, s_.WorldY0);
    try {
      const double perPixel = Divide(s_.WindowHeight100, s_.DeviceHeight);
      p.y = CLng(Fix(s_.DeviceYBase - Divide(dy, perPixel)) - s_.DeviceY0);
    } catch (const OverflowError&) {
      throw;
    } catch (const Error&) {
    }
  } catch (const OverflowError& e) {
    Message(vgraph_text::kCantZoomTitle, {vgraph_text::kCantZoomText, "", "\t" + std::string(e.what())},
            Icon::Information);
  }
  return p;
}

double VGraphGDI::vgGDIDeviceToWorldX(float pixelX, bool snap) const {
  double value = 0;
  if (s_.DeviceWidth != 0)
    value = Round(static_cast<double>(pixelX) * s_.WindowWidth100 /
                          (static_cast<double>(s_.DeviceWidth) * 100) +
                      s_.Left,
                  2);
  if (snap && s_.GridSpacing != 0) value = Int(value / s_.GridSpacing + 0.5) * s_.GridSpacing;
  return value;
}

double VGraphGDI::vgGDIDeviceToWorldY(float pixelY, bool snap) const {
  double value = 0;
  if (s_.DeviceHeight != 0)
    value = Round((s_.DeviceYBase - static_cast<double>(pixelY)) * s_.WindowHeight100 /
                          (static_cast<double>(s_.DeviceHeight) * 100) +
                      s_.Bottom,
                  2);
  if (snap && s_.GridSpacing != 0) value = Int(value / s_.GridSpacing + 0.5) * s_.GridSpacing;
  return value;
}

bool VGraphGDI::vgGDIBoxVisible(std::int32_t left, std::int32_t right, std::int32_t top,
                                std::int32_t bottom) const {
  return left <= s_.Right100 && right >= s_.Left100 && top >= s_.Bottom100 &&
         bottom <= s_.Top100;
}

void VGraphGDI::vgGDISetClipRegion(double x1, double y1, double x2, double y2) {
  // The canvas keeps its clip as a rectangle of its own, so there is no region
  // left to delete and the "cannot delete region" failure cannot happen here.
  const DevicePoint a = vgGDIWorldToDevice(x1, y1);
  const DevicePoint b = vgGDIWorldToDevice(x2, y2);
  if (s_.Surface != nullptr) s_.Surface->SetClipRect(a, b);
}

// ---------------------------------------------------------------------------
// World and hundredths figures

void VGraphGDI::vgGDIPolyline(const double* xs, const double* ys, int count, Colour colour,
                              double widthPoints, int style) {
  if (count > kMaxWorldPolylinePoints)
    throw Error("Subscript out of range: " + std::to_string(count) + " points, at most " +
                    std::to_string(kMaxWorldPolylinePoints),
                kSubscriptOutOfRange);
  if (count < 1) return;
  std::vector<DevicePoint> points(count);
  for (int i = 0; i < count; ++i) points[i] = vgGDIWorldToDevice(xs[i], ys[i]);
  // The width is in points: zero and below give the thinnest line of one pixel.
  int penWidth = 1;
  if (widthPoints > 0) penWidth = static_cast<int>(Fix(CLng(s_.PixelsPerInchY * widthPoints) / 72.0));
  vgGDIDevicePolyline(points, count, colour, penWidth, style);
}

void VGraphGDI::vgGDIPolygon(const double* xs, const double* ys, int count, Colour colour,
                             int width, int style, Colour fill) {
  if (count > kMaxWorldPolylinePoints)
    throw Error("Subscript out of range: " + std::to_string(count) + " points, at most " +
                    std::to_string(kMaxWorldPolylinePoints),
                kSubscriptOutOfRange);
  if (count < 1) return;
  std::vector<DevicePoint> points(count);
  for (int i = 0; i < count; ++i) points[i] = vgGDIWorldToDevice(xs[i], ys[i]);
  vgGDIDevicePolygon(points, count, colour, width, style, fill);
}

void VGraphGDI::vgGDICircle(double x, double y, double radius, Colour colour, int width,
                            int style) {
  const DevicePoint centre = vgGDIWorldToDevice(x, y);
  const int r = CLng(radius * 100.0 * s_.DeviceWidth / s_.WindowWidth100);
  vgGDIDeviceCircle(centre, r, colour, width, style, -1);
}

void VGraphGDI::vgGDIMarker(double x, double y, int symbol, Colour colour, int width,
                            double angle, double size) {
  vgGDIDeviceMarker(vgGDIWorldToDevice(x, y), symbol, colour, width, angle, size);
}

void VGraphGDI::vgGDIWorldText(double x, double y, std::string_view text, std::string_view font,
                               int heightPoints, Colour colour, double angle, int alignment,
                               bool offset) {
  DevicePoint at = vgGDIWorldToDevice(x, y);
  vgGDItext(at, text, heightPoints, angle, alignment, colour, font, offset);
}

void VGraphGDI::vgGDIPolylineL(const std::int32_t* xs, const std::int32_t* ys, int count,
                               Colour colour, int width, int style) {
  if (count < 1) return;
  std::vector<DevicePoint> points;
  points.reserve(count);
  for (int i = 0; i < count; ++i) points.push_back(vgGDIHundredthsToDevice(xs[i], ys[i]));
  vgGDIDevicePolyline(points, count, colour, width, style);
}

void VGraphGDI::vgGDIPolygonL(const std::int32_t* xs, const std::int32_t* ys, int count,
                              Colour colour, int width, int style, Colour fill) {
  if (count < 1) return;
  std::vector<DevicePoint> points;
  points.reserve(count);
  for (int i = 0; i < count; ++i) points.push_back(vgGDIHundredthsToDevice(xs[i], ys[i]));
  vgGDIDevicePolygon(points, count, colour, width, style, fill);
}

void VGraphGDI::vgGDIMarkerL(std::int32_t x, std::int32_t y, int symbol, Colour colour, int width,
                             double angle, double size) {
  vgGDIDeviceMarker(vgGDIHundredthsToDevice(x, y), symbol, colour, width, angle, size);
}

void VGraphGDI::vgGDIWorldImage(double left, double bottom, double right, double top,
                                const std::uint32_t* argb, int imageWidth, int imageHeight) {
  const DevicePoint a = vgGDIWorldToDevice(left, top);
  const DevicePoint b = vgGDIWorldToDevice(right, bottom);
  vgGDIDeviceImage(a.x, a.y, b.x - a.x, b.y - a.y, argb, imageWidth, imageHeight);
}

// ---------------------------------------------------------------------------
// Device figures

void VGraphGDI::vgGDIDeviceImage(int left, int top, int width, int height,
                                 const std::uint32_t* argb, int imageWidth, int imageHeight) {
  if (s_.Surface == nullptr || width <= 0 || height <= 0) return;
  s_.Surface->Image(left, top, width, height, argb, imageWidth, imageHeight);
}

void VGraphGDI::vgGDIDevicePolyline(std::vector<DevicePoint>& points, int count, Colour colour,
                                    int width, int style) {
  if (count > static_cast<int>(points.size())) count = static_cast<int>(points.size());
  if (count < 1 || s_.Surface == nullptr) return;
  // A styled pen along the very top row of the surface loses its pattern, so the
  // first point of a non-solid line is kept at least one pixel down.
  if (style != kPenSolid && points[0].y < 1) points[0].y = 1;
  s_.Surface->Polyline(points.data(), count, colour, width, style);
}

void VGraphGDI::vgGDIDevicePolygon(const std::vector<DevicePoint>& points, int count,
                                   Colour colour, int width, int style, Colour fill) {
  if (count > static_cast<int>(points.size())) count = static_cast<int>(points.size());
  if (count < 1 || s_.Surface == nullptr) return;
  s_.Surface->Polygon(points.data(), count, colour, width, style, fill);
}

void VGraphGDI::vgGDIDeviceCircle(DevicePoint centre, int radius, Colour colour, int width,
                                  int style, Colour fill) {
  const std::int32_t left = Sub(centre.x, radius);
  const std::int32_t top = Sub(centre.y, radius);
  const std::int32_t right = Add(centre.x, radius);
  const std::int32_t bottom = Add(centre.y, radius);
  Add(centre.x, radius);  // the figure's start and end point, checked as it always was
  if (s_.Surface == nullptr) return;
  // Filled disc (a chord) for a fill of 0 or more, the outline (an arc) below.
  s_.Surface->Circle(left, top, right, bottom, colour, width, style, fill);
}

void VGraphGDI::Diamond(DevicePoint at, int r, std::vector<DevicePoint>& points, bool closed) {
  points = {{Add(at.x, r), at.y}, {at.x, Add(at.y, r)}, {Sub(at.x, r), at.y}, {at.x, Sub(at.y, r)}};
  if (closed) points.push_back(points[0]);
}

void VGraphGDI::DeviceLine(DevicePoint a, DevicePoint b, Colour colour, int width) {
  std::vector<DevicePoint> line = {a, b};
  vgGDIDevicePolyline(line, 2, colour, width, kPenSolid);
}

void VGraphGDI::vgGDIDeviceMarker(DevicePoint at, int symbol, Colour colour, int width,
                                  double angle, double size) {
  const int u = s_.SymbolUnit;
  const int x = at.x;
  const int y = at.y;
  std::vector<DevicePoint> pts;
  auto cross = [&](int r) {  // the horizontal and the vertical through the point
    DeviceLine({Sub(x, r), y}, {Add(x, r), y}, colour, 2);
    DeviceLine({x, Sub(y, r)}, {x, Add(y, r)}, colour, 2);
  };
  switch (symbol) {
    case 1: {
      const int r = CLng(u * 0.3 * size);
      Diamond(at, r, pts, false);
      vgGDIDevicePolygon(pts, 4, colour, width, kPenSolid, colour);
      break;
    }
    case 2: {
      const int r = CLng(u * 0.3);
      Diamond(at, r, pts, true);
      vgGDIDevicePolyline(pts, 5, colour, width, kPenSolid);
      break;
    }
    case 3: {
      const int r = CLng(u * 0.4);
      vgGDIDeviceCircle(at, r, colour, 2, kPenSolid, -1);
      DeviceLine({Sub(x, r), Add(y, r)}, {Add(x, r), Sub(y, r)}, colour, 2);
      DeviceLine({Sub(x, r), Sub(y, r)}, {Add(x, r), Add(y, r)}, colour, 2);
      break;
    }
    case 4: {
      const int r = CLng(u * 0.4);
      vgGDIDeviceCircle(at, r, colour, 2, kPenSolid, -1);
      cross(r);
      break;
    }
    case 5: {
      const int r = CLng(u * 0.15);
      vgGDIDeviceCircle(at, r, colour, 1, kPenSolid, colour);
      break;
    }
    case 6: {
      const int r = CLng(u * 0.4);
      DeviceLine({Sub(x, r), Sub(y, r)}, {Add(x, r), Add(y, r)}, colour, 2);
      DeviceLine({Add(x, r), Sub(y, r)}, {Sub(x, r), Add(y, r)}, colour, 2);
      break;
    }
    case 7: {
      const int r = CLng(u * 0.4 * size);
      cross(r);
      break;
    }
    case 8: {
      // The direction arrow of the uniform flow: 0 degrees to the right, angles
      // counter-clockwise on the screen.
      const int r = CLng(u * 0.5);
      vgGDIDeviceCircle(at, r, colour, 1, kPenSolid, -1);
      vgGDIDeviceCircle(at, Mul(2, r), colour, 1, kPenSolid, -1);
      const double a = angle * kPi / 180;
      const int tipX = CLng(x + 4.0 * r * std::cos(a));
      const int tipY = CLng(y - 4.0 * r * std::sin(a));
      DeviceLine(at, {tipX, tipY}, colour, 2);
      break;
    }
    case 9: {
      const int r = CLng(u * 0.2);
      vgGDIDeviceCircle(at, r, colour, 1, kPenSolid, -1);
      break;
    }
    case 10: {
      // A small filled diamond with a stem up into a triangle around the point.
      const int r = CLng(u * 0.18);
      Diamond(at, r, pts, false);
      vgGDIDevicePolygon(pts, 4, colour, width, kPenSolid, colour);
      const int s = CLng(u * -1.0 * size);
      const int baseY = CLng(y - s * 0.5);
      std::vector<DevicePoint> stem = {{x, y},
                                       {x, Add(y, s)},
                                       {CLng(x - s * 0.866025), baseY},
                                       {CLng(x + s * 0.866025), baseY},
                                       {x, Add(y, s)}};
      vgGDIDevicePolyline(stem, 5, colour, 1, kPenSolid);
      break;
    }
    case 11: {
      const int r = CLng(u * 0.3);
      Diamond(at, r, pts, false);
      vgGDIDevicePolygon(pts, 4, colour, width, kPenSolid, colour);
      Diamond(at, Mul(2, r), pts, true);
      vgGDIDevicePolyline(pts, 5, colour, width, kPenSolid);
      break;
    }
    default:
      break;  // no such symbol: nothing is drawn
  }
}

void VGraphGDI::vgGDItext(DevicePoint& at, std::string_view text, int heightPoints, double angle,
                          int alignment, Colour colour, std::string_view font, bool offset) {
  try {
    const std::int32_t h = Mul(heightPoints, s_.PixelsPerInchY) / 72;
    if (offset) {
      at.x = Add(at.x, h / 2);
      at.y = Add(at.y, h / 2);
    }
    const std::int32_t escapement = Mul(CLng(angle), 10);
    if (s_.Surface == nullptr) return;
    s_.Surface->Text(at, text, h, escapement, AlignmentFlags(alignment), colour, font);
  } catch (const UiPortFailure&) {
    throw;
  } catch (const std::exception&) {
    Message(vgraph_text::kDrawTextTitle, {vgraph_text::kDrawTextError}, Icon::Critical);
  }
}

VGraphGDI::TextSize VGraphGDI::TextExtent(std::string_view text, int heightPoints,
                                          std::string_view font) const {
  if (s_.Surface == nullptr) return {};
  const std::int32_t h = Mul(heightPoints, s_.PixelsPerInchY) / 72;
  return {s_.Surface->TextWidth(text, h, font), h};
}

VGraphGDI& Graphics() {
  static VGraphGDI graphics;
  return graphics;
}

}  // namespace tarno
