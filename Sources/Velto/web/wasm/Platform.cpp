// What velto.wasm needs of the platform, from the browser.
#include "CLocale.h"
#include "LocalTime.h"

#include <cstdint>

// Seconds by which local time is ahead of UTC at a moment, in seconds since 1970.
extern "C" __attribute__((import_module("velto"), import_name("utcOffset"))) std::int32_t
velto_host_utcOffset(double moment);

namespace velto {

// The browser knows the time zone.
void LocalTime::readTimeZone() {}

std::optional<std::tm> LocalTime::at(std::time_t time) {
  const std::time_t local = time + velto_host_utcOffset(static_cast<double>(time));
  const std::tm* fields = std::gmtime(&local);
  return fields == nullptr ? std::nullopt : std::optional(*fields);
}

// There is no other locale.
void runInCLocale(const std::function<void()>& work) {
  work();
}

} // namespace velto
