// velto_window_states FOLDER
//
// Writes what another face of the practice window is compared with: states.json and pictures. In
// both palettes each drill is practised: a fresh trial, a hit with the second version playing, and
// a miss, each at several widths; then a fresh trial over records with a curve and a weakest band.
//
//   [{
//     "name": "level-dark", "drill": "level", "appearance": "dark",
//     "record": "{\"attempts\": ...",       the record's file at the start, or empty
//     "steps": [{
//       "state": "hit",
//       "press": [432.1, 172],              where the answer is, at the width of the step before
//       "views": [{ "width": 1001, "height": 398, "picture": "level-dark-hit-1001.png",
//                   "items": { "card": [20, 85, 600, 292], ... },
//                   "letters": { "prompt": 33, ... } }] }] }]
//
// Rectangles are left, top, width and height in points, of all items that have a name and an area.
#include "kit/GuiTesting.h"
#include "kit/Stage.h"
#include "pictures/PractisedRecord.h"

#include "Scales.h"
#include "desktop/Fonts.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace velto;

constexpr int widths[] = {1001, 1180, 1600};
constexpr int initialHeight = 386;

QJsonArray numbers(std::initializer_list<double> values) {
  QJsonArray array;
  for (const double value : values)
    array.append(value);
  return array;
}

void addItems(QJsonObject& items, const QQuickItem* from) {
  for (const QQuickItem* child : from->childItems()) {
    if (!child->isVisible())
      continue;
    QRectF box = kit::Stage::box(child);
    // What a box leaves empty is not part of it.
    box.setTop(box.top() + child->property("insetTop").toDouble());
    if (!child->objectName().isEmpty() && !box.isEmpty())
      items.insert(child->objectName(), numbers({box.x(), box.y(), box.width(), box.height()}));
    addItems(items, child);
  }
}

// The number of letters of each text.
void addLetters(QJsonObject& letters, const QQuickItem* from) {
  for (const QQuickItem* child : from->childItems()) {
    const QString text = child->property("text").toString();
    if (!text.isEmpty() && !child->objectName().isEmpty())
      letters.insert(child->objectName(), text.size());
    addLetters(letters, child);
  }
}

class Writer {
public:
  explicit Writer(const QDir& folder) : folder_(folder) {}

  // Lays the window out at each width, as low as it may be but not lower than it opens.
  QJsonArray views(kit::Stage& stage, const QString& name) {
    QJsonArray all;
    for (const int width : widths) {
      stage.view.resize(width, initialHeight);
      (void)stage.picture(); // lays it out
      const double least = stage.root()->property("minimumHeight").toDouble();
      stage.view.resize(width, std::max(initialHeight, static_cast<int>(std::ceil(least))));
      const QImage image = stage.picture();
      const QString file = QStringLiteral("%1-%2.png").arg(name).arg(width);
      isComplete_ = image.save(folder_.filePath(file)) && isComplete_;
      QJsonObject items;
      addItems(items, stage.root());
      QJsonObject letters;
      addLetters(letters, stage.root());
      all.append(QJsonObject{{QStringLiteral("width"), width},
                             {QStringLiteral("height"), stage.view.height()},
                             {QStringLiteral("picture"), file},
                             {QStringLiteral("items"), items},
                             {QStringLiteral("letters"), letters}});
    }
    return all;
  }

  // False if a file could not be written.
  [[nodiscard]] bool finish(const QJsonArray& courses) {
    QFile file(folder_.filePath(QStringLiteral("states.json")));
    const QByteArray text = QJsonDocument(courses).toJson(QJsonDocument::Compact);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush() &&
           isComplete_;
  }

private:
  QDir folder_;
  bool isComplete_ = true;
};

// The answer nearest to `value` that a listener can give.
double onScale(Drill drill, double value) {
  switch (drill) {
  case Drill::frequency:
    return frequencyScale.nearest(value);
  case Drill::level:
    return levelScale.nearest(value);
  case Drill::dynamics:
    return dynamicsScale.nearest(value);
  case Drill::polarity:
    break;
  }
  return value;
}

