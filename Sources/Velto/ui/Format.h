// Numbers as text, for QML: the same text in every locale.
#pragma once

#include "Numbers.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Main thread only.
class Format : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

public:
  using QObject::QObject;

  // `value` with `decimals` decimals. JavaScript's toFixed rounds halves differently.
  Q_INVOKABLE static QString fixed(double value, int decimals) {
    return QString::fromStdString(Numbers::fixed(value, decimals));
  }
};

} // namespace velto
