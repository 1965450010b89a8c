#include "hosts/headless/headless_host.h"

#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "app/game.h"
#include "core/diagnostics.h"
#include "core/frame.h"
#include "core/settings.h"
#include "hosts/headless/frame_png.h"
#include "hosts/headless/headless_audio.h"
#include "hosts/headless/headless_input.h"
#include "hosts/headless/headless_options.h"
#include "hosts/headless/headless_state.h"
#include "hosts/headless/headless_watch.h"
#include "hosts/headless/input_script.h"
#include "hosts/main_loop.h"
#include "hosts/window_layout.h"

struct headless_run {
    headless_options options;
    input_script script;
    int32_t next_event;
    uint8_t* shot_taken;      // one flag per shot
    int32_t ticks_to_run;
    int32_t updates_run;
    int64_t frames_drawn;
    int32_t frame_after_last_update;
    headless_input input;
    int32_t output_failed;
    int32_t paths_owned;      // the output paths were made absolute, on the heap
    double virtual_time;      // seconds since the start, on the loop's virtual clock
};

static headless_run run;

// The events of the coming update, as the window's messages would arrive before it.
static void deliver_events_of(int32_t tick)
{
    while (run.next_event < run.script.count && run.script.events[run.next_event].tick <= tick &&
           !run.input.window_closed)
        headless_input_deliver(&run.input, run.script.events[run.next_event++]);
}

static void headless_update()
{
    headless_audio_log_sounds(run.updates_run);
    game_update();
    headless_watch_update(run.updates_run);
    run.updates_run += 1;
    run.frame_after_last_update = 0;
}

static void output_failed(const char* option, const char* path, const char* why)
{
    fprintf(stderr, "gloamhold-headless: %s %s: %s\n", option, path, why);
    run.output_failed = 1;
}

static void take_due_shots()
{
    for (int32_t i = 0; i < run.options.shot_count; ++i) {
        const shot_request& shot = run.options.shots[i];
        if (run.shot_taken[i] || shot.tick >= run.updates_run)
            continue;
        run.shot_taken[i] = 1;
        if (!write_frame_png(shot.path, color_buffer, frame_width, frame_height))
            output_failed("--shot", shot.path, "the frame could not be written");
    }
}

static void headless_present()
{
    run.frames_drawn += 1;
    if (run.updates_run > 0) {
        run.frame_after_last_update = 1;
        take_due_shots();
    }
}

static void headless_sync_mouse_capture()
{
    headless_input_sync_capture(&run.input);
}

static void ignore_title(const char*) {}

static int load_script(const char* path)
{
    FILE* file = fopen(path, "rb");
    if (!file) {
        fprintf(stderr, "gloamhold-headless: --script %s: %s\n", path, strerror(errno));
        return 0;
    }
    char* text = nullptr;
    size_t length = 0;
    char chunk[4096];
    size_t got;
    while ((got = fread(chunk, 1, sizeof chunk, file)) > 0) {
        char* grown = static_cast<char*>(realloc(text, length + got));
        if (!grown)
            break;
        text = grown;
        memcpy(text + length, chunk, got);
        length += got;
    }
    int read_whole = !ferror(file) && feof(file);
    fclose(file);
    if (!read_whole) {
        free(text);
        fprintf(stderr, "gloamhold-headless: --script %s: could not be read\n", path);
        return 0;
    }
    char message[200];
    int32_t line = 0;
    int parsed = parse_input_script(text ? text : "", length, &run.script, &line, message, sizeof message);
    free(text);
    if (!parsed)
        fprintf(stderr, "gloamhold-headless: %s:%d: %s\n", path, line, message);
    return parsed;
}

// Output paths keep meaning what they meant where the command was given, whatever -C does.
static char* absolute_path(const char* path)
{
    if (!path)
        return nullptr;
    char here[4096];
    if (path[0] == '/' || !getcwd(here, sizeof here))
        return strdup(path);
    size_t length = strlen(here) + 1 + strlen(path) + 1;
    char* joined = static_cast<char*>(malloc(length));
    if (joined)
        snprintf(joined, length, "%s/%s", here, path);
    return joined;
}

static FILE* open_output(const char* option, const char* path)
{
    FILE* file = fopen(path, "wb");
    if (!file)
        fprintf(stderr, "gloamhold-headless: %s %s: %s\n", option, path, strerror(errno));
    return file;
}

// The window's frame buffer: the resolution's size, zeroed like a fresh DIB section; null when it cannot be made.
static void create_frame_buffer()
{
    frame_width = SCREEN_RESOLUTION.width;
    frame_height = SCREEN_RESOLUTION.height;
    color_buffer = nullptr;
    if (frame_width > 0 && frame_height > 0)
        color_buffer = static_cast<uint16_t*>(calloc(static_cast<size_t>(frame_width) * frame_height, 2));
}

// Before each pass: ends the run once its updates are done, delivers the script's events when an
// update is due, and lets the virtual audio device play up to the pass's time.
static int headless_pump_input(const loop_schedule* schedule)
{
    if (run.updates_run >= run.ticks_to_run && (run.ticks_to_run == 0 || run.frame_after_last_update))
        return 0;
    if (!isfinite(schedule->next_tick_time) && run.frame_after_last_update)
        return 0; // no update will ever come again
    if (run.virtual_time >= schedule->next_tick_time) {
        if (run.updates_run >= run.ticks_to_run)
            return 0; // the rates drew no frame after the last update; never run one more
        deliver_events_of(run.updates_run);
        if (run.input.window_closed)
            return 0;
    }
    headless_audio_advance(run.virtual_time);
    return 1;
}

// The virtual clock stands still while a pass runs and jumps to the next due time between passes.
static double virtual_clock()
{
    return run.virtual_time;
}

