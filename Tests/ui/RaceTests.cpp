// The real window under fast random input: keys, clicks, drags and changes of focus while trials
// render on the thread pool and a device plays. The session's invariants are checked after each
// input.
//
// VELTO_TEST_INPUTS sets the number of inputs, VELTO_TEST_SEED their seed.
#include "AppDelegate.h"

#include "Numbers.h"
#include "kit/FakeOutput.h"
#include "kit/ScratchProfile.h"
#include "kit/SessionInvariants.h"
#include "kit/Stage.h"

#include <QCoreApplication>
#include <QExposeEvent>
#include <QRegion>
#include <QThreadPool>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <string>

using namespace velto;
using namespace velto::kit;

namespace {

std::int64_t setting(const char* name, std::int64_t otherwise) {
  const char* text = std::getenv(name);
  return text != nullptr ? std::atoll(text) : otherwise;
}

class Storm {
public:
  explicit Storm(std::uint32_t seed)
      : random_(seed), delegate_({}, [] {
          return std::make_unique<RacingDevice>(std::chrono::microseconds(500));
        }) {
    EXPECT_TRUE(delegate_.applicationDidFinishLaunching());
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
    other_.resize(100, 100);
    other_.show();
    window().requestActivate();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
  }

  Session& session() { return delegate_.session(); }
  QQuickView& window() { return *delegate_.window(); }

  // Sends one input. Returns its description for failure messages.
  std::string input() {
    switch (below(20)) {
    case 0:
      return click("drill", 4);
    case 1:
      return click("material", 3);
    case 2:
      return click("slotChoice", 3);
    case 3:
      return click("slot", 3);
    case 4:
      return clickAnywhere();
    case 5:
      return drag();
    case 6:
      return focus(below(2) == 0);
    case 7:
      return state();
    case 8:
      return key(Qt::Key_Return, "Return");
    case 9:
      return click("primaryButton", 0);
    case 10:
      return key(Qt::Key_N, "n");
    case 11:
      return rest();
    default:
      return anyKey();
    }
  }

  // Brings the window to the front and waits for the last render.
  void calm() {
    window().showNormal();
    window().requestActivate();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
    EXPECT_TRUE(QTest::qWaitFor([this] { return isPlayingTheTrial(); }, 60000));
  }

  // Whether the trial is rendered and the device, which opens on its own thread, plays it.
  bool isPlayingTheTrial() { return !session().rendering() && session().player().isPlaying(); }

  std::int64_t below(std::int64_t end) {
    return std::uniform_int_distribution<std::int64_t>(0, end - 1)(random_);
  }

private:
  std::string click(const std::string& name, std::int64_t count) {
    const std::string which = count > 0 ? name + std::to_string(below(count)) : name;
    if (const auto* item = Stage::find(window().rootObject(), QString::fromStdString(which))) {
      const QPointF centre = item->mapToScene({item->width() / 2, item->height() / 2});
      QTest::mouseClick(&window(), Qt::LeftButton, {}, centre.toPoint());
    }
    return which;
  }

  QPoint anyPoint() {
    return {static_cast<int>(below(window().width())), static_cast<int>(below(window().height()))};
  }

  std::string clickAnywhere() {
    const QPoint point = anyPoint();
    QTest::mouseClick(&window(), Qt::LeftButton, {}, point);
    return "click at " + std::to_string(point.x()) + ", " + std::to_string(point.y());
  }

  std::string drag() {
    const auto along = [this] {
      return QPoint(40 + static_cast<int>(below(739)), 150 + static_cast<int>(below(20)));
    };
    QTest::mousePress(&window(), Qt::LeftButton, {}, along());
    for (std::int64_t moves = below(6); moves > 0; --moves)
      QTest::mouseMove(&window(), below(4) == 0 ? anyPoint() : along());
    QTest::mouseRelease(&window(), Qt::LeftButton, {}, along());
    return "drag";
  }

  // Changes the focus; suspension follows at once.
  std::string focus(bool front) {
    const bool wasActive = window().isActive();
    (front ? static_cast<QWindow*>(&window()) : &other_)->requestActivate();
    QCoreApplication::processEvents();
    if (window().isActive() != wasActive)
      EXPECT_EQ(session().suspended(), wasActive) << (front ? "to the front" : "to the back");
    return front ? "to the front" : "to the back";
  }

  std::string state() {
    if (below(2) == 0)
      window().showMinimized();
    else
      window().showNormal();
    QCoreApplication::processEvents();
    return "minimised or not";
  }

