// Verdict of the audio self-test.
#pragma once

#include <span>

namespace velto::SelfTest {

// Prints level and verdict. True if the captured left channel is the self-test's trial: more than
// 20000 frames, an RMS level between -32 and -12 dB (the material's -20 dB, with margin for
// fade-in, mixer and boost), and a peak below full scale. Main thread only.
[[nodiscard]] bool judge(std::span<const float> captured);

} // namespace velto::SelfTest
