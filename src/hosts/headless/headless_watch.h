// What a long headless run keeps an eye on after every update, for soak tests: the player's
// coordinates stay finite, every door's leaf stays within its swing of its closed yaw, and the
// process's resident memory stays flat once the game has run for a minute. The state file
// reports it under "watch".
#pragma once

#include <stdint.h>

struct headless_watch {
    int32_t updates_watched;
    int32_t player_not_finite;          // updates after which a coordinate of the player was not finite
    int32_t first_player_not_finite;    // the first such update, -1 for none
    int32_t door_beyond_swing;          // updates after which some leaf stood beyond its swing
    float widest_door_swing_degrees;    // the widest any leaf stood from its closed yaw
    // Resident memory in KiB (0 until measured), read once a second of game time: after the first
    // update, after the first minute, the most at any reading after that, and after the last update.
    int64_t resident_kib_at_start;
    int64_t resident_kib_after_a_minute;
    int64_t resident_kib_most_after_a_minute;
    int64_t resident_kib_at_end;
};

enum {
    WATCH_MEMORY_EVERY = 40,       // updates: a second of game time
    WATCH_MEMORY_SETTLED = 2400,   // updates: the first minute, in which the game settles
};

extern headless_watch watch;

void headless_watch_reset();
// After update `tick`.
void headless_watch_update(int32_t tick);
// After the last update.
void headless_watch_finish();
