#include "Session.h"

#include "FatalError.h"
#include "PracticeCourse.h"
#include "Rendering.h"
#include "Signals.h"

#include <chrono>
#include <utility>

namespace velto {

namespace {

constexpr std::uint64_t seedStep = 40503;

double defaultAnswer(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return 1000.0;
  case Drill::level:
    return 2.0;
  case Drill::dynamics:
    return 5.0;
  case Drill::polarity:
    return -1.0; // no slot chosen yet
  }
  fatalError("unknown drill");
}

std::uint64_t wholeSeconds(double secondsSince1970) {
  // 2^64 is the first double above the range.
  if (!(secondsSince1970 >= 0 && secondsSince1970 < 0x1p64))
    fatalError("the system time is out of range");
  return static_cast<std::uint64_t>(secondsSince1970);
}

} // namespace

Session::Session(Drill drill, WorkQueues queues, std::unique_ptr<Player> player,
                 double secondsSince1970, Trials trials)
    : Session(std::make_unique<PracticeCourse>(), drill, std::move(queues), std::move(player),
              secondsSince1970, trials) {}

Session::Session(std::unique_ptr<Course> course, Drill drill, WorkQueues queues,
                 std::unique_ptr<Player> player, double secondsSince1970, Trials trials)
    : trials_(trials), course_(std::move(course)), player_(std::move(player)),
      counter_(wholeSeconds(secondsSince1970)), queues_(std::move(queues)),
      self_(std::make_shared<Session*>(this)),
      wanted_(std::make_shared<std::atomic<std::uint64_t>>()) {
  followOpenings();
  setDrill(drill);
  newTrial();
}

Session::~Session() = default;

template <typename Member, typename Value>
void Session::assign(Field field, Member& member, Value&& value) {
  objectWillChange.send(field);
  member = std::forward<Value>(value);
  objectDidChange.send(field);
}

void Session::setDrill(Drill drill) {
  if (!isFree())
    return;
  assign(Field::drill, drill_, drill);
  assign(Field::material, material_, Drills::defaultMaterial(drill));
  newTrial();
}

void Session::setMaterial(Material material) {
  if (!isFree())
    return;
  assign(Field::material, material_, material);
  newTrial();
}

void Session::setAnswer(double answer) {
  if (keeping_.isPending)
    return;
  assign(Field::answer, answer_, answer);
}

void Session::newTrial() {
  const std::optional<Trial> next = course_->next(drill_, material_, nextSeed());
  if (!next)
    return;
  if (next->drill != drill_)
    assign(Field::drill, drill_, next->drill);
  if (next->material != material_)
    assign(Field::material, material_, next->material);
  assign(Field::grade, grade_, std::nullopt);
  assign(Field::trial, trial_, next);
  assign(Field::answer, answer_, defaultAnswer(drill_));
  assign(Field::currentSlot, currentSlot_, 0);
  assign(Field::rendering, rendering_, true);

  const Noise noise = trials_ == Trials::fair ? Noise::audible : Noise::asDrawn;
  wanted_->store(trial_->seed);
  if (queues_.render) {
    queues_.render(*trial_, noise,
                   [seed = trial_->seed, self = std::weak_ptr(self_)](std::vector<Slot> slots) {
                     if (const auto session = self.lock())
                       (*session)->takeRender(seed, std::move(slots));
                   });
    return;
  }
  queues_.background(
      [trial = *trial_, noise, main = queues_.main, self = std::weak_ptr(self_), wanted = wanted_] {
        if (wanted->load() != trial.seed)
          return;
        auto rendered = Drills::render(trial, trialSeconds, noise);
        main([seed = trial.seed, rendered = std::move(rendered), self]() mutable {
          if (const auto session = self.lock())
            (*session)->takeRender(seed, std::move(rendered));
        });
      });
}

std::uint64_t Session::nextSeed() {
  counter_ += seedStep;
  return trials_ == Trials::fair ? Drills::mixedSeed(counter_) : counter_;
}

void Session::takeRender(std::uint64_t seed, std::vector<Slot> slots) {
  // A newer trial has been started in the meantime.
  if (!trial_ || trial_->seed != seed)
    return;
  assign(Field::rendering, rendering_, false);
  slots_ = std::move(slots);
  switching_ = trials_ == Trials::fair && trial_->drill == Drill::polarity
                   ? Switching::throughSilence
                   : Switching::crossfade;
  rendered_ = std::chrono::steady_clock::now();
  switches_ = 0;
  assign(Field::currentSlot, currentSlot_, 0);
  if (!suspended_)
    play();
}

// With the current slot audible.
void Session::play() {
  player_->load(slots_, currentSlot_, switching_);
}

void Session::select(std::int64_t slot) {
  if (!trial_ || slot >= trial_->slots)
    return;
  switches_ += slot == currentSlot_ ? 0 : 1;
  assign(Field::currentSlot, currentSlot_, slot);
  player_->switchTo(slot);
}

void Session::cycleSlot() {
  if (trial_)
    select((currentSlot_ + 1) % trial_->slots);
}

bool Session::canSubmit() const {
  return trial_ && !grade_ && !rendering_ && !keeping_.isPending &&
         (trial_->drill != Drill::polarity || answer_ >= 0);
}

void Session::submit() {
  if (!canSubmit())
    return;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - rendered_;
  const Course::Given given{.answer = answer_, .seconds = passed.count(), .switches = switches_};
  const auto kept = [given, self = std::weak_ptr(self_)](std::optional<std::string> error) {
    if (const auto session = self.lock())
      (*session)->takeKept(given, std::move(error));
  };
  if (course_->keep(given, kept))
    showVerdict(given);
  else
    assign(Field::keeping, keeping_, Keeping{.isPending = true, .error = std::nullopt});
}

void Session::takeKept(const Course::Given& given, std::optional<std::string> error) {
  if (!error)
    showVerdict(given);
  assign(Field::keeping, keeping_, Keeping{.isPending = false, .error = std::move(error)});
}

void Session::showVerdict(const Course::Given& given) {
  assign(Field::grade, grade_, Drills::grade(given.answer, *trial_));
  course_->record(*trial_, given, *grade_);
  objectWillChange.send(Field::record);
  objectDidChange.send(Field::record);
}

bool Session::isOver() const {
  const auto place = course_->place();
  return grade_ && place && place->number == place->count;
}

void Session::suspend() {
  if (suspended_)
    return;
  suspended_ = true;
  player_->stop();
}

void Session::resume() {
  if (!suspended_)
    return;
  suspended_ = false;
  if (!slots_.empty())
    play();
}

void Session::followOpenings() {
  player_->whenOpeningEnds([main = queues_.main, self = std::weak_ptr(self_)] {
    main([self] {
      if (const auto session = self.lock())
        (*session)->followSound(std::chrono::steady_clock::now());
    });
  });
}

void Session::followSound(SoundRecovery::Time now) {
  if (suspended_ || slots_.empty())
    return recovery_.rest();
  const SoundRecovery::Step step = recovery_.next(sound(), now);
  if (step.report)
    Player::reportFailure(player_->error().value_or("the sound server does not answer"));
  if (!step.load)
    return;
  play();
  if (player_->isPlaying())
    (void)recovery_.next(sound(), now);
}

SoundRecovery::Sound Session::sound() const {
  using enum SoundRecovery::Sound;
  if (player_->isRunning())
    return plays;
  switch (player_->output()) {
  case PlaybackEngine::Output::open:
    return ready;
  case PlaybackEngine::Output::opening:
    return opening;
  case PlaybackEngine::Output::closed:
    break;
  }
  return player_->error() ? refused : lost;
}

} // namespace velto
