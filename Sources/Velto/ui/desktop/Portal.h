// The settings of the desktop portal, read over the session bus.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

namespace velto {

// Reads settings of the desktop portal and reports changes. Without a session bus or a portal there
// are neither. Main thread only.
class Portal : public QObject {
  Q_OBJECT

public:
  explicit Portal(QObject* parent = nullptr);

  // The value of `key` in the namespace `space`; invalid if there is none. Waits for the portal for
  // 200 ms at most.
  [[nodiscard]] QVariant read(const QString& space, const QString& key) const;

  // Non-blocking read(): settingChanged delivers the value, if there is one.
  void request(const QString& space, const QString& key);

Q_SIGNALS:
  void settingChanged(const QString& space, const QString& key, const QVariant& value);

private Q_SLOTS:
  void receive(const QString& space, const QString& key, const QDBusVariant& value);
};

} // namespace velto
