// A desktop portal on the session bus, with settings chosen by the test.
#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QThread>

#include <map>
#include <stdexcept>
#include <utility>

namespace velto::kit {

// Answers on a thread and connection of its own, so that a program in the same process may block on
// it. Call all functions from the thread that created it.
class FakePortal {
public:
  FakePortal() {
    thread_.start();
    object_.moveToThread(&thread_);
    bool ready = false;
    QMetaObject::invokeMethod(
        &object_, [&] { ready = object_.appear(); }, Qt::BlockingQueuedConnection);
    if (!ready)
      throw std::runtime_error("no session bus for a portal");
  }
  ~FakePortal() {
    QMetaObject::invokeMethod(
        &object_, [this] { object_.disappear(); }, Qt::BlockingQueuedConnection);
    thread_.quit();
    thread_.wait();
  }
  FakePortal(const FakePortal&) = delete;
  FakePortal& operator=(const FakePortal&) = delete;

  // Sets a value and sends the change signal.
  void set(const QString& space, const QString& key, const QVariant& value) {
    QMetaObject::invokeMethod(
        &object_, [&] { object_.set(space, key, value); }, Qt::BlockingQueuedConnection);
  }

private:
  class Object : public QDBusVirtualObject {
  public:
    bool appear() {
      QDBusConnection bus = connection();
      return bus.registerVirtualObject(path, this) && bus.registerService(service);
    }
    void disappear() {
      connection().unregisterService(service);
      connection().unregisterObject(path);
      QDBusConnection::disconnectFromBus(name);
    }

    void set(const QString& space, const QString& key, const QVariant& value) {
      settings_[{space, key}] = value;
      auto signal = QDBusMessage::createSignal(path, interface, QStringLiteral("SettingChanged"));
      signal << space << key << QVariant::fromValue(QDBusVariant(value));
      connection().send(signal);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
      if (message.interface() != interface || message.member() != QLatin1String("Read"))
        return false;
      const QVariantList arguments = message.arguments();
      const auto setting = settings_.find({arguments[0].toString(), arguments[1].toString()});
      if (setting == settings_.end())
        return bus.send(message.createErrorReply(
            QStringLiteral("org.freedesktop.portal.Error.NotFound"), QStringLiteral("not set")));
      // The portal wraps values twice.
      const QVariant once = QVariant::fromValue(QDBusVariant(setting->second));
      return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(once))));
    }

  private:
    inline static const QString name = QStringLiteral("velto-fake-portal");
    inline static const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
    inline static const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    inline static const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

    static QDBusConnection connection() {
      return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    }

    std::map<std::pair<QString, QString>, QVariant> settings_;
  };

  QThread thread_;
  Object object_;
};

} // namespace velto::kit
