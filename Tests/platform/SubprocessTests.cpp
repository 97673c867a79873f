#include "Subprocess.h"

#include "kit/Eventually.h"
#include "kit/Files.h"
#include "kit/Forked.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>

namespace {

using namespace velto;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::optional<int> shell(const std::string& script, std::chrono::milliseconds patience = 20s) {
  return Subprocess::run({"/bin/sh", "-c", script}, patience);
}

} // namespace

TEST(Subprocess, ReturnsTheExitStatus) {
  EXPECT_EQ(shell("exit 0"), 0);
  EXPECT_EQ(shell("exit 7"), 7);
  EXPECT_EQ(shell("test -z \"$(cat)\" && echo out && echo error >&2"), 0);
}

TEST(Subprocess, HasNoStatusIfASignalEndedItOrItDoesNotExist) {
  EXPECT_EQ(shell("kill -9 $$"), std::nullopt);
  const auto status = Subprocess::run({"/there/is/no/such/program"}, 20s);
  EXPECT_TRUE(!status || *status == 127);
}

TEST(Subprocess, IsKilledWhenItTakesTooLong) {
  const kit::ScratchFolder folder;
  const auto begin = Clock::now();
  const std::string mark = (folder.path() / "mark").string();
  EXPECT_EQ(shell("trap '' TERM; echo $$ >" + mark + "; while :; do sleep 0.1; done", 500ms),
            std::nullopt);
  EXPECT_LT(Clock::now() - begin, 10s);
  const auto pid = static_cast<pid_t>(std::stol(kit::contentOf(mark)));
  EXPECT_NE(::kill(pid, 0), 0);
}

TEST(Subprocess, EndAfterEndsThisProcess) {
  kit::Forked forked([] {
    Subprocess::endAfter(1s);
    while (true)
      ::pause();
  });
  EXPECT_EQ(forked.ended(), 128 + SIGALRM);
}

TEST(Subprocess, KnowsThePathOfThisProgram) {
  EXPECT_TRUE(std::filesystem::exists(Subprocess::ownPath()));
}
