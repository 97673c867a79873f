// The session, for the practice view: properties to bind to and operations to call.
#pragma once

#include "Session.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Adapts a Session for QML, with a signal for each session field that properties depend on. Main
// thread only.
class PracticeModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("created by the application")

  // Indices into Drill::allCases and Material::allCases, and their names there.
  Q_PROPERTY(int drill READ drill WRITE setDrill NOTIFY drillChanged FINAL)
  Q_PROPERTY(int material READ material WRITE setMaterial NOTIFY materialChanged FINAL)
  Q_PROPERTY(QStringList drillTitles READ drillTitles CONSTANT FINAL)
  Q_PROPERTY(QStringList materialTitles READ materialTitles CONSTANT FINAL)
  Q_PROPERTY(QString prompt READ prompt NOTIFY drillChanged FINAL)
  Q_PROPERTY(QStringList prompts READ prompts CONSTANT FINAL) // of all drills

  Q_PROPERTY(bool hasTrial READ hasTrial NOTIFY trialChanged FINAL)
  // One per slot of the trial.
  Q_PROPERTY(QStringList slotTitles READ slotTitles NOTIFY trialChanged FINAL)
  Q_PROPERTY(double difficulty READ difficulty NOTIFY trialChanged FINAL) // 0 to 100
  Q_PROPERTY(int currentSlot READ currentSlot NOTIFY currentSlotChanged FINAL)
  Q_PROPERTY(bool rendering READ rendering NOTIFY renderingChanged FINAL)
  Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY canSubmitChanged FINAL)
  // The listener chooses drill and material.
  Q_PROPERTY(bool isFree READ isFree CONSTANT FINAL)
  // "3 of 20", in a course that ends; else empty.
  Q_PROPERTY(QString place READ place NOTIFY trialChanged FINAL)
  // The submitted answer is being kept.
  Q_PROPERTY(bool keeping READ keeping NOTIFY keepingChanged FINAL)
  // A sentence that says why it could not be kept; else empty.
  Q_PROPERTY(QString keepingError READ keepingError NOTIFY keepingChanged FINAL)
  // The trial awaits an answer: it is neither graded nor being kept.
  Q_PROPERTY(bool answerable READ answerable NOTIFY answerableChanged FINAL)

  // In the unit of the drill: Hz, dB, or a slot index (-1: none chosen).
  Q_PROPERTY(double answer READ answer WRITE setAnswer NOTIFY answerChanged FINAL)
  Q_PROPERTY(bool graded READ graded NOTIFY gradeChanged FINAL)
  // The right answer in the same unit; only meaningful once graded.
  Q_PROPERTY(double truth READ truth NOTIFY trialChanged FINAL)
  Q_PROPERTY(bool correct READ correct NOTIFY gradeChanged FINAL)
  // The primary button's text.
  Q_PROPERTY(QString primary READ primary NOTIFY gradeChanged FINAL)
  // What happens before the verdict.
  Q_PROPERTY(QString status READ status NOTIFY statusChanged FINAL)
  Q_PROPERTY(QString verdict READ verdict NOTIFY gradeChanged FINAL)
  Q_PROPERTY(QString verdictDetail READ verdictDetail NOTIFY gradeChanged FINAL)
  Q_PROPERTY(
      QString announcement READ announcement NOTIFY gradeChanged FINAL) // both, for screen readers

public:
  // The drills' indices, for QML.
  enum DrillIndex { Frequency, Level, Dynamics, Polarity };
  Q_ENUM(DrillIndex)

  // `session` outlives the model.
  explicit PracticeModel(Session& session, QObject* parent = nullptr);
  ~PracticeModel() override;

  [[nodiscard]] int drill() const;
  void setDrill(int index);
  [[nodiscard]] int material() const;
  void setMaterial(int index);
  [[nodiscard]] static QStringList drillTitles();
  [[nodiscard]] static QStringList materialTitles();
  [[nodiscard]] QString prompt() const;
  [[nodiscard]] static QStringList prompts();
  [[nodiscard]] bool hasTrial() const;
  [[nodiscard]] QStringList slotTitles() const;
  [[nodiscard]] double difficulty() const;
  [[nodiscard]] int currentSlot() const;
  [[nodiscard]] bool rendering() const;
  [[nodiscard]] bool canSubmit() const;
  [[nodiscard]] bool isFree() const;
  [[nodiscard]] QString place() const;
  [[nodiscard]] bool keeping() const;
  [[nodiscard]] QString keepingError() const;
  [[nodiscard]] bool answerable() const;
  [[nodiscard]] double answer() const;
  void setAnswer(double answer);
  [[nodiscard]] bool graded() const;
  [[nodiscard]] double truth() const;
  [[nodiscard]] bool correct() const;
  [[nodiscard]] QString primary() const;
  [[nodiscard]] QString status() const;
  [[nodiscard]] QString verdict() const;
  [[nodiscard]] QString verdictDetail() const;
  [[nodiscard]] QString announcement() const;

  Q_INVOKABLE void select(int slot);
  // The action of the primary button: starts the next trial if graded, else submits the answer.
  // Emits finished() if there is no next trial.
  Q_INVOKABLE void advance();

Q_SIGNALS:
  // Sent for each assignment in the session, equal values included.
  void drillChanged();
  void materialChanged();
  void trialChanged();
  void answerChanged();
  void gradeChanged();
  void currentSlotChanged();
  void renderingChanged();
  void keepingChanged();
  void statusChanged(); // with each of these two
  void answerableChanged();
  // The listener leaves a course that is over.
  void finished();
  // Sent when the value differs from the one announced last.
  void canSubmitChanged();

private:
  void announce(Session::Field field);

  Session& session_;
  bool canSubmit_; // as announced last
  Publisher<Session::Field>::Token subscription_;
};

} // namespace velto
