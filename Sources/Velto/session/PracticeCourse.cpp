#include "PracticeCourse.h"

namespace velto {

std::optional<Trial> PracticeCourse::next(Drill drill, Material material, std::uint64_t seed) {
  return Drills::makeTrial(profile_.staircase(drill).difficulty, material, seed, drill);
}

void PracticeCourse::record(const Trial& trial, const Given&, const Drills::Grade& grade) {
  profile_.record(trial, grade);
}

} // namespace velto
