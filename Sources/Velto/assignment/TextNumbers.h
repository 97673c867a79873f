// Numbers in the files of an assignment.
//
// Any thread. Independent of the process's locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto::TextNumbers {

// The number that `text` spells, if it spells it the way it is written here: as Numbers::shortest()
// does, with `decimals` digits after the point, in decimal digits, or as 16 lower-case hexadecimal
// digits. nullopt for any other text, so that each number has one spelling.
[[nodiscard]] std::optional<double> real(std::string_view text);
[[nodiscard]] std::optional<double> fixed(std::string_view text, int decimals);
[[nodiscard]] std::optional<std::uint64_t> count(std::string_view text);
[[nodiscard]] std::optional<std::uint64_t> hexadecimal(std::string_view text);

// 16 lower-case hexadecimal digits.
[[nodiscard]] std::string hexadecimal(std::uint64_t value);

// FNV-1a with 64 bits (G. Fowler, L. C. Noll, K.-P. Vo). Texts that differ in a single byte have
// different hashes.
[[nodiscard]] std::uint64_t hash(std::string_view text);

} // namespace velto::TextNumbers
