#include "ThresholdFit.h"

#include "Xorshift64.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <vector>

namespace velto {

namespace {

// The thresholds that are tried, in points: a grid that ends where the prior is small.
constexpr double lowestThreshold = -60;
constexpr double thresholdStep = 1;
constexpr std::size_t thresholdCount = 221;
constexpr double flank = 20; // standard deviation of the prior outside 0 to 100

constexpr std::size_t widthCount = 11;
constexpr double medianWidth = 45;
constexpr double widthSpread = 0.8; // standard deviation of the logarithm

constexpr std::size_t lapseCount = 6;
constexpr double lapseBeta = 30;

// Standard deviations of the walk's steps, per answer; each is less likely than the one before.
constexpr std::array<double, 5> steps{0, 0.5, 1, 2, 4};
constexpr double stepDecay = 0.7;

constexpr std::size_t answersPerBlock = 10; // during which the threshold rests
constexpr std::size_t walkCount = 2000;

// One value per threshold of the grid.
using Grid = std::array<double, thresholdCount>;

double thresholdAt(std::size_t index) {
  return lowestThreshold + thresholdStep * static_cast<double>(index);
}

// The share of trials that a listener hears.
double heard(double difficulty, double threshold, double width) {
  static const double scale = 2 * std::log(19.0);
  return 1 / (1 + std::exp(scale * (difficulty - threshold) / width));
}

double clamped(double difficulty) {
  return std::clamp(difficulty, 0.0, 100.0);
}

double sum(const Grid& grid) {
  double total = 0;
  for (const double value : grid)
    total += value;
  return total;
}

Grid thresholdPrior() {
  Grid prior;
  for (std::size_t i = 0; i < thresholdCount; ++i) {
    const double outside = (thresholdAt(i) - clamped(thresholdAt(i))) / flank;
    prior[i] = std::exp(-outside * outside / 2);
  }
  const double total = sum(prior);
  for (double& value : prior)
    value /= total;
  return prior;
}

// The distribution of a step of the walk, up to a factor: element 0 is no change, i is i grid
// points up or down.
std::vector<double> stepKernel(double deviation) {
  std::vector<double> kernel{1};
  const double points = deviation / thresholdStep;
  for (double i = 1; i <= std::ceil(3 * points); ++i)
    kernel.push_back(std::exp(-i * i / (2 * points * points)));
  double total = -kernel[0];
  for (const double value : kernel)
    total += 2 * value;
  for (double& value : kernel)
    value /= total;
  return kernel;
}

// `grid` after a step of the walk. What would leave the grid is lost.
Grid stepped(const Grid& grid, const std::vector<double>& kernel) {
  Grid result;
  for (std::size_t i = 0; i < thresholdCount; ++i)
    result[i] = kernel[0] * grid[i];
  for (std::size_t d = 1; d < kernel.size(); ++d) {
    for (std::size_t i = 0; i + d < thresholdCount; ++i) {
      result[i] += kernel[d] * grid[i + d];
      result[i + d] += kernel[d] * grid[i];
    }
  }
  return result;
}

// One curve and one kind of walk, with what the answers say about them.
struct Hypothesis {
  double logWidth = 0;
  double lapseRate = 0;
  const std::vector<double>* kernel = nullptr;
  std::vector<Grid> filtered; // per block: the threshold's distribution given the answers so far
  double weight = 0;          // first its logarithm
};

class Posterior {
public:
  Posterior(std::span<const HitOrMiss> answers, double guessRate)
      : answers_(answers), guessRate_(guessRate),
        blocks_((answers.size() + answersPerBlock - 1) / answersPerBlock) {
    const double answersPerStep =
        static_cast<double>(answers.size()) / static_cast<double>(blocks_);
    for (std::size_t i = 0; i < steps.size(); ++i)
      kernels_[i] = stepKernel(steps[i] * std::sqrt(answersPerStep));
    for (std::size_t i = 0; i < widthCount; ++i)
      addWidth(4 * static_cast<double>(i) / (widthCount - 1) - 2);
    normaliseWeights();
  }

  [[nodiscard]] const std::vector<Hypothesis>& hypotheses() const { return hypotheses_; }

  // Mean thresholds of walks drawn from the posterior, ascending.
  [[nodiscard]] std::vector<double> meanThresholds() const {
    Xorshift64 random(0x7112E5401D5EED);
    std::vector<double> means;
    double weight = 0;
    for (const Hypothesis& hypothesis : hypotheses_) {
      weight += hypothesis.weight;
      while (means.size() < walkCount &&
             static_cast<double>(means.size()) + 0.5 < weight * walkCount)
        means.push_back(meanOfWalk(hypothesis, random));
    }
    std::sort(means.begin(), means.end());
    return means;
  }

private:
  [[nodiscard]] std::size_t blockOf(std::size_t answer) const {
    return answer * blocks_ / answers_.size();
  }

  // Adds the hypotheses whose width lies `z` standard deviations from the median.
  void addWidth(double z) {
    const double logWidth = std::log(medianWidth) + widthSpread * z;
    std::map<double, Grid> heardAt;
    for (const HitOrMiss& answer : answers_) {
      const double difficulty = clamped(answer.difficulty);
      const auto [place, isNew] = heardAt.try_emplace(difficulty);
      for (std::size_t i = 0; isNew && i < thresholdCount; ++i)
        place->second[i] = heard(difficulty, thresholdAt(i), std::exp(logWidth));
    }
    for (std::size_t i = 0; i < lapseCount; ++i) {
      // Equally likely values: the middle of each sixth of the beta distribution.
      const double quantile = (static_cast<double>(i) + 0.5) / lapseCount;
      const double lapseRate = 1 - std::pow(1 - quantile, 1 / lapseBeta);
      const std::vector<Grid> likelihoods = likelihoodsOf(heardAt, lapseRate);
      for (std::size_t k = 0; k < kernels_.size(); ++k) {
        Hypothesis& hypothesis = hypotheses_.emplace_back();
        hypothesis.logWidth = logWidth;
        hypothesis.lapseRate = lapseRate;
        hypothesis.kernel = &kernels_[k];
        hypothesis.weight = -z * z / 2 + static_cast<double>(k) * std::log(stepDecay);
        filter(hypothesis, likelihoods);
      }
    }
  }

