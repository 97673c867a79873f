// Computes what is heard, frame by frame: looping slots, and the switches between them.
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

// Plays all slots of a scene in sample-locked loops from one common frame, each at a gain of its
// own: 1 for the chosen slot, 0 for the others, and in between while a switch is under way.
//
// - A switch takes 150 ms of rendered frames and starts from the present gains. A crossfade moves
//   each gain along a straight line. A switch through silence moves them to 0 in 75 ms, then the
//   chosen one to 1: only one slot is heard at any frame. There, choosing the chosen slot again is
//   a no-op.
// - A load fades in: its crossfade starts when the scene is adopted, its slots `startDelayFrames`
//   later. A gain moves only while its slot plays: from 0, within 12.5 ms, to where the crossfade
//   then stands.
// - A load that is replaced fades out within 5 ms, under the next one.
// - Gains and sums are 64-bit floats, rounded once. A crossfade between identical slots changes no
//   bit.
class Mixer final : public Renderer {
public:
  static constexpr std::uint64_t stepFrames = 600; // 12.5 ms
  static constexpr std::uint64_t stepCount = 12;   // steps of a crossfade
  static constexpr std::uint64_t rampFrames = stepFrames * stepCount;
  static constexpr std::size_t tailFrames = 240; // 5 ms

  Mixer();

  // Hands `scene` over. It is adopted at the beginning of the next block, unless a newer one has
  // been published by then. Frees scenes that are no longer played. Main thread.
  void publish(Scene scene);

  // Frees all scenes but the latest. Only while nobody renders or publishes; the next scene must
  // belong to another stream.
  void releaseAllButLatest();

  // The volume of a slot at the latest step of its switch, 0 to 1; 0 while another load than `load`
  // plays. Any thread.
  [[nodiscard]] float volume(std::size_t slot, std::uint32_t load) const;

  // Frames rendered so far. Any thread.
  [[nodiscard]] std::uint64_t clock() const {
    return publishedClock_.load(std::memory_order_relaxed);
  }

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
               // Until the frame riseEnd the gain is on another line, which leads there.
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

  // A published scene; numbers grow by one with each.
  struct Published {
    Published(Scene theScene, std::uint64_t theNumber)
        : scene(std::move(theScene)), number(theNumber) {}

    Scene scene;
    std::uint64_t number;
  };

  TripleBuffer<const Published*> latest_; // publisher writes, audio thread reads

  // Main thread only, or while nobody publishes.
  std::vector<std::unique_ptr<const Published>> kept_; // all that may still be played, oldest first
  std::uint64_t published_ = 0;                        // the number of the latest scene

  // Audio thread only.
  const Scene silence_;
  const Scene* scene_ = &silence_;
  std::array<Voice, Scene::maxSlots> voices_;
  std::uint64_t clock_ = 0; // the next frame to render
  std::uint64_t start_ = 0; // the first frame of all voices
  std::array<double, 2 * chunkFrames> mix_{};
  std::array<double, 2 * tailFrames> tail_{}; // what is left of ended scenes, interleaved
  std::size_t tailLeft_ = 0;                  // frames of it that were not played yet
  std::array<double, tailFrames> tailFade_{}; // never written after construction

  // Audio thread writes, any thread reads.
  std::atomic<std::uint64_t> adopted_{0}; // the number of `scene_`: no older scene is read again
  std::atomic<std::uint64_t> publishedClock_{0};
  std::array<std::atomic<std::uint64_t>, Scene::maxSlots> publishedVolumes_{};
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
