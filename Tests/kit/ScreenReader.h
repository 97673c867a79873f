// Assistive technology at another program: what the accessibility bus tells of it, and what can be
// done there.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// What the bus told of an object at one moment.
struct AccessibleObject {
  std::string role; // as the bus names it: "slider", "radio button"
  std::string name, description;
  std::vector<std::string> states;  // "showing", "checked"
  std::vector<std::string> actions; // "Press"
  double value = 0, lowest = 0, highest = 0, step = 0;

  [[nodiscard]] bool is(const std::string& state) const;
  [[nodiscard]] bool can(const std::string& action) const;
};

// One thread, one at a time. What goes wrong, and a wait that takes too long, is thrown as a
// std::runtime_error.
class ScreenReader {
public:
  // Listens to the programs of the accessibility bus from now on.
  ScreenReader();
  ~ScreenReader();
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;

  // Turns to the program of that process, once it shows a window.
  void read(pid_t pid);

  // All objects of the program, parents before their children.
  [[nodiscard]] std::vector<AccessibleObject> objects();
  // Whether an object that shows has this role and this name, and which.
  [[nodiscard]] bool shows(const std::string& role, const std::string& name);
  [[nodiscard]] AccessibleObject object(const std::string& role, const std::string& name);
  // The object that has the focus.
  [[nodiscard]] AccessibleObject focus();

  void act(const std::string& role, const std::string& name, const std::string& action);
  void setValue(const std::string& role, const std::string& name, double value);

  // Returns when `condition` holds; `what` names it when it does not come to hold.
  void waitUntil(const std::function<bool()>& condition, const std::string& what);

  // What would have been spoken so far without a look at the window: the names of notifications
  // that came into sight.
  [[nodiscard]] std::vector<std::string> announcements();
  // Of which kind of event the bus told how often so far.
  [[nodiscard]] std::size_t eventCount(const std::string& type);

private:
  struct Bus;
  std::unique_ptr<Bus> bus_;
};

} // namespace velto::kit
