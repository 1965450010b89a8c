// The Windows main loop with the game's own drivers, on a real window and a real clock.
#include <gtest/gtest.h>

#include <string.h>

#include "audio/mixer.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "platform/win32/win32_shell.h"

namespace {

HWND running_window;

// The player presses Escape with the mouse free: the window closes and the loop ends.
void CALLBACK press_escape(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(NULL, timer);
    PostMessageA(running_window, WM_KEYDOWN, VK_ESCAPE, 0);
}

double seconds(const LARGE_INTEGER& from, const LARGE_INTEGER& to, const LARGE_INTEGER& frequency)
{
    return static_cast<double>(to.QuadPart - from.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double cpu_seconds()
{
    FILETIME created, ended, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    ULARGE_INTEGER k = {{kernel.dwLowDateTime, kernel.dwHighDateTime}};
    ULARGE_INTEGER u = {{user.dwLowDateTime, user.dwHighDateTime}};
    return static_cast<double>(k.QuadPart + u.QuadPart) / 1e7;
}

} // namespace

TEST(win32_main_loop, a_second_and_a_half_runs_40_updates_and_60_frames_a_second_sleeping_between_them)
{
    // The game's drivers load the shipped data (the test runs beside it) through WIC and Media Foundation.
    ASSERT_EQ(start_system_services(), 1);
    ASSERT_EQ(create_main_window(GetModuleHandleA(NULL), &running_window), 1);
    ShowWindow(running_window, SW_SHOW);
    SetTimer(NULL, 0, 1500, press_escape);
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    double cpu_before = cpu_seconds();
    run_main_loop(running_window);
    QueryPerformanceCounter(&end);
    double cpu = cpu_seconds() - cpu_before;
    double wall = seconds(start, end, frequency);
    UnregisterClassA("MAIN_WINDOW", GetModuleHandleA(NULL));

    EXPECT_FALSE(IsWindow(running_window)) << "Escape with the mouse free closed the window";
    EXPECT_GE(wall, 1.4);
    EXPECT_NEAR(shown_ups, 40, 2) << "the counts of the last whole second";
    EXPECT_GE(shown_fps, 20);
    EXPECT_LE(shown_fps, 61);
    EXPECT_LT(cpu, 0.6 * wall) << "the loop waits for its next due time instead of spinning";
    EXPECT_GT(audio_bytes_queued, 0u) << "the game's start-up opened wave-out, which keeps asking for blocks";
    EXPECT_EQ(audio_bytes_queued % 6000, 0u);
}
