// A filled and outlined rounded rectangle, sharp at every scale.
#pragma once

#include "PixelItem.h"

#include <QColor>
#include <QPainterPath>
#include <QtQml/qqmlregistration.h>

namespace velto {

// The outline of `rect` with rounded corners of `radius` points.
//
// The corners are circular arcs or, if `continuous` is true, a ContinuousCorner each. Radii that do
// not fit are reduced.
[[nodiscard]] QPainterPath roundedOutline(const QRectF& rect, double radius, bool continuous);

// Fills and then strokes a roundedOutline. The stroke lies inside the item's edges, which are
// snapped to whole device pixels. `insetTop` lowers the upper edge and is not snapped. A `dot` is
// round whatever its radius, and as large as every dot of its size.
class RoundedBox : public velto::PixelItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(QColor strokeColor MEMBER strokeColor_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(double strokeWidth MEMBER strokeWidth_ NOTIFY appearanceChanged FINAL) // points
  Q_PROPERTY(double radius MEMBER radius_ NOTIFY appearanceChanged FINAL)           // points
  Q_PROPERTY(double insetTop MEMBER insetTop_ NOTIFY appearanceChanged FINAL)       // points
  Q_PROPERTY(bool continuous MEMBER continuous_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(bool dot MEMBER dot_ NOTIFY appearanceChanged FINAL)

public:
  explicit RoundedBox(QQuickItem* parent = nullptr);

Q_SIGNALS:
  void appearanceChanged();

protected:
  void paint(QPainter& painter, const QRectF& edges) const override;
  [[nodiscard]] bool keepsSize() const override { return dot_; }

private:
  QColor color_ = Qt::transparent;
  QColor strokeColor_ = Qt::transparent;
  double strokeWidth_ = 1;
  double radius_ = 0;
  double insetTop_ = 0;
  bool continuous_ = false;
  bool dot_ = false;
};

} // namespace velto
