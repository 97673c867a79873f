#include "PixelItem.h"

#include "PixelGrid.h"

#include <QQuickPaintedItem>
#include <QQuickWindow>

namespace velto {

class PixelItem::Picture : public QQuickPaintedItem {
public:
  explicit Picture(PixelItem& item) : QQuickPaintedItem(&item), item_(item) {
    setAntialiasing(true);
  }
  void paint(QPainter* painter) override {
    painter->setRenderHint(QPainter::Antialiasing);
    item_.paint(*painter, item_.bounds_);
  }

private:
  PixelItem& item_;
};

PixelItem::PixelItem(QQuickItem* parent) : QQuickItem(parent), picture_(new Picture(*this)) {}

void PixelItem::repaint() {
  picture_->update();
}

void PixelItem::itemChange(ItemChange change, const ItemChangeData& data) {
  // The item also moves relative to the pixel grid when an ancestor moves.
  if (change == ItemSceneChange && data.window != nullptr)
    connect(data.window, &QQuickWindow::afterAnimating, this, &PixelItem::lay,
            Qt::UniqueConnection);
  QQuickItem::itemChange(change, data);
}

void PixelItem::lay() {
  if (window() == nullptr || !isVisible())
    return;
  const QRectF box = mapRectToScene(boundingRect());
  const double ratio = window()->effectiveDevicePixelRatio();
  const QRectF bounds =
      PixelGrid::cover(*picture_, keepsSize() ? PixelGrid::sameSize(box, ratio) : box);
  if (bounds == bounds_)
    return;
  bounds_ = bounds;
  picture_->update();
}

} // namespace velto
