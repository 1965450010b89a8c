// The renderer's debug views, drawn as lines on top of the scene: box wireframes, animated
// skeletons (F2), model colliders (F3) and the areas, portals and portal rectangles of the
// visibility pass (F4). Lines take the on-top depth, so triangles drawn after them never cover them.
#pragma once

#include <stdint.h>

#include "assets/animation.h"
#include "assets/model.h"
#include "core/placement.h"
#include "core/vec3.h"

enum : uint16_t {
    COLOUR_TRIANGLE_EDGES = 0xFFFF,
    COLOUR_SKELETON = 0xFC00,
    COLOUR_COLLIDER = 0xFF00,
    COLOUR_COLLIDER_BOX = 0x33FF,
    COLOUR_AREA_BOX = 0x0AFA,
    COLOUR_PORTAL = 0xF81F,
    COLOUR_AREA_RECT = 0x9FE6,
};

// A screen segment: ends cut toward zero to whole pixels, clipped to the frame and drawn.
void draw_screen_segment(float x0, float y0, float x1, float y1, uint16_t colour);
// A world segment through project_segment (nothing when it lies wholly nearer than 0.01), then as
// draw_screen_segment.
void draw_world_segment(vec3 a, vec3 b, uint16_t colour);

// The twelve edges of an axis-aligned world box: corners 0-3 round the face y = min y, 4-7 round
// the face y = max y in the same order; edges 0-1, 1-2, 2-3, 3-0, 4-5, 5-6, 6-7, 7-4, 0-4, 1-5, 2-6, 3-7.
void draw_box_wireframe(vec3 min, vec3 max, uint16_t colour);

// Each bone with a parent: the bone -> parent segment of the posed skeleton, placed with the
// object's placement, and a circle at the bone's end of radius view_size / depth x joint_size.
void draw_skeleton(const animation* anim, const bone_pose* pose, const placement* place, float joint_size,
                   uint16_t colour);

// Each collider of the model in order: the edges of its triangles, then its box placed with the
// box transform.
void draw_colliders(const model* m, const placement* place);

// The F4 view, after the scene: the boxes of the visible areas other than area 0, the outlines of
// every visible area's portals (area 0's too), and, only while culling is live, the screen
// rectangles of the visible areas other than the camera's.
void draw_areas_and_portals();
