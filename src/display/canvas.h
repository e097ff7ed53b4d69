// The drawing surface under the graphics layer.
//
// The graphics layer (display/vgraph.h) turns world coordinates into device pixels
// and hands every figure to a Canvas in device coordinates. A canvas is one of:
//   QtCanvas       (display/qt_canvas.h): QPainter over a QImage, a widget's image or
//                  a printer page; anti-aliased, measured in logical pixels;
//   RecordingCanvas (below): keeps every call, for the tests of the layer, of the
//                  drawing of elements and of the redraw order.
//
// Colours are 32-bit RGB values packed red + 256 * green + 65536 * blue, as the
// project stores them (an orange of 33023 is red 255, green 128, blue 0).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarno {

using Colour = std::int32_t;

inline constexpr Colour Rgb(int r, int g, int b) {
  return static_cast<Colour>((r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16));
}
inline constexpr int RedOf(Colour c) { return c & 0xFF; }
inline constexpr int GreenOf(Colour c) { return (c >> 8) & 0xFF; }
inline constexpr int BlueOf(Colour c) { return (c >> 16) & 0xFF; }

// The sixteen classic console colours: 0 black, 1 blue, 2 green, 3 cyan, 4 red,
// 5 magenta, 6 brown, 7 light grey, 8 dark grey, 9 bright blue, 10 bright green,
// 11 bright cyan, 12 bright red, 13 bright magenta, 14 yellow, 15 white. An index
// outside 0 to 15 throws InvalidArgumentError.
Colour PaletteColour(int index);

// Pen styles: the classic pen style codes.
enum PenStyle : int {
  kPenSolid = 0,
  kPenDash = 1,
  kPenDot = 2,
  kPenDashDot = 3,
  kPenDashDotDot = 4,
  kPenNull = 5,
};

// Text alignment flags of a canvas: left 0, centre 6, right 2; the layer always adds
// the baseline flag 24, so the point stands on the text's baseline.
inline constexpr int kAlignLeft = 0;
inline constexpr int kAlignRight = 2;
inline constexpr int kAlignCentre = 6;
inline constexpr int kAlignBaseline = 24;

struct DevicePoint {
  std::int32_t x = 0;
  std::int32_t y = 0;
  friend bool operator==(const DevicePoint&, const DevicePoint&) = default;
};

// The operations a surface offers the layer. Widths are in device pixels (0 is the
// thinnest line the surface draws); a negative fill colour means no fill.
class Canvas {
 public:
  virtual ~Canvas() = default;

  // Size in device pixels and the logical pixels per inch.
  virtual int Width() const = 0;
  virtual int Height() const = 0;
  virtual int PixelsPerInchX() const = 0;
  virtual int PixelsPerInchY() const = 0;
  // The printable area and the physical offsets of a page; a screen surface answers
  // its size and 0.
  virtual int HorzRes() const { return Width(); }
  virtual int VertRes() const { return Height(); }
  virtual int PhysicalOffsetX() const { return 0; }
  virtual int PhysicalOffsetY() const { return 0; }

  // An open line through the points.
  virtual void Polyline(const DevicePoint* points, int count, Colour colour, int width,
                        int style) = 0;
  // A closed polygon filled with `fill` (none when negative), outlined with the pen.
  virtual void Polygon(const DevicePoint* points, int count, Colour colour, int width,
                       int style, Colour fill) = 0;
  // The circle inscribed in the box: a filled disc (Chord) when `fill` is 0 or more,
  // the outline alone (Arc) when it is negative.
  virtual void Circle(int left, int top, int right, int bottom, Colour colour, int width,
                      int style, Colour fill) = 0;
  // One string at a point: height in device pixels, escapement in tenths of a degree
  // counter-clockwise, alignment as above (baseline flag included), font face name.
  virtual void Text(DevicePoint at, std::string_view text, int height, int escapement,
                    int alignment, Colour colour, std::string_view font) = 0;
  // The advance of a string in device pixels at a height in device pixels. A
  // surface that cannot measure estimates it from the character count (six tenths
  // of the height each, a little wide for the digits of most faces).
  virtual int TextWidth(std::string_view text, int height, std::string_view font) const {
    (void)font;
    return static_cast<int>(0.6 * height * static_cast<double>(text.size()) + 0.5);
  }
  // The clip rectangle between two device corners given in any order; in force
  // until the next Clear or ResetClip.
  virtual void SetClipRect(DevicePoint a, DevicePoint b) = 0;
  virtual void ResetClip() = 0;
  // Fills the whole surface with a colour and removes the clip.
  virtual void Clear(Colour background) = 0;
  // An image of imageWidth x imageHeight pixels, rows from the top, each pixel
  // 0xAARRGGBB (not premultiplied), drawn scaled into the device rectangle of
  // `width` x `height` pixels whose top left pixel is (left, top). Pixels of alpha
  // 0 leave the surface as it was (an image's no-data). A surface that shows no
  // images (a plotter) draws nothing.
  virtual void Image(int left, int top, int width, int height, const std::uint32_t* argb,
                     int imageWidth, int imageHeight) {
    (void)left, (void)top, (void)width, (void)height, (void)argb, (void)imageWidth,
        (void)imageHeight;
  }
  // Asks the surface to show what was drawn (a widget repaints; an image does
  // nothing).
  virtual void Refresh() {}
};

// A canvas that draws nothing and keeps every call, in order.
class RecordingCanvas : public Canvas {
 public:
  enum class Kind { Polyline, Polygon, Circle, Text, Clip, ResetClip, Clear, Refresh, Image };
  struct Op {
    Kind kind = Kind::Polyline;
    std::vector<DevicePoint> points;  // the figure; a circle's box as two corners; a text's point
    Colour colour = 0;
    int width = 0;
    int style = 0;
    Colour fill = -1;
    std::string text;  // Text: the string
    std::string font;  // Text: the face
    int height = 0;    // Text: device pixels
    int escapement = 0;
    int alignment = 0;
    // Image: the device rectangle is points[0] (top left) and points[1] (one past the
    // bottom right); the image's size and its pixels.
    int imageWidth = 0;
    int imageHeight = 0;
    std::vector<std::uint32_t> pixels;
  };

  RecordingCanvas(int width = 800, int height = 600, int dpiX = 96, int dpiY = 96)
      : width_(width), height_(height), dpiX_(dpiX), dpiY_(dpiY) {}

  int Width() const override { return width_; }
  int Height() const override { return height_; }
  int PixelsPerInchX() const override { return dpiX_; }
  int PixelsPerInchY() const override { return dpiY_; }

  void Polyline(const DevicePoint* points, int count, Colour colour, int width, int style) override;
  void Polygon(const DevicePoint* points, int count, Colour colour, int width, int style,
               Colour fill) override;
  void Circle(int left, int top, int right, int bottom, Colour colour, int width, int style,
              Colour fill) override;
  void Text(DevicePoint at, std::string_view text, int height, int escapement, int alignment,
            Colour colour, std::string_view font) override;
  void SetClipRect(DevicePoint a, DevicePoint b) override;
  void ResetClip() override;
  void Clear(Colour background) override;
  void Refresh() override;
  void Image(int left, int top, int width, int height, const std::uint32_t* argb, int imageWidth,
             int imageHeight) override;

  const std::vector<Op>& Ops() const { return ops_; }
  void ClearOps() { ops_.clear(); }
  // The number of recorded calls of one kind, and of one kind in one colour.
  int Count(Kind kind) const;
  int Count(Kind kind, Colour colour) const;

 private:
  int width_, height_, dpiX_, dpiY_;
  std::vector<Op> ops_;
};

}  // namespace tarno
