// Reads a profile file as any JSON reader would, apart from the program's own code.
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

// None if there is no file, or if it is no complete profile: it may be under way.
[[nodiscard]] std::optional<ReadProfile> readProfile(const std::filesystem::path& file);

// The profile once it holds `attempts` attempts; waits for that, and throws a std::runtime_error
// when it does not come.
[[nodiscard]] ReadProfile waitForAttempts(const std::filesystem::path& file, std::size_t attempts);

} // namespace velto::kit
