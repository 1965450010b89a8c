// The Windows shell against a real window (the suite runs under Wine on a virtual X server).
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "core/frame.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "hosts/win32/win32_shell.h"

namespace {

LPARAM repeat_bit()
{
    return static_cast<LPARAM>(1) << 30;
}

LPARAM position(int x, int y)
{
    return MAKELPARAM(static_cast<WORD>(static_cast<int16_t>(x)), static_cast<WORD>(static_cast<int16_t>(y)));
}

// Each test makes the game's window with the real start-up steps and takes it down again.
class window_proc_test : public testing::Test {
protected:
    HWND window = NULL;

    void open_window(int width, int height, float scale)
    {
        SCREEN_RESOLUTION = {width, height};
        SCREEN_SCALE = scale;
        ASSERT_EQ(create_main_window(GetModuleHandleA(NULL), &window), 1);
        ASSERT_NE(window, (HWND)NULL);
    }

    void SetUp() override
    {
        memset(key_state, 0, sizeof key_state);
        mouse_delta_x = mouse_delta_y = mouse_wheel = 0.0f;
        mouse_captured = 0;
        open_window(640, 480, 1.0f);
    }

    void TearDown() override
    {
        if (IsWindow(window))
            DestroyWindow(window);
        drain_messages();
        UnregisterClassA("MAIN_WINDOW", GetModuleHandleA(NULL));
        SCREEN_RESOLUTION = {640, 480};
        SCREEN_SCALE = 1.0f;
        mouse_captured = 0;
    }

    // Handles what is queued; 1 when a WM_QUIT was among it.
    static int drain_messages()
    {
        int quit = 0;
        MSG message;
        while (PeekMessageA(&message, NULL, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT)
                quit = 1;
            else
                DispatchMessageA(&message);
        }
        return quit;
    }

    LRESULT send(UINT message, WPARAM w_param, LPARAM l_param = 0)
    {
        return window_proc(window, message, w_param, l_param);
    }

    void reopen(int width, int height, float scale)
    {
        TearDown();
        open_window(width, height, scale);
    }
};

} // namespace

TEST_F(window_proc_test, a_resolution_of_640x480_at_scale_1_5_gives_a_960x720_client_area)
{
    reopen(640, 480, 1.5f);
    RECT client;
    GetClientRect(window, &client);
    EXPECT_EQ(client.right - client.left, 960);
    EXPECT_EQ(client.bottom - client.top, 720);
}

TEST_F(window_proc_test, the_window_is_a_fixed_size_captioned_main_window_centred_on_the_screen)
{
    char name[64];
    GetClassNameA(window, name, sizeof name);
    EXPECT_STREQ(name, "MAIN_WINDOW");
    GetWindowTextA(window, name, sizeof name);
    EXPECT_STREQ(name, "Gloamhold");
    LONG style = GetWindowLongA(window, GWL_STYLE);
    const LONG fixed_size = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    EXPECT_EQ(style & fixed_size, fixed_size);
    EXPECT_EQ(style & (WS_MAXIMIZEBOX | WS_THICKFRAME), 0);
    EXPECT_NE(GetWindowLongA(window, GWL_EXSTYLE) & WS_EX_COMPOSITED, 0);
    RECT outer = {0, 0, 640, 480};
    AdjustWindowRect(&outer, fixed_size, FALSE);
    RECT placed;
    GetWindowRect(window, &placed);
    EXPECT_EQ(placed.left, (GetSystemMetrics(SM_CXSCREEN) - (outer.right - outer.left)) / 2);
    EXPECT_EQ(placed.top, (GetSystemMetrics(SM_CYSCREEN) - (outer.bottom - outer.top)) / 2);
}

TEST_F(window_proc_test, the_frame_buffer_is_a_top_down_16_bit_section_of_the_resolution)
{
    reopen(320, 200, 2.0f);
    EXPECT_NE(color_buffer, nullptr);
    EXPECT_EQ(frame_width, 320);
    EXPECT_EQ(frame_height, 200);
    EXPECT_EQ(frame_bitmap_info.biSize, 40u);
    EXPECT_EQ(frame_bitmap_info.biWidth, 320);
    EXPECT_EQ(frame_bitmap_info.biHeight, -200);
    EXPECT_EQ(frame_bitmap_info.biPlanes, 1);
    EXPECT_EQ(frame_bitmap_info.biBitCount, 16);
    EXPECT_EQ(frame_bitmap_info.biCompression, static_cast<DWORD>(BI_RGB));
    DIBSECTION section;
    ASSERT_EQ(GetObjectA(frame_bitmap, sizeof section, &section), static_cast<int>(sizeof section));
    EXPECT_EQ(section.dsBm.bmBits, color_buffer);
    EXPECT_EQ(section.dsBm.bmWidthBytes, 640);
    color_buffer[320 * 200 - 1] = 0x7FFF; // the whole buffer is there
}

