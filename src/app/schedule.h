// The fixed-step schedule of the main loop: updates at UPS a second, frames at FPS a second
// placed between updates by render_alpha, and the counts shown once a second. Every host calls
// schedule_run with its own clock (the real one, or the headless host's virtual one).
#pragma once

#include <stdint.h>

struct loop_schedule {
    double tick_length;  // seconds per update
    double frame_length; // seconds per frame
    double next_tick_time;
    double next_frame_time;
    double next_title_time;
    int32_t tick_count;  // updates since the title was last written
    int32_t frame_count;
};

// What a host plugs into the schedule.
struct loop_hooks {
    void (*update)();                 // one fixed update (game_update)
    void (*render)();                 // one frame (game_render)
    void (*sync_mouse_capture)();     // after every update: make the real capture follow mouse_captured
    void (*present)();                // after every frame: show the frame buffer
    void (*set_title)(const char* title);
};

enum { TITLE_CAPACITY = 100 };

// Starts the clocks from the rates read once from the settings; everything is due at time 0.
void schedule_start(loop_schedule* schedule, int32_t updates_per_second, int32_t frames_per_second);

// One pass of the loop at time `now` (seconds since the game started): stores real_time, runs every
// update that is due (all of them, back to back, after a stall), draws at most one frame when the
// frame clock has come due (missed frames are dropped), and writes the title when a second is up.
void schedule_run(loop_schedule* schedule, double now, const loop_hooks* hooks);

// The earliest time at which schedule_run has something to do; hosts sleep until then.
double schedule_next_due(const loop_schedule* schedule);
