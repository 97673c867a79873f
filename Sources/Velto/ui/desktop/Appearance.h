// Light or dark, and with or without motion, as the desktop wants it.
#pragma once

#include "Portal.h"

#include <QObject>

#include <optional>

namespace velto {

// Follows the desktop's choice, live. Main thread only.
//
// Light or dark: the portal's colour scheme, and where that has no preference the lightness of the
// desktop's palette. A fixed choice overrides both.
//
// Motion: reduced where the portal's `reduced-motion` asks for that, or where the desktop's
// animations are off. It is asked for without waiting and is not reduced until the portal answers.
class Appearance : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool dark READ dark NOTIFY darkChanged FINAL)
  Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged FINAL)

public:
  explicit Appearance(std::optional<bool> fixedDark = std::nullopt, QObject* parent = nullptr);

  [[nodiscard]] bool dark() const { return dark_; }
  [[nodiscard]] bool reducedMotion() const { return motionUnwanted_ || animationsOff_; }

Q_SIGNALS:
  void darkChanged();
  void reducedMotionChanged();

private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void receive(const QString& space, const QString& key, const QVariant& value);
  void follow(const QVariant& colorScheme);

  std::optional<bool> fixedDark_;
  Portal portal_;
  QVariant colorScheme_;
  bool dark_ = true;
  bool motionUnwanted_ = false;
  bool animationsOff_ = false;
};

} // namespace velto
