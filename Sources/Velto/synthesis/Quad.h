// Four 64-bit floats. Arithmetic is element by element, each element rounded as in scalar code.
//
// One register where the processor has AVX, else two. Pass by reference: how a Quad is passed by
// value depends on the instruction set for which a function is compiled.
#pragma once

#include "Pair.h"

#include <cstring>

namespace velto {

using Quad = double __attribute__((vector_size(32)));

// Four 32-bit floats.
using SampleQuad = float __attribute__((vector_size(16)));

} // namespace velto
