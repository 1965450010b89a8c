// What a long headless run keeps an eye on after every update, for soak tests: the player's
// coordinates stay finite, and every door's leaf stays within its swing of its closed yaw.
// The state file reports it under "watch".
#pragma once

#include <stdint.h>

struct run_watch {
    int32_t updates_watched;
    int32_t player_not_finite;          // updates after which a coordinate of the player was not finite
    int32_t first_player_not_finite;    // the first such update, -1 for none
    int32_t door_beyond_swing;          // updates after which some leaf stood beyond its swing
    float widest_door_swing_degrees;    // the widest any leaf stood from its closed yaw
};

extern run_watch watch;

void run_watch_reset();
// After update `tick`.
void run_watch_update(int32_t tick);
