// Number parsing shared by every data format and the settings file, degrees to radians and the
// triangle wave.
#pragma once

#include <stdint.h>

// A number is an optional "-" as the very first character, then digits; it ends at NUL, a blank,
// a tab, a line feed, a carriage return, or after `limit` characters (-1: no limit). Any other
// character fails the parse and leaves *out unwritten. An empty number is 0.
// Integers accumulate in 32 bits and wrap on overflow.
int parse_int(const char* text, int32_t limit, int32_t* out);

// As parse_int, with digits after a "." as the fraction; a further "." is ignored ("1.5.5" is 1.55).
// There is no exponent: "e" and "+" fail. The arithmetic is 32-bit floating point.
int parse_float(const char* text, int32_t limit, float* out);

// Degrees to radians, with the game's constant.
constexpr float DEGREES_TO_RADIANS = 0.017453292f;

// Triangle wave between a and b: rises from a to b as x goes from 0 to b - a, then falls back.
float ping_pong(float a, float b, float x);

// A float cut toward zero to a 32-bit integer, as the processor does it: values that do not fit
// (and NaN) give INT32_MIN instead of being undefined.
int32_t truncate_to_int32(float value);
