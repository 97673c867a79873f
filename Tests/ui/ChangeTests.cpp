// A change evaluates all bindings that depend on it, and hardly any others.

#include "kit/Snippet.h"

#include "Bands.h"
#include "ScaleModel.h"

#include <QMetaMethod>
#include <QMetaProperty>
#include <QMetaType>
#include <QSignalSpy>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

using Counts = std::map<std::string, int>;
using Names = std::set<std::string>;

template <typename Function>
void forEachProperty(const QObject& object, Function visit) {
  const QMetaObject* meta = object.metaObject();
  for (int i = QObject::staticMetaObject.propertyCount(); i < meta->propertyCount(); ++i)
    visit(meta->property(i));
}

// A QML binding to each property of a model. Each counts its evaluations and keeps its value.
class Bindings {
public:
  explicit Bindings(QObject& model) : model_(model) {
    QByteArray qml = "QtObject {\n"
                     "  required property var model\n"
                     "  property var counts: ({})\n"
                     "  function note(name: string, value: var): string {\n"
                     "    counts[name] = (counts[name] ?? 0) + 1\n"
                     "    return JSON.stringify(value)\n"
                     "  }\n"
                     "  function fresh(name: string): string {\n"
                     "    return JSON.stringify(model[name])\n"
                     "  }\n"
                     "  function count(name: string): int { return counts[name] ?? 0 }\n"
                     "  function reset() { for (const name in counts) delete counts[name] }\n";
    forEachProperty(model, [&](const QMetaProperty& property) {
      const QByteArray name = property.name();
      qml += "  property string bound_" + name + ": note(\"" + name + "\", model." + name + ")\n";
    });
    qml += "}\n";
    QQmlComponent component(&engine_);
    component.setData("import QtQml\n" + qml, QUrl());
    object_.reset(component.createWithInitialProperties({{"model", QVariant::fromValue(&model)}}));
    if (!object_)
      throw std::runtime_error(component.errorString().toStdString());
    reset();
  }

  void reset() { QMetaObject::invokeMethod(object_.get(), "reset"); }

  // How often each binding was evaluated since the last reset.
  [[nodiscard]] Counts evaluations() const {
    Counts counts;
    forEachProperty(model_, [&](const QMetaProperty& property) {
      int count = 0;
      QMetaObject::invokeMethod(object_.get(), "count", Q_RETURN_ARG(int, count),
                                Q_ARG(QString, QString::fromLatin1(property.name())));
      if (count > 0)
        counts[property.name()] = count;
    });
    return counts;
  }

  // The properties whose binding's value differs from the model's.
  [[nodiscard]] Names stale() const {
    Names names;
    forEachProperty(model_, [&](const QMetaProperty& property) {
      QString fresh;
      QMetaObject::invokeMethod(object_.get(), "fresh", Q_RETURN_ARG(QString, fresh),
                                Q_ARG(QString, QString::fromLatin1(property.name())));
      if (object_->property(QByteArray("bound_") + property.name()).toString() != fresh)
        names.insert(property.name());
    });
    return names;
  }

private:
  QObject& model_;
  QQmlEngine engine_;
  std::unique_ptr<QObject> object_;
};

// The view, and the test's bindings to every property of its models.
struct Watched : Stage {
  using Stage::Stage;

  Bindings practice{model};
  Bindings figures{progress};

  void reset() {
    practice.reset();
    figures.reset();
  }
};

// Watches the property changes of the items below `root`.
class SceneWatch {
public:
  explicit SceneWatch(QQuickItem* root) { watch(root, ""); }

  // The changed items, each by its own name or that of the nearest named ancestor.
  [[nodiscard]] Names changed() const {
    Names names;
    for (const auto& [name, spy] : spies_)
      if (!spy->isEmpty())
        names.insert(name);
    return names;
  }

private:
  void watch(QQuickItem* item, std::string name) {
    if (!item->objectName().isEmpty())
      name = item->objectName().toStdString();
    std::set<int> signalsSeen;
    forEachProperty(*item, [&](const QMetaProperty& property) {
      if (property.hasNotifySignal() && signalsSeen.insert(property.notifySignalIndex()).second)
        spies_.emplace_back(name, std::make_unique<QSignalSpy>(item, property.notifySignal()));
    });
    for (QQuickItem* child : item->childItems())
      watch(child, name);
  }

