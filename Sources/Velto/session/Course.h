// What a session plays: where its trials come from, and where the answers go.
#pragma once

#include "Drill.h"
#include "Grading.h"
#include "Profile.h"
#include "Trial.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace velto {

// Main thread only.
class Course {
public:
  // What the listener did in a trial.
  struct Given {
    double answer = 0; // in the unit of Drills::grade
    double seconds = 0;
    std::int64_t switches = 0;
  };
  // Where a trial stands in a course that ends.
  struct Place {
    std::size_t number = 0; // from 1
    std::size_t count = 0;
  };
  // The error with which an answer could not be kept, or nullopt.
  using Kept = std::function<void(std::optional<std::string> error)>;

  Course(const Course&) = delete;
  Course& operator=(const Course&) = delete;
  virtual ~Course() = default;

  // True if the listener chooses drill and material, and may leave a trial without an answer.
  [[nodiscard]] virtual bool isFree() const = 0;

  // The next trial; nullopt after the last, and while a trial must be answered first. A free course
  // makes it of these three.
  [[nodiscard]] virtual std::optional<Trial> next(Drill drill, Material material,
                                                  std::uint64_t seed) = 0;

  // The place of the latest trial; nullopt if the course does not end.
  [[nodiscard]] virtual std::optional<Place> place() const = 0;

  // Keeps an answer to the latest trial before the listener learns the verdict. Returns true if
  // nothing needs to be waited for; else `kept` is called later, and no other answer is given until
  // then. Does not wait.
  [[nodiscard]] virtual bool keep(const Given& given, Kept kept) = 0;

  // The answers that the window shows figures of.
  [[nodiscard]] virtual const Profile& profile() const = 0;
  // Adds an answer to them, with its verdict.
  virtual void record(const Trial& trial, const Given& given, const Drills::Grade& grade) = 0;

protected:
  Course() = default;
};

} // namespace velto
