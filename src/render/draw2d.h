// The small 2-D primitives of the debug views and the HUD: lines, rectangle outlines and circles,
// in the colour their caller passes, unchanged.
#pragma once

#include <stdint.h>

// Clips an integer segment to the inclusive rectangle xmin ... xmax, ymin ... ymax; 1 with the
// clipped ends written back, 0 when nothing is left.
int clip_line_to_rect(int32_t* x0, int32_t* y0, int32_t* x1, int32_t* y1, int32_t xmin, int32_t ymin, int32_t xmax,
                      int32_t ymax);

// Both ends included; the ends must lie inside the frame. Every pixel also takes the on-top depth,
// so no triangle drawn later in the frame covers the line. While the frame is recorded for its
// bands (render/bands.h), the line is recorded instead.
void draw_line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour);
// The pixels of draw_line that lie in rows first_row ... end_row - 1.
void draw_line_rows(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour, int32_t first_row,
                    int32_t end_row);

// The four sides, corners included, for x0 <= x1 and y0 <= y1 inside the frame; no clipping and
// no depth.
void draw_rect_outline(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour);

// Midpoint circle of radius r (a negative radius draws nothing). Filled circles are horizontal
// chords clipped to the frame and drawn as lines (so they take the on-top depth too); outlines
// plot single pixels, skipping those outside the frame, and leave the depth alone.
// While the frame is recorded for its bands, an outline is recorded instead (a filled circle's
// chords are recorded as lines).
void draw_circle(int32_t cx, int32_t cy, int32_t r, uint16_t colour, int filled);
// The pixels of draw_circle that lie in rows first_row ... end_row - 1.
void draw_circle_rows(int32_t cx, int32_t cy, int32_t r, uint16_t colour, int filled, int32_t first_row,
                      int32_t end_row);
void fill_circle(int32_t cx, int32_t cy, int32_t r, uint16_t colour);
void draw_circle_outline(int32_t cx, int32_t cy, int32_t r, uint16_t colour);
