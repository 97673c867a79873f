// velto-lab render: the files, bit by bit, and as SoX measures them.
#include "Bands.h"
#include "DSP.h"
#include "RenderHash.h"
#include "Rendering.h"

#include "LabRunner.h"
#include "kit/CapturedOutput.h"
#include "kit/Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>

namespace velto {
namespace {

namespace fs = std::filesystem;
using kit::ChildResult;
using kit::contentOf;
using nlohmann::json;
using testing::isOneComplaint;
using testing::LabRunner;
using testing::Words;

// ---- The files ----

std::uint32_t word(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

struct Wave {
  std::vector<std::string> chunks;
  std::string format;
  std::vector<float> samples;
};

Wave waveOf(const fs::path& file) {
  const std::string bytes = contentOf(file);
  Wave wave;
  EXPECT_EQ(bytes.substr(0, 4), "RIFF");
  EXPECT_EQ(word(bytes, 4), bytes.size() - 8);
  EXPECT_EQ(bytes.substr(8, 4), "WAVE");
  for (std::size_t at = 12; at + 8 <= bytes.size();) {
    const std::uint32_t size = word(bytes, at + 4);
    wave.chunks.push_back(bytes.substr(at, 4));
    const std::string body = bytes.substr(at + 8, size);
    if (wave.chunks.back() == "fmt ")
      wave.format = body;
    if (wave.chunks.back() == "data") {
      wave.samples.resize(size / sizeof(float));
      std::memcpy(wave.samples.data(), body.data(), body.size());
    }
    at += 8 + size + size % 2;
  }
  return wave;
}

void expectSlot(const fs::path& file, const Slot& slot) {
  const Wave wave = waveOf(file);
  // Without the chunk of peaks, which has the time in it; its place is padded.
  EXPECT_EQ(wave.chunks, (std::vector<std::string>{"fmt ", "fact", "PAD ", "data"}));
  // 3: IEEE float; two channels; 48000 Hz.
  EXPECT_EQ(word(wave.format, 0), 0x00020003U);
  EXPECT_EQ(word(wave.format, 4), 48000U);
  ASSERT_EQ(wave.samples.size(), 2 * slot.l->size());
  std::size_t different = 0;
  for (std::size_t i = 0; i < slot.l->size(); ++i)
    different += wave.samples[2 * i] != (*slot.l)[i] || wave.samples[2 * i + 1] != (*slot.r)[i];
  EXPECT_EQ(different, 0U) << file;
}

json render(const LabRunner& lab, Words words) {
  words.insert(words.begin(), {"render", "out"});
  const ChildResult result = lab.run(words);
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.error, "");
  for (const auto& entry : fs::directory_iterator(lab.folder() / "out"))
    if (entry.path().extension() == ".json")
      return json::parse(contentOf(entry.path()));
  return {};
}

void expectTrial(const Words& words, const Trial& trial, Noise noise) {
  const LabRunner lab;
  const json told = render(lab, words);
  const auto slots = Drills::render(trial, 3.2, noise);
  EXPECT_EQ(told.at("seed"), trial.seed);
  EXPECT_EQ(told.at("fair"), noise == Noise::audible);
  EXPECT_EQ(told.at("hash"), RenderHash::of(trial, slots).text());
  ASSERT_EQ(told.at("slots").size(), slots.size());
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const json& one = told.at("slots")[i];
    expectSlot(lab.folder() / "out" / one.at("file").get<std::string>(), slots[i]);
    EXPECT_EQ(one.at("hash"), RenderHash::of(slots[i]).text());
    EXPECT_EQ(one.at("rmsDB"), (json{Measure::rmsDB(*slots[i].l), Measure::rmsDB(*slots[i].r)}));
    EXPECT_EQ(one.at("peakDB"), (json{Measure::peakDB(*slots[i].l), Measure::peakDB(*slots[i].r)}));
  }
}

TEST(LabRender, WritesTheSlotsBitByBit) {
  expectTrial({}, Drills::makeTrial(20, Material::pinkNoise, 1, Drill::frequency), Noise::asDrawn);
  expectTrial(
      {"--drill", "polarity", "--difficulty", "62.5", "--material", "drums", "--seed", "99"},
      Drills::makeTrial(62.5, Material::drums, 99, Drill::polarity), Noise::asDrawn);
}

TEST(LabRender, RendersFairTrialsAsTheWindowDoes) {
  expectTrial({"--drill", "level", "--fair", "--seed", "1700000000"},
              Drills::makeTrial(20, Drills::defaultMaterial(Drill::level),
                                Drills::mixedSeed(1700000000), Drill::level),
              Noise::audible);
}

TEST(LabRender, TellsTheTruth) {
  const auto told = [](const char* drill) { return render(LabRunner(), {"--drill", drill}); };
  const auto trial = [](Drill drill) {
    return Drills::makeTrial(20, Drills::defaultMaterial(drill), 1, drill);
  };
  EXPECT_EQ(told("frequency").at("truth"), trial(Drill::frequency).targetFreq);
  EXPECT_EQ(told("frequency").at("boostDB"), trial(Drill::frequency).boostDB);
  EXPECT_EQ(told("level").at("truth"), trial(Drill::level).targetLevelDB);
  EXPECT_EQ(told("dynamics").at("truth"), trial(Drill::dynamics).targetGRdB);
  EXPECT_EQ(told("polarity").at("truth"), trial(Drill::polarity).oddSlot + 1);
  EXPECT_EQ(told("polarity").at("mixedCorrelation"), trial(Drill::polarity).correlation);
}

TEST(LabRender, GivesTheSameBytesEachTime) {
  const LabRunner lab;
  const Words words{"render", "out", "--drill", "dynamics"};
  std::map<std::string, std::string> first;
  ASSERT_EQ(lab.run(words).status, 0);
  for (const auto& entry : fs::directory_iterator(lab.folder() / "out"))
    first[entry.path().filename()] = contentOf(entry.path());
  EXPECT_EQ(first.size(), 3U);
  const std::time_t before = std::time(nullptr);
  while (std::time(nullptr) == before) // a time in a file counts seconds
    ::poll(nullptr, 0, 20);
  ASSERT_EQ(lab.run(words).status, 0);
  for (const auto& [name, bytes] : first)
    EXPECT_TRUE(contentOf(lab.folder() / "out" / name) == bytes) << name;
}

// The program that compares compilers has hashes of its own.
TEST(LabRender, HashesAsTheComparisonOfCompilersDoes) {
  const kit::CommandResult all = kit::runCommand(VELTO_RENDER_HASHES);
  ASSERT_EQ(all.status, 0);
  for (const Drill drill : Drill::allCases) {
    const std::string title = std::string(drill.rawValue()) + ", Synth pad, seed 1, whole: ";
    const auto at = all.output.find("\n" + title);
    ASSERT_NE(at, std::string::npos) << title;
    const json told = render(LabRunner(), {"--drill", std::string(drill.rawValue()), "--material",
                                           "pad", "--seed", "11400714819323198485", "--difficulty",
                                           "5.2631578947368425"});
    EXPECT_EQ(told.at("hash"), all.output.substr(at + 1 + title.size(), 16));
  }
}

TEST(LabRender, RefusesValuesThatMakeNoSense) {
  const LabRunner lab;
  for (const Words& words :
       {Words{}, Words{"out", "more"}, Words{"out", "--drill", "timbre"}, Words{"out", "--drill"},
        Words{"out", "--material", "Pink noise"}, Words{"out", "--difficulty", "101"},
        Words{"out", "--difficulty", "-1"}, Words{"out", "--difficulty", "nan"},
        Words{"out", "--difficulty", "2o"}, Words{"out", "--seed", "-1"},
        Words{"out", "--seed", "18446744073709551616"}, Words{"out", "--seed", "1", "--seed", "2"},
        Words{"out", "--explore", "--drill", "level"},
        Words{"out", "--explore", "--difficulty", "5"}}) {
    Words all = words;
    all.insert(all.begin(), "render");
    const ChildResult result = lab.run(all);
    EXPECT_EQ(result.status, 2) << ::testing::PrintToString(all);
    EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
  }
  EXPECT_FALSE(fs::exists(lab.folder() / "out"));
}

TEST(LabRender, FailsWhereItCannotWrite) {
  const LabRunner lab;
  kit::put(lab.folder() / "file", "");
  const ChildResult result = lab.run({"render", "file"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
}

// ---- As SoX measures them ----

// The RMS amplitude of what the effects make of the files, mixed or not.
double amplitude(const std::string& filesAndEffects) {
  const kit::CommandResult result =
      kit::runCommand("sox " + filesAndEffects + " stat 2>&1 </dev/null");
  EXPECT_EQ(result.status, 0) << result.output;
  const std::string label = "RMS     amplitude:";
  const auto at = result.output.find(label);
  EXPECT_NE(at, std::string::npos) << result.output;
  return std::stod(result.output.substr(at + label.size()));
}

double dB(double ratio) {
  return 20 * std::log10(ratio);
}

// A rendered trial, and the files of its slots.
struct Rendered {
  LabRunner lab;
  json told;

  explicit Rendered(const Words& words) : told(render(lab, words)) {}
  [[nodiscard]] std::string slot(std::size_t index) const {
    std::string quoted("'");
    quoted += lab.folder() / "out" / told.at("slots")[index].at("file").get<std::string>();
    quoted += '\'';
    return quoted;
  }
  [[nodiscard]] double levelDB(std::size_t index, const std::string& effects = "") const {
    return dB(amplitude(slot(index) + " -n remix 1 " + effects));
  }
};

// The first seed whose trial boosts `frequency`.
std::string seedFor(double frequency) {
  for (std::uint64_t seed = 1;; ++seed)
    if (Drills::makeTrial(0, Material::pinkNoise, seed, Drill::frequency).targetFreq == frequency)
      return std::to_string(seed);
}

TEST(LabRenderInSoX, FindsTheBoostOfTheDesign) {
  // Difficulty 33 1/3: 9 dB, Q 3.
  const Rendered trial({"--seed", seedFor(1000), "--difficulty", "33.333333333333336"});
  const auto lift = [&](const std::string& frequency) {
    const std::string once = "bandpass " + frequency + " 30q ";
    const std::string band = once + once + "gain 40";
    return trial.levelDB(1, band) - trial.levelDB(0, band);
  };
  const Biquad design = Biquad::peaking(1000, 9, 3, 48000);
  const double designed = design.responseDB(1000, 48000) - design.responseDB(125, 48000);
  EXPECT_NEAR(lift("1000") - lift("125"), designed, 0.25);
  EXPECT_NEAR(trial.levelDB(1), trial.levelDB(0), 0.15);
}

TEST(LabRenderInSoX, FindsTheDifferenceInLevel) {
  for (const char* difficulty : {"0", "100"}) {
    const Rendered trial({"--drill", "level", "--material", "pink", "--difficulty", difficulty});
    EXPECT_NEAR(trial.levelDB(1) - trial.levelDB(0), trial.told.at("truth").get<double>(), 0.02);
    EXPECT_NEAR(trial.levelDB(0), -20, 0.02);
  }
}

TEST(LabRenderInSoX, FindsTheSameLevelAndAHigherCrestWithCompression) {
  const Rendered trial({"--drill", "dynamics", "--material", "drums", "--difficulty", "0"});
  EXPECT_NEAR(trial.levelDB(1), trial.levelDB(0), 0.1);
  const auto& slots = trial.told.at("slots");
  EXPECT_GT(slots[1].at("peakDB")[0].get<double>(), slots[0].at("peakDB")[0].get<double>());
}

TEST(LabRenderInSoX, FindsTheFlippedChannel) {
  for (const char* material : {"pad", "drums"}) {
    const Rendered trial(
        {"--drill", "polarity", "--material", material, "--difficulty", "100", "--seed", "5"});
    const auto odd = static_cast<std::size_t>(trial.told.at("truth").get<double>()) - 1;
    const std::size_t even = (odd + 1) % 3, other = (odd + 2) % 3;
    const double right = amplitude(trial.slot(even) + " -n remix 2");
    // Half of the sum of two right channels, doubled.
    const auto sum = [&](std::size_t a, std::size_t b) {
      return 2 * amplitude("-M " + trial.slot(a) + " " + trial.slot(b) + " -n remix 2v0.5,4v0.5");
    };
    EXPECT_NEAR(dB(sum(even, other) / right), 6.02, 0.05);
    EXPECT_LT(sum(even, odd), right * 1e-4); // 80 dB down
    EXPECT_EQ(
        amplitude("-M " + trial.slot(even) + " " + trial.slot(odd) + " -n remix 1v0.5,3v-0.5"), 0);

    // The correlation from the levels of sum and difference.
    const double left = amplitude(trial.slot(even) + " -n remix 1");
    const double plus = amplitude(trial.slot(even) + " -n remix 1v0.5,2v0.5");
    const double minus = amplitude(trial.slot(even) + " -n remix 1v0.5,2v-0.5");
    const double correlation = (plus * plus - minus * minus) / (left * right);
    EXPECT_LT(correlation, 0.6);
    EXPECT_NEAR(trial.told.at("slots")[even].at("correlation").get<double>(), correlation, 0.001);
    EXPECT_NEAR(trial.told.at("slots")[odd].at("correlation").get<double>(), -correlation, 0.001);
  }
}

// ---- For a teacher ----

TEST(LabExplore, HasEachBandInThreeBoostsAndOneFlat) {
  const LabRunner lab;
  const json told = render(lab, {"--explore", "--material", "pad", "--seed", "3"});
  const json& files = told.at("files");
  ASSERT_EQ(files.size(), 82U);
  EXPECT_EQ(files[0].at("file"), "flat.wav");
  EXPECT_FALSE(files[0].contains("boostDB"));
  Trial trial{.drill = Drill::frequency, .seed = 3, .material = Material::pad, .boostQ = 2};
  std::size_t index = 1;
  for (const double frequency : Bands::centres)
    for (const double boostDB : {3.0, 6.0, 12.0}) {
      const json& one = files[index++];
      EXPECT_EQ(one.at("frequency"), frequency);
      EXPECT_EQ(one.at("boostDB"), boostDB);
      EXPECT_EQ(one.at("boostQ"), 2);
      trial.targetFreq = frequency;
      trial.boostDB = boostDB;
      const auto slots = Drills::render(trial, 3.2);
      EXPECT_EQ(one.at("hash"), RenderHash::of(slots[1]).text()) << one;
      if (index % 20 == 0) {
        expectSlot(lab.folder() / "out" / one.at("file").get<std::string>(), slots[1]);
        expectSlot(lab.folder() / "out" / "flat.wav", slots[0]);
      }
    }
  EXPECT_EQ(std::distance(fs::directory_iterator(lab.folder() / "out"), fs::directory_iterator()),
            83);
  EXPECT_TRUE(fs::exists(lab.folder() / "out" / "1000Hz+6dB.wav"));
}

} // namespace
} // namespace velto
