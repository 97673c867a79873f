#include "TrialFiles.h"

#include "Bands.h"
#include "Coding.h"
#include "Console.h"
#include "DSP.h"
#include "Files.h"
#include "Grading.h"
#include "JSONWriter.h"
#include "Numbers.h"
#include "RenderHash.h"
#include "Rendering.h"
#include "Wave.h"

#include <array>
#include <cmath>
#include <span>
#include <vector>

namespace velto {

namespace {

namespace fs = std::filesystem;

constexpr double renderedSeconds = 3.2; // as Velto plays
constexpr std::array exploredBoosts{3.0, 6.0, 12.0};
constexpr double exploredQ = 2;

std::string slotTitle(Drill drill, std::size_t index) {
  constexpr std::string_view letters = "AB", digits = "123";
  return std::string(1, (drill == Drill::polarity ? digits : letters)[index]);
}

// The cosine of the angle between two channels: 1 if they are equal, -1 if one is flipped.
double correlation(std::span<const float> l, std::span<const float> r) {
  double lr = 0, ll = 0, rr = 0;
  for (std::size_t i = 0; i < l.size(); ++i) {
    const auto a = static_cast<double>(l[i]), b = static_cast<double>(r[i]);
    lr += a * b;
    ll += a * a;
    rr += b * b;
  }
  return ll > 0 && rr > 0 ? lr / std::sqrt(ll * rr) : 0;
}

void writeReals(JSON::Writer& writer, std::string_view key, std::initializer_list<double> values) {
  writer.key(key);
  writer.beginArray();
  for (const double value : values)
    writer.real(value);
  writer.endArray();
}

// One object of the list of files.
void writeSlot(JSON::Writer& writer, const std::string& file, const Slot& slot) {
  writer.key("file");
  writer.string(file);
  writer.key("hash");
  writer.string(RenderHash::of(slot).text());
  writeReals(writer, "rmsDB", {Measure::rmsDB(*slot.l), Measure::rmsDB(*slot.r)});
  writeReals(writer, "peakDB", {Measure::peakDB(*slot.l), Measure::peakDB(*slot.r)});
  writer.key("correlation");
  writer.real(correlation(*slot.l, *slot.r));
}

// The right answer, as one would give it: slots count from 1.
double truthOf(const Trial& trial) {
  return Drills::truth(trial) + (trial.drill == Drill::polarity ? 1 : 0);
}

std::string_view unitOf(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return "Hz";
  case Drill::level:
    return "dB";
  case Drill::dynamics:
    return "dB of gain reduction";
  case Drill::polarity:
    break;
  }
  return "slot, from 1";
}

void writeTrial(JSON::Writer& writer, const Trial& trial) {
  writer.key("drill");
  writer.string(trial.drill.rawValue());
  writer.key("material");
  writer.string(trial.material.rawValue());
  writer.key("difficulty");
  writer.real(trial.difficulty);
  writer.key("seed");
  writer.integer(trial.seed);
  writer.key("truth");
  writer.real(truthOf(trial));
  writer.key("unit");
  writer.string(unitOf(trial.drill));
  if (trial.drill == Drill::frequency) {
    writer.key("boostDB");
    writer.real(trial.boostDB);
    writer.key("boostQ");
    writer.real(trial.boostQ);
  }
  if (trial.drill == Drill::polarity) {
    writer.key("mixedCorrelation");
    writer.real(trial.correlation);
  }
}

void writeRendering(JSON::Writer& writer, Noise noise) {
  writer.key("fair");
  writer.boolean(noise == Noise::audible);
  writer.key("seconds");
  writer.real(renderedSeconds);
  writer.key("sampleRate");
  writer.real(sampleRateHz);
}

void save(const fs::path& folder, const std::string& name, const std::string& bytes) {
  Lab::Files::write((folder / name).string(), bytes);
}

void save(const fs::path& folder, const std::string& name, JSON::Writer& writer) {
  save(folder, name, writer.finish().value() + "\n");
}

// The boosted slot of a frequency trial.
Trial boosted(Material material, std::uint64_t seed, double frequency, double boostDB) {
  return {.drill = Drill::frequency,
          .seed = seed,
          .material = material,
          .targetFreq = frequency,
          .boostDB = boostDB,
          .boostQ = exploredQ};
}

// Writes one file of --explore and its object in the list.
void saveExplored(const fs::path& folder, const std::string& name, JSON::Writer& writer,
                  const Slot& slot, double frequency, double boostDB) {
  save(folder, name, Lab::waveFile(slot));
  writer.beginObject();
  writeSlot(writer, name, slot);
  if (boostDB > 0) {
    writer.key("frequency");
    writer.real(frequency);
    writer.key("boostDB");
    writer.real(boostDB);
    writer.key("boostQ");
    writer.real(exploredQ);
  }
  writer.endObject();
}

} // namespace

void Lab::TrialFiles::write(const fs::path& folder, const std::string& name, const Trial& trial,
                            Noise noise) {
  const std::vector<Slot> slots = Drills::render(trial, renderedSeconds, noise);
  JSON::Writer writer;
  writer.beginObject();
  writeTrial(writer, trial);
  writeRendering(writer, noise);
  writer.key("hash");
  writer.string(RenderHash::of(trial, slots).text());
  writer.key("slots");
  writer.beginArray();
  for (std::size_t index = 0; index < slots.size(); ++index) {
    const std::string file = name + "-" + slotTitle(trial.drill, index) + ".wav";
    save(folder, file, waveFile(slots[index]));
    writer.beginObject();
    writeSlot(writer, file, slots[index]);
    writer.endObject();
  }
  writer.endArray();
  writer.endObject();
  save(folder, name + ".json", writer);
}

void Lab::TrialFiles::writeBands(const fs::path& folder, Material material, std::uint64_t seed,
                                 Noise noise) {
  Progress progress("rendering", Bands::centres.size() * exploredBoosts.size() + 1);
  JSON::Writer writer;
  writer.beginObject();
  writer.key("material");
  writer.string(material.rawValue());
  writer.key("seed");
  writer.integer(seed);
  writeRendering(writer, noise);
  writer.key("files");
  writer.beginArray();
  const auto render = [&](double frequency, double boostDB) {
    return Drills::render(boosted(material, seed, frequency, boostDB), renderedSeconds, noise);
  };
  saveExplored(folder, "flat.wav", writer, render(1000, 0)[0], 0, 0);
  progress.advance();
  for (const double frequency : Bands::centres)
    for (const double boostDB : exploredBoosts) {
      const std::string name =
          Numbers::shortest(frequency) + "Hz+" + Numbers::shortest(boostDB) + "dB.wav";
      saveExplored(folder, name, writer, render(frequency, boostDB)[1], frequency, boostDB);
      progress.advance();
    }
  writer.endArray();
  writer.endObject();
  save(folder, "explore.json", writer);
}

} // namespace velto
