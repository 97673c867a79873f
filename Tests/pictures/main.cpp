// velto_pictures FOLDER [SCALE]
//
// Writes a picture of the practice window for each drill, state and palette at the given scale, and
// with the pointer over each kind of control; without SCALE, at 1x and at 2x. The same program
// writes the same pictures.

#include "kit/GuiTesting.h"
#include "kit/Stage.h"

#include <QDir>
#include <QProcess>

#include <cstdio>
#include <cstdlib>

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

QImage draw(Drill drill, State state, bool dark) {
  kit::Stage stage(drill, dark);
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

// The pointer over a control, with the mouse button down or not.
QImage drawTouched(const QString& control, bool pressed, bool dark) {
  kit::Stage stage(Drill::polarity, dark);
  stage.settle();
  stage.session.setAnswer(0);
  const QPoint place = stage.box(control).center().toPoint();
  QTest::mouseMove(&stage.view, {600, 372}); // a move to the same place is no event
  QTest::mouseMove(&stage.view, place);
  if (pressed)
    QTest::mousePress(&stage.view, Qt::LeftButton, {}, place);
  return stage.picture();
}

bool drawTouchedAll(const QDir& folder, const QString& scale) {
  for (const char* control : {"drill1", "drill3", "slot0", "slot1", "material1", "material2",
                              "slotChoice0", "slotChoice1", "primaryButton"})
    for (const bool pressed : {false, true})
      for (const bool dark : {true, false}) {
        const QString file = folder.filePath(
            QStringLiteral("%1-%2-%3@%4x.png")
                .arg(QString::fromLatin1(control),
                     pressed ? QStringLiteral("pressed") : QStringLiteral("hovered"),
                     dark ? QStringLiteral("dark") : QStringLiteral("light"), scale));
        if (!drawTouched(QString::fromLatin1(control), pressed, dark).save(file)) {
          std::fprintf(stderr, "cannot write %s\n", file.toUtf8().constData());
          return false;
        }
      }
  return true;
}

int drawAll(const QDir& folder, const QString& scale) {
  for (const Drill drill : Drill::allCases)
    for (const State state :
         {State::ungraded, State::rendering, State::focused, State::hit, State::miss})
      for (const bool dark : {true, false}) {
        const QString file = folder.filePath(
            QStringLiteral("%1-%2-%3@%4x.png")
                .arg(QString::fromUtf8(drill.rawValue().data(),
                                       static_cast<qsizetype>(drill.rawValue().size())),
                     name(state), dark ? QStringLiteral("dark") : QStringLiteral("light"), scale));
        if (!draw(drill, state, dark).save(file)) {
          std::fprintf(stderr, "cannot write %s\n", file.toUtf8().constData());
          return EXIT_FAILURE;
        }
      }
  return drawTouchedAll(folder, scale) ? EXIT_SUCCESS : EXIT_FAILURE;
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
    const int first = runAt(program, folder.path(), QStringLiteral("1"));
    return first != 0 ? first : runAt(program, folder.path(), QStringLiteral("2"));
  }
  qputenv("QT_SCALE_FACTOR", argv[2]);
  velto::kit::prepareGui();
  const QGuiApplication application(argc, argv);
  return drawAll(folder, QString::fromLocal8Bit(argv[2]));
}
