// Notices that another program has destroyed a window, which Qt does not report.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QWindow>

#include <functional>

namespace velto {

// Main thread only; needs a QGuiApplication.
class WindowLoss final : public QAbstractNativeEventFilter {
public:
  // Calls `lost` when the X server reports that the window is gone, unless Qt destroyed it. Never
  // on other window systems, where no other program can destroy it. `window` must outlive this.
  WindowLoss(const QWindow& window, std::function<void()> lost);
  ~WindowLoss() override;

  WindowLoss(const WindowLoss&) = delete;
  WindowLoss& operator=(const WindowLoss&) = delete;

private:
  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

  const QWindow& window_;
  const std::function<void()> lost_;
};

} // namespace velto
