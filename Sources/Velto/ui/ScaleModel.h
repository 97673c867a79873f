// The answer scales for QML.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// One scale; see FrequencyScale and DecibelScale. Positions and widths in points. Main thread only.
class ScaleModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("use the singleton Scales")
  // Objects with `value`, `height`, `major` and `label`.
  Q_PROPERTY(QVariantList ticks READ ticks CONSTANT FINAL)
  Q_PROPERTY(double labelOffset READ labelOffset CONSTANT FINAL)
  Q_PROPERTY(double lowest READ lowest CONSTANT FINAL)
  Q_PROPERTY(double highest READ highest CONSTANT FINAL)
  Q_PROPERTY(double step READ step CONSTANT FINAL) // 0: the steps vary

public:
  using QObject::QObject;

  [[nodiscard]] virtual QVariantList ticks() const = 0;
  [[nodiscard]] virtual double labelOffset() const = 0;
  [[nodiscard]] virtual double lowest() const = 0;
  [[nodiscard]] virtual double highest() const = 0;
  [[nodiscard]] virtual double step() const = 0;
  [[nodiscard]] Q_INVOKABLE virtual double position(double value, double width) const = 0;
  [[nodiscard]] Q_INVOKABLE virtual double valueAt(double x, double width) const = 0;
  // The answer nearest to any value.
  [[nodiscard]] Q_INVOKABLE virtual double nearest(double value) const = 0;
  // The answer that a key leads to; `move` is a Move.
  [[nodiscard]] Q_INVOKABLE virtual double moved(double value, int move) const = 0;
  [[nodiscard]] Q_INVOKABLE virtual QString text(double value) const = 0;
  // The text for screen readers.
  [[nodiscard]] Q_INVOKABLE virtual QString spoken(double value) const = 0;

  // The next answer up and down the axis.
  [[nodiscard]] Q_INVOKABLE double increased(double value) const;
  [[nodiscard]] Q_INVOKABLE double decreased(double value) const;
};

// The scales of the drills.
class Scales : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(velto::ScaleModel* frequency READ frequency CONSTANT FINAL)
  Q_PROPERTY(velto::ScaleModel* level READ level CONSTANT FINAL)
  Q_PROPERTY(velto::ScaleModel* dynamics READ dynamics CONSTANT FINAL)

public:
  explicit Scales(QObject* parent = nullptr);

  [[nodiscard]] ScaleModel* frequency() const { return frequency_; }
  [[nodiscard]] ScaleModel* level() const { return level_; }
  [[nodiscard]] ScaleModel* dynamics() const { return dynamics_; }

private:
  ScaleModel* frequency_; // children
  ScaleModel* level_;
  ScaleModel* dynamics_;
};

} // namespace velto
