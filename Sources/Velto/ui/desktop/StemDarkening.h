// Text of the same weight in both palettes.
#pragma once

namespace velto::StemDarkening {

// Keeps Qt from darkening the stems of CFF fonts. Qt turns that on in FreeType, and then blends
// such text with a gamma: on a dark background it carries up to 1.5 times the ink that it carries
// on a light one. Call before the first QGuiApplication is created; main thread only. Has no effect
// if Qt does not call a shared FreeType.
void prevent();

} // namespace velto::StemDarkening
