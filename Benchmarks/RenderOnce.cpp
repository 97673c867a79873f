// Renders one trial twice: first to build the shared tables, then in the counted function.
//
//   velto_render_once <drill> [reference]

#include "ReferenceTrial.h"
#include "Rendering.h"

#include <cstdio>
#include <string_view>

using namespace velto;

namespace {

std::size_t framesOf(Drill drill, bool byReference) {
  using namespace benchmarks;
  if (byReference)
    return reference::render(referenceTrialOf(drill), trialSeconds).front().l.size();
  return Drills::render(trialOf(drill), trialSeconds).front().l->size();
}

} // namespace

// The counted function. callgrind finds it by its name.
extern "C" __attribute__((noinline)) std::size_t countedRender(const Drill& drill,
                                                               bool byReference) {
  return framesOf(drill, byReference);
}

int main(int argumentCount, char** arguments) {
  const auto drill = Drill::fromRawValue(argumentCount > 1 ? arguments[1] : "");
  const bool byReference = argumentCount > 2 && std::string_view(arguments[2]) == "reference";
  if (!drill) {
    std::fputs("usage: velto_render_once <drill> [reference]\n", stderr);
    return 2;
  }
  return framesOf(*drill, byReference) == countedRender(*drill, byReference) ? 0 : 1;
}