TEST_F(window_proc_test, a_held_key_reads_pressed_then_held_and_auto_repeats_are_ignored)
{
    EXPECT_EQ(send(WM_KEYDOWN, 'W'), 0);
    EXPECT_EQ(key_state['W'], KEY_PRESSED);
    promote_pressed_keys();
    send(WM_KEYDOWN, 'W', repeat_bit());
    send(WM_KEYDOWN, 'W', repeat_bit());
    EXPECT_EQ(key_state['W'], KEY_HELD);
    send(WM_KEYUP, 'W');
    EXPECT_EQ(key_state['W'], KEY_UP);
}

TEST_F(window_proc_test, escape_with_the_mouse_free_closes_the_game)
{
    send(WM_KEYDOWN, VK_ESCAPE);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(key_state[VK_ESCAPE], KEY_PRESSED);
    EXPECT_EQ(drain_messages(), 1) << "WM_DESTROY posts the quit message";
}

TEST_F(window_proc_test, escape_with_the_mouse_captured_only_frees_the_mouse)
{
    mouse_captured = 1;
    send(WM_KEYDOWN, VK_ESCAPE);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(key_state[VK_ESCAPE], KEY_PRESSED);
}

TEST_F(window_proc_test, system_keys_are_pressed_even_when_repeating_and_escape_among_them_does_not_close)
{
    send(WM_SYSKEYDOWN, VK_MENU);
    promote_pressed_keys();
    send(WM_SYSKEYDOWN, VK_MENU, repeat_bit());
    EXPECT_EQ(key_state[VK_MENU], KEY_PRESSED);
    send(WM_SYSKEYDOWN, VK_ESCAPE);
    EXPECT_TRUE(IsWindow(window));
    send(WM_SYSKEYUP, VK_MENU);
    EXPECT_EQ(key_state[VK_MENU], KEY_UP);
}

TEST_F(window_proc_test, codes_above_255_are_ignored_and_255_is_never_released)
{
    send(WM_KEYDOWN, 0x1FF);
    send(WM_KEYDOWN, 255);
    send(WM_KEYUP, 255);
    EXPECT_EQ(key_state[255], KEY_PRESSED);
    EXPECT_EQ(key_state[0xFF & 0x1FF], KEY_PRESSED) << "only the real 255 went down";
}

TEST_F(window_proc_test, alt_and_f10_do_not_open_the_window_menu)
{
    EXPECT_EQ(send(WM_SYSCOMMAND, SC_KEYMENU), 0);
    EXPECT_EQ(send(WM_SYSCOMMAND, SC_KEYMENU, VK_F10), 0);
    EXPECT_TRUE(IsWindow(window));
}

TEST_F(window_proc_test, other_system_commands_are_left_to_windows)
{
    send(WM_SYSCOMMAND, SC_CLOSE);
    EXPECT_FALSE(IsWindow(window)) << "the default handling closes the window";
}

TEST_F(window_proc_test, mouse_moves_add_their_offset_from_the_client_centre)
{
    client_point centre = client_centre(window);
    EXPECT_EQ(centre.x, 320);
    EXPECT_EQ(centre.y, 240);
    send(WM_MOUSEMOVE, 0, position(330, 245));
    EXPECT_EQ(mouse_delta_x, -10.0f);
    EXPECT_EQ(mouse_delta_y, -5.0f);
    send(WM_MOUSEMOVE, 0, position(320, 240));
    EXPECT_EQ(mouse_delta_x, -10.0f) << "the echo of re-centring adds nothing";
    send(WM_MOUSEMOVE, 0, position(-3, -4));
    EXPECT_EQ(mouse_x, -3);
    EXPECT_EQ(mouse_y, -4);
    EXPECT_EQ(mouse_delta_x, -10.0f + 323.0f);
}

TEST_F(window_proc_test, a_captured_mouse_is_put_back_on_the_centre)
{
    ShowWindow(window, SW_SHOW);
    mouse_captured = 1;
    send(WM_MOUSEMOVE, 0, position(300, 200));
    POINT cursor;
    GetCursorPos(&cursor);
    POINT centre = {320, 240};
    ClientToScreen(window, &centre);
    EXPECT_EQ(cursor.x, centre.x);
    EXPECT_EQ(cursor.y, centre.y);
}

TEST_F(window_proc_test, buttons_and_the_wheel_reach_the_input_state)
{
    send(WM_LBUTTONDOWN, MK_LBUTTON);
    send(WM_RBUTTONDOWN, MK_RBUTTON);
    send(WM_MBUTTONDOWN, MK_MBUTTON);
    EXPECT_EQ(key_state[1], KEY_PRESSED);
    EXPECT_EQ(key_state[2], KEY_PRESSED);
    EXPECT_EQ(key_state[4], KEY_PRESSED);
    send(WM_LBUTTONUP, 0);
    send(WM_RBUTTONUP, 0);
    send(WM_MBUTTONUP, 0);
    EXPECT_EQ(key_state[1] | key_state[2] | key_state[4], KEY_UP);
    send(WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-240)));
    EXPECT_EQ(mouse_wheel, -2.0f);
}

TEST_F(window_proc_test, destroying_the_window_posts_the_quit_message)
{
    DestroyWindow(window);
    EXPECT_EQ(drain_messages(), 1);
}
