#include "AppDelegate.h"

#include "AssignedCourse.h"
#include "AudioEngine.h"
#include "PracticeCourse.h"
#include "Theme.h"
#include "WindowPlacement.h"
#include "desktop/CapsLock.h"
#include "desktop/Fonts.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>
#include <QShortcut>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace velto {

namespace {

constexpr std::chrono::milliseconds soundInterval{250};

QUrl contentUrl() {
  return QUrl(QStringLiteral("qrc:/qt/qml/Velto/ContentView.qml"));
}

double secondsSince1970() {
  return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
}

std::unique_ptr<Course> courseOf(std::optional<Assignment> assignment) {
  if (assignment)
    return std::make_unique<AssignedCourse>(std::move(*assignment), qtWorkQueues());
  return std::make_unique<PracticeCourse>();
}

} // namespace

WorkQueues qtWorkQueues() {
  return {.background =
              [](WorkQueues::Work work) { QThreadPool::globalInstance()->start(std::move(work)); },
          .main =
              [](WorkQueues::Work work) {
                QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work),
                                          Qt::QueuedConnection);
              }};
}

// Reading the fonts' configuration, the desktop's settings and the QML files takes longer than
// anything else at the start.
AppDelegate::Preparation::Preparation()
    : face(std::async(std::launch::async, &BrandType::registerFace)) {
  std::vector<Portal::Setting> settings = Fonts::portalSettings();
  settings.push_back(Appearance::colorSchemeSetting());
  Portal::readAhead(settings);
  engine = std::make_unique<QQmlEngine>();
  engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
  content =
      std::make_unique<QQmlComponent>(engine.get(), contentUrl(), QQmlComponent::Asynchronous);
}

AppDelegate::Preparation::~Preparation() = default;

AppDelegate::AppDelegate(LaunchOptions options, OutputDeviceFactory makeDevice,
                         std::optional<Assignment> assignment)
    : options_(std::move(options)), isAssigned_(assignment.has_value()),
      session_(courseOf(std::move(assignment)), options_.drill, qtWorkQueues(),
               std::make_unique<Player>(std::make_unique<Engine>(std::move(makeDevice)),
                                        Player::Opening::inBackground),
               secondsSince1970(),
               options_.fair || isAssigned_ ? Session::Trials::fair : Session::Trials::standard),
      appearance_(options_.fixedDark), model_(session_), progress_(session_) {
  connect(&appearance_, &Appearance::darkChanged, this, &AppDelegate::followDesktop);
  connect(&appearance_, &Appearance::reducedMotionChanged, this, &AppDelegate::followDesktop);
  connect(&model_, &PracticeModel::finished, this, [this] { window_->close(); });
}

AppDelegate::~AppDelegate() {
  // Qt on Wayland sends events from a window that is being destroyed.
  if (window_) {
    window_->removeEventFilter(this);
    disconnect(window_.get(), nullptr, this, nullptr);
  }
  window_.reset();
  preparation_.engine.reset();
  // Renders in progress still post their results to the event loop.
  QThreadPool::globalInstance()->waitForDone();
}

bool AppDelegate::applicationDidFinishLaunching() {
  // A window that exists when a face is registered would lay out all its text twice.
  preparation_.face.get();
  openWindow();
  if (window_->status() != QQuickView::Ready) {
    std::fputs("Velto: the interface cannot be loaded\n", stderr);
    return false;
  }
  installLifecycle();
  installSoundTimer();
  if (options_.shotPath)
    scheduleShot(QString::fromStdString(*options_.shotPath));
  return true;
}

void AppDelegate::openWindow() {
  window_ = std::make_unique<QQuickView>(preparation_.engine.get(), nullptr);
  window_->setTitle(QStringLiteral("MORLA Velto"));
  window_->setResizeMode(QQuickView::SizeRootObjectToView);

  // Texts wrap in a narrow window: the content must have its width before it is measured.
  const QSize size = WindowPlacement::opening(freeArea());
  window_->resize(size);
  window_->setInitialProperties({{QStringLiteral("width"), size.width()},
                                 {QStringLiteral("height"), size.height()},
                                 {QStringLiteral("session"), QVariant::fromValue(&model_)},
                                 {QStringLiteral("progress"), QVariant::fromValue(&progress_)},
                                 {QStringLiteral("dark"), appearance_.dark()}});
  followDesktop();
  window_->setSource(contentUrl());
  preparation_.content.reset();
  QQuickItem* root = window_->rootObject();
  if (root == nullptr)
    return;
  connect(root, SIGNAL(moveRequested()), window_.get(), SLOT(startSystemMove()));

  followDesktop();
  connect(root, SIGNAL(minimumWidthChanged()), this, SLOT(limitSize()));
  connect(root, SIGNAL(minimumHeightChanged()), this, SLOT(limitSize()));
  limitSize();
  window_->setPosition(WindowPlacement::centred(window_->size(), freeArea()).topLeft());
  for (const int key : {Qt::Key_Q, Qt::Key_W})
    connect(new QShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(key)), window_.get()),
            &QShortcut::activated, window_.get(), &QWindow::close);
  window_->installEventFilter(this);
  window_->show();
  window_->raise();
  window_->requestActivate();
  announceOpening();
}

