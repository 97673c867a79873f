// The desktop portal's settings, over the session bus.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

namespace velto {

// Reads settings of the desktop portal and tells when they change. Without a session bus or a
// portal there are no settings and no changes. Main thread only.
class Portal : public QObject {
  Q_OBJECT

public:
  explicit Portal(QObject* parent = nullptr);

  // The value of `key` in the settings' `space`, or an invalid value where there is none. Waits for
  // the portal, 200 ms at most.
  [[nodiscard]] QVariant read(const QString& space, const QString& key) const;

  // Asks for the value without waiting: it comes as settingChanged, where there is one.
  void request(const QString& space, const QString& key);

Q_SIGNALS:
  void settingChanged(const QString& space, const QString& key, const QVariant& value);

private Q_SLOTS:
  void receive(const QString& space, const QString& key, const QDBusVariant& value);
};

} // namespace velto
