// Compares the session with a model of its rules over any sequence of calls, with renders that
// arrive late or out of order and devices that do not start.
#include "Session.h"

#include "kit/FakeOutput.h"
#include "kit/ManualQueues.h"
#include "kit/ScratchProfile.h"
#include "kit/SessionInvariants.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <rapidcheck/state.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace velto {
namespace {

constexpr double launchTime = 1'700'000'000;
constexpr std::uint64_t seedStep = 40503;

// A pending trial: to be rendered in the background, then delivered to the main thread.
struct Errand {
  std::uint64_t seed;
  std::size_t slots;
};

struct Model {
  Drill drill = Drill::frequency;
  Material material = Material::pinkNoise;
  std::uint64_t counter = static_cast<std::uint64_t>(launchTime);
  std::int64_t slot = 0, heard = 0;
  double answer = 1000;
  bool rendering = true, graded = false, suspended = false, playing = false, refused = false;
  std::size_t loadedSlots = 0, recorded = 0;
  std::deque<Errand> background, main;

  Model() {
    newTrial();
    newTrial();
  }

  [[nodiscard]] std::int64_t slotCount() const { return drill == Drill::polarity ? 3 : 2; }

  void newTrial() {
    counter += seedStep;
    graded = false;
    slot = 0;
    rendering = true;
    answer = drill == Drill::frequency  ? 1000
             : drill == Drill::level    ? 2
             : drill == Drill::dynamics ? 5
                                        : -1;
    background.push_back({counter, static_cast<std::size_t>(slotCount())});
  }
  void setDrill(Drill next) {
    drill = next;
    material = drill == Drill::dynamics   ? Material::drums
               : drill == Drill::polarity ? Material::pad
                                          : Material::pinkNoise;
    newTrial();
  }
  [[nodiscard]] bool canSubmit() const {
    return !graded && !rendering && (drill != Drill::polarity || answer >= 0);
  }
  void load(std::int64_t startAt) {
    playing = !refused;
    if (playing)
      heard = startAt;
  }
  void select(std::int64_t next) {
    if (next >= slotCount())
      return;
    slot = next;
    if (playing)
      heard = next;
  }
  void render(std::size_t index) {
    if (index >= background.size())
      return;
    if (background[index].seed == counter) // else replaced
      main.push_back(background[index]);
    background.erase(background.begin() + static_cast<std::ptrdiff_t>(index));
  }
  void deliver() {
    if (main.empty())
      return;
    const Errand errand = main.front();
    main.pop_front();
    if (errand.seed != counter)
      return;
    rendering = false;
    loadedSlots = errand.slots;
    slot = 0;
    if (!suspended)
      load(0);
  }
  void resume() {
    if (!suspended)
      return;
    suspended = false;
    if (loadedSlots > 0)
      load(slot);
  }
};

struct Rig {
  kit::ScratchProfile scratch;
  kit::ManualQueues work;
  kit::FakeOutput output;
  Session session{Drill::frequency, work.queues(),
                  kit::makePlayer(output.factory(), std::chrono::milliseconds(1)), launchTime};
};

void requireSame(const Model& model, Rig& rig) {
  Session& session = rig.session;
  RC_ASSERT(kit::brokenInvariant(session, false) == "");
  RC_ASSERT(session.drill() == model.drill);
  RC_ASSERT(session.material() == model.material);
  RC_ASSERT(session.counter() == model.counter);
  RC_ASSERT(session.currentSlot() == model.slot);
  RC_ASSERT(session.answer() == model.answer);
  RC_ASSERT(session.rendering() == model.rendering);
  RC_ASSERT(session.grade().has_value() == model.graded);
  RC_ASSERT(session.canSubmit() == model.canSubmit());
  RC_ASSERT(session.suspended() == model.suspended);
  RC_ASSERT(session.slots().size() == model.loadedSlots);
  RC_ASSERT(session.player().isPlaying() == model.playing);
  RC_ASSERT(session.player().current() == model.heard);
  RC_ASSERT(session.profile().attempts().size() == model.recorded);
  RC_ASSERT(rig.work.background.size() == model.background.size());
  RC_ASSERT(rig.work.main.size() == model.main.size());
  RC_ASSERT(model.graded ||
            session.trial()->difficulty == session.profile().staircase(model.drill).difficulty);
}

// Applies one event to the model and to the session, and compares them.
struct Step : rc::state::Command<Model, Rig> {
  virtual void act(Rig& rig) const = 0;

  void run(const Model& before, Rig& rig) const override {
    act(rig);
    requireSame(nextState(before), rig);
  }
};

struct NewTrial final : Step {
  void apply(Model& model) const override { model.newTrial(); }
  void act(Rig& rig) const override { rig.session.newTrial(); }
  void show(std::ostream& out) const override { out << "new trial"; }
};

struct SetDrill final : Step {
  Drill drill = Drill::allCases[*rc::gen::inRange<std::size_t>(0, 4)];

