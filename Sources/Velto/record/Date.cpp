#include "Date.h"

#include <chrono>

namespace velto {

Date Date::now() {
  using namespace std::chrono;
  // Subtracted as integers: what is left is small enough for a double to keep its nanoseconds well.
  constexpr auto reference = sys_days{2001y / January / 1};
  return {duration<double>(system_clock::now() - reference).count()};
}

} // namespace velto
