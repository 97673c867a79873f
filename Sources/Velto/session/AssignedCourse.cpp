#include "AssignedCourse.h"

#include "Date.h"
#include "Results.h"

#include <utility>
#include <vector>

namespace velto {

namespace {

const std::string noAnswer = "it is no answer to this trial";

} // namespace

AssignedCourse::AssignedCourse(Assignment assignment, const WorkQueues& queues)
    : sitting_(assignment.reading.sitting), begun_(sitting_.answered()),
      profile_(Profile::Unsaved{}), file_(std::move(assignment.file)),
      isEmpty_(assignment.reading.held == 0), self_(std::make_shared<AssignedCourse*>(this)),
      writer_(BackgroundWriter::detourAfter, [main = queues.main, self = std::weak_ptr(self_)] {
        main([self] {
          if (const auto course = self.lock())
            (*course)->writer_.collect();
        });
      }) {
  // The file tells of the last answer only when it was given.
  const Date date{static_cast<double>(assignment.lastChanged) / 1e9 - Date::referenceSince1970};
  std::vector<Attempt> attempts;
  for (const Results::Row& row : assignment.reading.rows)
    attempts.push_back(Profile::answered(row.trial, row.grade, date));
  profile_.replace(std::move(attempts), {});
  profile_.recompute();
}

AssignedCourse::~AssignedCourse() {
  static_cast<void>(writer_.wait(endPatience));
}

std::optional<Trial> AssignedCourse::next(Drill, Material, std::uint64_t) {
  if (begun_ > sitting_.answered())
    return std::nullopt;
  const auto trial = sitting_.next();
  if (trial)
    ++begun_;
  return trial;
}

std::optional<Course::Place> AssignedCourse::place() const {
  return Place{.number = begun_, .count = sitting_.list().trials.size()};
}

bool AssignedCourse::keep(const Given& given, Kept kept) {
  const Trial trial = *sitting_.next();
  std::string lines(isEmpty_ ? Results::header() : "");
  const bool isPossible = Sitting::isPossible(given.answer, trial);
  if (isPossible)
    lines += Results::line(
        sitting_.list().id(), begun_,
        {.trial = trial,
         .given = {.answer = given.answer, .seconds = given.seconds, .switches = given.switches},
         .grade = Drills::grade(given.answer, trial)});
  writer_.post([file = file_, lines = std::move(lines), isPossible, kept = std::move(kept)] {
    auto error = isPossible ? file->append(lines) : std::optional(noAnswer);
    return BackgroundWriter::Outcome{.finish = [kept, error = std::move(error)] { kept(error); }};
  });
  return false;
}

void AssignedCourse::record(const Trial& trial, const Given& given, const Drills::Grade& grade) {
  isEmpty_ = false;
  sitting_.take(given.answer);
  profile_.record(trial, grade);
}

} // namespace velto
