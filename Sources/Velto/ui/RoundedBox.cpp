#include "RoundedBox.h"

#include "ContinuousCorner.h"

#include <QPainter>
#include <QPen>

#include <algorithm>

namespace velto {

namespace {

// Adds the rounded corner at `tip`. The unit vectors `in` and `out` point from the tip along the
// first edge and the second edge.
void addCorner(QPainterPath& path, QPointF tip, QPointF in, QPointF out, double reach) {
  for (const auto& corner : ContinuousCorner::points()) {
    const QPointF point = tip + (reach * corner.in) * in + (reach * corner.out) * out;
    if (path.elementCount() == 0)
      path.moveTo(point);
    else
      path.lineTo(point);
  }
}

} // namespace

QPainterPath roundedOutline(const QRectF& rect, double radius, bool continuous) {
  QPainterPath path;
  const double half = std::min(rect.width(), rect.height()) / 2;
  if (!continuous) {
    const double r = std::clamp(radius, 0.0, std::max(half, 0.0));
    path.addRoundedRect(rect, r, r);
    return path;
  }
  const double reach = std::clamp(radius * ContinuousCorner::reach(), 0.0, std::max(half, 0.0));
  constexpr QPointF right(1, 0), left(-1, 0), down(0, 1), up(0, -1);
  addCorner(path, rect.topLeft(), down, right, reach);
  addCorner(path, rect.topRight(), left, down, reach);
  addCorner(path, rect.bottomRight(), up, left, reach);
  addCorner(path, rect.bottomLeft(), right, up, reach);
  path.closeSubpath();
  return path;
}

RoundedBox::RoundedBox(QQuickItem* parent) : PixelItem(parent) {
  connect(this, &RoundedBox::appearanceChanged, this, &RoundedBox::repaint);
}

void RoundedBox::paint(QPainter& painter, const QRectF& edges) const {
  QRectF bounds = edges;
  if (insetTop_ > 0) // not snapped: the height below the inset stays exact
    bounds.setTop(std::max(bounds.top(), bounds.bottom() - (height() - insetTop_)));
  const double radius = dot_ ? bounds.width() / 2 : radius_;
  if (color_.alpha() > 0)
    painter.fillPath(roundedOutline(bounds, radius, continuous_), color_);
  if (strokeColor_.alpha() > 0 && strokeWidth_ > 0) {
    const double inset = strokeWidth_ / 2;
    painter.strokePath(
        roundedOutline(bounds.adjusted(inset, inset, -inset, -inset), radius - inset, continuous_),
        QPen(strokeColor_, strokeWidth_, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
  }
}

} // namespace velto
