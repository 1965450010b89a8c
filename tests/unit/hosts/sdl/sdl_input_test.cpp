#include <gtest/gtest.h>

#include <string.h>

#include "core/key_codes.h"
#include "core/loop_state.h"
#include "hosts/sdl/sdl_input.h"

namespace {

class sdl_input_test : public testing::Test {
protected:
    sdl_input input = {};

    void SetUp() override
    {
        memset(key_state, 0, sizeof key_state);
        mouse_delta_x = mouse_delta_y = mouse_wheel = 0.0f;
        mouse_captured = 0;
        input.centre = client_point{320, 240};
    }

    void key(Uint32 type, SDL_Keycode sym, Uint16 mod = KMOD_NONE, Uint8 repeat = 0)
    {
        SDL_Event event = {};
        event.type = type;
        event.key.keysym.sym = sym;
        event.key.keysym.mod = mod;
        event.key.repeat = repeat;
        sdl_input_event(&input, &event);
    }

    void button(Uint32 type, Uint8 which)
    {
        SDL_Event event = {};
        event.type = type;
        event.button.button = which;
        sdl_input_event(&input, &event);
    }

    void motion(Sint32 x, Sint32 y, Sint32 xrel, Sint32 yrel)
    {
        SDL_Event event = {};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = x;
        event.motion.y = y;
        event.motion.xrel = xrel;
        event.motion.yrel = yrel;
        sdl_input_event(&input, &event);
    }
};

} // namespace

TEST(sdl_virtual_key, letters_and_digits_are_their_upper_case_ascii_codes)
{
    EXPECT_EQ(sdl_virtual_key(SDLK_w), 'W');
    EXPECT_EQ(sdl_virtual_key(SDLK_a), 'A');
    EXPECT_EQ(sdl_virtual_key(SDLK_z), 'Z');
    EXPECT_EQ(sdl_virtual_key(SDLK_0), '0');
    EXPECT_EQ(sdl_virtual_key(SDLK_9), '9');
}

TEST(sdl_virtual_key, function_keys_run_from_0x70)
{
    EXPECT_EQ(sdl_virtual_key(SDLK_F1), 0x70u);
    EXPECT_EQ(sdl_virtual_key(SDLK_F10), 0x79u);
    EXPECT_EQ(sdl_virtual_key(SDLK_F11), 0x7Au);
    EXPECT_EQ(sdl_virtual_key(SDLK_F12), 0x7Bu);
    EXPECT_EQ(sdl_virtual_key(SDLK_F13), 0x7Cu);
}

TEST(sdl_virtual_key, both_shifts_controls_and_alts_share_one_code)
{
    EXPECT_EQ(sdl_virtual_key(SDLK_LSHIFT), 16u);
    EXPECT_EQ(sdl_virtual_key(SDLK_RSHIFT), 16u);
    EXPECT_EQ(sdl_virtual_key(SDLK_LCTRL), 17u);
    EXPECT_EQ(sdl_virtual_key(SDLK_RCTRL), 17u);
    EXPECT_EQ(sdl_virtual_key(SDLK_LALT), 18u);
    EXPECT_EQ(sdl_virtual_key(SDLK_RALT), 18u);
}

TEST(sdl_virtual_key, the_game_keys_have_their_windows_codes)
{
    EXPECT_EQ(sdl_virtual_key(SDLK_ESCAPE), 27u);
    EXPECT_EQ(sdl_virtual_key(SDLK_SPACE), 32u);
    EXPECT_EQ(sdl_virtual_key(SDLK_BACKSPACE), 8u);
    EXPECT_EQ(sdl_virtual_key(SDLK_RETURN), 13u);
    EXPECT_EQ(sdl_virtual_key(SDLK_KP_ENTER), 13u);
    EXPECT_EQ(sdl_virtual_key(SDLK_UP), 0x26u);
    EXPECT_EQ(sdl_virtual_key(SDLK_DOWN), 0x28u);
    EXPECT_EQ(sdl_virtual_key(SDLK_LEFT), 0x25u);
    EXPECT_EQ(sdl_virtual_key(SDLK_RIGHT), 0x27u);
    EXPECT_EQ(sdl_virtual_key(SDLK_KP_PLUS), 0x6Bu);
    EXPECT_EQ(sdl_virtual_key(SDLK_LEFTBRACKET), 0xDBu);
    EXPECT_EQ(sdl_virtual_key(SDLK_RIGHTBRACKET), 0xDDu);
}

TEST(sdl_virtual_key, keypad_digits_run_from_0x60)
{
    EXPECT_EQ(sdl_virtual_key(SDLK_KP_0), 0x60u);
    EXPECT_EQ(sdl_virtual_key(SDLK_KP_1), 0x61u);
    EXPECT_EQ(sdl_virtual_key(SDLK_KP_9), 0x69u);
}

