#include "FrameRing.h"

#include <gtest/gtest.h>

#include <numeric>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <thread>
#include <vector>

namespace velto {
namespace {

// Frame n of the stream is (n, -n); small integers are exact in floats.
std::vector<float> block(std::size_t first, std::size_t frames) {
  std::vector<float> samples;
  for (std::size_t n = first; n < first + frames; ++n) {
    samples.push_back(static_cast<float>(n));
    samples.push_back(-static_cast<float>(n));
  }
  return samples;
}

void expectFrames(const std::vector<float>& left, const std::vector<float>& right,
                  std::size_t first) {
  for (std::size_t i = 0; i < left.size(); ++i) {
    ASSERT_EQ(left[i], static_cast<float>(first + i));
    ASSERT_EQ(right[i], -static_cast<float>(first + i));
  }
}

TEST(FrameRing, AnEmptyRingHasNothingToRead) {
  FrameRing ring(10);
  float left = 7, right = 8;
  EXPECT_FALSE(ring.read(&left, &right, 1));
  EXPECT_EQ(left, 7);
  EXPECT_EQ(right, 8);
}

TEST(FrameRing, HoldsExactlyItsCapacity) {
  FrameRing ring(10);
  ring.write(block(0, 10).data(), 10);
  EXPECT_EQ(ring.droppedFrames(), 0U);
  ring.write(block(10, 1).data(), 1);
  EXPECT_EQ(ring.droppedFrames(), 1U);
  std::vector<float> left(10), right(10);
  ASSERT_TRUE(ring.read(left.data(), right.data(), 10));
  expectFrames(left, right, 0);
}

TEST(FrameRing, DropsABlockThatDoesNotFitButAcceptsTheNext) {
  FrameRing ring(10);
  ring.write(block(0, 6).data(), 6);
  ring.write(block(6, 5).data(), 5);
  ring.write(block(11, 4).data(), 4);
  EXPECT_EQ(ring.droppedFrames(), 5U);
  std::vector<float> left(6), right(6);
  ASSERT_TRUE(ring.read(left.data(), right.data(), 6));
  expectFrames(left, right, 0);
  left.resize(4);
  right.resize(4);
  ASSERT_TRUE(ring.read(left.data(), right.data(), 4));
  expectFrames(left, right, 11);
}

// For any block lengths: each frame is read once and in order, unless its whole block was dropped.
RC_GTEST_PROP(FrameRing, IsAQueueOfFrames, ()) {
  const auto capacity = *rc::gen::inRange<std::size_t>(1, 40);
  FrameRing ring(capacity);
  std::vector<std::size_t> queue;
  std::size_t next = 0, dropped = 0;
  for (int i = *rc::gen::inRange(0, 60); i > 0; --i) {
    const auto frames = *rc::gen::inRange<std::size_t>(0, 30);
    if (*rc::gen::arbitrary<bool>()) {
      ring.write(block(next, frames).data(), frames);
      if (queue.size() + frames <= capacity) {
        queue.resize(queue.size() + frames);
        std::iota(queue.end() - static_cast<std::ptrdiff_t>(frames), queue.end(), next);
      } else {
        dropped += frames;
      }
      next += frames;
    } else {
      std::vector<float> left(frames), right(frames);
      const bool wasRead = ring.read(left.data(), right.data(), frames);
      RC_ASSERT(wasRead == (frames <= queue.size()));
      for (std::size_t k = 0; wasRead && k < frames; ++k) {
        RC_ASSERT(left[k] == static_cast<float>(queue[k]));
        RC_ASSERT(right[k] == -static_cast<float>(queue[k]));
      }
      if (wasRead)
        queue.erase(queue.begin(), queue.begin() + static_cast<std::ptrdiff_t>(frames));
    }
    RC_ASSERT(ring.droppedFrames() == dropped);
  }
}

TEST(FrameRing, DeliversEveryAcceptedFrameInOrderAcrossThreads) {
  constexpr std::size_t total = 200'000, writeFrames = 48, readFrames = 100;
  FrameRing ring(1000);
  std::thread writer([&ring] {
    for (std::size_t next = 0; next < total;) {
      const auto dropped = ring.droppedFrames();
      ring.write(block(next, writeFrames).data(), writeFrames);
      if (ring.droppedFrames() == dropped)
        next += writeFrames;
      else
        std::this_thread::yield();
    }
  });
  std::vector<float> left(readFrames), right(readFrames);
  bool inOrder = true;
  for (std::size_t next = 0; next + readFrames <= total;) {
    if (!ring.read(left.data(), right.data(), readFrames)) {
      std::this_thread::yield();
      continue;
    }
    for (std::size_t i = 0; i < readFrames; ++i)
      inOrder = inOrder && left[i] == static_cast<float>(next + i) && right[i] == -left[i];
    next += readFrames;
  }
  writer.join();
  EXPECT_TRUE(inOrder);
}

} // namespace
} // namespace velto
