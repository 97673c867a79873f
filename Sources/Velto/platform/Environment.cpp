#include "Environment.h"

#include <cstdlib>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

namespace velto {

namespace {

std::optional<std::string> variableOfProcess(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::optional<std::string> homeOfAccount() {
  const passwd* account = getpwuid(getuid());
  if (account == nullptr || account->pw_dir == nullptr)
    return std::nullopt;
  return account->pw_dir;
}

std::optional<std::filesystem::path> absolute(const std::optional<std::string>& text) {
  if (!text || !std::filesystem::path(*text).is_absolute())
    return std::nullopt;
  return *text;
}

} // namespace

Environment Environment::ofProcess() {
  return {variableOfProcess, homeOfAccount};
}

std::optional<std::filesystem::path> Environment::home() const {
  const auto home = absolutePath("HOME");
  return home ? home : absolute(accountHome());
}

std::optional<std::filesystem::path> Environment::absolutePath(const char* name) const {
  return absolute(variable(name));
}

void Environment::setVariable(const char* name, const std::optional<std::string>& value) {
  if (value)
    setenv(name, value->c_str(), 1);
  else
    unsetenv(name);
}

} // namespace velto
