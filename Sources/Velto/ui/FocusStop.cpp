#include "FocusStop.h"

#include <QKeyEvent>

namespace velto {

FocusStop::FocusStop(QQuickItem* parent) : QQuickItem(parent) {
  setActiveFocusOnTab(true);
}

std::optional<Move> FocusStop::moveOf(int key) {
  switch (key) {
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

int FocusStop::movedChoice(int chosen, int count, int move) {
  return KeyMoves::movedChoice(chosen, count, static_cast<Move>(move));
}

void FocusStop::keyPressEvent(QKeyEvent* event) {
  const auto move = event->modifiers() == Qt::NoModifier ? moveOf(event->key()) : std::nullopt;
  event->setAccepted(move.has_value());
  if (move)
    Q_EMIT moved(static_cast<int>(*move));
}

} // namespace velto
