// The window's size and position on a screen.
#pragma once

#include <QRect>
#include <QSize>

namespace velto::WindowPlacement {

inline constexpr QSize initialSize(1180, 386); // of the content, points

// The window's smallest size for a content of at least `content` points, not larger than what fits
// into `freeArea`. Window managers resize in steps from the smallest size. The initial size differs
// from it by a multiple of 4 points, which are whole pixels at every common scale, so that it is
// among the sizes that can be reached.
[[nodiscard]] QSize smallest(const QSizeF& content, const QRect& freeArea);

// The largest size up to the initial one that fits into `freeArea` with its frame, in the same
// steps.
[[nodiscard]] QSize opening(const QRect& freeArea);

// The place of a content of `size` in `freeArea`: in the centre, but moved if need be so that the
// title bar stays within reach.
[[nodiscard]] QRect centred(const QSize& size, const QRect& freeArea);

} // namespace velto::WindowPlacement
