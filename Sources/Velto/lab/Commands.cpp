#include "CheckCommand.h"
#include "Command.h"
#include "ReportCommand.h"

#include <array>

namespace velto {

std::span<const Lab::Command> Lab::commands() {
  static constexpr std::array all{
      checkCommand,
      reportCommand,
  };
  return all;
}

} // namespace velto
