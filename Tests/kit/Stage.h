// The practice view with a real session, a fake output, and renders that the test delivers.
#pragma once

#include "Answers.h"
#include "FakeOutput.h"
#include "ManualQueues.h"
#include "ScratchProfile.h"

#include "Drill.h"
#include "Grading.h"
#include "PracticeModel.h"
#include "ProgressModel.h"
#include "Session.h"
#include "TestPlayer.h"
#include "Theme.h"

#include <QImage>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QtTest/QTest>

#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace velto::kit {

// Main thread only. Needs a QGuiApplication. One at a time, because of its scratch profile.
class Stage {
public:
  static constexpr double launchTime = 1'700'000'000;

  // Prepares the record that the session loads.
  using Earlier = std::function<void(Profile&)>;

  explicit Stage(Drill drill = Drill::frequency, bool dark = true, QSize size = {1180, 386},
                 const Earlier& earlier = {})
      : record_(earlier), session(drill, work_.queues(), makePlayer(output_.factory()), launchTime),
        model(session), progress(session) {
    open(dark, size);
  }

  // The trials of a course.
  explicit Stage(std::unique_ptr<Course> course, bool dark = true, QSize size = {1180, 386})
      : record_({}), session(std::move(course), Drill::frequency, work_.queues(),
                             makePlayer(output_.factory()), launchTime, Session::Trials::fair),
        model(session), progress(session) {
    open(dark, size);
  }

  // Moves the pointer to a corner: newer releases of Qt let it hover in the next window at once,
  // and no release takes note of a move to where it already is.
  ~Stage() { QTest::mouseMove(&view, {1, 1}); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // Delivers all pending renders.
  void settle() { work_.settle(); }

  // Renders, answers and submits.
  void grade(bool hit) {
    settle();
    session.setAnswer(hit ? truthOf(*session.trial()) : missOf(*session.trial()));
    session.submit();
  }

  void setDark(bool dark) {
    view.setColor((dark ? Palette::dark() : Palette::light()).bg);
    root()->setProperty("dark", dark);
  }

  [[nodiscard]] QQuickItem* root() const { return view.rootObject(); }

  // The visible item of this name; nullptr if there is none.
  [[nodiscard]] QQuickItem* find(const QString& name) const { return find(root(), name); }

  [[nodiscard]] static QQuickItem* find(QQuickItem* from, const QString& name) {
    for (QQuickItem* child : from->childItems()) {
      if (!child->isVisible())
        continue;
      if (child->objectName() == name)
        return child;
      if (QQuickItem* found = find(child, name))
        return found;
    }
    return nullptr;
  }

  [[nodiscard]] QQuickItem* item(const QString& name) const {
    QQuickItem* found = find(name);
    if (found == nullptr)
      throw std::runtime_error("no visible item is named " + name.toStdString());
    return found;
  }

  // Position and size of an item in the window, in points.
  [[nodiscard]] QRectF box(const QString& name) const { return box(item(name)); }
  [[nodiscard]] static QRectF box(const QQuickItem* item) {
    return item->mapRectToScene({0, 0, item->width(), item->height()});
  }

  // The window's content after its animation has finished.
  [[nodiscard]] QImage picture() {
    const auto* veil = root()->findChild<QQuickItem*>(QStringLiteral("veil"));
    const double rest = session.rendering() ? 0.6 : 0;
    if (!QTest::qWaitFor([&] { return std::abs(veil->opacity() - rest) < 1e-9; }))
      throw std::runtime_error("the animation of the answer area does not finish");
    QCoreApplication::processEvents();
    QImage image = view.grabWindow();
    image.setDevicePixelRatio(view.effectiveDevicePixelRatio());
    return image;
  }

private:
  void open(bool dark, QSize size) {
    view.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.setInitialProperties({{QStringLiteral("session"), QVariant::fromValue(&model)},
                               {QStringLiteral("progress"), QVariant::fromValue(&progress)},
                               {QStringLiteral("dark"), dark}});
    view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Velto/ContentView.qml")));
    if (view.status() != QQuickView::Ready)
      throw std::runtime_error("the practice view cannot be loaded");
    setDark(dark);
    view.resize(size);
    view.show();
    view.requestActivate();
    if (!QTest::qWaitForWindowActive(&view))
      throw std::runtime_error("the window does not become active");
  }

  struct Record {
    ScratchProfile scratch;

    explicit Record(const Earlier& earlier) {
      if (!earlier)
        return;
      Profile profile;
      earlier(profile);
    }
  };

  Record record_;
  FakeOutput output_;
  ManualQueues work_;

public:
  Session session;
  PracticeModel model;
  ProgressModel progress;
  QQuickView view;
};

} // namespace velto::kit
