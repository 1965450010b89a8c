// Recorded play: every input event a windowed game takes in, written as it happens in the script
// format (hosts/input_script.h) keyed by the update it came before, with the loop's clock at every
// pass that did something and, at the end, the tick at which the game quit. Replayed by
// gloamhold-headless --script, the same updates and frames run at the same times after the same
// events, so the replay turns with the mouse and reaches the state exactly as the live game did.
#pragma once

#include <stdint.h>
#include <stdio.h>

#include "hosts/input_script.h"

struct input_recording {
    FILE* file;       // null when not recording
    int32_t tick;     // updates run so far: the key of the next line
    int32_t failed;   // a line could not be written
    uint8_t held[256]; // the keys a replay's virtual keyboard holds down after the lines so far
};

extern input_recording recording;

// Starts recording into `file` (open for writing; the recording closes it) and listens to the
// input rules. The first lines, comments, name the program's version and the settings the replay
// must run with.
void input_record_start(FILE* file);

// One line for `event` at the current tick (the input rules call this through input_listener).
void input_record_event(const script_event& event);

// After every update: the following lines belong to the next tick.
void input_record_update_ran();

// Before a pass that runs at `now` on the loop's clock.
void input_record_pass(double now);

// The game quit before update `recording.tick`: the last line; the file is closed. 1 when every
// line reached the file.
int input_record_finish();

// The text of one line for `event` at `tick`, with its line feed; `line` holds at least 64 characters.
void input_record_line(char* line, size_t capacity, int32_t tick, const script_event& event);