// Answers, and returns the place where a press gives this answer.
QJsonArray answer(kit::Stage& stage, Drill drill, bool hit) {
  const Trial& trial = *stage.session.trial();
  const double value = onScale(drill, hit ? kit::truthOf(trial) : kit::missOf(trial));
  stage.session.setAnswer(value);
  const QString item = drill == Drill::polarity
                           ? QStringLiteral("slotChoice%1").arg(static_cast<int>(value))
                           : QStringLiteral("answerMarkerBar");
  const QPointF place = stage.box(item).center();
  return numbers({place.x(), place.y()});
}

QString appearanceOf(bool dark) {
  return dark ? QStringLiteral("dark") : QStringLiteral("light");
}

QJsonObject course(const QString& name, Drill drill, bool dark, const QString& record,
                   const QJsonArray& steps) {
  const auto raw = drill.rawValue();
  return {
      {QStringLiteral("name"), name},
      {QStringLiteral("drill"), QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size()))},
      {QStringLiteral("appearance"), appearanceOf(dark)},
      {QStringLiteral("record"), record},
      {QStringLiteral("steps"), steps}};
}

QJsonObject practiseDrill(Writer& writer, Drill drill, bool dark) {
  kit::Stage stage(drill, dark);
  const auto raw = drill.rawValue();
  const QString name = QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size())) +
                       QLatin1Char('-') + appearanceOf(dark);
  stage.settle();
  QJsonArray steps{
      QJsonObject{{QStringLiteral("state"), QStringLiteral("fresh")},
                  {QStringLiteral("views"), writer.views(stage, name + QStringLiteral("-fresh"))}}};
  for (const bool hit : {true, false}) {
    if (!hit)
      stage.session.newTrial();
    stage.settle();
    stage.session.select(1);
    const QJsonArray press = answer(stage, drill, hit);
    stage.session.submit();
    const QString state = hit ? QStringLiteral("hit") : QStringLiteral("miss");
    steps.append(QJsonObject{
        {QStringLiteral("state"), state},
        {QStringLiteral("press"), press},
        {QStringLiteral("views"), writer.views(stage, name + QLatin1Char('-') + state)}});
  }
  return course(name, drill, dark, {}, steps);
}

QJsonObject showRecord(Writer& writer, int answers, bool dark) {
  kit::Stage stage(Drill::frequency, dark, {widths[0], initialHeight},
                   [answers](Profile& profile) { velto::practise(profile, answers); });
  QFile record(QDir(qEnvironmentVariable("VELTO_PROFILE_DIR")).filePath("profile.json"));
  const QString text =
      record.open(QIODevice::ReadOnly) ? QString::fromUtf8(record.readAll()) : QString();
  stage.settle();
  const QString name = QStringLiteral("record%1-%2").arg(answers).arg(appearanceOf(dark));
  const QJsonArray steps{
      QJsonObject{{QStringLiteral("state"), QStringLiteral("fresh")},
                  {QStringLiteral("views"), writer.views(stage, name + QStringLiteral("-fresh"))}}};
  return course(name, Drill::frequency, dark, text, steps);
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: velto_window_states FOLDER\n", stderr);
    return EXIT_FAILURE;
  }
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  if (!folder.mkpath(QStringLiteral("."))) {
    std::fputs("the folder cannot be made\n", stderr);
    return EXIT_FAILURE;
  }
  qputenv("QT_SCALE_FACTOR", "1");
  kit::prepareGui();
  const QGuiApplication application(argc, argv);
  BrandType::registerFace();
  Writer writer(folder);
  QJsonArray courses;
  for (const bool dark : {true, false}) {
    for (const Drill drill : Drill::allCases)
      courses.append(practiseDrill(writer, drill, dark));
    for (const int answers : {50, 120})
      courses.append(showRecord(writer, answers, dark));
  }
  if (writer.finish(courses))
    return EXIT_SUCCESS;
  std::fputs("cannot write all of the files\n", stderr);
  return EXIT_FAILURE;
}
