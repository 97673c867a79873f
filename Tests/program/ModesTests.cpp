// The program's modes without a window, run as a user would run them.
#include "kit/CapturedOutput.h"
#include "kit/ChildProcess.h"

#include "kit/RecordTesting.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace velto {
namespace {

namespace fs = std::filesystem;
using kit::ChildOptions;
using kit::ChildResult;
using testing::contentOf;
using testing::ScratchFolder;
using Stream = ChildOptions::Stream;
using Words = std::vector<std::string>;

const std::string probePassed = "\n43 checks, 0 failures\n";
const std::string noDisplay = "Velto: there is no display to open a window on\n";
const std::string refusal = "refusing to seed demo data without VELTO_PROFILE_DIR set\n";
const std::string seeded = "seeded 160 demo attempts\n";

// No display, no sound server, no sound card and no home. Fontconfig gets a cache of its own: it
// complains if the user may write to none.
std::map<std::string, std::string> nothingAround() {
  return {{"ALSA_CONFIG_PATH", "/dev/null"},
          {"JACK_NO_START_SERVER", "1"},
          {"PULSE_SERVER", "unix:/dev/null"}};
}

ChildResult run(Words switches, ChildOptions options = {}) {
  static const ScratchFolder temporary;
  options.environment.merge(nothingAround());
  for (const char* name : {"TMPDIR", "XDG_CACHE_HOME"})
    options.environment.try_emplace(name, temporary.path().string());
  switches.insert(switches.begin(), VELTO_PROGRAM);
  return kit::runChild(switches, options);
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.ends_with(end);
}

int count(const std::string& text, const std::string& part) {
  int found = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++found;
  return found;
}

// A mode, and the start of its standard output without display, sound and home.
struct Mode {
  Words switches;
  std::string begin;
  int status;
};

const Mode probe{{"--probe"}, "Velto DSP probe — all measurements", 0};
const Mode brandCheck{{"--brand-check"}, "── brand\n", 1}; // there is no master copy
const Mode bench{{"--bench"}, "per-trial render cost", 0};
const Mode selfTest{{"--audio-selftest"}, "FAIL  engine did not start\n", 1};
const Mode help{{"--help"}, "Usage: velto [SWITCH]...\n", 0};
const Mode version{{"--version"}, "velto " VELTO_VERSION "\n", 0};
const std::vector<Mode> reporting{help, version, probe, brandCheck, bench, selfTest};

TEST(Modes, RunWithoutDisplaySoundAndHome) {
  for (const Mode& mode : reporting) {
    const ChildResult result = run(mode.switches);
    EXPECT_EQ(result.status, mode.status) << mode.switches[0];
    EXPECT_TRUE(result.out.starts_with(mode.begin)) << result.out;
  }
  EXPECT_TRUE(endsWith(run({"--probe"}).out, probePassed));
  EXPECT_EQ(run({"--probe"}).error, "");
  EXPECT_EQ(run({"--bench"}).error, "");
}

TEST(Modes, PrintThePathOfTheRecordWithoutCreatingIt) {
  const ScratchFolder folder;
  const std::string home = folder.path().string();
  const ChildResult result = run({"--help"}, {.environment = {{"HOME", home}}});
  EXPECT_TRUE(endsWith(result.out, "\n  " + home + "/.local/share/MORLA Velto/profile.json\n"));
  EXPECT_EQ(result.error, "");
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_EQ(run({"--version"}).out, version.begin);
}

TEST(Modes, TheSelfTestFailsWithOneLineIfTheEngineDoesNotStart) {
  const ChildResult result = run({"--audio-selftest"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "FAIL  engine did not start\n");
  EXPECT_TRUE(result.error.starts_with("Velto: engine start failed - ")) << result.error;
  EXPECT_EQ(count(result.error, "\n"), 1) << result.error;
}

TEST(Modes, CreateNoApplicationUnlessTheyNeedFonts) {
  // A QGuiApplication aborts on this platform name.
  for (const Mode& mode : {help, version, probe, bench, selfTest})
    EXPECT_EQ(run(mode.switches, {.environment = {{"QT_QPA_PLATFORM", "none such"}}}).status,
              mode.status);
  EXPECT_EQ(run({"--seed-demo"}, {.environment = {{"QT_QPA_PLATFORM", "none such"}}}).status, 0);
}

TEST(Modes, PrintTheSameInALocaleWithADecimalComma) {
  const std::map<std::string, std::string> comma{
      {"LC_ALL", "de_DE.UTF-8"}, {"LANG", "de_DE.UTF-8"}, {"LOCPATH", VELTO_TEST_LOCALES}};
  EXPECT_EQ(run({"--probe"}, {.environment = comma}).out, run({"--probe"}).out);
  EXPECT_EQ(run({"--audio-selftest"}, {.environment = comma}).out, run({"--audio-selftest"}).out);
  EXPECT_EQ(run({"--brand-check"}, {.environment = comma}).out, run({"--brand-check"}).out);
  const ChildResult timed = run({"--bench"}, {.environment = comma});
  EXPECT_EQ(timed.status, 0);
  EXPECT_EQ(timed.out.find(','), timed.out.find(", 3.2 s"));
  EXPECT_EQ(count(timed.out, ","), 1) << timed.out;
}

// Lost output must not go unnoticed. The benchmark has no failure to report by its status.
TEST(Modes, ReportOutputThatCannotBeWrittenInOneLine) {
  for (const Stream stream : {Stream::fullDisk, Stream::closed})
    for (const Mode& mode : {help, version, probe, bench, brandCheck}) {
      const ChildResult result = run(mode.switches, {.out = stream});
      EXPECT_EQ(result.status, mode.switches == bench.switches ? 0 : 1) << mode.switches[0];
      EXPECT_TRUE(result.error.starts_with("Velto: the report cannot be written: "))
          << result.error;
      EXPECT_EQ(count(result.error, "\n"), 1) << result.error;
    }
}

TEST(Modes, KeepTheirStatusAndPrintNoErrorIfTheReaderIsGone) {
  for (const Mode& mode : {help, version, probe, bench, brandCheck}) {
    const ChildResult result = run(mode.switches, {.out = Stream::readerGone});
    EXPECT_EQ(result.status, mode.status) << mode.switches[0];
    EXPECT_EQ(result.error, "") << mode.switches[0];
  }
}

TEST(Modes, SurviveAnUnusableStandardError) {
  for (const Stream stream : {Stream::readerGone, Stream::fullDisk, Stream::closed}) {
    EXPECT_TRUE(endsWith(run({"--probe"}, {.error = stream}).out, probePassed));
    EXPECT_EQ(run({"--probe"}, {.out = stream, .error = stream}).status,
              stream == Stream::readerGone ? 0 : 1);
    EXPECT_EQ(run({"--audio-selftest"}, {.error = stream}).out, "FAIL  engine did not start\n");
    EXPECT_EQ(run({"--seed-demo"}, {.out = stream, .error = stream}).status, 0);
  }
}

TEST(Modes, WaitForAReaderWhosePipeIsFull) {
  const ChildResult result = run({"--probe"}, {.out = Stream::full});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, run({"--probe"}).out);
}

// A file opened on the descriptor of a closed stream would receive the report's lines.
TEST(Modes, NeverPrintIntoAFileThatReusesAClosedDescriptor) {
  const ScratchFolder folder;
  const ChildResult result =
      run({"--seed-demo"}, {.environment = {{"VELTO_PROFILE_DIR", folder.path().string()}},
                            .out = Stream::closed,
                            .error = Stream::closed});
  EXPECT_EQ(result.status, 0);
  const std::string file = contentOf(folder.path() / "profile.json");
  EXPECT_TRUE(file.starts_with("{\"attempts\":[")) << file.substr(0, 100);
  EXPECT_TRUE(file.ends_with("}")) << file.size();
}

TEST(Modes, LeaveNothingInTheTemporaryDirectory) {
  const ScratchFolder folder;
  const fs::path temporary = folder.path() / "temporary";
  const fs::path record = folder.path() / "record";
  fs::create_directory(temporary);
  for (const Mode& mode : reporting)
    for (const Stream stream : {Stream::captured, Stream::readerGone}) {
      (void)run(mode.switches, {.environment = {{"TMPDIR", temporary.string()},
                                                {"VELTO_PROFILE_DIR", record.string()},
                                                {"HOME", folder.path().string()}},
                                .out = stream,
                                .folder = folder.path().string()});
      EXPECT_TRUE(fs::is_empty(temporary)) << mode.switches[0];
      EXPECT_FALSE(fs::exists(record)) << mode.switches[0];
    }
}

TEST(Modes, RunWithoutATemporaryDirectory) {
  const std::map<std::string, std::string> none{{"TMPDIR", "/dev/null/nowhere"}};
  EXPECT_TRUE(endsWith(run({"--probe"}, {.environment = none}).out, probePassed));
  EXPECT_EQ(run({"--bench"}, {.environment = none}).status, 0);
}

TEST(SeedDemo, FillsTheGivenFolder) {
  const ScratchFolder folder;
  const ChildResult result =
      run({"--seed-demo"}, {.environment = {{"VELTO_PROFILE_DIR", folder.path()}}});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.error, seeded);
  EXPECT_EQ(count(contentOf(folder.path() / "profile.json"), "\"correct\":"), 160);
}

