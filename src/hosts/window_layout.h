// The window's size and place, from the resolution and SCREEN_SCALE: the client area is the frame
// buffer scaled, each side cut toward zero (640x480 at 1.5 gives 960x720).
#pragma once

#include <stdint.h>

struct client_point {
    int32_t x;
    int32_t y;
};

struct client_size {
    int32_t width;
    int32_t height;
};

struct window_rectangle {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
};

// The client area for a frame buffer of width x height shown at `scale`.
client_size window_client_size(int32_t width, int32_t height, float scale);

// The centre of a client area, as the window computes it: ((left + right) / 2, (top + bottom) / 2)
// with integer division, the area starting at 0, 0.
client_point client_centre_of(client_size client);

// A window of the given outer size centred on a screen (integer division; a window larger than
// the screen starts at a negative position).
window_rectangle centred_window(int32_t outer_width, int32_t outer_height, int32_t screen_width,
                                int32_t screen_height);
