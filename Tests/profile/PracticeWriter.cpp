// Practises on the record that the environment names, at a changing pace: from bursts of answers
// without a pause to an answer a second.
//
//   PracticeWriter LOG SEED SECONDS    0 seconds: until it is killed
#include "AnswerLog.h"
#include "kit/NumberedAnswers.h"

#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>

namespace {

using std::chrono::milliseconds;
using velto::testing::AnswerLog;

struct Pace {
  int answers; // at most, before the pace changes
  milliseconds shortest, longest;
};

void practise(AnswerLog& log, std::minstd_rand& random, AnswerLog::Clock::time_point end) {
  constexpr Pace paces[] = {{40, milliseconds(0), milliseconds(0)},
                            {30, milliseconds(1), milliseconds(30)},
                            {8, milliseconds(50), milliseconds(250)},
                            {2, milliseconds(600), milliseconds(1400)}};
  velto::Profile profile;
  std::int64_t number = velto::testing::answersIn(profile);
  log.start(number);
  while (AnswerLog::Clock::now() < end) {
    const Pace& pace = paces[std::uniform_int_distribution<std::size_t>(0, 3)(random)];
    std::uniform_int_distribution<milliseconds::rep> pause(pace.shortest.count(),
                                                           pace.longest.count());
    int left = std::uniform_int_distribution<int>(1, pace.answers)(random);
    for (; left > 0 && AnswerLog::Clock::now() < end; --left) {
      velto::testing::recordNumbered(profile, number++);
      log.acknowledge();
      std::this_thread::sleep_for(milliseconds(pause(random)));
    }
  }
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): it ends the writer, which the test reports
int main(int count, char** arguments) {
  if (count != 4) {
    std::fputs("PracticeWriter LOG SEED SECONDS\n", stderr);
    return EXIT_FAILURE;
  }
  AnswerLog log(arguments[1]);
  std::minstd_rand random(std::strtoul(arguments[2], nullptr, 10));
  const int seconds = std::atoi(arguments[3]);
  practise(log, random,
           seconds == 0 ? AnswerLog::Clock::time_point::max()
                        : AnswerLog::Clock::now() + std::chrono::seconds(seconds));
}
