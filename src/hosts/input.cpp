#include "hosts/input.h"

#include "core/key_codes.h"
#include "core/loop_state.h"

enum {
    HIGHEST_KEY_DOWN = 255,
    HIGHEST_KEY_UP = 254, // 255 is never released: the window never clears it either
    WHEEL_NOTCH = 120,
};

void input_key_down(uint32_t code, int repeat, void (*close_window)())
{
    if (repeat)
        return;
    if (code == KEYCODE_ESCAPE) {
        if (mouse_captured == 0)
            close_window();
        key_state[KEYCODE_ESCAPE] = KEY_PRESSED;
        return;
    }
    if (code <= HIGHEST_KEY_DOWN)
        key_state[code] = KEY_PRESSED;
}

void input_system_key_down(uint32_t code)
{
    if (code <= HIGHEST_KEY_DOWN)
        key_state[code] = KEY_PRESSED;
}

int input_key_is_system(uint32_t code, int alt_held, int ctrl_held)
{
    if (code == KEYCODE_F10)
        return 1;
    return alt_held && !ctrl_held;
}

void input_key_up(uint32_t code)
{
    if (code <= HIGHEST_KEY_UP)
        key_state[code] = KEY_UP;
}

void input_button(uint32_t code, int down)
{
    key_state[code] = down ? KEY_PRESSED : KEY_UP;
}

int input_mouse_move(int32_t x, int32_t y, client_point centre)
{
    mouse_x = x;
    mouse_y = y;
    if (x == centre.x && y == centre.y)
        return 0;
    mouse_delta_x += static_cast<float>(centre.x - x);
    mouse_delta_y += static_cast<float>(centre.y - y);
    return mouse_captured != 0;
}

void input_wheel(int32_t amount)
{
    mouse_wheel += amount / static_cast<double>(WHEEL_NOTCH);
}
