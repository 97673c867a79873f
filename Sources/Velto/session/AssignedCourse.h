// A list of trials, each answered once.
#pragma once

#include "Assignment.h"
#include "BackgroundWriter.h"
#include "Course.h"
#include "Profile.h"
#include "WorkQueues.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace velto {

// Goes on after the answers that the assignment's file has. A thread forces each further answer to
// the disk; the practice record is neither read nor written.
class AssignedCourse : public Course {
public:
  // How long the destructor waits for the disk.
  static constexpr std::chrono::milliseconds endPatience{2000};

  // `queues` bring the outcomes to the main thread.
  AssignedCourse(Assignment assignment, const WorkQueues& queues);
  // Waits until an answer is on the disk.
  ~AssignedCourse() override;

  [[nodiscard]] bool isFree() const override { return false; }
  [[nodiscard]] std::optional<Trial> next(Drill drill, Material material,
                                          std::uint64_t seed) override;
  [[nodiscard]] std::optional<Place> place() const override;
  [[nodiscard]] bool keep(const Given& given, Kept kept) override;
  // Of the list's answers only.
  [[nodiscard]] const Profile& profile() const override { return profile_; }
  void record(const Trial& trial, const Given& given, const Drills::Grade& grade) override;

private:
  Sitting sitting_;
  std::size_t begun_; // trials that next() has returned, with those answered earlier
  Profile profile_;
  std::shared_ptr<GrowingFile> file_;     // writer only
  bool isEmpty_;                          // the file has no line yet
  std::shared_ptr<AssignedCourse*> self_; // lets pending work detect that the course is gone
  BackgroundWriter writer_;
};

} // namespace velto
