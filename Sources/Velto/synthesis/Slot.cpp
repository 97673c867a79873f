#include "Slot.h"

namespace velto {

SharedSamples::SharedSamples(Samples samples) {
  auto owner = std::make_shared<const Samples>(std::move(samples));
  samples_ = *owner;
  owner_ = std::move(owner);
}

} // namespace velto
