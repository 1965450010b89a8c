// Frames as PNG files: 8-bit RGB, each 5-bit channel c widened to (c << 3) | (c >> 2) by the one
// conversion every host shows and saves frames with (frame_pixel_rgb888). Written with libpng on
// POSIX systems and through WIC on Windows, each in a file of its own.
#pragma once

#include <stdint.h>

// 1 when the whole image was written to `path`.
int write_frame_png(const char* path, const uint16_t* pixels, int32_t width, int32_t height);

// Makes the folder `path` (one level) unless it is there already; 1 when it is there afterwards.
int make_frame_folder(const char* path);
