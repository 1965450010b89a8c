// The clocks and the input state that the main loop and the window keep, and that the game's
// drivers and gameplay read.
#pragma once

#include <stdint.h>

enum {
    KEY_STATE_COUNT = 256,     // one byte per virtual-key code; mouse buttons under 1, 2 and 4
    KEY_PROMOTED_COUNT = 255,  // the codes walked after every update: 0..254
};

enum key_phase : uint8_t {
    KEY_UP = 0,
    KEY_PRESSED = 1, // went down since the last update
    KEY_HELD = 2,
};

extern double real_time;    // seconds since the game finished starting
extern float tick_dt;       // length of the current update; the update itself may scale it
extern float game_time;     // the simulation clock, advanced by tick_dt after every update
extern float render_alpha;  // where the drawn frame lies between the last two updates; never above 1
extern int32_t shown_fps;   // frames of the last whole second
extern int32_t shown_ups;   // updates of the last whole second

extern uint8_t key_state[KEY_STATE_COUNT];
extern float mouse_delta_x;  // pixels accumulated since the last frame (right and down are negative)
extern float mouse_delta_y;
extern float mouse_wheel;    // notches accumulated since the last update
extern int32_t mouse_captured; // 1 when the game wants the mouse for mouse-look
extern int32_t mouse_x;      // last cursor position in client coordinates
extern int32_t mouse_y;

// After every update: each key that went down since the last one is now held.
void promote_pressed_keys();
