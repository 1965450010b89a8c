#include "core/loop_state.h"

double real_time;
float tick_dt;
float game_time;
float render_alpha;
int32_t shown_fps;
int32_t shown_ups;

uint8_t key_state[KEY_STATE_COUNT];
float mouse_delta_x;
float mouse_delta_y;
float mouse_wheel;
int32_t mouse_captured;
int32_t mouse_x;
int32_t mouse_y;

void promote_pressed_keys()
{
    for (int code = 0; code < KEY_PROMOTED_COUNT; ++code)
        if (key_state[code] == KEY_PRESSED)
            key_state[code] = KEY_HELD;
}
