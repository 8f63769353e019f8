#pragma once

#include <cstddef>

namespace torvex::MapFaultGuard {

// Watches an address range of a file map for SIGBUS (a page past the end of a
// file that shrank). Returns a slot for the calls below, or -1 when every slot
// is taken; the map is then simply unguarded.
int watch(const void* begin, size_t length);
void unwatch(int slot);
// Whether a fault inside the slot's range was turned into a page of zeros.
bool faulted(int slot);

} // namespace torvex::MapFaultGuard
