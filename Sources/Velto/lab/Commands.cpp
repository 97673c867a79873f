#include "CheckCommand.h"
#include "Command.h"
#include "ExportCommand.h"
#include "ImportCommand.h"
#include "RenderCommand.h"
#include "ReportCommand.h"
#include "RestoreCommand.h"
#include "SessionNewCommand.h"
#include "SessionScoreCommand.h"
#include "SimulateCommand.h"
#include "StatsCommand.h"

#include <array>

namespace velto {

std::span<const Lab::Command> Lab::commands() {
  static constexpr std::array all{
      checkCommand,  exportCommand,     importCommand,       restoreCommand,  renderCommand,
      reportCommand, sessionNewCommand, sessionScoreCommand, simulateCommand, statsCommand,
  };
  return all;
}

} // namespace velto
