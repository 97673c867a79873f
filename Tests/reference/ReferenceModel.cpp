#include "ReferenceModel.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace reference {
namespace {

constexpr double twoPi = 6.283185307179586;
constexpr double rate = 48000;

[[noreturn]] void impossible(const char* what) {
  std::fprintf(stderr, "reference model: invalid %s\n", what);
  std::abort();
}

std::size_t sampleCount(double seconds) {
  const double product = seconds * rate;
  if (!std::isfinite(product) || product < 0)
    impossible("duration");
  return static_cast<std::size_t>(product);
}

} // namespace

// Filters and measurement

float Biquad::process(float in) {
  const double x = static_cast<double>(in);
  const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
  x2 = x1;
  x1 = x;
  y2 = y1;
  y1 = y;
  return static_cast<float>(y);
}

Biquad lowpass(double f0, double q, double sampleRate) {
  const double w0 = twoPi * f0 / sampleRate;
  const double cs = std::cos(w0);
  const double sn = std::sin(w0);
  const double alpha = sn / (2 * q);
  const double a0 = 1 + alpha;
  return {(1 - cs) / 2 / a0, (1 - cs) / a0, (1 - cs) / 2 / a0, -2 * cs / a0, (1 - alpha) / a0};
}

Biquad highpass(double f0, double q, double sampleRate) {
  const double w0 = twoPi * f0 / sampleRate;
  const double cs = std::cos(w0);
  const double sn = std::sin(w0);
  const double alpha = sn / (2 * q);
  const double a0 = 1 + alpha;
  return {(1 + cs) / 2 / a0, -(1 + cs) / a0, (1 + cs) / 2 / a0, -2 * cs / a0, (1 - alpha) / a0};
}

Biquad bandpass(double f0, double q, double sampleRate) {
  const double w0 = twoPi * f0 / sampleRate;
  const double cs = std::cos(w0);
  const double sn = std::sin(w0);
  const double alpha = sn / (2 * q);
  const double a0 = 1 + alpha;
  return {alpha / a0, 0 / a0, -alpha / a0, -2 * cs / a0, (1 - alpha) / a0};
}

Biquad peaking(double f0, double gainDB, double q, double sampleRate) {
  const double A = std::pow(10.0, gainDB / 40);
  const double w0 = twoPi * f0 / sampleRate;
  const double cs = std::cos(w0);
  const double sn = std::sin(w0);
  const double alpha = sn / (2 * q);
  const double a0 = 1 + alpha / A;
  return {(1 + alpha * A) / a0, -2 * cs / a0, (1 - alpha * A) / a0, -2 * cs / a0,
          (1 - alpha / A) / a0};
}

double responseDB(const Biquad& f, double freq, double sampleRate) {
  const double w = twoPi * freq / sampleRate;
  const double numRe = f.b0 + f.b1 * std::cos(w) + f.b2 * std::cos(2 * w);
  const double numIm = f.b1 * std::sin(w) + f.b2 * std::sin(2 * w);
  const double denRe = 1 + f.a1 * std::cos(w) + f.a2 * std::cos(2 * w);
  const double denIm = f.a1 * std::sin(w) + f.a2 * std::sin(2 * w);
  const double num = std::sqrt(numRe * numRe + numIm * numIm);
  const double den = std::sqrt(denRe * denRe + denIm * denIm);
  const double h = num / std::fmax(den, 1e-18);
  return 20 * std::log10(std::fmax(h, 1e-18));
}

double rmsDB(const Samples& x) {
  if (x.empty())
    return -std::numeric_limits<double>::infinity();
  double sum = 0;
  for (std::size_t i = 0; i < x.size(); i++)
    sum = sum + static_cast<double>(x[i]) * static_cast<double>(x[i]);
  const double rms = std::sqrt(sum / static_cast<double>(x.size()));
  return 20 * std::log10(std::fmax(rms, 1e-12));
}

double peakDB(const Samples& x) {
  double p = 0;
  for (std::size_t i = 0; i < x.size(); i++)
    if (std::fabs(static_cast<double>(x[i])) > p)
      p = std::fabs(static_cast<double>(x[i]));
  return 20 * std::log10(std::fmax(p, 1e-12));
}

