// What the Tab key stops at.
#pragma once

#include "Answering.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace velto {

// An item that takes the keyboard's focus and tells of the keys that move an answer or a choice:
// arrows, Page Up, Page Down, Home and End without a modifier. All other keys pass it by. Main
// thread only.
class FocusStop : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  // The corners of what the focus ring goes round, in points.
  Q_PROPERTY(double ringRadius MEMBER ringRadius_ NOTIFY ringRadiusChanged FINAL)
  // Whether assistive technology gets it as a ButtonAccess.
  Q_PROPERTY(bool isButton MEMBER isButton_ NOTIFY isButtonChanged FINAL)
  // Whether pressing it does anything. A disabled item would lose the focus; this one keeps what
  // it has until the listener moves on.
  Q_PROPERTY(bool available MEMBER available_ NOTIFY availableChanged FINAL)

public:
  // Move for QML.
  enum Key {
    Left = static_cast<int>(Move::left),
    Right = static_cast<int>(Move::right),
    Up = static_cast<int>(Move::up),
    Down = static_cast<int>(Move::down),
    PageUp = static_cast<int>(Move::pageUp),
    PageDown = static_cast<int>(Move::pageDown),
    Home = static_cast<int>(Move::toStart),
    End = static_cast<int>(Move::toEnd),
  };
  Q_ENUM(Key)

  explicit FocusStop(QQuickItem* parent = nullptr);

  [[nodiscard]] double ringRadius() const { return ringRadius_; }
  [[nodiscard]] bool isButton() const { return isButton_; }
  [[nodiscard]] bool isAvailable() const { return available_ && isEnabled(); }

  // See Answering::movedChoice; `key` is a Key.
  [[nodiscard]] Q_INVOKABLE static int movedChoice(int chosen, int count, int key);

Q_SIGNALS:
  // A key was pressed here; `key` is a Key.
  void moved(int key);
  void ringRadiusChanged();
  void isButtonChanged();
  void availableChanged();

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  double ringRadius_ = 0;
  bool isButton_ = false;
  bool available_ = true;
};

} // namespace velto
