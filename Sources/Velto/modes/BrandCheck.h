// Proves that the wordmark will be drawn in its own face and not in a substitute.
#pragma once

namespace velto::BrandCheck {

// Prints a line for each gate and the verdict; true when all gates passed. Every gate is tried, but
// the last one needs the face. Needs a QGuiApplication; changes nothing on disk.
[[nodiscard]] bool run();

} // namespace velto::BrandCheck