  std::vector<std::pair<std::string, std::unique_ptr<QSignalSpy>>> spies_;
};

// Counts the calls that a strip makes.
class CountingScale : public ScaleModel {
public:
  [[nodiscard]] QVariantList ticks() const override { return counted("ticks").ticks(); }
  [[nodiscard]] double labelOffset() const override { return counted("labelOffset").labelOffset(); }
  [[nodiscard]] double lowest() const override { return counted("lowest").lowest(); }
  [[nodiscard]] double highest() const override { return counted("highest").highest(); }
  [[nodiscard]] double step() const override { return counted("step").step(); }
  [[nodiscard]] double position(double value, double width) const override {
    return counted("position").position(value, width);
  }
  [[nodiscard]] double valueAt(double x, double width) const override {
    return counted("valueAt").valueAt(x, width);
  }
  [[nodiscard]] double nearest(double value) const override {
    return counted("nearest").nearest(value);
  }
  [[nodiscard]] double moved(double value, int move) const override {
    return counted("moved").moved(value, move);
  }
  [[nodiscard]] QString text(double value) const override { return counted("text").text(value); }
  [[nodiscard]] QString spoken(double value) const override {
    return counted("spoken").spoken(value);
  }

  mutable Counts counts;

private:
  [[nodiscard]] const ScaleModel& counted(const char* call) const {
    ++counts[call];
    return *scales_.frequency();
  }

  Scales scales_;
};

constexpr QPoint onStrip(int x) {
  return {40 + x, 160};
}

} // namespace

TEST(BindingUpdates, ASlotChangeUpdatesOnlyTheSlotButtons) {
  for (const Drill drill : Drill::allCases) {
    Watched stage(drill);
    stage.settle();
    (void)stage.picture();
    const SceneWatch scene(stage.root());
    stage.reset();
    stage.session.cycleSlot();
    EXPECT_EQ(stage.practice.evaluations(), (Counts{{"currentSlot", 1}}));
    EXPECT_EQ(stage.figures.evaluations(), Counts());
    Names buttons{"slot0", "slot1", "slotBox0", "slotBox1", "slotLabel0", "slotLabel1"};
    if (drill == Drill::polarity)
      buttons.insert("slot2"); // its property `chosen`
    EXPECT_EQ(scene.changed(), buttons);
  }
}

TEST(BindingUpdates, ADraggedAnswerUpdatesOnlyItsMarkerAndSpokenText) {
  for (const Drill drill : {Drill::frequency, Drill::level, Drill::dynamics}) {
    Watched stage(drill);
    stage.settle();
    (void)stage.picture();
    QTest::mousePress(&stage.view, Qt::LeftButton, {}, onStrip(300));
    const SceneWatch scene(stage.root());
    stage.reset();
    QTest::mouseMove(&stage.view, onStrip(500));
    EXPECT_EQ(stage.practice.evaluations(), (Counts{{"answer", 1}}));
    EXPECT_EQ(stage.figures.evaluations(), Counts());
    const std::string picker = drill == Drill::frequency ? "frequencyPicker" : "decibelPicker";
    EXPECT_EQ(scene.changed(), (Names{picker, "handle", "answerMarker", "answerMarkerBar",
                                      "answerMarkerChip", "answerMarkerText"}));
    QTest::mouseRelease(&stage.view, Qt::LeftButton, {}, onStrip(500));
  }
}

TEST(BindingUpdates, AValueComputesItsPositionAndTextsOnce) {
  CountingScale scale;
  const Snippet snippet(
      "ScaleStrip { width: 739; name: \"Test\"; minorOpacity: 1 }",
      {{"scaleModel", QVariant::fromValue<ScaleModel*>(&scale)}, {"value", 1000.0}});
  scale.counts.clear();
  snippet.root->setProperty("value", 2000.0);
  EXPECT_EQ(scale.counts, (Counts{{"position", 1}, {"text", 1}, {"spoken", 1}}));
}

