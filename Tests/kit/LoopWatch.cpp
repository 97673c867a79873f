#include "LoopWatch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace velto::kit {

namespace {

constexpr std::size_t rampFrames = 7200; // 150 ms
constexpr std::size_t riseFrames = 600;  // 12.5 ms
constexpr std::size_t windowFrames = 32; // enough to identify a position in noise
constexpr std::size_t mostBreaks = 100;
constexpr double tolerance = 1e-7;

double rampAt(std::size_t frame) {
  return std::min(1.0, static_cast<double>(frame) / static_cast<double>(rampFrames));
}

} // namespace

LoopWatch::LoopWatch(std::vector<Slot> slots, std::size_t startAt, std::size_t lead)
    : slots_(std::move(slots)), length_(slots_.at(0).l->size()), lead_(lead), current_(startAt) {
  for (std::size_t slot = 0; slot < slots_.size(); ++slot)
    for (std::size_t position = 0; position < length_; ++position)
      places_.push_back({bitsOf(at(slot, position)), static_cast<std::uint32_t>(slot),
                         static_cast<std::uint32_t>(position)});
  std::ranges::sort(places_, {}, &Place::bits);
}

void LoopWatch::take(std::span<const float> interleaved) {
  for (std::size_t i = 0; i + 1 < interleaved.size(); i += 2)
    takeFrame({interleaved[i], interleaved[i + 1]});
}

void LoopWatch::takeFrame(Frame frame) {
  if (state_ == State::silence && !(frame == Frame{0, 0})) {
    // The first frame of the loop had gain 0.
    state_ = State::rise;
    position_ = rampFrame_ = 1;
  }
  if (state_ == State::lost)
    resynchronise(frame);
  else if (state_ != State::silence)
    follow(frame);
  ++frame_;
}

void LoopWatch::follow(Frame frame) {
  if (state_ == State::rest && !(frame == at(current_, position_)) && !expected_.empty()) {
    // The first frame of a fade still has the gains 1 and 0.
    state_ = State::fade;
    rampFrame_ = 1;
    --exact_;
    ++faded_;
  }
  bool good = false;
  if (state_ == State::rest) {
    good = frame == at(current_, position_);
    exact_ += good ? 1 : 0;
  } else if (state_ == State::rise) {
    const double line = rampAt(lead_ + std::max(rampFrame_, riseFrames));
    const double gain =
        line * std::min(1.0, static_cast<double>(rampFrame_) / static_cast<double>(riseFrames));
    good = isFadeFrom(0, current_, gain, current_, frame);
    faded_ += good ? 1 : 0;
    if (++rampFrame_ + lead_ >= rampFrames)
      state_ = State::rest;
  } else {
    const double gain = rampAt(rampFrame_);
    good = isFadeFrom(1 - gain, current_, gain, expected_.front(), frame);
    faded_ += good ? 1 : 0;
    if (++rampFrame_ == rampFrames) {
      state_ = State::rest;
      current_ = expected_.front();
      expected_.pop_front();
      ++switches_;
    }
  }
  if (!good)
    loseSync(frame);
  else
    position_ = (position_ + 1) % length_;
}

void LoopWatch::loseSync(Frame frame) {
  state_ = State::lost;
  lostAt_ = frame_;
  lostPosition_ = position_;
  silent_ = 0;
  if (breaks_.size() < mostBreaks)
    breaks_.push_back("frame " + std::to_string(lostAt_) + ": out of sync");
  window_.clear();
  resynchronise(frame);
}

void LoopWatch::resynchronise(Frame frame) {
  if (frame == Frame{0, 0} && silent_ == frame_ - lostAt_)
    ++silent_;
  window_.push_back(frame);
  if (window_.size() > windowFrames)
    window_.pop_front();
  if (window_.size() == windowFrames)
    if (const Place* place = placeOfWindow())
      resumeAt(*place);
}

// The position in the slots at which the window begins; nullptr if there is none.
const LoopWatch::Place* LoopWatch::placeOfWindow() const {
  const std::uint64_t bits = bitsOf(window_[0]);
  auto place = std::lower_bound(places_.begin(), places_.end(), bits,
                                [](const Place& a, std::uint64_t b) { return a.bits < b; });
  for (; place != places_.end() && place->bits == bits; ++place) {
    std::size_t same = 1;
    while (same < windowFrames &&
           window_[same] == at(place->slot, (place->position + same) % length_))
      ++same;
    if (same == windowFrames)
      return &*place;
  }
  return nullptr;
}

void LoopWatch::resumeAt(const Place& place) {
  const std::uint64_t unknown = frame_ + 1 - windowFrames - lostAt_;
  const auto expected = static_cast<std::size_t>((lostPosition_ + unknown) % length_);
  const std::size_t ahead = (place.position + length_ - expected) % length_;
  std::string words;
  if (ahead == 0)
    words = "the phase is unchanged";
  else if (ahead <= length_ / 2)
    words = std::to_string(ahead) + " frames are missing";
  else
    words = std::to_string(length_ - ahead) + " frames are too many";
  if (unknown > 0 && silent_ == unknown)
    words += ", silence for " + std::to_string(unknown);
  else if (unknown > 0)
    words += ", unknown frames for " + std::to_string(unknown);
  while (!expected_.empty() && place.slot != current_) {
    current_ = expected_.front();
    expected_.pop_front();
    ++switches_;
  }
  if (place.slot != current_)
    words += ", and slot " + std::to_string(place.slot) + " was not requested";
  if (breaks_.size() < mostBreaks)
    breaks_.back() = "frame " + std::to_string(lostAt_) + ": " + words;
  current_ = place.slot;
  position_ = (place.position + windowFrames) % length_;
  state_ = State::rest;
}

std::uint64_t LoopWatch::bitsOf(Frame frame) {
  return std::uint64_t{std::bit_cast<std::uint32_t>(frame.l)} << 32 |
         std::bit_cast<std::uint32_t>(frame.r);
}

LoopWatch::Frame LoopWatch::at(std::size_t slot, std::size_t position) const {
  return {(*slots_[slot].l)[position], (*slots_[slot].r)[position]};
}

bool LoopWatch::isFadeFrom(double fromGain, std::size_t from, double toGain, std::size_t to,
                           Frame frame) const {
  const Frame a = at(from, position_), b = at(to, position_);
  const auto isNear = [&](float heard, float x, float y) {
    return std::abs(static_cast<double>(heard) - fromGain * static_cast<double>(x) -
                    toGain * static_cast<double>(y)) <= tolerance;
  };
  return isNear(frame.l, a.l, b.l) && isNear(frame.r, a.r, b.r);
}

} // namespace velto::kit
