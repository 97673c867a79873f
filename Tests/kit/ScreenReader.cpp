#include "ScreenReader.h"

#include "Eventually.h"

#include <atspi/atspi.h>

#include <algorithm>
#include <array>
#include <map>
#include <stdexcept>

namespace velto::kit {

namespace {

// Events that screen readers subscribe to.
constexpr std::array eventTypes{
    "object:state-changed:showing",           "object:state-changed:focused",
    "object:state-changed:checked",           "object:state-changed:sensitive",
    "object:property-change:accessible-name", "object:property-change:accessible-description",
    "object:property-change:accessible-value"};

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unref>;

std::string taken(char* text) {
  std::string copy = text == nullptr ? "" : text;
  g_free(text);
  return copy;
}

std::vector<std::string> statesOf(AtspiAccessible* object) {
  const Owned<AtspiStateSet> set(atspi_accessible_get_state_set(object));
  std::vector<std::string> states;
  if (!set)
    return states;
  GArray* list = atspi_state_set_get_states(set.get());
  auto* kinds = static_cast<GEnumClass*>(g_type_class_ref(ATSPI_TYPE_STATE_TYPE));
  for (guint i = 0; i < list->len; ++i)
    if (const GEnumValue* kind = g_enum_get_value(kinds, g_array_index(list, AtspiStateType, i)))
      states.emplace_back(kind->value_nick);
  g_type_class_unref(kinds);
  g_array_free(list, TRUE);
  return states;
}

// Releases of the bus name a role differently, and releases of Qt choose another one for a group.
std::string roleOf(AtspiAccessible* object) {
  const AtspiRole role = atspi_accessible_get_role(object, nullptr);
  if (role == ATSPI_ROLE_PUSH_BUTTON)
    return "push button";
  if (role == ATSPI_ROLE_PANEL || role == ATSPI_ROLE_GROUPING)
    return "group";
  return taken(atspi_accessible_get_role_name(object, nullptr));
}

AccessibleObject describe(AtspiAccessible* object) {
  AccessibleObject described;
  described.role = roleOf(object);
  described.name = taken(atspi_accessible_get_name(object, nullptr));
  described.description = taken(atspi_accessible_get_description(object, nullptr));
  described.states = statesOf(object);
  if (const Owned<AtspiAction> action{atspi_accessible_get_action_iface(object)})
    for (int i = 0; i < atspi_action_get_n_actions(action.get(), nullptr); ++i)
      described.actions.push_back(taken(atspi_action_get_action_name(action.get(), i, nullptr)));
  if (const Owned<AtspiValue> value{atspi_accessible_get_value_iface(object)}) {
    described.value = atspi_value_get_current_value(value.get(), nullptr);
    described.lowest = atspi_value_get_minimum_value(value.get(), nullptr);
    described.highest = atspi_value_get_maximum_value(value.get(), nullptr);
    described.step = atspi_value_get_minimum_increment(value.get(), nullptr);
  }
  return described;
}

bool contains(const std::vector<std::string>& list, const std::string& item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

using Visitor = std::function<bool(AtspiAccessible*)>; // returns true to stop

bool visit(AtspiAccessible* object, const Visitor& visitor) {
  if (visitor(object))
    return true;
  const int count = atspi_accessible_get_child_count(object, nullptr);
  for (int i = 0; i < count; ++i)
    if (const Owned<AtspiAccessible> child{atspi_accessible_get_child_at_index(object, i, nullptr)})
      if (visit(child.get(), visitor))
        return true;
  return false;
}

} // namespace

bool AccessibleObject::is(const std::string& state) const {
  return contains(states, state);
}

bool AccessibleObject::can(const std::string& action) const {
  return contains(actions, action);
}

struct ScreenReader::Bus {
  AtspiEventListener* listener = nullptr;
  Owned<AtspiAccessible> program;
  std::vector<std::string> announcements;
  std::map<std::string, std::size_t> events;

  static void receive(AtspiEvent* event, void* self) {
    auto& bus = *static_cast<Bus*>(self);
    ++bus.events[event->type];
    // Like screen readers, which announce only notifications unprompted.
    if (std::string(event->type) == "object:state-changed:showing" && event->detail1 == 1 &&
        atspi_accessible_get_role(event->source, nullptr) == ATSPI_ROLE_NOTIFICATION)
      bus.announcements.push_back(taken(atspi_accessible_get_name(event->source, nullptr)));
    g_boxed_free(ATSPI_TYPE_EVENT, event);
  }

  static void dispatch() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  }

