// What leaves the speakers: looping voices, crossfades and their clock, frame by frame.
#pragma once

#include "FrameRing.h"
#include "Renderer.h"
#include "Slot.h"
#include "TripleBuffer.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace velto {

// How a switch gets from one slot to another.
enum class Switching : std::uint8_t {
  crossfade,     // both are heard meanwhile
  throughSilence // the one before falls silent, then the other rises: the course of the level is
                 // the same for any two slots
};

// The slots of one load, never written once the mixer may see them.
struct Playback {
  // How many voices can play at once.
  static constexpr std::size_t maxSlots = 3;

  std::array<Slot, maxSlots> slots;   // without buffers where nothing plays
  std::uint64_t startDelayFrames = 0; // from the hand-over to the first frame of all voices
  Switching switching = Switching::crossfade;
};

// What the mixer is to play.
struct Scene {
  const Playback* playback = nullptr; // null: silence
  std::uint32_t generation = 0;       // grows with each change of `playback`
  std::uint32_t ramp = 0;             // changes with each crossfade within a generation
  std::int64_t chosen = 0;            // the slot that is heard once the crossfade is over
  FrameRing* tap = nullptr;           // gets a copy of every frame, unless null
  std::uint32_t tapGeneration = 0;    // grows with each change of `tap`
};

// Plays all slots of a scene in sample-locked loops from one common frame, and moves the gain of
// each voice along a straight line to 1 (the chosen slot) or 0 (the others).
//
// - A crossfade takes 150 ms, in frames that were rendered. A new one starts from where
//   the gains are.
// - The crossfade of a new scene starts at the hand-over, its voices `startDelayFrames` later. A
//   gain moves only while its voice plays: it rises from 0, within the voice's first 12.5 ms, to
//   where the crossfade then stands.
// - Switching::throughSilence takes as long: 75 ms from the present gain down to 0, then 75 ms up
// to
//   1. Only one voice is heard at any frame. Choosing the slot that is chosen already changes
//   nothing.
// - A scene that ends is not cut off: what was heard runs to zero within 5 ms, under the next one.
// - Gains and sums are 64-bit floats, rounded once. Between two slots that are alike a crossfade
//   changes no bit.
class Mixer final : public Renderer {
public:
  static constexpr std::uint64_t stepFrames = 600; // 12.5 ms
  static constexpr std::uint64_t stepCount = 12;   // steps of a crossfade
  static constexpr std::uint64_t rampFrames = stepFrames * stepCount;
  static constexpr std::size_t tailFrames = 240; // 5 ms

  Mixer();

  // Hands `scene` over; it takes effect with the next block. Its playback stays valid until
  // `adoptedGeneration` has passed it, its tap until `adoptedTapGeneration` has. Main thread;
  // real-time safe.
  void publish(const Scene& scene) { scenes_.publish(scene); }

  // The generation that the mixer plays: it touches no playback of an older one again. Any thread.
  [[nodiscard]] std::uint32_t adoptedGeneration() const {
    return adoptedGeneration_.load(std::memory_order_acquire);
  }

  // The same for taps: it writes to no tap of an older generation again. Any thread.
  [[nodiscard]] std::uint32_t adoptedTapGeneration() const {
    return adoptedTapGeneration_.load(std::memory_order_acquire);
  }

  // The volume of a voice at the last step of its crossfade, in 0 to 1; 0 as long as another
  // generation than `generation` plays. Any thread.
  [[nodiscard]] float volume(std::size_t voice, std::uint32_t generation) const;

  // Frames rendered so far. Any thread.
  [[nodiscard]] std::uint64_t clock() const {
    return publishedClock_.load(std::memory_order_relaxed);
  }

  // Forgets what was playing, and the tap. Any thread, while nobody renders.
  void reset();

  // Audio thread: no lock, no allocation, no system call.
  void render(float* interleaved, std::size_t frames) noexcept override;

private:
  // The way from one gain to another: a straight line, or two of equal length that meet at 0.
  struct Line {
    double from = 0, to = 0;
    std::uint64_t begin = 0; // the frame at which the line leaves `from`
    Switching switching = Switching::crossfade;

    [[nodiscard]] double at(std::uint64_t frame) const;
    [[nodiscard]] float volumeAt(std::uint64_t frame) const;
  };

  struct Voice {
    const float* l = nullptr;
    const float* r = nullptr;
    std::size_t length = 0; // frames of the loop; 0: nothing plays
    Line line;              // the crossfade
    // Before the frame riseEnd the gain is not on that line yet, but on one that leads there.
    std::uint64_t riseBegin = 0, riseEnd = 0;
    double riseFrom = 0, riseTo = 0;
  };

  static constexpr std::size_t chunkFrames = 256;

  void adoptLatestScene();
  void adoptPlayback(const Playback* playback);
  void adoptChoice(std::int64_t previous);
  void beginRamp(Switching switching);
  void keepTail();
  void takeTail(std::size_t frames);
  void renderChunk(float* interleaved, std::size_t frames);
  void addVoice(const Voice& voice, double* mix, std::size_t frames) const;
  void publishState();
  [[nodiscard]] bool hasStarted() const { return clock_ > start_; }
  [[nodiscard]] static double gainAt(const Voice& voice, std::uint64_t frame);
  [[nodiscard]] bool rests(const Voice& voice) const;

  TripleBuffer<Scene> scenes_; // main thread writes, audio thread reads

  // Audio thread only.
  Scene scene_;
  std::array<Voice, Playback::maxSlots> voices_;
  std::uint64_t clock_ = 0; // the next frame to render
  std::uint64_t start_ = 0; // the first frame of all voices
  std::array<double, 2 * chunkFrames> mix_{};
  std::array<double, 2 * tailFrames> tail_{}; // what is left of ended scenes, interleaved
  std::size_t tailLeft_ = 0;                  // frames of it that were not played yet
  std::array<double, tailFrames> tailFade_{}; // never written after construction

  // Audio thread writes, any thread reads.
  std::atomic<std::uint32_t> adoptedGeneration_{0};
  std::atomic<std::uint32_t> adoptedTapGeneration_{0};
  std::atomic<std::uint64_t> publishedClock_{0};
  std::array<std::atomic<std::uint64_t>, Playback::maxSlots> publishedVolumes_{};
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
