// The lengths that the parts of the answer area share, for QML.
#pragma once

#include "Answering.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velto {

// See Answering; in points. Main thread only.
class AnswerLayout : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(double stripHeight READ stripHeight CONSTANT FINAL)
  Q_PROPERTY(double areaHeight READ areaHeight CONSTANT FINAL)
  Q_PROPERTY(double chipHeight READ chipHeight CONSTANT FINAL)

public:
  using QObject::QObject;

  [[nodiscard]] static double stripHeight() { return Answering::stripHeight; }
  [[nodiscard]] static double areaHeight() { return Answering::areaHeight; }
  [[nodiscard]] static double chipHeight() { return Answering::chipHeight; }
};

} // namespace velto
