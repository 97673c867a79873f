// The loops of Kernels. Kernels.cpp includes this file once for each instruction set, each time in
// another namespace: it must not guard itself against that.

// Makes columns of rows.
void transpose(Quad (&rows)[4]) {
  const Quad evenOf01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 2, 6);
  const Quad oddOf01 = __builtin_shufflevector(rows[0], rows[1], 1, 5, 3, 7);
  const Quad evenOf23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 2, 6);
  const Quad oddOf23 = __builtin_shufflevector(rows[2], rows[3], 1, 5, 3, 7);
  rows[0] = __builtin_shufflevector(evenOf01, evenOf23, 0, 1, 4, 5);
  rows[1] = __builtin_shufflevector(oddOf01, oddOf23, 0, 1, 4, 5);
  rows[2] = __builtin_shufflevector(evenOf01, evenOf23, 2, 3, 6, 7);
  rows[3] = __builtin_shufflevector(oddOf01, oddOf23, 2, 3, 6, 7);
}

// The first, and the second, elements of four pairs.
void separate(const Pair (&rows)[4], Quad& first, Quad& second) {
  const Quad rows02 = __builtin_shufflevector(rows[0], rows[2], 0, 1, 2, 3);
  const Quad rows13 = __builtin_shufflevector(rows[1], rows[3], 0, 1, 2, 3);
  first = __builtin_shufflevector(rows02, rows13, 0, 4, 2, 6);
  second = __builtin_shufflevector(rows02, rows13, 1, 5, 3, 7);
}

// Six one-pole filters and a delayed tap, summed in this order. The filters of a frame are computed
// together, the sums of four frames together.
class PinkFilter {
public:
  // Filters white[0] to white[3]; white[-1] is the value before them.
  SampleQuad next(const double* white) {
    const Quad decay0123{0.99886, 0.99332, 0.969, 0.8665};
    const Quad input0123{0.0555179, 0.0750759, 0.153852, 0.3104856};
    const Pair decay45{0.55, -0.7616}, input45{0.5329522, -0.016898};
    Quad poles[4];
    Pair latePoles[4];
    for (std::size_t k = 0; k < 4; ++k) {
      poles[k] = b0123_ = decay0123 * b0123_ + input0123 * white[k];
      latePoles[k] = b45_ = decay45 * b45_ + input45 * white[k];
    }
    transpose(poles);
    Quad b4, b5;
    separate(latePoles, b4, b5);
    Quad now, before;
    std::memcpy(&now, white, sizeof now);
    std::memcpy(&before, white - 1, sizeof before);
    return __builtin_convertvector(0.11 * (poles[0] + poles[1] + poles[2] + poles[3] + b4 + b5 +
                                           0.115926 * before + 0.5362 * now),
                                   SampleQuad);
  }

private:
  Quad b0123_{};
  Pair b45_{};
};

struct Unfiltered {
  static constexpr std::size_t delayFrames = 0;
  static SampleQuad next(const SampleQuad& samples) { return samples; }
};

// A fourth-order Butterworth high-pass at 20 Hz: two sections whose recursions are computed
// together, in the two halves of a Pair.
//
// Each call runs the recursions on the feed-forward sums of the call before, then prepares those of
// the next one; the second section's input is the first one's output of the call before. So the
// recursions wait for nothing that their own call computes.
class Highpass20Hz {
public:
  static constexpr std::size_t delayFrames = 12;

  Highpass20Hz()
      : Highpass20Hz(Biquad::highpass(20, 0.5412, sampleRateHz),
                     Biquad::highpass(20, 1.3066, sampleRateHz)) {}

