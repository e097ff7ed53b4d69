// The graphics layer: the one drawing layer of the map.
//
// Everything drawn on the map (grid, base maps, elements, contours, pathlines,
// results, labels) goes through one VGraphGDI. It keeps no objects: only the
// transformation between the three coordinate spaces and the surface it is bound
// to:
//   world       64-bit floats in the base map's units, Y upward;
//   hundredths  32-bit integers, world x 100 rounded (the storage of base maps);
//   device      32-bit integer pixels of the surface, Y downward.
// vgGDIInitObject binds a screen surface (an image of the map) and corrects the
// window to the surface's aspect, so that world units are square; vgGDIInitPrinter
// binds a page and fits the window into it. The last init wins.
//
// Point symbols and text are measured in points (SymbolUnit: ten points in device
// pixels), never in world units: they keep their size at every zoom.
//
// Rounding is to nearest with ties to even, as a 64-bit float stored into a 32-bit
// integer. Sums that leave 32 bits throw OverflowError; the failures the layer
// reports itself (grid spacing, the zoom limit, text) go through the UserInterface.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/ui_port.h"
#include "display/canvas.h"

namespace tarno {

class UserInterface;

// A map window in world units: Left, Right, Top, Bottom (Bottom below Top).
struct WorldWindow {
  double Left = 0.0;
  double Right = 0.0;
  double Top = 0.0;
  double Bottom = 0.0;
  friend bool operator==(const WorldWindow&, const WorldWindow&) = default;
};

// The texts of the layer's own messages.
namespace vgraph_text {
inline constexpr const char* kIllegalValueTitle = "Illegal Value";
inline constexpr const char* kIllegalSpacing = "Internal Error in vgGDIInitObject -- illegal grid spacing!";
inline constexpr const char* kWindowRangeText = "Error while initializing new window: Window out of range!";
inline constexpr const char* kWindowRangeCause =
    "Likely cause: One or more imported test points or wells with incorrect coordinates.";
inline constexpr const char* kInitErrorText = "Error in vgGDIInitObject, error number = ";
inline constexpr const char* kErrorDescription = "Error Description = ";
inline constexpr const char* kGdiErrorTitle = "Internal GDI Error";
inline constexpr const char* kClipErrorText = "vgGDISetClipRegion cannot delete region";
inline constexpr const char* kCantZoomTitle = "Can't Zoom";
inline constexpr const char* kCantZoomText = "Can't zoom in any further!";
inline constexpr const char* kCantZoomOutText = "Can't zoom out any further!";
// Why a window is refused, the third line of a "Can't Zoom" message.
inline constexpr const char* kTooSmallReason =
    "The map would show less than one hundredth of a unit per pixel.";
inline constexpr const char* kTooLargeReason =
    "The map would reach beyond 21,474,836 units, the limit of its coordinates.";
inline constexpr const char* kDrawTextTitle = "DrawText";
inline constexpr const char* kDrawTextError = "Unhandled error in vgGDItext";
// The title of the messages that carry none of their own (the program's name).
inline constexpr const char* kAppTitle = "TARNO";
}  // namespace vgraph_text

// Whether a window can be drawn on a surface of a size. The hundredths of its
// sides, its width and height must fit 32-bit integers (kTooLarge), and a pixel
// must hold at least one hundredth of a unit (kTooSmall): the hundredth is the
// layer's finest unit, below it the scale of the picture is no longer exact and
// the device coordinates soon overflow. A surface or window of no extent fits:
// there is nothing to draw.
enum class WindowRange { kFits, kTooSmall, kTooLarge };

// The window as the screen init corrects it to a surface's aspect (unchanged for a
// surface or window of no extent).
WorldWindow AspectCorrected(const WorldWindow& window, int deviceWidth, int deviceHeight,
                            int pixelsPerInchX = 96, int pixelsPerInchY = 96);
// The range of the aspect-corrected window on such a surface.
WindowRange CheckWindowRange(const WorldWindow& window, int deviceWidth, int deviceHeight,
                             int pixelsPerInchX = 96, int pixelsPerInchY = 96);
// The smallest window that fits such a surface, around the centre of `window`; the
// window itself when it is already at least that large.
WorldWindow WidenToSmallest(const WorldWindow& window, int deviceWidth, int deviceHeight,
                            int pixelsPerInchX = 96, int pixelsPerInchY = 96);

// The most points vgGDIPolyline and vgGDIPolygon take from world arrays.
inline constexpr int kMaxWorldPolylinePoints = 5000;

class VGraphGDI {
 public:
  // The state, one per process (see Graphics()).
  struct GraphicsState {
    std::int32_t Initialized = 0;
    Canvas* TargetObject = nullptr;
    std::int32_t DefaultStyleFlag = 0;
    std::int32_t DefaultColour = 0;
    std::int32_t DefaultWidth = 0;
    std::int32_t WorldX0 = 0, WorldY0 = 0;
    std::int32_t DeviceX0 = 0, DeviceY0 = 0;
    double Left = 0, Right = 0, Top = 0, Bottom = 0;
    std::int32_t Left100 = 0, Right100 = 0, Top100 = 0, Bottom100 = 0;
    std::int32_t WindowWidth100 = 0, WindowHeight100 = 0;
    std::int32_t WorldX1 = 0, WorldY1 = 0;
    std::int32_t DeviceWidth = 0, DeviceHeight = 0;
    std::int32_t PixelsPerInchX = 96, PixelsPerInchY = 96;
    std::int32_t DeviceYBase = 0;
    std::int32_t SymbolUnit = 0;
    Canvas* Surface = nullptr;
    double GridSpacing = 10.0;
  };

