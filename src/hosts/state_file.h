// The state file: a JSON object of what the game holds at the end of a run, written by the headless
// host and by the windowed games when they quit. Only parts of the game that exist are written;
// nothing is made up.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

struct sound_start {
    int32_t tick;  // the update during which the sound started (0 before the first)
    int32_t sound; // index into the sound registry
};

struct sound_start_log {
    sound_start* entries;
    int32_t count;
    int32_t capacity;
};

struct run_watch;

// `tick`: updates run; `frames`: frames drawn; `sounds`: every sound started, or null for a host
// whose audio device keeps no such log (the "sounds" key is then left out); `watched`: what a
// long run watched after every update, or null for a host that watches nothing (the "watch" key
// is then left out). 1 when everything was written.
int write_state_file(FILE* file, int32_t tick, int64_t frames, const sound_start_log* sounds,
                     const run_watch* watched);

// A float as the shortest JSON number that reads back as the same float ("3.0", "0.1", "1e+20");
// null for infinities and NaN. `buffer` holds at least 48 characters.
void json_float(char* buffer, size_t capacity, float value);
