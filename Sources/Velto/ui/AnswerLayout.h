// The geometry of the answer area for QML.
#pragma once

#include "ChipLayout.h"
#include "DevicePixels.h"
#include "StripLayout.h"

#include <QObject>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace velto {

// A ChipLayout::Place.
struct ChipPlace {
  Q_GADGET
  QML_VALUE_TYPE(veltoChipPlace)
  Q_PROPERTY(double x MEMBER x FINAL)
  Q_PROPERTY(double y MEMBER y FINAL)
  Q_PROPERTY(bool crosses MEMBER crosses FINAL)

public:
  double x = 0;
  double y = 0;
  bool crosses = false;

  bool operator==(const ChipPlace&) const = default;
};

// Exposes StripLayout and ChipLayout; lengths in points. Main thread only.
class AnswerLayout : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(double stripHeight READ stripHeight CONSTANT FINAL)
  Q_PROPERTY(double areaHeight READ areaHeight CONSTANT FINAL)
  Q_PROPERTY(double chipHeight READ chipHeight CONSTANT FINAL)

public:
  using QObject::QObject;

  [[nodiscard]] static double stripHeight() { return StripLayout::stripHeight; }
  [[nodiscard]] static double areaHeight() { return StripLayout::areaHeight; }
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
  // See StripLayout::markerWidthAt.
  [[nodiscard]] Q_INVOKABLE static double markerWidth(double devicePixelRatio) {
    return StripLayout::markerWidthAt(devicePixelRatio);
  }
  // See StripLayout::markerLeft.
  [[nodiscard]] Q_INVOKABLE static double markerLeft(double x, double devicePixelRatio) {
    return StripLayout::markerLeft(x, devicePixelRatio);
  }
  // See DevicePixels::share.
  [[nodiscard]] Q_INVOKABLE static double shareLeft(int index, int count, double width, double gap,
                                                    double devicePixelRatio) {
    return DevicePixels::share(index, count, width, gap, devicePixelRatio).left;
  }
  [[nodiscard]] Q_INVOKABLE static double shareWidth(int index, int count, double width, double gap,
                                                     double devicePixelRatio) {
    return DevicePixels::share(index, count, width, gap, devicePixelRatio).width;
  }
  // ChipLayout::place. An undefined position means that there is no marker.
  [[nodiscard]] Q_INVOKABLE static velto::ChipPlace
  answerChip(const QVariant& answerX, double answerWidth, const QVariant& truthX, double truthWidth,
             double stripWidth, double devicePixelRatio);
  [[nodiscard]] Q_INVOKABLE static velto::ChipPlace
  truthChip(const QVariant& answerX, double answerWidth, const QVariant& truthX, double truthWidth,
            double stripWidth, double devicePixelRatio);
};

} // namespace velto
