#include "SelfTest.h"

#include "AudioEngine.h"
#include "Player.h"
#include "Report.h"
#include "kit/CapturedOutput.h"
#include "kit/FakeOutput.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace velto {
namespace {

struct Verdict {
  bool passed = false;
  std::vector<std::string> lines;
};

template <typename Run>
Verdict verdictOf(const Run& run) {
  kit::CapturedOutput output;
  const bool passed = run();
  return {passed, kit::linesOf(output.text())};
}

Verdict judged(const Samples& captured) {
  return verdictOf([&captured] { return SelfTest::judge(captured, Report::line); });
}

// A square wave has the same RMS and peak level.
Samples square(std::size_t frames, double levelDB) {
  Samples x(frames, static_cast<float>(std::pow(10, levelDB / 20)));
  for (std::size_t i = 0; i < frames; i += 2)
    x[i] = -x[i];
  return x;
}

const std::string pass = "PASS  signal reaches the output bus at the expected level";
const std::string levelOff = "FAIL  level off - signal is not what was scheduled";
const std::string nothing = "FAIL  nothing came off the mixer";

TEST(SelfTestVerdict, PassesBetweenMinus32AndMinus12) {
  for (const double level : {-31.99, -20.0, -12.01}) {
    const Verdict verdict = judged(square(30'000, level));
    EXPECT_TRUE(verdict.passed);
    ASSERT_EQ(verdict.lines.size(), 2U);
    EXPECT_EQ(verdict.lines[1], pass);
  }
  EXPECT_EQ(judged(square(30'000, -20)).lines[0], "level     : -20.00 dB RMS, -20.00 dB peak");
}

TEST(SelfTestVerdict, FailsOutsideMinus32ToMinus12) {
  for (const double level : {-300.0, -32.01, -11.99, 0.0}) {
    const Verdict verdict = judged(square(30'000, level));
    EXPECT_FALSE(verdict.passed);
    ASSERT_EQ(verdict.lines.size(), 2U);
    EXPECT_EQ(verdict.lines[1], levelOff);
  }
}

TEST(SelfTestVerdict, FailsOnAClippedSampleOrNaN) {
  Samples x = square(30'000, -20);
  x[100] = 1;
  EXPECT_EQ(judged(x).lines[1], levelOff);
  x[100] = std::nextafter(1.0F, 0.0F);
  EXPECT_EQ(judged(x).lines[1], pass);
  x[100] = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FALSE(judged(x).passed);
}

TEST(SelfTestVerdict, NeedsMoreThan20000Frames) {
  EXPECT_EQ(judged(square(20'001, -20)).lines.back(), pass);
  const Verdict verdict = judged(square(20'000, -20));
  EXPECT_FALSE(verdict.passed);
  EXPECT_EQ(verdict.lines, std::vector<std::string>{nothing});
  EXPECT_EQ(judged({}).lines, std::vector<std::string>{nothing});
}

// Renders a given number of blocks on its own thread, in real time.
class PacedDevice final : public OutputDevice {
public:
  explicit PacedDevice(int blocks) : blocks_(blocks) {}
  ~PacedDevice() override { stop(); }

  std::optional<std::string> start(Renderer& renderer) override {
    thread_ = std::thread([this, &renderer] {
      std::vector<float> block(2 * 480);
      auto due = std::chrono::steady_clock::now();
      for (int i = 0; i < blocks_ && !stopping_; ++i) {
        renderer.render(block.data(), 480);
        due += std::chrono::milliseconds(10);
        std::this_thread::sleep_until(due);
      }
    });
    return std::nullopt;
  }
  void stop() override {
    stopping_ = true;
    if (thread_.joinable())
      thread_.join();
  }
  [[nodiscard]] bool failed() const override { return false; }
  [[nodiscard]] std::size_t latencyFrames() const override { return 1920; }

private:
  const int blocks_;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

TEST(SelfTest, PassesOnAnOutputThatPlays) {
  const Verdict verdict = verdictOf([] {
    return Player::selfTest(
        std::make_unique<Engine>([] { return std::make_unique<PacedDevice>(1000); }), Report::line);
  });
  EXPECT_TRUE(verdict.passed);
  ASSERT_EQ(verdict.lines.size(), 4U);
  EXPECT_EQ(verdict.lines[0], "output bus: 48000 Hz, 2 ch");
  const std::regex captured("captured  : ([0-9]+) frames");
  std::smatch match;
  ASSERT_TRUE(std::regex_match(verdict.lines[1], match, captured)) << verdict.lines[1];
  EXPECT_EQ(std::stoi(match[1]) % 4096, 0);
  EXPECT_TRUE(std::regex_match(
      verdict.lines[2],
      std::regex("level     : -[0-9]{2}\\.[0-9]{2} dB RMS, -[0-9]+\\.[0-9]{2} dB peak")))
      << verdict.lines[2];
  EXPECT_EQ(verdict.lines[3], pass);
}

TEST(SelfTest, FailsIfTheOutputStops) {
  const Verdict verdict = verdictOf([] {
    return Player::selfTest(
        std::make_unique<Engine>([] { return std::make_unique<PacedDevice>(35); }), Report::line);
  });
  EXPECT_FALSE(verdict.passed);
  ASSERT_EQ(verdict.lines.size(), 3U);
  EXPECT_TRUE(verdict.lines[1].starts_with("captured  : ")) << verdict.lines[1];
  EXPECT_EQ(verdict.lines[2], nothing);
}

TEST(SelfTest, PrintsOneLineIfTheEngineDoesNotStart) {
  kit::FakeOutput output;
  output.refuse("no sound here");
  const Verdict verdict = verdictOf([&output] {
    return Player::selfTest(std::make_unique<Engine>(output.factory()), Report::line);
  });
  EXPECT_FALSE(verdict.passed);
  EXPECT_EQ(verdict.lines, std::vector<std::string>{"FAIL  engine did not start"});
}

} // namespace
} // namespace velto
