#include "app/map_widget.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QRubberBand>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "display/navigation.h"
#include "display/qt_canvas.h"

namespace tarno {

namespace {
// One notch of the wheel narrows the window to this share of its size.
constexpr double kWheelFactor = 0.8;
}  // namespace

MapWidget::MapWidget(MapState& state, VGraphGDI& layer, QWidget* parent)
    : QWidget(parent), state_(state), g_(layer) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(64, 64);
}

bool MapWidget::InZoomWindowMode() const {
  return state_.mouseState == kZoomWindowMouseState && state_.mouseMode == kZoomWindowMouseMode;
}

bool MapWidget::InRecenterMode() const {
  return state_.mouseState == kRecenterMouseState && state_.mouseMode == kRecenterMouseMode;
}

bool MapWidget::Active() const {
  return mouseEnabled_ && state_.ProjectOpen && g_.Surface() != nullptr;
}

double MapWidget::WorldX(double pixelX) const {
  return g_.vgGDIDeviceToWorldX(static_cast<float>(pixelX), state_.layers.snapToGrid);
}

double MapWidget::WorldY(double pixelY) const {
  return g_.vgGDIDeviceToWorldY(static_cast<float>(pixelY), state_.layers.snapToGrid);
}

void MapWidget::paintEvent(QPaintEvent*) {
  QPainter p(this);
  if (surface_ == nullptr) {
    p.fillRect(rect(), Qt::white);
    return;
  }
  const QImage& image = surface_->Image();
  p.fillRect(rect(), Qt::white);
  p.drawImage(QPoint(0, 0), image);
}

void MapWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (onResized) onResized();
}

void MapWidget::BeginRubberBand(QPoint at) {
  if (!Active() || !InZoomWindowMode()) return;
  if (band_ == nullptr) band_ = new QRubberBand(QRubberBand::Rectangle, this);
  bandOrigin_ = at;
  banding_ = true;
  band_->setGeometry(QRect(at, QSize()));
  band_->show();
}

void MapWidget::EndRubberBand(QPoint at) {
  if (!banding_) return;
  banding_ = false;
  if (band_ != nullptr) band_->hide();
  if (!Active() || !InZoomWindowMode()) return;
  const double xa = WorldX(bandOrigin_.x()), xb = WorldX(at.x());
  const double ya = WorldY(bandOrigin_.y()), yb = WorldY(at.y());
  if (onZoomAction)
    onZoomAction(kZoomWindowEnd, std::min(xa, xb), std::min(ya, yb), std::max(xa, xb),
                 std::max(ya, yb));
}

void MapWidget::Click(QPoint at) {
  if (!Active()) return;
  if (InRecenterMode()) {
    if (onZoomAction) onZoomAction(kRecenterEnd, WorldX(at.x()), WorldY(at.y()), 0, 0);
  }
  // The select state: choosing an element by mouse comes with the editing.
}

void MapWidget::Wheel(QPoint at, int steps) {
  if (!Active() || state_.mouseState != 0 || steps == 0 || !onWheelZoom) return;
  const WorldWindow& w = state_.Window;
  const double px = WorldX(at.x()), py = WorldY(at.y());
  const double f = std::pow(kWheelFactor, steps);
  WorldWindow n;
  n.Left = px - (px - w.Left) * f;
  n.Right = px + (w.Right - px) * f;
  n.Top = py + (w.Top - py) * f;
  n.Bottom = py - (py - w.Bottom) * f;
  onWheelZoom(n);
}

void MapWidget::mousePressEvent(QMouseEvent* event) {
  if (!Active()) return;
  if (event->button() == Qt::RightButton && (InZoomWindowMode() || InRecenterMode())) {
    banding_ = false;
    if (band_ != nullptr) band_->hide();
    if (onZoomAction) onZoomAction(kZoomModeLeave, 0, 0, 0, 0);
    return;
  }
  if (event->button() != Qt::LeftButton) return;
  if (InZoomWindowMode()) {
    BeginRubberBand(event->position().toPoint());
  } else {
    Click(event->position().toPoint());
  }
}

void MapWidget::mouseMoveEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  if (banding_ && band_ != nullptr) band_->setGeometry(QRect(bandOrigin_, at).normalized());
  pointer_ = at;
  pointerInside_ = true;
  ReportPosition();
}

void MapWidget::leaveEvent(QEvent* event) {
  pointerInside_ = false;
  QWidget::leaveEvent(event);
}

void MapWidget::ReportPosition() {
  if (pointerInside_ && state_.ProjectOpen && g_.Surface() != nullptr && onPosition)
    onPosition(WorldX(pointer_.x()), WorldY(pointer_.y()));
}

void MapWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && banding_) EndRubberBand(event->position().toPoint());
}

void MapWidget::wheelEvent(QWheelEvent* event) {
  const int steps = event->angleDelta().y() / 120;
  if (steps != 0) Wheel(event->position().toPoint(), steps);
  event->accept();
}

void MapWidget::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && Active() && (InZoomWindowMode() || InRecenterMode())) {
    banding_ = false;
    if (band_ != nullptr) band_->hide();
    if (onZoomAction) onZoomAction(kZoomModeLeave, 0, 0, 0, 0);
    return;
  }
  QWidget::keyPressEvent(event);
}

}  // namespace tarno
