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
#include "hosts/frame_png.h"
#include "hosts/headless/headless_audio.h"
#include "hosts/headless/headless_options.h"
#include "hosts/input_script.h"
#include "hosts/main_loop.h"
#include "hosts/run_watch.h"
#include "hosts/scripted_input.h"
#include "hosts/start_up_report.h"
#include "hosts/state_file.h"
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
    scripted_input input;
    int32_t output_failed;
    int32_t paths_owned;      // the output paths were made absolute, on the heap
    double virtual_time;      // seconds since the start, on the loop's virtual clock
    int32_t replaying;        // the script holds the loop's clock: a recorded session
    int32_t replay_astray;    // the recording does not fit this run (other settings): stopped
};

static headless_run run;

// The events of the coming update, as the window's messages would arrive before it.
static void deliver_events_of(int32_t tick)
{
    while (run.next_event < run.script.count && run.script.events[run.next_event].tick <= tick &&
           !run.input.window_closed)
        scripted_input_deliver(&run.input, run.script.events[run.next_event++]);
}

// In a replay, the lines written during a pass, just before one of its updates: a windowed game
// delivers a script's events inside the update, so that they come just before it however many
// updates the pass runs.
static void deliver_replayed_events_of_this_update()
{
    while (run.next_event < run.script.count && run.script.events[run.next_event].tick == run.updates_run &&
           run.script.events[run.next_event].kind != SCRIPT_TIME && !run.input.window_closed)
        scripted_input_deliver(&run.input, run.script.events[run.next_event++]);
}

static void headless_update()
{
    if (run.replaying)
        deliver_replayed_events_of_this_update();
    headless_audio_log_sounds(run.updates_run);
    game_update();
    run_watch_update(run.updates_run);
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
    scripted_input_sync_capture(&run.input);
}

static void ignore_title(const char*) {}

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

// A recorded session: the events written before each pass, then the pass at the time it ran live.
// Every line must belong to the update it is keyed by; a recording made with other rates would
// run other updates at those times, and is stopped rather than replayed wrongly.
static int replay_pump_input(const loop_schedule*)
{
    if (run.updates_run >= run.ticks_to_run && (run.ticks_to_run == 0 || run.frame_after_last_update))
        return 0;
    while (run.next_event < run.script.count) {
        const script_event& event = run.script.events[run.next_event++];
        if (event.tick != run.updates_run || (event.kind == SCRIPT_TIME && event.seconds < run.virtual_time)) {
            fprintf(stderr,
                    "gloamhold-headless: --script %s: a line of tick %d came after update %d: the recording was "
                    "made with other settings\n",
                    run.options.script_path, event.tick, run.updates_run);
            run.replay_astray = 1;
            return 0;
        }
        if (event.kind == SCRIPT_TIME) {
            run.virtual_time = event.seconds;
            headless_audio_advance(run.virtual_time);
            return 1;
        }
        scripted_input_deliver(&run.input, event);
        if (run.input.window_closed)
            return 0;
    }
    return 0; // the recording ends without a quit (the game crashed): so does the replay
}

// The virtual clock stands still while a pass runs and jumps to the next due time between passes;
// in a replay it is the recorded clock.
static double virtual_clock()
{
    return run.virtual_time;
}

static void jump_to(double due, double)
{
    if (!run.replaying)
        run.virtual_time = due;
}

// Started before the loop, so that a failed start-up has an exit code of its own.
static const main_loop_hooks headless_hooks = {
    headless_pump_input, nullptr, virtual_clock, jump_to,
    {headless_update, game_render, headless_sync_mouse_capture, headless_present, ignore_title}, nullptr};
static const main_loop_hooks replay_hooks = {
    replay_pump_input, nullptr, virtual_clock, jump_to,
    {headless_update, game_render, headless_sync_mouse_capture, headless_present, ignore_title}, nullptr};

