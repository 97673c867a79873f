// Statuses, help and complaints of velto-lab.
#include "CommandLine.h"

#include "LabRunner.h"
#include "kit/CapturedOutput.h"

#include <gtest/gtest.h>

#include <sstream>

namespace velto {
namespace {

using kit::ChildResult;
using testing::isOneComplaint;
using testing::LabRunner;
using testing::Words;
using Stream = kit::ChildOptions::Stream;

Words wordsOf(std::string_view name) {
  std::istringstream text{std::string(name)};
  Words words;
  for (std::string word; text >> word;)
    words.push_back(word);
  return words;
}

Words with(std::string_view name, const Words& more) {
  Words words = wordsOf(name);
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

void expectWrongUse(const Words& words) {
  const ChildResult result = LabRunner().run(words);
  const std::string all = ::testing::PrintToString(words);
  EXPECT_EQ(result.status, Lab::wrongUse) << all;
  EXPECT_EQ(result.out, "") << all;
  EXPECT_TRUE(isOneComplaint(result.error)) << all << result.error;
}

TEST(LabCommandLine, RefusesWhatNoCommandTakes) {
  for (const Lab::Command& command : Lab::commands()) {
    expectWrongUse(with(command.name, {"--no-such-switch"}));
    expectWrongUse(with(command.name, {"--json=yes"}));
    expectWrongUse(with(command.name, {"-x"}));
  }
}

TEST(LabCommandLine, RefusesOtherWords) {
  for (const Words& words : {Words{}, Words{""}, Words{"chekc"}, Words{"--chekc"}, Words{"-"},
                             Words{"check", "--version"}, Words{"check", "check"},
                             Words{"check", "--", "x"}, Words{"check", "two\nlines"}})
    expectWrongUse(words);
}

TEST(LabCommandLine, NamesWhatIsWrongAndTheHelpThatExplainsIt) {
  const LabRunner lab;
  EXPECT_EQ(lab.run({}).error, "velto-lab: a command is missing; see velto-lab --help\n");
  EXPECT_EQ(lab.run({"chekc", "x"}).error,
            "velto-lab: unknown command 'chekc'; see velto-lab --help\n");
  EXPECT_EQ(lab.run({"check", "--jsno"}).error,
            "velto-lab: unknown switch '--jsno'; see velto-lab check --help\n");
  EXPECT_EQ(lab.run({"check", "x"}).error,
            "velto-lab: unexpected argument 'x'; see velto-lab check --help\n");
  EXPECT_EQ(lab.run({"check", "--json=yes"}).error,
            "velto-lab: --json takes no value; see velto-lab check --help\n");
}

TEST(LabCommandLine, ListsEveryCommandInTheHelp) {
  const ChildResult result = LabRunner().run({"--help"});
  EXPECT_EQ(result.status, Lab::done);
  EXPECT_EQ(result.error, "");
  for (const Lab::Command& command : Lab::commands())
    EXPECT_NE(result.out.find("\n  " + std::string(command.name) + " "), std::string::npos)
        << command.name;
}

TEST(LabCommandLine, NamesTheGuideInTheHelp) {
  const std::string help = LabRunner().run({"--help"}).out;
  EXPECT_NE(help.find("guide.md in\nshare/doc/velto of the installation."), std::string::npos)
      << help;
}

TEST(LabCommandLine, ExplainsEveryCommandInEightyColumns) {
  const LabRunner lab;
  std::vector<Words> all{{"--help"}};
  for (const Lab::Command& command : Lab::commands())
    all.push_back(with(command.name, {"--help"}));
  for (const Words& words : all) {
    const ChildResult result = lab.run(words);
    EXPECT_EQ(result.status, Lab::done);
    EXPECT_EQ(result.error, "");
    EXPECT_NE(result.out.find("\nUsage: velto-lab "), std::string::npos) << result.out;
    // In one layout, whatever the version of CLI11.
    EXPECT_NE(result.out.find("\nSwitches:\n  --help                  print "), std::string::npos)
        << result.out;
    EXPECT_EQ(result.out.find("POSITIONALS"), std::string::npos) << result.out;
    for (const std::string& line : kit::linesOf(result.out)) {
      EXPECT_LE(line.size(), 80U) << line;
      EXPECT_FALSE(line.ends_with(' ')) << line;
    }
  }
}

TEST(LabCommandLine, PrintsItsVersion) {
  EXPECT_EQ(LabRunner().run({"--version"}).out, "velto-lab " VELTO_VERSION "\n");
}

TEST(LabCommandLine, FailsIfItsOutputIsLost) {
  const LabRunner lab;
  for (const Words& words : {Words{"--help"}, Words{"--version"}, Words{"check"}}) {
    const ChildResult full = lab.run(words, {.out = Stream::fullDisk});
    EXPECT_EQ(full.status, Lab::failed);
    EXPECT_TRUE(isOneComplaint(full.error)) << full.error;
    EXPECT_EQ(lab.run(words, {.out = Stream::closed}).status, Lab::failed);
    EXPECT_EQ(lab.run(words, {.out = Stream::readerGone}).status, Lab::done);
    EXPECT_EQ(lab.run(words, {.out = Stream::full}).out, lab.run(words).out);
  }
}

// ---- With commands of the test ----

void statusOf(Lab::Action (*declare)(CLI::App&), int status, const std::string& complaint) {
  const std::array commands{Lab::Command{"first", "a command",
                                         [](CLI::App&) -> Lab::Action {
                                           return [] { ADD_FAILURE() << "not asked for"; };
                                         }},
                            Lab::Command{"group one", "another", declare},
                            Lab::Command{"group two", "a third", [](CLI::App&) -> Lab::Action {
                                           return [] { ADD_FAILURE() << "not asked for"; };
                                         }}};
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(Lab::run(commands, {"group", "one"}), status);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), complaint);
}

TEST(LabCommandLine, GivesEachKindOfEndItsStatus) {
  statusOf([](CLI::App&) -> Lab::Action { return [] {}; }, 0, "");
  statusOf([](CLI::App&) -> Lab::Action { return [] { throw Lab::Failure("no\nluck"); }; }, 1,
           "velto-lab: no?luck\n");
  statusOf([](CLI::App&) -> Lab::Action { return [] { throw Lab::WrongUse("no sense"); }; }, 2,
           "velto-lab: no sense; see velto-lab group one --help\n");
  statusOf([](CLI::App&) -> Lab::Action { return [] { throw std::bad_alloc(); }; }, 1,
           "velto-lab: std::bad_alloc\n");
}

TEST(LabCommandLine, AsksForACommandOfAGroup) {
  const std::array commands{Lab::Command{"group one", "a command",
                                         [](CLI::App&) -> Lab::Action { return [] { FAIL(); }; }}};
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(Lab::run(commands, {"group"}), Lab::wrongUse);
  EXPECT_EQ(Lab::run(commands, {"group", "two"}), Lab::wrongUse);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "velto-lab: a command is missing; see velto-lab group --help\n"
            "velto-lab: unknown command 'two'; see velto-lab group --help\n");
}

} // namespace
} // namespace velto
