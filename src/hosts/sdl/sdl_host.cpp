#include "hosts/sdl/sdl_host.h"

#include <stdlib.h>

#include "app/game.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "hosts/main_loop.h"
#include "hosts/sdl/sdl_input.h"
#include "hosts/window_layout.h"
#include "hosts/window_options.h"
#include "hosts/window_session.h"

struct sdl_window {
    SDL_Window* window;
    SDL_Renderer* renderer;
    SDL_Texture* texture;
    client_size client;
    sdl_input input;
    int32_t capture_held;
};

static sdl_window shown;

// The frame converted here rather than by SDL, so that it shows exactly as the saved frames do.
static void upload_frame()
{
    void* pixels = nullptr;
    int pitch = 0;
    if (!color_buffer || SDL_LockTexture(shown.texture, nullptr, &pixels, &pitch) != 0)
        return;
    for (int32_t y = 0; y < frame_height; ++y) {
        const uint16_t* source = color_buffer + static_cast<size_t>(y) * frame_width;
        uint32_t* target = reinterpret_cast<uint32_t*>(static_cast<uint8_t*>(pixels) + static_cast<size_t>(y) * pitch);
        for (int32_t x = 0; x < frame_width; ++x)
            target[x] = frame_pixel_rgb888(source[x]);
    }
    SDL_UnlockTexture(shown.texture);
}

static void present()
{
    window_session_frame_drawn();
    upload_frame();
    SDL_Rect target = {0, 0, shown.client.width, shown.client.height};
    SDL_RenderClear(shown.renderer);
    SDL_RenderCopy(shown.renderer, shown.texture, nullptr, &target);
    SDL_RenderPresent(shown.renderer);
}

static void sync_mouse_capture()
{
    window_session_sync_capture();
    int32_t wanted = mouse_captured != 0;
    if (wanted == shown.capture_held)
        return;
    shown.capture_held = wanted;
    SDL_SetRelativeMouseMode(wanted ? SDL_TRUE : SDL_FALSE);
    shown.input.relative = wanted;
}

static void set_title(const char* title)
{
    SDL_SetWindowTitle(shown.window, title);
}

// The window and the frame buffer, sized like the Windows game's: the client area is the
// resolution times SCREEN_SCALE, and the frame buffer is stretched onto it.
static int create_window()
{
    shown.client = window_client_size(SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height, SCREEN_SCALE);
    shown.window = SDL_CreateWindow("Gloamhold", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                    shown.client.width, shown.client.height, 0);
    if (!shown.window)
        return 0;
    SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "nearest");
    shown.renderer = SDL_CreateRenderer(shown.window, -1, 0);
    if (!shown.renderer)
        return 0;
    frame_width = SCREEN_RESOLUTION.width;
    frame_height = SCREEN_RESOLUTION.height;
    shown.texture = SDL_CreateTexture(shown.renderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING,
                                      frame_width, frame_height);
    if (!shown.texture)
        return 0;
    color_buffer = static_cast<uint16_t*>(calloc(static_cast<size_t>(frame_width) * frame_height, 2));
    shown.input.centre = client_centre_of(shown.client);
    return 1;
}

static int pump_events(const loop_schedule*)
{
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
        sdl_input_event(&shown.input, &event);
        if (shown.input.window_closed)
            return 0;
    }
    return !window_session_closed();
}

static Uint64 clock_start;

static int start_game()
{
    if (!game_init())
        return 0; // no message: the game simply quits
    clock_start = SDL_GetPerformanceCounter();
    return 1;
}

static double seconds_since_start()
{
    return static_cast<double>(SDL_GetPerformanceCounter() - clock_start) /
           static_cast<double>(SDL_GetPerformanceFrequency());
}

// Sleeps until the schedule has something due, waking early for input.
static void wait_until(double due, double now)
{
    uint32_t milliseconds = main_loop_sleep_milliseconds(due, now);
    if (milliseconds > 0)
        SDL_WaitEventTimeout(nullptr, static_cast<int>(milliseconds));
}

static const main_loop_hooks sdl_hooks = {
    pump_events, start_game, seconds_since_start, wait_until,
    {window_session_update, game_render, sync_mouse_capture, present, set_title}, window_session_before_pass};

int sdl_host_main(int argc, const char* const* argv)
{
    window_options options;
    int status = window_command_line(argc, argv, &options);
    if (status != WINDOW_GO_ON)
        return status;
    SDL_SetMainReady();
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0)
        return 1;
    load_settings("settings.ini");
    if (!window_session_open(&options))
        return 2;
    if (!create_window())
        return 1;
    main_loop_run(&sdl_hooks);
    int finished = window_session_finish();
    SDL_Quit();
    window_options_free(&options);
    return finished ? 0 : 1;
}
