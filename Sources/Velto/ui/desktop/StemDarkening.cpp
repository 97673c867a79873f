#include "StemDarkening.h"

#include <dlfcn.h>

#include <cstring>

namespace {

bool prevented = false;

using SetProperty = int (*)(void*, const char*, const char*, const void*);

constexpr int missing = 0x0B; // FreeType's error for a missing module

} // namespace

void velto::StemDarkening::prevent() {
  prevented = true;
}

// Qt calls this instead of FreeType's function of the same name: the program's own symbols come
// before those of libraries. To set the property earlier or by FREETYPE_PROPERTIES would not help:
// Qt's call overrides both.
extern "C" [[gnu::visibility("default")]] int
FT_Property_Set(void* library, const char* module, const char* property, const void* value) {
  if (prevented && std::strcmp(property, "no-stem-darkening") == 0)
    return 0; // FreeType's own default is not to darken
  static const auto next = reinterpret_cast<SetProperty>(dlsym(RTLD_NEXT, "FT_Property_Set"));
  return next == nullptr ? missing : next(library, module, property, value);
}