  // Returns the filtered samples of the third call before.
  SampleQuad next(const SampleQuad& samples) {
    Pair outputs[4]{
        __builtin_shufflevector(even_, even_, 0, 1), __builtin_shufflevector(odd_, odd_, 0, 1),
        __builtin_shufflevector(even_, even_, 2, 3), __builtin_shufflevector(odd_, odd_, 2, 3)};
    Quad ofFirst, ofSecond;
    first_.next(samples, ofFirst);
    second_.next(between_, ofSecond);
    even_ = __builtin_shufflevector(ofFirst, ofSecond, 0, 4, 2, 6);
    odd_ = __builtin_shufflevector(ofFirst, ofSecond, 1, 5, 3, 7);
    for (Pair& y : outputs) {
      y = y - a1_ * y1_ - a2_ * y2_;
      y2_ = y1_;
      y1_ = y;
    }
    Quad first, second;
    separate(outputs, first, second);
    between_ = __builtin_convertvector(first, SampleQuad);
    return __builtin_convertvector(second, SampleQuad);
  }

private:
  // The feed-forward part of a section, of four frames together.
  struct Forward {
    double b0, b1, b2;
    Quad x{}; // the previous input

    void next(const SampleQuad& samples, Quad& sums) {
      const Quad last = x;
      x = __builtin_convertvector(samples, Quad);
      const Quad x2 = __builtin_shufflevector(last, x, 2, 3, 4, 5);
      const Quad x1 = __builtin_shufflevector(x2, x, 1, 4, 3, 6);
      sums = b0 * x + b1 * x1 + b2 * x2;
    }
  };

  Highpass20Hz(const Biquad& first, const Biquad& second)
      : first_{first.b0, first.b1, first.b2}, second_{second.b0, second.b1, second.b2},
        a1_{first.a1, second.a1}, a2_{first.a2, second.a2} {}

  Forward first_, second_;
  Pair a1_, a2_, y1_{}, y2_{};
  Quad even_{}, odd_{};
  SampleQuad between_{};
};

// Copies four samples to the frames of `out` from `first` on. Clears those that are not frames of
// `out`. A negative `first` has wrapped around.
void keep(SampleQuad& samples, std::span<float> out, std::size_t first) {
  if (first < out.size() && out.size() - first >= 4) {
    std::memcpy(&out[first], &samples, sizeof samples);
    return;
  }
  for (std::size_t k = 0; k < 4; ++k)
    if (first + k < out.size())
      out[first + k] = samples[k];
    else
      samples[k] = 0;
}

// Pink noise, filtered by `After`. Generator, filters and the sum of squares are chains in which
// each step needs the one before. The generator runs a block ahead and the sum a block behind, so
// that a processor can work on all of them at once.
template <typename After>
double filteredNoise(std::span<float> out, std::uint64_t seed, double removed) {
  constexpr std::size_t blockFrames = 256;
  // White noise of two blocks in turn, after the last value of the block before.
  alignas(Quad) double noise[2][blockFrames + 4] = {};
  alignas(Quad) double squares[blockFrames] = {};

  Xorshift64 generator(seed);
  for (std::size_t i = 0; i < blockFrames; ++i)
    noise[0][4 + i] = generator.nextNoise() - removed;
  PinkFilter pink;
  After after;
  double sum = 0;
  const std::size_t end = out.size() + After::delayFrames;
  for (std::size_t begin = 0, block = 0; begin < end; begin += blockFrames, block ^= 1) {
    const double* white = noise[block] + 4;
    double* nextWhite = noise[1 - block] + 4;
    for (std::size_t i = 0; i < blockFrames; i += 4) {
      for (std::size_t k = i; k < i + 4; ++k)
        nextWhite[k] = generator.nextNoise() - removed;
      SampleQuad samples = after.next(pink.next(white + i));
      keep(samples, out, begin + i - After::delayFrames);
      for (std::size_t k = i; k < i + 4; ++k)
        sum += squares[k];
      const Quad exact = __builtin_convertvector(samples, Quad);
      const Quad square = exact * exact;
      std::memcpy(squares + i, &square, sizeof square);
    }
    nextWhite[-1] = white[blockFrames - 1];
  }
  for (const double square : squares)
    sum += square;
  return sum;
}

double pinkNoise(std::span<float> out, std::uint64_t seed) {
  return filteredNoise<Unfiltered>(out, seed, 0);
}

