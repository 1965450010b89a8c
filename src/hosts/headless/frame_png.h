// Frames as PNG files: 8-bit RGB, each 5-bit channel c widened to (c << 3) | (c >> 2).
#pragma once

#include <stdint.h>

// 1 when the whole image was written to `path`.
int write_frame_png(const char* path, const uint16_t* pixels, int32_t width, int32_t height);
