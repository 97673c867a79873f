// The practice window's words, for the eye and for screen readers.
#pragma once

#include "Drill.h"
#include "Grading.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto::Wording {

// --- Texts that never change ---

inline constexpr std::string_view wordmark = "MORLA Velto";
// Lines do not break after a dot.
inline constexpr std::string_view subtitle =
    "VELTO GYM ·\u00a0FREQUENCY ·\u00a0LEVEL ·\u00a0DYNAMICS ·\u00a0POLARITY";
inline constexpr std::string_view difficulty = "DIFFICULTY";
inline constexpr std::string_view actual = "ACTUAL"; // before the right answer
inline constexpr std::string_view switchHint = "space = switch";
inline constexpr std::string_view keyHint = "1/2/3 pick · space switch · ↩ submit";
// The figures of the side panel, its map and its curve.
inline constexpr std::string_view streak = "STREAK";
inline constexpr std::string_view today = "TODAY";
inline constexpr std::string_view accuracy = "ACC";
inline constexpr std::string_view mapTitle = "weakness map";
inline constexpr std::string_view curveHint = "answer a few to draw the curve";
// Names for screen readers: groups of choices, and the map.
inline constexpr std::string_view drills = "Drill";
inline constexpr std::string_view versions = "Version";
inline constexpr std::string_view materials = "Material";
inline constexpr std::string_view map = "Weakness map";

// --- Texts of what is shown ---

// "Frequency"
[[nodiscard]] std::string_view title(Drill drill);
// "One band is boosted. Point at it."
[[nodiscard]] std::string_view prompt(Drill drill);
// "Pink", "Drums", "Pad"
[[nodiscard]] std::string_view title(Material material);
// "A" and "B", or "1", "2", "3" for the polarity drill; `index` from 0.
[[nodiscard]] std::string slotTitle(Drill drill, std::int64_t index);
// "Play A": the button that plays the slot with this title, for screen readers.
[[nodiscard]] std::string playName(std::string_view slotTitle);
// "Difficulty, 20", for screen readers; `value` as it is shown.
[[nodiscard]] std::string spokenDifficulty(std::string_view value);
// What an answer is called: "Frequency", "How much louder".
[[nodiscard]] std::string_view answerName(Drill drill);
// "1 kHz" or, once the right answer is known, "1 kHz, actual 3.15 kHz"; for screen readers. Both
// are the values as they are spoken; `truth` is empty until it is known.
[[nodiscard]] std::string spokenAnswer(std::string_view answer, std::string_view truth);
// "Slot 1": a slot to answer with, `index` from 0.
[[nodiscard]] std::string slotName(std::int64_t index);
// The caption of a slot to answer with, `index` from 0: "?" until the flipped slot is known, then
// "FLIPPED" or "in phase".
[[nodiscard]] std::string_view slotCaption(std::int64_t index, std::optional<std::int64_t> flipped);
// The primary button: "Submit", "Next" or, after the last trial of a list, "Close".
[[nodiscard]] std::string_view primary(bool isGraded, bool isOver);
// All of these that a course shows; only one that ends has a last trial.
[[nodiscard]] std::vector<std::string_view> primaryTexts(bool ends);
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
// "Trial 3 of 20", for screen readers.
[[nodiscard]] std::string spokenProgress(std::string_view progress);
// "The answer could not be saved: No space left on device. Submit it again."
[[nodiscard]] std::string notSaved(std::string_view reason);

} // namespace velto::Wording
