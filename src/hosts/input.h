// How keyboard and mouse events change the shared input state (key_state, the mouse deltas, the
// wheel). The rules are the window procedure's; every host turns its own events into these calls,
// so the game sees the same input whether it runs in a window, through SDL or from a script.
#pragma once

#include <stdint.h>

#include "hosts/input_script.h"
#include "hosts/window_layout.h"

// Hears every event that reaches the rules below, as the script line that would deliver it (a key
// down that is an ignored repeat, or a code the rules ignore, is not heard); null when nobody
// listens. The recorder of a windowed game listens here.
extern void (*input_listener)(const script_event& event);

// A key went down (the window's key-down message). `repeat`: the key was already down, an
// auto-repeat, which changes nothing. Escape while the mouse is free calls `close_window` (the game
// quits) and is marked pressed either way; while the mouse is captured the update frees the mouse.
// Codes above 255 are ignored.
void input_key_down(uint32_t code, int repeat, void (*close_window)());

// A key went down as a system key (Alt, F10, or any key while Alt is held): marked pressed even
// when it repeats, and Escape gets no special treatment. Codes above 255 are ignored.
void input_system_key_down(uint32_t code);

// 1 when the window would receive this key-down as a system key: F10, or any key (Alt itself
// included) while Alt is held without Ctrl. Hosts without such messages decide with this.
int input_key_is_system(uint32_t code, int alt_held, int ctrl_held);

// A key or system key went up: codes up to 254 become 0.
void input_key_up(uint32_t code);

// A mouse button (KEYCODE_LBUTTON, KEYCODE_RBUTTON, KEYCODE_MBUTTON) went down or up.
void input_button(uint32_t code, int down);

// The cursor moved to (x, y) in client coordinates. A move onto the centre itself is the echo of
// re-centring and changes nothing; any other move adds centre - position to the deltas (right and
// down are negative), captured or not. 1 when the host must put the cursor back on the centre
// (the mouse is captured), else 0.
int input_mouse_move(int32_t x, int32_t y, client_point centre);

// The wheel turned by `amount` in 1/120ths of a notch (positive away from the user).
void input_wheel(int32_t amount);
