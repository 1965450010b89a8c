// The three drivers that every host's main loop calls: game_init once, on the loop's first pass;
// game_update once per fixed update; game_render once per drawn frame. They read the loop's
// globals (tick_dt, game_time, real_time, render_alpha, key_state, the mouse) and own the debug
// switches, time scaling and the field of view.
#pragma once

#include <stdint.h>

#include "app/start_up.h" // requested_start_placement

// 1 when the game has started, 0 on the first step that failed (the host then quits).
int game_init();
void game_update();
void game_render();

extern float fov_target;  // vertical field of view the view is easing toward, radians
extern float fov_current; // vertical field of view in use, radians

// The passes of a frame, in the order game_render runs them.
enum frame_pass : int32_t {
    FRAME_PASS_SETUP,       // camera, depth clear, deferred list reset
    FRAME_PASS_VISIBILITY,  // portal culling and the draw list
    FRAME_PASS_OCCLUSION,   // occluders into the occlusion buffer and its reduction
    FRAME_PASS_SKY,
    FRAME_PASS_OPAQUE,      // every listed object that is not hidden
    FRAME_PASS_TRANSLUCENT, // the deferred triangles, sorted and drawn
    FRAME_PASS_BANDS,       // with more than one thread: the sky, objects and deferred triangles,
                            // recorded by the three passes before, drawn band by band
    FRAME_PASS_OVERLAYS,    // death screen and debug views
    FRAME_PASS_COUNT
};
// Called by game_render as each pass ends, when set: how benchmarks time the passes of real frames.
// Null in the game.
extern void (*frame_pass_ended)(frame_pass pass);

// What the death screen blinks, in the dialogue font.
extern char death_text[];


// The output the game opens: 44100 Hz, stereo, 16 bits, blocks of 1500 frames (about 34 ms).
enum : uint32_t {
    GAME_AUDIO_RATE = 44100,
    GAME_AUDIO_CHANNELS = 2,
    GAME_AUDIO_BITS = 16,
    GAME_AUDIO_BLOCK_BYTES = 6000,
};
