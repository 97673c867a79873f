// Reads a profile file with a plain JSON parser, independent of the program's own code.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velto::kit {

struct ReadAttempt {
  std::string drill, material;
  double difficulty = 0;
  bool correct = false;
  double error = 0;
  std::optional<std::int64_t> bandIndex;

  bool operator==(const ReadAttempt&) const = default;
};

struct ReadStaircase {
  double difficulty = 0;
  std::int64_t consecutiveCorrect = 0, reversals = 0, lastDirection = 0;

  bool operator==(const ReadStaircase&) const = default;
};

struct ReadProfile {
  std::vector<ReadAttempt> attempts;
  std::map<std::string, ReadStaircase> staircases; // by drill

  bool operator==(const ReadProfile&) const = default;
};

// nullopt if the file is missing or incomplete, for example because it is being written.
[[nodiscard]] std::optional<ReadProfile> readProfile(const std::filesystem::path& file);

// Waits until the profile holds `attempts` attempts. Throws std::runtime_error on a timeout.
[[nodiscard]] ReadProfile waitForAttempts(const std::filesystem::path& file, std::size_t attempts);

} // namespace velto::kit
