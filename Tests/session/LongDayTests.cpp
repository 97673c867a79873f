// A day of practice in one process: twenty thousand trials, each rendered, loaded, heard, switched
// and answered. They may leave nothing behind but the record.
#include "Session.h"

#include "Bands.h"
#include "Numbers.h"
#include "kit/Answers.h"
#include "kit/FakeOutput.h"
#include "kit/Files.h"
#include "kit/Footprint.h"
#include "kit/ScratchProfile.h"
#include "kit/TestPlayer.h"
#include "kit/WorkerQueues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace velto {
namespace {

constexpr double allowedGrowthMegabytes = 2;

std::size_t trialCount() {
  const char* text = std::getenv("VELTO_DAY_TRIALS");
  const auto count = text != nullptr ? std::optional(std::atoll(text)) : std::nullopt;
  return static_cast<std::size_t>(count.value_or(20000));
}

class LongDay : public ::testing::Test {
protected:
  // Practises one trial, until its answer is on file.
  void practise(std::size_t number) {
    const Drill drill = Drill::allCases[number % 4];
    if (number % 16 < 4)
      session_.setDrill(drill);
    else if (number % 16 == 5)
      session_.setMaterial(Material::allCases[number / 16 % 3]);
    else
      session_.newTrial();
    work_.runUntil([this] { return !session_.rendering(); });
    listen(0);
    for (std::int64_t slot = 1; slot < session_.trial()->slots; ++slot) {
      session_.cycleSlot();
      ASSERT_EQ(session_.player().current(), slot);
      listen(static_cast<std::size_t>(slot));
    }
    if (number % 50 == 49) {
      session_.suspend();
      session_.resume();
      ASSERT_TRUE(session_.player().isPlaying());
    }
    const bool hit = number % 3 != 0;
    session_.setAnswer(hit ? kit::truthOf(*session_.trial()) : kit::missOf(*session_.trial()));
    session_.submit();
    ASSERT_TRUE(session_.grade());
    ASSERT_EQ(session_.grade()->correct, hit);
    count(*session_.trial(), hit);
    ASSERT_NE(file().find(session_.profile().attempts().back().id.string()), std::string::npos)
        << "the answer is not on file";
  }

  // Plays until the crossfade is over and the slot is heard alone.
  void listen(std::size_t slot) {
    const kit::Recording sound = output_.pull(14000, 480);
    ASSERT_EQ(sound.frames(), 14000U);
    ASSERT_EQ(session_.player().nodes()[slot].volume(), 1.0F);
    ASSERT_TRUE(std::ranges::any_of(sound.l, [](float sample) { return sample != 0; }));
  }

  std::string file() const { return kit::contentOf(scratch_.file()); }

  void count(const Trial& trial, bool hit) {
    ++answers_;
    if (trial.drill != Drill::frequency)
      return;
    const std::size_t band = Bands::nearestIndex(trial.targetFreq);
    ++bandAnswers_[band];
    bandHits_[band] += hit ? 1 : 0;
  }

  // Reads the file as the next launch does.
  void expectAllOnFile() {
    const Profile onFile;
    EXPECT_EQ(onFile.attempts(), session_.profile().attempts());
    EXPECT_EQ(onFile.attempts().size(), std::min(answers_, Profile::detailRows));
    EXPECT_EQ(onFile.lifetime(), session_.profile().lifetime());
    for (std::size_t band = 0; band < bandAnswers_.size(); ++band) {
      BandRoll all;
      if (const auto rolled = onFile.lifetime().find(static_cast<std::int64_t>(band));
          rolled != onFile.lifetime().end())
        all = rolled->second;
      for (const Attempt& attempt : onFile.attempts())
        if (attempt.mappedBand() == static_cast<std::int64_t>(band))
          all.add(attempt);
      EXPECT_EQ(all.attempts, bandAnswers_[band]) << band;
      EXPECT_EQ(all.hits, bandHits_[band]) << band;
    }
  }

  kit::ScratchProfile scratch_;
  kit::WorkerQueues work_;
  kit::FakeOutput output_;
  Session session_{Drill::frequency, work_.queues(), kit::makePlayer(output_.factory()),
                   1'700'000'000};
  std::size_t answers_ = 0;
  std::array<std::int64_t, 27> bandAnswers_{}, bandHits_{};
};

TEST_F(LongDay, LeavesNothingBehindButTheRecord) {
  const std::size_t trials = trialCount();
  // Beyond 5000 rows the oldest are rolled up, so memory and file no longer grow.
  const std::size_t warm = std::min<std::size_t>(6000, trials / 2);
  kit::Footprint first;
  double lowest = 1e9, highest = 0;
  const auto begin = std::chrono::steady_clock::now();
  for (std::size_t number = 0; number < trials; ++number) {
    ASSERT_NO_FATAL_FAILURE(practise(number)) << "trial " << number;
    if (number + 1 == warm)
      first = kit::Footprint::ofThisProcess();
    if (number + 1 >= warm && number % 10 == 9) {
      const double now = kit::Footprint::ofThisProcess().residentMegabytes;
      lowest = std::min(lowest, now);
      highest = std::max(highest, now);
    }
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  const kit::Footprint last = kit::Footprint::ofThisProcess();
  std::cout << "  " << trials << " trials in " << Numbers::fixed(seconds, 0) << " s; memory after "
            << warm << " trials " << Numbers::fixed(first.residentMegabytes, 2) << " MB, then "
            << Numbers::fixed(lowest, 2) << " to " << Numbers::fixed(highest, 2)
            << " MB, at the end " << Numbers::fixed(last.residentMegabytes, 2) << " MB; handles "
            << first.handles << ", then " << last.handles << "; threads " << first.threads
            << ", then " << last.threads << '\n';
  EXPECT_LE(highest - lowest, allowedGrowthMegabytes);
  EXPECT_EQ(last.handles, first.handles);
  EXPECT_EQ(last.threads, first.threads);
  EXPECT_FALSE(output_.overran());
  expectAllOnFile();
}

} // namespace
} // namespace velto
