// The frame drawn by several threads at once. While a frame is recorded, the sky, the triangles,
// the lines and the circle outlines that would be drawn are kept in a list in their order instead;
// the frame is cut into horizontal bands and each band is drawn by one thread at a time from the
// whole list, every command clipped to the band's rows. The other threads draw the list as it
// grows, while the recording thread goes on; it joins them when the frame is recorded. A pixel
// belongs to exactly one band and sees the commands in their order, each computed from the command
// alone and the pixel's own position, so the frame comes out bit for bit as one thread draws it,
// whatever the number of threads.
#pragma once

#include <stdint.h>

#include "assets/texture.h"
#include "render/raster.h"

// The threads that draw each frame (1 until the start-up driver sets it from RENDER_THREADS).
extern int32_t render_threads;

// The threads that draw a frame: `setting` (RENDER_THREADS) when above 0, else one per processor.
int32_t render_thread_count(int32_t setting);

// Whole units (rows, or blocks of rows) cut into at most `wanted` bands, all of one size but the
// last, which takes what is left; always at least one band.
struct band_cut {
    int32_t count;
    int32_t units; // units per band but the last
    int32_t total; // units in all
};
band_cut cut_into_bands(int32_t units, int32_t wanted);
// The first unit of `band`; that of band `count` is `total`, so that band b holds the units from
// band_start(b) up to band_start(b + 1).
int32_t band_start(const band_cut* cut, int32_t band);

// The frame driver: records from here on when render_threads is above 1; with one thread nothing
// is recorded and everything is drawn as it comes.
void begin_band_recording();
// Returns once everything recorded is drawn, and stops recording.
void draw_recorded_bands();

// Frees the command list, which otherwise keeps its size from frame to frame; not while recording.
void release_band_commands();

// The drawing functions ask first: 1 when the command was recorded, 0 when it must be drawn now
// (nothing is being recorded, or the list cannot grow and holds nothing to keep the order of).
int record_sky();
int record_triangle(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a, const screen_vertex* b,
                    const screen_vertex* c);
int record_line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour);
int record_circle_outline(int32_t cx, int32_t cy, int32_t r, uint16_t colour);

// The triangles recorded so far, in their order, for programs that draw the same frame another way
// (the benchmark against another rasterizer): visit is called once for each.
void visit_recorded_triangles(void (*visit)(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex corners[3],
                                            void* context),
                              void* context);
