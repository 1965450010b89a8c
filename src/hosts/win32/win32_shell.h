// The Windows game's shell: process entry, the window and its procedure, the main loop and the
// crash-dump handler. Everything here runs on the thread that entered the program.
#pragma once

#include <windows.h>
#include <wincodec.h>

#include "hosts/window_layout.h"
#include "platform/win32/win32_decoders.h" // wic_factory, which start-up creates for the texture decoder

// The frame buffer's bitmap header (16-bit, top-down), its section and a memory DC holding it;
// they live from WM_CREATE to WM_DESTROY.
extern BITMAPINFOHEADER frame_bitmap_info;
extern HBITMAP frame_bitmap;
extern HDC frame_dc;

// The command line (hosts/window_options.h), then the whole start-up, the loop and the end: 0 after
// the loop ends, 1 when a start-up step fails, 2 for a mistake on the command line.
int win_main(HINSTANCE instance, HINSTANCE previous_instance, LPSTR command_line, int show_command);

// Start-up after the crash handler: COM (only S_OK counts), the imaging factory into wic_factory,
// then Media Foundation's lite start; 0 at the first that fails. Nothing is ever shut down.
int start_system_services();

// Registers "MAIN_WINDOW" and creates the game's window, sized from the resolution and SCREEN_SCALE
// and centred on the screen; the window procedure makes the frame buffer meanwhile. 0 when the
// class cannot be registered or the handle is all ones; a null window is deliberately let through.
int create_main_window(HINSTANCE instance, HWND* window);

// The shared main loop on this window: pumps messages, starts the game on its first pass and runs
// the fixed-step schedule on the performance counter; returns when WM_QUIT arrives or the game's
// start-up fails.
void run_main_loop(HWND window);

// The unhandled-exception filter: gives the mouse back, writes "crash.dmp", tells the player.
LONG WINAPI crash_dump_filter(EXCEPTION_POINTERS* exception);

// The class procedure of "MAIN_WINDOW".
LRESULT CALLBACK window_proc(HWND window, UINT message, WPARAM w_param, LPARAM l_param);

// The centre of the window's client rectangle, ((left + right) / 2, (top + bottom) / 2).
client_point client_centre(HWND window);
