#include "LocalTime.h"

#include <time.h>

namespace velto {

void LocalTime::readTimeZone() {
  tzset();
}

std::optional<std::tm> LocalTime::at(std::time_t time) {
  std::tm fields{};
  if (localtime_r(&time, &fields) == nullptr)
    return std::nullopt;
  return fields;
}

} // namespace velto
