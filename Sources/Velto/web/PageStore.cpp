#include "PageStore.h"

#include "Coding.h"
#include "Merging.h"

namespace velto {

bool PageStore::isRecord(std::string_view bytes) {
  return Coding::decodeStored(bytes).has_value();
}

std::optional<Stored> PageStore::load() {
  auto stored = Coding::decodeStored(std::exchange(kept_, {}));
  if (stored)
    latest_ = *stored;
  return stored;
}

void PageStore::save(const Stored& stored) {
  latest_ = stored;
  const auto bytes = Coding::encode(stored);
  if (!bytes)
    return;
  isSaving_ = true;
  host_.keepRecord(*bytes);
}

bool PageStore::merge(std::string_view bytes) {
  auto other = Coding::decodeStored(bytes);
  if (!other)
    return false;
  Stored both = Merging::merged(*std::move(other), latest_, unsaved_, detailRows_);
  both.trim(detailRows_);
  merged_ = both;
  save(both);
  return true;
}

std::optional<Stored> PageStore::takeMerged(const Stored& stored) {
  auto other = std::exchange(merged_, std::nullopt);
  if (!other)
    return std::nullopt;
  return Merging::merged(*std::move(other), stored, unsaved_, detailRows_);
}

} // namespace velto
