#include "TrialList.h"

#include "FatalError.h"
#include "Numbers.h"
#include "TextNumbers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <optional>
#include <utility>

namespace velto {

namespace {

constexpr std::string_view firstLine = "velto-session 1";
constexpr std::string_view fixedLine = "difficulty fixed";
constexpr std::string_view staircaseLine = "difficulty staircase";
constexpr std::string_view bandsWord = "bands";

std::string wordOf(Material material) {
  std::string word(material.shortName());
  for (char& letter : word)
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  return word;
}

std::optional<Material> materialOf(std::string_view word) {
  for (const Material material : Material::allCases)
    if (wordOf(material) == word)
      return material;
  return std::nullopt;
}

std::string lineOf(const ListedTrial& trial) {
  return std::string(trial.drill.rawValue()) + " " + wordOf(trial.material) + " " +
         Numbers::shortest(trial.difficulty) + " " + TextNumbers::hexadecimal(trial.seed) + "\n";
}

std::string lineOf(const BandWeights& weights) {
  std::string line(bandsWord);
  for (const double weight : weights)
    line.append(" ").append(Numbers::fixed(weight, 0));
  return line + "\n";
}

std::string endLine(std::size_t count, std::string_view before) {
  return "end " + std::to_string(count) + " " +
         TextNumbers::hexadecimal(TextNumbers::hash(before)) + "\n";
}

// The lines that the hash covers.
std::string body(const TrialList& list) {
  std::string text(firstLine);
  text += '\n';
  text += list.difficulty == TrialList::Difficulty::staircase ? staircaseLine : fixedLine;
  text += '\n';
  if (list.bandWeights)
    text += lineOf(*list.bandWeights);
  for (const ListedTrial& trial : list.trials)
    text += lineOf(trial);
  return text;
}

bool isDifficulty(double value) {
  return value >= 0 && value <= 100 && !std::signbit(value);
}

bool areWeights(const BandWeights& weights) {
  return *std::max_element(weights.begin(), weights.end()) == TrialList::heaviestBand &&
         std::all_of(weights.begin(), weights.end(), [](double weight) {
           return weight >= 0 && !std::signbit(weight) && weight == std::trunc(weight);
         });
}

// nullopt unless there is one number a band, as lineOf() writes them.
std::optional<BandWeights> weightsIn(std::string_view line) {
  BandWeights weights{};
  line.remove_prefix(bandsWord.size());
  for (double& weight : weights) {
    const std::string_view word = line.substr(0, line.find(' ', 1));
    const auto number = word.starts_with(' ') ? TextNumbers::count(word.substr(1)) : std::nullopt;
    if (!number)
      return std::nullopt;
    weight = static_cast<double>(*number);
    line.remove_prefix(word.size());
  }
  return line.empty() && areWeights(weights) ? std::optional(weights) : std::nullopt;
}

bool startsAgree(const std::vector<ListedTrial>& trials, const ListedTrial& trial) {
  return std::all_of(trials.begin(), trials.end(), [&](const ListedTrial& earlier) {
    return earlier.drill != trial.drill || earlier.difficulty == trial.difficulty;
  });
}

bool obeysTheRules(const TrialList& list) {
  const bool isStaircase = list.difficulty == TrialList::Difficulty::staircase;
  return !list.trials.empty() && list.trials.size() <= TrialList::mostTrials &&
         (!list.bandWeights || areWeights(*list.bandWeights)) &&
         std::all_of(list.trials.begin(), list.trials.end(), [&](const ListedTrial& trial) {
           return isDifficulty(trial.difficulty) &&
                  (!isStaircase || startsAgree(list.trials, trial));
         });
}

// One pass over the text, line by line.
class Parser {
public:
  explicit Parser(std::string_view text) : text_(text) {}

