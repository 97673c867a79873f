#include "PixelGrid.h"

#include "DevicePixels.h"

#include <QQuickWindow>

#include <cmath>

namespace velto {

namespace {

// The next length, from `points` on, that is whole in points and in device pixels.
double roomFor(double points, double devicePixelRatio) {
  constexpr int patience = 20; // enough for every multiple of 5 %
  const double least = std::ceil(points);
  for (int more = 0; more < patience; ++more) {
    const double pixels = (least + more) * devicePixelRatio;
    if (std::abs(pixels - std::round(pixels)) < 1e-6)
      return least + more;
  }
  return least;
}

} // namespace

QRectF PixelGrid::cover(QQuickPaintedItem& item, const QRectF& box) {
  const double ratio = item.window()->effectiveDevicePixelRatio();
  const QPointF topLeft(DevicePixels::snapped(box.left(), ratio),
                        DevicePixels::snapped(box.top(), ratio));
  const QSizeF size(DevicePixels::snapped(box.right(), ratio) - topLeft.x(),
                    DevicePixels::snapped(box.bottom(), ratio) - topLeft.y());
  item.setPosition(item.parentItem()->mapFromScene(topLeft));
  item.setSize({roomFor(size.width(), ratio), roomFor(size.height(), ratio)});
  return {QPointF(), size};
}

} // namespace velto