Samples normalizeRMS(const Samples& x, double targetDB) {
  const double level = rmsDB(x);
  if (!std::isfinite(level))
    return x;
  const float gain = static_cast<float>(std::pow(10.0, (targetDB - level) / 20));
  Samples scaled = x;
  for (std::size_t i = 0; i < x.size(); i++)
    scaled[i] = x[i] * gain;
  return scaled;
}

double magnitudeAt(const Samples& x, double freq, double sampleRate) {
  if (x.empty())
    return 0;
  const double n = static_cast<double>(x.size());
  const double omega = twoPi * freq / sampleRate;
  double re = 0;
  double im = 0;
  for (std::size_t i = 0; i < x.size(); i++) {
    const double k = static_cast<double>(i);
    const double h = 0.5 - 0.5 * std::cos(twoPi * k / (n - 1));
    const double v = h * static_cast<double>(x[i]);
    re += v * std::cos(omega * k);
    im -= v * std::sin(omega * k);
  }
  return std::sqrt(re * re + im * im) / (n * 0.5);
}

// Source materials

std::uint64_t startState(std::uint64_t seed) {
  return seed == 0 ? 0x9E3779B97F4A7C15u : seed;
}

std::uint64_t step(std::uint64_t x) {
  x ^= x << 13;
  x ^= x >> 7;
  x ^= x << 17;
  return x;
}

double noiseValue(std::uint64_t x) {
  return 2 * (static_cast<double>(x >> 11) * std::ldexp(1.0, -52)) - 1;
}

double unitValue(std::uint64_t x) {
  return static_cast<double>(x >> 11) * std::ldexp(1.0, -53);
}

Samples pink(double seconds, std::uint64_t seed, bool audible) {
  Samples out(sampleCount(seconds));
  std::uint64_t x = startState(seed);
  double b0 = 0, b1 = 0, b2 = 0, b3 = 0, b4 = 0, b5 = 0, b6 = 0;
  for (std::size_t i = 0; i < out.size(); i++) {
    x = step(x);
    double w = noiseValue(x);
    if (audible)
      w = w - 1;
    b0 = 0.99886 * b0 + 0.0555179 * w;
    b1 = 0.99332 * b1 + 0.0750759 * w;
    b2 = 0.969 * b2 + 0.153852 * w;
    b3 = 0.8665 * b3 + 0.3104856 * w;
    b4 = 0.55 * b4 + 0.5329522 * w;
    b5 = -0.7616 * b5 - 0.016898 * w;
    const double sample = 0.11 * (b0 + b1 + b2 + b3 + b4 + b5 + b6 + 0.5362 * w);
    b6 = 0.115926 * w;
    out[i] = static_cast<float>(sample);
  }
  if (audible) {
    Biquad first = highpass(20, 0.5412, rate);
    for (std::size_t i = 0; i < out.size(); i++)
      out[i] = first.process(out[i]);
    Biquad second = highpass(20, 1.3066, rate);
    for (std::size_t i = 0; i < out.size(); i++)
      out[i] = second.process(out[i]);
  }
  return normalizeRMS(out, -20);
}

