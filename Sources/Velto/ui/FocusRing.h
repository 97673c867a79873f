// The indicator of the keyboard focus.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace velto {

class FocusStop;

// A ring around the FocusStop with the window's focus, on whole pixels at every scale. It appears
// when a key moves the focus or a choice and disappears when a mouse button is pressed. It must be
// above all other items, in a parent at the window's origin. Main thread only.
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
