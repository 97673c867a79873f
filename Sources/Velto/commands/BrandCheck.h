// Checks that the wordmark is drawn in its own face, not in a substitute.
#pragma once

namespace velto::BrandCheck {

// Prints a line for each gate and the verdict. True if all gates passed. A failed gate does not
// stop the others, but the last one is skipped without the face. Changes nothing on disk. Needs a
// QGuiApplication. Main thread only.
[[nodiscard]] bool run();

} // namespace velto::BrandCheck
