// The answer scales for QML.
#pragma once

#include "Answering.h"

#include <QObject>
#include <QPointF>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// What the scale pickers share; see FrequencyScale and DecibelScale. Lengths in points.
class ScaleModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("use FrequencyScaleModel or DecibelScaleModel")
  // Objects with `value`, `height`, `major` and `label`.
  Q_PROPERTY(QVariantList ticks READ ticks NOTIFY axisChanged FINAL)
  Q_PROPERTY(double labelOffset READ labelOffset CONSTANT FINAL)
  // The ends of the axis, and the smallest step along it (0: the steps differ).
  Q_PROPERTY(double lowest READ lowest NOTIFY axisChanged FINAL)
  Q_PROPERTY(double highest READ highest NOTIFY axisChanged FINAL)
  Q_PROPERTY(double smallestStep READ smallestStep NOTIFY axisChanged FINAL)

public:
  using QObject::QObject;

  [[nodiscard]] virtual QVariantList ticks() const = 0;
  [[nodiscard]] virtual double labelOffset() const = 0;
  [[nodiscard]] virtual double lowest() const = 0;
  [[nodiscard]] virtual double highest() const = 0;
  [[nodiscard]] virtual double smallestStep() const = 0;
  [[nodiscard]] Q_INVOKABLE virtual double position(double value, double width) const = 0;
  [[nodiscard]] Q_INVOKABLE virtual double valueAt(double x, double width) const = 0;
  // The answer nearest to any value.
  [[nodiscard]] Q_INVOKABLE virtual double nearest(double value) const = 0;
  // Where a key leads from `value`; `move` is a FocusStop::Key.
  [[nodiscard]] Q_INVOKABLE virtual double moved(double value, int move) const = 0;
  [[nodiscard]] Q_INVOKABLE virtual QString text(double value) const = 0;
  // As it is read out.
  [[nodiscard]] Q_INVOKABLE virtual QString spoken(double value) const = 0;

  // See Answering::tickLeft.
  [[nodiscard]] Q_INVOKABLE static double tickLeft(double x, double width, double stripWidth,
                                                   double devicePixelRatio);
  // See Answering::placeChips. Marker positions that are undefined stand for no marker; the result
  // is the chip's top left corner.
  [[nodiscard]] Q_INVOKABLE static QPointF answerChip(const QVariant& answerX, double answerWidth,
                                                      const QVariant& truthX, double truthWidth,
                                                      double stripWidth);
  [[nodiscard]] Q_INVOKABLE static QPointF truthChip(const QVariant& answerX, double answerWidth,
                                                     const QVariant& truthX, double truthWidth,
                                                     double stripWidth);

Q_SIGNALS:
  void axisChanged();
};

class FrequencyScaleModel : public velto::ScaleModel {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double lo MEMBER lo_ NOTIFY axisChanged FINAL) // Hz
  Q_PROPERTY(double hi MEMBER hi_ NOTIFY axisChanged FINAL) // Hz

public:
  using ScaleModel::ScaleModel;

  [[nodiscard]] QVariantList ticks() const override;
  [[nodiscard]] double labelOffset() const override { return FrequencyScale::labelOffset; }
  [[nodiscard]] double lowest() const override { return lo_; }
  [[nodiscard]] double highest() const override { return hi_; }
  [[nodiscard]] double smallestStep() const override { return 0; }
  [[nodiscard]] Q_INVOKABLE double position(double value, double width) const override;
  [[nodiscard]] Q_INVOKABLE double valueAt(double x, double width) const override;
  [[nodiscard]] Q_INVOKABLE double nearest(double value) const override;
  [[nodiscard]] Q_INVOKABLE double moved(double value, int move) const override;
  [[nodiscard]] Q_INVOKABLE QString text(double value) const override;
  [[nodiscard]] Q_INVOKABLE QString spoken(double value) const override;

private:
  [[nodiscard]] FrequencyScale scale() const { return {lo_, hi_}; }

  double lo_ = 40;
  double hi_ = 16000;
};

class DecibelScaleModel : public velto::ScaleModel {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double lower MEMBER lower_ NOTIFY axisChanged FINAL) // dB
  Q_PROPERTY(double upper MEMBER upper_ NOTIFY axisChanged FINAL) // dB
  Q_PROPERTY(double step MEMBER step_ NOTIFY axisChanged FINAL)   // dB

public:
  using ScaleModel::ScaleModel;

  [[nodiscard]] QVariantList ticks() const override;
  [[nodiscard]] double labelOffset() const override { return DecibelScale::labelOffset; }
  [[nodiscard]] double lowest() const override { return lower_; }
  [[nodiscard]] double highest() const override { return upper_; }
  [[nodiscard]] double smallestStep() const override { return step_; }
  [[nodiscard]] Q_INVOKABLE double position(double value, double width) const override;
  [[nodiscard]] Q_INVOKABLE double valueAt(double x, double width) const override;
  [[nodiscard]] Q_INVOKABLE double nearest(double value) const override;
  [[nodiscard]] Q_INVOKABLE double moved(double value, int move) const override;
  [[nodiscard]] Q_INVOKABLE QString text(double value) const override;
  [[nodiscard]] Q_INVOKABLE QString spoken(double value) const override;

private:
  [[nodiscard]] DecibelScale scale() const { return {lower_, upper_, step_}; }

  double lower_ = 0;
  double upper_ = 7;
  double step_ = 0.05;
};

} // namespace velto
