// The interface's colours and how they are blended. Pure functions. Any thread.
#pragma once

namespace velto::Colors {

// An sRGB colour. Each part is 0 to 1.
struct Color {
  float red = 0;
  float green = 0;
  float blue = 0;
  float alpha = 1;

  bool operator==(const Color&) const = default;
};

// One set of colours.
struct Palette {
  bool isDark = true;
  Color bg;           // window; text on the enabled primary button
  Color surface;      // panels, the trial card
  Color soft;         // scale strips, disabled primary button
  Color ink;          // primary text, truth marker, enabled primary button, selected outlines
  Color muted;        // secondary text, major ticks
  Color faint;        // captions, minor ticks
  Color line;         // hairlines and 1-point borders
  Color identity;     // brand accent
  Color signal;       // the listener's marker
  Color control;      // the difficulty curve
  Color selectedFill; // chosen buttons, chosen or flipped slot
  Color track;        // empty part of bars
  Color good;         // a hit
  Color warn;         // the middle of the weakness scale
  Color bad;          // a miss
};

// The two palettes, each made on first use.
[[nodiscard]] const Palette& dark();
[[nodiscard]] const Palette& light();

// Blends the red, green and blue of `from` toward `to` by `t`, clamped to 0...1. Ignores opacity:
// the result is opaque.
[[nodiscard]] Color mix(const Color& from, const Color& to, double t);

// `top` laid over `ground`, both with their opacities. Transparent black if both are transparent.
[[nodiscard]] Color laidOver(const Color& top, const Color& ground);

// `color` with its opacity multiplied by `opacity`, 0 to 1.
[[nodiscard]] Color faded(const Color& color, double opacity);

// The colour of a band in the weakness map: from `good` through `warn` to `bad` as `weakness` goes
// from 0 to 1; clamped beyond.
[[nodiscard]] Color weakness(const Color& good, const Color& warn, const Color& bad,
                             double weakness);

} // namespace velto::Colors
