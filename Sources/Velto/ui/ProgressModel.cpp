#include "ProgressModel.h"

namespace velto {

namespace {

// The map has a bar for each band, also before anything was recorded.
BandStat bandAt(const Stats& stats, std::size_t index) {
  return index < stats.bands.size() ? stats.bands[index] : BandStat{};
}

} // namespace

ProgressModel::ProgressModel(Session& session, QObject* parent)
    : QObject(parent), session_(session),
      subscription_(session.objectDidChange.subscribe([this] { Q_EMIT changed(); })) {}

ProgressModel::~ProgressModel() {
  session_.objectDidChange.unsubscribe(subscription_);
}

QString ProgressModel::streak() const {
  return QString::fromStdString(Progress::streak(session_.profile().stats().streak));
}

QString ProgressModel::today() const {
  return QString::number(session_.profile().stats().todayCount);
}

QString ProgressModel::accuracy() const {
  return QString::fromStdString(Progress::accuracy(session_.profile().accuracy(session_.drill())));
}

QList<double> ProgressModel::barHeights() const {
  QList<double> heights;
  for (const Progress::Bar& bar : bars())
    heights.append(bar.height);
  return heights;
}

QList<double> ProgressModel::weaknesses() const {
  QList<double> weaknesses;
  for (const Progress::Bar& bar : bars())
    weaknesses.append(bar.weakness.value_or(-1));
  return weaknesses;
}

int ProgressModel::weakestBand() const {
  const auto& weakest = session_.profile().stats().weakest;
  return weakest ? static_cast<int>(weakest->index) : -1;
}

QString ProgressModel::weakestText() const {
  return QString::fromStdString(Progress::weakest(session_.profile().stats().weakest));
}

QString ProgressModel::mapDescription() const {
  return QString::fromStdString(Progress::mapDescription(session_.profile().stats().bands));
}

QString ProgressModel::curveDescription() const {
  return QString::fromStdString(
      Progress::curveDescription(session_.profile().curve(session_.drill())));
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
  const auto difficulties = session_.profile().curve(session_.drill());
  return {difficulties.begin(), difficulties.end()};
}

std::vector<Progress::Bar> ProgressModel::bars() const {
  std::vector<Progress::Bar> bars;
  for (std::size_t band = 0; band < Bands::centres.size(); ++band)
    bars.push_back(Progress::bar(bandAt(session_.profile().stats(), band)));
  return bars;
}

} // namespace velto
