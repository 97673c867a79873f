// velto-lab session score: the scores of a class.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareSessionScore(CLI::App& arguments);

inline constexpr Command sessionScoreCommand{
    "session score", "grade a class from its list of trials", declareSessionScore};

} // namespace velto::Lab
