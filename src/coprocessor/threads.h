// The threads of the pool and the semaphores between them and the main thread.
#pragma once

#include <cstdint>

// Are there threads to post to?
bool poolstarted();
// Wakes the thread of a slot, which finds its work in to_coprocessors.
void postslot(std::uint32_t slot);
// Waits until the thread of a slot is done. An interrupt that is noted meanwhile stops the slices.
void awaitslot(std::uint32_t slot);
