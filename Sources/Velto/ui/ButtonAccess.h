// A button as assistive technology sees it.
#pragma once

#include <QAccessibleObject>

namespace velto {

class FocusStop;

// Qt 6.4 does not tell assistive technology that an item is disabled; this tells that a button is
// not available, for the focus stops that are buttons. An own `name` and the signal `activated` are
// what the view's button gives them. Main thread only.
class ButtonAccess : public QAccessibleObject, public QAccessibleActionInterface {
public:
  // Makes it known to Qt; once is enough, more does no harm.
  static void install();
  // Announces that the button has become available or ceased to be.
  static void tellAvailable(FocusStop& button);

  explicit ButtonAccess(FocusStop& button);

  [[nodiscard]] QAccessibleInterface* parent() const override;
  [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  [[nodiscard]] QWindow* window() const override;
  [[nodiscard]] QRect rect() const override;
  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Button; }
  [[nodiscard]] QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString& action) override;
  [[nodiscard]] QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
  [[nodiscard]] FocusStop& button() const;
};

} // namespace velto
