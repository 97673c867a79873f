// Environment variables and the user's home.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace velto {

// Source of environment look-ups: this process, or a test. Functions are called only if their
// result is needed.
struct Environment {
  std::function<std::optional<std::string>(const char* name)> variable;
  std::function<std::optional<std::string>()> accountHome; // from the account database

  // The environment of this process. Main thread only.
  [[nodiscard]] static Environment ofProcess();

  // The user's home: HOME if it is an absolute path, else the account's home; nullopt if neither is
  // absolute.
  [[nodiscard]] std::optional<std::filesystem::path> home() const;

  // The value of a variable; nullopt unless it is an absolute path.
  [[nodiscard]] std::optional<std::filesystem::path> absolutePath(const char* name) const;

  // Sets a variable of this process, or removes it if `value` is nullopt. No other thread may use
  // the environment during the call.
  static void setVariable(const char* name, const std::optional<std::string>& value);
};

} // namespace velto
