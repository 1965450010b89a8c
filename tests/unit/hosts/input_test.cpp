#include <gtest/gtest.h>

#include <string.h>

#include "core/key_codes.h"
#include "core/loop_state.h"
#include "hosts/input.h"

namespace {

int windows_closed;
void count_close()
{
    windows_closed += 1;
}

class input_test : public testing::Test {
protected:
    void SetUp() override
    {
        memset(key_state, 0, sizeof key_state);
        mouse_delta_x = mouse_delta_y = mouse_wheel = 0.0f;
        mouse_captured = 0;
        mouse_x = mouse_y = 0;
        windows_closed = 0;
    }
};

const client_point centre = {320, 240};

} // namespace

TEST_F(input_test, a_held_key_reads_pressed_then_held_and_repeats_change_nothing_until_released)
{
    input_key_down('W', 0, count_close);
    EXPECT_EQ(key_state['W'], KEY_PRESSED);
    promote_pressed_keys();
    EXPECT_EQ(key_state['W'], KEY_HELD);
    input_key_down('W', 1, count_close);
    input_key_down('W', 1, count_close);
    EXPECT_EQ(key_state['W'], KEY_HELD);
    input_key_up('W');
    EXPECT_EQ(key_state['W'], KEY_UP);
}

TEST_F(input_test, a_key_pressed_and_released_between_updates_reads_released)
{
    input_key_down('E', 0, count_close);
    input_key_up('E');
    EXPECT_EQ(key_state['E'], KEY_UP);
}

TEST_F(input_test, escape_with_the_mouse_free_closes_the_window_and_is_marked_pressed)
{
    input_key_down(KEYCODE_ESCAPE, 0, count_close);
    EXPECT_EQ(windows_closed, 1);
    EXPECT_EQ(key_state[KEYCODE_ESCAPE], KEY_PRESSED);
}

TEST_F(input_test, escape_with_the_mouse_captured_only_marks_the_key)
{
    mouse_captured = 1;
    input_key_down(KEYCODE_ESCAPE, 0, count_close);
    EXPECT_EQ(windows_closed, 0);
    EXPECT_EQ(key_state[KEYCODE_ESCAPE], KEY_PRESSED);
}

TEST_F(input_test, an_auto_repeated_escape_does_not_close_the_window)
{
    input_key_down(KEYCODE_ESCAPE, 1, count_close);
    EXPECT_EQ(windows_closed, 0);
    EXPECT_EQ(key_state[KEYCODE_ESCAPE], KEY_UP);
}

TEST_F(input_test, a_system_key_is_marked_pressed_even_when_it_repeats)
{
    input_system_key_down(KEYCODE_ALT);
    promote_pressed_keys();
    input_system_key_down(KEYCODE_ALT);
    EXPECT_EQ(key_state[KEYCODE_ALT], KEY_PRESSED);
}

TEST_F(input_test, escape_as_a_system_key_does_not_close_the_window)
{
    input_system_key_down(KEYCODE_ESCAPE);
    EXPECT_EQ(windows_closed, 0);
    EXPECT_EQ(key_state[KEYCODE_ESCAPE], KEY_PRESSED);
}

TEST_F(input_test, alt_f10_and_keys_with_alt_held_are_system_keys_but_not_with_ctrl)
{
    EXPECT_EQ(input_key_is_system(KEYCODE_F10, 0, 0), 1);
    EXPECT_EQ(input_key_is_system(KEYCODE_ALT, 1, 0), 1);
    EXPECT_EQ(input_key_is_system('W', 1, 0), 1);
    EXPECT_EQ(input_key_is_system('W', 1, 1), 0);
    EXPECT_EQ(input_key_is_system('W', 0, 0), 0);
    EXPECT_EQ(input_key_is_system(KEYCODE_F11, 0, 0), 0);
}

TEST_F(input_test, key_codes_above_255_are_ignored_and_255_is_never_released)
{
    input_key_down(256, 0, count_close);
    input_system_key_down(300);
    input_key_down(255, 0, count_close);
    EXPECT_EQ(key_state[255], KEY_PRESSED);
    input_key_up(255);
    EXPECT_EQ(key_state[255], KEY_PRESSED);
    input_key_up(254 + 2);
    input_key_down(254, 0, count_close);
    input_key_up(254);
    EXPECT_EQ(key_state[254], KEY_UP);
}

TEST_F(input_test, mouse_buttons_are_keys_1_2_and_4)
{
    input_button(KEYCODE_LBUTTON, 1);
    input_button(KEYCODE_RBUTTON, 1);
    input_button(KEYCODE_MBUTTON, 1);
    EXPECT_EQ(key_state[1], KEY_PRESSED);
    EXPECT_EQ(key_state[2], KEY_PRESSED);
    EXPECT_EQ(key_state[4], KEY_PRESSED);
    input_button(KEYCODE_RBUTTON, 0);
    EXPECT_EQ(key_state[2], KEY_UP);
}

TEST_F(input_test, moving_right_and_down_gives_negative_deltas_that_accumulate)
{
    EXPECT_EQ(input_mouse_move(330, 245, centre), 0);
    EXPECT_EQ(input_mouse_move(325, 250, centre), 0);
    EXPECT_EQ(mouse_delta_x, -10.0f + -5.0f);
    EXPECT_EQ(mouse_delta_y, -5.0f + -10.0f);
    EXPECT_EQ(mouse_x, 325);
    EXPECT_EQ(mouse_y, 250);
}

TEST_F(input_test, a_move_onto_the_centre_is_the_echo_of_recentring_and_changes_no_delta)
{
    mouse_captured = 1;
    EXPECT_EQ(input_mouse_move(centre.x, centre.y, centre), 0);
    EXPECT_EQ(mouse_delta_x, 0.0f);
    EXPECT_EQ(mouse_delta_y, 0.0f);
}

TEST_F(input_test, a_captured_mouse_asks_to_be_put_back_on_the_centre)
{
    mouse_captured = 1;
    EXPECT_EQ(input_mouse_move(300, 250, centre), 1);
    EXPECT_EQ(mouse_delta_x, 20.0f);
    EXPECT_EQ(mouse_delta_y, -10.0f);
}

TEST_F(input_test, the_wheel_adds_notches_of_120)
{
    input_wheel(120);
    input_wheel(-360);
    EXPECT_EQ(mouse_wheel, -2.0f);
    input_wheel(60);
    EXPECT_EQ(mouse_wheel, -1.5f);
}
