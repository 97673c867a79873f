// The settings of the desktop portal, read over the session bus.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

#include <vector>

namespace velto {

// Reads settings of the desktop portal and reports changes. Without a session bus or a portal, no
// setting has a value and no change is reported. Main thread only.
class Portal : public QObject {
  Q_OBJECT

public:
  explicit Portal(QObject* parent = nullptr);

  struct Setting {
    QString space;
    QString key;
  };
  // Non-blocking. Connects to the bus and reads the settings on another thread. The first read() of
  // each setting returns this value. Call before the first Portal is created, if at all.
  static void readAhead(const std::vector<Setting>& settings);

  // The value of `key` in the namespace `space`; invalid if there is none. Blocks for at most 200
  // ms, or until all settings of readAhead() have arrived, which take at most 200 ms each.
  [[nodiscard]] QVariant read(const QString& space, const QString& key) const;

  // Non-blocking read(): emits settingChanged with the value, if there is one.
  void request(const QString& space, const QString& key);

Q_SIGNALS:
  void settingChanged(const QString& space, const QString& key, const QVariant& value);

private Q_SLOTS:
  void receive(const QString& space, const QString& key, const QDBusVariant& value);
};

} // namespace velto
