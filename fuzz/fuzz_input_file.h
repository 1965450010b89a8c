// Fuzz inputs reach the parsers through a real file, as game data does.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Writes the input to this process's scratch file and returns its path.
const char* fuzz_input_file(const uint8_t* data, size_t size);
