#include "ScaleHandle.h"

#include <QAccessible>

namespace velto {

void ScaleHandle::setAnswer(double answer) {
  if (answer_ == answer)
    return;
  answer_ = answer;
  Q_EMIT answerChanged();
  QAccessibleValueChangeEvent event(this, answer_);
  QAccessible::updateAccessibility(&event);
}

} // namespace velto
