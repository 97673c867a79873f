#include "ProgressModel.h"

#include "Bands.h"

namespace velto {

namespace {

// The map has a bar for each band even if nothing is recorded.
BandStat bandAt(const Stats& stats, std::size_t index) {
  return index < stats.bands.size() ? stats.bands[index] : BandStat{};
}

} // namespace

ProgressModel::ProgressModel(Session& session, QObject* parent)
    : QObject(parent), session_(session),
      subscription_(session.objectDidChange.subscribe([this](auto field) { announce(field); })) {
  computeBars();
}

ProgressModel::~ProgressModel() {
  session_.objectDidChange.unsubscribe(subscription_);
}

void ProgressModel::announce(Session::Field field) {
  const bool record = field == Session::Field::record;
  const bool drill = field == Session::Field::drill;
  if (record) {
    computeBars();
    Q_EMIT recordChanged();
  }
  if (drill)
    Q_EMIT drillChanged();
  if (record || drill)
    Q_EMIT drillRecordChanged();
}

void ProgressModel::computeBars() {
  barHeights_.clear();
  weaknesses_.clear();
  for (std::size_t band = 0; band < Bands::centres.size(); ++band) {
    const Progress::Bar bar = Progress::bar(bandAt(profile().stats(), band));
    barHeights_.append(bar.height);
    weaknesses_.append(bar.weakness.value_or(-1));
  }
}

QString ProgressModel::streak() const {
  return QString::fromStdString(Progress::streak(profile().stats().streak));
}

QString ProgressModel::today() const {
  return QString::number(profile().stats().todayCount);
}

QString ProgressModel::accuracy() const {
  return QString::fromStdString(Progress::accuracy(profile().accuracy(session_.drill())));
}

int ProgressModel::weakestBand() const {
  const auto& weakest = profile().stats().weakest;
  return weakest ? static_cast<int>(weakest->index) : -1;
}

QString ProgressModel::weakestText() const {
  return QString::fromStdString(Progress::weakest(profile().stats().weakest));
}

QString ProgressModel::mapDescription() const {
  return QString::fromStdString(Progress::mapDescription(profile().stats().bands));
}

QString ProgressModel::curveDescription() const {
  return QString::fromStdString(Progress::curveDescription(profile().curve(session_.drill())));
}

QStringList ProgressModel::bandLabels() {
  QStringList labels;
  for (const std::size_t band : Progress::labelledBands)
    labels.append(QString::fromStdString(Bands::label(Bands::centres[band])));
  return labels;
}

QString ProgressModel::curveTitle() const {
  return QString::fromStdString(Progress::curveTitle(session_.drill()));
}

QList<double> ProgressModel::curve() const {
  const auto difficulties = profile().curve(session_.drill());
  return {difficulties.begin(), difficulties.end()};
}

} // namespace velto
