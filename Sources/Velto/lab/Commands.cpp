#include "CheckCommand.h"
#include "Command.h"
#include "SessionNewCommand.h"
#include "SessionScoreCommand.h"

#include <array>

namespace velto {

std::span<const Lab::Command> Lab::commands() {
  static constexpr std::array all{
      checkCommand,
      sessionNewCommand,
      sessionScoreCommand,
  };
  return all;
}

} // namespace velto
