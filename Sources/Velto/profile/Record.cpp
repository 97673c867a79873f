#include "Record.h"

#include "Numbers.h"

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

} // namespace velto
