#include "ScaleHandle.h"

namespace velto {

void ScaleHandle::setAnswer(double answer) {
  if (answer_ == answer)
    return;
  answer_ = answer;
  Q_EMIT valueChanged();
}

} // namespace velto
