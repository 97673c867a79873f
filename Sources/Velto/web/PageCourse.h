// Practice whose verdicts show once the answer is on the disk.
#pragma once

#include "PracticeCourse.h"
#include "Statistics.h"

#include <optional>

namespace velto {

// While an answer is being kept, the trial can neither be left nor answered again. Where an answer
// cannot be kept, practice goes on: it is saved with the next one.
//
// The page's thread only.
class PageCourse final : public PracticeCourse {
public:
  using PracticeCourse::PracticeCourse;

  [[nodiscard]] bool isFree() const override { return !kept_; }
  [[nodiscard]] std::optional<Trial> next(Drill drill, Material material,
                                          std::uint64_t seed) override;
  // Records the answer, which saves it; stats() has it after record(). `kept` is called by
  // saveEnded().
  [[nodiscard]] bool keep(const Given& given, Kept kept) override;
  void record(const Trial& trial, const Given& given, const Drills::Grade& grade) override;

  // The figures of the answers whose verdicts have shown.
  [[nodiscard]] const Stats& stats() const { return shown_ ? *shown_ : profile().stats(); }
  // The latest save has succeeded or failed.
  void saveEnded();

private:
  std::optional<Trial> trial_;
  Kept kept_;                  // empty unless an answer is being kept
  std::optional<Stats> shown_; // without the answer that is being kept
};

} // namespace velto
