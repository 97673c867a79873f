#include "Progress.h"

#include "Numbers.h"
#include "Scales.h"

#include <algorithm>
#include <optional>

namespace velto {

namespace {

constexpr const char* dash = "—";

// "1 day", "2 days"
std::string counted(std::int64_t count, const char* thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

// Where the curve still counts: beyond, nothing of it can be seen.
double nearby(double y, double height) {
  return std::clamp(y, -height, 2 * height);
}

// The points where the line from `a` to `b` passes the limits of nearby(), in order.
void appendCrossings(std::vector<Progress::CurvePoint>& points, const Progress::CurvePoint& a,
                     const Progress::CurvePoint& b, double height) {
  const auto append = [&](double limit) {
    if ((a.y < limit) != (b.y < limit) && a.y != limit && b.y != limit)
      points.push_back({a.x + (b.x - a.x) * ((limit - a.y) / (b.y - a.y)), limit});
  };
  const bool falls = a.y < b.y;
  append(falls ? -height : 2 * height);
  append(falls ? 2 * height : -height);
}

} // namespace

std::string Progress::streak(std::int64_t days) {
  return days == 0 ? dash : std::to_string(days) + "d";
}

std::string Progress::accuracy(std::optional<double> share) {
  return share ? Numbers::fixed(*share * 100, 0) + "%" : dash;
}

std::string Progress::spokenStreak(std::int64_t days) {
  return "Streak, " + (days == 0 ? "none" : counted(days, "day"));
}

std::string Progress::spokenToday(std::int64_t answers) {
  return "Today, " + counted(answers, "answer");
}

std::string Progress::spokenAccuracy(std::optional<double> share) {
  return "Accuracy, " + (share ? Numbers::fixed(*share * 100, 0) + " percent" : "none");
}

std::string Progress::curveTitle(Drill drill) {
  // The raw name is the title in lower case.
  return "progress · " + std::string(drill.rawValue());
}

std::string Progress::weakest(const std::optional<BandStat>& band) {
  if (!band)
    return "needs 3 answers in a band before it names a weak spot";
  const auto centre = Bands::centres[static_cast<std::size_t>(band->index)];
  return "weakest · " + Bands::label(centre) + " Hz — " + Numbers::fixed(band->meanErrorOct, 2) +
         " oct mean error over " + std::to_string(band->attempts);
}

Progress::Bar Progress::bar(const BandStat& band) {
  constexpr double lowest = 12; // of a band with answers
  if (band.attempts == 0)
    return {.height = 6, .weakness = std::nullopt};
  const double t = band.meanErrorOct / fullScaleOctaves;
  // In this order std::min makes 1 of NaN, too.
  const double weakness = t <= 0 ? 0 : std::min(1.0, t);
  return {.height = lowest + (tallestBar - lowest) * weakness, .weakness = weakness};
}

std::string Progress::mapDescription(std::span<const BandStat> bands) {
  std::string text;
  for (const BandStat& band : bands) {
    if (band.attempts == 0)
      continue;
    const double centre = Bands::centres[static_cast<std::size_t>(band.index)];
    text.append(text.empty() ? "" : ", ").append(FrequencyScale::spoken(centre));
    text.append(" ").append(Numbers::fixed(band.meanErrorOct, 2));
    text.append(" oct over ").append(std::to_string(band.attempts));
  }
  return text.empty() ? "no answers yet" : text;
}

std::vector<Progress::CurvePoint> Progress::curve(std::span<const double> difficulties,
                                                  double width, double height) {
  std::vector<CurvePoint> points;
  if (difficulties.size() < 2)
    return points;
  const auto last = static_cast<double>(difficulties.size() - 1);
  std::optional<CurvePoint> previous;
  double count = 0;
  for (const double difficulty : difficulties) {
    const CurvePoint point{width * count++ / last, (1 - difficulty / 100) * height};
    if (previous)
      appendCrossings(points, *previous, point, height);
    points.push_back({point.x, nearby(point.y, height)});
    previous = point;
  }
  return points;
}

std::string Progress::curveDescription(std::span<const double> difficulties) {
  if (difficulties.size() < 2)
    return "too few answers for a curve";
  const auto [lowest, highest] = std::minmax_element(difficulties.begin(), difficulties.end());
  const auto rounded = [](double difficulty) { return Numbers::fixed(difficulty, 0); };
  return "difficulty over " + std::to_string(difficulties.size()) + " answers: from " +
         rounded(difficulties.front()) + " to " + rounded(difficulties.back()) + ", lowest " +
         rounded(*lowest) + ", highest " + rounded(*highest);
}

} // namespace velto
