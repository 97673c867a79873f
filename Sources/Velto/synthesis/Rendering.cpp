// Passes over the samples are merged where possible: the memory traffic costs more than the
// arithmetic.

#include "Rendering.h"

#include "Compressor.h"
#include "FatalError.h"

#include <cmath>

namespace velto {

namespace {

// The buffers of a trial in one uninitialised allocation. One large block is cheaper to allocate
// and free than several.
class Buffers {
public:
  Buffers(std::size_t count, double seconds)
      : frames_(Signals::frameCount(seconds)),
        block_(std::make_shared_for_overwrite<float[]>(count * frames_)) {}

  [[nodiscard]] std::size_t frames() const { return frames_; }
  [[nodiscard]] std::span<float> operator[](std::size_t index) const {
    return {block_.get() + index * frames_, frames_};
  }
  [[nodiscard]] SharedSamples share(std::size_t index) const { return {block_, (*this)[index]}; }

private:
  std::size_t frames_;
  std::shared_ptr<float[]> block_;
};

// Two slots, each with one buffer for both channels.
std::vector<Slot> monoSlots(const Buffers& buffers) {
  const SharedSamples a = buffers.share(0), b = buffers.share(1);
  return {{a, a}, {b, b}};
}

// Fills `out` with the trial's material. Returns the gain still to be applied.
float fillSource(std::span<float> out, const Trial& trial, Noise noise) {
  switch (trial.material) {
  case Material::pinkNoise:
    return Signals::fillPink(out, trial.seed, noise);
  case Material::drums:
    return Signals::fillDrums(out, trial.seed);
  case Material::pad:
    return Signals::fillPad(out, trial.seed);
  }
  fatalError("unknown material");
}

// Fills `out` with the trial's material at its output level. Returns that level in dB.
double fillLeveledSource(std::span<float> out, const Trial& trial, Noise noise) {
  const float gain = fillSource(out, trial, noise);
  Measure::RunningRMS rms;
  for (float& sample : out) {
    sample *= gain;
    rms.add(sample);
  }
  return rms.levelDB(out.size());
}

std::vector<Slot> frequencySlots(const Trial& trial, double seconds, Noise noise) {
  const Buffers buffers(2, seconds);
  const auto source = buffers[0], boosted = buffers[1];
  const float gain = fillSource(source, trial, noise);

  Biquad peak = Biquad::peaking(trial.targetFreq, trial.boostDB, trial.boostQ, sampleRateHz);
  Measure::RunningRMS sourceRMS, boostedRMS;
  for (std::size_t i = 0; i < source.size(); ++i) {
    source[i] *= gain;
    boosted[i] = peak.process(source[i]);
    sourceRMS.add(source[i]);
    boostedRMS.add(boosted[i]);
  }
  Measure::scale(boosted, Measure::gainFrom(boostedRMS.levelDB(boosted.size()),
                                            sourceRMS.levelDB(source.size())));
  return monoSlots(buffers);
}

std::vector<Slot> levelSlots(const Trial& trial, double seconds, Noise noise) {
  const Buffers buffers(2, seconds);
  const auto source = buffers[0], louder = buffers[1];
  const float sourceGain = fillSource(source, trial, noise);
  const auto gain = static_cast<float>(std::pow(10.0, trial.targetLevelDB / 20));
  for (std::size_t i = 0; i < source.size(); ++i) {
    source[i] *= sourceGain;
    louder[i] = source[i] * gain;
  }
  return monoSlots(buffers);
}

std::vector<Slot> dynamicsSlots(const Trial& trial, double seconds, Noise noise) {
  const Buffers buffers(2, seconds);
  const auto source = buffers[0], compressed = buffers[1];
  const double levelDB = fillLeveledSource(source, trial, noise);
  Drills::compressHitting(trial.targetGRdB, source, compressed);
  Measure::scale(compressed, Measure::gainFrom(Measure::rmsDB(compressed), levelDB));
  return monoSlots(buffers);
}

std::vector<Slot> polaritySlots(const Trial& trial, double seconds, Noise noise) {
  const Buffers buffers(3, seconds);
  const auto left = buffers[0], right = buffers[1], flipped = buffers[2];
  const double levelDB = fillLeveledSource(left, trial, noise);
  const float gain =
      Signals::fillDecorrelated(right, left, levelDB, trial.correlation, trial.seed, noise);
  for (std::size_t i = 0; i < right.size(); ++i) {
    right[i] *= gain;
    flipped[i] = -right[i];
  }

  std::vector<Slot> slots;
  for (std::int64_t s = 0; s < 3; ++s)
    slots.push_back({buffers.share(0), buffers.share(s == trial.oddSlot ? 2 : 1)});
  return slots;
}

} // namespace

std::vector<Slot> Drills::render(const Trial& trial, double seconds, Noise noise) {
  switch (trial.drill) {
  case Drill::frequency:
    return frequencySlots(trial, seconds, noise);
  case Drill::level:
    return levelSlots(trial, seconds, noise);
  case Drill::dynamics:
    return dynamicsSlots(trial, seconds, noise);
  case Drill::polarity:
    return polaritySlots(trial, seconds, noise);
  }
  fatalError("unknown drill");
}

} // namespace velto
