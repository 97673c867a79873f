#include "Desktop.h"

#include "Eventually.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <thread>

namespace velto::kit {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> own(Reply* reply) {
  return {reply, &std::free};
}

constexpr std::uint32_t sourcePager = 2;

} // namespace

struct Desktop::Connection {
  xcb_connection_t* xcb = nullptr;
  const xcb_setup_t* setup = nullptr;
  xcb_window_t root = 0;

  [[nodiscard]] xcb_atom_t atom(const std::string& name) const {
    const auto reply = own(xcb_intern_atom_reply(
        xcb, xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    if (!reply)
      throw std::runtime_error("the display is gone");
    return reply->atom;
  }

  // The property's bytes; empty if the window or the property does not exist.
  [[nodiscard]] std::string property(xcb_window_t window, const std::string& name) const {
    const auto reply = own(xcb_get_property_reply(
        xcb, xcb_get_property(xcb, 0, window, atom(name), XCB_ATOM_ANY, 0, 4096), nullptr));
    if (!reply)
      return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
  }

  [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_window_t window,
                                                   const std::string& name) const {
    const std::string bytes = property(window, name);
    std::vector<std::uint32_t> values(bytes.size() / sizeof(std::uint32_t));
    if (!values.empty())
      std::memcpy(values.data(), bytes.data(), values.size() * sizeof(std::uint32_t));
    return values;
  }

  void setNumbers(xcb_window_t window, const std::string& name, xcb_atom_t type,
                  const std::vector<std::uint32_t>& values) const {
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window, atom(name), type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
  }

  // Sends a request to the window manager.
  void request(xcb_window_t window, const std::string& name,
               std::array<std::uint32_t, 5> data) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(name);
    std::memcpy(&event.data, data.data(), sizeof data);
    xcb_send_event(xcb, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    sync();
  }

  // Returns once the window manager has handled all events so far. It delays button presses until
  // it has examined them; a key pressed meanwhile would arrive first.
  void waitForManager(Desktop& desktop) const {
    const xcb_window_t asker = xcb_generate_id(xcb);
    xcb_create_window(xcb, 0, asker, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    request(asker, "_NET_REQUEST_FRAME_EXTENTS", {});
    desktop.waitUntil([&] { return !property(asker, "_NET_FRAME_EXTENTS").empty(); },
                      "the window manager answers");
    xcb_destroy_window(xcb, asker);
  }

  // Returns when the server has handled all requests so far.
  void sync() const { own(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr)); }

  void input(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0) const {
    xcb_test_fake_input(xcb, type, detail, XCB_CURRENT_TIME, root, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    sync();
  }

  [[nodiscard]] std::uint8_t keycode(std::uint32_t key) const {
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto reply = own(xcb_get_keyboard_mapping_reply(
        xcb, xcb_get_keyboard_mapping(xcb, setup->min_keycode, count), nullptr));
    if (!reply)
      throw std::runtime_error("no keyboard");
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    // Keypad digits are the shifted symbols of their keys.
    for (int column = 0; column < 2; ++column)
      for (int code = 0; code < count; ++code)
        if (symbols[code * reply->keysyms_per_keycode + column] == key)
          return static_cast<std::uint8_t>(setup->min_keycode + code);
    throw std::runtime_error("the keyboard has no such key");
  }

  [[nodiscard]] std::uint16_t modifiers() const {
    const auto reply = own(xcb_query_pointer_reply(xcb, xcb_query_pointer(xcb, root), nullptr));
    return reply ? reply->mask : std::uint16_t{0};
  }
};

Desktop::Desktop() : connection_(std::make_unique<Connection>()) {
  connection_->xcb = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection_->xcb) != 0) {
    xcb_disconnect(connection_->xcb);
    throw std::runtime_error("no display: run on a private desk");
  }
  connection_->setup = xcb_get_setup(connection_->xcb);
  connection_->root = xcb_setup_roots_iterator(connection_->setup).data->root;
}

Desktop::~Desktop() {
  try {
    setCapsLock(false);
    setNumLock(false);
    switchToDesktop(0);
  } catch (const std::exception&) { // the display is gone, with its locks
  }
  xcb_disconnect(connection_->xcb);
}

void Desktop::waitUntil(const std::function<bool()>& condition, const std::string& what) {
  kit::waitUntil(condition, what);
}

std::optional<WindowId> Desktop::findWindow(const std::string& title, pid_t pid) {
  std::optional<WindowId> found;
  for (const WindowId window : connection_->numbers(connection_->root, "_NET_CLIENT_LIST")) {
    const auto owner = connection_->numbers(window, "_NET_WM_PID");
    if (connection_->property(window, "_NET_WM_NAME") == title && owner.size() == 1 &&
        owner[0] == static_cast<std::uint32_t>(pid) && isViewable(window))
      found = window;
  }
  return found;
}

WindowId Desktop::waitForWindow(const std::string& title, pid_t pid) {
  std::optional<WindowId> found;
  waitUntil(
      [&] {
        found = findWindow(title, pid);
        return found.has_value();
      },
      "the window is shown");
  return *found;
}

WindowGeometry Desktop::geometry(WindowId window) {
  const auto size = own(xcb_get_geometry_reply(
      connection_->xcb, xcb_get_geometry(connection_->xcb, window), nullptr));
  const auto place = own(xcb_translate_coordinates_reply(
      connection_->xcb,
      xcb_translate_coordinates(connection_->xcb, window, connection_->root, 0, 0), nullptr));
  if (!size || !place)
    throw std::runtime_error("the window is gone");
  return {place->dst_x, place->dst_y, size->width, size->height};
}

bool Desktop::isViewable(WindowId window) {
  const auto reply = own(xcb_get_window_attributes_reply(
      connection_->xcb, xcb_get_window_attributes(connection_->xcb, window), nullptr));
  return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

WindowId Desktop::activeWindow() {
  const auto active = connection_->numbers(connection_->root, "_NET_ACTIVE_WINDOW");
  return active.empty() ? 0 : active[0];
}

void Desktop::waitForActive(WindowId window) {
  waitUntil(
      [&] {
        const auto focus = own(xcb_get_input_focus_reply(
            connection_->xcb, xcb_get_input_focus(connection_->xcb), nullptr));
        return activeWindow() == window && focus && focus->focus == window;
      },
      "the window has the focus");
}

void Desktop::click(WindowId window, int x, int y) {
  drag(window, x, y, x, y);
}

void Desktop::drag(WindowId window, int fromX, int fromY, int toX, int toY) {
  const auto [left, top, width, height] = geometry(window);
  connection_->input(XCB_MOTION_NOTIFY, 0, left + fromX, top + fromY);
  connection_->input(XCB_BUTTON_PRESS, XCB_BUTTON_INDEX_1);
  connection_->waitForManager(*this);
  if (toX != fromX || toY != fromY)
    connection_->input(XCB_MOTION_NOTIFY, 0, left + toX, top + toY);
  connection_->input(XCB_BUTTON_RELEASE, XCB_BUTTON_INDEX_1);
  connection_->waitForManager(*this);
}

void Desktop::press(std::uint32_t key, std::initializer_list<std::uint32_t> held) {
  for (const std::uint32_t other : held)
    keyDown(other);
  keyDown(key);
  keyUp(key);
  for (const std::uint32_t other : held)
    keyUp(other);
}

void Desktop::keyDown(std::uint32_t key) {
  connection_->input(XCB_KEY_PRESS, connection_->keycode(key));
}

void Desktop::keyUp(std::uint32_t key) {
  connection_->input(XCB_KEY_RELEASE, connection_->keycode(key));
}

void Desktop::setCapsLock(bool on) {
  setLock(Keys::capsLock, XCB_MOD_MASK_LOCK, on);
}

void Desktop::setNumLock(bool on) {
  setLock(Keys::numLock, XCB_MOD_MASK_2, on);
}

void Desktop::setLock(std::uint32_t key, std::uint16_t mask, bool on) {
  const auto isOn = [&] { return (connection_->modifiers() & mask) != 0; };
  if (isOn() == on)
    return;
  press(key);
  waitUntil([&] { return isOn() == on; }, "the lock changes");
}

void Desktop::minimise(WindowId window) {
  constexpr std::uint32_t iconicState = 3;
  connection_->request(window, "WM_CHANGE_STATE", {iconicState});
  waitUntil([&] { return !isViewable(window); }, "the window is minimised");
}

void Desktop::activate(WindowId window) {
  connection_->request(window, "_NET_ACTIVE_WINDOW", {sourcePager});
  waitUntil([&] { return isViewable(window); }, "the window is shown again");
  waitForActive(window);
}

void Desktop::close(WindowId window) {
  connection_->request(window, "_NET_CLOSE_WINDOW", {0, sourcePager});
}

void Desktop::switchToDesktop(std::uint32_t desktop) {
  const auto current = [&] {
    return connection_->numbers(connection_->root, "_NET_CURRENT_DESKTOP");
  };
  connection_->request(connection_->root, "_NET_CURRENT_DESKTOP", {desktop});
  waitUntil([&] { return current() == std::vector{desktop}; }, "the desktop changes");
}

WindowId Desktop::openWindow(const WindowGeometry& geometry, bool takesFocus, bool everywhere) {
  xcb_connection_t* xcb = connection_->xcb;
  const WindowId window = xcb_generate_id(xcb);
  const std::uint32_t background = 0x808080;
  xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, connection_->root,
                    static_cast<std::int16_t>(geometry.x), static_cast<std::int16_t>(geometry.y),
                    static_cast<std::uint16_t>(geometry.width),
                    static_cast<std::uint16_t>(geometry.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &background);
  // Hints: input. Size hints: a position chosen by the user.
  connection_->setNumbers(window, "WM_HINTS", XCB_ATOM_WM_HINTS,
                          {1, takesFocus ? 1U : 0U, 0, 0, 0, 0, 0, 0, 0});
  std::vector<std::uint32_t> sizeHints(18);
  sizeHints[0] = 1;
  connection_->setNumbers(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, sizeHints);
  if (!takesFocus)
    connection_->setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM,
                            {connection_->atom("_NET_WM_STATE_ABOVE")});
  if (everywhere)
    connection_->setNumbers(window, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {0xffffffffU});
  xcb_map_window(xcb, window);
  connection_->sync();
  waitUntil([&] { return isViewable(window); }, "the other window is shown");
  if (takesFocus)
    activate(window);
  return window;
}

void Desktop::closeWindow(WindowId window) {
  xcb_destroy_window(connection_->xcb, window);
  connection_->sync();
}

std::vector<std::uint32_t> Desktop::picture(WindowId window, const WindowGeometry& part) {
  const auto reply = own(xcb_get_image_reply(
      connection_->xcb,
      xcb_get_image(connection_->xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, window,
                    static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(part.y),
                    static_cast<std::uint16_t>(part.width), static_cast<std::uint16_t>(part.height),
                    ~0U),
      nullptr));
  if (!reply)
    return {};
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(part.width * part.height));
  if (static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) <
      pixels.size() * sizeof(std::uint32_t))
    throw std::runtime_error("the display has no 32 bits a pixel");
  std::memcpy(pixels.data(), xcb_get_image_data(reply.get()),
              pixels.size() * sizeof(std::uint32_t));
  for (std::uint32_t& pixel : pixels)
    pixel &= 0xffffff;
  return pixels;
}

} // namespace velto::kit