  std::string key(Qt::Key key, const char* name) {
    static constexpr Qt::KeyboardModifiers modifiers[] = {
        Qt::NoModifier, Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
    QTest::keyClick(&window(), key, modifiers[below(5)]);
    return name;
  }

  std::string anyKey() {
    static constexpr Qt::Key keys[] = {Qt::Key_Space, Qt::Key_1,     Qt::Key_2,   Qt::Key_3,
                                       Qt::Key_Left,  Qt::Key_Right, Qt::Key_Tab, Qt::Key_Return,
                                       Qt::Key_Enter, Qt::Key_Space, Qt::Key_X};
    return key(keys[below(std::size(keys))], "a key");
  }

  // Delivers finished renders.
  std::string rest() {
    if (below(3) == 0)
      QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    return "a rest";
  }

  ScratchProfile scratch_;
  std::mt19937 random_;
  AppDelegate delegate_;
  QWindow other_;
};

// A session's state between two inputs.
struct Moment {
  std::uint64_t counter;
  bool graded, rendering;
  std::optional<Attempt> newest; // in the record

  explicit Moment(Session& session)
      : counter(session.counter()), graded(session.grade().has_value()),
        rendering(session.rendering()) {
    if (!session.profile().attempts().empty())
      newest = session.profile().attempts().back();
  }
};

std::string brokenStep(const Moment& before, const Moment& after) {
  const std::uint64_t trials = (after.counter - before.counter) / 40503;
  if (after.counter != before.counter + trials * 40503)
    return "a new trial moves the counter by one step";
  if (trials == 0 && (after.newest != before.newest) != (after.graded && !before.graded))
    return "a trial is recorded when it is graded";
  if (trials == 0 && before.graded && !after.graded)
    return "a grade stays until the next trial";
  return "";
}

} // namespace

TEST(Race, RandomInputKeepsTheInvariantsOfTheSession) {
  const std::int64_t inputs = setting("VELTO_TEST_INPUTS", 4000);
  const auto seed = static_cast<std::uint32_t>(setting("VELTO_TEST_SEED", 1));
  Storm storm(seed);
  const auto begin = std::chrono::steady_clock::now();
  const std::uint64_t firstTrial = storm.session().counter();
  int graded = 0, suspensions = 0, wasRendering = 0, wasPlaying = 0;
  for (std::int64_t i = 0; i < inputs; ++i) {
    const Moment before(storm.session());
    const bool wasSuspended = storm.session().suspended();
    const std::string words = storm.input();
    const Moment after(storm.session());
    ASSERT_EQ(brokenInvariant(storm.session(), false), "") << "input " << i << ": " << words;
    ASSERT_EQ(brokenStep(before, after), "") << "input " << i << ": " << words;
    ASSERT_FALSE(::testing::Test::HasFailure()) << "input " << i << ": " << words;
    graded += after.newest != before.newest ? 1 : 0;
    suspensions += storm.session().suspended() && !wasSuspended ? 1 : 0;
    wasRendering += before.rendering ? 1 : 0;
    wasPlaying += storm.session().player().isPlaying() ? 1 : 0;
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  const std::uint64_t trials = (storm.session().counter() - firstTrial) / 40503;
  std::cout << "  " << inputs << " inputs, "
            << Numbers::fixed(static_cast<double>(inputs) / seconds, 0) << " a second: " << trials
            << " trials, " << graded << " answers, " << suspensions << " suspensions, "
            << wasRendering << " inputs while rendering, " << wasPlaying << " while playing\n";
  // The random input must have covered enough cases.
  EXPECT_GT(trials, static_cast<std::uint64_t>(inputs) / 20);
  EXPECT_GT(graded, inputs / 400);
  EXPECT_GT(suspensions, inputs / 100);
  EXPECT_GT(wasRendering, inputs / 10);
  EXPECT_LT(wasRendering, inputs);
  EXPECT_GT(wasPlaying, inputs / 10);
  EXPECT_FALSE(RacingDevice::exceededLimits());

  // The session still works.
  storm.calm();
  ASSERT_EQ(brokenInvariant(storm.session(), false), "");
  EXPECT_FALSE(storm.session().suspended());
  EXPECT_EQ(Profile().attempts(), storm.session().profile().attempts()) << "the file";
  const auto newest = Moment(storm.session()).newest;
  storm.session().setDrill(Drill::level);
  ASSERT_TRUE(QTest::qWaitFor([&] { return storm.isPlayingTheTrial(); }, 60000));
  QTest::keyClick(&storm.window(), Qt::Key_2);
  EXPECT_EQ(storm.session().player().current(), 1);
  QTest::keyClick(&storm.window(), Qt::Key_Return);
  EXPECT_NE(Moment(storm.session()).newest, newest);
}

// Some platforms hide a window, and tell it so, only when it is destroyed.
TEST(ClosingWindow, TakesEventsUntilItIsGone) {
  int sent = 0;
  {
    Storm storm(1);
    QQuickView& window = storm.window();
    QObject::connect(window.rootObject(), &QObject::destroyed, &window, [&] {
      QExposeEvent event{QRegion()};
      QCoreApplication::sendEvent(&window, &event);
      Q_EMIT window.activeChanged();
      ++sent;
    });
  }
  EXPECT_EQ(sent, 1);
}
