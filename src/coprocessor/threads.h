// The threads of the pool and the semaphores between them and the main thread.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// Are there threads to post to?
bool poolstarted();
// Wakes the thread of a slot, which finds its work in to_coprocessors.
void postslot(std::uint32_t slot);
// Waits until the thread of a slot is done. An interrupt that is noted meanwhile stops the slices.
void awaitslot(std::uint32_t slot);

// One thread's share of an instruction: its slice, or what SEED and RANDOMISE want of it. `state` is that of the
// thread's generator. What was found, and what failed, is left in the thread's reply.
using Worker = void(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept;

// Starts the threads of the slots from 1 up; `processors` and `cpus` become the number of slots that there are. Message
// 27 where the records do not fit.
void startcoprocessors(Worker *worker);

// Ends and joins all threads. Nothing may be in flight. The replies stay, for who reports of them, until the last.
void endcoprocessors();
void freereplies();

}  // namespace morvik
