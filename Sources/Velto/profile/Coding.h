// The JSON form of stored types: their keys, in order.
//
// Encoding is compact. Decoding is strict: a missing key, a value of the wrong type, an unknown
// drill or material, and malformed JSON give nullopt. Unknown keys are skipped; numbers are not
// clamped. Any thread.
#pragma once

#include "Merging.h"
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

// A backup is a profile file with more keys: it can be renamed to one. `stored` is the encoded
// record. nullopt as in encode().
[[nodiscard]] std::optional<std::string> encodeBackup(std::string_view stored,
                                                      const std::vector<Attempt>& unsaved,
                                                      std::optional<std::int64_t> fileChanged,
                                                      std::int64_t save);
// Without these keys, as earlier versions wrote it: a backup of a file that was last changed in
// 1970, with no unsaved answers.
[[nodiscard]] std::optional<Backup> decodeBackup(std::string_view text);

} // namespace velto::Coding