// ---- Which switch decides ----

// The modes that end at once, in order of precedence.
const std::vector<Mode> deciding{
    help, version, probe, brandCheck, bench, selfTest, {{"--seed-demo"}, "", 0}};

TEST(Dispatch, ModesHaveAFixedPrecedenceInAnyOrderOfSwitches) {
  for (std::size_t first = 0; first < deciding.size(); ++first)
    for (std::size_t second = first + 1; second < deciding.size(); ++second)
      for (const bool swapped : {false, true}) {
        Words switches{deciding[first].switches[0], deciding[second].switches[0]};
        if (swapped)
          std::swap(switches[0], switches[1]);
        const ChildResult result = run(switches);
        EXPECT_EQ(result.status, deciding[first].status) << switches[0] << " " << switches[1];
        EXPECT_TRUE(result.out.starts_with(deciding[first].begin)) << result.out;
        EXPECT_EQ(result.error.find(refusal), std::string::npos) << "two modes ran";
      }
}

TEST(Dispatch, ARepeatedSwitchRunsItsModeOnce) {
  EXPECT_EQ(run({"--probe", "--probe"}).out, run({"--probe"}).out);
  EXPECT_EQ(run({"--seed-demo", "--seed-demo"}).error, refusal);
}

TEST(Dispatch, FindsAModeAmongOtherArguments) {
  EXPECT_EQ(run({"file.png", "--shot", "--seed-demo", "-x"}).error, refusal);
  EXPECT_EQ(run({"--drill", "polarity", "--answer", "1", "--seed-demo"}).error, refusal);
  EXPECT_EQ(run({"--probe", "--bench-audio", "on"}).out, run({"--probe"}).out);
}