TEST(sdl_virtual_key, keys_without_a_code_give_0)
{
    EXPECT_EQ(sdl_virtual_key(SDLK_MUTE), 0u);
    EXPECT_EQ(sdl_virtual_key(SDLK_UNKNOWN), 0u);
}

TEST_F(sdl_input_test, a_held_key_repeats_without_changing_its_state)
{
    key(SDL_KEYDOWN, SDLK_w);
    EXPECT_EQ(key_state['W'], KEY_PRESSED);
    promote_pressed_keys();
    key(SDL_KEYDOWN, SDLK_w, KMOD_NONE, 1);
    EXPECT_EQ(key_state['W'], KEY_HELD);
    key(SDL_KEYUP, SDLK_w);
    EXPECT_EQ(key_state['W'], KEY_UP);
}

TEST_F(sdl_input_test, escape_with_the_mouse_free_closes_the_window)
{
    key(SDL_KEYDOWN, SDLK_ESCAPE);
    EXPECT_EQ(input.window_closed, 1);
    EXPECT_EQ(key_state[27], KEY_PRESSED);
}

TEST_F(sdl_input_test, escape_with_the_mouse_captured_only_marks_the_key)
{
    mouse_captured = 1;
    key(SDL_KEYDOWN, SDLK_ESCAPE);
    EXPECT_EQ(input.window_closed, 0);
    EXPECT_EQ(key_state[27], KEY_PRESSED);
}

TEST_F(sdl_input_test, alt_and_keys_under_alt_are_system_keys_that_repeat)
{
    key(SDL_KEYDOWN, SDLK_LALT, KMOD_LALT);
    promote_pressed_keys();
    key(SDL_KEYDOWN, SDLK_LALT, KMOD_LALT, 1);
    EXPECT_EQ(key_state[18], KEY_PRESSED);
    key(SDL_KEYDOWN, SDLK_ESCAPE, KMOD_LALT);
    EXPECT_EQ(input.window_closed, 0) << "Alt+Escape is a system key: no Escape rule";
}

TEST_F(sdl_input_test, f10_is_a_system_key)
{
    key(SDL_KEYDOWN, SDLK_F10);
    promote_pressed_keys();
    key(SDL_KEYDOWN, SDLK_F10, KMOD_NONE, 1);
    EXPECT_EQ(key_state[0x79], KEY_PRESSED);
}

TEST_F(sdl_input_test, mouse_buttons_are_1_2_and_4)
{
    button(SDL_MOUSEBUTTONDOWN, SDL_BUTTON_LEFT);
    button(SDL_MOUSEBUTTONDOWN, SDL_BUTTON_RIGHT);
    button(SDL_MOUSEBUTTONDOWN, SDL_BUTTON_MIDDLE);
    button(SDL_MOUSEBUTTONDOWN, SDL_BUTTON_X1);
    EXPECT_EQ(key_state[1], KEY_PRESSED);
    EXPECT_EQ(key_state[2], KEY_PRESSED);
    EXPECT_EQ(key_state[4], KEY_PRESSED);
    EXPECT_EQ(key_state[5], KEY_UP);
    button(SDL_MOUSEBUTTONUP, SDL_BUTTON_LEFT);
    EXPECT_EQ(key_state[1], KEY_UP);
}

TEST_F(sdl_input_test, a_free_mouse_adds_its_offset_from_the_centre)
{
    motion(330, 250, 99, 99);
    EXPECT_EQ(mouse_delta_x, -10.0f);
    EXPECT_EQ(mouse_delta_y, -10.0f);
}

TEST_F(sdl_input_test, a_captured_mouse_adds_its_relative_motion)
{
    mouse_captured = 1;
    input.relative = 1;
    motion(5, 5, 12, -3);
    EXPECT_EQ(mouse_delta_x, -12.0f);
    EXPECT_EQ(mouse_delta_y, 3.0f);
}

TEST_F(sdl_input_test, the_wheel_counts_notches_away_from_the_user)
{
    SDL_Event event = {};
    event.type = SDL_MOUSEWHEEL;
    event.wheel.y = 2;
    event.wheel.direction = SDL_MOUSEWHEEL_NORMAL;
    sdl_input_event(&input, &event);
    event.wheel.direction = SDL_MOUSEWHEEL_FLIPPED;
    event.wheel.y = 3;
    sdl_input_event(&input, &event);
    EXPECT_EQ(mouse_wheel, 2.0f - 3.0f);
}

TEST_F(sdl_input_test, closing_the_window_quits)
{
    SDL_Event event = {};
    event.type = SDL_QUIT;
    sdl_input_event(&input, &event);
    EXPECT_EQ(input.window_closed, 1);
}
