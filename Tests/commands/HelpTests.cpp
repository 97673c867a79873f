// Command line, help, manual page and shell completion list the same switches.
#include "Help.h"

#include "Drill.h"
#include "kit/CapturedOutput.h"
#include "kit/ChildProcess.h"
#include "kit/RecordTesting.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::contentOf;
using testing::ScratchFolder;
using Names = std::set<std::string>;
using Words = std::vector<std::string>;

const fs::path root = VELTO_SOURCE_DIR;

Environment surroundings(std::map<std::string, std::string> variables) {
  return {[variables = std::move(variables)](const char* name) -> std::optional<std::string> {
            const auto found = variables.find(name);
            return found == variables.end() ? std::nullopt : std::optional(found->second);
          },
          [] { return std::nullopt; }};
}

std::string help(std::map<std::string, std::string> variables = {{"HOME", "/home/someone"}}) {
  return Help::text(surroundings(std::move(variables)));
}

// All matches of the first group of `pattern`.
Names found(const std::string& text, const char* pattern) {
  const std::regex regex(pattern, std::regex::multiline);
  Names names;
  for (auto at = std::sregex_iterator(text.begin(), text.end(), regex);
       at != std::sregex_iterator(); ++at)
    names.insert((*at)[1]);
  return names;
}

Names tableNames() {
  Names names;
  for (const Help::Switch& one : Help::switches())
    EXPECT_TRUE(names.insert(std::string(one.name)).second) << one.name << " is listed twice";
  return names;
}

// What bash offers to complete the last word.
Words offered(const Words& words) {
  const ScratchFolder folder;
  for (const char* file : {"one.png", "one more.png", "two.png"})
    testing::put(folder.path() / file, "");
  std::string script = "set -eu; source " + (root / "Packaging/velto.bash-completion").string() +
                       "; complete -p velto >/dev/null; COMP_WORDS=(";
  for (const std::string& word : words)
    script.append("'").append(word).append("' ");
  script += "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _velto velto \"${COMP_WORDS[-1]}\" '';"
            "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"";
  const auto result = kit::runChild({"/bin/bash", "--norc", "-c", script},
                                    {.environment = {}, .folder = folder.path().string()});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "");
  Words lines = kit::linesOf(result.out);
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST(Help, ListsExactlyTheSwitchesThatTheProgramParses) {
  const std::string sources = contentOf(root / "Sources/Velto/app/main.cpp") +
                              contentOf(root / "Sources/Velto/app/LaunchOptions.cpp");
  EXPECT_EQ(found(sources, "(?:has|valueOf)\\(\"(--[a-z-]+)\"\\)"), tableNames());
}

TEST(Help, PrintsALineWithTheValueOfEachSwitch) {
  const std::string text = help();
  EXPECT_EQ(found(text, "^  (--[a-z-]+) "), tableNames());
  for (const Help::Switch& one : Help::switches()) {
    EXPECT_FALSE(one.explanation.empty());
    std::string begin = "  ";
    begin.append(one.name).append(one.value.empty() ? "" : " ").append(one.value).append(" ");
    EXPECT_NE(text.find(begin), text.npos) << begin;
  }
}

TEST(Help, ListsTheModesInOrderOfPrecedence) {
  const std::string source = contentOf(root / "Sources/Velto/app/main.cpp");
  std::size_t before = 0;
  for (const Help::Switch& one : Help::switches()) {
    if (one.startsWindow)
      continue;
    const auto at = source.find(std::string("(\"").append(one.name).append("\")"));
    EXPECT_NE(at, source.npos) << one.name;
    EXPECT_GT(at, before) << one.name;
    before = at;
  }
}

TEST(Help, FitsEightyColumns) {
  for (const std::string& line : kit::linesOf(help() + "\n"))
    EXPECT_LE(line.size(), 80U) << line;
}

TEST(Help, EndsWithThePathOfTheRecord) {
  EXPECT_TRUE(help().ends_with("\n  /home/someone/.local/share/MORLA Velto/profile.json"));
  EXPECT_TRUE(help({{"XDG_DATA_HOME", "/data"}, {"HOME", "/home/someone"}})
                  .ends_with("\n  /data/MORLA Velto/profile.json"));
  EXPECT_TRUE(help({{"VELTO_PROFILE_DIR", "/x"}}).ends_with("\n  /x/profile.json"));
  EXPECT_TRUE(help({{"VELTO_PROFILE_DIR", "x"}})
                  .ends_with("\n  " + (fs::current_path() / "x/profile.json").string()));
  EXPECT_TRUE(help({}).ends_with("\n  unknown: no usable XDG_DATA_HOME and no home directory"));
}

TEST(Help, MatchesTheManualPage) {
  Names names;
  for (const std::string& name : found(contentOf(root / "Packaging/velto.1"), "^\\.It Fl (-\\S+)"))
    names.insert(std::string(1, '-').append(name));
  EXPECT_EQ(names, tableNames());
}

TEST(Help, MatchesTheCompletion) {
  const Words words = offered({"velto", ""});
  EXPECT_EQ(Names(words.begin(), words.end()), tableNames());
  EXPECT_EQ(words.size(), Help::switches().size());
}

TEST(Completion, OffersSwitchesWithTheTypedPrefix) {
  EXPECT_EQ(offered({"velto", "--b"}), (Words{"--bench", "--bench-audio", "--brand-check"}));
  EXPECT_EQ(offered({"velto", "--drill", "level", "--an"}), (Words{"--answer"}));
  EXPECT_EQ(offered({"velto", "--xyz"}), Words{});
}

TEST(Completion, OffersTheValuesOfASwitch) {
  Words drills;
  for (const Drill drill : Drill::allCases)
    drills.emplace_back(drill.rawValue());
  std::sort(drills.begin(), drills.end());
  EXPECT_EQ(offered({"velto", "--drill", ""}), drills);
  EXPECT_EQ(offered({"velto", "--drill", "po"}), (Words{"polarity"}));
  EXPECT_EQ(offered({"velto", "--appearance", ""}), (Words{"dark", "light"}));
  EXPECT_EQ(offered({"velto", "--bench-audio", ""}), (Words{"off", "on"}));
  EXPECT_EQ(offered({"velto", "--answer", ""}), Words{});
}

TEST(Completion, OffersFilesForAPicture) {
  EXPECT_EQ(offered({"velto", "--shot", ""}), (Words{"one more.png", "one.png", "two.png"}));
  EXPECT_EQ(offered({"velto", "--probe", "--shot", "one"}), (Words{"one more.png", "one.png"}));
}

} // namespace
} // namespace velto
