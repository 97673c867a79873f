// Practice: any drill, as long as one likes.
#pragma once

#include "Course.h"

namespace velto {

// Trials have the difficulty of the practice record, which gets the answers.
class PracticeCourse : public Course {
public:
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
