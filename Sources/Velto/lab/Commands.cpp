#include "CheckCommand.h"
#include "Command.h"
#include "ReportCommand.h"
#include "SimulateCommand.h"
#include "StatsCommand.h"

#include <array>

namespace velto {

std::span<const Lab::Command> Lab::commands() {
  static constexpr std::array all{
      checkCommand,
      reportCommand,
      simulateCommand,
      statsCommand,
  };
  return all;
}

} // namespace velto
