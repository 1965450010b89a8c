// The frame buffer that the renderer and the HUD draw into and that the host presents: frame_width
// x frame_height 16-bit pixels, rows from the top, no padding. Blue in bits 0-4, green 5-9, red
// 10-14; bit 15 marks a rendered pixel. The host owns the memory (on Windows the window's DIB section).
#pragma once

#include <stdint.h>

extern uint16_t* color_buffer; // null until the host has made it (or when it could not)
extern int32_t frame_width;
extern int32_t frame_height;

// A pixel as 0x00RRGGBB, each 5-bit channel c widened to (c << 3) | (c >> 2): how the hosts that
// convert the frame themselves show it and how frames are saved, so that they all agree.
uint32_t frame_pixel_rgb888(uint16_t pixel);
