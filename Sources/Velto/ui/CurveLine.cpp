#include "CurveLine.h"

#include "Progress.h"
#include "RoundedBox.h"

#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPolygonF>

namespace velto {

CurveLine::CurveLine(QQuickItem* parent) : PixelItem(parent) {
  connect(this, &CurveLine::appearanceChanged, this, &CurveLine::repaint);
}

void CurveLine::paint(QPainter& painter, const QRectF& edges) const {
  QPolygonF line;
  for (const auto& point :
       Progress::curve({difficulties_.constData(), static_cast<std::size_t>(difficulties_.size())},
                       edges.width(), edges.height()))
    line.append(QPointF(point.x, point.y) + edges.topLeft());
  painter.setPen(QPen(color_, lineWidth_, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(line);

  // Erase what lies outside the frame: clip paths are not antialiased.
  QPainterPath outside = roundedOutline(edges, radius_, false);
  outside.addRect(edges.adjusted(-lineWidth_, -lineWidth_, lineWidth_, lineWidth_));
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
  painter.fillPath(outside, Qt::black);
}

} // namespace velto
