#include "Kernels.h"

#include "DSP.h"
#include "Quad.h"
#include "Xorshift64.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace velto {

namespace {

namespace forAny {
#include "KernelLoops.h"
} // namespace forAny

} // namespace

const Kernels& Kernels::baseline() {
  static constexpr Kernels kernels{.pinkNoise = forAny::pinkNoise,
                                   .audiblePinkNoise = forAny::audiblePinkNoise,
                                   .pad = forAny::pad};
  return kernels;
}

// Where programs are not ELF, GCC may not align the stack for AVX.
#if defined(__x86_64__) && defined(__ELF__) && !defined(VELTO_WITHOUT_AVX2)

namespace {

#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace forAVX2 {
#include "KernelLoops.h" // NOLINT(readability-duplicate-include)
} // namespace forAVX2

#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

} // namespace

const Kernels* Kernels::avx2() {
  static constexpr Kernels kernels{.pinkNoise = forAVX2::pinkNoise,
                                   .audiblePinkNoise = forAVX2::audiblePinkNoise,
                                   .pad = forAVX2::pad};
  return __builtin_cpu_supports("avx2") != 0 ? &kernels : nullptr;
}

#else

const Kernels* Kernels::avx2() {
  return nullptr;
}

#endif

const Kernels& Kernels::best() {
  static const Kernels& kernels = avx2() != nullptr ? *avx2() : baseline();
  return kernels;
}

} // namespace velto
