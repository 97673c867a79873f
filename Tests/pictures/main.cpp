// velto_pictures FOLDER [SCALE]
//
// Writes pictures of the practice window in both palettes at the given scale; without SCALE, at 1x,
// 1.25x, 1.75x and 2x. At the initial and at the smallest size: each drill and state; the focus
// ring around each kind of control; verdicts whose value chips have little room; the pointer over
// each kind of control; records with a weakness map, a curve and a weakest band. The same program
// writes the same pictures.

#include "kit/GuiTesting.h"
#include "kit/Stage.h"
#include "pictures/PractisedRecord.h"

#include "WindowPlacement.h"

#include <QDir>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

using namespace velto;

// `focused` shows the focus ring around the picker.
enum class State { ungraded, rendering, focused, hit, miss };

QString name(State state) {
  switch (state) {
  case State::ungraded:
    return QStringLiteral("ungraded");
  case State::rendering:
    return QStringLiteral("rendering");
  case State::focused:
    return QStringLiteral("focused");
  case State::hit:
    return QStringLiteral("hit");
  case State::miss:
    break;
  }
  return QStringLiteral("miss");
}

QString drillName(Drill drill) {
  return QString::fromUtf8(drill.rawValue().data(),
                           static_cast<qsizetype>(drill.rawValue().size()));
}

// The smallest window on a large screen. It is higher where texts wrap.
void shrink(kit::Stage& stage) {
  const auto smallest = [&stage] {
    return WindowPlacement::smallest({stage.root()->property("minimumWidth").toDouble(),
                                      stage.root()->property("minimumHeight").toDouble()},
                                     QRect(0, 0, 10000, 10000));
  };
  stage.view.resize(smallest().width(), stage.view.height());
  (void)stage.picture(); // lays it out
  stage.view.resize(smallest());
}

QImage draw(Drill drill, State state, bool dark, bool small) {
  kit::Stage stage(drill, dark);
  if (small)
    shrink(stage);
  if (state == State::ungraded || state == State::focused)
    stage.settle();
  else if (state != State::rendering)
    stage.grade(state == State::hit);
  if (state != State::rendering)
    stage.session.select(1);
  if (state == State::focused)
    for (int stop = 0; stop < 2; ++stop)
      QTest::keyClick(&stage.view, Qt::Key_Tab);
  return stage.picture();
}

// Answer and truth, in Hz, where chips cross the other bar, are near it, or share one bar.
struct Pair {
  double answer, truth;
};
constexpr Pair hardPairs[] = {{5000, 12500},  {12500, 5000}, {16000, 12500}, {12500, 16000},
                              {16000, 10000}, {40, 50},      {50, 40},       {40, 63},
                              {63, 50},       {40, 40},      {16000, 16000}, {1000, 1000}};

// The focus ring after so many presses of Tab.
QImage drawFocused(int stops, bool dark, bool small) {
  kit::Stage stage(Drill::frequency, dark);
  if (small)
    shrink(stage);
  stage.settle();
  for (int stop = 0; stop < stops; ++stop)
    QTest::keyClick(&stage.view, Qt::Key_Tab);
  return stage.picture();
}

QImage draw(const Pair& pair, bool dark, bool small) {
  kit::Stage stage(Drill::frequency, dark);
  if (small)
    shrink(stage);
  while (stage.session.trial()->targetFreq != pair.truth)
    stage.session.newTrial();
  stage.settle();
  stage.session.setAnswer(pair.answer);
  stage.session.submit();
  return stage.picture();
}

// A dB answer some steps of the scale from the truth, as far as the scale goes.
QImage drawApart(Drill drill, int steps, bool dark, bool small) {
  kit::Stage stage(drill, dark);
  if (small)
    shrink(stage);
  stage.settle();
  const bool level = drill == Drill::level;
  const double step = level ? 0.05 : 0.5;
  const double nearest = std::round(kit::truthOf(*stage.session.trial()) / step) * step;
  stage.session.setAnswer(std::clamp(nearest + steps * step, 0., level ? 7. : 14.));
  stage.session.submit();
  return stage.picture();
}

QImage drawPractised(int answers, bool dark, bool small) {
  kit::Stage stage(Drill::frequency, dark, {1180, 386},
                   [answers](Profile& profile) { practise(profile, answers); });
  if (small)
    shrink(stage);
  return stage.picture();
}

