// Invariants of a session.
#pragma once

#include "Session.h"

#include <string>

namespace velto::kit {

// The violated invariant; empty if all hold. `device` means that every output device starts at once
// and none fails.
[[nodiscard]] inline std::string brokenInvariant(Session& session, bool device) {
  const auto& trial = session.trial();
  if (!trial)
    return "there is a trial";
  const bool polarity = trial->drill == Drill::polarity;
  if (trial->seed != session.counter())
    return "the trial's seed is the counter";
  if (trial->drill != session.drill() || trial->material != session.material())
    return "the trial is of the chosen drill and material";
  if (trial->slots != (polarity ? 3 : 2))
    return "a trial has its drill's number of slots";
  if (session.currentSlot() < 0 || session.currentSlot() >= trial->slots)
    return "the current slot is one of the trial's";
  if (session.rendering() && session.grade())
    return "no trial is graded before it is rendered";
  if (!session.rendering() && session.slots().size() != static_cast<std::size_t>(trial->slots))
    return "a rendered trial has its slots";
  if (session.canSubmit() !=
      (!session.grade() && !session.rendering() && (!polarity || session.answer() >= 0)))
    return "what is rendered, answered and not graded can be submitted";
  if (session.suspended() && session.player().isPlaying())
    return "nothing plays while suspended";
  if (device && !session.suspended() && !session.slots().empty() && !session.player().isPlaying())
    return "what is rendered plays unless suspended";
  if (session.player().isPlaying() && !session.rendering() &&
      session.player().current() != session.currentSlot())
    return "the current slot is the one that is heard";
  return "";
}

} // namespace velto::kit
