#include "PracticeModel.h"

#include "Wording.h"
#include "Words.h"

#include <utility>

namespace velto {

namespace {

template <typename Enumeration>
QStringList titles() {
  QStringList list;
  for (const Enumeration value : Enumeration::allCases)
    list.append(Words::text(Wording::title(value)));
  return list;
}

template <typename Enumeration>
bool isIndexOf(int index) {
  return index >= 0 && static_cast<std::size_t>(index) < Enumeration::allCases.size();
}

template <typename Enumeration>
Enumeration at(int index) {
  return Enumeration::allCases[static_cast<std::size_t>(index)];
}

} // namespace

PracticeModel::PracticeModel(Session& session, QObject* parent)
    : QObject(parent), session_(session), canSubmit_(session.canSubmit()),
      subscription_(session.objectDidChange.subscribe([this](auto field) { announce(field); })) {}

PracticeModel::~PracticeModel() {
  session_.objectDidChange.unsubscribe(subscription_);
}

void PracticeModel::announce(Session::Field field) {
  using enum Session::Field;
  switch (field) {
  case drill:
    Q_EMIT drillChanged();
    break;
  case material:
    Q_EMIT materialChanged();
    break;
  case trial:
    Q_EMIT trialChanged();
    break;
  case answer:
    Q_EMIT answerChanged();
    break;
  case grade:
    Q_EMIT gradeChanged();
    Q_EMIT answerableChanged();
    break;
  case currentSlot:
    Q_EMIT currentSlotChanged();
    break;
  case rendering:
    Q_EMIT renderingChanged();
    Q_EMIT statusChanged();
    break;
  case keeping:
    Q_EMIT keepingChanged();
    Q_EMIT statusChanged();
    Q_EMIT answerableChanged();
    break;
  case record:
    break;
  }
  const bool canSubmit = session_.canSubmit();
  if (std::exchange(canSubmit_, canSubmit) != canSubmit)
    Q_EMIT canSubmitChanged();
}

int PracticeModel::drill() const {
  return session_.drill();
}

void PracticeModel::setDrill(int index) {
  if (isIndexOf<Drill>(index))
    session_.setDrill(at<Drill>(index));
}

int PracticeModel::material() const {
  return session_.material();
}

void PracticeModel::setMaterial(int index) {
  if (isIndexOf<Material>(index))
    session_.setMaterial(at<Material>(index));
}

QStringList PracticeModel::drillTitles() {
  return titles<Drill>();
}

QStringList PracticeModel::materialTitles() {
  return titles<Material>();
}

QString PracticeModel::prompt() const {
  return Words::text(Wording::prompt(session_.drill()));
}

QStringList PracticeModel::prompts() {
  QStringList list;
  for (const Drill drill : Drill::allCases)
    list.append(Words::text(Wording::prompt(drill)));
  return list;
}

bool PracticeModel::hasTrial() const {
  return session_.trial().has_value();
}

QStringList PracticeModel::slotTitles() const {
  QStringList list;
  if (const auto& trial = session_.trial())
    for (std::int64_t slot = 0; slot < trial->slots; ++slot)
      list.append(Words::text(Wording::slotTitle(trial->drill, slot)));
  return list;
}

double PracticeModel::difficulty() const {
  return session_.trial() ? session_.trial()->difficulty : 0;
}

int PracticeModel::currentSlot() const {
  return static_cast<int>(session_.currentSlot());
}

bool PracticeModel::rendering() const {
  return session_.rendering();
}

bool PracticeModel::canSubmit() const {
  return session_.canSubmit();
}

bool PracticeModel::isFree() const {
  return session_.isFree();
}

QString PracticeModel::place() const {
  const auto place = session_.place();
  return place ? Words::text(Wording::progress(place->number, place->count)) : QString();
}

bool PracticeModel::keeping() const {
  return session_.keeping().isPending;
}

QString PracticeModel::keepingError() const {
  const auto& error = session_.keeping().error;
  return error ? Words::text(Wording::notSaved(*error)) : QString();
}

bool PracticeModel::answerable() const {
  return !graded() && !keeping();
}

double PracticeModel::answer() const {
  return session_.answer();
}

void PracticeModel::setAnswer(double answer) {
  session_.setAnswer(answer);
}

bool PracticeModel::graded() const {
  return session_.grade().has_value();
}

double PracticeModel::truth() const {
  return session_.trial() ? Drills::truth(*session_.trial()) : 0;
}

bool PracticeModel::correct() const {
  return session_.grade() && session_.grade()->correct;
}

QString PracticeModel::primary() const {
  return Words::text(Wording::primary(graded(), session_.isOver()));
}

QString PracticeModel::status() const {
  return Words::text(Wording::status(rendering(), keeping()));
}

QString PracticeModel::verdict() const {
  return session_.grade() ? Words::text(Wording::verdict(session_.grade()->correct)) : QString();
}

QString PracticeModel::verdictDetail() const {
  return session_.grade() ? Words::text(Wording::verdictDetail(*session_.grade())) : QString();
}

QString PracticeModel::announcement() const {
  return session_.grade() ? Words::text(Wording::announcement(*session_.grade())) : QString();
}

void PracticeModel::select(int slot) {
  session_.select(slot);
}

void PracticeModel::advance() {
  if (session_.isOver())
    Q_EMIT finished();
  else if (session_.grade())
    session_.newTrial();
  else
    session_.submit();
}

} // namespace velto
