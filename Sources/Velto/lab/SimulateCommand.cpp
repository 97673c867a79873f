#include "SimulateCommand.h"

#include "Arguments.h"
#include "BlindAnswer.h"
#include "Console.h"
#include "Grading.h"
#include "JSONWriter.h"
#include "Numbers.h"
#include "Table.h"
#include "Targets.h"
#include "TrialSeeds.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace velto {

namespace {

struct Options {
  bool asJSON = false;
  double difficulty = -1; // negative: a selection
  std::uint64_t year = 0; // 0: this one
};

struct Row {
  Drill drill = Drill::frequency;
  double difficulty = 0;
  BlindAnswer clock;
  BlindAnswer spread;
};

int yearOf(std::chrono::system_clock::time_point time) {
  const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(time));
  return static_cast<int>(date.year());
}

// The first moment of a year, UTC.
Date startOf(int year) {
  const std::chrono::sys_days day = std::chrono::year(year) / std::chrono::January / 1;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(day.time_since_epoch());
  return {.secondsSinceReferenceDate =
              static_cast<double>(seconds.count()) - Date::referenceSince1970};
}

std::vector<Row> simulate(const Options& options, int year) {
  std::vector<double> difficulties{options.difficulty};
  if (options.difficulty < 0)
    difficulties = {0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
  const auto clock = TrialSeeds::clock(startOf(year));
  const auto spread = TrialSeeds::spread();
  Lab::Progress progress("simulating", Drill::allCases.size() * difficulties.size());
  std::vector<Row> rows;
  for (const Drill drill : Drill::allCases) {
    for (const double difficulty : difficulties) {
      rows.push_back({.drill = drill,
                      .difficulty = difficulty,
                      .clock = BlindAnswer::best(Targets::of(drill, difficulty, clock)),
                      .spread = BlindAnswer::best(Targets::of(drill, difficulty, spread))});
      progress.advance();
    }
  }
  return rows;
}

std::string answerText(Drill drill, double answer) {
  return Drills::grade(answer, Trial{.drill = drill, .targetFreq = 1}).answerText;
}

std::string percent(double share) {
  return Numbers::fixed(100 * share, 1);
}

std::string words(const std::vector<Row>& rows, int year) {
  using enum Lab::Table::Alignment;
  Lab::Table table({left, right, right, right, right, right});
  table.add({"", "", "velto", "", "velto --fair"});
  table.add({"drill", "difficulty", "hits %", "answer", "hits %", "answer"});
  for (const Row& row : rows)
    table.add({std::string(row.drill.rawValue()), Numbers::shortest(row.difficulty),
               percent(row.clock.hitRate), answerText(row.drill, row.clock.answer),
               percent(row.spread.hitRate), answerText(row.drill, row.spread.answer)});
  return "The best answer without listening, and how often it hits.\n"
         "Without --fair seeds follow the clock: here that of the year " +
         std::to_string(year) + ".\n\n" + table.text();
}

void write(JSON::Writer& writer, std::string_view name, const BlindAnswer& answer) {
  writer.key(name);
  writer.beginObject();
  writer.key("hitRate");
  writer.real(answer.hitRate);
  writer.key("answer");
  writer.real(answer.answer);
  writer.key("meanError");
  writer.real(answer.meanError);
  writer.key("targets");
  writer.integer(static_cast<std::uint64_t>(answer.targets));
  writer.key("lowestTarget");
  writer.real(answer.lowestTarget);
  writer.key("highestTarget");
  writer.real(answer.highestTarget);
  writer.endObject();
}

std::string json(const std::vector<Row>& rows, int year) {
  JSON::Writer writer;
  writer.beginObject();
  writer.key("year");
  writer.integer(static_cast<std::int64_t>(year));
  writer.key("trials");
  writer.beginArray();
  for (const Row& row : rows) {
    writer.beginObject();
    writer.key("drill");
    writer.string(row.drill.rawValue());
    writer.key("difficulty");
    writer.real(row.difficulty);
    write(writer, "clock", row.clock);
    write(writer, "fair", row.spread);
    writer.endObject();
  }
  writer.endArray();
  writer.endObject();
  return writer.finish().value() + "\n";
}

} // namespace

Lab::Action Lab::declareSimulate(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  Arguments::addJSON(arguments, options->asJSON);
  Arguments::addNumber(arguments, "--difficulty", options->difficulty, 0, 100,
                       "only this difficulty, 0 to 100");
  Arguments::addCount(arguments, "--year", options->year, 1970, 9999,
                      "the year whose clock gives the seeds (this one)");
  return [options] {
    const int year = options->year == 0 ? yearOf(std::chrono::system_clock::now())
                                        : static_cast<int>(options->year);
    const std::vector<Row> rows = simulate(*options, year);
    Console::print(options->asJSON ? json(rows, year) : words(rows, year));
  };
}

} // namespace velto
