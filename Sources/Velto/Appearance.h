// Light or dark, as the desktop wants it.
#pragma once

#include "Portal.h"

#include <QObject>

#include <optional>

namespace velto {

// Follows the desktop's choice: the portal's colour scheme, and where that has no preference the
// lightness of the desktop's palette. A fixed choice overrides both. Main thread only.
class Appearance : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool dark READ dark NOTIFY darkChanged FINAL)

public:
  explicit Appearance(std::optional<bool> fixedDark = std::nullopt, QObject* parent = nullptr);

  [[nodiscard]] bool dark() const { return dark_; }

Q_SIGNALS:
  void darkChanged();

private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void follow(const QVariant& colorScheme);

  std::optional<bool> fixedDark_;
  Portal portal_;
  QVariant colorScheme_;
  bool dark_ = true;
};

} // namespace velto
