// velto-lab render: trials as WAV files.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareRender(CLI::App& arguments);

inline constexpr Command renderCommand{"render", "write the sound of a trial as WAV files",
                                       declareRender};

} // namespace velto::Lab
