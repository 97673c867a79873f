#include "Bands.h"

#include "Numbers.h"

#include <cmath>
#include <limits>

namespace velto {

std::string Bands::label(double frequency) {
  if (frequency >= 1000)
    return Numbers::general(frequency / 1000, 4) + "k";
  return Numbers::fixed(frequency, 0);
}

std::size_t Bands::nearestIndex(double frequency) {
  std::size_t nearest = 0;
  double smallest = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < centres.size(); ++i) {
    const double distance = std::abs(std::log2(frequency / centres[i]));
    if (distance < smallest) {
      smallest = distance;
      nearest = i;
    }
  }
  return nearest;
}

} // namespace velto
