#include "LaunchOptions.h"

#include "NumberArgument.h"

#include <algorithm>

namespace velto {

bool Arguments::has(std::string_view name) const {
  return std::find(list_.begin(), list_.end(), name) != list_.end();
}

std::optional<std::string> Arguments::valueOf(std::string_view name) const {
  const auto found = std::find(list_.begin(), list_.end(), name);
  if (found == list_.end() || found + 1 == list_.end())
    return std::nullopt;
  return found[1];
}

LaunchOptions launchOptions(const Arguments& arguments) {
  LaunchOptions options;
  options.fair = arguments.has("--fair");
  options.shotPath = arguments.valueOf("--shot");
  if (const auto name = arguments.valueOf("--drill"))
    options.drill = Drill::fromRawValue(*name).value_or(Drill::frequency);
  if (const auto number = arguments.valueOf("--answer"))
    options.scriptedAnswer = numberArgument(*number);
  if (const auto appearance = arguments.valueOf("--appearance"))
    options.fixedDark = *appearance != "light";
  if (const auto list = arguments.valueOf("--session"))
    if (const auto results = arguments.valueOf("--results"))
      options.assignment = {.list = *list, .results = *results};
  return options;
}

std::optional<std::string> wrongUse(const Arguments& arguments) {
  if (!arguments.has("--session") && !arguments.has("--results"))
    return std::nullopt;
  for (const char* name : {"--session", "--results"})
    if (!arguments.valueOf(name))
      return std::string("--session and --results need each other and a file each; ") + name +
             " has none";
  return std::nullopt;
}

} // namespace velto
