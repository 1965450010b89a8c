#include "hosts/sdl/sdl_host.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/game.h"
#include "assets/registry.h"
#include "core/diagnostics.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "hosts/main_loop.h"
#include "hosts/sdl/sdl_input.h"
#include "hosts/start_up_report.h"
#include "hosts/window_layout.h"
#include "hosts/window_options.h"
#include "hosts/window_session.h"

struct sdl_window {
    SDL_Window* window;
    SDL_Renderer* renderer;
    SDL_Texture* texture;  // the frame buffer as it is: RGB555, bit 15 ignored
    SDL_Texture* widened;  // the frame in the window's own format, made only when it is scaled
    client_size client;
    sdl_input input;
    int32_t capture_held;
};

static sdl_window shown;

// SDL's software renderer draws straight into the window's shared image. It widens the pixels
// with a table in an unscaled copy but falls back to its per-pixel general path for a copy that
// both converts and scales; so a scaled frame is widened at its own size first and then stretched
// in the window's format.
static void present()
{
    window_session_frame_drawn();
    if (!color_buffer)
        return;
    SDL_UpdateTexture(shown.texture, nullptr, color_buffer, frame_width * 2);
    SDL_Rect target = {0, 0, shown.client.width, shown.client.height};
    if (shown.widened) {
        SDL_SetRenderTarget(shown.renderer, shown.widened);
        SDL_RenderCopy(shown.renderer, shown.texture, nullptr, nullptr);
        SDL_SetRenderTarget(shown.renderer, nullptr);
        SDL_RenderCopy(shown.renderer, shown.widened, nullptr, &target);
    } else {
        SDL_RenderCopy(shown.renderer, shown.texture, nullptr, &target);
    }
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
    // The window's image in the X server's shared memory, not a texture of a GL context: with no
    // graphics card GL is drawn on the CPU, at several times the cost of these copies.
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    shown.renderer = SDL_CreateRenderer(shown.window, -1, SDL_RENDERER_SOFTWARE | SDL_RENDERER_TARGETTEXTURE);
    if (!shown.renderer)
        return 0;
    frame_width = SCREEN_RESOLUTION.width;
    frame_height = SCREEN_RESOLUTION.height;
    shown.texture = SDL_CreateTexture(shown.renderer, SDL_PIXELFORMAT_RGB555, SDL_TEXTUREACCESS_STREAMING,
                                      frame_width, frame_height);
    if (!shown.texture)
        return 0;
    if (shown.client.width != frame_width || shown.client.height != frame_height) {
        shown.widened = SDL_CreateTexture(shown.renderer, SDL_GetWindowPixelFormat(shown.window),
                                          SDL_TEXTUREACCESS_TARGET, frame_width, frame_height);
        if (!shown.widened)
            return 0;
    }
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
static int start_up_failed;

// A failed start-up names what stopped it and where to look for more.
static int start_game()
{
    char reason[2 * DIAGNOSTIC_MESSAGE_CAPACITY];
    if (!game_init_keeping_reason(reason, sizeof reason)) {
        fprintf(stderr, "gloamhold: the game's start-up failed%s%s\n"
                        "gloamhold: run gloamhold-check gloamhold_data to list every problem in the data "
                        "(the checker ships beside the game)\n",
                reason[0] ? ": " : "", reason);
        start_up_failed = 1;
        return 0;
    }
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

static int is_folder(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// The game reads gloamhold_data/ and settings.ini from where it works: the folder it was started
// in or given with -C, else the folder it lies in (a player who starts it from a menu or another
// folder). 0 with the places it looked on stderr when neither holds the data.
static int find_data(const window_options* options)
{
    if (is_folder(DATA_ROOT))
        return 1;
    char here[4096];
    if (!getcwd(here, sizeof here))
        snprintf(here, sizeof here, ".");
    if (options->directory) {
        fprintf(stderr, "gloamhold: no %s/ in %s (given with -C)\n", DATA_ROOT, here);
    } else {
        char* beside = SDL_GetBasePath(); // ends with a slash
        char data_beside[4096 + 32];
        snprintf(data_beside, sizeof data_beside, "%s%s", beside ? beside : "", DATA_ROOT);
        if (beside && is_folder(data_beside) && chdir(beside) == 0) {
            SDL_free(beside);
            return 1;
        }
        fprintf(stderr, "gloamhold: no %s/ in %s (where the game was started)%s%s%s\n", DATA_ROOT, here,
                beside ? " or in " : "", beside ? beside : "", beside ? " (beside the game)" : "");
        SDL_free(beside);
    }
    fprintf(stderr, "gloamhold: start the game in the folder that holds %s/, or name that folder: "
                    "gloamhold -C DIR\n", DATA_ROOT);
    return 0;
}

// Everything after the command line: the data, SDL, the session, the window and the loop.
static int play(const window_options* options)
{
    if (!find_data(options))
        return SDL_EXIT_START_FAILED;
    SDL_SetMainReady();
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0)
        return 1;
    load_settings("settings.ini");
    if (!window_session_open(options))
        return 2;
    if (!create_window())
        return 1;
    main_loop_run(&sdl_hooks);
    int finished = window_session_finish();
    SDL_Quit();
    if (start_up_failed)
        return SDL_EXIT_START_FAILED;
    return finished ? 0 : 1;
}

int sdl_host_main(int argc, const char* const* argv)
{
    window_options options;
    int status = window_command_line(argc, argv, &options);
    if (status != WINDOW_GO_ON)
        return status;
    status = play(&options);
    window_options_free(&options);
    return status;
}
