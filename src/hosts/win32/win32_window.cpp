// The game window's procedure: it owns the frame buffer (a top-down 16-bit DIB section), presents
// it on WM_PAINT and turns input messages into the shared input rules. It draws nothing itself.
#include "hosts/win32/win32_shell.h"

#include "core/frame.h"
#include "core/key_codes.h"
#include "core/settings.h"
#include "hosts/input.h"

BITMAPINFOHEADER frame_bitmap_info;
HBITMAP frame_bitmap;
HDC frame_dc;

client_point client_centre(HWND window)
{
    RECT client;
    GetClientRect(window, &client);
    return client_point{(client.left + client.right) / 2, (client.top + client.bottom) / 2};
}

// The window being handled, for the Escape rule's way of closing it.
static HWND handled_window;

static void destroy_handled_window()
{
    DestroyWindow(handled_window);
}

// Codes that do not fit a byte are passed on as 256, which every rule ignores.
static uint32_t key_code(WPARAM w_param)
{
    return w_param > 0xFF ? 0x100u : static_cast<uint32_t>(w_param);
}

static LRESULT create_frame_buffer(HWND window)
{
    frame_width = SCREEN_RESOLUTION.width;
    frame_height = SCREEN_RESOLUTION.height;
    ZeroMemory(&frame_bitmap_info, sizeof frame_bitmap_info);
    frame_bitmap_info.biSize = sizeof(BITMAPINFOHEADER);
    frame_bitmap_info.biWidth = frame_width;
    frame_bitmap_info.biHeight = -frame_height; // negative: rows run from the top
    frame_bitmap_info.biPlanes = 1;
    frame_bitmap_info.biBitCount = 16;
    frame_bitmap_info.biCompression = BI_RGB;
    HDC dc = GetDC(window);
    void* pixels = nullptr;
    frame_bitmap = CreateDIBSection(dc, reinterpret_cast<BITMAPINFO*>(&frame_bitmap_info), DIB_RGB_COLORS,
                                    &pixels, NULL, 0);
    color_buffer = static_cast<uint16_t*>(pixels);
    if (!frame_bitmap) {
        color_buffer = nullptr;
        return 1; // the DC stays taken and creation goes on: nothing reports this
    }
    ReleaseDC(window, dc);
    frame_dc = CreateCompatibleDC(NULL);
    SelectObject(frame_dc, frame_bitmap);
    return 0;
}

// The whole buffer every time, whatever the update region: pixel for pixel at scale 1.0,
// stretched with the DC's default mode otherwise.
static void paint(HWND window)
{
    PAINTSTRUCT paint_info;
    HDC dc = BeginPaint(window, &paint_info);
    if (SCREEN_SCALE == 1.0f) {
        BitBlt(dc, 0, 0, frame_width, frame_height, frame_dc, 0, 0, SRCCOPY);
    } else {
        client_size shown = window_client_size(frame_width, frame_height, SCREEN_SCALE);
        StretchDIBits(dc, 0, 0, shown.width, shown.height, 0, 0, frame_width, frame_height, color_buffer,
                      reinterpret_cast<BITMAPINFO*>(&frame_bitmap_info), DIB_RGB_COLORS, SRCCOPY);
    }
    EndPaint(window, &paint_info);
}

static void mouse_moved(HWND window, LPARAM l_param)
{
    int32_t x = static_cast<int16_t>(LOWORD(l_param));
    int32_t y = static_cast<int16_t>(HIWORD(l_param));
    client_point centre = client_centre(window);
    if (!input_mouse_move(x, y, centre))
        return;
    POINT screen = {centre.x, centre.y};
    ClientToScreen(window, &screen);
    SetCursorPos(screen.x, screen.y);
}

LRESULT CALLBACK window_proc(HWND window, UINT message, WPARAM w_param, LPARAM l_param)
{
    switch (message) {
    case WM_CREATE:
        return create_frame_buffer(window);
    case WM_DESTROY:
        DeleteObject(frame_bitmap);
        DeleteDC(frame_dc);
        PostQuitMessage(0);
        return 0;
    case WM_PAINT:
        paint(window);
        return 0;
    case WM_KEYDOWN:
        handled_window = window;
        input_key_down(key_code(w_param), (l_param >> 30) & 1, destroy_handled_window);
        return 0;
    case WM_SYSKEYDOWN:
        input_system_key_down(key_code(w_param));
        return 0;
    case WM_KEYUP:
    case WM_SYSKEYUP:
        input_key_up(key_code(w_param));
        return 0;
    case WM_SYSCOMMAND:
        // Alt and F10 must not open the window menu: F10 is a game key.
        if (w_param == SC_KEYMENU)
            return 0;
        return DefWindowProcA(window, message, w_param, l_param);
    case WM_MOUSEMOVE:
        mouse_moved(window, l_param);
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
        input_button(KEYCODE_LBUTTON, message == WM_LBUTTONDOWN);
        return 0;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        input_button(KEYCODE_RBUTTON, message == WM_RBUTTONDOWN);
        return 0;
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
        input_button(KEYCODE_MBUTTON, message == WM_MBUTTONDOWN);
        return 0;
    case WM_MOUSEWHEEL:
        input_wheel(static_cast<int16_t>(HIWORD(w_param)));
        return 0;
    default:
        return DefWindowProcA(window, message, w_param, l_param);
    }
}
