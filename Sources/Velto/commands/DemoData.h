// Fictitious practice history, for looking at the side panel.
#pragma once

namespace velto::DemoData {

// Replaces the answers and staircases of the record in VELTO_PROFILE_DIR with 160 answers which,
// ids and dates apart, are the same on every call. Reports it on standard error. Without
// VELTO_PROFILE_DIR refuses and changes nothing. Main thread only.
void seed();

} // namespace velto::DemoData
