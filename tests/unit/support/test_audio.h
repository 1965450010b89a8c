// The unit tests' audio device: nothing plays; it records how the game opened it, the voices that
// started, and whether the lock was balanced, and can refuse to open.
#pragma once

#include <stdint.h>

#include <vector>

namespace test_audio {

struct open_request {
    uint32_t device;
    uint32_t samples_per_second;
    uint32_t channels;
    uint32_t bits_per_sample;
    uint32_t block_bytes;
};

// Forgets everything and opens successfully again.
void reset();
// The next opens fail.
void refuse_open();
const std::vector<open_request>& opens();
// Sounds reported as started, in order.
const std::vector<int32_t>& started();
// Locks minus unlocks so far, and the deepest nesting seen.
int lock_depth();
int deepest_lock();

} // namespace test_audio
