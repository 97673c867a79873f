// The part of a scale that handles the keyboard and assistive technology.
#pragma once

#include "FocusStop.h"

#include <QtQml/qqmlregistration.h>

namespace velto {

// The focus stop of a scale. Assistive technology reads `value` as the value of a slider and writes
// it to request another answer; the view writes `answer`. Main thread only.
class ScaleHandle : public velto::FocusStop {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double answer READ value WRITE setAnswer NOTIFY answerChanged FINAL)
  Q_PROPERTY(double value READ value WRITE ask NOTIFY answerChanged FINAL)
  Q_PROPERTY(double minimumValue MEMBER minimumValue_ NOTIFY rangeChanged FINAL)
  Q_PROPERTY(double maximumValue MEMBER maximumValue_ NOTIFY rangeChanged FINAL)
  Q_PROPERTY(double stepSize MEMBER stepSize_ NOTIFY rangeChanged FINAL) // 0: the steps vary

public:
  using FocusStop::FocusStop;

  [[nodiscard]] double value() const { return answer_; }
  void setAnswer(double answer);
  void ask(double value) { Q_EMIT asked(value); }

Q_SIGNALS:
  // Not valueChanged, of which Qt Quick would tell assistive technology in some releases only; this
  // class tells it in all.
  void answerChanged();
  void rangeChanged();
  // A request to answer `value`, which may be any number.
  void asked(double value);

private:
  double answer_ = 0;
  double minimumValue_ = 0;
  double maximumValue_ = 0;
  double stepSize_ = 0;
};

} // namespace velto
