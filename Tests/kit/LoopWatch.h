// Verifies playback frame by frame, for any length of time in constant memory.
#pragma once

#include "Slot.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

namespace velto::kit {

// Compares playback with the requested slots: every frame must belong to the current slot, bit for
// bit and at the common phase of all slots, or to a crossfade between two slots. Otherwise records
// a break and resynchronises.
//
// The slots are noise of one length, in which no two frames are alike.
class LoopWatch {
public:
  // Slot `startAt` fades in; its fade has run for `lead` frames when the voices start.
  LoopWatch(std::vector<Slot> slots, std::size_t startAt, std::size_t lead);

  // Announces a switch to `slot` in frames still to come.
  void expectSwitch(std::size_t slot) { expected_.push_back(slot); }

  // The next frames, interleaved, at their rendered level.
  void take(std::span<const float> interleaved);

  [[nodiscard]] std::uint64_t frames() const { return frame_; }
  [[nodiscard]] std::uint64_t exactFrames() const { return exact_; }
  [[nodiscard]] std::uint64_t fadedFrames() const { return faded_; }
  [[nodiscard]] std::uint64_t switches() const { return switches_; }
  // Announced but not heard yet.
  [[nodiscard]] std::size_t pendingSwitches() const { return expected_.size(); }

  // Descriptions of the first hundred breaks, for example "frame 123: 480 frames are missing". A
  // sound server inserts silence between continuous frames when the player gets no processor time.
  [[nodiscard]] const std::vector<std::string>& breaks() const { return breaks_; }

private:
  struct Frame {
    float l, r;
    bool operator==(const Frame&) const = default;
  };
  // Position of a frame in the slots. No two frames are alike, so the bits identify it.
  struct Place {
    std::uint64_t bits;
    std::uint32_t slot, position;
  };
  enum class State { silence, rise, rest, fade, lost };

  void takeFrame(Frame frame);
  void follow(Frame frame);
  void loseSync(Frame frame);
  void resynchronise(Frame frame);
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
  std::uint64_t silent_ = 0; // silent frames since lostAt_
  std::deque<Frame> window_; // latest frames while lost

  std::uint64_t exact_ = 0, faded_ = 0, switches_ = 0;
  std::vector<std::string> breaks_;
};

} // namespace velto::kit