namespace {

void add(Samples& buffer, std::size_t at, double value) {
  buffer[at] = static_cast<float>(static_cast<double>(buffer[at]) + value);
}

void addKick(Samples& buffer, std::size_t start) {
  for (std::size_t i = 0; i < 13440 && start + i < buffer.size(); i++) {
    const double tau = static_cast<double>(i) / rate;
    const double f = 55 + 75 * std::exp(-tau / 0.022);
    const double amplitude = 0.9 * std::exp(-tau / 0.075);
    add(buffer, start + i, amplitude * std::sin(twoPi * f * tau));
  }
}

void addSnare(Samples& buffer, std::size_t start, std::uint64_t& x) {
  Biquad noiseFilter = bandpass(1900, 0.7, rate);
  Biquad toneFilter = bandpass(190, 2.0, rate);
  for (std::size_t i = 0; i < 9600 && start + i < buffer.size(); i++) {
    const double tau = static_cast<double>(i) / rate;
    const float toneIn = static_cast<float>(std::sin(twoPi * 185 * tau));
    x = step(x);
    const float noiseIn = static_cast<float>(noiseValue(x));
    const double envelope = std::exp(-tau / 0.055);
    const double tone = static_cast<double>(toneFilter.process(toneIn));
    const double noise = static_cast<double>(noiseFilter.process(noiseIn));
    add(buffer, start + i, envelope * (1.4 * tone + 0.8 * noise) * 0.55);
  }
}

void addHat(Samples& buffer, std::size_t start, bool open, std::uint64_t& x) {
  Biquad filter = highpass(7800, 0.7, rate);
  const double d = open ? 0.05 : 0.014;
  const std::size_t length = open ? 7680 : 2640;
  for (std::size_t i = 0; i < length && start + i < buffer.size(); i++) {
    const double tau = static_cast<double>(i) / rate;
    x = step(x);
    const double hiss = static_cast<double>(filter.process(static_cast<float>(noiseValue(x))));
    const double envelope = std::exp(-tau / d);
    add(buffer, start + i, envelope * hiss * 0.3);
  }
}

} // namespace

std::vector<std::int64_t> stepStarts(double seconds) {
  std::vector<std::int64_t> starts;
  if (!(seconds > 0))
    return starts;
  double t = 0;
  do {
    starts.push_back(static_cast<std::int64_t>(t * rate));
    t = t + 0.3;
  } while (t < seconds);
  return starts;
}

Samples drums(double seconds, std::uint64_t seed) {
  Samples out(sampleCount(seconds), 0.0f);
  if (!(seconds > 0))
    return normalizeRMS(out, -20);
  std::uint64_t x = startState(seed);
  const std::vector<std::int64_t> starts = stepStarts(seconds);
  for (std::size_t k = 0; k < starts.size(); k++) {
    const std::size_t start = static_cast<std::size_t>(starts[k]);
    const std::size_t p = k % 8;
    if (p == 0 || p == 3 || p == 6)
      addKick(out, start);
    if (p == 4)
      addSnare(out, start, x);
    addHat(out, start, p == 7, x);
  }
  return normalizeRMS(out, -20);
}

Samples pad(double seconds, std::uint64_t seed) {
  Samples out(sampleCount(seconds));
  const std::size_t n = out.size();
  const double roots[4] = {110.0, 164.81, 220.0, 277.18};
  double frequency[12];
  for (int i = 0; i < 4; i++) {
    frequency[3 * i] = roots[i] * 0.994;
    frequency[3 * i + 1] = roots[i];
    frequency[3 * i + 2] = roots[i] * 1.007;
  }
  std::uint64_t x = startState(seed);
  double phase[12];
  for (int i = 0; i < 12; i++) {
    x = step(x);
    phase[i] = unitValue(x);
  }
  Biquad filter = lowpass(5200, 0.6, rate);
  for (std::size_t s = 0; s < n; s++) {
    double sum = 0;
    for (int i = 0; i < 12; i++) {
      phase[i] = phase[i] + frequency[i] / rate;
      if (phase[i] >= 1)
        phase[i] = phase[i] - 1;
      sum = sum + (2 * phase[i] - 1);
    }
    out[s] = filter.process(static_cast<float>(sum / 12));
  }
  for (std::size_t i = 0; i < n && i < 480; i++) {
    const float fade = static_cast<float>(i) / 480.0f;
    out[i] = out[i] * fade;
    out[n - 1 - i] = out[n - 1 - i] * fade;
  }
  return normalizeRMS(out, -20);
}

Pair stereoise(const Samples& mono, double correlation, std::uint64_t seed, bool audible) {
  const std::size_t n = mono.size();
  std::uint64_t x = startState(seed + 7717);
  Samples noise(n);
  for (std::size_t i = 0; i < n; i++) {
    x = step(x);
    noise[i] = static_cast<float>(audible ? noiseValue(x) - 1 : noiseValue(x));
  }
  Biquad filter = lowpass(6000, 0.7, rate);
  for (std::size_t i = 0; i < n; i++)
    noise[i] = filter.process(noise[i]);
  noise = normalizeRMS(noise, rmsDB(mono));
  const double w = 1 - correlation >= 0 ? 1 - correlation : 0;
  Samples mix(n);
  for (std::size_t i = 0; i < n; i++)
    mix[i] = static_cast<float>(correlation * static_cast<double>(mono[i]) +
                                w * static_cast<double>(noise[i]));
  return {mono, normalizeRMS(mix, rmsDB(mono))};
}

