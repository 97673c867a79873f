// A user's input on a private desk: mouse, keyboard and window manager of an X display.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// X window identifiers.
using WindowId = std::uint32_t;

// X key symbols, as in <X11/keysymdef.h>.
namespace Keys {
inline constexpr std::uint32_t space = 0x20, one = 0x31, two = 0x32, three = 0x33, four = 0x34;
inline constexpr std::uint32_t zero = 0x30, a = 0x61, n = 0x6e, q = 0x71, w = 0x77, x = 0x78;
inline constexpr std::uint32_t returnKey = 0xff0d, escape = 0xff1b, tab = 0xff09;
inline constexpr std::uint32_t left = 0xff51, up = 0xff52, right = 0xff53, down = 0xff54;
inline constexpr std::uint32_t home = 0xff50, end = 0xff57, pageUp = 0xff55, pageDown = 0xff56;
inline constexpr std::uint32_t keypadTwo = 0xffb2, function1 = 0xffbe;
inline constexpr std::uint32_t shift = 0xffe1, control = 0xffe3, alt = 0xffe9, super = 0xffeb;
inline constexpr std::uint32_t capsLock = 0xffe5, numLock = 0xff7f;
} // namespace Keys

struct WindowGeometry {
  int x = 0, y = 0; // of the content, on the screen
  int width = 0, height = 0;
};

// One thread. Failures and timeouts throw std::runtime_error.
class Desktop {
public:
  Desktop();
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // The window of process `pid` with this title, if the window manager shows it.
  [[nodiscard]] std::optional<WindowId> findWindow(const std::string& title, pid_t pid);
  // Waits until the window manager shows the window of process `pid` with this title.
  [[nodiscard]] WindowId waitForWindow(const std::string& title, pid_t pid);
  [[nodiscard]] WindowGeometry geometry(WindowId window);
  // True if the window is mapped: neither minimised nor on another desktop.
  [[nodiscard]] bool isViewable(WindowId window);
  [[nodiscard]] WindowId activeWindow();
  void waitForActive(WindowId window);

  // Clicks the left button at a point of the window.
  void click(WindowId window, int x, int y);
  // Presses at one point, moves to another and releases.
  void drag(WindowId window, int fromX, int fromY, int toX, int toY);

  // Presses and releases a key while `held` keys are down.
  void press(std::uint32_t key, std::initializer_list<std::uint32_t> held = {});
  void keyDown(std::uint32_t key);
  void keyUp(std::uint32_t key);
  // Turn a lock on or off.
  void setCapsLock(bool on);
  void setNumLock(bool on);

  void minimise(WindowId window);
  void activate(WindowId window); // raises and focuses; restores a minimised window
  void close(WindowId window);    // like the button in its title bar
  void switchToDesktop(std::uint32_t desktop);

  // Opens a plain window of this process and waits until it is shown (and focused). Without
  // `takesFocus` it lies above all others and never gets the focus; `everywhere` puts it on all
  // desktops.
  [[nodiscard]] WindowId openWindow(const WindowGeometry& geometry, bool takesFocus,
                                    bool everywhere = false);
  void closeWindow(WindowId window);

  // The colours (0xRRGGBB) of a part of the window on the screen, row by row.
  [[nodiscard]] std::vector<std::uint32_t> picture(WindowId window, const WindowGeometry& part);

  // Waits until `condition` holds; `what` names the condition in the error.
  void waitUntil(const std::function<bool()>& condition, const std::string& what);

private:
  struct Connection;
  void setLock(std::uint32_t key, std::uint16_t mask, bool on);

  std::unique_ptr<Connection> connection_;
};

} // namespace velto::kit
