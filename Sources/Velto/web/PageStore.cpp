#include "PageStore.h"

#include "Coding.h"

#include <utility>

namespace velto {

std::optional<Stored> PageStore::load() {
  const std::string kept = std::exchange(kept_, {});
  return Coding::decodeStored(kept);
}

void PageStore::save(const Stored& stored) {
  if (const auto bytes = Coding::encode(stored))
    host_.keepRecord(*bytes);
}

} // namespace velto
