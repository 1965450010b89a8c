// The sky: a cube of six textures around the eye, drawn straight into the 8x8-pixel blocks that
// the occluders leave open, before any scene object. The colour buffer is never cleared, so the
// level's occluders must cover every pixel the world draws over.
#pragma once

#include <stdint.h>

enum { SKY_FACES = 6 };

// The textures of faces 0 ... 5 (+x, -x, +y, -y, +z, -z of the view ray), loaded by the start-up
// driver from "sky_night01.png" ... "sky_night06.png" in that order.
extern int32_t sky_textures[SKY_FACES];
// Their file names, "sky_night01.png" ... "sky_night06.png".
extern const char* const sky_texture_names[SKY_FACES];
// Loads them in that order (a start-up step); 0 at the first that cannot be loaded.
int load_sky_textures();

// Every pixel of every coarse occlusion cell that is exactly 0: the nearest texel of the face the
// pixel's view ray meets, written unchanged (no light, tint, depth or transparency).
// While the frame is recorded for its bands (render/bands.h), the sky is recorded instead.
void draw_sky();
// The pixels of draw_sky in rows first_row ... end_row - 1.
void draw_sky_rows(int32_t first_row, int32_t end_row);
