// What the windowed games add around the shared loop for their command line and F12: a script's
// events delivered before their updates as the headless host delivers them, the session recorded
// as it is played, the state file written when the game quits, and screenshots. The SDL and Win32
// games call these from their loop hooks; none of it changes what the game does.
#pragma once

#include <stdint.h>
#include <stdio.h>

#include "hosts/input_script.h"
#include "hosts/scripted_input.h"
#include "hosts/window_options.h"

struct window_session {
    input_script script;   // --script's events, empty without one
    int32_t next_event;
    scripted_input input;  // the script's virtual keyboard and cursor
    FILE* state;           // --state's file, open from the start; null without one
    const char* state_path;
    int32_t updates_run;
    int64_t frames_drawn;
    int32_t screenshot_wanted; // F12 went down: the next frame drawn is saved
};

extern window_session session;

// After the settings are read: reads --script, opens --record (and starts recording) and --state.
// 0 after saying on stderr what could not be read or opened (the game then exits with 2).
int window_session_open(const window_options* options);

// The loop's update: the script's events of this update, F12, then game_update.
void window_session_update();

// After every frame drawn (before it is shown): counts it and saves it when F12 asked for it.
void window_session_frame_drawn();

// After every update's capture change: the script's virtual cursor goes to the centre when the
// mouse is captured, as the window's cursor does.
void window_session_sync_capture();

// Before a pass at `now` on the loop's clock (the main loop's before_pass): noted in the recording.
void window_session_before_pass(double now);

// 1 when the script closed the window (Escape with the mouse free, or "quit").
int window_session_closed();

// The game has quit: the recording's last line and the state file. 1 when both were written.
int window_session_finish();
