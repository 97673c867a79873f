#include "StatsCommand.h"

#include "Arguments.h"
#include "Bands.h"
#include "Console.h"
#include "JSONWriter.h"
#include "Numbers.h"
#include "PracticeTime.h"
#include "RecordAnalysis.h"
#include "Statistics.h"
#include "Table.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velto {

namespace {

using Lab::Table;

struct Options {
  bool asJSON = false;
  bool fair = false;
  std::uint64_t newest = DrillAnalysis::defaultNewest;
};

struct Findings {
  std::filesystem::path file;
  SeedSource seeds = SeedSource::clock;
  std::vector<DrillAnalysis> drills;
  std::vector<BandAnalysis> bands;
  PracticeTime time;
  std::int64_t streak = 0; // days
  std::int64_t today = 0;  // answers
};

Findings analyse(const Options& options) {
  Findings findings;
  const ProfileLocation location = Lab::Arguments::recordLocation();
  findings.file = location.file();
  findings.seeds = options.fair ? SeedSource::spread : SeedSource::clock;
  const Stored record = Lab::Arguments::readRecord(location);
  Lab::Progress progress("analysing", Drill::allCases.size());
  for (const Drill drill : Drill::allCases) {
    findings.drills.push_back(DrillAnalysis::of(drill, record, findings.seeds, options.newest));
    progress.advance();
  }
  findings.bands = BandAnalysis::all(record);
  findings.time = PracticeTime::of(record.attempts);
  const Stats stats = Statistics::compute(record.attempts, record.lifetime, Date::now());
  findings.streak = stats.streak;
  findings.today = stats.todayCount;
  return findings;
}

// ---- Text of single figures ----

// "2026-11-22"; the number of the day if the year has more than four digits.
std::string text(Calendar::Day day) {
  const std::chrono::sys_days date{std::chrono::days(day)};
  constexpr std::chrono::sys_days first{std::chrono::year(0) / 1 / 1};
  constexpr std::chrono::sys_days last{std::chrono::year(9999) / 12 / 31};
  if (day < first.time_since_epoch().count() || day > last.time_since_epoch().count())
    return "day " + std::to_string(day);
  const std::chrono::year_month_day parts(date);
  const auto digits = [](unsigned value, std::size_t count) {
    const std::string all = "000" + std::to_string(value);
    return all.substr(all.size() - count);
  };
  return digits(static_cast<unsigned>(static_cast<int>(parts.year())), 4) + "-" +
         digits(static_cast<unsigned>(parts.month()), 2) + "-" +
         digits(static_cast<unsigned>(parts.day()), 2);
}

// "1 day", "2 days".
std::string counted(std::int64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string percent(double share) {
  return Numbers::fixed(100 * share, 0) + " %";
}

std::string percent(double share, std::int64_t of) {
  return of == 0 ? "-" : percent(share);
}

std::string range(const std::string& lower, const std::string& upper) {
  return lower + " to " + upper;
}

std::string percentRange(const Interval& interval) {
  return range(Numbers::fixed(100 * interval.lower, 0), percent(interval.upper));
}

std::string range(const std::optional<Interval>& interval, int decimals) {
  return interval ? range(Numbers::fixed(interval->lower, decimals),
                          Numbers::fixed(interval->upper, decimals))
                  : "too few answers";
}

double share(std::int64_t hits, std::int64_t answers) {
  return answers == 0 ? 0 : static_cast<double>(hits) / static_cast<double>(answers);
}

// The threshold: "52", or "below 0" and "above 100" where there are no trials.
std::string thresholdText(const ThresholdFit& fit) {
  if (fit.threshold < 0)
    return "below 0";
  return fit.threshold > 100 ? "above 100" : Numbers::fixed(fit.threshold, 0);
}

std::string intervalText(const ThresholdFit& fit) {
  return range(fit.lower ? Numbers::fixed(*fit.lower, 0) : "open",
               fit.upper ? Numbers::fixed(*fit.upper, 0) : "open");
}

// ---- Words ----

std::string summary(const Findings& findings) {
  std::int64_t answers = 0;
  for (const DrillAnalysis& drill : findings.drills)
    answers += drill.answers;
  std::string words = findings.file.string() + "\n\n";
  const auto& days = findings.time.days;
  if (answers == 0)
    return words + "No answers yet.\n";
  words += counted(answers, "answer");
  if (!days.empty())
    words += "; " + counted(static_cast<std::int64_t>(days.size()), "day") + " of practice from " +
             text(days.front().day) + " to " + text(days.back().day) + ", " +
             Numbers::fixed(findings.time.hours, 1) + " hours in " +
             counted(findings.time.sittings, "sitting");
  return words + ".\nStreak: " + counted(findings.streak, "day") +
         ". Today: " + counted(findings.today, "answer") +
         ".\nHours are the times between answers; a pause of more than five minutes ends a "
         "sitting.\n";
}

std::string drillTable(const Findings& findings) {
  using enum Table::Alignment;
  Table table({left, right, right, right});
  table.add({"drill", "answers", "hits", "difficulty"});
  for (const DrillAnalysis& drill : findings.drills)
    table.add({std::string(drill.drill.rawValue()), std::to_string(drill.answers),
               percent(share(drill.hits, drill.answers), drill.answers),
               Numbers::general(drill.difficulty, 4)});
  return table.text();
}

std::string hitTable(const Findings& findings) {
  using enum Table::Alignment;
  Table table({left, right, right, right, right, left});
  table.add({"drill", "newest", "hits", "95 %", "not listening"});
  for (const DrillAnalysis& drill : findings.drills) {
    if (!drill.newest)
      continue;
    const NewestAnswers& newest = *drill.newest;
    table.add({std::string(drill.drill.rawValue()), std::to_string(newest.answers),
               percent(share(newest.hits, newest.answers)), percentRange(newest.hitShare),
               percent(newest.blindHitRate), newest.hitsShowHearing() ? "" : "proves nothing"});
  }
  return table.text();
}

std::string thresholdTable(const Findings& findings) {
  using enum Table::Alignment;
  Table table({left, right, right, left});
  table.add({"drill", "threshold", "95 %"});
  for (const DrillAnalysis& drill : findings.drills) {
    if (!drill.newest || !drill.newest->threshold)
      continue;
    const ThresholdFit& fit = *drill.newest->threshold;
    table.add({std::string(drill.drill.rawValue()), thresholdText(fit), intervalText(fit),
               drill.newest->hitsShowHearing() ? "" : "proves nothing"});
  }
  return table.text();
}

std::string errorTable(const Findings& findings) {
  using enum Table::Alignment;
  Table table({left, right, right, right, left});
  table.add({"drill", "error, dB", "95 %", "not listening"});
  for (const DrillAnalysis& drill : findings.drills) {
    if (!drill.newest || !drill.newest->error)
      continue;
    const ErrorSize& error = *drill.newest->error;
    table.add({std::string(drill.drill.rawValue()), Numbers::fixed(error.mean, 2),
               range(error.interval, 2), Numbers::fixed(error.blindMean, 2),
               error.showsHearing() ? "" : "proves nothing"});
  }
  return table.text();
}

std::string bandTable(const Findings& findings) {
  using enum Table::Alignment;
  Table table({right, right, right, right, right, right});
  table.add({"band, Hz", "answers", "hits", "95 %", "error, oct", "95 %"});
  for (const BandAnalysis& band : findings.bands) {
    if (band.answers == 0)
      continue;
    table.add({Bands::label(Bands::centres[static_cast<std::size_t>(band.index)]),
               std::to_string(band.answers), percent(share(band.hits, band.answers)),
               percentRange(band.hitShare), Numbers::fixed(band.meanErrorOct, 2),
               range(band.meanError, 2)});
  }
  return table.text();
}

bool has(const Findings& findings, bool (*is)(const NewestAnswers&)) {
  for (const DrillAnalysis& drill : findings.drills)
    if (drill.newest && is(*drill.newest))
      return true;
  return false;
}

std::string words(const Findings& findings) {
  std::string words = summary(findings) + "\n" + drillTable(findings);
  if (has(findings, [](const NewestAnswers&) { return true; }))
    words += std::string("\nNewest answers, beside the best answer without listening (") +
             (findings.seeds == SeedSource::spread ? "trials of --fair" : "trials without --fair") +
             "):\n" + hitTable(findings);
  if (has(findings, [](const NewestAnswers& newest) { return newest.threshold.has_value(); }))
    words +=
        "\nThreshold: the difficulty at which half of the trials are heard, on average over these "
        "answers\n" +
        thresholdTable(findings);
  if (has(findings, [](const NewestAnswers& newest) { return newest.error.has_value(); }))
    words += "\nMean error\n" + errorTable(findings);
  if (findings.drills.front().answers > 0)
    words += "\nBands of the frequency drill\n" + bandTable(findings);
  return words;
}

// ---- JSON ----

class StatsJSON {
public:
  explicit StatsJSON(const Findings& findings) {
    writer_.beginObject();
    writer_.key("file");
    writer_.string(findings.file.string());
    writer_.key("fair");
    writer_.boolean(findings.seeds == SeedSource::spread);
    number("hours", findings.time.hours);
    count("sittings", findings.time.sittings);
    count("streak", findings.streak);
    count("today", findings.today);
    all("days", findings.time.days);
    all("drills", findings.drills);
    all("bands", findings.bands);
    writer_.endObject();
  }

  // nullopt if the record has errors too large for a mean.
  [[nodiscard]] std::optional<std::string> text() { return writer_.finish(); }

private:
  void number(std::string_view key, double value) {
    writer_.key(key);
    writer_.real(value);
  }
  void count(std::string_view key, std::int64_t value) {
    writer_.key(key);
    writer_.integer(value);
  }
  // Left out if there is none.
  void number(std::string_view key, const std::optional<double>& value) {
    if (value)
      number(key, *value);
  }
  void interval(std::string_view key, const std::optional<Interval>& interval) {
    if (!interval)
      return;
    writer_.key(key);
    writer_.beginObject();
    number("lower", interval->lower);
    number("upper", interval->upper);
    writer_.endObject();
  }
  template <typename Values>
  void all(std::string_view key, const Values& values) {
    writer_.key(key);
    writer_.beginArray();
    for (const auto& value : values) {
      writer_.beginObject();
      members(value);
      writer_.endObject();
    }
    writer_.endArray();
  }

  void members(const PracticeDay& day) {
    writer_.key("day");
    writer_.string(velto::text(day.day));
    count("answers", day.answers);
    count("hits", day.hits);
    number("hours", day.hours);
  }

  void members(const DrillAnalysis& drill) {
    writer_.key("drill");
    writer_.string(drill.drill.rawValue());
    count("answers", drill.answers);
    count("hits", drill.hits);
    number("difficulty", drill.difficulty);
    if (!drill.newest)
      return;
    writer_.key("newest");
    writer_.beginObject();
    members(*drill.newest);
    writer_.endObject();
  }

  void members(const NewestAnswers& newest) {
    count("answers", newest.answers);
    count("hits", newest.hits);
    interval("hitShare", newest.hitShare);
    number("blindHitRate", newest.blindHitRate);
    writer_.key("hitsShowHearing");
    writer_.boolean(newest.hitsShowHearing());
    if (newest.threshold) {
      const ThresholdFit& fit = *newest.threshold;
      writer_.key("threshold");
      writer_.beginObject();
      number("median", fit.threshold);
      number("lower", fit.lower);
      number("upper", fit.upper);
      number("width", fit.width);
      number("lapseRate", fit.lapseRate);
      number("guessRate", fit.guessRate);
      writer_.endObject();
    }
    if (newest.error) {
      writer_.key("error");
      writer_.beginObject();
      number("mean", newest.error->mean);
      interval("interval", newest.error->interval);
      number("blindMean", newest.error->blindMean);
      writer_.key("showsHearing");
      writer_.boolean(newest.error->showsHearing());
      writer_.endObject();
    }
  }

  void members(const BandAnalysis& band) {
    count("band", band.index);
    number("centre", Bands::centres[static_cast<std::size_t>(band.index)]);
    count("answers", band.answers);
    count("hits", band.hits);
    interval("hitShare", band.hitShare);
    number("meanError", band.meanErrorOct);
    interval("interval", band.meanError);
  }

  JSON::Writer writer_;
};

} // namespace

Lab::Action Lab::declareStats(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  Arguments::addJSON(arguments, options->asJSON);
  Arguments::addFlag(arguments, "--fair", options->fair, "the record comes from velto --fair");
  Arguments::addCount(arguments, "--newest", options->newest, 1, 5000,
                      "how many answers of a drill count as its newest (400)");
  return [options] {
    const Findings findings = analyse(*options);
    if (!options->asJSON)
      return Console::print(words(findings));
    const auto json = StatsJSON(findings).text();
    if (!json)
      throw Failure("the record has numbers that are too large");
    Console::print(*json + "\n");
  };
}

} // namespace velto
