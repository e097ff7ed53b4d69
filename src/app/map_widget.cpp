#include "app/map_widget.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "app/shell/map_editor.h"
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
  if (editor_ == nullptr || g_.Surface() == nullptr) return;
  // The editor's rubber shape over the picture: the string drawn so far, the line
  // from its last vertex (or the moved vertex) to the pointer, the dragged box.
  QPen pen(Qt::black, 1, Qt::DashLine);
  p.setPen(pen);
  const auto& pending = editor_->PendingVertices();
  if (pending.size() > 1) {
    QPolygon line;
    for (const auto& [x, y] : pending) {
      try {
        const DevicePoint d = g_.vgGDIWorldToDevice(x, y);
        line << QPoint(d.x, d.y);
      } catch (const std::exception&) {
        // A vertex beyond the device range is left out of the sketch.
      }
    }
    p.setPen(QPen(Qt::red, 1));
    p.drawPolyline(line);
    p.setPen(pen);
  }
  const RubberShape r = editor_->Rubber();
  if (r.kind == RubberShape::Kind::Line) p.drawLine(r.x1, r.y1, r.x2, r.y2);
  if (r.kind == RubberShape::Kind::Box) p.drawRect(QRect(QPoint(r.x1, r.y1), QPoint(r.x2, r.y2)));
}

void MapWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (onResized) onResized();
}

void MapWidget::SetMouseEnabled(bool enabled) {
  mouseEnabled_ = enabled;
  if (editor_ != nullptr) editor_->SetMouseEnabled(enabled);
}

namespace {
enum MouseEvent { kDown, kMove, kUp };

int ButtonOf(Qt::MouseButton b) {
  if (b == Qt::LeftButton) return kLeftButton;
  if (b == Qt::RightButton) return kRightButton;
  return 0;
}

int ShiftOf(Qt::KeyboardModifiers m) {
  return (m.testFlag(Qt::ShiftModifier) ? kShiftMask : 0) |
         (m.testFlag(Qt::ControlModifier) ? kCtrlMask : 0);
}
}  // namespace

void MapWidget::Forward(int event, int button, int shift, QPoint at) {
  if (editor_ == nullptr || g_.Surface() == nullptr) return;
  if (onBeforeMouse) onBeforeMouse();
  if (event == kDown) editor_->MouseDown(button, shift, at.x(), at.y());
  if (event == kMove) editor_->MouseMove(button, shift, at.x(), at.y());
  if (event == kUp) editor_->MouseUp(button, shift, at.x(), at.y());
  update();
}

void MapWidget::BeginRubberBand(QPoint at) { Forward(kDown, kLeftButton, 0, at); }

void MapWidget::EndRubberBand(QPoint at) {
  Forward(kMove, kLeftButton, 0, at);
  Forward(kUp, kLeftButton, 0, at);
}

void MapWidget::Click(QPoint at) {
  Forward(kDown, kLeftButton, 0, at);
  Forward(kUp, kLeftButton, 0, at);
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
  Forward(kDown, ButtonOf(event->button()), ShiftOf(event->modifiers()),
          event->position().toPoint());
}

void MapWidget::mouseMoveEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  pointer_ = at;
  pointerInside_ = true;
  ReportPosition();
  if (Active()) Forward(kMove, ButtonOf(event->button()), ShiftOf(event->modifiers()), at);
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
  if (!Active()) return;
  Forward(kUp, ButtonOf(event->button()), ShiftOf(event->modifiers()), event->position().toPoint());
}

void MapWidget::wheelEvent(QWheelEvent* event) {
  const int steps = event->angleDelta().y() / 120;
  if (steps != 0) Wheel(event->position().toPoint(), steps);
  event->accept();
}

void MapWidget::keyPressEvent(QKeyEvent* event) {
  // Escape ends a mode as the right button does.
  if (event->key() == Qt::Key_Escape && Active() && editor_ != nullptr &&
      editor_->MouseState() != kStateSelect) {
    Forward(kDown, kRightButton, 0, pointer_);
    return;
  }
  // The Delete key deletes the selected element as the Edit menu's Delete does.
  if (event->key() == Qt::Key_Delete && Active() && editor_ != nullptr &&
      editor_->SelectedKind() != 0 && editor_->MouseState() == kStateSelect) {
    if (onBeforeMouse) onBeforeMouse();
    editor_->Command("EDIT_CMDS(2)");
    update();
    return;
  }
  QWidget::keyPressEvent(event);
}

}  // namespace tarno
