#include "Portal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>

#include <future>
#include <map>
#include <utility>

namespace velto {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
constexpr int timeoutMilliseconds = 200;

// Values are wrapped in one or two variants, depending on the version of the portal.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  return value;
}

QDBusMessage readCall(const QString& space, const QString& key) {
  auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  call << space << key;
  return call;
}

using Values = std::map<std::pair<QString, QString>, QVariant>;

// Blocks for at most 200 ms.
QVariant valueOf(const QString& space, const QString& key) {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected())
    return {};
  const QDBusMessage reply = bus.call(readCall(space, key), QDBus::Block, timeoutMilliseconds);
  if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
    return {};
  return unwrapped(reply.arguments().constFirst());
}

// The values that were read ahead and not taken yet. Main thread only.
std::future<Values> arriving;
Values arrived;

} // namespace

void Portal::readAhead(const std::vector<Setting>& settings) {
  qDBusRegisterMetaType<QDBusVariant>();
  arriving = std::async(std::launch::async, [settings] {
    Values values;
    for (const auto& [space, key] : settings)
      values[{space, key}] = valueOf(space, key);
    return values;
  });
}

Portal::Portal(QObject* parent) : QObject(parent) {
  qDBusRegisterMetaType<QDBusVariant>();
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (bus.isConnected())
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(receive(QString, QString, QDBusVariant)));
}

QVariant Portal::read(const QString& space, const QString& key) const {
  if (arriving.valid())
    arrived = arriving.get();
  if (const auto early = arrived.extract({space, key}))
    return early.mapped();
  return valueOf(space, key);
}

void Portal::request(const QString& space, const QString& key) {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected())
    return;
  auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(readCall(space, key)), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, space, key] {
    const QDBusMessage reply = watcher->reply();
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
      Q_EMIT settingChanged(space, key, unwrapped(reply.arguments().constFirst()));
    watcher->deleteLater();
  });
}

void Portal::receive(const QString& space, const QString& key, const QDBusVariant& value) {
  Q_EMIT settingChanged(space, key, unwrapped(value.variant()));
}

} // namespace velto
