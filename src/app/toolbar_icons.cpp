#include "app/toolbar_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPolygonF>
#include <cmath>

namespace tarno {

namespace {

constexpr int kSize = 24;

const QColor kInk(40, 40, 40);
const QColor kBlue(30, 90, 200);
const QColor kWater(20, 120, 220);
const QColor kGreen(20, 150, 60);
const QColor kRed(200, 40, 40);

void Magnifier(QPainter& p, const QString& sign) {
  p.setPen(QPen(kInk, 2));
  p.setBrush(QColor(230, 240, 255));
  p.drawEllipse(QRectF(3, 3, 13, 13));
  p.setPen(QPen(kInk, 3, Qt::SolidLine, Qt::RoundCap));
  p.drawLine(QPointF(14.5, 14.5), QPointF(21, 21));
  p.setPen(QPen(kInk, 1.6));
  if (sign.contains('-') || sign.contains('+')) p.drawLine(QPointF(6, 9.5), QPointF(13, 9.5));
  if (sign.contains('+')) p.drawLine(QPointF(9.5, 6), QPointF(9.5, 13));
  if (sign == "win") {
    p.setPen(QPen(kInk, 1, Qt::DashLine));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(6, 6, 7, 7));
  }
  if (sign == "ext") {
    p.setPen(QPen(kInk, 1));
    p.drawLine(QPointF(6, 9.5), QPointF(13, 9.5));
    p.drawLine(QPointF(9.5, 6), QPointF(9.5, 13));
    p.drawPolygon(QPolygonF({QPointF(6, 9.5), QPointF(7.5, 8.5), QPointF(7.5, 10.5)}));
    p.drawPolygon(QPolygonF({QPointF(13, 9.5), QPointF(11.5, 8.5), QPointF(11.5, 10.5)}));
  }
}

void Arrow(QPainter& p, double angleDegrees) {
  p.translate(12, 12);
  p.rotate(angleDegrees);
  p.setPen(Qt::NoPen);
  p.setBrush(kBlue);
  p.drawPolygon(QPolygonF({QPointF(9, 0), QPointF(1, -7), QPointF(1, -3), QPointF(-9, -3),
                           QPointF(-9, 3), QPointF(1, 3), QPointF(1, 7)}));
}

void Page(QPainter& p, bool fold) {
  p.setPen(QPen(kInk, 1.2));
  p.setBrush(Qt::white);
  p.drawPolygon(QPolygonF({QPointF(5, 2), QPointF(15, 2), QPointF(19, 6), QPointF(19, 22),
                           QPointF(5, 22)}));
  if (fold) p.drawPolyline(QPolygonF({QPointF(15, 2), QPointF(15, 6), QPointF(19, 6)}));
}

void Well(QPainter& p, const QColor& c) {
  p.setPen(QPen(c, 2));
  p.setBrush(Qt::NoBrush);
  p.drawEllipse(QRectF(6, 6, 12, 12));
  p.setBrush(c);
  p.drawEllipse(QRectF(10, 10, 4, 4));
}

void Wave(QPainter& p, const QColor& c, bool dots) {
  QPainterPath path(QPointF(2, 14));
  for (int i = 0; i < 4; ++i)
    path.cubicTo(QPointF(2 + i * 5 + 1.5, 8), QPointF(2 + i * 5 + 3.5, 20), QPointF(2 + (i + 1) * 5, 14));
  p.setPen(QPen(c, 2.2));
  p.setBrush(Qt::NoBrush);
  p.drawPath(path);
  if (dots) {
    p.setBrush(kInk);
    p.setPen(Qt::NoPen);
    for (int x : {2, 12, 22}) p.drawEllipse(QPointF(x, 14), 1.8, 1.8);
  }
}

void Draw(QPainter& p, const std::string& key) {
  if (key == "FILENEW") {
    Page(p, true);
    p.setPen(QPen(kGreen, 2));
    p.drawLine(QPointF(9, 14), QPointF(15, 14));
    p.drawLine(QPointF(12, 11), QPointF(12, 17));
  } else if (key == "FILEOPEN") {
    p.setPen(QPen(kInk, 1.2));
    p.setBrush(QColor(240, 200, 80));
    p.drawPolygon(QPolygonF({QPointF(2, 6), QPointF(9, 6), QPointF(11, 8), QPointF(21, 8),
                             QPointF(21, 20), QPointF(2, 20)}));
    p.setBrush(QColor(250, 220, 120));
    p.drawPolygon(QPolygonF({QPointF(5, 11), QPointF(23, 11), QPointF(20, 20), QPointF(2, 20)}));
  } else if (key == "FILEPRINT") {
    p.setPen(QPen(kInk, 1.2));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(7, 3, 10, 7));
    p.setBrush(QColor(180, 180, 180));
    p.drawRect(QRectF(3, 10, 18, 8));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(7, 15, 10, 6));
  } else if (key == "EDITDELETE") {
    p.setPen(QPen(kRed, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(6, 6), QPointF(18, 18));
    p.drawLine(QPointF(18, 6), QPointF(6, 18));
  } else if (key == "EDITMOVEVERTEX") {
    p.setPen(QPen(kInk, 1.5));
    p.drawPolyline(QPolygonF({QPointF(2, 20), QPointF(10, 8), QPointF(22, 14)}));
    p.setBrush(kRed);
    p.drawRect(QRectF(8, 6, 4, 4));
    p.setPen(QPen(kBlue, 1.2, Qt::DashLine));
    p.drawLine(QPointF(10, 8), QPointF(16, 3));
  } else if (key == "EDITREFINE") {
    p.setPen(QPen(kInk, 1.5));
    p.drawPolyline(QPolygonF({QPointF(2, 18), QPointF(12, 6), QPointF(22, 18)}));
    p.setBrush(kInk);
    for (QPointF pt : {QPointF(2, 18), QPointF(7, 12), QPointF(12, 6), QPointF(17, 12), QPointF(22, 18)})
      p.drawRect(QRectF(pt.x() - 1.5, pt.y() - 1.5, 3, 3));
  } else if (key == "EDITPROPERTIES") {
    Page(p, false);
    p.setPen(QPen(kInk, 1.2));
    for (int y : {7, 11, 15, 19}) p.drawLine(QPointF(8, y), QPointF(16, y));
  } else if (key == "ELEMWELL") {
    Well(p, kBlue);
  } else if (key == "ELEMLINESINK") {
    Wave(p, kWater, true);
  } else if (key == "ELEMNOFLOW") {
    p.setPen(QPen(kInk, 3));
    p.drawLine(QPointF(3, 18), QPointF(21, 6));
    p.setPen(QPen(kInk, 1));
    for (int i = 0; i < 5; ++i) p.drawLine(QPointF(5 + i * 4, 16.7 - i * 2.7), QPointF(8 + i * 4, 19.5 - i * 2.7));
  } else if (key == "ELEMINHO") {
    p.setPen(QPen(kGreen, 1.8));
    p.setBrush(QColor(200, 235, 200));
    p.drawPolygon(QPolygonF({QPointF(4, 8), QPointF(14, 3), QPointF(21, 10), QPointF(17, 20),
                             QPointF(6, 19)}));
  } else if (key == "MODELPARTICLE") {
    p.setPen(QPen(kRed, 1.5));
    p.drawLine(QPointF(3, 20), QPointF(12, 12));
    p.setBrush(kRed);
    p.drawEllipse(QPointF(14, 10), 4, 4);
  } else if (key == "MODELTESTPOINT") {
    p.setPen(QPen(kInk, 1.5));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(6, 6, 12, 12));
    p.drawLine(QPointF(12, 3), QPointF(12, 21));
    p.drawLine(QPointF(3, 12), QPointF(21, 12));
  } else if (key == "MODELFLUXINSPECT") {
    p.setPen(QPen(kGreen, 2));
    p.drawLine(QPointF(4, 20), QPointF(20, 4));
    p.setPen(QPen(kBlue, 1.5));
    p.drawLine(QPointF(6, 8), QPointF(15, 17));
  } else if (key == "MODELCAPZONE") {
    p.setPen(QPen(kBlue, 1.5));
    p.setBrush(QColor(210, 225, 255));
    p.drawEllipse(QRectF(2, 7, 20, 10));
    Well(p, kInk);
  } else if (key == "MODELCALC") {
    p.setPen(Qt::NoPen);
    p.setBrush(kGreen);
    p.drawPolygon(QPolygonF({QPointF(6, 3), QPointF(21, 12), QPointF(6, 21)}));
  } else if (key == "MODELSETTINGS") {
    p.setPen(QPen(kInk, 1.5));
    for (int y : {6, 12, 18}) p.drawLine(QPointF(3, y), QPointF(21, y));
    p.setBrush(kBlue);
    p.drawRect(QRectF(7, 4, 4, 4));
    p.drawRect(QRectF(14, 10, 4, 4));
    p.drawRect(QRectF(5, 16, 4, 4));
  } else if (key == "SEARCH") {
    Magnifier(p, "");
  } else if (key == "WINDOWZOOMIN") {
    Magnifier(p, "+");
  } else if (key == "WINDOWZOOMOUT") {
    Magnifier(p, "-");
  } else if (key == "WINDOWZOOMWIN") {
    Magnifier(p, "win");
  } else if (key == "WINDOWZOOMEXTENTS") {
    Magnifier(p, "ext");
  } else if (key == "WINDOWSCROLLLEFT") {
    Arrow(p, 180);
  } else if (key == "WINDOWSCROLLRIGHT") {
    Arrow(p, 0);
  } else if (key == "WINDOWSCROLLUP") {
    Arrow(p, -90);
  } else if (key == "WINDOWSCROLLDOWN") {
    Arrow(p, 90);
  } else if (key == "WINDOWRECENTER") {
    p.setPen(QPen(kInk, 1.5));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(QRectF(5, 5, 14, 14));
    p.drawLine(QPointF(12, 1), QPointF(12, 23));
    p.drawLine(QPointF(1, 12), QPointF(23, 12));
    p.setBrush(kRed);
    p.drawEllipse(QPointF(12, 12), 2, 2);
  } else {
    p.setPen(QPen(kInk, 1));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(4, 4, 16, 16));
  }
}

}  // namespace

QIcon ToolbarIcon(const std::string& key) {
  QIcon icon;
  // Drawn at two scales, so that a high-DPI screen gets crisp glyphs.
  for (int scale : {1, 2}) {
    QPixmap pixmap(kSize * scale, kSize * scale);
    pixmap.fill(Qt::transparent);
    {
      QPainter p(&pixmap);
      p.setRenderHint(QPainter::Antialiasing);
      p.scale(scale, scale);
      Draw(p, key);
    }
    pixmap.setDevicePixelRatio(scale);
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace tarno
