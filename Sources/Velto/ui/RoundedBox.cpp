#include "RoundedBox.h"

#include <QPainter>
#include <QPen>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace velto {

namespace {

constexpr double exponent = 3;
constexpr int pointsPerCorner = 24;

// The length of edge taken up by a superellipse corner that crosses the diagonal at the same point
// as a circular arc of radius 1.
double cornerReach() {
  return (1 - std::sqrt(0.5)) / (1 - std::pow(2.0, -1 / exponent));
}

// The distances of a corner's points from its tip, along both edges, for a reach of 1.
using Corner = std::array<std::pair<double, double>, pointsPerCorner + 1>;

Corner makeCorner() {
  Corner corner;
  for (std::size_t i = 0; i < corner.size(); ++i) {
    const double angle = (M_PI / 2) * static_cast<double>(i) / pointsPerCorner;
    // This parametrisation spreads the points evenly enough.
    corner[i] = {1 - std::pow(std::sin(angle), 2 / exponent),
                 1 - std::pow(std::cos(angle), 2 / exponent)};
  }
  return corner;
}

// Adds the rounded corner at `tip`. The unit vectors `in` and `out` point from the tip along the
// first edge and the second edge.
void addCorner(QPainterPath& path, QPointF tip, QPointF in, QPointF out, double reach) {
  static const Corner corner = makeCorner();
  for (const auto& [along, across] : corner) {
    const QPointF point = tip + (reach * along) * in + (reach * across) * out;
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
  const double reach = std::clamp(radius * cornerReach(), 0.0, std::max(half, 0.0));
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
  if (color_.alpha() > 0)
    painter.fillPath(roundedOutline(bounds, radius_, continuous_), color_);
  if (strokeColor_.alpha() > 0 && strokeWidth_ > 0) {
    const double inset = strokeWidth_ / 2;
    painter.strokePath(
        roundedOutline(bounds.adjusted(inset, inset, -inset, -inset), radius_ - inset, continuous_),
        QPen(strokeColor_, strokeWidth_, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
  }
}

} // namespace velto
