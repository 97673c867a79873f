// Two 64-bit floats that are computed with at once: each operation is that of double, on both.
//
// Every 64-bit processor has registers of this width and every compiler of this project knows them,
// so that sums whose order is fixed run two to an instruction without a rounding changed.
#pragma once

namespace velto {

using Pair = double __attribute__((vector_size(16)));

[[nodiscard]] inline Pair both(double value) {
  return Pair{value, value};
}

// The first, or second, of two values each, for instance of two successive frames.
[[nodiscard]] inline Pair firsts(Pair a, Pair b) {
  return Pair{a[0], b[0]};
}
[[nodiscard]] inline Pair seconds(Pair a, Pair b) {
  return Pair{a[1], b[1]};
}

} // namespace velto
