// Renders one trial twice: once so that what is made once is made, once to be counted.
//
//   velto_render_once <drill> [literal]

#include "LiteralTrial.h"

#include <cstdio>
#include <string_view>

using namespace velto;

namespace {

std::size_t framesOf(Drill drill, bool literally) {
  using namespace benchmarks;
  if (literally)
    return literal::render(literalTrialOf(drill), trialSeconds).front().l.size();
  return Drills::render(trialOf(drill), trialSeconds).front().l->size();
}

} // namespace

// What is counted; found by its name.
extern "C" __attribute__((noinline)) std::size_t countedRender(const Drill& drill, bool literally) {
  return framesOf(drill, literally);
}

int main(int argumentCount, char** arguments) {
  const auto drill = Drill::fromRawValue(argumentCount > 1 ? arguments[1] : "");
  const bool literally = argumentCount > 2 && std::string_view(arguments[2]) == "literal";
  if (!drill) {
    std::fputs("usage: velto_render_once <drill> [literal]\n", stderr);
    return 2;
  }
  return framesOf(*drill, literally) == countedRender(*drill, literally) ? 0 : 1;
}
