// Runs velto-lab as a user would.
#pragma once

#include "kit/ChildProcess.h"
#include "kit/Files.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace velto::testing {

using Words = std::vector<std::string>;

// A home and a folder for the practice record, both empty at first, and the program in it.
class LabRunner {
public:
  [[nodiscard]] const std::filesystem::path& folder() const { return scratch_.path(); }
  [[nodiscard]] std::filesystem::path record() const { return folder() / "profile.json"; }

  // The names in the folder, with what the files hold.
  [[nodiscard]] std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder()))
      files[entry.path().filename().string()] = kit::contentOf(entry.path());
    return files;
  }

  [[nodiscard]] kit::ChildResult run(Words words, kit::ChildOptions options = {}) const {
    options.environment.try_emplace("HOME", folder().string());
    options.environment.try_emplace("VELTO_PROFILE_DIR", folder().string());
    options.folder = folder().string();
    words.insert(words.begin(), VELTO_LAB);
    return kit::runChild(words, options);
  }

private:
  kit::ScratchFolder scratch_;
};

// True for one complete line that begins with the program's name.
[[nodiscard]] inline bool isOneComplaint(const std::string& text) {
  return text.starts_with("velto-lab: ") && std::count(text.begin(), text.end(), '\n') == 1 &&
         text.ends_with('\n');
}

} // namespace velto::testing
