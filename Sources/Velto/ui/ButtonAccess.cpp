#include "ButtonAccess.h"

#include "Pressable.h"

#include <QQuickWindow>

namespace velto {

namespace {

QAccessibleInterface* makeButton(const QString& className, QObject* object) {
  if (className != QLatin1String("velto::Pressable"))
    return nullptr;
  auto* stop = qobject_cast<Pressable*>(object);
  return stop != nullptr && (stop->isButton() || !stop->available()) ? new ButtonAccess(*stop)
                                                                     : nullptr;
}

} // namespace

void ButtonAccess::install() {
  static const bool installed = [] {
    QAccessible::installFactory(&makeButton);
    return true;
  }();
  static_cast<void>(installed);
}

void ButtonAccess::tellAvailable(Pressable& button) {
  QAccessible::State changed;
  changed.disabled = true;
  QAccessibleStateChangeEvent event(&button, changed);
  QAccessible::updateAccessibility(&event);
}

ButtonAccess::ButtonAccess(Pressable& button) : QAccessibleObject(&button) {}

Pressable& ButtonAccess::button() const {
  return *static_cast<Pressable*>(object());
}

QAccessibleInterface* ButtonAccess::parent() const {
  // The nearest accessible ancestor; other items have no interface.
  for (QQuickItem* item = button().parentItem(); item != nullptr; item = item->parentItem())
    if (QAccessibleInterface* found = QAccessible::queryAccessibleInterface(item))
      return found;
  return QAccessible::queryAccessibleInterface(window());
}

QWindow* ButtonAccess::window() const {
  return button().window();
}

QRect ButtonAccess::rect() const {
  const QRectF box = button().mapRectToScene(button().boundingRect());
  return window() == nullptr
             ? QRect()
             : QRect(window()->mapToGlobal(box.topLeft().toPoint()), box.size().toSize());
}

QString ButtonAccess::text(QAccessible::Text kind) const {
  return kind == QAccessible::Name ? button().name() : QString();
}

QAccessible::Role ButtonAccess::role() const {
  return button().isButton() ? QAccessible::Button : QAccessible::RadioButton;
}

QAccessible::State ButtonAccess::state() const {
  QAccessible::State state;
  if (!button().isButton()) {
    state.checkable = true;
    state.checked = button().property("checked").toBool();
  }
  state.disabled = !button().isAvailable();
  state.invisible = !button().isVisible() || window() == nullptr || !window()->isVisible();
  state.focusable = button().isAvailable() || button().hasActiveFocus();
  state.focused = button().hasActiveFocus();
  return state;
}

void* ButtonAccess::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                              : nullptr;
}

QStringList ButtonAccess::actionNames() const {
  return {pressAction(), setFocusAction()};
}

void ButtonAccess::doAction(const QString& action) {
  if (action == pressAction())
    button().press();
  else if (action == setFocusAction() && button().isAvailable())
    button().forceActiveFocus(Qt::OtherFocusReason);
}

} // namespace velto
