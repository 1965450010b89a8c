// The software mixer: sounds started by gameplay play once, start to end, at the master volume.
#pragma once

#include <stdint.h>

// Starts `sound` (a sound registry index; -1 never plays) from its beginning; the same sound may
// play any number of times at once. 1, or 0 when the voice list cannot grow.
int play_sound(int32_t sound);
