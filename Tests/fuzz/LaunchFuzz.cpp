// Parses any command line, one argument per line. Every number accepted as an answer can be graded.
#include "FatalError.h"
#include "Grading.h"
#include "LaunchOptions.h"
#include "NumberArgument.h"
#include "Numbers.h"
#include "Trial.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace velto;

void require(bool holds, const char* message) {
  if (!holds)
    fatalError(message);
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines{"velto"};
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// Checks the value of a switch against a second implementation.
void requireValue(const std::vector<std::string>& list, const Arguments& arguments,
                  std::string_view name) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i] != name)
      continue;
    require(arguments.has(name), "a switch was not found");
    const auto value = arguments.valueOf(name);
    require(value.has_value() == (i + 1 < list.size()), "a value is missing or unexpected");
    require(!value || *value == list[i + 1], "the value is not the next argument");
    return;
  }
  require(!arguments.has(name) && !arguments.valueOf(name), "an absent switch was found");
}

void gradeAnswer(double answer) {
  if (std::isfinite(answer))
    require(numberArgument(Numbers::shortest(answer)) == answer, "a number changes as text");
  for (const Drill drill : {Drill::frequency, Drill::level, Drill::dynamics})
    static_cast<void>(Drills::grade(answer, Drills::makeTrial(20, Material::pad, 5, Drill(drill))));
  if (answer >= -0x1p63 && answer < 0x1p63)
    static_cast<void>(
        Drills::grade(answer, Drills::makeTrial(20, Material::pad, 5, Drill::polarity)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto list = linesOf(std::string_view(reinterpret_cast<const char*>(data), size));
  const Arguments arguments(list);
  for (const char* name : {"--fair", "--help", "--version", "--probe", "--bench-audio",
                           "--brand-check", "--bench", "--audio-selftest", "--seed-demo", "--shot",
                           "--drill", "--answer", "--appearance", "--session", "--results"})
    requireValue(list, arguments, name);
  const LaunchOptions options = launchOptions(arguments);
  require(options.fair == arguments.has("--fair"), "wrong choice of trials");
  require(options.shotPath == arguments.valueOf("--shot"), "wrong path of the snapshot");
  require(options.fixedDark.has_value() == arguments.valueOf("--appearance").has_value(),
          "an appearance is missing or unexpected");
  require(wrongUse(arguments).has_value() ==
              ((arguments.has("--session") || arguments.has("--results")) && !options.assignment),
          "a list without results, or results without a list, are not refused");
  if (options.scriptedAnswer)
    gradeAnswer(*options.scriptedAnswer);
  return 0;
}