// Trials

const std::array<double, 27>& bandCentres() {
  static const std::array<double, 27> centres = {
      40,   50,   63,   80,   100,  125,  160,  200,  250,  315,  400,   500,   630,  800,
      1000, 1250, 1600, 2000, 2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000};
  return centres;
}

namespace {

// printf of one double. Tests that change the locale must not call this.
std::string print(const char* format, double value) {
  char text[512];
  const int length = std::snprintf(text, sizeof text, format, value);
  return std::string(text, static_cast<std::size_t>(length));
}

} // namespace

std::string bandLabel(double f) {
  return f >= 1000 ? print("%.4gk", f / 1000) : print("%.0f", f);
}

Trial makeTrial(double difficulty, Material material, std::uint64_t seed, Drill drill) {
  const std::uint64_t x = step(startState(seed));
  const double u = unitValue(x);
  const double d = difficulty <= 0 ? 0 : (difficulty < 100 ? difficulty : 100) / 100;

  Trial t = {drill, seed, material, difficulty, 2, 0, 0, 0, 0, 0, 0, 1.0};
  if (drill == Drill::frequency) {
    t.targetFreq = bandCentres()[x % 27];
    t.boostDB = 12 - 9 * d;
    t.boostQ = 2 + 3 * d;
  }
  if (drill == Drill::level) {
    const double hi = 6 - 5.6 * d;
    const double lo = 0.45 * hi;
    const double value = lo + (hi - lo) * u;
    t.targetLevelDB = std::round(value * 20) / 20;
  }
  if (drill == Drill::dynamics) {
    const double hi = 12 - 10 * d;
    const double lo = 0.4 * hi;
    const double value = lo + (hi - lo) * u;
    t.targetGRdB = std::round(value * 10) / 10;
  }
  if (drill == Drill::polarity) {
    t.oddSlot = static_cast<std::int64_t>(x % 3);
    t.correlation = 1 - 0.65 * d;
    t.slots = 3;
  }
  return t;
}

std::uint64_t mixedSeed(std::uint64_t counter) {
  std::uint64_t z = counter + 0x9E3779B97F4A7C15u;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  z = z ^ (z >> 31);
  return z;
}

Grade grade(double a, const Trial& t) {
  if (t.drill == Drill::frequency) {
    const double error = std::fabs(std::log2(a / t.targetFreq));
    return {error <= 1.0 / 3.0, error, print("%.2f oct off", error),
            bandLabel(t.targetFreq) + " Hz", bandLabel(a) + " Hz"};
  }
  if (t.drill == Drill::level) {
    const double error = std::fabs(a - t.targetLevelDB);
    return {error <= 0.75, error, print("%.2f dB off", error), print("%.2f dB", t.targetLevelDB),
            print("%.2f dB", a)};
  }
  if (t.drill == Drill::dynamics) {
    const double error = std::fabs(a - t.targetGRdB);
    return {error <= 2.0, error, print("%.1f dB off", error), print("%.1f dB GR", t.targetGRdB),
            print("%.1f dB GR", a)};
  }
  if (!(a >= -9223372036854775808.0 && a < 9223372036854775808.0))
    impossible("slot");
  const std::int64_t pick = static_cast<std::int64_t>(a);
  const bool hit = pick == t.oddSlot;
  return {hit, hit ? 0.0 : 1.0, hit ? "hit" : "miss", "slot " + std::to_string(t.oddSlot + 1),
          "slot " + std::to_string(pick + 1)};
}

