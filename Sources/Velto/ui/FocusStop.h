// An item in the tab order.
#pragma once

#include "KeyMoves.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace velto {

// Takes the keyboard's focus and reports the keys that move an answer or a choice: arrows, Page Up,
// Page Down, Home and End without a modifier. Ignores all other keys. Main thread only.
class FocusStop : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  // The corner radius of the control inside the focus ring, in points.
  Q_PROPERTY(double ringRadius MEMBER ringRadius_ NOTIFY ringRadiusChanged FINAL)
  // If true, assistive technology sees the item as a ButtonAccess.
  Q_PROPERTY(bool isButton MEMBER isButton_ NOTIFY isButtonChanged FINAL)
  // True if pressing the item has an effect. Unlike `enabled`, turning this off does not take the
  // focus away.
  Q_PROPERTY(bool available MEMBER available_ NOTIFY availableChanged FINAL)

public:
  explicit FocusStop(QQuickItem* parent = nullptr);

  // The move that a key (Qt::Key) requests; nullopt if none.
  [[nodiscard]] static std::optional<Move> moveOf(int key);

  [[nodiscard]] double ringRadius() const { return ringRadius_; }
  [[nodiscard]] bool isButton() const { return isButton_; }
  [[nodiscard]] bool isAvailable() const { return available_ && isEnabled(); }

  // See KeyMoves::movedChoice; `move` is a Move.
  [[nodiscard]] Q_INVOKABLE static int movedChoice(int chosen, int count, int move);

Q_SIGNALS:
  // A key requests a move; `move` is a Move.
  void moved(int move);
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
