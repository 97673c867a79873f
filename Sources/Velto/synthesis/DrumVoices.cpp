#include "DrumVoices.h"

#include "DSP.h"

#include <cmath>
#include <cstddef>

namespace velto {

namespace {

constexpr std::size_t kickFrames = 13440;
constexpr std::size_t snareFrames = 9600;
constexpr std::size_t closedHatFrames = 2640;
constexpr std::size_t openHatFrames = 7680;

// Samples `voice`, a function of the time in seconds, at each frame.
template <typename Voice>
std::vector<double> table(std::size_t frames, Voice voice) {
  std::vector<double> values(frames);
  for (std::size_t i = 0; i < frames; ++i)
    values[i] = voice(static_cast<double>(i) / sampleRateHz);
  return values;
}

std::vector<double> decay(std::size_t frames, double seconds) {
  return table(frames, [seconds](double tau) { return std::exp(-tau / seconds); });
}

std::vector<double> kickTable() {
  return table(kickFrames, [](double tau) {
    // Frequency times time rather than its integral, so that the chirp falls faster.
    const double frequency = 55 + 75 * std::exp(-tau / 0.022);
    const double amplitude = 0.9 * std::exp(-tau / 0.075);
    return amplitude * std::sin(twoPi * frequency * tau);
  });
}

std::vector<double> snareToneTable() {
  return table(snareFrames,
               [filter = Biquad::bandpass(190, 2.0, sampleRateHz)](double tau) mutable {
                 const float tone = filter.process(static_cast<float>(std::sin(twoPi * 185 * tau)));
                 return 1.4 * static_cast<double>(tone);
               });
}

} // namespace

DrumVoices::DrumVoices()
    : kick(kickTable()), snareTone(snareToneTable()), snareEnvelope(decay(snareFrames, 0.055)),
      closedHatEnvelope(decay(closedHatFrames, 0.014)),
      openHatEnvelope(decay(openHatFrames, 0.05)) {}

const DrumVoices& DrumVoices::shared() {
  static const DrumVoices voices;
  return voices;
}

} // namespace velto
