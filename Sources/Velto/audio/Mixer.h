// Mixes looping slots and the transitions between them, frame by frame.
#pragma once

#include "Renderer.h"
#include "Scene.h"
#include "TripleBuffer.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace velto {

// Plays all slots of a scene as sample-locked loops that start at the same frame. Each slot has its
// own gain: 1 for the chosen slot, 0 for the others, in between during a switch.
//
// - A switch takes 150 ms of rendered audio and starts from the current gains. A crossfade is
//   linear. A switch through silence takes all gains to 0 in 75 ms, then the chosen slot's to 1, so
//   that only one slot is audible at a time; choosing the same slot again is then a no-op.
// - A load fades in: its crossfade starts when the scene is adopted. Its slots start
//   `startDelayFrames` later, and each gain rises from 0 to the crossfade's value within 12.5 ms.
// - A replaced load fades out within 5 ms, mixed with the new one.
// - Gains and sums are 64-bit floats, rounded once. A crossfade between identical slots leaves
//   every bit unchanged.
class Mixer final : public Renderer {
public:
  static constexpr std::uint64_t stepFrames = 600; // 12.5 ms
  static constexpr std::uint64_t stepCount = 12;   // steps of a switch
  static constexpr std::uint64_t rampFrames = stepFrames * stepCount;
  static constexpr std::size_t tailFrames = 240; // 5 ms

  Mixer();

  // Publishes `scene`. The audio thread adopts it at the start of its next block, unless a newer
  // one has been published by then. Frees scenes that are no longer in use. Main thread only.
  void publish(Scene scene);

  // Frees all scenes but the latest. Call only while no other thread renders or publishes; the
  // scene that is rendered next must belong to a new stream.
  void releaseAllButLatest();

  // The volume of a slot, 0 to 1, at the latest of the 12 steps of its switch; 0 unless `load` is
  // playing. Any thread.
  [[nodiscard]] float volume(std::size_t slot, std::uint32_t load) const;

  // Frames rendered so far. Any thread.
  [[nodiscard]] std::uint64_t clock() const {
    return publishedClock_.load(std::memory_order_relaxed);
  }

  // Audio thread only. Real-time safe: no lock, no allocation, no system call.
  void render(float* interleaved, std::size_t frames) noexcept override;

private:
  // A transition between two gains: one straight line, or two of equal length that meet at 0.
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
    Line line;              // the course of the gain

    // Until frame riseEnd, the gain follows a separate ramp that meets `line` there.
    std::uint64_t riseBegin = 0, riseEnd = 0;
    double riseFrom = 0, riseTo = 0;
  };

  static constexpr std::size_t chunkFrames = 256;

  void adoptLatestScene();
  void forget();
  void adoptSlots();
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

  // A published scene with its number, counted from 1.
  struct Published {
    Published(Scene theScene, std::uint64_t theNumber)
        : scene(std::move(theScene)), number(theNumber) {}

    Scene scene;
    std::uint64_t number;
  };

  TripleBuffer<const Published*> latest_; // publisher writes, audio thread reads

  // Main thread only, or while nobody publishes.
  std::vector<std::unique_ptr<const Published>> kept_; // those that may still play, oldest first
  std::uint64_t published_ = 0;                        // the number of the latest scene

  // Audio thread only.
  const Scene silence_;
  const Scene* scene_ = &silence_;
  std::array<Voice, Scene::maxSlots> voices_;
  std::uint64_t clock_ = 0; // the next frame to render
  std::uint64_t start_ = 0; // the first frame of all voices
  std::array<double, 2 * chunkFrames> mix_{};
  std::array<double, 2 * tailFrames> tail_{}; // the fading rest of replaced loads, interleaved
  std::size_t tailLeft_ = 0;                  // frames of it still to be played
  std::array<double, tailFrames> tailFade_{}; // never written after construction

  // Audio thread writes, any thread reads.
  std::atomic<std::uint64_t> adopted_{0}; // number of `scene_`; older scenes are no longer read
  std::atomic<std::uint64_t> publishedClock_{0};
  std::array<std::atomic<std::uint64_t>, Scene::maxSlots> publishedVolumes_{};
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