  std::variant<TrialList, std::string> run() {
    if (auto wrong = readHead())
      return located(std::move(*wrong));
    while (true) {
      const std::size_t before = position_;
      const auto line = nextLine();
      if (!line)
        return located("the last line, \"end\", is missing");
      if (number_ == bandsLine && line->starts_with(bandsWord)) {
        list_.bandWeights = weightsIn(*line);
        if (!list_.bandWeights)
          return located("not the weights of 27 bands: whole numbers up to 1000, which the "
                         "heaviest has");
        continue;
      }
      if (line->starts_with("end ")) {
        if (auto wrong = readEnd(before))
          return located(std::move(*wrong));
        return std::move(list_);
      }
      if (auto wrong = readTrial(*line))
        return located(std::move(*wrong));
    }
  }

private:
  using Wrong = std::optional<std::string>;
  static constexpr std::size_t bandsLine = 3;

  // nullopt at the end, and for a line without a line feed.
  std::optional<std::string_view> nextLine() {
    ++number_;
    const std::size_t end = text_.find('\n', position_);
    if (end == std::string_view::npos)
      return std::nullopt;
    const std::string_view line = text_.substr(position_, end - position_);
    position_ = end + 1;
    return line;
  }

  Wrong readHead() {
    if (nextLine() != firstLine)
      return "not a list of trials: the first line is not \"" + std::string(firstLine) + "\"";
    const auto order = nextLine();
    if (order != fixedLine && order != staircaseLine)
      return "neither \"" + std::string(fixedLine) + "\" nor \"" + std::string(staircaseLine) +
             "\"";
    list_.difficulty =
        order == staircaseLine ? TrialList::Difficulty::staircase : TrialList::Difficulty::fixed;
    return std::nullopt;
  }

  Wrong readTrial(std::string_view line) {
    std::array<std::string_view, 4> words;
    for (std::size_t i = 0; i < words.size(); ++i) {
      const std::size_t end = i + 1 < words.size() ? line.find(' ') : line.size();
      if (end == std::string_view::npos)
        return "not \"DRILL MATERIAL DIFFICULTY SEED\"";
      words[i] = line.substr(0, end);
      line.remove_prefix(std::min(end + 1, line.size()));
    }
    const auto drill = Drill::fromRawValue(words[0]);
    const auto material = materialOf(words[1]);
    const auto difficulty = TextNumbers::real(words[2]);
    const auto seed = TextNumbers::hexadecimal(words[3]);
    if (!drill)
      return "unknown drill";
    if (!material)
      return "unknown material";
    if (!difficulty || !isDifficulty(*difficulty))
      return "the difficulty is not a number from 0 to 100 in its shortest form";
    if (!seed)
      return "the seed is not 16 hexadecimal digits";
    const ListedTrial trial{
        .drill = *drill, .material = *material, .difficulty = *difficulty, .seed = *seed};
    if (list_.difficulty == TrialList::Difficulty::staircase && !startsAgree(list_.trials, trial))
      return "a staircase starts at one difficulty only";
    if (list_.trials.size() == TrialList::mostTrials)
      return "more than " + std::to_string(TrialList::mostTrials) + " trials";
    list_.trials.push_back(trial);
    return std::nullopt;
  }

  Wrong readEnd(std::size_t before) {
    if (list_.trials.empty())
      return "there is no trial";
    if (text_.substr(before) != endLine(list_.trials.size(), text_.substr(0, before)))
      return "the list is damaged or was changed: number of trials or hash do not fit";
    return std::nullopt;
  }

  [[nodiscard]] std::string located(std::string wrong) const {
    return "line " + std::to_string(number_) + ": " + std::move(wrong);
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t number_ = 0; // of the latest line
  TrialList list_;
};

} // namespace

std::string TrialList::text() const {
  if (!obeysTheRules(*this))
    fatalError("a list of trials breaks its rules");
  const std::string lines = body(*this);
  return lines + endLine(trials.size(), lines);
}

std::string TrialList::id() const {
  return std::string("L").append(TextNumbers::hexadecimal(TextNumbers::hash(body(*this))));
}

std::variant<TrialList, std::string> TrialList::parse(std::string_view text) {
  return Parser(text).run();
}

} // namespace velto
