// The Windows game's start-up, main loop and crash-dump handler.
#include "hosts/win32/win32_shell.h"

#include <dbghelp.h>
#include <mfapi.h>
#include <objbase.h>
#include <stdio.h>
#include <stdlib.h>

#include "app/game.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "hosts/main_loop.h"
#include "hosts/window_options.h"
#include "hosts/window_session.h"

// Fixed size: a caption, the window menu and minimising, but no sizing border or maximising.
static const DWORD WINDOW_STYLE = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;

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
    if (CoCreateInstance(CLSID_WICImagingFactory2, NULL, CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER,
                         IID_IWICImagingFactory, reinterpret_cast<void**>(&wic_factory)) != 0)
        return 0;
    return !FAILED(MFStartup(MF_VERSION, MFSTARTUP_LITE));
}

// A program of the windows subsystem starts with no console: what it prints for --version or a
// mistake on its command line goes to the console it was started from, when there is one and the
// output is not already redirected.
static void use_the_parent_console()
{
    if (GetStdHandle(STD_OUTPUT_HANDLE) || !AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    freopen("CONOUT$", "w", stdout);
    freopen("CONOUT$", "w", stderr);
}

int win_main(HINSTANCE instance, HINSTANCE, LPSTR, int show_command)
{
    use_the_parent_console();
    window_options options;
    int status = window_command_line(__argc, __argv, &options);
    if (status != WINDOW_GO_ON)
        return status;
    SetUnhandledExceptionFilter(crash_dump_filter);
    if (!start_system_services())
        return 1;
    if (!load_settings("settings.ini"))
        return 1;
    if (!window_session_open(&options))
        return 2;
    HWND window = NULL;
    if (!create_main_window(instance, &window))
        return 1;
    ShowWindow(window, show_command);
    run_main_loop(window);
    int finished = window_session_finish();
    window_options_free(&options);
    return finished ? 0 : 1; // COM and Media Foundation are never shut down: the process simply ends
}

// ---- The main loop --------------------------------------------------------------------------

static HWND loop_window;

// The real capture follows mouse_captured: hidden cursor, held on the centre, kept in the window.
static void sync_mouse_capture()
{
    window_session_sync_capture();
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
    window_session_frame_drawn();
    InvalidateRect(loop_window, NULL, FALSE); // WM_PAINT presents the frame
}

static void set_title(const char* title)
{
    SetWindowTextA(loop_window, title);
}

static int pump_messages(const loop_schedule*)
{
    MSG message;
    while (PeekMessageA(&message, NULL, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT)
            return 0;
        DispatchMessageA(&message); // never translated: the game takes no character messages
    }
    if (window_session_closed() && IsWindow(loop_window))
        DestroyWindow(loop_window); // the script closed it: WM_QUIT follows
    return 1;
}

static LARGE_INTEGER counter_frequency;
static LARGE_INTEGER counter_start;

static int start_game()
{
    if (!game_init())
        return 0;
    QueryPerformanceFrequency(&counter_frequency);
    QueryPerformanceCounter(&counter_start);
    return 1;
}

static double seconds_since_start()
{
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart - counter_start.QuadPart) /
           static_cast<double>(counter_frequency.QuadPart);
}

// Sleeps until the schedule has something due or a message arrives.
static void wait_until(double due, double now)
{
    DWORD milliseconds = main_loop_sleep_milliseconds(due, now);
    if (milliseconds > 0)
        MsgWaitForMultipleObjects(0, NULL, FALSE, milliseconds, QS_ALLINPUT);
}

static const main_loop_hooks window_hooks = {
    pump_messages, start_game, seconds_since_start, wait_until,
    {window_session_update, game_render, sync_mouse_capture, invalidate_window, set_title},
    window_session_before_pass};

void run_main_loop(HWND window)
{
    loop_window = window;
    timeBeginPeriod(1); // millisecond sleeps
    main_loop_run(&window_hooks);
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
