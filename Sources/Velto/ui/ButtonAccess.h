// The accessible interface of a button.
#pragma once

#include <QAccessibleObject>

namespace velto {

class Pressable;

// Qt 6.4 does not report to assistive technology that an item is disabled. This interface does, for
// each Pressable that is a button, and for a choice that is not available from the start. Main
// thread only.
class ButtonAccess : public QAccessibleObject, public QAccessibleActionInterface {
public:
  // Registers the interface with Qt. Later calls are no-ops.
  static void install();
  // Announces a change of the button's isAvailable().
  static void tellAvailable(Pressable& button);

  explicit ButtonAccess(Pressable& button);

  [[nodiscard]] QAccessibleInterface* parent() const override;
  [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  [[nodiscard]] QWindow* window() const override;
  [[nodiscard]] QRect rect() const override;
  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  [[nodiscard]] QAccessible::Role role() const override;
  [[nodiscard]] QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString& action) override;
  [[nodiscard]] QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
  [[nodiscard]] Pressable& button() const;
};

} // namespace velto
