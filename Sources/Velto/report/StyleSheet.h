// How the report looks: its style sheet, and the classes of what is coloured by a figure.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace velto::StyleSheet {

// Answers that a band needs to be named.
inline constexpr std::int64_t answersToNameABand = 3;
// Up to these numbers of answers a day has the first, second and third colour.
inline constexpr std::array<std::int64_t, 3> dayLimits{19, 49, 99};

// The class of a band with this mean error, octaves: "w0" to "w10", coloured as in the window.
[[nodiscard]] std::string weaknessClass(double meanErrorOct);
// The class of a day with this number of answers: "d0" to "d4".
[[nodiscard]] std::string dayClass(std::int64_t answers);

// CSS. Light and dark follow the reader's preference; on paper the ground is white.
[[nodiscard]] std::string text();

} // namespace velto::StyleSheet