double audiblePinkNoise(std::span<float> out, std::uint64_t seed) {
  return filteredNoise<Highpass20Hz>(out, seed, Xorshift64::noiseMean);
}

// Twelve sawtooth oscillators on an A major chord, three per note, with random phases.
//
// Phases are stored doubled: doubling is exact, so the sums are the same. Oscillators are computed
// in fours, sums in fours of successive frames.
class SawtoothChord {
public:
  static constexpr std::size_t blockFrames = 8;
  static constexpr std::size_t groups = 3; // of four oscillators

  explicit SawtoothChord(Xorshift64& generator) {
    constexpr double rootsHz[] = {110.0, 164.81, 220.0, 277.18};
    constexpr double detunings[] = {0.994, 1.0, 1.007};
    for (std::size_t i = 0; i < voices; ++i) {
      const double increment = rootsHz[i / 3] * detunings[i % 3] / sampleRateHz;
      oscillators_[i / 4].increment[i % 4] = 2 * increment;
      oscillators_[i / 4].phase[i % 4] = 2 * generator.nextUnit();
    }
  }

  // Writes the mean of the oscillators in each of the next `blockFrames` frames, rounded. Calls
  // meanwhile(group) before each group: work of another kind hides the latency of the sums.
  template <typename Meanwhile>
  void next(float* means, Meanwhile meanwhile) {
    Quad sums[blockFrames / 4] = {};
    for (std::size_t group = 0; group < groups; ++group) {
      meanwhile(group);
      Oscillators& four = oscillators_[group];
      if (four.mayWrap())
        four.addTo<true>(sums);
      else
        four.addTo<false>(sums);
    }
    for (std::size_t i = 0; i < blockFrames; i += 4) {
      const SampleQuad samples =
          __builtin_convertvector(sums[i / 4] / static_cast<double>(voices), SampleQuad);
      std::memcpy(means + i, &samples, sizeof samples);
    }
  }

private:
  static constexpr std::size_t voices = 4 * groups;

  struct Oscillators {
    Quad increment{};
    Quad phase{}; // in [0, 2)

    // Whether a phase may reach 2 within a block, with a frame of margin for rounding.
    [[nodiscard]] bool mayWrap() const {
      const Quad end = phase + static_cast<double>(blockFrames + 1) * increment;
      return end[0] >= 2 || end[1] >= 2 || end[2] >= 2 || end[3] >= 2;
    }

    template <bool wraps>
    void addTo(Quad* sums) {
      for (std::size_t i = 0; i < blockFrames; i += 4) {
        Quad phases[4];
        for (Quad& now : phases) {
          phase += increment;
          if constexpr (wraps)
            phase -= phase >= 2.0 ? Quad{2, 2, 2, 2} : Quad{};
          now = phase;
        }
        transpose(phases);
        for (const Quad& oscillator : phases)
          sums[i / 4] += oscillator - 1.0;
      }
    }
  };

  Oscillators oscillators_[groups];
};

// A block is filtered while the next one is computed.
void pad(std::span<float> out, std::uint64_t seed) {
  constexpr std::size_t blockFrames = SawtoothChord::blockFrames;
  Xorshift64 generator(seed);
  SawtoothChord chord(generator);
  PairedBiquad filter(Biquad::lowpass(5200, 0.6, sampleRateHz));
  float means[blockFrames], filtered[blockFrames];
  chord.next(means, [](std::size_t) {});
  for (std::size_t begin = 0; begin < out.size(); begin += blockFrames) {
    float nextMeans[blockFrames];
    const auto filterPair = [&](std::size_t frame) {
      setPair(filtered, frame, filter.process(pairAt(means, frame)));
    };
    chord.next(nextMeans, [&](std::size_t group) { filterPair(2 * group); });
    filterPair(2 * SawtoothChord::groups);
    std::copy_n(filtered, std::min(blockFrames, out.size() - begin),
                out.begin() + static_cast<std::ptrdiff_t>(begin));
    std::copy_n(nextMeans, blockFrames, means);
  }
}
