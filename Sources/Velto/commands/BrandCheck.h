// Checks that the wordmark is drawn in its own face, not in a substitute.
#pragma once

namespace velto::BrandCheck {

// Prints a line for each gate and the verdict. True if all gates passed. Every gate runs, except
// that the last one needs the face. Changes nothing on disk. Needs a QGuiApplication. Main thread
// only.
[[nodiscard]] bool run();

} // namespace velto::BrandCheck
