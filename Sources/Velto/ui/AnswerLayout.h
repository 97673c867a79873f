// The geometry of the answer area for QML.
#pragma once

#include "ChipLayout.h"
#include "DevicePixels.h"
#include "StripLayout.h"

#include <QObject>
#include <QPointF>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Exposes StripLayout and ChipLayout; lengths in points. Main thread only.
class AnswerLayout : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(double stripHeight READ stripHeight CONSTANT FINAL)
  Q_PROPERTY(double areaHeight READ areaHeight CONSTANT FINAL)
  Q_PROPERTY(double markerWidth READ markerWidth CONSTANT FINAL)
  Q_PROPERTY(double chipHeight READ chipHeight CONSTANT FINAL)

public:
  using QObject::QObject;

  [[nodiscard]] static double stripHeight() { return StripLayout::stripHeight; }
  [[nodiscard]] static double areaHeight() { return StripLayout::areaHeight; }
  [[nodiscard]] static double markerWidth() { return StripLayout::markerWidth; }
  [[nodiscard]] static double chipHeight() { return ChipLayout::chipHeight; }

  // The width of a tick, in points, rounded to whole device pixels so that all ticks look alike.
  [[nodiscard]] Q_INVOKABLE static double tickWidth(double devicePixelRatio) {
    return DevicePixels::wholeWidth(StripLayout::tickWidth, devicePixelRatio);
  }
  // See StripLayout::tickLeft, for a tick of tickWidth().
  [[nodiscard]] Q_INVOKABLE static double tickLeft(double x, double stripWidth,
                                                   double devicePixelRatio) {
    return StripLayout::tickLeft(x, tickWidth(devicePixelRatio), stripWidth, devicePixelRatio);
  }
  // See StripLayout::markerLeft.
  [[nodiscard]] Q_INVOKABLE static double markerLeft(double x, double devicePixelRatio) {
    return StripLayout::markerLeft(x, devicePixelRatio);
  }
  // The top left corners of ChipLayout::place. An undefined position means that there is no marker.
  [[nodiscard]] Q_INVOKABLE static QPointF answerChip(const QVariant& answerX, double answerWidth,
                                                      const QVariant& truthX, double truthWidth,
                                                      double stripWidth);
  [[nodiscard]] Q_INVOKABLE static QPointF truthChip(const QVariant& answerX, double answerWidth,
                                                     const QVariant& truthX, double truthWidth,
                                                     double stripWidth);
};

} // namespace velto