  void apply(Model& model) const override { model.setDrill(drill); }
  void act(Rig& rig) const override { rig.session.setDrill(drill); }
  void show(std::ostream& out) const override { out << drill.rawValue(); }
};

struct SetMaterial final : Step {
  Material material = Material::allCases[*rc::gen::inRange<std::size_t>(0, 3)];

  void apply(Model& model) const override {
    model.material = material;
    model.newTrial();
  }
  void act(Rig& rig) const override { rig.session.setMaterial(material); }
  void show(std::ostream& out) const override { out << material.rawValue(); }
};

struct Select final : Step {
  std::int64_t slot = *rc::gen::inRange<std::int64_t>(0, 4);

  void apply(Model& model) const override { model.select(slot); }
  void act(Rig& rig) const override { rig.session.select(slot); }
  void show(std::ostream& out) const override { out << "slot " << slot; }
};

struct Cycle final : Step {
  void apply(Model& model) const override { model.select((model.slot + 1) % model.slotCount()); }
  void act(Rig& rig) const override { rig.session.cycleSlot(); }
  void show(std::ostream& out) const override { out << "next slot"; }
};

struct Answer final : Step {
  double answer = *rc::gen::element(-1.0, 0.0, 1.0, 2.0, 3.5, 1000.0);

  void apply(Model& model) const override { model.answer = answer; }
  void act(Rig& rig) const override { rig.session.setAnswer(answer); }
  void show(std::ostream& out) const override { out << "answer " << answer; }
};

struct Submit final : Step {
  void apply(Model& model) const override {
    if (!model.canSubmit())
      return;
    model.graded = true;
    ++model.recorded;
  }
  void act(Rig& rig) const override { rig.session.submit(); }
  void show(std::ostream& out) const override { out << "submit"; }
};

// Finishes one render, not always the oldest.
struct Render final : Step {
  std::size_t index = *rc::gen::weightedOneOf<std::size_t>(
      {{3, rc::gen::just<std::size_t>(0)}, {1, rc::gen::inRange<std::size_t>(0, 4)}});

  void apply(Model& model) const override { model.render(index); }
  void act(Rig& rig) const override { kit::ManualQueues::runOne(rig.work.background, index); }
  void show(std::ostream& out) const override { out << "render " << index << " ends"; }
};

struct Deliver final : Step {
  void apply(Model& model) const override { model.deliver(); }
  void act(Rig& rig) const override { kit::ManualQueues::runOne(rig.work.main); }
  void show(std::ostream& out) const override { out << "a render arrives"; }
};

// As the window does when it loses the focus.
struct Suspend final : Step {
  void apply(Model& model) const override {
    model.suspended = true;
    model.playing = false;
  }
  void act(Rig& rig) const override { rig.session.suspend(); }
  void show(std::ostream& out) const override { out << "suspend"; }
};

struct Resume final : Step {
  void apply(Model& model) const override { model.resume(); }
  void act(Rig& rig) const override { rig.session.resume(); }
  void show(std::ostream& out) const override { out << "resume"; }
};

// From now on, devices start or refuse to.
struct Refuse final : Step {
  bool refused = *rc::gen::weightedElement<bool>({{1, true}, {2, false}});

  // An open device would keep playing.
  void checkPreconditions(const Model& model) const override { RC_PRE(!model.playing); }
  void apply(Model& model) const override { model.refused = refused; }
  void act(Rig& rig) const override {
    RC_ASSERT(rig.output.waitUntilClosed());
    rig.output.refuse(refused ? std::optional<std::string>("no device") : std::nullopt);
  }
  void show(std::ostream& out) const override { out << (refused ? "no device" : "a device"); }
};

struct Play final : Step {
  void apply(Model&) const override {}
  void act(Rig& rig) const override {
    static_cast<void>(rig.output.pull(2000, 480));
    RC_ASSERT(!rig.output.overran());
  }
  void show(std::ostream& out) const override { out << "sound"; }
};

// Favours steps that deliver a pending trial, then steps that use it. With a uniform choice, the
// next trial would usually start before either.
auto anyStep() {
  using namespace rc::state::gen;
  return [any = execOneOfWithArgs<NewTrial, SetDrill, SetMaterial, Select, Cycle, Answer, Submit,
                                  Render, Deliver, Suspend, Resume, Refuse, Play>(),
          arrive = execOneOfWithArgs<Render, Deliver, Select>(),
          use = execOneOfWithArgs<Select, Cycle, Answer, Submit, Suspend, Resume, Play>()](
             const Model& model) {
    return rc::gen::weightedOneOf<std::shared_ptr<const rc::state::Command<Model, Rig>>>(
        {{2, any(model)},
         {model.rendering ? 3U : 0U, arrive(model)},
         {model.rendering ? 0U : 3U, use(model)}});
  };
}

RC_GTEST_PROP(SessionLaws, MatchesTheModelForAnySequenceOfEvents, ()) {
  Rig rig;
  const Model model;
  requireSame(model, rig);
  rc::state::check(model, rig, anyStep());
}

} // namespace
} // namespace velto
