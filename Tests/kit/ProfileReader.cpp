#include "ProfileReader.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

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
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (std::chrono::steady_clock::now() < end) {
    const auto profile = readProfile(file);
    if (profile && profile->attempts.size() >= attempts)
      return *profile;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  throw std::runtime_error("the answer does not reach the profile");
}

} // namespace velto::kit
