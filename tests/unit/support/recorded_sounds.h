// The tests' stand-in for the mixer: play_sound only records which sounds were started, in order.
#pragma once

#include <stdint.h>

#include <vector>

// Every sound started since the last clear_recorded_sounds(), in order.
const std::vector<int32_t>& recorded_sounds();
void clear_recorded_sounds();