TEST(BindingUpdates, AnAnswerUpdatesCanSubmitOnlyIfThatChanges) {
  Watched stage(Drill::polarity);
  stage.settle();
  for (const int submittable : {1, 0}) {
    stage.reset();
    stage.session.setAnswer(submittable);
    Counts expected{{"answer", 1}};
    if (submittable == 1) // the first choice
      expected["canSubmit"] = 1;
    EXPECT_EQ(stage.practice.evaluations(), expected);
    EXPECT_EQ(stage.figures.evaluations(), Counts());
  }
}

TEST(BindingUpdates, ARecordedAnswerUpdatesEachFigureOnce) {
  Watched stage;
  stage.settle();
  const SceneWatch scene(stage.root());
  stage.reset();
  stage.session.submit();
  EXPECT_TRUE(scene.changed().contains("statValueTODAY"));
  EXPECT_EQ(stage.figures.evaluations(), (Counts{{"streak", 1},
                                                 {"today", 1},
                                                 {"accuracy", 1},
                                                 {"barHeights", 1},
                                                 {"weaknesses", 1},
                                                 {"weakestBand", 1},
                                                 {"weakestText", 1},
                                                 {"mapDescription", 1},
                                                 {"curve", 1},
                                                 {"curveDescription", 1},
                                                 {"spokenStreak", 1},
                                                 {"spokenToday", 1},
                                                 {"spokenAccuracy", 1}}));
  EXPECT_EQ(stage.practice.evaluations(), (Counts{{"graded", 1},
                                                  {"correct", 1},
                                                  {"verdict", 1},
                                                  {"verdictDetail", 1},
                                                  {"announcement", 1},
                                                  {"canSubmit", 1},
                                                  {"answerable", 1},
                                                  {"primary", 1}}));
  stage.reset();
  stage.session.newTrial();
  stage.session.setMaterial(Material::pad);
  EXPECT_EQ(stage.figures.evaluations(), Counts());
  stage.session.setDrill(Drill::level);
  EXPECT_EQ(stage.figures.evaluations(), (Counts{{"accuracy", 1},
                                                 {"spokenAccuracy", 1},
                                                 {"curve", 1},
                                                 {"curveDescription", 1},
                                                 {"curveTitle", 1}}));
}

TEST(BindingUpdates, LeaveNoBindingStale) {
  Watched stage;
  const auto expectFresh = [&](const char* after) {
    EXPECT_EQ(stage.practice.stale(), Names()) << after;
    EXPECT_EQ(stage.figures.stale(), Names()) << after;
  };
  expectFresh("nothing");
  for (const Drill drill : {Drill::level, Drill::polarity, Drill::dynamics, Drill::frequency}) {
    stage.session.setDrill(drill);
    expectFresh("a drill");
    stage.session.setMaterial(Material::drums);
    expectFresh("a material");
    stage.settle();
    expectFresh("a render");
    stage.session.cycleSlot();
    expectFresh("a slot");
    for (const bool hit : {true, false}) {
      stage.settle();
      stage.session.setAnswer((hit ? truthOf : missOf)(*stage.session.trial()));
      expectFresh("an answer");
      stage.session.submit();
      expectFresh("a grade");
      stage.session.newTrial();
      expectFresh("a new trial");
    }
  }
}

TEST(ProgressModel, ComputesTheBarsOncePerRecordedAnswer) {
  Stage stage;
  stage.settle();
  const QList<double> bars = stage.progress.barHeights(); // shared until recomputed
  stage.session.cycleSlot();
  stage.session.setAnswer(40);
  EXPECT_EQ(stage.progress.barHeights().constData(), bars.constData());
  EXPECT_EQ(bars, QList<double>(27, 6));
  const auto band = Bands::nearestIndex(stage.session.trial()->targetFreq);
  stage.session.submit();
  EXPECT_GE(stage.progress.barHeights()[static_cast<qsizetype>(band)], 12);
}
