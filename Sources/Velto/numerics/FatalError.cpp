#include "FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace velto {

void fatalError(std::string_view message) {
  std::fprintf(stderr, "Velto: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

} // namespace velto
