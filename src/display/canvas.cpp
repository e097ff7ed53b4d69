#include "display/canvas.h"

#include "core/error.h"

namespace tarno {

Colour PaletteColour(int index) {
  static constexpr Colour kPalette[16] = {
      Rgb(0, 0, 0),       Rgb(0, 0, 128),     Rgb(0, 128, 0),     Rgb(0, 128, 128),
      Rgb(128, 0, 0),     Rgb(128, 0, 128),   Rgb(128, 128, 0),   Rgb(192, 192, 192),
      Rgb(128, 128, 128), Rgb(0, 0, 255),     Rgb(0, 255, 0),     Rgb(0, 255, 255),
      Rgb(255, 0, 0),     Rgb(255, 0, 255),   Rgb(255, 255, 0),   Rgb(255, 255, 255)};
  if (index < 0 || index > 15)
    throw InvalidArgumentError("colour index " + std::to_string(index) + " is not 0 to 15");
  return kPalette[index];
}

void RecordingCanvas::Polyline(const DevicePoint* points, int count, Colour colour, int width,
                               int style) {
  Op op;
  op.kind = Kind::Polyline;
  op.points.assign(points, points + count);
  op.colour = colour;
  op.width = width;
  op.style = style;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::Polygon(const DevicePoint* points, int count, Colour colour, int width,
                              int style, Colour fill) {
  Op op;
  op.kind = Kind::Polygon;
  op.points.assign(points, points + count);
  op.colour = colour;
  op.width = width;
  op.style = style;
  op.fill = fill;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::Circle(int left, int top, int right, int bottom, Colour colour, int width,
                             int style, Colour fill) {
  Op op;
  op.kind = Kind::Circle;
  op.points = {{left, top}, {right, bottom}};
  op.colour = colour;
  op.width = width;
  op.style = style;
  op.fill = fill;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::Text(DevicePoint at, std::string_view text, int height, int escapement,
                           int alignment, Colour colour, std::string_view font) {
  Op op;
  op.kind = Kind::Text;
  op.points = {at};
  op.text = std::string(text);
  op.font = std::string(font);
  op.height = height;
  op.escapement = escapement;
  op.alignment = alignment;
  op.colour = colour;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::SetClipRect(DevicePoint a, DevicePoint b) {
  Op op;
  op.kind = Kind::Clip;
  op.points = {a, b};
  ops_.push_back(std::move(op));
}

void RecordingCanvas::ResetClip() {
  Op op;
  op.kind = Kind::ResetClip;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::Clear(Colour background) {
  Op op;
  op.kind = Kind::Clear;
  op.colour = background;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::Refresh() {
  Op op;
  op.kind = Kind::Refresh;
  ops_.push_back(std::move(op));
}

void RecordingCanvas::Image(int left, int top, int width, int height, const std::uint32_t* argb,
                            int imageWidth, int imageHeight) {
  Op op;
  op.kind = Kind::Image;
  op.points = {{left, top}, {left + width, top + height}};
  op.imageWidth = imageWidth;
  op.imageHeight = imageHeight;
  if (argb != nullptr && imageWidth > 0 && imageHeight > 0)
    op.pixels.assign(argb, argb + static_cast<std::size_t>(imageWidth) * imageHeight);
  ops_.push_back(std::move(op));
}

int RecordingCanvas::Count(Kind kind) const {
  int n = 0;
  for (const auto& op : ops_) n += op.kind == kind;
  return n;
}

int RecordingCanvas::Count(Kind kind, Colour colour) const {
  int n = 0;
  for (const auto& op : ops_) n += op.kind == kind && op.colour == colour;
  return n;
}

}  // namespace tarno
