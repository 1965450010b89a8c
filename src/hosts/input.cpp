#include "hosts/input.h"

#include <math.h>

#include "core/key_codes.h"
#include "core/loop_state.h"

enum {
    HIGHEST_KEY_DOWN = 255,
    HIGHEST_KEY_UP = 254, // 255 is never released: the window never clears it either
    WHEEL_NOTCH = 120,
};

void (*input_listener)(const script_event& event);

static void tell_listener(script_event_kind kind, int32_t a, int32_t b = 0)
{
    if (input_listener)
        input_listener(script_event{0, kind, a, b, 0.0});
}

// Codes above 255 change nothing and cannot be written in a script.
static void tell_key(script_event_kind kind, uint32_t code)
{
    if (code <= 0xFF)
        tell_listener(kind, static_cast<int32_t>(code));
}

void input_key_down(uint32_t code, int repeat, void (*close_window)())
{
    if (repeat)
        return;
    tell_key(SCRIPT_KEY_DOWN, code); // before Escape may close the window
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
    tell_key(SCRIPT_KEY_DOWN, code);
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
    tell_key(SCRIPT_KEY_UP, code);
    if (code <= HIGHEST_KEY_UP)
        key_state[code] = KEY_UP;
}

void input_button(uint32_t code, int down)
{
    tell_key(down ? SCRIPT_KEY_DOWN : SCRIPT_KEY_UP, code);
    key_state[code] = down ? KEY_PRESSED : KEY_UP;
}

int input_mouse_move(int32_t x, int32_t y, client_point centre)
{
    tell_listener(SCRIPT_CURSOR, x, y);
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
    // A script turns the wheel by whole notches: a finer wheel's part of a notch is heard rounded.
    tell_listener(SCRIPT_WHEEL, static_cast<int32_t>(lround(amount / static_cast<double>(WHEEL_NOTCH))));
    mouse_wheel += amount / static_cast<double>(WHEEL_NOTCH);
}
