#include "render/colour_tables.h"

colour_table_set colour_tables;
lit_channel_set lit_channels;

static uint8_t clamp_channel(int32_t value)
{
    return static_cast<uint8_t>(value < 0 ? 0 : value > 31 ? 31 : value);
}

void build_colour_tables()
{
    for (int32_t r = 0; r < COLOUR_TABLE_ROWS; ++r) {
        for (int32_t c = 0; c < COLOUR_TABLE_COLUMNS; ++c) {
            int32_t i = r * COLOUR_TABLE_COLUMNS + c;
            // Integer division truncates toward zero, also for the negative shifts below row 31.
            int32_t shift = c * (r - TEMPERATURE_NEUTRAL_ROW) / TEMPERATURE_NEUTRAL_ROW;
            colour_tables.luminance[i] = static_cast<uint8_t>(c * r / 63);
            colour_tables.dimming[i] = static_cast<uint8_t>(c * (63 - r) / 63);
            colour_tables.red_temperature[i] = clamp_channel(c + shift);
            colour_tables.blue_temperature[i] = clamp_channel(c - shift);
        }
    }
    for (int32_t i = 0; i < COLOUR_TABLE_ENTRIES; ++i) {
        uint32_t dimmed = colour_tables.dimming[i];
        lit_channels.green[i] = static_cast<uint16_t>(dimmed << 5);
        for (int32_t tint = 0; tint < COLOUR_TABLE_ROWS; ++tint) {
            const uint8_t* red_row = colour_table_row(colour_tables.red_temperature, static_cast<uint32_t>(tint));
            const uint8_t* blue_row = colour_table_row(colour_tables.blue_temperature, static_cast<uint32_t>(tint));
            lit_channels.red[tint][i] = static_cast<uint16_t>(0x8000u | static_cast<uint32_t>(red_row[dimmed]) << 10);
            lit_channels.blue[tint][i] = blue_row[dimmed];
        }
    }
}
