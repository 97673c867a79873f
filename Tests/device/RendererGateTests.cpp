#include "RendererGate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace velto {
namespace {

// Renders ones.
class Ones final : public Renderer {
public:
  void render(float* interleaved, std::size_t frames) noexcept override {
    std::fill_n(interleaved, 2 * frames, 1.0F);
    ++calls;
  }
  int calls = 0;
};

std::vector<float> blockOf(RendererGate& gate, std::size_t frames) {
  std::vector<float> block(2 * frames, 7.0F);
  gate.render(block.data(), frames);
  return block;
}

TEST(RendererGate, PassesBlocksUntilItIsClosed) {
  Ones ones;
  RendererGate gate(ones);
  EXPECT_EQ(blockOf(gate, 100), std::vector<float>(200, 1.0F));
  gate.close();
  EXPECT_EQ(blockOf(gate, 100), std::vector<float>(200, 0.0F));
  EXPECT_EQ(ones.calls, 1);
}

TEST(RendererGate, FadesWithinFiveMillisecondsAcrossBlocks) {
  Ones ones;
  RendererGate gate(ones);
  EXPECT_EQ(blockOf(gate, 10), std::vector<float>(20, 1.0F));
  gate.fadeOut();
  std::vector<float> faded;
  for (int block = 0; block < 10; ++block) {
    const auto part = blockOf(gate, 48);
    faded.insert(faded.end(), part.begin(), part.end());
  }
  EXPECT_EQ(faded[0], 1.0F); // continues at full level
  for (std::size_t i = 2; i < faded.size(); ++i) {
    EXPECT_LE(faded[i], faded[i - 2]);
    EXPECT_LE(faded[i - 2] - faded[i], 1.01F / RendererGate::fadeFrames);
  }
  EXPECT_TRUE(std::all_of(faded.begin() + 2 * RendererGate::fadeFrames, faded.end(),
                          [](float sample) { return sample == 0; }));
}

// A renderer that must not run once the gate is closed. Unsynchronised on purpose: the thread
// sanitizer sees whether close() orders it.
class Doomed final : public Renderer {
public:
  void render(float* interleaved, std::size_t frames) noexcept override {
    std::fill_n(interleaved, 2 * frames, value);
  }
  float value = 1;
};

TEST(RendererGate, KeepsTheRendererFromRunningOnceCloseReturns) {
  for (int round = 0; round < 200; ++round) {
    Doomed doomed;
    RendererGate gate(doomed);
    std::atomic<bool> ends{false}, wild{false};
    std::atomic<int> blocks{0};
    std::thread audio([&] {
      std::vector<float> block(2 * 16);
      while (!ends.load(std::memory_order_relaxed)) {
        gate.render(block.data(), 16);
        wild.store(wild.load() || block[0] == 2.0F);
        blocks.fetch_add(1, std::memory_order_relaxed);
      }
    });
    while (blocks.load(std::memory_order_relaxed) < 3)
      std::this_thread::yield();
    gate.close();
    doomed.value = 2;
    const int closed = blocks.load();
    while (blocks.load(std::memory_order_relaxed) < closed + 3)
      std::this_thread::yield();
    ends.store(true);
    audio.join();
    ASSERT_FALSE(wild.load());
  }
}

} // namespace
} // namespace velto
