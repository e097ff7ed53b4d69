// The canvas of the screen and of images: QPainter over a QImage.
//
// Device pixels are the image's logical pixels; on a high-DPI screen the image
// carries a device pixel ratio, so that lines, symbols and text are drawn crisp at
// the physical resolution while the layer counts logical pixels. Drawing is
// anti-aliased. Pixels per inch are the logical ones of the screen (96 offscreen).
#pragma once

#include <QImage>
#include <memory>

#include "display/canvas.h"
#include "display/redraw.h"

class QPainter;

namespace tarno {

class QtCanvas : public Canvas {
 public:
  // Draws on `image`, which must outlive the canvas. dpi: the logical pixels per
  // inch to report (0: the image's own).
  explicit QtCanvas(QImage& image, int dpiX = 0, int dpiY = 0);
  ~QtCanvas() override;

  int Width() const override;
  int Height() const override;
  int PixelsPerInchX() const override;
  int PixelsPerInchY() const override;

  void Polyline(const DevicePoint* points, int count, Colour colour, int width, int style) override;
  void Polygon(const DevicePoint* points, int count, Colour colour, int width, int style,
               Colour fill) override;
  void Circle(int left, int top, int right, int bottom, Colour colour, int width, int style,
              Colour fill) override;
  void Text(DevicePoint at, std::string_view text, int height, int escapement, int alignment,
            Colour colour, std::string_view font) override;
  int TextWidth(std::string_view text, int height, std::string_view font) const override;
  void SetClipRect(DevicePoint a, DevicePoint b) override;
  void ResetClip() override;
  void Clear(Colour background) override;
  void Image(int left, int top, int width, int height, const std::uint32_t* argb, int imageWidth,
             int imageHeight) override;

  // Ends the painter (before the image is copied or saved); drawing starts it again.
  void End();

 private:
  QPainter& Painter();
  QImage& image_;
  int dpiX_, dpiY_;
  std::unique_ptr<QPainter> painter_;
};

// A map surface held as an image (the visible map and the hidden background).
class QtMapSurface : public MapSurface {
 public:
  // `ratio`: the device pixel ratio of the screen.
  explicit QtMapSurface(double ratio = 1.0, int dpiX = 96, int dpiY = 96);
  ~QtMapSurface() override;
  Canvas& GetCanvas() override;
  void Resize(int width, int height) override;
  void CopyImageFrom(MapSurface& other) override;
  // The picture, with the painter ended.
  const QImage& Image();
  void SetDevicePixelRatio(double ratio);

 private:
  QImage image_;
  std::unique_ptr<QtCanvas> canvas_;
  double ratio_;
  int dpiX_, dpiY_;
};

}  // namespace tarno
