// The occlusion buffer: the occluder meshes of the listed objects drawn as nearest 1/z into a
// half-resolution fine buffer, reduced into a coarse grid of 8x8-pixel cells that hold their
// farthest occluder, against which each object's box is tested before it is drawn. The sky is
// drawn only into cells that the occluders leave open.
#pragma once

#include <stdint.h>

#include "assets/model.h"
#include "core/placement.h"

// Where projected coordinates (-0.5 ... 0.5 on the shorter side) land in a buffer:
// (p + 0.5) * scale + offset.
struct buffer_viewport {
    float scale;
    float offset_x;
    float offset_y;
};

// The fine buffer is the first (frame_width / 2) x (frame_height / 2) cells of depth_buffer: the
// occluders are drawn after the frame driver clears the depth buffer, and the reduction clears
// them away again before the scene is drawn, so the two uses never meet.
extern int32_t occlusion_fine_width;
extern int32_t occlusion_fine_height;
extern buffer_viewport occlusion_fine_viewport;

// (frame_width / 8) columns x (frame_height / 8) rows: each cell the smallest 1/z of its 4x4 fine
// pixels, 0 when any of them has no occluder.
extern float* occlusion_coarse;
extern int32_t occlusion_columns;
extern int32_t occlusion_rows;
extern buffer_viewport occlusion_coarse_viewport;

// Start-up, after depth_buffer_create and once the frame's size is known: the sizes, the two
// viewports and a zero-filled coarse buffer. 0 when the coarse buffer cannot be allocated.
int occlusion_buffers_create();

// One listed object's occluders (one-sided triangles), placed and clipped at the view depth 0.01,
// into the fine buffer.
void rasterize_occluders(const model* m, const placement* place);

// The 4x4 reduction into the coarse buffer; then the fine buffer is cleared back to 0.
void reduce_occlusion_buffer();

// Frees the list in which the occluder triangles wait for the threads (it grows by 1024 and is
// kept from frame to frame); the next frame with threads grows it again from nothing.
void release_occluder_list();

// 1 when the world box lies wholly behind the occluders of the cells it covers on screen; never
// for a box reaching nearer than 0.01 or behind the eye.
int box_occluded(const aabb* box);
