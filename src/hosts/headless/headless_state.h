// The headless host's state file: a JSON object of what the game holds at the end of the run.
// Only parts of the game that exist are written; nothing is made up.
#pragma once

#include <stdint.h>
#include <stdio.h>

// `tick`: updates run; `frames`: frames drawn. 1 when everything was written.
int write_headless_state(FILE* file, int32_t tick, int64_t frames);

// A float as the shortest JSON number that reads back as the same float ("3.0", "0.1", "1e+20");
// null for infinities and NaN. `buffer` holds at least 48 characters.
void json_float(char* buffer, size_t capacity, float value);
