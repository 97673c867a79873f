// Environment variables and the user's home.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace velto {

// Source of look-ups: the process, or a test. Functions are called only if their result is needed.
struct Environment {
  std::function<std::optional<std::string>(const char* name)> variable;
  std::function<std::optional<std::string>()> accountHome; // from the account database

  // The environment of this process. Main thread only.
  [[nodiscard]] static Environment ofProcess();

  // The user's home: HOME if it is an absolute path, else that of the account. Nullopt if neither
  // is one.
  [[nodiscard]] std::optional<std::filesystem::path> home() const;

  // The value of a variable if it is an absolute path.
  [[nodiscard]] std::optional<std::filesystem::path> absolutePath(const char* name) const;

  // Sets a variable of this process, or removes it if `value` is nullopt. No other thread may use
  // the environment meanwhile.
  static void setVariable(const char* name, const std::optional<std::string>& value);
};

} // namespace velto