TEST(Dispatch, APlaybackBenchWithoutAValueIsIgnored) {
  EXPECT_EQ(run({"--seed-demo", "--bench-audio"}).error, refusal);
  EXPECT_EQ(run({"--bench-audio"}).error, noDisplay);
}

// Without a display the window would end with 1.
TEST(Session, FilesThatCannotBeUsedEndWithOneLineAnd2BeforeAnyWindow) {
  const kit::ScratchFolder folder;
  const std::string list = (folder.path() / "test.velto").string();
  const std::string results = (folder.path() / "mine.csv").string();
  kit::put(list, "velto-session 1\ndifficulty fixed\n");
  const struct {
    Words arguments;
    std::string error;
  } cases[] = {{{"--session", list},
                "--session and --results need each other and a file each; --results has none"},
               {{"--results", results},
                "--session and --results need each other and a file each; --session has none"},
               {{"--results", results, "--session"},
                "--session and --results need each other and a file each; --session has none"},
               {{"--session", list, "--results", results},
                list + ": line 3: the last line, \"end\", is missing"},
               {{"--session", "/none", "--results", results}, "/none: there is no such file"}};
  for (const auto& [arguments, error] : cases) {
    const auto result = run(arguments);
    EXPECT_EQ(result.status, 2) << error;
    EXPECT_EQ(result.error, "Velto: " + error + "\n");
    EXPECT_EQ(result.out, "");
  }
  EXPECT_FALSE(std::filesystem::exists(results));
  // A list whose hash was computed with another program.
  kit::put(list, "velto-session 1\ndifficulty fixed\nfrequency pink 40 9e3779b97f4a7c15\n"
                 "polarity pad 40 3c6ef372fe94f82a\nlevel pink 40 daa66d2c7ddf743f\n"
                 "end 3 108f660aeefbc810\n");
  EXPECT_EQ(run({"--session", list, "--results", "/none/mine.csv"}).error,
            "Velto: /none/mine.csv: No such file or directory\n");
  EXPECT_EQ(run({"--session", list, "--results", results}).error, noDisplay);
}

TEST(Dispatch, AnythingElseOpensTheWindowAndFailsWithoutADisplay) {
  for (const Words& switches :
       {Words{}, Words{"--Probe"}, Words{"--probe=1"}, Words{"-h"}, Words{"help"}, Words{"-probe"},
        Words{"probe"}, Words{""}, Words{"--shot"}, Words{"--drill"}, Words{"--answer"},
        Words{"--appearance"},
        Words{"--drill", "polarity", "--answer", "3", "--appearance", "Light", "--shot"}}) {
    const ChildResult result = run(switches);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.error, noDisplay);
  }
}

// ---- With a sound server ----

// With the environment of the surrounding desk.
ChildResult runOnDesk(const Words& switches) {
  ChildOptions options;
  for (const char* name : {"PULSE_SERVER", "XDG_RUNTIME_DIR", "HOME", "TMPDIR"})
    if (const char* value = std::getenv(name))
      options.environment[name] = value;
  Words words{VELTO_PROGRAM};
  words.insert(words.end(), switches.begin(), switches.end());
  return kit::runChild(words, options);
}

TEST(OnSound, TheSelfTestMeasuresItsTrialAtTheExpectedLevel) {
  const ChildResult result = runOnDesk({"--audio-selftest"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "");
  const auto lines = kit::linesOf(result.out);
  ASSERT_EQ(lines.size(), 4U) << result.out;
  EXPECT_EQ(lines[0], "output bus: 48000 Hz, 2 ch");
  EXPECT_TRUE(lines[1].starts_with("captured  : "));
  EXPECT_TRUE(lines[2].starts_with("level     : -2")) << lines[2];
  EXPECT_EQ(lines[3], "PASS  signal reaches the output bus at the expected level");
}

TEST(OnSoundLong, ThePlaybackBenchRunsFor25Seconds) {
  for (const char* load : {"on", "off", "--bench-audio"}) {
    const auto start = std::chrono::steady_clock::now();
    const ChildResult result = runOnDesk({"--bench-audio", load, "--brand-check"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.error, "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(25));
  }
}

} // namespace
} // namespace velto