void Staircase::record(bool correct) {
  const std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  double size = 3;
  if (reversals <= 6)
    size = 5;
  if (reversals <= 3)
    size = 8;
  if (reversals <= 1)
    size = 12;

  std::int64_t direction = 0;
  if (correct) {
    if (consecutiveCorrect < largest)
      consecutiveCorrect = consecutiveCorrect + 1;
    if (consecutiveCorrect < 2)
      return;
    consecutiveCorrect = 0;
    difficulty = difficulty + size < 100 ? difficulty + size : 100;
    direction = +1;
  } else {
    consecutiveCorrect = 0;
    difficulty = difficulty - size;
    if (difficulty < 0)
      difficulty = 0;
    direction = -1;
  }
  if (lastDirection != 0 && lastDirection != direction && reversals < largest)
    reversals = reversals + 1;
  lastDirection = direction;
}

// Rendering

namespace {

// The smoothed gain reduction of every sample at a threshold.
std::vector<double> smoothedReduction(const Samples& x, double threshold) {
  const double attack = std::exp(-1 / (0.005 * 48000));
  const double release = std::exp(-1 / (0.12 * 48000));
  std::vector<double> reductions(x.size());
  double env = 0;
  for (std::size_t i = 0; i < x.size(); i++) {
    const double level = 20 * std::log10(std::fmax(std::fabs(static_cast<double>(x[i])), 1e-9));
    const double gr = gainReduction(level, threshold);
    const double c = env < gr ? attack : release;
    env = gr + c * (env - gr);
    if (std::isnan(env))
      env = 0;
    reductions[i] = env;
  }
  return reductions;
}

double largest(const std::vector<double>& values) {
  double most = 0;
  for (double value : values)
    if (value > most)
      most = value;
  return most;
}

} // namespace

double gainReduction(double level, double threshold) {
  const double over = level - threshold;
  if (over >= 3)
    return over - 0.25 * over;
  if (over > -3)
    return 0.75 * ((over + 3) * (over + 3)) / 12;
  return 0;
}

Compressed compressorHitting(double targetGR, const Samples& x) {
  if (x.empty())
    return {Samples(), 0};
  double hi = peakDB(x);
  double lo = hi - 40;
  double T = 0;
  for (int round = 1; round <= 12; round++) {
    T = (hi + lo) / 2;
    const double G = largest(smoothedReduction(x, T));
    if (G < targetGR)
      hi = T;
    else
      lo = T;
  }
  const std::vector<double> env = smoothedReduction(x, T);
  Samples out(x.size());
  for (std::size_t i = 0; i < x.size(); i++)
    out[i] = static_cast<float>(static_cast<double>(x[i]) * std::pow(10.0, -env[i] / 20));
  return {out, largest(env)};
}

std::vector<Pair> render(const Trial& trial, double seconds, bool audible) {
  Samples src;
  if (trial.material == Material::pinkNoise)
    src = pink(seconds, trial.seed, audible);
  if (trial.material == Material::drums)
    src = drums(seconds, trial.seed);
  if (trial.material == Material::pad)
    src = pad(seconds, trial.seed);

  if (trial.drill == Drill::frequency) {
    Biquad filter = peaking(trial.targetFreq, trial.boostDB, trial.boostQ, rate);
    Samples boosted = src;
    for (std::size_t i = 0; i < boosted.size(); i++)
      boosted[i] = filter.process(boosted[i]);
    boosted = normalizeRMS(boosted, rmsDB(src));
    return {{src, src}, {boosted, boosted}};
  }
  if (trial.drill == Drill::level) {
    const float g = static_cast<float>(std::pow(10.0, trial.targetLevelDB / 20));
    Samples louder = src;
    for (std::size_t i = 0; i < louder.size(); i++)
      louder[i] = src[i] * g;
    return {{src, src}, {louder, louder}};
  }
  if (trial.drill == Drill::dynamics) {
    const Compressed compressed = compressorHitting(trial.targetGRdB, src);
    const Samples matched = normalizeRMS(compressed.out, rmsDB(src));
    return {{src, src}, {matched, matched}};
  }
  const Pair stereo = stereoise(src, trial.correlation, trial.seed, audible);
  std::vector<Pair> slots;
  for (std::int64_t s = 0; s < 3; s++) {
    Pair slot = stereo;
    if (s == trial.oddSlot)
      for (std::size_t i = 0; i < slot.r.size(); i++)
        slot.r[i] = -slot.r[i];
    slots.push_back(slot);
  }
  return slots;
}

} // namespace reference
