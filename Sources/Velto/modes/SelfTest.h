// The verdict of the audio self-test.
#pragma once

#include <span>

namespace velto::SelfTest {

// Whether the captured left channel is the self-test's trial: enough of it, its RMS level between
// -32 and -12 dB (the material's -20 dB, with room for the fade-in, the mixer and the boost), and
// nothing at or above full scale. Prints the level and the verdict. Main thread only.
[[nodiscard]] bool judge(std::span<const float> captured);

} // namespace velto::SelfTest
