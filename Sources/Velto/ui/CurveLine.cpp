#include "CurveLine.h"

#include "Progress.h"

#include <QPainter>
#include <QPen>
#include <QPolygonF>

namespace velto {

CurveLine::CurveLine(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
  connect(this, &CurveLine::appearanceChanged, this, [this] { update(); });
}

void CurveLine::paint(QPainter* painter) {
  QPolygonF line;
  for (const auto& point :
       Progress::curve({difficulties_.constData(), static_cast<std::size_t>(difficulties_.size())},
                       width() - 2 * overhang_, height() - 2 * overhang_))
    line.append(QPointF(point.x + overhang_, point.y + overhang_));
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(QPen(color_, lineWidth_, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter->drawPolyline(line);
}

} // namespace velto
