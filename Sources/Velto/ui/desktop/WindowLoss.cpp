#include "WindowLoss.h"

#include <QCoreApplication>

#include <cstring>
#include <utility>

namespace velto {

namespace {

// The event DestroyNotify of the X protocol.
struct DestroyNotify {
  static constexpr quint8 code = 17;
  static constexpr quint8 codeMask = 0x7F; // the other bit marks events that a client sent

  quint8 type;
  quint8 unused;
  quint16 sequence;
  quint32 event; // the window for which the event was selected
  quint32 window;
};

} // namespace

WindowLoss::WindowLoss(const QWindow& window, std::function<void()> lost)
    : window_(window), lost_(std::move(lost)) {
  QCoreApplication::instance()->installNativeEventFilter(this);
}

WindowLoss::~WindowLoss() {
  if (QCoreApplication* application = QCoreApplication::instance())
    application->removeNativeEventFilter(this);
}

bool WindowLoss::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t")
    return false;
  DestroyNotify event{};
  std::memcpy(&event, message, sizeof event);
  if ((event.type & DestroyNotify::codeMask) == DestroyNotify::code &&
      window_.handle() != nullptr && window_.winId() == event.window)
    lost_();
  return false;
}

} // namespace velto
