// The page's side of velto.wasm: what a browser would provide, and calls that read JSON.
#pragma once

#include "Interface.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto::kit {

// velto.wasm holds one page. start() replaces it, and what the browser has seen of the last one.
struct Browser {
  struct Job {
    int drill = 0;
    int material = 0;
    std::uint64_t seed = 0;
    double difficulty = 0;
    bool fair = false;
  };
  struct Play {
    int chosen = 0;
    double delayFrames = 0;
    bool throughSilence = false;
    std::vector<std::vector<float>> samples; // left and right of each slot in turn
  };

  std::vector<Job> jobs;           // renders asked for
  int openings = 0;                // of the output
  std::vector<Play> plays;         // what was played
  std::vector<int> switches;       // where playback was switched to
  int silences = 0;                // how often playback was silenced
  std::optional<std::string> kept; // the record kept last

  // The browser of the page that was started last.
  static Browser& ofPage();

  // Starts a page.
  static Browser& start(int drill = 0, bool fair = false, std::string_view record = {},
                        double secondsSince1970 = 1'700'000'000);

  // Renders the latest job with render.wasm's functions and hands the result over.
  void renderLatest() const;
  // Presses a key with the focus at `focus`.
  static bool press(const std::string& key, int focus = 0, int flags = 0);
  static nlohmann::json state();
  // The text that a function of velto.wasm has returned.
  static nlohmann::json parsed(const char* text);
};

} // namespace velto::kit
