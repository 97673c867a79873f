// Memory of the process.
#pragma once

namespace velto::Memory {

// From now on, blocks of 128 KiB and more, such as the sound of a trial, go back to the system as
// soon as they are freed. By default the GNU C library keeps more of them the larger they are. Has
// no effect with other C libraries. Call before other threads start.
void returnLargeBlocks();

} // namespace velto::Memory
