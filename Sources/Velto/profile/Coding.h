// The JSON form of stored types: their keys, in order.
//
// Encoding is compact. Decoding is strict: a missing key, a value of the wrong type, an unknown
// drill or material, and malformed JSON give nullopt. Unknown keys are skipped; numbers are not
// clamped. Any thread.
#pragma once

#include "Record.h"
#include "Staircase.h"
#include "Trial.h"

#include <optional>
#include <string>
#include <string_view>

namespace velto::Coding {

// The JSON text of a value; nullopt if one of its numbers is not finite, which JSON cannot hold.
[[nodiscard]] std::optional<std::string> encode(const Trial& trial);
[[nodiscard]] std::optional<std::string> encode(const Staircase& staircase);
[[nodiscard]] std::optional<std::string> encode(const Attempt& attempt);
[[nodiscard]] std::optional<std::string> encode(const BandRoll& roll);
[[nodiscard]] std::optional<std::string> encode(const Stored& stored);

// Decodes `text`; nullopt unless all of it is one value of that type.
[[nodiscard]] std::optional<Trial> decodeTrial(std::string_view text);
[[nodiscard]] std::optional<Staircase> decodeStaircase(std::string_view text);
[[nodiscard]] std::optional<Attempt> decodeAttempt(std::string_view text);
[[nodiscard]] std::optional<BandRoll> decodeBandRoll(std::string_view text);
[[nodiscard]] std::optional<Stored> decodeStored(std::string_view text);

} // namespace velto::Coding
