// The practice controller: the chosen drill and material, the current trial and its audio, the
// pending answer and its grade.
//
// Main thread only. Trials are rendered where the work queues say, from a copy.
#pragma once

#include "Course.h"
#include "Drill.h"
#include "Grading.h"
#include "Player.h"
#include "Profile.h"
#include "Publisher.h"
#include "Slot.h"
#include "SoundRecovery.h"
#include "Trial.h"
#include "WorkQueues.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Errors of the profile file are not reported. Errors of playback are reported by the player, or by
// followSound() if the player opens its output in the background.
class Session {
public:
  // How trials are made and played.
  enum class Trials : std::uint8_t {
    standard,
    fair // can only be passed by listening: seeds are mixed, so that targets take their whole
         // range; noise is audible; polarity trials switch slots through silence
  };

  // The length of a rendered trial.
  static constexpr double trialSeconds = 3.2;

  // Starts two trials of `drill` in succession; the second replaces the first, whose audio is
  // discarded. `secondsSince1970` seeds them. Aborts unless it is at least 0 and below 2^64.
  Session(Drill drill, WorkQueues queues, std::unique_ptr<Player> player, double secondsSince1970,
          Trials trials = Trials::standard);
  // Same for the trials of any course. One that is not free starts with its own first trial.
  Session(std::unique_ptr<Course> course, Drill drill, WorkQueues queues,
          std::unique_ptr<Player> player, double secondsSince1970, Trials trials);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The subject of a notification: a published field, or the practice record.
  enum class Field : std::uint8_t {
    drill,
    material,
    trial,
    answer,
    grade,
    currentSlot,
    rendering,
    keeping,
    record
  };

  // Sent before each assignment of a published field, equal values included. Also sent by submit(),
  // as Field::record, once the practice record has changed.
  Publisher<Field> objectWillChange;
  // Sent after each of these changes.
  Publisher<Field> objectDidChange;

  // Published fields.
  [[nodiscard]] Drill drill() const { return drill_; }
  [[nodiscard]] Material material() const { return material_; }
  [[nodiscard]] const std::optional<Trial>& trial() const { return trial_; }
  [[nodiscard]] double answer() const { return answer_; } // in the unit of Drills::grade
  [[nodiscard]] const std::optional<Drills::Grade>& grade() const { return grade_; }
  [[nodiscard]] std::int64_t currentSlot() const { return currentSlot_; }
  [[nodiscard]] bool rendering() const { return rendering_; }
  // What becomes of a submitted answer before it is graded.
  struct Keeping {
    bool isPending = false;           // it is being kept
    std::optional<std::string> error; // why it could not be kept; it can be submitted again
  };
  [[nodiscard]] const Keeping& keeping() const { return keeping_; }

  // True if the listener chooses drill and material.
  [[nodiscard]] bool isFree() const { return course_->isFree(); }
  // The place of the trial in a course that ends.
  [[nodiscard]] std::optional<Course::Place> place() const { return course_->place(); }
  // True if the last trial of a course is graded.
  [[nodiscard]] bool isOver() const;

  // Sets the drill and its default material and starts a trial, even if the drill stays the same. A
  // no-op unless isFree().
  void setDrill(Drill drill);
  // Sets the material and starts a trial, even if the material stays the same. A no-op unless
  // isFree().
  void setMaterial(Material material);
  // A no-op while an answer is being kept.
  void setAnswer(double answer);

  [[nodiscard]] const Profile& profile() const { return course_->profile(); }
  [[nodiscard]] const Player& player() const { return *player_; }
  // The counter from which the latest trial's seed is derived in a free course.
  [[nodiscard]] std::uint64_t counter() const { return counter_; }
  [[nodiscard]] const std::vector<Slot>& slots() const { return slots_; }
  [[nodiscard]] bool suspended() const { return suspended_; }

  // Discards the trial and starts a new one. The old audio plays on until the new one is rendered.
  // A no-op if the course has no next trial yet, or none at all.
  void newTrial();
  // Switches to `slot` (0 or more). A no-op if the trial has fewer slots.
  void select(std::int64_t slot);
  // Switches to the next slot, from the last one to the first.
  void cycleSlot();
  // True if the trial is rendered, neither graded nor being kept, and has an answer.
  [[nodiscard]] bool canSubmit() const;
  // Keeps the pending answer, grades and records it; see keeping(). A no-op unless canSubmit().
  void submit();
  // Stops playback until resume(). Until then, newly rendered trials do not play either. A no-op
  // while suspended.
  void suspend();
  // Ends a suspension and plays the slots again, with the current one audible.
  void resume();
  // Stops playback for good.
  void stopPlayback() { player_->stop(); }
  // Restores lost sound: loads the slots again, with the current one audible, when the output has
  // been opened or is due for a retry, and reports an outage once. Plays nothing while suspended.
  // If the player opens its output in the background, call this at least every second; the session
  // itself calls it when an opening ends.
  void followSound(SoundRecovery::Time now);

private:
  template <typename Member, typename Value>
  void assign(Field field, Member& member, Value&& value);
  [[nodiscard]] std::uint64_t nextSeed();
  void takeKept(const Course::Given& given, std::optional<std::string> error);
  void showVerdict(const Course::Given& given);
  void takeRender(std::uint64_t seed, std::vector<Slot> slots);
  void play();
  void followOpenings();
  [[nodiscard]] SoundRecovery::Sound sound() const;

  const Trials trials_;
  Drill drill_ = Drill::frequency;
  Material material_ = Material::pinkNoise;
  std::optional<Trial> trial_;
  double answer_ = 1000.0;
  std::optional<Drills::Grade> grade_;
  std::int64_t currentSlot_ = 0;
  bool rendering_ = false;
  Keeping keeping_;

  std::unique_ptr<Course> course_;
  std::unique_ptr<Player> player_;
  std::uint64_t counter_;
  std::vector<Slot> slots_;
  Switching switching_ = Switching::crossfade; // between slots_
  bool suspended_ = false;
  SoundRecovery recovery_;
  std::chrono::steady_clock::time_point rendered_; // when the trial could be heard first
  std::int64_t switches_ = 0;                      // to another slot, since then

  WorkQueues queues_;
  std::shared_ptr<Session*> self_; // lets pending work detect that the session is gone
  // The latest trial's seed: a trial that has been replaced before its turn is not rendered.
  std::shared_ptr<std::atomic<std::uint64_t>> wanted_;
};

} // namespace velto
