#include "core/frame.h"

uint16_t* color_buffer;
int32_t frame_width;
int32_t frame_height;

static uint32_t widen_channel(uint32_t channel)
{
    return (channel << 3) | (channel >> 2);
}

uint32_t frame_pixel_rgb888(uint16_t pixel)
{
    return widen_channel((pixel >> 10) & 31u) << 16 | widen_channel((pixel >> 5) & 31u) << 8 |
           widen_channel(pixel & 31u);
}
