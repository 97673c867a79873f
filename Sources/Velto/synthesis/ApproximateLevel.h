// Levels in decibels where a bounded error is enough, without a logarithm.
#pragma once

namespace velto {

// Largest error of approximateLevelDB(), in dB.
inline constexpr double approximateLevelErrorDB = 1e-10;

// 20 * log10(amplitude) within approximateLevelErrorDB. The amplitude is positive, finite and not
// subnormal; not checked. Real-time safe after the first call, any thread.
[[nodiscard]] double approximateLevelDB(double amplitude);

} // namespace velto
