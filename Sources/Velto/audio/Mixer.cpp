#include "Mixer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace velto {

namespace {

// A volume and the load that it belongs to, packed into one word so that they are read together.
std::uint64_t packed(std::uint32_t load, float volume) {
  return std::uint64_t{load} << 32 | std::bit_cast<std::uint32_t>(volume);
}

} // namespace

Mixer::Mixer() {
  // Half a Hann window: its slope is zero at both ends, so that even a low tone ends without a
  // click.
  for (std::size_t i = 0; i < tailFrames; ++i)
    tailFade_[i] =
        0.5 + 0.5 * std::cos(std::numbers::pi * static_cast<double>(i) / double{tailFrames});
}

void Mixer::publish(Scene scene) {
  kept_.push_back(std::make_unique<const Published>(std::move(scene), ++published_));
  latest_.publish(kept_.back().get());
  const std::uint64_t adopted = adopted_.load(std::memory_order_acquire);
  std::erase_if(kept_, [adopted](const auto& entry) { return entry->number < adopted; });
}

void Mixer::releaseAllButLatest() {
  scene_ = &silence_;
  std::erase_if(kept_, [this](const auto& entry) { return entry->number < published_; });
}

float Mixer::volume(std::size_t slot, std::uint32_t load) const {
  const std::uint64_t published = publishedVolumes_[slot].load(std::memory_order_relaxed);
  if (published >> 32 != load)
    return 0;
  return std::bit_cast<float>(static_cast<std::uint32_t>(published));
}

void Mixer::render(float* interleaved, std::size_t frames) noexcept {
  adoptLatestScene();
  for (std::size_t done = 0; done < frames; done += chunkFrames)
    renderChunk(interleaved + 2 * done, std::min(frames - done, chunkFrames));
  if (scene_->tap)
    scene_->tap->write(interleaved, frames);
  publishState();
}

void Mixer::adoptLatestScene() {
  const Published* const* latest = latest_.fetch();
  if (latest == nullptr)
    return;
  const Scene& previous = *scene_;
  scene_ = &(*latest)->scene;
  if (scene_->stream != previous.stream)
    forget();
  if (scene_->load != previous.load) {
    keepTail();
    adoptSlots();
    beginRamp(Switching::crossfade);
  } else if (scene_->ramp != previous.ramp) {
    adoptChoice(previous.chosen);
  }
  adopted_.store((*latest)->number, std::memory_order_release);
}

void Mixer::forget() {
  voices_ = {};
  tailLeft_ = 0;
}

void Mixer::adoptSlots() {
  voices_ = {};
  start_ = clock_ + scene_->startDelayFrames;
  for (std::size_t i = 0; i < voices_.size(); ++i) {
    const Slot& slot = scene_->slots[i];
    if (!slot.l || !slot.r)
      continue;
    voices_[i].l = slot.l->data();
    voices_[i].r = slot.r->data();
    voices_[i].length = slot.l->size();
    voices_[i].riseBegin = start_;
    voices_[i].riseEnd = start_ + stepFrames;
  }
}

void Mixer::adoptChoice(std::int64_t previous) {
  if (scene_->switching == Switching::crossfade || scene_->chosen != previous)
    beginRamp(scene_->switching);
}

void Mixer::beginRamp(Switching switching) {
  for (std::size_t i = 0; i < voices_.size(); ++i) {
    Voice& voice = voices_[i];
    const double gain = gainAt(voice, clock_);
    voice.line.from = voice.line.at(clock_);
    voice.line.to = static_cast<std::int64_t>(i) == scene_->chosen ? 1 : 0;
    voice.line.begin = clock_;
    voice.line.switching = switching;
    if (clock_ >= voice.riseEnd)
      continue;
    if (clock_ > voice.riseBegin) {
      voice.riseFrom = gain;
      voice.riseBegin = clock_;
    }
    voice.riseTo = voice.line.at(voice.riseEnd);
  }
}

