// The end of mixer.wasm after a programming error: it traps. There is no stream to write to on the
// audio thread.
#include "FatalError.h"

#include <version>

namespace velto {

void fatalError(std::string_view) {
  __builtin_trap();
}

} // namespace velto

// Replace those of older and newer versions of libc++abi, which print.
extern "C" [[noreturn]] void abort_message(const char*, ...) { // NOLINT
  __builtin_trap();
}
extern "C" [[noreturn]] void __abort_message(const char*, ...) { // NOLINT
  __builtin_trap();
}

// libc++ calls this function where it would throw, and lets programs replace it. In newer versions
// it is noexcept.
_LIBCPP_BEGIN_NAMESPACE_STD
void __libcpp_verbose_abort(const char*, ...) noexcept(noexcept(__libcpp_verbose_abort(""))) {
  __builtin_trap();
}
_LIBCPP_END_NAMESPACE_STD
