// The picture the end-to-end drivers draw, pixel by pixel: every neighbour differs, so a shifted,
// mirrored or wrongly scaled presentation shows. tests/e2e/window_e2e.py computes the same.
#pragma once

#include <stdint.h>

inline uint16_t e2e_pattern_pixel(int32_t x, int32_t y)
{
    uint32_t red = static_cast<uint32_t>(x) & 31u;
    uint32_t green = static_cast<uint32_t>(y) & 31u;
    uint32_t blue = static_cast<uint32_t>(x / 32 + 3 * (y / 32)) & 31u;
    return static_cast<uint16_t>(0x8000u | red << 10 | green << 5 | blue);
}
