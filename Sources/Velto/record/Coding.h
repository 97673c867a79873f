// The JSON form of everything that is kept: which keys a record has, in which order.
//
// Encoding is compact and gives nothing when a number is not finite, which JSON cannot hold.
// Decoding is strict: a missing key, a value of another type, an unknown drill or material and
// malformed JSON all give nothing; unknown keys are skipped. Decoded numbers are not clamped.
// Any thread.
#pragma once

#include "Drills.h"
#include "Record.h"

#include <optional>
#include <string>
#include <string_view>

namespace velto::Coding {

// The JSON text of a value; none if one of its numbers is not finite.
[[nodiscard]] std::optional<std::string> encode(const Trial& trial);
[[nodiscard]] std::optional<std::string> encode(const Staircase& staircase);
[[nodiscard]] std::optional<std::string> encode(const Attempt& attempt);
[[nodiscard]] std::optional<std::string> encode(const BandRoll& roll);
[[nodiscard]] std::optional<std::string> encode(const Stored& stored);

// The value that the whole of `text` spells; none if it spells no such value.
[[nodiscard]] std::optional<Trial> decodeTrial(std::string_view text);
[[nodiscard]] std::optional<Staircase> decodeStaircase(std::string_view text);
[[nodiscard]] std::optional<Attempt> decodeAttempt(std::string_view text);
[[nodiscard]] std::optional<BandRoll> decodeBandRoll(std::string_view text);
[[nodiscard]] std::optional<Stored> decodeStored(std::string_view text);

} // namespace velto::Coding
