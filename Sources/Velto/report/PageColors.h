// The colours of the report: those of the window, and the same on white paper.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace velto {

// An opaque sRGB colour, 0xRRGGBB.
using PageColor = std::uint32_t;

// One set of colours. The names are those of the window's palette.
struct PageColors {
  PageColor bg = 0;       // page
  PageColor surface = 0;  // boxes
  PageColor ink = 0;      // text
  PageColor muted = 0;    // captions, units
  PageColor line = 0;     // hairlines
  PageColor track = 0;    // empty part of bars, days without practice
  PageColor identity = 0; // accent
  PageColor signal = 0;   // the fitted curve, days with practice
  PageColor control = 0;  // the difficulty curve
  PageColor good = 0;     // a strong band
  PageColor warn = 0;
  PageColor bad = 0; // a weak band

  [[nodiscard]] static const PageColors& dark();
  [[nodiscard]] static const PageColors& light();
  // The light ones on white.
  [[nodiscard]] static const PageColors& paper();

  // From `good` through `warn` to `bad` as `weakness` goes from 0 to 1; clamped beyond.
  [[nodiscard]] PageColor weakness(double weakness) const;

  // `from` blended toward `to` by `t`, 0 to 1, each channel rounded.
  [[nodiscard]] static PageColor mixed(PageColor from, PageColor to, double t);
  // "#0b0c0f"
  [[nodiscard]] static std::string text(PageColor color);
};

} // namespace velto
