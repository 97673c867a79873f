// Practice: any drill, as long as one likes.
#pragma once

#include "Course.h"
#include "RecordStore.h"

#include <memory>
#include <utility>

namespace velto {

// Trials have the difficulty of the practice record, which gets the answers.
class PracticeCourse : public Course {
public:
  // The user's practice record; see Profile.
  PracticeCourse() = default;
  // The record in `store`.
  explicit PracticeCourse(std::unique_ptr<RecordStore> store) : profile_(std::move(store)) {}

  [[nodiscard]] bool isFree() const override { return true; }
  [[nodiscard]] std::optional<Trial> next(Drill drill, Material material,
                                          std::uint64_t seed) override;
  [[nodiscard]] std::optional<Place> place() const override { return std::nullopt; }
  [[nodiscard]] bool keep(const Given&, Kept) override { return true; }
  [[nodiscard]] const Profile& profile() const override { return profile_; }
  void record(const Trial& trial, const Given& given, const Drills::Grade& grade) override;

private:
  Profile profile_;
};

} // namespace velto
