// Rendering set-up of the window.
#pragma once

namespace velto::Graphics {

// Selects Qt Quick's software renderer, which starts at once and draws the same pixels everywhere,
// and disables stem darkening in the desktop's CFF fonts. QT_QUICK_BACKEND and FREETYPE_PROPERTIES
// in the environment take precedence. Call once, before creating the QGuiApplication.
void prepare();

} // namespace velto::Graphics
