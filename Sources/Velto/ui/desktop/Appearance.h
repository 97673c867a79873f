// The desktop's settings for light or dark and for reduced motion.
#pragma once

#include "Portal.h"

#include <QObject>

#include <optional>

namespace velto {

// Follows changes of the settings live. Main thread only.
//
// Dark: the portal's colour scheme, or the lightness of the desktop's palette if the portal has no
// preference. A fixed choice overrides both.
//
// Reduced motion: set if the portal's `reduced-motion` is, or if the desktop's animations are off.
// Queried asynchronously; false until the portal answers.
class Appearance : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool dark READ dark NOTIFY darkChanged FINAL)
  Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged FINAL)

public:
  // The setting that the constructor waits for.
  [[nodiscard]] static Portal::Setting colorSchemeSetting();

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
