// velto-lab needs neither a display nor sound: no library that it loads is of Qt or plays.
#include "kit/Command.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

namespace velto {
namespace {

// The names of all libraries that a program loads, directly or through others.
std::set<std::string> loadedBy(const std::string& program) {
  const kit::CommandResult result = kit::runCommand("ldd '" + program + "'");
  EXPECT_EQ(result.status, 0);
  const std::regex name("(?:^|\\n)\\s*(\\S+)");
  std::set<std::string> names;
  for (auto at = std::sregex_iterator(result.output.begin(), result.output.end(), name);
       at != std::sregex_iterator(); ++at)
    names.insert((*at)[1]);
  return names;
}

// The names that a program's own table of needed libraries has.
std::set<std::string> neededBy(const std::string& program) {
  const kit::CommandResult result = kit::runCommand("readelf -d '" + program + "'");
  EXPECT_EQ(result.status, 0);
  const std::regex name("\\(NEEDED\\).*\\[(.+)\\]");
  std::set<std::string> names;
  for (auto at = std::sregex_iterator(result.output.begin(), result.output.end(), name);
       at != std::sregex_iterator(); ++at)
    names.insert((*at)[1]);
  return names;
}

std::set<std::string> ofWindowOrSound(const std::set<std::string>& names) {
  const std::regex pattern(
      "lib(Qt|xcb|X11|wayland|cubeb|pulse|asound|jack|pipewire|portaudio|SDL|openal|sndio).*");
  std::set<std::string> found;
  for (const std::string& name : names)
    if (std::regex_match(name, pattern))
      found.insert(name);
  return found;
}

TEST(LabLinking, LoadsNeitherQtNorASoundSystem) {
  const auto loaded = loadedBy(VELTO_LAB);
  EXPECT_TRUE(loaded.contains("libsndfile.so.1"));
  EXPECT_EQ(ofWindowOrSound(loaded), std::set<std::string>{});
  EXPECT_EQ(ofWindowOrSound(neededBy(VELTO_LAB)), std::set<std::string>{});
}

// The same look at the window's program finds both.
TEST(LabLinking, WouldShowIfItDid) {
  const auto loaded = ofWindowOrSound(loadedBy(VELTO_PROGRAM));
  const auto needed = ofWindowOrSound(neededBy(VELTO_PROGRAM));
  for (const char* library : {"libQt6Core.so.6", "libcubeb.so.0"}) {
    EXPECT_TRUE(loaded.contains(library)) << library;
    EXPECT_TRUE(needed.contains(library)) << library;
  }
  EXPECT_TRUE(loaded.contains("libpulse.so.0"));
}

} // namespace
} // namespace velto
