// What a process knows about its surroundings.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace velto {

// Where answers come from: the process, or a test. Each function is called only where its answer
// matters.
struct Environment {
  std::function<std::optional<std::string>(const char* name)> variable;
  std::function<std::optional<std::string>()> accountHome; // from the account database

  // The environment of this process. Main thread only.
  [[nodiscard]] static Environment ofProcess();

  // Sets a variable of this process, or removes it. No other thread may use the environment
  // meanwhile.
  static void setVariable(const char* name, const std::optional<std::string>& value);
};

} // namespace velto
