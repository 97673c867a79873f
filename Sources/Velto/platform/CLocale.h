// Thread locale.
#pragma once

#include <functional>

namespace velto {

// Runs `work` on the calling thread in the C locale, regardless of the process's. Any thread.
void runInCLocale(const std::function<void()>& work);

} // namespace velto
