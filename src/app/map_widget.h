// The map on the screen: shows the visible surface's image, reports the cursor's
// position in world coordinates, and turns the mouse into the navigation actions:
// the rubber band of zoom-to-window (mouse state 3, mode 20, ending in action 20),
// the click of recenter (state 1, mode 31, ending in action 22), and the wheel's
// zoom about the pointer. In the select state a click does nothing yet: the
// editing of elements by mouse is the next piece of work.
#pragma once

#include <QPoint>
#include <QWidget>
#include <functional>

#include "display/map_state.h"
#include "display/vgraph.h"

class QRubberBand;

namespace tarno {

class QtMapSurface;

class MapWidget : public QWidget {
  Q_OBJECT

 public:
  MapWidget(MapState& state, VGraphGDI& layer, QWidget* parent = nullptr);

  // The surface whose image is shown (the visible map); may be null.
  void SetSurface(QtMapSurface* surface) { surface_ = surface; }

  // DisableMouse and EnableMouse: while off, the mouse acts on nothing.
  void SetMouseEnabled(bool enabled) { mouseEnabled_ = enabled; }
  bool MouseEnabled() const { return mouseEnabled_; }

  // A navigation action with the map points of the mouse (ZoomActions).
  std::function<void(int action, double x1, double y1, double x2, double y2)> onZoomAction;
  // The wheel: the new window, to be drawn (zoom about the pointer).
  std::function<void(const WorldWindow& window)> onWheelZoom;
  // The cursor's position in world coordinates.
  std::function<void(double x, double y)> onPosition;
  // The widget changed its size: the surfaces are to be laid out and redrawn.
  std::function<void()> onResized;

  // The world point of a widget pixel, through the layer bound to the map.
  double WorldX(double pixelX) const;
  double WorldY(double pixelY) const;

  // The mouse actions, callable without events (tests and the wheel use them).
  void BeginRubberBand(QPoint at);
  void EndRubberBand(QPoint at);
  void Click(QPoint at);
  void Wheel(QPoint at, int steps);

  // Reports the position of a pointer resting on the map again, through the
  // picture now shown: the window changed under it (a zoom, a scroll).
  void ReportPosition();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  bool InZoomWindowMode() const;
  bool InRecenterMode() const;
  bool Active() const;

  MapState& state_;
  VGraphGDI& g_;
  QtMapSurface* surface_ = nullptr;
  bool mouseEnabled_ = false;
  QRubberBand* band_ = nullptr;
  QPoint bandOrigin_;
  bool banding_ = false;
  // The pointer's last place on the map, while it is over the map.
  QPoint pointer_;
  bool pointerInside_ = false;
};

}  // namespace tarno
