// The four 64 x 32 look-up tables through which every 5-bit colour channel is darkened by a light
// level, mixed by a translucency level or tinted warmer or colder: one byte lookup instead of a
// multiplication per channel and pixel. Row r starts at entry 32 * r; the column is the channel.
#pragma once

#include <stdint.h>

enum {
    COLOUR_TABLE_ROWS = 64,
    COLOUR_TABLE_COLUMNS = 32,
    COLOUR_TABLE_ENTRIES = COLOUR_TABLE_ROWS * COLOUR_TABLE_COLUMNS,
    TEMPERATURE_NEUTRAL_ROW = 31,
};

// Dimming comes first: a light level past 63 (shade above 1, which the callers never pass and
// nothing guards) then reads the tables after it, still inside this block and still 5-bit values.
struct colour_table_set {
    uint8_t dimming[COLOUR_TABLE_ENTRIES];          // "Dim.":   c * (63 - r) / 63
    uint8_t luminance[COLOUR_TABLE_ENTRIES];        // "Lum.":   c * r / 63
    uint8_t red_temperature[COLOUR_TABLE_ENTRIES];  // "Tmp. R": clamp(c + c * (r - 31) / 31)
    uint8_t blue_temperature[COLOUR_TABLE_ENTRIES]; // "Tmp. B": clamp(c - c * (r - 31) / 31)
};

extern colour_table_set colour_tables;

// The tables an opaque pixel goes through, folded into one look-up per channel for the vector span
// loops: for a tint row and a light level of 0 ... 63, each 5-bit channel value dimmed, tinted and
// already moved to its place in the pixel, red carrying the opaque bit. A lit texel is then
// red[tint][32 * level + r] | green[32 * level + g] | blue[tint][32 * level + b], the same pixel the
// three tables give one after another.
struct lit_channel_set {
    uint16_t red[COLOUR_TABLE_ROWS][COLOUR_TABLE_ENTRIES];
    uint16_t green[COLOUR_TABLE_ENTRIES];
    uint16_t blue[COLOUR_TABLE_ROWS][COLOUR_TABLE_ENTRIES];
    uint16_t spare; // the vector loops read every entry as four bytes, the last one too
};

extern lit_channel_set lit_channels;

// Start-up, before anything is drawn; cannot fail. Builds both sets.
void build_colour_tables();

// The row of a table for a level (light, blend or tint) of 0 ... 63.
inline const uint8_t* colour_table_row(const uint8_t* table, uint32_t row)
{
    return table + row * COLOUR_TABLE_COLUMNS;
}
