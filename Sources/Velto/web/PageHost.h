// What the practice page needs of the browser.
#pragma once

#include "PlaybackEngine.h"
#include "Signals.h"
#include "Trial.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace velto {

// The page's thread only. No function waits.
class PageHost {
public:
  PageHost() = default;
  PageHost(const PageHost&) = delete;
  PageHost& operator=(const PageHost&) = delete;
  virtual ~PageHost() = default;

  // Renders a trial in a worker. Page::takeRender() gets the slots, with the seed of `trial`.
  virtual void render(const Trial& trial, Noise noise) = 0;

  // Opens the sound output. Page::soundOpened() or soundFailed() says how it ended. Browsers refuse
  // sound before the first gesture: then neither is called until there has been one.
  virtual void openSound() = 0;
  // As PlaybackEngine::play(); `delayFrames` is the time to the first frame of the slots.
  virtual void play(std::span<const Slot> slots, std::int64_t chosen, std::uint64_t delayFrames,
                    Switching switching) = 0;
  virtual void switchTo(std::int64_t chosen) = 0;
  virtual void silence() = 0;

  // Keeps the bytes of the practice record in place of the last ones. Once they are on the disk,
  // Page::recordKept() is called, or recordFailed() if that is impossible; neither during this
  // call. Of several calls only the latest is answered. If another page has kept something
  // meanwhile, Page::mergeRecord() gets that, and what it has kept in turn is answered.
  virtual void keepRecord(std::string_view bytes) = 0;
};

} // namespace velto
