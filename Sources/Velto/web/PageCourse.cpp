#include "PageCourse.h"

#include "Grading.h"

#include <utility>

namespace velto {

std::optional<Trial> PageCourse::next(Drill drill, Material material, std::uint64_t seed) {
  if (kept_)
    return std::nullopt;
  trial_ = PracticeCourse::next(drill, material, seed);
  return trial_;
}

bool PageCourse::keep(const Given& given, Kept kept) {
  shown_ = profile().stats();
  PracticeCourse::record(*trial_, given, Drills::grade(given.answer, *trial_));
  kept_ = std::move(kept);
  return false;
}

void PageCourse::record(const Trial&, const Given&, const Drills::Grade&) {
  shown_.reset();
}

void PageCourse::saveEnded() {
  if (const auto kept = std::exchange(kept_, {}))
    kept(std::nullopt);
}

} // namespace velto
