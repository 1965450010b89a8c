// The Windows game's start-up, main loop and crash-dump handler.
#include "platform/win32/win32_shell.h"

#include <dbghelp.h>
#include <mfapi.h>
#include <objbase.h>

#include "app/game.h"
#include "app/schedule.h"
#include "core/loop_state.h"
#include "core/settings.h"

// {317D06E8-5F24-433D-BDF7-79CE68D8ABC2} and {EC5EC8A9-C395-4314-9C77-54D7A935FF70}.
static const CLSID imaging_factory_2_class = {0x317D06E8, 0x5F24, 0x433D, {0xBD, 0xF7, 0x79, 0xCE, 0x68, 0xD8, 0xAB, 0xC2}};
static const IID imaging_factory_interface = {0xEC5EC8A9, 0xC395, 0x4314, {0x9C, 0x77, 0x54, 0xD7, 0xA9, 0x35, 0xFF, 0x70}};

enum : DWORD {
    WINDOW_STYLE = 0x00CA0000, // WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX: fixed size
};
static const ULONG MEDIA_FOUNDATION_VERSION = 0x20070;

int create_main_window(HINSTANCE instance, HWND* window)
{
    WNDCLASSA window_class = {};
    window_class.style = 0;
    window_class.lpfnWndProc = window_proc;
    window_class.hInstance = instance;
    window_class.hIcon = LoadIconA(NULL, IDI_APPLICATION);
    window_class.hCursor = LoadCursorA(NULL, IDC_ARROW);
    window_class.lpszClassName = "MAIN_WINDOW";
    if (!RegisterClassA(&window_class))
        return 0;
    client_size client = window_client_size(SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height, SCREEN_SCALE);
    RECT outer = {0, 0, client.width, client.height};
    window_rectangle placed = {0, 0, client.width, client.height};
    if (AdjustWindowRect(&outer, WINDOW_STYLE, FALSE))
        placed = centred_window(outer.right - outer.left, outer.bottom - outer.top, GetSystemMetrics(SM_CXSCREEN),
                                GetSystemMetrics(SM_CYSCREEN));
    *window = CreateWindowExA(WS_EX_COMPOSITED, "MAIN_WINDOW", "Gloamhold", WINDOW_STYLE, placed.x, placed.y,
                              placed.width, placed.height, NULL, NULL, instance, NULL);
    // Only the all-ones handle counts as failure; a null window is deliberately not tested.
    return *window != INVALID_HANDLE_VALUE;
}

int start_system_services()
{
    if (CoInitialize(NULL) != S_OK) // S_FALSE fails too, deliberately
        return 0;
    if (CoCreateInstance(imaging_factory_2_class, NULL, CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER,
                         imaging_factory_interface, reinterpret_cast<void**>(&wic_factory)) != 0)
        return 0;
    return !FAILED(MFStartup(MEDIA_FOUNDATION_VERSION, MFSTARTUP_LITE));
}

int win_main(HINSTANCE instance, HINSTANCE, LPSTR, int show_command)
{
    SetUnhandledExceptionFilter(crash_dump_filter);
    if (!start_system_services())
        return 1;
    if (!load_settings("settings.ini"))
        return 1;
    HWND window = NULL;
    if (!create_main_window(instance, &window))
        return 1;
    ShowWindow(window, show_command);
    run_main_loop(window);
    return 0; // COM and Media Foundation are never shut down: the process simply ends
}

// ---- The main loop --------------------------------------------------------------------------

static HWND loop_window;

// The real capture follows mouse_captured: hidden cursor, held on the centre, kept in the window.
static void sync_mouse_capture()
{
    int wanted = mouse_captured != 0;
    int held = GetCapture() == loop_window;
    if (wanted == held)
        return;
    if (!wanted) {
        ShowCursor(TRUE);
        ReleaseCapture();
        ClipCursor(NULL);
        return;
    }
    ShowCursor(FALSE);
    SetCapture(loop_window);
    client_point centre = client_centre(loop_window);
    POINT screen_centre = {centre.x, centre.y};
    ClientToScreen(loop_window, &screen_centre);
    SetCursorPos(screen_centre.x, screen_centre.y);
    RECT client;
    GetClientRect(loop_window, &client);
    POINT corner = {client.left, client.top};
    ClientToScreen(loop_window, &corner);
    RECT confined = {corner.x, corner.y, client.right + corner.x, client.bottom + corner.y};
    ClipCursor(&confined);
}

static void invalidate_window()
{
    InvalidateRect(loop_window, NULL, FALSE); // WM_PAINT presents the frame
}

static void set_title(const char* title)
{
    SetWindowTextA(loop_window, title);
}

static const loop_hooks window_hooks = {game_update, game_render, sync_mouse_capture, invalidate_window, set_title};

struct performance_clock {
    LARGE_INTEGER frequency;
    LARGE_INTEGER start;
};

static double seconds_since_start(const performance_clock& clock)
{
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart - clock.start.QuadPart) / static_cast<double>(clock.frequency.QuadPart);
}

// Sleeps until the schedule has something due or a message arrives. The last millisecond is left
// to the loop, since the system's sleeps are only that precise.
static void wait_until(double due, double now)
{
    double milliseconds = (due - now) * 1000.0 - 1.0;
    if (milliseconds >= 1.0)
        MsgWaitForMultipleObjects(0, NULL, FALSE, milliseconds > 1000.0 ? 1000 : static_cast<DWORD>(milliseconds),
                                  QS_ALLINPUT);
}

void run_main_loop(HWND window)
{
    loop_window = window;
    loop_schedule schedule;
    schedule_start(&schedule, UPS, FPS);
    performance_clock clock = {};
    int started = 0;
    timeBeginPeriod(1); // millisecond sleeps
    for (;;) {
        MSG message;
        while (PeekMessageA(&message, NULL, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT)
                return;
            DispatchMessageA(&message); // never translated: the game takes no character messages
        }
        if (!started) {
            if (!game_init()) {
                PostQuitMessage(0);
                continue;
            }
            QueryPerformanceFrequency(&clock.frequency);
            QueryPerformanceCounter(&clock.start);
            started = 1;
        }
        schedule_run(&schedule, seconds_since_start(clock), &window_hooks);
        wait_until(schedule_next_due(&schedule), seconds_since_start(clock));
    }
}

// ---- Crash dumps ----------------------------------------------------------------------------

LONG WINAPI crash_dump_filter(EXCEPTION_POINTERS* exception)
{
    ShowCursor(TRUE);
    ReleaseCapture();
    ClipCursor(NULL);
    mouse_captured = 0;
    HANDLE file = CreateFileA("crash.dmp", GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
    if (file != INVALID_HANDLE_VALUE) {
        MINIDUMP_EXCEPTION_INFORMATION information;
        information.ThreadId = GetCurrentThreadId();
        information.ExceptionPointers = exception;
        information.ClientPointers = FALSE;
        MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpWithFullMemory, &information,
                          NULL, NULL);
        CloseHandle(file);
    }
    // Said whether or not the dump could be written.
    MessageBoxA(NULL, "The game has crashed. Crash dump saved to \"crash.dmp\".", "Crash", MB_ICONERROR);
    return EXCEPTION_EXECUTE_HANDLER;
}
