// The manual page and the completion list the commands and switches that velto-lab takes.
#include "Command.h"

#include "Drill.h"
#include "LabRunner.h"
#include "kit/CapturedOutput.h"
#include "kit/RecordTesting.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::contentOf;
using testing::ScratchFolder;
using testing::Words;
using Names = std::set<std::string>;

const fs::path packaging = fs::path(VELTO_SOURCE_DIR) / "Packaging";

Names found(const std::string& text, const char* pattern) {
  const std::regex regex(pattern, std::regex::multiline);
  Names names;
  for (auto at = std::sregex_iterator(text.begin(), text.end(), regex);
       at != std::sregex_iterator(); ++at)
    names.insert((*at)[1]);
  return names;
}

// The switches of each command, as the program declares them; "" stands for the program itself.
std::map<std::string, Names> declared() {
  std::map<std::string, Names> all{{"", {"--help", "--version"}}};
  for (const Lab::Command& command : Lab::commands()) {
    CLI::App app;
    app.set_help_flag();
    const Lab::Action action = command.declare(app);
    Names& switches = all[std::string(command.name)];
    for (const CLI::Option* option : app.get_options())
      if (!option->get_positional())
        switches.insert(option->get_name());
  }
  return all;
}

// The switches of each command in the manual page, which has a subsection for each.
std::map<std::string, Names> documented() {
  const std::string page = contentOf(packaging / "velto-lab.1");
  std::map<std::string, Names> all;
  std::string text = page.substr(0, page.find("\n.Ss "));
  for (std::size_t at = page.find("\n.Ss "); at != page.npos;) {
    const std::size_t end = std::min(page.find("\n.S", at + 1), page.size());
    const std::size_t line = page.find('\n', at + 1);
    const std::string name = page.substr(at + 5, line - at - 5);
    for (const std::string& one : found(page.substr(line, end - line), "^\\.It Fl (-\\S+)"))
      all[name].insert("-" + one);
    all[name];
    at = page.compare(end, 5, "\n.Ss ") == 0 ? end : page.npos;
  }
  for (const std::string& one : found(text, "^\\.It Fl (-\\S+)"))
    all[""].insert("-" + one);
  return all;
}

// What bash offers to complete the last word.
Words offered(const Words& words) {
  const ScratchFolder folder;
  for (const char* file : {"one.csv", "one more.csv", "two.csv"})
    testing::put(folder.path() / file, "");
  std::string script = "set -eu; source " + (packaging / "velto-lab.bash-completion").string() +
                       "; complete -p velto-lab >/dev/null; COMP_WORDS=(velto-lab ";
  for (const std::string& word : words)
    script.append("'").append(word).append("' ");
  script += "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _velto_lab velto-lab "
            "\"${COMP_WORDS[-1]}\" '';"
            "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"";
  const auto result = kit::runChild({"/bin/bash", "--norc", "-c", script},
                                    {.environment = {}, .folder = folder.path().string()});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "");
  Words lines = kit::linesOf(result.out);
  std::sort(lines.begin(), lines.end());
  return lines;
}

Names asSet(const Words& words) {
  return {words.begin(), words.end()};
}

Words split(const std::string& name) {
  const std::size_t space = name.find(' ');
  return space == name.npos ? Words{name} : Words{name.substr(0, space), name.substr(space + 1)};
}

TEST(LabPages, TheManualPageListsEveryCommandAndSwitch) {
  EXPECT_EQ(documented(), declared());
}

TEST(LabPages, TheCompletionOffersTheCommands) {
  Names first{"--help", "--version"};
  std::map<std::string, Names> groups;
  for (const Lab::Command& command : Lab::commands()) {
    const Words words = split(std::string(command.name));
    first.insert(words[0]);
    if (words.size() == 2)
      groups[words[0]].insert(words[1]);
  }
  EXPECT_EQ(asSet(offered({""})), first);
  EXPECT_EQ(offered({"chec"}), Words{"check"});
  for (const auto& [group, names] : groups)
    EXPECT_EQ(asSet(offered({group, ""})), names);
}

TEST(LabPages, TheCompletionOffersValues) {
  EXPECT_EQ(offered({"render", "out", "--material", ""}), (Words{"drums", "pad", "pink"}));
  EXPECT_EQ(offered({"render", "out", "--drill", "l"}), Words{"level"});
  EXPECT_EQ(offered({"render", "out", "--seed", ""}), Words{});
  EXPECT_EQ(offered({"import", "one"}), (Words{"one more.csv", "one.csv"}));
}

TEST(LabPages, TheCompletionOffersTheSwitchesOfACommand) {
  for (const auto& [name, switches] : declared()) {
    if (name.empty())
      continue;
    Names expected = switches;
    expected.insert("--help");
    Words words = split(name);
    words.emplace_back("-");
    EXPECT_EQ(asSet(offered(words)), expected) << name;
  }
}

} // namespace
} // namespace velto
