// Following playback frame by frame for as long as one likes, in constant memory.
#pragma once

#include "Drills.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

namespace velto::kit {

// Holds a recording against what a player was told: the current slot, bit for bit and at the one
// phase that all slots share since the start, or the crossfade between two of them. Where it is
// neither, a break is noted and the thread taken up again behind it.
//
// The slots are noise, all of one length: no two frames of them are alike.
class LoopWatch {
public:
  // Slot `startAt` fades in; its crossfade has run `lead` frames when the voices begin.
  LoopWatch(std::vector<Slot> slots, std::size_t startAt, std::size_t lead);

  // From some frame on that has not been taken yet, `slot` is heard.
  void expectSwitch(std::size_t slot) { expected_.push_back(slot); }

  // The next frames, interleaved, at the level at which they were rendered.
  void take(std::span<const float> interleaved);

  [[nodiscard]] std::uint64_t frames() const { return frame_; }
  [[nodiscard]] std::uint64_t exactFrames() const { return exact_; }
  [[nodiscard]] std::uint64_t fadedFrames() const { return faded_; }
  [[nodiscard]] std::uint64_t switches() const { return switches_; }
  // Told, but not heard yet.
  [[nodiscard]] std::size_t pendingSwitches() const { return expected_.size(); }

  // Each break in words, for example "frame 123: 480 frames are missing"; the first hundred.
  // Silence that was inserted, with every frame in its order around it, is what a sound server
  // plays when the player is not given processor time.
  [[nodiscard]] const std::vector<std::string>& breaks() const { return breaks_; }

private:
  struct Frame {
    float l, r;
    bool operator==(const Frame&) const = default;
  };
  // Where a frame stands in the slots. No two frames are alike, so its bits find it.
  struct Place {
    std::uint64_t bits;
    std::uint32_t slot, position;
  };
  enum class State { silence, rise, rest, fade, lost };

  void takeFrame(Frame frame);
  void follow(Frame frame);
  void breakOff(Frame frame);
  void searchThread(Frame frame);
  [[nodiscard]] static std::uint64_t bitsOf(Frame frame);
  [[nodiscard]] Frame at(std::size_t slot, std::size_t position) const;
  [[nodiscard]] const Place* placeOfWindow() const;
  void resumeAt(const Place& place);
  [[nodiscard]] bool isFadeFrom(double fromGain, std::size_t from, double toGain, std::size_t to,
                                Frame frame) const;

  std::vector<Slot> slots_;
  std::vector<Place> places_; // sorted by bits
  std::size_t length_, lead_, current_;
  std::deque<std::size_t> expected_;

  State state_ = State::silence;
  std::uint64_t frame_ = 0;   // frames taken
  std::size_t position_ = 0;  // in the loop, of the next frame
  std::size_t rampFrame_ = 0; // of the rise or the fade
  std::uint64_t lostAt_ = 0;
  std::size_t lostPosition_ = 0;
  std::uint64_t silent_ = 0; // frames without sound from there on
  std::deque<Frame> window_; // the latest frames while the thread is lost

  std::uint64_t exact_ = 0, faded_ = 0, switches_ = 0;
  std::vector<std::string> breaks_;
};

} // namespace velto::kit
