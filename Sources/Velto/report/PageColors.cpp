#include "PageColors.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

constexpr PageColor lightInk = 0x1B1D22;
constexpr double lineOpacity = 0.12; // of the ink, in the light palette

PageColors lightOn(PageColor bg, PageColor surface) {
  return {.bg = bg,
          .surface = surface,
          .ink = lightInk,
          .muted = 0x6F665D,
          .line = PageColors::mixed(bg, lightInk, lineOpacity),
          .track = 0xE8DDD4,
          .identity = 0xD6342A,
          .signal = 0x007A97,
          .control = 0x8A8078,
          .good = 0x248A3D,
          .warn = 0xB25000,
          .bad = 0xC0392B};
}

} // namespace

const PageColors& PageColors::dark() {
  static const PageColors colors{.bg = 0x0B0C0F,
                                 .surface = 0x121318,
                                 .ink = 0xF0F1F4,
                                 .muted = 0x9B9FAB,
                                 .line = 0x26272E,
                                 .track = 0x1F2129,
                                 .identity = 0xFF453A,
                                 .signal = 0x00A7C8,
                                 .control = 0x6E7580,
                                 .good = 0x30D158,
                                 .warn = 0xFF9F0A,
                                 .bad = 0xE74C3C};
  return colors;
}

const PageColors& PageColors::light() {
  static const PageColors colors = lightOn(0xFAF3EF, 0xFFFBF6);
  return colors;
}

const PageColors& PageColors::paper() {
  static const PageColors colors = lightOn(0xFFFFFF, 0xFFFFFF);
  return colors;
}

PageColor PageColors::weakness(double weakness) const {
  if (weakness < 0.5)
    return mixed(good, warn, 2 * weakness);
  return mixed(warn, bad, 2 * (weakness - 0.5));
}

PageColor PageColors::mixed(PageColor from, PageColor to, double t) {
  const double weight = std::clamp(t, 0.0, 1.0);
  PageColor result = 0;
  for (const int shift : {16, 8, 0}) {
    const auto channel = [shift](PageColor color) {
      return static_cast<double>(color >> shift & 0xFFU);
    };
    const double value = channel(from) + weight * (channel(to) - channel(from));
    result |= static_cast<PageColor>(std::lround(value)) << shift;
  }
  return result;
}

std::string PageColors::text(PageColor color) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text = "#";
  for (const int shift : {20, 16, 12, 8, 4, 0})
    text += digits[color >> shift & 0xFU];
  return text;
}

} // namespace velto
