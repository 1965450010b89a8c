#include "hosts/sdl/sdl_input.h"

#include "core/key_codes.h"
#include "hosts/input.h"

struct key_pair {
    SDL_Keycode key;
    uint32_t code;
};

// Keys whose codes are not a plain range (letters, digits, function and keypad digits are).
static const key_pair key_pairs[] = {
    {SDLK_BACKSPACE, KEYCODE_BACKSPACE},
    {SDLK_TAB, KEYCODE_TAB},
    {SDLK_RETURN, KEYCODE_ENTER},
    {SDLK_KP_ENTER, KEYCODE_ENTER},
    {SDLK_LSHIFT, KEYCODE_SHIFT},
    {SDLK_RSHIFT, KEYCODE_SHIFT},
    {SDLK_LCTRL, KEYCODE_CTRL},
    {SDLK_RCTRL, KEYCODE_CTRL},
    {SDLK_LALT, KEYCODE_ALT},
    {SDLK_RALT, KEYCODE_ALT},
    {SDLK_PAUSE, KEYCODE_PAUSE},
    {SDLK_CAPSLOCK, KEYCODE_CAPS_LOCK},
    {SDLK_ESCAPE, KEYCODE_ESCAPE},
    {SDLK_SPACE, KEYCODE_SPACE},
    {SDLK_PAGEUP, KEYCODE_PAGE_UP},
    {SDLK_PAGEDOWN, KEYCODE_PAGE_DOWN},
    {SDLK_END, KEYCODE_END},
    {SDLK_HOME, KEYCODE_HOME},
    {SDLK_LEFT, KEYCODE_LEFT},
    {SDLK_UP, KEYCODE_UP},
    {SDLK_RIGHT, KEYCODE_RIGHT},
    {SDLK_DOWN, KEYCODE_DOWN},
    {SDLK_PRINTSCREEN, KEYCODE_PRINT_SCREEN},
    {SDLK_INSERT, KEYCODE_INSERT},
    {SDLK_DELETE, KEYCODE_DELETE},
    {SDLK_LGUI, KEYCODE_LEFT_SYSTEM},
    {SDLK_RGUI, KEYCODE_RIGHT_SYSTEM},
    {SDLK_APPLICATION, KEYCODE_APPLICATION},
    {SDLK_KP_0, KEYCODE_NUMPAD_0},
    {SDLK_KP_MULTIPLY, KEYCODE_MULTIPLY},
    {SDLK_KP_PLUS, KEYCODE_ADD},
    {SDLK_KP_MINUS, KEYCODE_SUBTRACT},
    {SDLK_KP_PERIOD, KEYCODE_DECIMAL},
    {SDLK_KP_DIVIDE, KEYCODE_DIVIDE},
    {SDLK_NUMLOCKCLEAR, KEYCODE_NUM_LOCK},
    {SDLK_SCROLLLOCK, KEYCODE_SCROLL_LOCK},
    {SDLK_SEMICOLON, KEYCODE_SEMICOLON},
    {SDLK_EQUALS, KEYCODE_EQUALS},
    {SDLK_COMMA, KEYCODE_COMMA},
    {SDLK_MINUS, KEYCODE_MINUS},
    {SDLK_PERIOD, KEYCODE_PERIOD},
    {SDLK_SLASH, KEYCODE_SLASH},
    {SDLK_BACKQUOTE, KEYCODE_BACKQUOTE},
    {SDLK_LEFTBRACKET, KEYCODE_LEFT_BRACKET},
    {SDLK_BACKSLASH, KEYCODE_BACKSLASH},
    {SDLK_RIGHTBRACKET, KEYCODE_RIGHT_BRACKET},
    {SDLK_QUOTE, KEYCODE_QUOTE},
};

uint32_t sdl_virtual_key(SDL_Keycode key)
{
    if (key >= SDLK_a && key <= SDLK_z)
        return static_cast<uint32_t>(key - SDLK_a) + 'A';
    if (key >= SDLK_0 && key <= SDLK_9)
        return static_cast<uint32_t>(key - SDLK_0) + '0';
    if (key >= SDLK_F1 && key <= SDLK_F12)
        return static_cast<uint32_t>(key - SDLK_F1) + KEYCODE_F1;
    if (key >= SDLK_F13 && key <= SDLK_F24)
        return static_cast<uint32_t>(key - SDLK_F13) + KEYCODE_F1 + 12;
    if (key >= SDLK_KP_1 && key <= SDLK_KP_9)
        return static_cast<uint32_t>(key - SDLK_KP_1) + KEYCODE_NUMPAD_0 + 1;
    for (const key_pair& pair : key_pairs)
        if (pair.key == key)
            return pair.code;
    return 0;
}

// Escape with the mouse free reaches this through the input rules, as DestroyWindow would.
static sdl_input* closing;

static void close_window()
{
    closing->window_closed = 1;
}

static void key_down(sdl_input* input, const SDL_KeyboardEvent& key)
{
    uint32_t code = sdl_virtual_key(key.keysym.sym);
    if (code == 0)
        return;
    int alt = (key.keysym.mod & KMOD_ALT) != 0 || code == KEYCODE_ALT;
    int ctrl = (key.keysym.mod & KMOD_CTRL) != 0 || code == KEYCODE_CTRL;
    if (input_key_is_system(code, alt, ctrl)) {
        input_system_key_down(code);
        return;
    }
    closing = input;
    input_key_down(code, key.repeat != 0, close_window);
}

static uint32_t button_code(uint8_t button)
{
    switch (button) {
    case SDL_BUTTON_LEFT:
        return KEYCODE_LBUTTON;
    case SDL_BUTTON_RIGHT:
        return KEYCODE_RBUTTON;
    case SDL_BUTTON_MIDDLE:
        return KEYCODE_MBUTTON;
    default:
        return 0; // the window has no messages for the extra buttons either
    }
}

void sdl_input_event(sdl_input* input, const SDL_Event* event)
{
    switch (event->type) {
    case SDL_QUIT:
        input->window_closed = 1;
        break;
    case SDL_KEYDOWN:
        key_down(input, event->key);
        break;
    case SDL_KEYUP: {
        uint32_t code = sdl_virtual_key(event->key.keysym.sym);
        if (code != 0)
            input_key_up(code);
        break;
    }
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP: {
        uint32_t code = button_code(event->button.button);
        if (code != 0)
            input_button(code, event->type == SDL_MOUSEBUTTONDOWN);
        break;
    }
    case SDL_MOUSEMOTION:
        // A captured mouse stays on the centre: each motion is a move away from it and back.
        if (input->relative)
            input_mouse_move(input->centre.x + event->motion.xrel, input->centre.y + event->motion.yrel,
                             input->centre);
        else
            input_mouse_move(event->motion.x, event->motion.y, input->centre);
        break;
    case SDL_MOUSEWHEEL: {
        int32_t notches = event->wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -event->wheel.y : event->wheel.y;
        input_wheel(notches * 120);
        break;
    }
    default:
        break;
    }
}
