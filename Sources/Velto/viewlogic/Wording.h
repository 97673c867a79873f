// The practice window's words for drills, materials, slots and verdicts.
#pragma once

#include "Drill.h"
#include "Grading.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto::Wording {

// "Frequency"
[[nodiscard]] std::string_view title(Drill drill);
// "One band is boosted. Point at it."
[[nodiscard]] std::string_view prompt(Drill drill);
// "Pink", "Drums", "Pad"
[[nodiscard]] std::string_view title(Material material);
// "A" and "B", or "1", "2", "3" for the polarity drill; `index` from 0.
[[nodiscard]] std::string slotTitle(Drill drill, std::int64_t index);
// What an answer is called: "Frequency", "How much louder".
[[nodiscard]] std::string_view answerName(Drill drill);
// The caption of a slot to answer with, `index` from 0: "?" until the flipped slot is known, then
// "FLIPPED" or "in phase".
[[nodiscard]] std::string_view slotCaption(std::int64_t index, std::optional<std::int64_t> flipped);
// The primary button: "Submit", "Next" or, after the last trial of a list, "Close".
[[nodiscard]] std::string_view primary(bool isGraded, bool isOver);
// What happens before the verdict: "rendering…", "saving…" or "listen, then answer".
[[nodiscard]] std::string_view status(bool isRendering, bool isKeeping);
// "HIT" or "MISS"
[[nodiscard]] std::string_view verdict(bool correct);
// "you 1k Hz   ·   actual 3.15k Hz   ·   1.66 oct off"
[[nodiscard]] std::string verdictDetail(const Drills::Grade& grade);
// "MISS, you 1k Hz, actual 3.15k Hz, 1.66 oct off": the whole verdict for screen readers.
[[nodiscard]] std::string announcement(const Drills::Grade& grade);

// "3 of 20"; `number` from 1.
[[nodiscard]] std::string progress(std::size_t number, std::size_t count);
// "The answer could not be saved: No space left on device. Submit it again."
[[nodiscard]] std::string notSaved(std::string_view reason);

} // namespace velto::Wording
