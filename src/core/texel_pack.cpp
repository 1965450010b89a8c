#include "core/texel_pack.h"

#include <stddef.h>

// The classic recursive 4x4 Bayer matrix, indexed [y & 3][x & 3].
static const uint8_t bayer_4x4[4][4] = {
    {0, 8, 2, 10},
    {12, 4, 14, 6},
    {3, 11, 1, 9},
    {15, 7, 13, 5},
};

static uint32_t channel_5(uint32_t c, uint32_t threshold)
{
    uint32_t level = (2 * c + threshold) >> 4;
    return level > 31 ? 31 : level;
}

uint16_t pack_texel(uint8_t blue, uint8_t green, uint8_t red, uint8_t alpha, uint32_t x, uint32_t y, int dither)
{
    // Without dithering the threshold is 0 and (2c) >> 4 is c >> 3: plain truncation.
    uint32_t threshold = dither ? bayer_4x4[y & 3][x & 3] : 0;
    uint32_t texel = channel_5(blue, threshold) | channel_5(green, threshold) << 5 | channel_5(red, threshold) << 10;
    if (alpha != 0)
        texel |= 0x8000;
    return static_cast<uint16_t>(texel);
}

void pack_bgra_to_5551(const uint8_t* pixels, uint32_t pixel_stride, uint16_t* texels, uint32_t texel_stride,
                       uint32_t width, uint32_t height, int dither)
{
    for (uint32_t y = 0; y < height; ++y) {
        const uint8_t* in = pixels + static_cast<size_t>(y) * pixel_stride;
        uint16_t* out = texels + static_cast<size_t>(y) * (texel_stride / 2);
        for (uint32_t x = 0; x < width; ++x, in += 4)
            out[x] = pack_texel(in[0], in[1], in[2], in[3], x, y, dither);
    }
}
