// A control that is pressed: chips, slots, materials and the primary button.
#pragma once

#include "FocusStop.h"

#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace velto {

// The behaviour of a button without its looks. A click with the left mouse button and assistive
// technology end in press(). Main thread only.
class Pressable : public velto::FocusStop {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name MEMBER name_ NOTIFY nameChanged FINAL)
  // If true, assistive technology sees the item as a ButtonAccess; else as a choice, which is one
  // as well if it is not available.
  Q_PROPERTY(bool isButton MEMBER isButton_ NOTIFY isButtonChanged FINAL)
  // True if pressing the item has an effect. Unlike `enabled`, turning this off does not take the
  // focus away.
  Q_PROPERTY(bool available READ available WRITE setAvailable NOTIFY availableChanged FINAL)
  // If true, all clicks of a double click but the first do nothing.
  Q_PROPERTY(
      bool ignoresDoubleClicks MEMBER ignoresDoubleClicks_ NOTIFY ignoresDoubleClicksChanged FINAL)
  // The pointer is over the item. False while the item is not available.
  Q_PROPERTY(bool hovered READ isHovered NOTIFY touchChanged FINAL)
  // The mouse button is down, with the pointer over the item, and releasing it there has an effect.
  Q_PROPERTY(bool pressed READ isPressed NOTIFY touchChanged FINAL)

public:
  explicit Pressable(QQuickItem* parent = nullptr);

  [[nodiscard]] const QString& name() const { return name_; }
  [[nodiscard]] bool isButton() const { return isButton_; }
  [[nodiscard]] bool available() const { return available_; }
  void setAvailable(bool available);
  [[nodiscard]] bool isAvailable() const { return available_ && isEnabled(); }
  [[nodiscard]] bool isHovered() const { return available_ && over_; }
  [[nodiscard]] bool isPressed() const { return available_ && over_ && down_ && counts_; }

  // Takes the focus and emits activated(); a no-op if not available.
  Q_INVOKABLE void press(Qt::FocusReason reason = Qt::OtherFocusReason);

Q_SIGNALS:
  void activated();
  void nameChanged();
  void isButtonChanged();
  void availableChanged();
  void ignoresDoubleClicksChanged();
  void touchChanged();

protected:
  void hoverEnterEvent(QHoverEvent* event) override;
  void hoverLeaveEvent(QHoverEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseUngrabEvent() override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
  [[nodiscard]] bool isRepeat(const QMouseEvent& press);
  void touch(bool over, bool down);

  QString name_;
  bool isButton_ = false;
  bool available_ = true;
  bool ignoresDoubleClicks_ = false;
  bool over_ = false;
  bool down_ = false;
  bool counts_ = true;               // false if the press is ignored as part of a double click
  std::optional<quint64> lastPress_; // timestamp, ms
};

} // namespace velto
