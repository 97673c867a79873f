// Runs the probe. Linked with a faulty source.
#include "Probe.h"

int main() {
  return velto::Probe::run() ? 0 : 1;
}
