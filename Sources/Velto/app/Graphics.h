// How the window's pixels are made.
#pragma once

namespace velto::Graphics {

// Chooses Qt Quick's software scene graph, which starts at once and draws the same pixels
// everywhere, and even stems for the desktop's fonts. What the environment says about either wins.
// To be called once, before the QGuiApplication is made.
void prepare();

} // namespace velto::Graphics
