// Where painted items lie, so that what they paint is as sharp as at 1x at every scale.
#pragma once

#include <QQuickPaintedItem>
#include <QRectF>

namespace velto::PixelGrid {

// Lays `item` so that it covers `box`, in points of the window, with every edge moved to the
// nearest whole device pixel. Returns where that lies in the item, in points. The item may reach
// further to the right and below: Qt gives a painted item a picture of whole points and whole
// pixels, and would stretch it to any other size. The item is in a window, neither scaled nor
// turned. Main thread only.
QRectF cover(QQuickPaintedItem& item, const QRectF& box);

} // namespace velto::PixelGrid
