// Near-plane clipping, projection and the scan conversion of screen-space triangles into spans.
// The per-pixel work inside a span is the pixel pipeline's; this module owns everything around it.
#pragma once

#include <stdint.h>

#include "assets/texture.h"

// A vertex as the scene passes hand it to the rasterizer.
struct screen_vertex {
    float sx, sy; // screen position in pixels, pixel centres at .5
    float w;      // the view depth; > 0 after clipping
    float u, v;   // texture coordinates in repeats (1.0 = one texture width or height)
    float l;      // shade: 0 fully lit ... 1 darkest
};

// A camera-space vertex as near-plane clipping sees it. The normal is not interpolated: it is
// undefined on vertices that clipping makes and must not be read after clipping.
struct clip_vertex {
    float x, y, z;
    float nx, ny, nz;
    float u, v;
    float l;
};

// One end of a span: x and the perspective-correct quantities.
struct span_edge {
    float x;
    float inv_w; // 1 / w
    float u_w;   // u / w
    float v_w;   // v / w
    float l_w;   // l / w
};

enum { CLIP_CAPACITY = 4 };

// How many pixels the span loops and the sky take at a time: 8 (AVX2), 4 (SSE2) or 1 (the plain
// span loops; the sky takes 4). All give the same pixels to the bit; tests compare them. Starts at
// the widest the processor runs.
extern int pixel_loop_lanes;
int widest_pixel_loop_lanes();

// 0 while things are drawn in their order. While the opaque objects of a frame are drawn nearest
// first, out of their order in the draw list, each object's place in that list, from 1: an opaque
// triangle then also draws over a surface exactly as near that an object later in the list drew
// (depth_ranks keeps whose each pixel is), so that the frame comes out as drawing the list in its
// order makes it.
extern uint16_t drawing_rank;

// Fills a triangle of either winding (back faces are the caller's business). tint is a row of the
// temperature tables (0 ... 63); blend 0 draws opaque, else the translucency level (the new
// colour's weight out of 63), depth-tested but leaving the depth buffer as it was.
// While the frame is recorded for its bands (render/bands.h), the triangle is recorded instead.
void draw_triangle(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a, const screen_vertex* b,
                   const screen_vertex* c);

// The pixels that draw_triangle draws in rows first_row ... end_row - 1 with drawing_rank at
// `rank`, exactly, and no others.
void draw_triangle_rows(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a,
                        const screen_vertex* b, const screen_vertex* c, int32_t first_row, int32_t end_row,
                        uint16_t rank);

// One row of a triangle between two edge points, in either order.
void draw_span(int32_t y, const texture* tex, uint8_t tint, uint8_t blend, const span_edge* left,
               const span_edge* right);

// Clips the triangle in vertices[0..2] against z = near_z (inside means strictly farther) and
// leaves the polygon, in order, at the start of the array (room for CLIP_CAPACITY vertices).
// Returns 0, 3 or 4; a 4 is drawn as the fan (0, 1, 2), (0, 2, 3).
int32_t clip_triangle_near(clip_vertex* vertices, float near_z);

// A world-space segment to the screen: camera space, clipped at the view depth 0.01, projected.
// Writes back screen x, y and the (clipped) view depth of both ends; 0 when the whole segment
// lies nearer than 0.01.
int project_segment(float* x0, float* y0, float* z0, float* x1, float* y1, float* z1);
