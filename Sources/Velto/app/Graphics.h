// Rendering set-up of the window.
#pragma once

namespace velto::Graphics {

// Selects Qt Quick's software renderer, which starts at once and draws the same pixels everywhere,
// and prevents stem darkening. QT_QUICK_BACKEND in the environment takes precedence. Call once,
// before creating the QGuiApplication.
void prepare();

} // namespace velto::Graphics