void AppDelegate::announceOpening() {
  constexpr std::chrono::seconds patience{1};
  const auto announce = [this, root = window_->rootObject(), done = std::make_shared<bool>()] {
    if (std::exchange(*done, true))
      return;
    root->setProperty("opened", true);
    Q_EMIT opened();
  };
  // Queued: the frame is on the screen before other work begins.
  connect(window_.get(), &QQuickWindow::frameSwapped, this, announce,
          static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
  QTimer::singleShot(patience, this, announce);
}

void AppDelegate::followDesktop() {
  if (!window_)
    return;
  window_->setColor((appearance_.dark() ? Palette::dark() : Palette::light()).bg);
  QQuickItem* root = window_->rootObject();
  if (root == nullptr)
    return;
  root->setProperty("dark", appearance_.dark());
  root->setProperty("reducedMotion", appearance_.reducedMotion());
}

QRect AppDelegate::freeArea() const {
  const QScreen* screen = window_->screen();
  return screen == nullptr ? QRect(QPoint(), 2 * WindowPlacement::initialSize)
                           : screen->availableGeometry();
}

void AppDelegate::limitSize() {
  const QQuickItem* root = window_->rootObject();
  window_->setMinimumSize(WindowPlacement::smallest(
      {root->property("minimumWidth").toDouble(), root->property("minimumHeight").toDouble()},
      freeArea()));
  const int increment = WindowPlacement::increment(window_->effectiveDevicePixelRatio());
  window_->setSizeIncrement({increment, increment});
  window_->resize(window_->size().expandedTo(window_->minimumSize()));
}

void AppDelegate::installLifecycle() {
  windowLoss_.emplace(*window_, [] { QCoreApplication::quit(); });
  connect(window_.get(), &QWindow::activeChanged, this, [this] {
    if (window_->isActive())
      resume();
    else
      suspend();
  });
  connect(window_.get(), &QWindow::windowStateChanged, this, [this] {
    const bool wasMinimized = windowStates_.testFlag(Qt::WindowMinimized);
    windowStates_ = window_->windowStates();
    const bool isMinimized = windowStates_.testFlag(Qt::WindowMinimized);
    if (isMinimized && !wasMinimized)
      suspend();
    else if (wasMinimized && !isMinimized)
      resume();
  });
}

void AppDelegate::followExposure() {
  if (window_->isExposed() == exposed_)
    return;
  exposed_ = window_->isExposed();
  if (exposed_)
    resume();
  else
    suspend();
}

void AppDelegate::suspend() {
  session_.suspend();
  soundTimer_.stop();
}

void AppDelegate::resume() {
  session_.resume();
  soundTimer_.start();
}

// Nothing signals that output is back, so poll for it.
void AppDelegate::installSoundTimer() {
  soundTimer_.setInterval(soundInterval);
  connect(&soundTimer_, &QTimer::timeout, this,
          [this] { session_.followSound(std::chrono::steady_clock::now()); });
  soundTimer_.start();
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyRelease)
    noteRelease(static_cast<const QKeyEvent&>(*event));
  // Return is a shortcut of the view; accepting the event suppresses the shortcut.
  if (event->type() == QEvent::ShortcutOverride &&
      isRepeatedReturn(static_cast<const QKeyEvent&>(*event))) {
    event->accept();
    return true;
  }
  if (event->type() == QEvent::KeyPress)
    return handleKey(static_cast<const QKeyEvent&>(*event));
  const bool handled = QObject::eventFilter(watched, event);
  if (event->type() == QEvent::Expose)
    followExposure();
  return handled;
}

void AppDelegate::noteRelease(const QKeyEvent& event) {
  if (event.key() == Qt::Key_Return)
    returnReleased_ = event.timestamp();
}

bool AppDelegate::isRepeatedReturn(const QKeyEvent& event) const {
  // X11 repeats a key as a release and a press with the same timestamp. Qt detects the repeat only
  // if both have arrived by the time it looks.
  return event.key() == Qt::Key_Return &&
         (event.isAutoRepeat() || event.timestamp() == returnReleased_);
}

bool AppDelegate::handleKey(const QKeyEvent& event) {
  if (event.modifiers() != Qt::NoModifier || capsLockIsOn(event))
    return false;
  switch (event.key()) {
  case Qt::Key_Space:
    session_.cycleSlot();
    return true;
  case Qt::Key_1:
  case Qt::Key_2:
  case Qt::Key_3:
    session_.select(event.key() - Qt::Key_1);
    return true;
  case Qt::Key_N:
    session_.newTrial();
    return true;
  default:
    return false;
  }
}

void AppDelegate::scheduleShot(const QString& path) {
  QTimer::singleShot(1600, Qt::PreciseTimer, this, [this, path] {
    if (options_.scriptedAnswer && !submitScripted(*options_.scriptedAnswer))
      return QCoreApplication::exit(EXIT_FAILURE);
    QTimer::singleShot(400, Qt::PreciseTimer, this,
                       [this, path] { QCoreApplication::exit(shoot(path)); });
  });
}

bool AppDelegate::submitScripted(double answer) {
  // Grading aborts if a slot does not fit an integer: reject it before anything is recorded.
  if (session_.drill() == Drill::polarity && !(std::abs(answer) < 0x1p63)) {
    std::fputs("Velto: --answer is not a slot\n", stderr);
    return false;
  }
  session_.setAnswer(answer);
  session_.submit();
  return true;
}

int AppDelegate::shoot(const QString& path) {
  const QImage picture = window_->grabWindow();
  QByteArray png;
  QBuffer buffer(&png);
  if (picture.isNull() || !buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, "PNG"))
    return EXIT_FAILURE;
  // The run succeeds even if the picture cannot be written.
  QFile file(path);
  if (file.open(QIODevice::WriteOnly))
    file.write(png);
  file.close();
  std::fprintf(stderr, "wrote %s\n", path.toUtf8().constData());
  session_.stopPlayback();
  return EXIT_SUCCESS;
}

} // namespace velto
