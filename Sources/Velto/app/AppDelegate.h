// The window and what drives the session from outside of it: keys, focus and visibility, and the
// scripted run that ends in a snapshot.
#pragma once

#include "LaunchOptions.h"
#include "OutputDevice.h"
#include "PracticeModel.h"
#include "ProgressModel.h"
#include "Session.h"
#include "desktop/Appearance.h"

#include <QKeyEvent>
#include <QObject>
#include <QQuickView>
#include <QTimer>

#include <memory>
#include <optional>

namespace velto {

// Work queues on Qt's thread pool and on the main thread's event loop.
[[nodiscard]] WorkQueues qtWorkQueues();

// Main thread only; needs a QGuiApplication.
class AppDelegate : public QObject {
  Q_OBJECT

public:
  // Makes the session, which starts the first trial and plays to the devices of `makeDevice`.
  explicit AppDelegate(LaunchOptions options,
                       OutputDeviceFactory makeDevice = makeDefaultOutputDevice);
  ~AppDelegate() override;

  // Registers the wordmark's face and opens the window. False, after a line on standard error, when
  // the interface cannot be loaded.
  [[nodiscard]] bool applicationDidFinishLaunching();

  [[nodiscard]] Session& session() { return session_; }
  [[nodiscard]] QQuickView* window() { return window_.get(); }

private Q_SLOTS:
  // The window is never smaller than its content.
  void limitSize();

private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool handleKey(const QKeyEvent& event);
  void noteRelease(const QKeyEvent& event);
  [[nodiscard]] bool isRepeatedReturn(const QKeyEvent& event) const;
  void openWindow();
  void followDesktop();
  void installLifecycle();
  void followExposure();
  void suspend();
  void resume();
  void installSoundTimer();
  void scheduleShot(const QString& path);
  // Both are the ends of the scripted run: false, or a status that is not 0, when it failed.
  [[nodiscard]] bool submitScripted(double answer);
  [[nodiscard]] int shoot(const QString& path);

  LaunchOptions options_;
  Session session_;
  Appearance appearance_;
  PracticeModel model_;
  ProgressModel progress_;
  std::unique_ptr<QQuickView> window_;
  QTimer soundTimer_; // while not suspended
  bool exposed_ = false;
  std::optional<quint64> returnReleased_; // when Return was last released, ms
  Qt::WindowStates windowStates_;
};

} // namespace velto
