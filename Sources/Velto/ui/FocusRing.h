// Shows where the keyboard's focus is.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace velto {

class FocusStop;

// A ring round the FocusStop that has the window's focus, on whole pixels at every scale. It shows
// once the focus is moved or used by the keyboard, and goes when the mouse is pressed. It belongs
// over all other items, in a parent at the window's origin. Main thread only.
class FocusRing : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY colorChanged FINAL)

public:
  explicit FocusRing(QQuickItem* parent = nullptr);
  void paint(QPainter* painter) override;

Q_SIGNALS:
  void colorChanged();

protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void follow();
  void surround(const FocusStop& stop);

  QColor color_;
  bool keyboardUsed_ = false;
  QRectF ring_; // the outer edge, in points of the item
  double radius_ = 0;
};

} // namespace velto