  // Messages go to `ui`; without one they are dropped (batch drawing).
  explicit VGraphGDI(UserInterface* ui = nullptr) : ui_(ui) {}
  void SetUserInterface(UserInterface* ui) { ui_ = ui; }
  UserInterface* UI() const { return ui_; }

  const GraphicsState& State() const { return s_; }
  Canvas* Surface() const { return s_.Surface; }

  // Binding a surface. Both return 0 on success and 1 on a surface or window of no
  // extent. InitObject writes the aspect-corrected window back into `window`.
  // `raisedWindowError` (optional) is set when the screen init overflows.
  int vgGDIInitObject(Canvas& surface, WorldWindow& window, bool showGrid, double gridSpacing,
                      bool* raisedWindowError = nullptr);
  struct Margins {
    double left = 1, right = 1, top = 1, bottom = 1;  // inches
  };
  int vgGDIInitPrinter(Canvas& page, const WorldWindow& window, const Margins& margins,
                       bool showGrid, double gridSpacing);
  void vgGDIEndPrinter(Canvas& page);
  void vgGDIRefresh();

  // Transformations.
  double vgGDIUnitsPerPixel() const;
  DevicePoint vgGDIWorldToDevice(double x, double y) const;               // throws OverflowError
  DevicePoint vgGDIHundredthsToDevice(std::int32_t x, std::int32_t y);    // the zoom limit
  double vgGDIDeviceToWorldX(float pixelX, bool snap) const;
  double vgGDIDeviceToWorldY(float pixelY, bool snap) const;
  bool vgGDIBoxVisible(std::int32_t left, std::int32_t right, std::int32_t top,
                       std::int32_t bottom) const;
  void vgGDISetClipRegion(double x1, double y1, double x2, double y2);

  // Drawing in world coordinates. Arrays are indexed from 0 here; `count` points are
  // taken. vgGDIPolyline's width is in typographic points; the others in pixels.
  void vgGDIPolyline(const double* xs, const double* ys, int count, Colour colour,
                     double widthPoints, int style);
  void vgGDIPolygon(const double* xs, const double* ys, int count, Colour colour, int width,
                    int style, Colour fill);
  void vgGDICircle(double x, double y, double radius, Colour colour, int width, int style);
  void vgGDIMarker(double x, double y, int symbol, Colour colour, int width, double angle,
                   double size);
  void vgGDIWorldText(double x, double y, std::string_view text, std::string_view font,
                      int heightPoints, Colour colour, double angle, int alignment, bool offset);

  // Drawing in hundredths (base maps): no limit on the number of points.
  void vgGDIPolylineL(const std::int32_t* xs, const std::int32_t* ys, int count, Colour colour,
                      int width, int style);
  void vgGDIPolygonL(const std::int32_t* xs, const std::int32_t* ys, int count, Colour colour,
                     int width, int style, Colour fill);
  void vgGDIMarkerL(std::int32_t x, std::int32_t y, int symbol, Colour colour, int width,
                    double angle, double size);

  // An image (rows from the top, pixels 0xAARRGGBB) stretched over a rectangle of
  // the world between (left, bottom) and (right, top); throws OverflowError where
  // the corners leave the device's range.
  void vgGDIWorldImage(double left, double bottom, double right, double top,
                       const std::uint32_t* argb, int imageWidth, int imageHeight);

  // Drawing in device coordinates.
  void vgGDIDeviceImage(int left, int top, int width, int height, const std::uint32_t* argb,
                        int imageWidth, int imageHeight);
  void vgGDIDevicePolyline(std::vector<DevicePoint>& points, int count, Colour colour, int width,
                           int style);
  void vgGDIDevicePolygon(const std::vector<DevicePoint>& points, int count, Colour colour,
                          int width, int style, Colour fill);
  void vgGDIDeviceCircle(DevicePoint centre, int radius, Colour colour, int width, int style,
                         Colour fill);
  void vgGDIDeviceMarker(DevicePoint at, int symbol, Colour colour, int width, double angle,
                         double size);
  void vgGDItext(DevicePoint& at, std::string_view text, int heightPoints, double angle,
                 int alignment, Colour colour, std::string_view font, bool offset);

  // The size in device pixels of a string as vgGDItext draws it on the bound
  // surface: its advance and its height (the font's height in pixels). Zero
  // without a surface.
  struct TextSize {
    int width = 0;
    int height = 0;
  };
  TextSize TextExtent(std::string_view text, int heightPoints, std::string_view font) const;

 private:
  void DrawGrid(bool printer);
  // The grid of the screen or of the page at a spacing; a spacing at or below zero
  // is told and draws nothing, keeping the old spacing.
  void DrawGrid(bool printer, double gridSpacing);
  // The page's frame around the window.
  void DrawFrame();
  // Copies the window into the state with its four bounds in hundredths.
  void CopyWindow(const WorldWindow& window);
  void Diamond(DevicePoint at, int r, std::vector<DevicePoint>& points, bool closed);
  void DeviceLine(DevicePoint a, DevicePoint b, Colour colour, int width);
  // A message through the user interface; dropped when there is none.
  void Message(const std::string& title, const std::vector<std::string>& lines, Icon icon);
  GraphicsState s_;
  UserInterface* ui_ = nullptr;
};

// The process's one graphics layer.
VGraphGDI& Graphics();

}  // namespace tarno
