// Thread locale.
#pragma once

#include <functional>

namespace velto {

// Runs `work` in the C locale on the calling thread, whatever the process's locale. Any thread.
void runInCLocale(const std::function<void()>& work);

} // namespace velto
