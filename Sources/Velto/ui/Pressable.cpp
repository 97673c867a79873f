#include "Pressable.h"

#include "ButtonAccess.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>

#include <utility>

namespace velto {

Pressable::Pressable(QQuickItem* parent) : FocusStop(parent) {
  setAcceptedMouseButtons(Qt::LeftButton);
  setAcceptHoverEvents(true);
  ButtonAccess::install();
}

void Pressable::setAvailable(bool available) {
  if (std::exchange(available_, available) == available)
    return;
  Q_EMIT availableChanged();
  if (over_)
    Q_EMIT touchChanged();
  if (isButton_)
    ButtonAccess::tellAvailable(*this);
}

void Pressable::press(Qt::FocusReason reason) {
  if (!isAvailable())
    return;
  forceActiveFocus(reason);
  Q_EMIT activated();
}

void Pressable::touch(bool over, bool down) {
  if (over == over_ && down == down_)
    return;
  over_ = over;
  down_ = down;
  Q_EMIT touchChanged();
}

void Pressable::hoverEnterEvent(QHoverEvent*) {
  touch(true, down_);
}

void Pressable::hoverLeaveEvent(QHoverEvent*) {
  touch(false, down_);
}

// Qt reports every second press of a quick series as a double click, and the others as single ones.
bool Pressable::isRepeat(const QMouseEvent& press) {
  const auto interval =
      static_cast<quint64>(QGuiApplication::styleHints()->mouseDoubleClickInterval());
  const auto before = std::exchange(lastPress_, press.timestamp());
  return before && press.timestamp() - *before < interval;
}

void Pressable::mousePressEvent(QMouseEvent* event) {
  counts_ = !isRepeat(*event) || !ignoresDoubleClicks_;
  touch(contains(event->position()), true);
}

void Pressable::mouseMoveEvent(QMouseEvent* event) {
  touch(contains(event->position()), down_);
}

void Pressable::mouseReleaseEvent(QMouseEvent* event) {
  const bool clicked = std::exchange(down_, false) && contains(event->position()) && counts_;
  over_ = contains(event->position());
  Q_EMIT touchChanged();
  if (clicked)
    press(Qt::MouseFocusReason);
}

void Pressable::mouseDoubleClickEvent(QMouseEvent*) {
  // A press event for the same click has been handled.
}

void Pressable::mouseUngrabEvent() {
  touch(over_, false);
}

void Pressable::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemVisibleHasChanged && !data.boolValue)
    touch(false, false);
  FocusStop::itemChange(change, data);
}

} // namespace velto
