// Textures: 16-bit texels in the frame buffer's layout (bit 15 = opaque), power-of-two sides so
// that wrapping is a mask and row addressing a shift. The loader's functions live with this record.
#pragma once

#include <stdint.h>

struct texture {
    int32_t width;       // texels per row; a power of two
    int32_t height;      // rows; a power of two
    uint16_t* texels;    // width x height, top row first, no padding; heap block owned by the record
    float width_f;       // width as a float, to scale texture coordinates
    float height_f;
    int32_t width_mask;  // width - 1
    int32_t height_mask; // height - 1
    int32_t row_shift;   // log2(width): row v starts at texel v << row_shift
    uint8_t flags;       // render flags from the file name
    uint8_t t_level;     // translucency level from the "t" suffix
    float e_level;       // fixed shade from the "e" suffix
};
