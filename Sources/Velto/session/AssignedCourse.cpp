#include "AssignedCourse.h"

#include "Date.h"
#include "Results.h"

#include <mutex>
#include <utility>
#include <vector>

namespace velto {

// The way from the writer to the main thread, closed when the course ends: a writer that hangs may
// outlive the queues.
class AssignedCourse::Reply {
public:
  explicit Reply(std::function<void(WorkQueues::Work)> main) : main_(std::move(main)) {}

  void send(WorkQueues::Work work) {
    const std::lock_guard lock(mutex_);
    if (main_)
      main_(std::move(work));
  }

  void close() {
    const std::lock_guard lock(mutex_);
    main_ = nullptr;
  }

private:
  std::mutex mutex_;
  std::function<void(WorkQueues::Work)> main_;
};

AssignedCourse::AssignedCourse(Assignment assignment, const WorkQueues& queues)
    : sitting_(assignment.reading.sitting), begun_(sitting_.answered()),
      profile_(Profile::Unsaved{}), file_(std::move(assignment.file)),
      isEmpty_(assignment.reading.held == 0), reply_(std::make_shared<Reply>(queues.main)) {
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
  reply_->close();
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
  if (!Sitting::isPossible(given.answer, trial)) {
    reply_->send([kept = std::move(kept)] { kept("it is no answer to this trial"); });
    return false;
  }
  const Results::Row row{
      .trial = trial,
      .given = {.answer = given.answer, .seconds = given.seconds, .switches = given.switches},
      .grade = Drills::grade(given.answer, trial)};
  std::string lines(isEmpty_ ? Results::header() : "");
  lines += Results::line(sitting_.list().id(), begun_, row);
  writer_.post([file = file_, lines = std::move(lines), reply = reply_, kept = std::move(kept)] {
    reply->send([error = file->append(lines), kept] { kept(error); });
    return BackgroundWriter::Outcome{};
  });
  return false;
}

void AssignedCourse::record(const Trial& trial, const Given& given, const Drills::Grade& grade) {
  isEmpty_ = false;
  sitting_.take(given.answer);
  profile_.record(trial, grade);
}

} // namespace velto