static void jump_to(double due, double)
{
    run.virtual_time = due;
}

// Started before the loop, so that a failed start-up has an exit code of its own.
static const main_loop_hooks headless_hooks = {
    headless_pump_input, nullptr, virtual_clock, jump_to,
    {headless_update, game_render, headless_sync_mouse_capture, headless_present, ignore_title}};

static int finish_outputs(FILE* state, FILE* audio)
{
    if (audio) {
        int written = headless_audio_finish_wav();
        if (fclose(audio) != 0 || !written)
            output_failed("--audio", run.options.audio_path, "could not be written");
    }
    if (state) {
        int written = write_headless_state(state, run.updates_run, run.frames_drawn);
        if (fclose(state) != 0 || !written)
            output_failed("--state", run.options.state_path, "could not be written");
    }
    for (int32_t i = 0; i < run.options.shot_count; ++i)
        if (!run.shot_taken[i])
            output_failed("--shot", run.options.shots[i].path, "no frame was drawn after that update");
    return run.output_failed ? HEADLESS_EXIT_OUTPUT_FAILED : HEADLESS_EXIT_RAN;
}

// What the start-up reported last: the step that stops it says why just before it fails.
static char start_up_problem[2 * DIAGNOSTIC_MESSAGE_CAPACITY];

static void keep_start_up_problem(const char* file, int32_t line, const char* message)
{
    if (line > 0)
        snprintf(start_up_problem, sizeof start_up_problem, "%s:%d: %s", file, static_cast<int>(line), message);
    else
        snprintf(start_up_problem, sizeof start_up_problem, "%s: %s", file, message);
}

static int start_and_run(FILE* state, FILE* audio)
{
    if (run.options.directory && chdir(run.options.directory) != 0) {
        fprintf(stderr, "gloamhold-headless: -C %s: %s\n", run.options.directory, strerror(errno));
        return HEADLESS_EXIT_BAD_ARGUMENTS;
    }
    load_settings("settings.ini");
    if (UPS < 0 || FPS < 0) {
        fprintf(stderr, "gloamhold-headless: settings.ini: negative UPS or FPS would never let the loop move on\n");
        return HEADLESS_EXIT_START_FAILED;
    }
    headless_input_start(&run.input,
                         window_client_size(SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height, SCREEN_SCALE));
    create_frame_buffer();
    if (run.options.place_given) {
        requested_start_placement.requested = 1;
        memcpy(requested_start_placement.position, run.options.place, 3 * sizeof(float));
        requested_start_placement.yaw = run.options.place[3];
        requested_start_placement.pitch = run.options.place[4];
    }
    headless_audio_log_sounds(0);
    diagnostics = keep_start_up_problem;
    int started = game_init();
    diagnostics = nullptr; // the running game stays silent
    if (!started) {
        fprintf(stderr, "gloamhold-headless: the game's start-up failed%s%s\n", start_up_problem[0] ? ": " : "",
                start_up_problem);
        return HEADLESS_EXIT_START_FAILED;
    }
    if (audio && !headless_audio_start_wav(audio))
        run.output_failed = 1;
    main_loop_run(&headless_hooks);
    return finish_outputs(state, audio);
}

static int run_with_options()
{
    if (run.options.script_path && !load_script(run.options.script_path))
        return HEADLESS_EXIT_BAD_ARGUMENTS;
    run.ticks_to_run = headless_ticks_to_run(&run.options, input_script_last_tick(&run.script));
    run.shot_taken = static_cast<uint8_t*>(calloc(static_cast<size_t>(run.options.shot_count) + 1, 1));
    if (!run.shot_taken)
        return HEADLESS_EXIT_START_FAILED;
    for (int32_t i = 0; i < run.options.shot_count; ++i)
        run.options.shots[i].path = absolute_path(run.options.shots[i].path);
    run.options.state_path = absolute_path(run.options.state_path);
    run.options.audio_path = absolute_path(run.options.audio_path);
    run.paths_owned = 1;
    FILE* state = run.options.state_path ? open_output("--state", run.options.state_path) : nullptr;
    FILE* audio = run.options.audio_path ? open_output("--audio", run.options.audio_path) : nullptr;
    if ((run.options.state_path && !state) || (run.options.audio_path && !audio)) {
        if (state)
            fclose(state);
        if (audio)
            fclose(audio);
        return HEADLESS_EXIT_BAD_ARGUMENTS;
    }
    return start_and_run(state, audio);
}

// What the host itself allocated (the game's own pools live until the process ends).
static void release_run()
{
    if (run.paths_owned) {
        for (int32_t i = 0; i < run.options.shot_count; ++i)
            free(const_cast<char*>(run.options.shots[i].path));
        free(const_cast<char*>(run.options.state_path));
        free(const_cast<char*>(run.options.audio_path));
    }
    free(run.shot_taken);
    input_script_free(&run.script);
    headless_options_free(&run.options);
    free(color_buffer);
    color_buffer = nullptr;
}

int headless_main(int argc, const char* const* argv)
{
    run = headless_run{};
    headless_audio_reset();
    headless_watch_reset();
    char error[300];
    headless_parse_result parsed = parse_headless_arguments(argc, argv, &run.options, error, sizeof error);
    int code = HEADLESS_EXIT_BAD_ARGUMENTS;
    if (parsed == HEADLESS_ARGUMENTS_HELP) {
        fputs(HEADLESS_USAGE, stdout);
        code = HEADLESS_EXIT_RAN;
    } else if (parsed == HEADLESS_ARGUMENTS_BAD) {
        fprintf(stderr, "gloamhold-headless: %s\n%s", error, HEADLESS_USAGE);
    } else {
        code = run_with_options();
    }
    release_run();
    return code;
}
