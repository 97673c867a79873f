#include "PixelGrid.h"

#include "DevicePixels.h"

#include <QQuickWindow>

#include <cmath>

namespace velto {

namespace {

// The smallest whole number of points, at least `points`, that is also a whole number of pixels.
double roomFor(double points, double devicePixelRatio) {
  constexpr int tries = 20; // enough for every scale in steps of 5 %
  const double least = std::ceil(points);
  for (int more = 0; more < tries; ++more) {
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

QRectF PixelGrid::sameSize(const QRectF& box, double devicePixelRatio) {
  const auto across = DevicePixels::centred(box.center().x(), box.width(), devicePixelRatio);
  const auto down = DevicePixels::centred(box.center().y(), box.height(), devicePixelRatio);
  return {across.left, down.left, across.width, down.width};
}

} // namespace velto
