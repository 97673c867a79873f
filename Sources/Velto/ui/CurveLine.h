// A polyline through difficulties.
#pragma once

#include <QColor>
#include <QList>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Draws the points that Progress::curve computes for the difficulties (0 to 100). `overhang` is a
// margin inside the item's edges, for the half of the line's width beyond the outermost points.
class CurveLine : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QList<double> difficulties MEMBER difficulties_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY appearanceChanged FINAL)
  Q_PROPERTY(double lineWidth MEMBER lineWidth_ NOTIFY appearanceChanged FINAL) // points
  Q_PROPERTY(double overhang MEMBER overhang_ NOTIFY appearanceChanged FINAL)   // points

public:
  explicit CurveLine(QQuickItem* parent = nullptr);
  void paint(QPainter* painter) override;

Q_SIGNALS:
  void appearanceChanged();

private:
  QList<double> difficulties_;
  QColor color_;
  double lineWidth_ = 1;
  double overhang_ = 0;
};

} // namespace velto
