#include "FocusStop.h"

#include "ButtonAccess.h"

#include <QKeyEvent>

#include <optional>

namespace velto {

namespace {

std::optional<Move> moveOf(const QKeyEvent& event) {
  if (event.modifiers() != Qt::NoModifier)
    return std::nullopt;
  switch (event.key()) {
  case Qt::Key_Left:
    return Move::left;
  case Qt::Key_Right:
    return Move::right;
  case Qt::Key_Up:
    return Move::up;
  case Qt::Key_Down:
    return Move::down;
  case Qt::Key_PageUp:
    return Move::pageUp;
  case Qt::Key_PageDown:
    return Move::pageDown;
  case Qt::Key_Home:
    return Move::toStart;
  case Qt::Key_End:
    return Move::toEnd;
  default:
    return std::nullopt;
  }
}

} // namespace

FocusStop::FocusStop(QQuickItem* parent) : QQuickItem(parent) {
  setActiveFocusOnTab(true);
  ButtonAccess::install();
  connect(this, &FocusStop::availableChanged, this, [this] {
    if (isButton_)
      ButtonAccess::tellAvailable(*this);
  });
}

int FocusStop::movedChoice(int chosen, int count, int key) {
  return Answering::movedChoice(chosen, count, static_cast<Move>(key));
}

void FocusStop::keyPressEvent(QKeyEvent* event) {
  const auto move = moveOf(*event);
  event->setAccepted(move.has_value());
  if (move)
    Q_EMIT moved(static_cast<int>(*move));
}

} // namespace velto
