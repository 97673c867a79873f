// The probe alone, to be linked with a faulty source.
#include "Probe.h"

int main() {
  return velto::Probe::run() ? 0 : 1;
}
