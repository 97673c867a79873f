// The window, and the events that control the session: keys, focus, visibility, and the scripted
// run that ends with a snapshot.
#pragma once

#include "Assignment.h"
#include "LaunchOptions.h"
#include "OutputDevice.h"
#include "PracticeModel.h"
#include "ProgressModel.h"
#include "Session.h"
#include "desktop/Appearance.h"
#include "desktop/WindowLoss.h"

#include <QKeyEvent>
#include <QObject>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickView>
#include <QRect>
#include <QTimer>

#include <future>
#include <memory>
#include <optional>

namespace velto {

// Work queues on Qt's thread pool and the main thread's event loop.
[[nodiscard]] WorkQueues qtWorkQueues();

// Main thread only. Needs a QGuiApplication.
class AppDelegate : public QObject {
  Q_OBJECT

public:
  // Creates the session, which starts the first trial and plays through devices from `makeDevice`.
  // With an assignment, its trials are played, and `options.fair` and `options.drill` are ignored.
  explicit AppDelegate(LaunchOptions options, OutputDeviceFactory makeDevice = systemOutput(),
                       std::optional<Assignment> assignment = std::nullopt);
  ~AppDelegate() override;

  // Registers the wordmark's face and opens the window. If the interface cannot be loaded, writes a
  // line to standard error and returns false.
  [[nodiscard]] bool applicationDidFinishLaunching();

  [[nodiscard]] Session& session() { return session_; }
  [[nodiscard]] QQuickView* window() { return window_.get(); }

private Q_SLOTS:
  // Keeps the window at least as large as its content, as far as the screen allows.
  void limitSize();

Q_SIGNALS:
  // Sent once, when the first frame is on the screen, or a second after the start without one.
  void opened();

private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool handleKey(const QKeyEvent& event);
  void noteRelease(const QKeyEvent& event);
  [[nodiscard]] bool isRepeatedReturn(const QKeyEvent& event) const;
  void openWindow();
  [[nodiscard]] QRect freeArea() const; // of the window's screen
  void announceOpening();
  void followDesktop();
  void installLifecycle();
  void followExposure();
  void suspend();
  void resume();
  void installSoundTimer();
  void scheduleShot(const QString& path);
  // The steps of the scripted run. They return false, or a non-zero exit status, on failure.
  [[nodiscard]] bool submitScripted(double answer);
  [[nodiscard]] int shoot(const QString& path);

  // What takes time to load and can be loaded on other threads, started before all else.
  struct Preparation {
    Preparation();
    ~Preparation();
    std::future<void> face; // registered when ready
    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<QQmlComponent> content;
  };

  LaunchOptions options_;
  bool isAssigned_;
  Preparation preparation_;
  Session session_;
  Appearance appearance_;
  PracticeModel model_;
  ProgressModel progress_;
  std::unique_ptr<QQuickView> window_;
  std::optional<WindowLoss> windowLoss_;
  QTimer soundTimer_; // runs while not suspended
  bool exposed_ = false;
  std::optional<quint64> returnReleased_; // timestamp of the last release of Return, ms
  Qt::WindowStates windowStates_;
};

} // namespace velto
