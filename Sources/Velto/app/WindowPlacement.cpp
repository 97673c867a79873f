#include "WindowPlacement.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

// Room for the window manager's frame, whose size is not known before the window is shown. Title
// bars are at most about this high.
constexpr int titleBar = 48;
constexpr int border = 4;
constexpr int step = 4; // points

QRect roomIn(const QRect& freeArea) {
  return freeArea.adjusted(border, titleBar, -border, -border);
}

// `initial`, or the largest size of at most `most` that is a whole number of steps below it.
int atMost(int initial, int most) {
  const int steps = (std::max(initial - most, 0) + step - 1) / step;
  return initial - steps * step;
}

// The smallest size of at least `least` that is a whole number of steps below or above `initial`.
int atLeast(int initial, double least) {
  return initial - static_cast<int>(std::floor((initial - least) / step)) * step;
}

} // namespace

QSize WindowPlacement::smallest(const QSizeF& content, const QRect& freeArea) {
  return QSize(atLeast(initialSize.width(), content.width()),
               atLeast(initialSize.height(), content.height()))
      .boundedTo(roomIn(freeArea).size());
}

QSize WindowPlacement::opening(const QRect& freeArea) {
  const QSize room = roomIn(freeArea).size();
  return {atMost(initialSize.width(), room.width()), atMost(initialSize.height(), room.height())};
}

QRect WindowPlacement::centred(const QSize& size, const QRect& freeArea) {
  QRect window(freeArea.center() - QRect(QPoint(), size).center(), size);
  const QRect room = roomIn(freeArea);
  window.moveLeft(std::max(std::min(window.left(), room.right() + 1 - size.width()), room.left()));
  window.moveTop(std::max(std::min(window.top(), room.bottom() + 1 - size.height()), room.top()));
  return window;
}

} // namespace velto
