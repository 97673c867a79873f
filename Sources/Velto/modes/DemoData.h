// A made-up practice history, to look at the side panel without practising.
#pragma once

namespace velto::DemoData {

// Replaces the answers and staircases of the record in VELTO_PROFILE_DIR by 160 answers, always the
// same but for their ids and dates, and tells so on standard error. Without that variable it
// refuses and touches nothing. Main thread only.
void seed();

} // namespace velto::DemoData