  // Per block, the probability of its answers at each threshold.
  [[nodiscard]] std::vector<Grid> likelihoodsOf(const std::map<double, Grid>& heardAt,
                                                double lapseRate) const {
    std::vector<Grid> likelihoods(blocks_);
    for (Grid& likelihood : likelihoods)
      likelihood.fill(1);
    const double range = 1 - guessRate_ - lapseRate;
    for (std::size_t n = 0; n < answers_.size(); ++n) {
      const Grid& probability = heardAt.at(clamped(answers_[n].difficulty));
      // A hit has the probability g + r * heard, a miss 1 - g - r * heard.
      const double constant = answers_[n].hit ? guessRate_ : 1 - guessRate_;
      const double factor = answers_[n].hit ? range : -range;
      Grid& likelihood = likelihoods[blockOf(n)];
      for (std::size_t i = 0; i < thresholdCount; ++i)
        likelihood[i] *= constant + factor * probability[i];
    }
    return likelihoods;
  }

  // Computes the filtered distributions, and the logarithm of the probability of all answers.
  void filter(Hypothesis& hypothesis, const std::vector<Grid>& likelihoods) const {
    static const Grid prior = thresholdPrior();
    hypothesis.filtered.reserve(blocks_);
    for (const Grid& likelihood : likelihoods) {
      Grid now = hypothesis.filtered.empty()
                     ? prior
                     : stepped(hypothesis.filtered.back(), *hypothesis.kernel);
      for (std::size_t i = 0; i < thresholdCount; ++i)
        now[i] *= likelihood[i];
      const double total = sum(now);
      for (double& value : now)
        value /= total;
      hypothesis.weight += std::log(total);
      hypothesis.filtered.push_back(now);
    }
  }

  void normaliseWeights() {
    double largest = hypotheses_.front().weight;
    for (const Hypothesis& hypothesis : hypotheses_)
      largest = std::max(largest, hypothesis.weight);
    double total = 0;
    for (Hypothesis& hypothesis : hypotheses_) {
      hypothesis.weight = std::exp(hypothesis.weight - largest);
      total += hypothesis.weight;
    }
    for (Hypothesis& hypothesis : hypotheses_)
      hypothesis.weight /= total;
  }

  // Draws a walk from its last block to its first.
  [[nodiscard]] double meanOfWalk(const Hypothesis& hypothesis, Xorshift64& random) const {
    const std::vector<double>& kernel = *hypothesis.kernel;
    std::size_t place = drawn(hypothesis.filtered.back(), 0, thresholdCount - 1, random);
    double total = thresholdAt(place);
    for (std::size_t block = blocks_ - 1; block-- > 0;) {
      const std::size_t reach = kernel.size() - 1;
      const std::size_t first = place < reach ? 0 : place - reach;
      const std::size_t last = std::min(place + reach, thresholdCount - 1);
      Grid before;
      for (std::size_t i = first; i <= last; ++i)
        before[i] = hypothesis.filtered[block][i] * kernel[i < place ? place - i : i - place];
      place = drawn(before, first, last, random);
      total += thresholdAt(place);
    }
    // Anywhere between the grid's points.
    return total / static_cast<double>(blocks_) + thresholdStep * (random.nextUnit() - 0.5);
  }

  // An index from `first` to `last`, with probabilities proportional to the grid's values.
  static std::size_t drawn(const Grid& grid, std::size_t first, std::size_t last,
                           Xorshift64& random) {
    double total = 0;
    for (std::size_t i = first; i <= last; ++i)
      total += grid[i];
    double rest = random.nextUnit() * total;
    while (first < last && (rest -= grid[first]) >= 0)
      ++first;
    return first;
  }

  std::span<const HitOrMiss> answers_;
  double guessRate_;
  std::size_t blocks_;
  std::array<std::vector<double>, steps.size()> kernels_;
  std::vector<Hypothesis> hypotheses_;
};

} // namespace

double ThresholdFit::hitRate(double difficulty) const {
  return guessRate + (1 - guessRate - lapseRate) * heard(difficulty, threshold, width);
}

std::optional<ThresholdFit> ThresholdFit::of(std::span<const HitOrMiss> answers, double guessRate) {
  if (answers.empty())
    return std::nullopt;
  const Posterior posterior(answers, guessRate);
  ThresholdFit fit;
  fit.guessRate = guessRate;
  double logWidth = 0;
  for (const Hypothesis& hypothesis : posterior.hypotheses()) {
    logWidth += hypothesis.weight * hypothesis.logWidth;
    fit.lapseRate += hypothesis.weight * hypothesis.lapseRate;
  }
  fit.width = std::exp(logWidth);
  const std::vector<double> means = posterior.meanThresholds();
  fit.threshold = means[means.size() / 2];
  const double lower = means[means.size() / 40];
  const double upper = means[means.size() - 1 - means.size() / 40];
  if (lower >= 0)
    fit.lower = std::min(lower, 100.0);
  if (upper <= 100)
    fit.upper = std::max(upper, 0.0);
  return fit;
}

} // namespace velto
