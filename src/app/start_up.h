// The game's data start-up, step by step in its order: the player, the two fonts, the fallback
// texture, the six sky textures, the empty model and animation, the fixed sounds, the empty item,
// items.xml and scene.xml. The game stops at the first step that fails; the data checker runs
// every step, to find every problem. Each failing step has said why (core/diagnostics.h).
#pragma once

#include <stdint.h>

struct start_up_step {
    const char* what; // what the step loads, for reports: a file, or a name such as "the sky textures"
    int (*run)();     // 1 when the step succeeded
};

enum { START_UP_STEP_COUNT = 9 };
extern const start_up_step start_up_steps[START_UP_STEP_COUNT];

// Every step in order; 0 at the first that fails.
int run_start_up_steps();

// Where to put the player before the first update instead of the scene's start (the headless
// host's --place); honoured when the player is created.
struct start_placement {
    int32_t requested;     // 1 when a placement was given
    float position[3];
    float yaw;             // radians
    float pitch;           // radians
};
extern start_placement requested_start_placement;