static int finish_outputs(FILE* state, FILE* audio)
{
    if (audio) {
        int written = headless_audio_finish_wav();
        if (fclose(audio) != 0 || !written)
            output_failed("--audio", run.options.audio_path, "could not be written");
    }
    if (state) {
        int written = write_state_file(state, run.updates_run, run.frames_drawn, &headless_sound_starts, &watch);
        if (fclose(state) != 0 || !written)
            output_failed("--state", run.options.state_path, "could not be written");
    }
    for (int32_t i = 0; i < run.options.shot_count; ++i)
        if (!run.shot_taken[i])
            output_failed("--shot", run.options.shots[i].path, "no frame was drawn after that update");
    return run.output_failed ? HEADLESS_EXIT_OUTPUT_FAILED : HEADLESS_EXIT_RAN;
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
    scripted_input_start(&run.input,
                         window_client_size(SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height, SCREEN_SCALE));
    create_frame_buffer();
    if (run.options.place_given) {
        requested_start_placement.requested = 1;
        memcpy(requested_start_placement.position, run.options.place, 3 * sizeof(float));
        requested_start_placement.yaw = run.options.place[3];
        requested_start_placement.pitch = run.options.place[4];
    }
    headless_audio_log_sounds(0);
    char start_up_problem[2 * DIAGNOSTIC_MESSAGE_CAPACITY];
    if (!game_init_keeping_reason(start_up_problem, sizeof start_up_problem)) {
        fprintf(stderr, "gloamhold-headless: the game's start-up failed%s%s\n", start_up_problem[0] ? ": " : "",
                start_up_problem);
        return HEADLESS_EXIT_START_FAILED;
    }
    if (audio && !headless_audio_start_wav(audio))
        run.output_failed = 1;
    run.replaying = input_script_has_times(&run.script);
    main_loop_run(run.replaying ? &replay_hooks : &headless_hooks);
    if (run.replay_astray) { // nothing of a run gone astray is worth keeping
        if (state)
            fclose(state);
        if (audio)
            fclose(audio);
        return HEADLESS_EXIT_BAD_ARGUMENTS;
    }
    return finish_outputs(state, audio);
}

static int run_with_options()
{
    if (run.options.script_path && !load_input_script(run.options.script_path, "gloamhold-headless", &run.script))
        return HEADLESS_EXIT_BAD_ARGUMENTS;
    run.ticks_to_run = headless_ticks_to_run(&run.options, input_script_last_tick(&run.script));
    run.shot_taken = static_cast<uint8_t*>(calloc(static_cast<size_t>(run.options.shot_count) + 1, 1));
    if (!run.shot_taken)
        return HEADLESS_EXIT_START_FAILED;
    for (int32_t i = 0; i < run.options.shot_count; ++i)
        run.options.shots[i].path = command_line_absolute_path(run.options.shots[i].path);
    run.options.state_path = command_line_absolute_path(run.options.state_path);
    run.options.audio_path = command_line_absolute_path(run.options.audio_path);
    run.paths_owned = 1;
    const char* program = "gloamhold-headless";
    FILE* state = run.options.state_path ? command_line_open_output(program, "--state", run.options.state_path) : nullptr;
    FILE* audio = run.options.audio_path ? command_line_open_output(program, "--audio", run.options.audio_path) : nullptr;
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
    run_watch_reset();
    char error[300];
    command_line_result parsed = parse_headless_arguments(argc, argv, &run.options, error, sizeof error);
    int code = HEADLESS_EXIT_BAD_ARGUMENTS;
    if (parsed == COMMAND_LINE_HELP) {
        fputs(HEADLESS_USAGE, stdout);
        code = HEADLESS_EXIT_RAN;
    } else if (parsed == COMMAND_LINE_VERSION) {
        command_line_print_version("gloamhold-headless");
        code = HEADLESS_EXIT_RAN;
    } else if (parsed == COMMAND_LINE_BAD) {
        fprintf(stderr, "gloamhold-headless: %s\n%s", error, HEADLESS_USAGE);
    } else {
        code = run_with_options();
    }
    release_run();
    return code;
}