// The pointer over a control, with the mouse button down or not.
QImage drawTouched(const QString& control, bool pressed, bool dark, bool small) {
  kit::Stage stage(Drill::polarity, dark);
  if (small)
    shrink(stage);
  stage.settle();
  stage.session.setAnswer(0);
  const QPoint place = stage.box(control).center().toPoint();
  QTest::mouseMove(&stage.view, {600, 372}); // a move to the same place is no event
  QTest::mouseMove(&stage.view, place);
  if (pressed)
    QTest::mousePress(&stage.view, Qt::LeftButton, {}, place);
  return stage.picture();
}

// Writes a picture under its name, palette and scale.
class Folder {
public:
  Folder(QDir folder, QString scale) : folder_(std::move(folder)), scale_(std::move(scale)) {}

  void save(const QImage& picture, const QString& name, bool dark) {
    const QString file = folder_.filePath(
        QStringLiteral("%1-%2@%3x.png")
            .arg(name, dark ? QStringLiteral("dark") : QStringLiteral("light"), scale_));
    if (picture.save(file))
      return;
    std::fprintf(stderr, "cannot write %s\n", file.toUtf8().constData());
    complete = false;
  }

  bool complete = true;

private:
  QDir folder_;
  QString scale_;
};

int drawAll(const QDir& directory, const QString& scale) {
  Folder folder(directory, scale);
  for (const bool dark : {true, false}) {
    for (const bool small : {false, true}) {
      const QString size = small ? QStringLiteral("-small") : QString();
      for (const Drill drill : Drill::allCases)
        for (const State state :
             {State::ungraded, State::rendering, State::focused, State::hit, State::miss})
          folder.save(draw(drill, state, dark, small),
                      drillName(drill) + QLatin1Char('-') + name(state) + size, dark);
      for (const Pair& pair : hardPairs)
        folder.save(draw(pair, dark, small),
                    QStringLiteral("pair-%1-%2%3").arg(pair.answer).arg(pair.truth).arg(size),
                    dark);
      for (const Drill drill : {Drill::level, Drill::dynamics})
        for (const int steps : {-1000, -3, -1, 0, 1, 3, 1000})
          folder.save(drawApart(drill, steps, dark, small),
                      QStringLiteral("pair-%1%2%3").arg(drillName(drill)).arg(steps).arg(size),
                      dark);
      constexpr const char* stops[] = {"drills", "scale", "slots", "materials", "button"};
      for (const int stop : {0, 2, 3, 4})
        folder.save(drawFocused(stop + 1, dark, small),
                    QStringLiteral("focus-%1%2").arg(QLatin1String(stops[stop]), size), dark);
      folder.save(drawPractised(50, dark, small), QStringLiteral("practised") + size, dark);
      folder.save(drawPractised(120, dark, small), QStringLiteral("weakest") + size, dark);
      for (const char* name : {"drill1", "drill3", "slot0", "slot1", "material1", "material2",
                               "slotChoice0", "slotChoice1", "primaryButton"})
        for (const bool pressed : {false, true})
          folder.save(drawTouched(QString::fromLatin1(name), pressed, dark, small),
                      QString::fromLatin1(name) +
                          (pressed ? QStringLiteral("-pressed") : QStringLiteral("-hovered")) +
                          size,
                      dark);
    }
  }
  return folder.complete ? EXIT_SUCCESS : EXIT_FAILURE;
}

// A process draws at one scale only.
int runAt(const QString& program, const QString& folder, const QString& scale) {
  qputenv("QT_SCALE_FACTOR", scale.toUtf8());
  return QProcess::execute(program, {folder, scale});
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fputs("usage: velto_pictures FOLDER [SCALE]\n", stderr);
    return EXIT_FAILURE;
  }
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  if (!folder.mkpath(QStringLiteral("."))) {
    std::fputs("the folder cannot be made\n", stderr);
    return EXIT_FAILURE;
  }
  if (argc == 2) {
    const QString program = QString::fromLocal8Bit(argv[0]);
    for (const char* scale : {"1", "1.25", "1.75", "2"})
      if (const int status = runAt(program, folder.path(), QString::fromLatin1(scale)); status != 0)
        return status;
    return EXIT_SUCCESS;
  }
  qputenv("QT_SCALE_FACTOR", argv[2]);
  velto::kit::prepareGui();
  const QGuiApplication application(argc, argv);
  return drawAll(folder, QString::fromLocal8Bit(argv[2]));
}
