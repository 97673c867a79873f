// The window's size and position on a screen.
#pragma once

#include <QRect>
#include <QSize>

namespace velto::WindowPlacement {

inline constexpr QSize initialSize(1180, 386); // of the content, points

// The window's smallest size for a content of at least `content` points, not larger than what fits
// into `freeArea`. Window managers resize from the smallest size in steps of whole points that are
// also whole pixels: the initial size is a multiple of 4 points above, which is such a step at
// every common scale.
[[nodiscard]] QSize smallest(const QSizeF& content, const QRect& freeArea);

// The largest size up to the initial one that fits into `freeArea` with its frame, in the same
// steps.
[[nodiscard]] QSize opening(const QRect& freeArea);

// The place of a content of `size` in `freeArea`: in the centre, moved as far as the title bar
// needs to be reached.
[[nodiscard]] QRect centred(const QSize& size, const QRect& freeArea);

} // namespace velto::WindowPlacement
