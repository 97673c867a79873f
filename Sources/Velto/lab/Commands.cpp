#include "CheckCommand.h"
#include "Command.h"

#include <array>

namespace velto {

std::span<const Lab::Command> Lab::commands() {
  static constexpr std::array all{
      checkCommand,
  };
  return all;
}

} // namespace velto
