#include "SessionScoreCommand.h"

#include "Arguments.h"
#include "Assignment.h"
#include "Console.h"
#include "JSONWriter.h"
#include "Numbers.h"
#include "Report.h"
#include "Results.h"
#include "Scores.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

namespace {

struct Listener {
  std::string file;
  std::vector<Score> scores;
  std::optional<std::size_t> changedLine;
};

Listener listenerOf(const TrialList& list, const std::string& file, BlindAnswers& blind) {
  const auto text = Assignment::textOf(file);
  if (const auto* failure = std::get_if<Assignment::Failure>(&text))
    throw Lab::Failure(failure->line);
  const auto read = Results::read(list, std::get<std::string>(text));
  if (const auto* wrong = std::get_if<std::string>(&read))
    throw Lab::Failure(file + ": " + *wrong);
  const auto& reading = std::get<Results::Reading>(read);
  return {.file = file, .scores = scoresOf(reading, blind), .changedLine = reading.changedLine};
}

std::string_view unitOf(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return " oct";
  case Drill::level:
  case Drill::dynamics:
    return " dB";
  case Drill::polarity:
    break;
  }
  return "";
}

std::string percent(double share) {
  return Numbers::fixed(100 * share, 0) + " %";
}

using Line = std::array<std::string, 8>;

const Line heading{"listener", "drill", "answers",  "hits",
                   "guessing", "error", "guessing", "chance"};

Line lineOf(const std::string& listener, const Score& score) {
  const std::string unit(unitOf(score.drill));
  Line line{listener, std::string(score.drill.rawValue()),
            std::to_string(score.answers) + " of " + std::to_string(score.trials)};
  if (score.answers == 0)
    return line;
  line[3] = percent(static_cast<double>(score.hits) / static_cast<double>(score.answers));
  line[4] = percent(score.blindHits);
  line[5] = Numbers::fixed(score.error, 2) + unit;
  line[6] = Numbers::fixed(score.blindError, 2) + unit;
  line[7] = Numbers::fixed(100 * score.byGuessing, 1) + " %";
  return line;
}

// Columns are as wide as their widest field; names to the left, figures to the right.
std::string aligned(const std::vector<Line>& lines) {
  std::array<std::size_t, std::tuple_size_v<Line>> widths{};
  for (const Line& line : lines)
    for (std::size_t i = 0; i < line.size(); ++i)
      widths[i] = std::max(widths[i], line[i].size());
  std::string text;
  for (const Line& line : lines) {
    std::string row;
    for (std::size_t i = 0; i < line.size(); ++i)
      row += (i == 0 ? "" : "  ") + (i < 2 ? Report::leftAligned(line[i], widths[i])
                                           : Report::rightAligned(line[i], widths[i]));
    row.erase(row.find_last_not_of(' ') + 1);
    text += row + "\n";
  }
  return text;
}

std::string table(const std::vector<Listener>& listeners) {
  std::vector<Line> lines{heading};
  for (const Listener& listener : listeners)
    for (const Score& score : listener.scores)
      lines.push_back(lineOf(listener.file, score));
  if (listeners.size() > 1)
    for (std::size_t i = 0; i < listeners.front().scores.size(); ++i) {
      std::vector<Score> same;
      for (const Listener& listener : listeners)
        same.push_back(listener.scores[i]);
      lines.push_back(lineOf("all", totalOf(same)));
      lines.back().back().clear(); // each listener's own
    }
  std::string text = aligned(lines);
  for (const Listener& listener : listeners)
    if (listener.changedLine)
      text += listener.file + ": line " + std::to_string(*listener.changedLine) +
              " was changed by hand; graded from the list\n";
  return text;
}

void write(JSON::Writer& writer, const Score& score) {
  writer.beginObject();
  writer.key("drill");
  writer.string(score.drill.rawValue());
  const auto count = [&writer](std::string_view key, std::size_t value) {
    writer.key(key);
    writer.integer(static_cast<std::uint64_t>(value));
  };
  count("trials", score.trials);
  count("answers", score.answers);
  count("hits", score.hits);
  if (score.answers > 0)
    for (const auto& [key, value] :
         {std::pair{"meanError", score.error}, std::pair{"guessingHitRate", score.blindHits},
          std::pair{"guessingMeanError", score.blindError},
          std::pair{"chanceByGuessing", score.byGuessing},
          std::pair{"meanDifficulty", score.difficulty}, std::pair{"meanSeconds", score.seconds},
          std::pair{"meanSwitches", score.switches}}) {
      writer.key(key);
      writer.real(value);
    }
  writer.endObject();
}

std::string json(const std::string& list, const std::vector<Listener>& listeners) {
  JSON::Writer writer;
  writer.beginObject();
  writer.key("list");
  writer.string(list);
  writer.key("listeners");
  writer.beginArray();
  for (const Listener& listener : listeners) {
    writer.beginObject();
    writer.key("file");
    writer.string(listener.file);
    if (listener.changedLine) {
      writer.key("changedLine");
      writer.integer(static_cast<std::uint64_t>(*listener.changedLine));
    }
    writer.key("scores");
    writer.beginArray();
    for (const Score& score : listener.scores)
      write(writer, score);
    writer.endArray();
    writer.endObject();
  }
  writer.endArray();
  writer.endObject();
  return writer.finish().value() + "\n";
}

void score(const std::string& listFile, const std::vector<std::string>& files, bool asJSON) {
  const auto list = Assignment::listIn(listFile);
  if (const auto* wrong = std::get_if<std::string>(&list))
    throw Lab::Failure(*wrong);
  Lab::Progress progress("scoring", files.size());
  std::vector<Listener> listeners;
  BlindAnswers blind = blindAnswersTo(std::get<TrialList>(list));
  for (const std::string& file : files) {
    listeners.push_back(listenerOf(std::get<TrialList>(list), file, blind));
    progress.advance();
  }
  Lab::Console::print(asJSON ? json(std::get<TrialList>(list).id(), listeners) : table(listeners));
}

} // namespace

Lab::Action Lab::declareSessionScore(CLI::App& arguments) {
  struct Values {
    std::string list;
    std::vector<std::string> files;
    bool asJSON = false;
  };
  const auto values = std::make_shared<Values>();
  Arguments::addPath(arguments, "LIST", values->list, "the list of trials");
  arguments.add_option("FILE", values->files, "the results of each listener")
      ->required()
      ->type_name("");
  Arguments::addJSON(arguments, values->asJSON);
  return [values] { score(values->list, values->files, values->asJSON); };
}

} // namespace velto
