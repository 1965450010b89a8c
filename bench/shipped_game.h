// The game started as a host starts it, from the source tree's shipped data, drawing into a
// 640 x 480 frame of its own: what the benchmarks and galleries that draw real frames share.
#pragma once

#include <stdint.h>

enum { SHIPPED_GAME_WIDTH = 640, SHIPPED_GAME_HEIGHT = 480 };

struct standpoint {
    float x, y, z, yaw, pitch; // feet, degrees
};

// A fixed walk through the shipped level, the same for every benchmark that draws it: the yard,
// the hall, the kitchen, the armoury, the storeroom, up the stairwell, the library and the solar.
// Doors are shut: the walk passes through their leaves. Placement i of WALK_PLACEMENTS, evenly
// spread over the walk's legs.
enum { WALK_PLACEMENTS = 200 };
standpoint placement_on_walk(int32_t i);

// Runs game_init once in the source tree (later calls give the first result) with the debug panel
// and the areas view switched off; 1 when the game started.
int start_shipped_game();
// Puts the player there, with no movement to interpolate.
void stand_at(const standpoint& place);
// Draws from now on into a frame of width x height, with a depth and an occlusion buffer of that
// size, as a host that starts with that SCREEN_RESOLUTION would; 1 when the buffers were made.
int use_frame_size(int32_t width, int32_t height);
