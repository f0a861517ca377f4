// The stack on which a thread handles its faults, and the limits of its ordinary stack. Internal to platform/linux.
#pragma once

#include <cstdint>

// What the handler of signals reads of a thread: no more than plain numbers.
struct StackLimits {
  std::uintptr_t low = 0;  // the lowest usable address; 0: unknown
  std::uintptr_t guard = 0;
};

// Gives the calling thread a signal stack until it ends, unless it has a large one. Without memory the thread stays
// without: an overflow of its stack then ends the process unseen.
void UseSignalStack();
// The same, if any thread has called UseSignalStack before. For the start of a new thread.
void UseSignalStackLikeOthers();

// Of the calling thread, known after UseSignalStack. Callable in a handler.
StackLimits LimitsOfStack();
