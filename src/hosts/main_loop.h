// The main loop that every host runs: take the input that has arrived, start the game on the first
// pass, run the fixed-step schedule at the host's clock, then wait until the schedule's next due
// time. A host plugs in its input, its clock and its way of waiting; the schedule's own hooks draw,
// present and title the frames.
#pragma once

#include <stdint.h>

#include "app/schedule.h"

struct main_loop_hooks {
    // Before every pass: takes the input that has arrived (the schedule tells a virtual clock what
    // the pass will run); 0 when the program is to end.
    int (*pump_input)(const loop_schedule* schedule);
    // On the first pass, after its input: starts the game and the clock; 0 ends the loop at once.
    // Null when the host started the game before the loop.
    int (*start)();
    // Seconds since the start.
    double (*clock)();
    // After every pass: waits until `due`, or less when input arrives; `now` is the clock's time.
    void (*wait_until)(double due, double now);
    // What the schedule calls: updates, frames, the mouse capture, presenting and the title.
    loop_hooks pass;
    // Before every pass that has something to do (an update, a frame or the title is due), with the
    // clock's time the pass runs at; null when not wanted. A recording notes the time here.
    void (*before_pass)(double now);
};

// Runs the loop at UPS updates and FPS frames a second until pump_input or start says to end.
void main_loop_run(const main_loop_hooks* hooks);

// How long a host on a real clock sleeps for `due` at `now`: whole milliseconds, the last one left
// to the loop since the system's sleeps are only that precise, at most a second; 0 for no sleep.
uint32_t main_loop_sleep_milliseconds(double due, double now);
