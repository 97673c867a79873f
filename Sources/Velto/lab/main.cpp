// The program velto-lab.

#include "CommandLine.h"
#include "StandardStreams.h"

int main(int argc, char** argv) {
  velto::StandardStreams::prepare();
  return velto::Lab::run(velto::Lab::commands(), {argv + 1, argv + argc});
}
