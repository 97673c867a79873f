#include "ProfileLocation.h"

#include "FatalError.h"

#include <utility>

namespace velto {

namespace {

std::optional<std::filesystem::path> dataDirectory(const Environment& environment) {
  if (auto dataHome = environment.absolutePath("XDG_DATA_HOME"))
    return dataHome;
  const auto home = environment.home();
  if (!home)
    return std::nullopt;
  return *home / ".local" / "share";
}

} // namespace

std::optional<ProfileLocation> ProfileLocation::find(const Environment& environment) {
  if (const auto directory = environment.variable("VELTO_PROFILE_DIR"))
    return ProfileLocation{*directory, std::nullopt};
  const auto data = dataDirectory(environment);
  if (!data)
    return std::nullopt;
  return ProfileLocation{*data / "MORLA Velto", *data / "Velto" / "profile.json"};
}

ProfileLocation ProfileLocation::resolve(const Environment& environment) {
  auto location = find(environment);
  if (!location)
    fatalError(std::string("no directory for the user's data: ") + noDirectory);
  return *std::move(location);
}

} // namespace velto
