#include "ProfileLocation.h"

#include "FatalError.h"

#include <utility>

namespace velto {

namespace {

using Path = std::filesystem::path;

std::optional<Path> absolutePath(const std::optional<std::string>& text) {
  if (!text || !Path(*text).is_absolute())
    return std::nullopt;
  return *text;
}

std::optional<Path> dataDirectory(const Environment& environment) {
  if (const auto dataHome = absolutePath(environment.variable("XDG_DATA_HOME")))
    return dataHome;
  auto home = absolutePath(environment.variable("HOME"));
  if (!home)
    home = absolutePath(environment.accountHome());
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
