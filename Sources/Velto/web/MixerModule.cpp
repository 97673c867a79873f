// mixer.wasm
#include "Headroom.h"
#include "Interface.h"
#include "Mixer.h"
#include "SceneControl.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

using namespace velto;

namespace {

constexpr std::size_t mostFrames = 4096;

struct Module {
  Mixer mixer;
  SceneControl control;
  std::array<std::array<std::shared_ptr<Samples>, 2>, Scene::maxSlots> next; // to be played
  std::array<float, 2 * mostFrames> block{};
};

// Made before the first block.
Module instance;

SharedSamples shared(std::shared_ptr<Samples>& samples) {
  if (!samples)
    return {};
  const std::span<const float> all = *samples;
  return SharedSamples(std::move(samples), all);
}

} // namespace

float* velto_mixer_samples(int slot, int channel, std::size_t frames) {
  const auto index = static_cast<std::size_t>(slot);
  if (index >= instance.next.size())
    return nullptr;
  auto& samples = instance.next[index][channel == 0 ? 0 : 1];
  samples = std::make_shared<Samples>(frames);
  return samples->data();
}

void velto_mixer_play(int count, int chosen, double delayFrames, bool throughSilence) {
  std::vector<Slot> slots;
  for (auto& channels : instance.next)
    if (static_cast<int>(slots.size()) < count)
      slots.push_back({shared(channels[0]), shared(channels[1])});
  instance.control.play(std::move(slots), chosen,
                        static_cast<std::uint64_t>(std::max(delayFrames, 0.0)),
                        throughSilence ? Switching::throughSilence : Switching::crossfade);
  instance.mixer.publish(instance.control.scene());
}

void velto_mixer_switchTo(int chosen) {
  instance.control.switchTo(chosen);
  instance.mixer.publish(instance.control.scene());
}

void velto_mixer_silence() {
  instance.control.silence();
  instance.mixer.publish(instance.control.scene());
}

const float* velto_mixer_render(std::size_t frames) {
  fillOutput(instance.mixer, instance.block.data(), std::min(frames, mostFrames));
  return instance.block.data();
}
