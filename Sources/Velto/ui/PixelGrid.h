// Places painted items on whole device pixels, so that they are as sharp at every scale as at 1x.
#pragma once

#include <QQuickPaintedItem>
#include <QRectF>

namespace velto::PixelGrid {

// Moves and sizes `item` to cover `box` (points of the window) with every edge on the nearest
// device pixel. Returns the covered rectangle in points of the item. The item may extend further
// right and down: Qt paints it into an image of whole points and whole pixels, and would stretch
// that to any other size. The item must be in a window, neither scaled nor rotated. Main thread
// only.
QRectF cover(QQuickPaintedItem& item, const QRectF& box);

// `box` (points of the window) resized to whole device pixels, about its centre and on whole
// pixels. Boxes of one size become boxes of one size.
[[nodiscard]] QRectF sameSize(const QRectF& box, double devicePixelRatio);

} // namespace velto::PixelGrid
