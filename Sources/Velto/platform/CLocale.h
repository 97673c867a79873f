// The locale of a thread.
#pragma once

#include <functional>

namespace velto {

// Runs `work` with the C locale for this thread, whatever the process has set. Any thread.
void runInCLocale(const std::function<void()>& work);

} // namespace velto
