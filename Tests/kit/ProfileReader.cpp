#include "ProfileReader.h"

#include "Eventually.h"

#include <nlohmann/json.hpp>

#include <fstream>

namespace velto::kit {

std::optional<ReadProfile> readProfile(const std::filesystem::path& file) {
  std::ifstream stream(file);
  const auto json = nlohmann::json::parse(stream, nullptr, false);
  if (!json.is_object())
    return std::nullopt;
  ReadProfile profile;
  for (const auto& row : json.at("attempts")) {
    ReadAttempt attempt{.drill = row.at("drill"),
                        .material = row.at("material"),
                        .difficulty = row.at("difficulty"),
                        .correct = row.at("correct"),
                        .error = row.at("error"),
                        .bandIndex = std::nullopt};
    if (row.contains("bandIndex"))
      attempt.bandIndex = row.at("bandIndex").get<std::int64_t>();
    profile.attempts.push_back(attempt);
  }
  for (const auto& [drill, value] : json.at("staircases").items())
    profile.staircases[drill] = {.difficulty = value.at("difficulty"),
                                 .consecutiveCorrect = value.at("consecutiveCorrect"),
                                 .reversals = value.at("reversals"),
                                 .lastDirection = value.at("lastDirection")};
  return profile;
}

ReadProfile waitForAttempts(const std::filesystem::path& file, std::size_t attempts) {
  std::optional<ReadProfile> profile;
  waitUntil(
      [&] {
        profile = readProfile(file);
        return profile && profile->attempts.size() >= attempts;
      },
      "the answer reaches the profile");
  return *profile;
}

} // namespace velto::kit
