// Computes the side panel's texts, the bars of its weakness map and its curve from the statistics.
// Pure functions; lengths are in points.
#pragma once

#include "Drill.h"
#include "Statistics.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velto::Progress {

// "5d", or a dash for 0.
[[nodiscard]] std::string streak(std::int64_t days);
// "85%" for a share of 0 to 1, or a dash for nullopt.
[[nodiscard]] std::string accuracy(std::optional<double> share);
// The figures with their names, for screen readers: "Streak, 2 days", "Today, 1 answer", "Accuracy,
// 85 percent", and "none" for a dash.
[[nodiscard]] std::string spokenStreak(std::int64_t days);
[[nodiscard]] std::string spokenToday(std::int64_t answers);
[[nodiscard]] std::string spokenAccuracy(std::optional<double> share);
// "progress · frequency"
[[nodiscard]] std::string curveTitle(Drill drill);
// "weakest · 3.15k Hz — 0.42 oct mean error over 7", or a hint for nullopt.
[[nodiscard]] std::string weakest(const std::optional<BandStat>& band);

// One bar of the weakness map.
struct Bar {
  double height = 0;
  // 0 (no error) to 1 (a mean error of 1.2 octaves or more); nullopt without answers.
  std::optional<double> weakness;

  bool operator==(const Bar&) const = default;
};

inline constexpr double tallestBar = 34; // points
// The mean error from which on a band has the tallest bar and the colour of the weakest.
inline constexpr double fullScaleOctaves = 1.2;

// A band without answers has the lowest bar; one whose mean error is NaN has the tallest.
[[nodiscard]] Bar bar(const BandStat& band);

// The bands that are labelled under the map.
inline constexpr std::array<std::size_t, 5> labelledBands{0, 8, 14, 20, 26};

// The map for screen readers, without bands that have no answers: "40 Hz 0.42 oct over 7, 3.15 kHz
// 0.10 oct over 12".
[[nodiscard]] std::string mapDescription(std::span<const BandStat> bands);

// In points from the left and top edge.
struct CurvePoint {
  double x = 0;
  double y = 0;

  bool operator==(const CurvePoint&) const = default;
};

// The difficulties (0 to 100) as points of a polyline, evenly spaced over `width`, 100 at the top
// of `height`. No points for fewer than two difficulties. A file may hold any difficulty: the line
// is cut one height above and below.
[[nodiscard]] std::vector<CurvePoint> curve(std::span<const double> difficulties, double width,
                                            double height);

// The curve for screen readers: "difficulty over 12 answers: from 20 to 43, lowest 18, highest 45".
[[nodiscard]] std::string curveDescription(std::span<const double> difficulties);

} // namespace velto::Progress
