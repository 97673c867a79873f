#include "PageKeys.h"

#include <array>
#include <utility>

namespace velto {

namespace {

template <typename Value, std::size_t count>
std::optional<Value> find(const std::array<std::pair<std::string_view, Value>, count>& table,
                          std::string_view key) {
  for (const auto& [name, value] : table)
    if (name == key)
      return value;
  return std::nullopt;
}

} // namespace

std::optional<PageKeys::Command> PageKeys::command(const Press& press) {
  using Row = std::pair<std::string_view, Command>;
  static constexpr std::array letters{Row{" ", Command::cycleSlot}, Row{"1", Command::firstSlot},
                                      Row{"2", Command::secondSlot}, Row{"3", Command::thirdSlot},
                                      Row{"n", Command::newTrial}};
  if (press.isModified)
    return std::nullopt;
  if (press.key == "Enter")
    return press.isRepeat ? std::nullopt : std::optional(Command::advance);
  return press.isLocked ? std::nullopt : find(letters, press.key);
}

std::optional<Move> PageKeys::move(const Press& press) {
  using Row = std::pair<std::string_view, Move>;
  static constexpr std::array moves{Row{"ArrowLeft", Move::left}, Row{"ArrowRight", Move::right},
                                    Row{"ArrowUp", Move::up},     Row{"ArrowDown", Move::down},
                                    Row{"PageUp", Move::pageUp},  Row{"PageDown", Move::pageDown},
                                    Row{"Home", Move::toStart},   Row{"End", Move::toEnd}};
  return press.isModified ? std::nullopt : find(moves, press.key);
}

} // namespace velto
