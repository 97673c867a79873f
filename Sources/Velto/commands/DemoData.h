// Fictitious practice history, to demonstrate the side panel.
#pragma once

namespace velto::DemoData {

// Replaces the answers and staircases of the record in VELTO_PROFILE_DIR with 160 answers that are
// the same on every call, except for ids and dates. Reports this on standard error. Without
// VELTO_PROFILE_DIR, refuses and changes nothing. Main thread only.
void seed();

} // namespace velto::DemoData
