// render.wasm
#include "Interface.h"
#include "RenderHash.h"
#include "Rendering.h"
#include "Session.h"
#include "Trial.h"

#include <string>
#include <vector>

using namespace velto;

namespace {

struct Module {
  Trial trial;
  std::vector<Slot> slots;
  std::string hash;
};

Module& instance() {
  static Module made;
  return made;
}

} // namespace

int velto_render(int drill, int material, std::uint64_t seed, double difficulty, bool fair) {
  const auto d = static_cast<std::size_t>(drill), m = static_cast<std::size_t>(material);
  if (d >= Drill::allCases.size() || m >= Material::allCases.size())
    return 0;
  instance().trial = Drills::makeTrial(difficulty, Material::allCases[m], seed, Drill::allCases[d]);
  instance().slots.clear();
  instance().slots = Drills::render(instance().trial, Session::trialSeconds,
                                    fair ? Noise::audible : Noise::asDrawn);
  return static_cast<int>(instance().slots.size());
}

std::size_t velto_render_frames() {
  return instance().slots.empty() ? 0 : instance().slots.front().l->size();
}

const float* velto_render_samples(int slot, int channel) {
  const auto index = static_cast<std::size_t>(slot);
  if (index >= instance().slots.size())
    return nullptr;
  const Slot& found = instance().slots[index];
  return (channel == 0 ? found.l : found.r)->data();
}

const char* velto_render_hash() {
  instance().hash = RenderHash::of(instance().trial, instance().slots).text();
  return instance().hash.data();
}
