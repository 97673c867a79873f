// A screen reader: reads and operates another program over the accessibility bus.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// What the bus reported about an object at one moment.
struct AccessibleObject {
  std::string role; // as the bus names it ("slider", "radio button"), or "push button", "group"
  std::string name, description;
  std::vector<std::string> states;  // "showing", "checked"
  std::vector<std::string> actions; // "Press"
  double value = 0, lowest = 0, highest = 0, step = 0;

  [[nodiscard]] bool is(const std::string& state) const;
  [[nodiscard]] bool can(const std::string& action) const;
};

// One thread, one instance at a time. Failures and timeouts throw std::runtime_error.
class ScreenReader {
public:
  // Listens to all programs on the accessibility bus from now on.
  ScreenReader();
  ~ScreenReader();
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;

  // Waits until process `pid` shows a window, and selects it.
  void read(pid_t pid);

  // All objects of the program, parents before children.
  [[nodiscard]] std::vector<AccessibleObject> objects();
  // Whether a showing object has this role and name.
  [[nodiscard]] bool shows(const std::string& role, const std::string& name);
  [[nodiscard]] AccessibleObject object(const std::string& role, const std::string& name);
  // The focused object.
  [[nodiscard]] AccessibleObject focus();

  void act(const std::string& role, const std::string& name, const std::string& action);
  void setValue(const std::string& role, const std::string& name, double value);

  // Waits until `condition` holds; `what` names the condition in the error.
  void waitUntil(const std::function<bool()>& condition, const std::string& what);

  // What a screen reader would have announced so far: the names of notifications that appeared.
  [[nodiscard]] std::vector<std::string> announcements();
  // Number of events of this type so far.
  [[nodiscard]] std::size_t eventCount(const std::string& type);

private:
  struct Bus;
  std::unique_ptr<Bus> bus_;
};

} // namespace velto::kit
