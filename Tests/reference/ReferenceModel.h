// A slow, literal model of trials, grading, the staircase, synthesis, measurement and rendering.
//
// The program must compute the same trials, grades and samples, bit for bit. The model shares no
// code with the program and includes nothing from Sources. Each value is computed where it is
// needed; nothing is cached, reordered or skipped. An optimisation of the program must not change
// this file.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace reference {

using Samples = std::vector<float>;

// Filters and measurement

struct Biquad {
  double b0 = 0, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

  float process(float x);
};

Biquad lowpass(double f0, double q, double sampleRate);
Biquad highpass(double f0, double q, double sampleRate);
Biquad bandpass(double f0, double q, double sampleRate);
Biquad peaking(double f0, double gainDB, double q, double sampleRate);
double responseDB(const Biquad& filter, double freq, double sampleRate);

double rmsDB(const Samples& x);
double peakDB(const Samples& x);
Samples normalizeRMS(const Samples& x, double targetDB);
double magnitudeAt(const Samples& x, double freq, double sampleRate);

// Source materials

// The generator's next state after `state`, which must not be 0.
std::uint64_t step(std::uint64_t state);
// The generator's initial state for a seed.
std::uint64_t startState(std::uint64_t seed);
// The noise value of a state, in [-1, 3), and its unit value, in [0, 1).
double noiseValue(std::uint64_t state);
double unitValue(std::uint64_t state);

// `audible` subtracts 1 from each noise value and filters pink noise with two high-pass sections at
// 20 Hz.
Samples pink(double seconds, std::uint64_t seed, bool audible = false);
Samples drums(double seconds, std::uint64_t seed);
Samples pad(double seconds, std::uint64_t seed);

struct Pair {
  Samples l, r;
};
Pair stereoise(const Samples& mono, double correlation, std::uint64_t seed, bool audible = false);

// First sample of each drum step of a loop.
std::vector<std::int64_t> stepStarts(double seconds);

// Trials

enum class Drill { frequency, level, dynamics, polarity };
enum class Material { pinkNoise, drums, pad };

const std::array<double, 27>& bandCentres();
std::string bandLabel(double freq);

struct Trial {
  Drill drill;
  std::uint64_t seed;
  Material material;
  double difficulty;
  std::int64_t slots;
  double targetFreq;
  double boostDB;
  double boostQ;
  double targetLevelDB;
  double targetGRdB;
  std::int64_t oddSlot;
  double correlation;
};
Trial makeTrial(double difficulty, Material material, std::uint64_t seed, Drill drill);
std::uint64_t mixedSeed(std::uint64_t counter);

struct Grade {
  bool correct;
  double error;
  std::string errorText;
  std::string truthText;
  std::string answerText;
};
Grade grade(double answer, const Trial& trial);

struct Staircase {
  double difficulty = 20;
  std::int64_t consecutiveCorrect = 0;
  std::int64_t reversals = 0;
  std::int64_t lastDirection = 0;

  void record(bool correct);
};

// Rendering

// The static curve, in dB.
double gainReduction(double level, double threshold);

struct Compressed {
  Samples out;
  double grDB;
};
Compressed compressorHitting(double targetGR, const Samples& x);

std::vector<Pair> render(const Trial& trial, double seconds, bool audible = false);

} // namespace reference
