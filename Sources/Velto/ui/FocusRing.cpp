#include "FocusRing.h"

#include "DevicePixels.h"
#include "FocusStop.h"
#include "PixelGrid.h"
#include "RoundedBox.h"

#include <QKeyEvent>
#include <QPainter>
#include <QQuickWindow>

namespace velto {

namespace {

// The ring is 2 points wide, 1 point away from the control.
constexpr double reach = 3;
constexpr double thickness = 2;

bool movesFocus(int key) {
  return key == Qt::Key_Tab || key == Qt::Key_Backtab || FocusStop::moveOf(key).has_value();
}

} // namespace

FocusRing::FocusRing(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setVisible(false);
  setAntialiasing(true);
  connect(this, &FocusRing::colorChanged, this, [this] { update(); });
}

void FocusRing::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange && data.window != nullptr) {
    data.window->installEventFilter(this);
    connect(data.window, &QQuickWindow::activeFocusItemChanged, this, &FocusRing::follow);
    // The focused control may move.
    connect(data.window, &QQuickWindow::afterAnimating, this, &FocusRing::follow,
            Qt::UniqueConnection);
  }
  QQuickPaintedItem::itemChange(change, data);
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
  const bool used = keyboardUsed_;
  if (event->type() == QEvent::KeyPress)
    keyboardUsed_ = used || movesFocus(static_cast<const QKeyEvent*>(event)->key());
  else if (event->type() == QEvent::MouseButtonPress)
    keyboardUsed_ = false;
  if (keyboardUsed_ != used)
    follow();
  return QQuickPaintedItem::eventFilter(watched, event);
}

void FocusRing::follow() {
  const auto* stop =
      window() == nullptr ? nullptr : qobject_cast<FocusStop*>(window()->activeFocusItem());
  setVisible(keyboardUsed_ && stop != nullptr);
  if (isVisible())
    surround(*stop);
}

void FocusRing::surround(const FocusStop& stop) {
  const QRectF ring = PixelGrid::cover(
      *this, stop.mapRectToScene(stop.boundingRect()).adjusted(-reach, -reach, reach, reach));
  const double radius = stop.ringRadius() + reach;
  if (ring == ring_ && radius == radius_)
    return;
  ring_ = ring;
  radius_ = radius;
  update();
}

void FocusRing::paint(QPainter* painter) {
  const double pen = DevicePixels::wholeWidth(thickness, window()->effectiveDevicePixelRatio());
  const double inset = pen / 2;
  painter->setRenderHint(QPainter::Antialiasing);
  painter->strokePath(
      roundedOutline(ring_.adjusted(inset, inset, -inset, -inset), radius_ - inset, false),
      QPen(color_, pen, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
}

} // namespace velto
