// The map on the screen: shows the visible surface's image with the map editor's
// rubber shape over it (the string being drawn, the line to the pointer, the box
// being dragged), forwards the mouse's press, move and release to the editor (which
// decides what they do, the navigation's zoom box and recentre included), reports
// the cursor's position in world coordinates, and zooms about the pointer with the
// wheel.
#pragma once

#include <QPoint>
#include <QWidget>
#include <functional>

#include "display/map_state.h"
#include "display/vgraph.h"

namespace tarno {

class QtMapSurface;
class MapEditor;

class MapWidget : public QWidget {
  Q_OBJECT

 public:
  MapWidget(MapState& state, VGraphGDI& layer, QWidget* parent = nullptr);

  // The surface whose image is shown (the visible map); may be null.
  void SetSurface(QtMapSurface* surface) { surface_ = surface; }

  // The editor that the mouse events go to; may be null (the mouse then acts on
  // nothing but the wheel).
  void SetEditor(MapEditor* editor) { editor_ = editor; }
  // Called before each mouse event goes to the editor (the window brings the map
  // state up to date).
  std::function<void()> onBeforeMouse;

  // DisableMouse and EnableMouse: while off, the mouse acts on nothing.
  void SetMouseEnabled(bool enabled);
  bool MouseEnabled() const { return mouseEnabled_; }

  // The wheel: the new window, to be drawn (zoom about the pointer).
  std::function<void(const WorldWindow& window)> onWheelZoom;
  // The cursor's position in world coordinates.
  std::function<void(double x, double y)> onPosition;
  // The widget changed its size: the surfaces are to be laid out and redrawn.
  std::function<void()> onResized;

  // The world point of a widget pixel, through the layer bound to the map.
  double WorldX(double pixelX) const;
  double WorldY(double pixelY) const;

  // The mouse actions, callable without events (tests and the wheel use them): a
  // left press, a left release, both at one point, the wheel.
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
  bool Active() const;
  // The editor's mouse event, after onBeforeMouse; the picture is shown again.
  void Forward(int event, int button, int shift, QPoint at);

  MapState& state_;
  VGraphGDI& g_;
  QtMapSurface* surface_ = nullptr;
  bool mouseEnabled_ = false;
  MapEditor* editor_ = nullptr;
  // The pointer's last place on the map, while it is over the map.
  QPoint pointer_;
  bool pointerInside_ = false;
};

}  // namespace tarno
