// The base of items that paint themselves on whole device pixels.
#pragma once

#include <QPainter>
#include <QQuickItem>
#include <QRectF>
#include <QtQml/qqmlregistration.h>

namespace velto {

// An item that paints itself, as sharp at every scale as at 1x: its edges are snapped to whole
// device pixels of the window. Main thread only.
class PixelItem : public QQuickItem {
  Q_OBJECT
  QML_ANONYMOUS

public:
  explicit PixelItem(QQuickItem* parent = nullptr);

protected:
  // Paints the item, whose snapped edges are those of `bounds`, in points.
  virtual void paint(QPainter& painter, const QRectF& bounds) const = 0;
  // Whether all items of one size are painted in one size, on the nearest pixels; otherwise each
  // edge goes to the nearest pixel.
  [[nodiscard]] virtual bool keepsSize() const { return false; }
  // Paints again before the next frame.
  void repaint();

  void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
  class Picture;
  void lay();

  Picture* picture_; // the first child, below all others
  QRectF bounds_;    // of the item in the picture, in points
};

} // namespace velto
