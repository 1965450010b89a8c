#include <gtest/gtest.h>

#include <string.h>

#include "core/key_codes.h"
#include "core/loop_state.h"
#include "hosts/scripted_input.h"

namespace {

class scripted_input_test : public testing::Test {
protected:
    scripted_input input;

    void SetUp() override
    {
        memset(key_state, 0, sizeof key_state);
        mouse_delta_x = mouse_delta_y = mouse_wheel = 0.0f;
        mouse_captured = 0;
        scripted_input_start(&input, client_size{640, 480});
    }

    void deliver(script_event_kind kind, int32_t a, int32_t b = 0)
    {
        scripted_input_deliver(&input, script_event{0, kind, a, b, 0.0});
    }
};

} // namespace

TEST_F(scripted_input_test, the_cursor_starts_on_the_centre_of_the_client_area)
{
    scripted_input_start(&input, client_size{960, 720});
    EXPECT_EQ(input.cursor.x, 480);
    EXPECT_EQ(input.cursor.y, 360);
}

TEST_F(scripted_input_test, a_key_goes_down_and_up_through_the_window_rules)
{
    deliver(SCRIPT_KEY_DOWN, 'W');
    EXPECT_EQ(key_state['W'], KEY_PRESSED);
    promote_pressed_keys();
    deliver(SCRIPT_KEY_DOWN, 'W'); // still held: an auto-repeat
    EXPECT_EQ(key_state['W'], KEY_HELD);
    deliver(SCRIPT_KEY_UP, 'W');
    EXPECT_EQ(key_state['W'], KEY_UP);
    deliver(SCRIPT_KEY_DOWN, 'W');
    EXPECT_EQ(key_state['W'], KEY_PRESSED);
}

TEST_F(scripted_input_test, escape_with_the_mouse_free_closes_the_window)
{
    deliver(SCRIPT_KEY_DOWN, KEYCODE_ESCAPE);
    EXPECT_EQ(input.window_closed, 1);
}

TEST_F(scripted_input_test, escape_with_the_mouse_captured_keeps_the_window)
{
    mouse_captured = 1;
    deliver(SCRIPT_KEY_DOWN, KEYCODE_ESCAPE);
    EXPECT_EQ(input.window_closed, 0);
    EXPECT_EQ(key_state[KEYCODE_ESCAPE], KEY_PRESSED);
}

TEST_F(scripted_input_test, with_alt_held_keys_are_system_keys_and_escape_does_not_close)
{
    deliver(SCRIPT_KEY_DOWN, KEYCODE_ALT);
    promote_pressed_keys();
    deliver(SCRIPT_KEY_DOWN, KEYCODE_ALT); // a repeating system key is pressed again
    EXPECT_EQ(key_state[KEYCODE_ALT], KEY_PRESSED);
    deliver(SCRIPT_KEY_DOWN, KEYCODE_ESCAPE);
    EXPECT_EQ(input.window_closed, 0);
    EXPECT_EQ(key_state[KEYCODE_ESCAPE], KEY_PRESSED);
}

TEST_F(scripted_input_test, mouse_buttons_set_their_codes)
{
    deliver(SCRIPT_KEY_DOWN, KEYCODE_LBUTTON);
    deliver(SCRIPT_KEY_DOWN, KEYCODE_MBUTTON);
    EXPECT_EQ(key_state[KEYCODE_LBUTTON], KEY_PRESSED);
    EXPECT_EQ(key_state[KEYCODE_MBUTTON], KEY_PRESSED);
    deliver(SCRIPT_KEY_UP, KEYCODE_LBUTTON);
    EXPECT_EQ(key_state[KEYCODE_LBUTTON], KEY_UP);
}

TEST_F(scripted_input_test, a_free_mouse_stays_where_it_moved_and_its_offsets_from_the_centre_add_up)
{
    deliver(SCRIPT_MOUSE, 10, 5);
    deliver(SCRIPT_MOUSE, 10, 5);
    EXPECT_EQ(input.cursor.x, 340);
    EXPECT_EQ(input.cursor.y, 250);
    EXPECT_EQ(mouse_delta_x, -10.0f - 20.0f);
    EXPECT_EQ(mouse_delta_y, -5.0f - 10.0f);
}

TEST_F(scripted_input_test, a_captured_mouse_returns_to_the_centre_after_each_move)
{
    mouse_captured = 1;
    scripted_input_sync_capture(&input);
    deliver(SCRIPT_MOUSE, 10, -5);
    deliver(SCRIPT_MOUSE, 10, -5);
    EXPECT_EQ(input.cursor.x, 320);
    EXPECT_EQ(input.cursor.y, 240);
    EXPECT_EQ(mouse_delta_x, -20.0f);
    EXPECT_EQ(mouse_delta_y, 10.0f);
}

TEST_F(scripted_input_test, taking_the_capture_puts_the_cursor_on_the_centre_without_a_delta)
{
    deliver(SCRIPT_CURSOR, 100, 100);
    float before = mouse_delta_x;
    mouse_captured = 1;
    scripted_input_sync_capture(&input);
    EXPECT_EQ(input.capture_held, 1);
    EXPECT_EQ(input.cursor.x, 320);
    EXPECT_EQ(mouse_delta_x, before);
    mouse_captured = 0;
    scripted_input_sync_capture(&input);
    EXPECT_EQ(input.capture_held, 0);
}

TEST_F(scripted_input_test, the_cursor_jumps_to_a_client_position)
{
    deliver(SCRIPT_CURSOR, 300, 260);
    EXPECT_EQ(mouse_x, 300);
    EXPECT_EQ(mouse_y, 260);
    EXPECT_EQ(mouse_delta_x, 20.0f);
    EXPECT_EQ(mouse_delta_y, -20.0f);
}

TEST_F(scripted_input_test, the_wheel_turns_by_whole_notches)
{
    deliver(SCRIPT_WHEEL, -3);
    EXPECT_EQ(mouse_wheel, -3.0f);
}

TEST_F(scripted_input_test, quit_closes_the_window_whether_or_not_the_mouse_is_captured)
{
    mouse_captured = 1;
    deliver(SCRIPT_QUIT, 0);
    EXPECT_EQ(input.window_closed, 1);
}

TEST_F(scripted_input_test, a_time_line_is_the_loops_and_changes_no_input)
{
    script_event time = {0, SCRIPT_TIME, 0, 0, 2.5};
    scripted_input_deliver(&input, time);
    EXPECT_EQ(input.window_closed, 0);
    EXPECT_EQ(mouse_delta_x, 0.0f);
    EXPECT_EQ(input.cursor.x, 320);
    for (int code = 0; code < 256; ++code)
        ASSERT_EQ(key_state[code], 0) << code;
}
