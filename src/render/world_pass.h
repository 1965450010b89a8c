// The world pass: scene objects drawn as textured, lit triangles. Opaque and alpha-tested surfaces
// go straight to the rasterizer in object and subset order, the depth buffer resolving overlap;
// translucent ones are collected and drawn after every object, farthest first.
#pragma once

#include <stdint.h>

#include "core/placement.h"
#include "render/raster.h"

enum : uint8_t { WORLD_TINT = 38 }; // the temperature-table row of every world triangle

// A translucent triangle waiting for the end of the frame: the mean camera-space depth of its
// corners, its texture and the three camera-space vertices with their texture coordinates and shades.
struct deferred_triangle {
    float depth_key;
    int32_t texture;
    clip_vertex vertices[3];
};

static_assert(sizeof(deferred_triangle) == 116, "a deferred triangle is 29 packed 32-bit words");

extern deferred_triangle* deferred_triangles; // grows by 1024 records; shrinks only when released
extern int32_t deferred_count;

// Draws one scene object at `place`. light_context is the room its vertices are lit from (the
// draw record's area; -1 lights them from every room without looking for portals).
void draw_scene_object(int32_t object_index, const placement* place, int32_t light_context);

// Start of every frame, before the first draw_scene_object.
void reset_deferred_triangles();

// While the objects of the draw list are drawn out of its order (nearest first), the deferred
// triangles each one adds are noted under its place in the list and put back in the list's order
// before they are sorted, so that the sort sees them as drawing the list in its order leaves them.
// Room for `places` places, all with none; 0 when there is no room (they are then left as added).
int begin_deferring_by_place(int32_t places);
// Before drawing the object at this place.
void defer_for_place(int32_t place);
// After the last object: the deferred triangles in the order of their places.
void regroup_deferred_triangles();
// For qsort: +1 when b's key is greater, -1 when a's is, else 0, so the farthest comes first.
int compare_deferred_depth(const void* a, const void* b);
// Sorts the frame's deferred triangles, farthest first.
void sort_deferred_triangles();
// Draws them in their order, after every object.
void draw_deferred_triangles();

// Reflection mapping: rewrites u and v of a camera-space vertex from the view direction reflected
// about its (world-space) normal.
void environment_map_vertex(clip_vertex* vertex);

// Frees the arrays that drawing keeps from frame to frame (scratch vertices, poses, shade caches
// and the deferred list), for a world built anew: the next frame grows them again from nothing
// and builds every object's steady light again.
void release_world_pass_arrays();
