#include "Record.h"

#include "Numbers.h"

#include <algorithm>

namespace velto {

std::optional<std::int64_t> Attempt::mappedBand() const {
  return isMapped() ? bandIndex : std::nullopt;
}

void BandRoll::add(const Attempt& attempt) {
  attempts = Numbers::saturatingIncrement(attempts);
  if (attempt.correct)
    hits = Numbers::saturatingIncrement(hits);
  errorSum += attempt.error;
}

std::size_t Stored::excess(std::size_t detailRows) const {
  return attempts.size() <= detailRows ? 0 : attempts.size() - detailRows;
}

void Stored::trim(std::size_t detailRows) {
  const auto firstKept = attempts.begin() + static_cast<std::ptrdiff_t>(excess(detailRows));
  std::for_each(attempts.begin(), firstKept, [this](const Attempt& attempt) {
    if (const auto band = attempt.mappedBand())
      lifetime[*band].add(attempt);
  });
  attempts.erase(attempts.begin(), firstKept);
}

} // namespace velto
