#include "hosts/scripted_input.h"

#include <string.h>

#include "core/key_codes.h"
#include "core/loop_state.h"
#include "hosts/input.h"

// Escape with the mouse free reaches this through the input rules, as DestroyWindow would.
static scripted_input* closing;

static void close_window()
{
    closing->window_closed = 1;
}

void scripted_input_start(scripted_input* input, client_size client)
{
    memset(input, 0, sizeof *input);
    input->centre = client_centre_of(client);
    input->cursor = input->centre;
}

static void move_cursor(scripted_input* input, client_point to)
{
    input->cursor = to;
    if (input_mouse_move(to.x, to.y, input->centre))
        input->cursor = input->centre; // put back on the centre; that move's echo changes nothing
}

static int is_mouse_button(int32_t code)
{
    return code == KEYCODE_LBUTTON || code == KEYCODE_RBUTTON || code == KEYCODE_MBUTTON;
}

static void press(scripted_input* input, uint32_t code)
{
    int repeat = input->physically_down[code];
    input->physically_down[code] = 1;
    int alt = input->physically_down[KEYCODE_ALT];
    int ctrl = input->physically_down[KEYCODE_CTRL];
    if (input_key_is_system(code, alt, ctrl)) {
        input_system_key_down(code);
        return;
    }
    closing = input;
    input_key_down(code, repeat, close_window);
}

void scripted_input_deliver(scripted_input* input, const script_event& event)
{
    uint32_t code = static_cast<uint32_t>(event.a) & 0xFF; // the script allows codes 0 to 255 only
    switch (event.kind) {
    case SCRIPT_KEY_DOWN:
        if (is_mouse_button(event.a))
            input_button(code, 1);
        else
            press(input, code);
        break;
    case SCRIPT_KEY_UP:
        input->physically_down[code] = 0;
        if (is_mouse_button(event.a))
            input_button(code, 0);
        else
            input_key_up(code);
        break;
    case SCRIPT_MOUSE:
        move_cursor(input, client_point{input->cursor.x + event.a, input->cursor.y + event.b});
        break;
    case SCRIPT_WHEEL:
        input_wheel(event.a * 120);
        break;
    case SCRIPT_CURSOR:
        move_cursor(input, client_point{event.a, event.b});
        break;
    case SCRIPT_QUIT:
        input->window_closed = 1;
        break;
    case SCRIPT_TIME:
        break;
    }
}

void scripted_input_sync_capture(scripted_input* input)
{
    int32_t wanted = mouse_captured != 0;
    if (wanted == input->capture_held)
        return;
    input->capture_held = wanted;
    if (wanted)
        move_cursor(input, input->centre);
}
