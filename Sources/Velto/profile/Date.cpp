#include "Date.h"

#include <chrono>

namespace velto {

Date Date::now() {
  using namespace std::chrono;
  // Subtract as integers, so that only the difference is rounded.
  constexpr auto reference = sys_days{2001y / January / 1};
  return {duration<double>(system_clock::now() - reference).count()};
}

} // namespace velto
