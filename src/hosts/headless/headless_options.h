// The headless host's command line:
//   gloamhold-headless [-C DIR] [--ticks N] [--script FILE] [--place X,Y,Z,YAW,PITCH]
//                      [--shot TICK:FILE.png]... [--state FILE.json] [--audio FILE.wav] [--version]
// Parsed without touching any file, so that every mistake is reported before the game starts.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "hosts/command_line.h"

struct shot_request {
    int32_t tick;     // the frame drawn right after this update
    const char* path; // points into the arguments
};

struct headless_options {
    const char* directory;   // -C: null to stay where we are
    int32_t ticks;           // updates to run
    int32_t ticks_given;     // 0: the run lasts until the last shot and the last scripted tick
    const char* script_path; // null: no scripted input
    int32_t place_given;
    float place[5];          // x, y, z, then yaw and pitch in radians (given in degrees)
    shot_request* shots;     // heap array, shot_count entries
    int32_t shot_count;
    const char* state_path;
    const char* audio_path;
};

extern const char* const HEADLESS_USAGE;

// Parses argv[1..argc-1] into `options` (which the caller releases with headless_options_free).
command_line_result parse_headless_arguments(int argc, const char* const* argv, headless_options* options,
                                               char* error, size_t error_capacity);
void headless_options_free(headless_options* options);

// Updates to run: --ticks, or else enough for every shot and every scripted tick (`last_script_tick`
// is -1 without a script).
int32_t headless_ticks_to_run(const headless_options* options, int32_t last_script_tick);