// Renders the outgoing load's next 5 ms as a fading tail.
void Mixer::keepTail() {
  const std::size_t played = tailFrames - tailLeft_;
  std::copy(tail_.begin() + static_cast<std::ptrdiff_t>(2 * played), tail_.end(), tail_.begin());
  std::fill(tail_.begin() + static_cast<std::ptrdiff_t>(2 * tailLeft_), tail_.end(), 0.0);
  tailLeft_ = tailFrames;
  if (!hasStarted())
    return;
  std::array<double, 2 * tailFrames> heard{};
  for (const Voice& voice : voices_)
    addVoice(voice, heard.data(), tailFrames);
  for (std::size_t i = 0; i < heard.size(); ++i)
    tail_[i] += tailFade_[i / 2] * heard[i];
}

void Mixer::takeTail(std::size_t frames) {
  const std::size_t count = std::min(frames, tailLeft_);
  const std::size_t played = tailFrames - tailLeft_;
  for (std::size_t i = 0; i < 2 * count; ++i)
    mix_[i] += tail_[2 * played + i];
  tailLeft_ -= count;
}

void Mixer::renderChunk(float* interleaved, std::size_t frames) {
  std::fill(mix_.begin(), mix_.begin() + static_cast<std::ptrdiff_t>(2 * frames), 0.0);
  takeTail(frames);
  for (const Voice& voice : voices_)
    addVoice(voice, mix_.data(), frames);
  for (std::size_t i = 0; i < 2 * frames; ++i)
    interleaved[i] = static_cast<float>(mix_[i]);
  clock_ += frames;
}

// Adds `frames` frames, starting at `clock_`, to `mix`.
void Mixer::addVoice(const Voice& voice, double* mix, std::size_t frames) const {
  const std::uint64_t end = clock_ + frames;
  if (voice.length == 0 || end <= start_)
    return;
  const bool isSteady = rests(voice);
  if (isSteady && voice.line.to <= 0)
    return;
  std::uint64_t frame = std::max(clock_, start_);
  mix += 2 * (frame - clock_);
  auto position = static_cast<std::size_t>((frame - start_) % voice.length);
  for (; frame < end; ++frame, mix += 2) {
    const double gain = isSteady ? voice.line.to : gainAt(voice, frame);
    mix[0] += gain * static_cast<double>(voice.l[position]);
    mix[1] += gain * static_cast<double>(voice.r[position]);
    if (++position == voice.length)
      position = 0;
  }
}

void Mixer::publishState() {
  for (std::size_t i = 0; i < voices_.size(); ++i)
    publishedVolumes_[i].store(packed(scene_->load, voices_[i].line.volumeAt(clock_)),
                               std::memory_order_relaxed);
  publishedClock_.store(clock_, std::memory_order_relaxed);
}

double Mixer::gainAt(const Voice& voice, std::uint64_t frame) {
  if (frame >= voice.riseEnd)
    return voice.line.at(frame);
  if (frame <= voice.riseBegin)
    return voice.riseFrom;
  const auto risen = static_cast<double>(frame - voice.riseBegin);
  const auto length = static_cast<double>(voice.riseEnd - voice.riseBegin);
  return voice.riseFrom + (voice.riseTo - voice.riseFrom) * (risen / length);
}

// True once the gain is constant.
bool Mixer::rests(const Voice& voice) const {
  return clock_ >= voice.riseEnd && clock_ - voice.line.begin >= rampFrames;
}

double Mixer::Line::at(std::uint64_t frame) const {
  const std::uint64_t moved = frame - begin;
  if (moved >= rampFrames)
    return to;
  if (switching == Switching::crossfade)
    return from + (to - from) * (static_cast<double>(moved) / double{rampFrames});
  constexpr std::uint64_t half = rampFrames / 2;
  return moved < half ? from * (static_cast<double>(half - moved) / double{half})
                      : to * (static_cast<double>(moved - half) / double{half});
}

float Mixer::Line::volumeAt(std::uint64_t frame) const {
  const std::uint64_t step = std::min((frame - begin) / stepFrames, stepCount);
  const auto start = static_cast<float>(from), end = static_cast<float>(to);
  if (switching == Switching::crossfade)
    return start + (static_cast<float>(step) / float{stepCount}) * (end - start);
  constexpr std::uint64_t half = stepCount / 2;
  return step < half ? start * (static_cast<float>(half - step) / float{half})
                     : end * (static_cast<float>(step - half) / float{half});
}

} // namespace velto
