#include "Memory.h"

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

void velto::Memory::returnLargeBlocks() {
#ifdef M_MMAP_THRESHOLD
  // Setting the limit, even to its default, keeps it from growing.
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);
#endif
}
