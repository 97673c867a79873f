#include "Interface.h"

#include "Mixer.h"
#include "SceneControl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

using namespace velto;

namespace {

constexpr std::size_t loopFrames = 5000;
constexpr std::size_t block = 128; // of an audio worklet

float sampleAt(int slot, int channel, std::size_t frame) {
  return static_cast<float>(slot * 2 + channel + 1) / 8 + static_cast<float>(frame % 777) / 8192;
}

// The same loops for the module and for a mixer.
std::vector<Slot> fill(int count) {
  std::vector<Slot> slots;
  for (int slot = 0; slot < count; ++slot) {
    Samples channels[2];
    for (const int channel : {0, 1}) {
      float* buffer = velto_mixer_samples(slot, channel, loopFrames);
      for (std::size_t frame = 0; frame < loopFrames; ++frame)
        buffer[frame] = sampleAt(slot, channel, frame);
      channels[channel].assign(buffer, buffer + loopFrames);
    }
    slots.push_back({SharedSamples(std::move(channels[0])), SharedSamples(std::move(channels[1]))});
  }
  return slots;
}

// Renders both and expects the module's samples to be half of the mixer's.
void expectHalf(Mixer& mixer, std::size_t frames) {
  std::vector<float> wanted(2 * block);
  for (std::size_t done = 0; done < frames; done += block) {
    mixer.render(wanted.data(), block);
    const float* heard = velto_mixer_render(block);
    for (std::size_t i = 0; i < wanted.size(); ++i)
      ASSERT_EQ(heard[i], wanted[i] / 2) << done + i / 2;
  }
}

} // namespace

TEST(MixerModule, PlaysHalfOfWhatTheMixerPlays) {
  Mixer mixer;
  SceneControl control;
  for (const auto switching : {Switching::crossfade, Switching::throughSilence}) {
    control.play(fill(3), 0, 1000, switching);
    velto_mixer_play(3, 0, 1000, switching == Switching::throughSilence);
    mixer.publish(control.scene());
    expectHalf(mixer, 20'000);
    control.switchTo(2);
    velto_mixer_switchTo(2);
    mixer.publish(control.scene());
    expectHalf(mixer, 20'000);
    control.silence();
    velto_mixer_silence();
    mixer.publish(control.scene());
    expectHalf(mixer, 1000);
  }
}

TEST(MixerModule, HasNoBuffersBeyondTheMixersSlots) {
  EXPECT_EQ(velto_mixer_samples(3, 0, 10), nullptr);
  EXPECT_EQ(velto_mixer_samples(-1, 0, 10), nullptr);
}
