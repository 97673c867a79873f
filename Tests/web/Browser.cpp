#include "Browser.h"

#include <algorithm>

namespace velto::kit {

Browser& Browser::ofPage() {
  static Browser browser;
  return browser;
}

namespace {

void giveInput(std::string_view text) {
  std::copy(text.begin(), text.end(), velto_page_input(text.size()));
}

} // namespace

Browser& Browser::start(int drill, bool fair, std::string_view record, double secondsSince1970) {
  Browser& browser = ofPage();
  browser = {};
  giveInput(record);
  velto_page_start(drill, fair, secondsSince1970, record.size());
  return browser;
}

void Browser::renderLatest() const {
  const Job& job = jobs.back();
  const int count = velto_render(job.drill, job.material, job.seed, job.difficulty, job.fair);
  const std::size_t frames = velto_render_frames();
  velto_page_beginRender(count, frames);
  for (int slot = 0; slot < count; ++slot)
    for (const int channel : {0, 1})
      std::copy_n(velto_render_samples(slot, channel), frames, velto_page_samples(slot, channel));
  velto_page_takeRender(job.seed);
}

bool Browser::press(const std::string& key, int focus, int flags) {
  giveInput(key);
  return velto_page_press(key.size(), flags, focus);
}

nlohmann::json Browser::parsed(const char* text) {
  return nlohmann::json::parse(text, text + velto_page_outputSize());
}

nlohmann::json Browser::state() {
  return parsed(velto_page_state());
}

} // namespace velto::kit

using velto::kit::Browser;

void velto_host_render(int drill, int material, std::uint64_t seed, double difficulty, bool fair) {
  Browser::ofPage().jobs.push_back({drill, material, seed, difficulty, fair});
}

void velto_host_openSound() {
  ++Browser::ofPage().openings;
}

void velto_host_play(int count, int chosen, double delayFrames, bool throughSilence) {
  Browser::Play play{chosen, delayFrames, throughSilence, {}};
  const std::size_t frames = velto_page_frames();
  for (int slot = 0; slot < count; ++slot)
    for (const int channel : {0, 1}) {
      const float* samples = velto_page_samples(slot, channel);
      play.samples.emplace_back(samples, samples + frames);
    }
  Browser::ofPage().plays.push_back(std::move(play));
}

void velto_host_switchTo(int chosen) {
  Browser::ofPage().switches.push_back(chosen);
}

void velto_host_silence() {
  ++Browser::ofPage().silences;
}

void velto_host_keepRecord(const char* bytes, std::size_t size) {
  Browser::ofPage().kept.emplace(bytes, size);
}
