#include "Results.h"

#include "Numbers.h"
#include "TextNumbers.h"

#include <cmath>
#include <utility>

namespace velto {

namespace {

constexpr std::string_view headerLine =
    "list,trial,drill,difficulty,truth,answer,error,hit,seconds,switches\r\n";
constexpr std::size_t columns = 10;
constexpr int decimalsOfSeconds = 3;
// Fewer than the last bit: the logarithm may differ there between machines.
constexpr int decimalsOfError = 4;

// nullopt unless there are exactly as many fields as columns.
std::optional<std::vector<std::string_view>> fieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  while (true) {
    const std::size_t comma = line.find(',');
    fields.push_back(line.substr(0, comma));
    if (comma == std::string_view::npos)
      break;
    line.remove_prefix(comma + 1);
  }
  if (fields.size() != columns)
    return std::nullopt;
  return fields;
}

std::optional<Results::Given> givenOf(const std::vector<std::string_view>& fields,
                                      const Trial& trial) {
  const auto answer = TextNumbers::real(fields[5]);
  const auto seconds = TextNumbers::fixed(fields[8], decimalsOfSeconds);
  const auto switches = TextNumbers::count(fields[9]);
  if (!answer || !Sitting::isPossible(*answer, trial) || !seconds || std::signbit(*seconds) ||
      !switches)
    return std::nullopt;
  return Results::Given{
      .answer = *answer, .seconds = *seconds, .switches = static_cast<std::int64_t>(*switches)};
}

class Reader {
public:
  Reader(const TrialList& list, std::string_view text)
      : text_(text),
        id_(list.id()), reading_{
                            .sitting = Sitting(list), .rows = {}, .held = 0, .changedLine = {}} {}

  std::variant<Results::Reading, std::string> run() {
    const auto first = nextLine();
    if (!first)
      return headerLine.starts_with(text_) ? ended() : located("not a results file");
    if (*first != headerLine.substr(0, headerLine.size() - 2))
      return located("not a results file");
    reading_.held = position_;
    while (const auto line = nextLine()) {
      if (auto wrong = readRow(*line))
        return located(std::move(*wrong));
      reading_.held = position_;
    }
    return ended();
  }

private:
  std::variant<Results::Reading, std::string> ended() { return std::move(reading_); }

  // Without its line end, CR LF or LF. nullopt at the end, and for an unfinished line.
  std::optional<std::string_view> nextLine() {
    ++number_;
    const std::size_t end = text_.find('\n', position_);
    if (end == std::string_view::npos)
      return std::nullopt;
    std::string_view line = text_.substr(position_, end - position_);
    position_ = end + 1;
    if (line.ends_with('\r'))
      line.remove_suffix(1);
    return line;
  }

  std::optional<std::string> readRow(std::string_view line) {
    const std::size_t number = reading_.rows.size() + 1;
    const auto fields = fieldsOf(line);
    if (!fields)
      return "not " + std::to_string(columns) + " fields";
    if ((*fields)[0] != id_)
      return "belongs to another list";
    if (TextNumbers::count((*fields)[1]) != number)
      return "not trial " + std::to_string(number);
    const auto trial = reading_.sitting.next();
    if (!trial)
      return "the list has only " + std::to_string(number - 1) + " trials";
    const auto given = givenOf(*fields, *trial);
    if (!given)
      return "answer, seconds or switches are not numbers as this file has them";
    const Drills::Grade grade = reading_.sitting.take(given->answer);
    reading_.rows.push_back({.trial = *trial, .given = *given, .grade = grade});
    if (!reading_.changedLine &&
        Results::line(id_, number, reading_.rows.back()) != std::string(line).append("\r\n"))
      reading_.changedLine = number_;
    return std::nullopt;
  }

  [[nodiscard]] std::string located(std::string wrong) const {
    return "line " + std::to_string(number_) + ": " + std::move(wrong);
  }

  std::string_view text_;
  std::string id_;
  std::size_t position_ = 0;
  std::size_t number_ = 0; // of the latest line
  Results::Reading reading_;
};

} // namespace

std::string_view Results::header() {
  return headerLine;
}

std::string Results::line(std::string_view id, std::size_t number, const Row& row) {
  std::string text(id);
  const auto add = [&text](std::string_view field) { text.append(",").append(field); };
  add(std::to_string(number));
  add(row.trial.drill.rawValue());
  add(Numbers::shortest(row.trial.difficulty));
  add(Numbers::shortest(Drills::truth(row.trial)));
  add(Numbers::shortest(row.given.answer));
  add(Numbers::fixed(row.grade.error, decimalsOfError));
  add(row.grade.correct ? "1" : "0");
  add(Numbers::fixed(row.given.seconds, decimalsOfSeconds));
  add(std::to_string(row.given.switches));
  return text + "\r\n";
}

std::variant<Results::Reading, std::string> Results::read(const TrialList& list,
                                                          std::string_view text) {
  return Reader(list, text).run();
}

} // namespace velto
