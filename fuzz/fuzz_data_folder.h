// The data folder of the fuzz targets that load through the game's "gloamhold_data/..." paths: a
// scratch folder of the process's own, entered on first use and removed at exit. It holds the
// shipped collision tree, animations and dialogues, and a small stand-in for every shipped model
// and sound, so that fuzzed item and scene files naming them get past their loads quickly.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Makes the folder (once) and moves into it.
void fuzz_enter_data_folder();

// Writes gloamhold_data/<relative> and returns its path as the game names it.
const char* fuzz_write_data(const char* relative, const uint8_t* data, size_t size);

// Back to an empty world: every registry released, then the slots that the game's start-up
// reserves (the empty model and animation, the placeholder item, the fallback texture) taken again.
void fuzz_fresh_world();
