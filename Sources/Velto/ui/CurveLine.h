// A polyline through difficulties, in a frame.
#pragma once

#include "PixelItem.h"

#include <QColor>
#include <QList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Draws the difficulties (0 to 100) as Progress::curve places them. The frame's roundedOutline
// clips the line.
class CurveLine : public velto::PixelItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QList<double> difficulties MEMBER difficulties_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(double lineWidth MEMBER lineWidth_ NOTIFY appearanceChanged FINAL) // points
  Q_PROPERTY(double radius MEMBER radius_ NOTIFY appearanceChanged FINAL) // of the frame, points

public:
  explicit CurveLine(QQuickItem* parent = nullptr);

Q_SIGNALS:
  void appearanceChanged();

protected:
  void paint(QPainter& painter, const QRectF& edges) const override;

private:
  QList<double> difficulties_;
  QColor color_;
  double lineWidth_ = 1;
  double radius_ = 0;
};

} // namespace velto