  // The first showing object with this role and name.
  [[nodiscard]] Owned<AtspiAccessible> find(const std::string& role,
                                            const std::string& name) const {
    Owned<AtspiAccessible> found;
    dispatch();
    visit(program.get(), [&](AtspiAccessible* object) {
      if (taken(atspi_accessible_get_name(object, nullptr)) != name || roleOf(object) != role ||
          !contains(statesOf(object), "showing"))
        return false;
      found.reset(static_cast<AtspiAccessible*>(g_object_ref(object)));
      return true;
    });
    return found;
  }

  [[nodiscard]] Owned<AtspiAccessible> need(const std::string& role,
                                            const std::string& name) const {
    auto found = find(role, name);
    if (!found)
      throw std::runtime_error("no visible " + role + " is named " + name);
    return found;
  }
};

ScreenReader::ScreenReader() : bus_(std::make_unique<Bus>()) {
  if (atspi_init() > 1)
    throw std::runtime_error("no accessibility bus");
  bus_->listener = atspi_event_listener_new(&Bus::receive, bus_.get(), nullptr);
  for (const char* type : eventTypes)
    if (atspi_event_listener_register(bus_->listener, type, nullptr) == FALSE)
      throw std::runtime_error(std::string("no events of the type ") + type);
}

ScreenReader::~ScreenReader() {
  for (const char* type : eventTypes)
    atspi_event_listener_deregister(bus_->listener, type, nullptr);
  g_object_unref(bus_->listener);
}

void ScreenReader::waitUntil(const std::function<bool()>& condition, const std::string& what) {
  kit::waitUntil(
      [&] {
        Bus::dispatch();
        return condition();
      },
      what);
}

void ScreenReader::read(pid_t pid) {
  waitUntil(
      [&] {
        const Owned<AtspiAccessible> desktop(atspi_get_desktop(0));
        const int count = atspi_accessible_get_child_count(desktop.get(), nullptr);
        for (int i = 0; i < count && !bus_->program; ++i) {
          Owned<AtspiAccessible> program(
              atspi_accessible_get_child_at_index(desktop.get(), i, nullptr));
          if (program &&
              atspi_accessible_get_process_id(program.get(), nullptr) == static_cast<guint>(pid) &&
              atspi_accessible_get_child_count(program.get(), nullptr) > 0)
            bus_->program = std::move(program);
        }
        return bus_->program != nullptr;
      },
      "the program is on the accessibility bus");
  // No cache: every query goes to the program.
  atspi_accessible_set_cache_mask(bus_->program.get(), ATSPI_CACHE_NONE);
}

std::vector<AccessibleObject> ScreenReader::objects() {
  std::vector<AccessibleObject> all;
  Bus::dispatch();
  visit(bus_->program.get(), [&](AtspiAccessible* object) {
    all.push_back(describe(object));
    return false;
  });
  return all;
}

bool ScreenReader::shows(const std::string& role, const std::string& name) {
  return bus_->find(role, name) != nullptr;
}

AccessibleObject ScreenReader::object(const std::string& role, const std::string& name) {
  return describe(bus_->need(role, name).get());
}

AccessibleObject ScreenReader::focus() {
  AccessibleObject focused;
  Bus::dispatch();
  visit(bus_->program.get(), [&](AtspiAccessible* object) {
    if (!contains(statesOf(object), "focused"))
      return false;
    focused = describe(object);
    return true;
  });
  return focused;
}

void ScreenReader::act(const std::string& role, const std::string& name,
                       const std::string& action) {
  const auto object = bus_->need(role, name);
  const Owned<AtspiAction> actions(atspi_accessible_get_action_iface(object.get()));
  const int count = actions ? atspi_action_get_n_actions(actions.get(), nullptr) : 0;
  for (int i = 0; i < count; ++i)
    if (taken(atspi_action_get_action_name(actions.get(), i, nullptr)) == action) {
      atspi_action_do_action(actions.get(), i, nullptr);
      return;
    }
  throw std::runtime_error("the " + role + " " + name + " has no action " + action);
}

void ScreenReader::setValue(const std::string& role, const std::string& name, double value) {
  const auto object = bus_->need(role, name);
  const Owned<AtspiValue> values(atspi_accessible_get_value_iface(object.get()));
  if (!values)
    throw std::runtime_error("the " + role + " " + name + " has no value");
  atspi_value_set_current_value(values.get(), value, nullptr);
}

std::vector<std::string> ScreenReader::announcements() {
  Bus::dispatch();
  return bus_->announcements;
}

std::size_t ScreenReader::eventCount(const std::string& type) {
  Bus::dispatch();
  return bus_->events[type];
}

} // namespace velto::kit
