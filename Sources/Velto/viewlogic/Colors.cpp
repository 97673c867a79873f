#include "Colors.h"

#include <algorithm>
#include <cstdint>

namespace velto {

namespace {

// `value` is 0xRRGGBB.
constexpr Colors::Color rgb(std::uint32_t value) {
  const auto part = [value](int shift) {
    return static_cast<float>(value >> shift & 0xFF) / 255.0F;
  };
  return {part(16), part(8), part(0), 1};
}

} // namespace

const Colors::Palette& Colors::dark() {
  static const Palette palette{
      .isDark = true,
      .bg = rgb(0x0B0C0F),
      .surface = rgb(0x121318),
      .soft = rgb(0x17181E),
      .ink = rgb(0xF0F1F4),
      .muted = rgb(0x9B9FAB),
      .faint = rgb(0x646975),
      .line = rgb(0x26272E),
      .identity = rgb(0xFF453A),
      .signal = rgb(0x00A7C8),
      .control = rgb(0x6E7580),
      .selectedFill = rgb(0x1D2733),
      .track = rgb(0x1F2129),
      .good = rgb(0x30D158),
      .warn = rgb(0xFF9F0A),
      .bad = rgb(0xE74C3C),
  };
  return palette;
}

const Colors::Palette& Colors::light() {
  static const Palette palette{
      .isDark = false,
      .bg = rgb(0xFAF3EF),
      .surface = rgb(0xFFFBF6),
      .soft = rgb(0xF1E7DF),
      .ink = rgb(0x1B1D22),
      .muted = rgb(0x6F665D),
      .faint = rgb(0x9A8F84),
      .line = faded(rgb(0x1B1D22), 0.12), // the ink; opaque grey in the dark palette
      .identity = rgb(0xD6342A),
      .signal = rgb(0x007A97),
      .control = rgb(0x8A8078),
      .selectedFill = rgb(0xE7EEF1),
      .track = rgb(0xE8DDD4),
      .good = rgb(0x248A3D),
      .warn = rgb(0xB25000),
      .bad = rgb(0xC0392B),
  };
  return palette;
}

Colors::Color Colors::mix(const Color& from, const Color& to, double t) {
  const auto weight = static_cast<float>(t <= 0 ? 0 : std::min(t, 1.0));
  const auto blend = [weight](float a, float b) { return a + weight * (b - a); };
  return {blend(from.red, to.red), blend(from.green, to.green), blend(from.blue, to.blue), 1};
}

Colors::Color Colors::laidOver(const Color& top, const Color& ground) {
  const float share = top.alpha;
  const float below = ground.alpha * (1 - share);
  const float alpha = share + below;
  if (alpha <= 0)
    return {0, 0, 0, 0};
  const auto blend = [&](float a, float b) { return (a * share + b * below) / alpha; };
  return {blend(top.red, ground.red), blend(top.green, ground.green), blend(top.blue, ground.blue),
          alpha};
}

Colors::Color Colors::faded(const Color& color, double opacity) {
  Color result = color;
  result.alpha *= static_cast<float>(opacity);
  return result;
}

Colors::Color Colors::weakness(const Color& good, const Color& warn, const Color& bad,
                               double weakness) {
  if (weakness < 0.5)
    return mix(good, warn, 2 * weakness);
  return mix(warn, bad, 2 * (weakness - 0.5));
}

} // namespace velto
