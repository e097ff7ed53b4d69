#include "display/qt_canvas.h"

#include <QColor>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>
#include <algorithm>
#include <cmath>

#include "core/error.h"

namespace tarno {
namespace {

constexpr int kDefaultDpi = 96;

QColor ToQColor(Colour c) { return QColor(RedOf(c), GreenOf(c), BlueOf(c)); }

// A pen of the classic style codes. Device coordinates name pixels, so figures are
// drawn through the pixel centres (see Centre); flat caps keep a line's ends where
// its points are, round joins keep thick map lines smooth at their vertices.
QPen MakePen(Colour colour, int width, int style) {
  QPen pen(ToQColor(colour));
  switch (style) {
    case kPenDash: pen.setStyle(Qt::DashLine); break;
    case kPenDot: pen.setStyle(Qt::DotLine); break;
    case kPenDashDot: pen.setStyle(Qt::DashDotLine); break;
    case kPenDashDotDot: pen.setStyle(Qt::DashDotDotLine); break;
    case kPenNull: pen.setStyle(Qt::NoPen); break;
    default: pen.setStyle(Qt::SolidLine); break;
  }
  if (width <= 0) {
    // The thinnest line the surface draws: one pixel whatever the transformation.
    pen.setWidth(1);
    pen.setCosmetic(true);
  } else {
    pen.setWidth(width);
  }
  pen.setCapStyle(Qt::FlatCap);
  pen.setJoinStyle(Qt::RoundJoin);
  return pen;
}

QBrush MakeBrush(Colour fill) {
  if (fill < 0) return QBrush(Qt::NoBrush);
  return QBrush(ToQColor(fill));
}

// The centre of the pixel a device point names.
QPointF Centre(DevicePoint p) { return QPointF(p.x + 0.5, p.y + 0.5); }

QPolygonF ToPolygon(const DevicePoint* points, int count) {
  QPolygonF polygon;
  polygon.reserve(count);
  for (int i = 0; i < count; ++i) polygon.append(Centre(points[i]));
  return polygon;
}

// The faces the project names are those of another platform; each maps to the
// nearest kind of the fonts at hand, and an unknown face falls back to the
// system's sans serif.
QFont MakeFont(std::string_view face, int pixelHeight) {
  const QString name = QString::fromUtf8(face.data(), static_cast<qsizetype>(face.size()));
  const QString lower = name.toLower();
  QFont font;
  if (lower.contains(QLatin1String("courier")) || lower.contains(QLatin1String("mono")) ||
      lower.contains(QLatin1String("consol"))) {
    font.setStyleHint(QFont::Monospace);
    font.setFamilies({name, QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace")});
  } else if (lower.contains(QLatin1String("times")) || lower.contains(QLatin1String("roman")) ||
             lower.contains(QLatin1String("georgia")) ||
             (lower.contains(QLatin1String("serif")) && !lower.contains(QLatin1String("sans")))) {
    font.setStyleHint(QFont::Serif);
    font.setFamilies({name, QStringLiteral("DejaVu Serif"), QStringLiteral("serif")});
  } else {
    font.setStyleHint(QFont::SansSerif);
    font.setFamilies({name, QStringLiteral("DejaVu Sans"), QStringLiteral("sans-serif")});
  }
  font.setPixelSize(std::max(1, pixelHeight));
  return font;
}

}  // namespace

// ---------------------------------------------------------------------------
// QtCanvas

QtCanvas::QtCanvas(QImage& image, int dpiX, int dpiY) : image_(image), dpiX_(dpiX), dpiY_(dpiY) {}

QtCanvas::~QtCanvas() { End(); }

int QtCanvas::Width() const {
  if (image_.isNull()) return 0;
  return static_cast<int>(std::lround(image_.deviceIndependentSize().width()));
}

int QtCanvas::Height() const {
  if (image_.isNull()) return 0;
  return static_cast<int>(std::lround(image_.deviceIndependentSize().height()));
}

int QtCanvas::PixelsPerInchX() const { return dpiX_ > 0 ? dpiX_ : kDefaultDpi; }
int QtCanvas::PixelsPerInchY() const { return dpiY_ > 0 ? dpiY_ : kDefaultDpi; }

QPainter& QtCanvas::Painter() {
  // One painter lives while the canvas draws: beginning a painter per figure is
  // slow. It scales to the image's device pixel ratio by itself.
  if (!painter_) {
    painter_ = std::make_unique<QPainter>(&image_);
    painter_->setRenderHint(QPainter::Antialiasing, true);
    painter_->setRenderHint(QPainter::TextAntialiasing, true);
  }
  return *painter_;
}

void QtCanvas::End() {
  if (painter_) {
    if (painter_->isActive()) painter_->end();
    painter_.reset();
  }
}

void QtCanvas::Polyline(const DevicePoint* points, int count, Colour colour, int width,
                        int style) {
  if (image_.isNull() || count < 1) return;
  QPainter& p = Painter();
  p.setPen(MakePen(colour, width, style));
  p.setBrush(Qt::NoBrush);
  if (count == 1) {
    p.drawPoint(Centre(points[0]));
    return;
  }
  p.drawPolyline(ToPolygon(points, count));
}

void QtCanvas::Polygon(const DevicePoint* points, int count, Colour colour, int width, int style,
                       Colour fill) {
  if (image_.isNull() || count < 1) return;
  QPainter& p = Painter();
  p.setPen(MakePen(colour, width, style));
  p.setBrush(MakeBrush(fill));
  p.drawPolygon(ToPolygon(points, count));
}

void QtCanvas::Circle(int left, int top, int right, int bottom, Colour colour, int width,
                      int style, Colour fill) {
  if (image_.isNull()) return;
  QPainter& p = Painter();
  p.setPen(MakePen(colour, width, style));
  p.setBrush(fill >= 0 ? MakeBrush(fill) : QBrush(Qt::NoBrush));
  p.drawEllipse(QRectF(left + 0.5, top + 0.5, static_cast<double>(right) - left,
                       static_cast<double>(bottom) - top));
}

void QtCanvas::Text(DevicePoint at, std::string_view text, int height, int escapement,
                    int alignment, Colour colour, std::string_view font) {
  if (image_.isNull() || text.empty()) return;
  QPainter& p = Painter();
  const QFont qfont = MakeFont(font, height);
  const QString string = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  // Left-aligned text on its baseline, the layer's usual case, needs no measuring.
  double dx = 0;
  double dy = 0;
  const int horizontal = alignment & kAlignCentre;
  const bool baseline = (alignment & kAlignBaseline) == kAlignBaseline;
  if (horizontal != kAlignLeft || !baseline) {
    const QFontMetricsF metrics(qfont, &image_);
    if (horizontal == kAlignCentre)
      dx = -metrics.horizontalAdvance(string) / 2;
    else if (horizontal == kAlignRight)
      dx = -metrics.horizontalAdvance(string);
    // Without the baseline flag the point is at the top of the text.
    if (!baseline) dy = metrics.ascent();
  }

  p.save();
  p.setFont(qfont);
  p.setPen(ToQColor(colour));
  p.translate(at.x, at.y);
  // Escapement is counter-clockwise in tenths of a degree; device Y grows downward.
  if (escapement != 0) p.rotate(-escapement / 10.0);
  p.drawText(QPointF(dx, dy), string);
  p.restore();
}

int QtCanvas::TextWidth(std::string_view text, int height, std::string_view font) const {
  const QString string = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  const QFontMetricsF metrics(MakeFont(font, height), &image_);
  return static_cast<int>(std::ceil(metrics.horizontalAdvance(string)));
}

void QtCanvas::SetClipRect(DevicePoint a, DevicePoint b) {
  if (image_.isNull()) return;
  // As a rectangular region: the left and top edges belong to it, the right and
  // bottom ones do not.
  const int left = std::min(a.x, b.x);
  const int right = std::max(a.x, b.x);
  const int top = std::min(a.y, b.y);
  const int bottom = std::max(a.y, b.y);
  Painter().setClipRect(QRectF(left, top, static_cast<double>(right) - left,
                               static_cast<double>(bottom) - top),
                        Qt::ReplaceClip);
}

void QtCanvas::ResetClip() {
  if (painter_) painter_->setClipping(false);
}

void QtCanvas::Clear(Colour background) {
  if (image_.isNull()) return;
  QPainter& p = Painter();
  p.setClipping(false);
  p.save();
  p.setCompositionMode(QPainter::CompositionMode_Source);
  p.fillRect(QRectF(QPointF(0, 0), image_.deviceIndependentSize()), ToQColor(background));
  p.restore();
}

void QtCanvas::Image(int left, int top, int width, int height, const std::uint32_t* argb,
                     int imageWidth, int imageHeight) {
  if (image_.isNull() || argb == nullptr || width <= 0 || height <= 0 || imageWidth <= 0 ||
      imageHeight <= 0)
    return;
  // The pixels are wrapped, not copied: the image lives only for this call.
  const QImage source(reinterpret_cast<const uchar*>(argb), imageWidth, imageHeight,
                      static_cast<qsizetype>(imageWidth) * 4, QImage::Format_ARGB32);
  QPainter& p = Painter();
  p.save();
  // A base map image is drawn at the window's pixel size already; when it is
  // stretched (a deep zoom) its pixels stay sharp squares, as an image map shows them.
  p.setRenderHint(QPainter::SmoothPixmapTransform, false);
  p.setRenderHint(QPainter::Antialiasing, false);
  p.drawImage(QRectF(left, top, width, height), source);
  p.restore();
}

// ---------------------------------------------------------------------------
// QtMapSurface

QtMapSurface::QtMapSurface(double ratio, int dpiX, int dpiY)
    : ratio_(ratio > 0 ? ratio : 1.0), dpiX_(dpiX), dpiY_(dpiY) {}

QtMapSurface::~QtMapSurface() = default;

Canvas& QtMapSurface::GetCanvas() {
  if (!canvas_) canvas_ = std::make_unique<QtCanvas>(image_, dpiX_, dpiY_);
  return *canvas_;
}

void QtMapSurface::Resize(int width, int height) {
  if (canvas_) canvas_->End();
  if (width <= 0 || height <= 0) {
    image_ = QImage();
    return;
  }
  image_ = QImage(static_cast<int>(std::lround(width * ratio_)),
                  static_cast<int>(std::lround(height * ratio_)),
                  QImage::Format_ARGB32_Premultiplied);
  image_.setDevicePixelRatio(ratio_);
  image_.fill(Qt::white);
}

void QtMapSurface::CopyImageFrom(MapSurface& other) {
  auto* source = dynamic_cast<QtMapSurface*>(&other);
  if (source == nullptr) throw InvalidArgumentError("a map surface can only copy another image surface");
  if (source == this) return;
  if (canvas_) canvas_->End();
  if (source->canvas_) source->canvas_->End();
  image_ = source->image_;  // shared until one of the two is drawn on
}

const QImage& QtMapSurface::Image() {
  if (canvas_) canvas_->End();
  return image_;
}

void QtMapSurface::SetDevicePixelRatio(double ratio) {
  // Takes effect at the next Resize: the window lays its surfaces out again when
  // it moves to a screen of another ratio.
  ratio_ = ratio > 0 ? ratio : 1.0;
}

}  // namespace tarno
