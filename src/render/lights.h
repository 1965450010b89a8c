// Light at a surface point: the point lights of the steady or the flickering list, each falling
// off with the square of its distance, optionally only toward the side the surface faces, and only
// through the portals that join the point's room to the light's room.
#pragma once

#include <stdint.h>

#include "core/vec3.h"

enum light_list_choice : int32_t {
    LIGHTS_STEADY = 0,
    LIGHTS_FLICKERING = 1,
};

// The summed light, 0 ... 1, at surface = (x, y, z, nx, ny, nz) lying in `room` (-1: unknown,
// which lights the point from every room without looking for portals). Flickering lights are
// taken between their previous and current tick by render_alpha.
float light_at(const float surface[6], int32_t room, int32_t list);

// light_at over only the lights of the list at `selected` (count indices, in the list's order):
// the same sum when the others give the point nothing.
float light_at_selected(const float surface[6], int32_t room, int32_t list, const int32_t* selected, int32_t count);

// The indices, in order, of the lights of a list that may reach some point of the box: every other
// light is at least its radius from each point in it, with a margin for the rounding of the
// distances light_at works out, so it gives nothing there. `selected` has room for every light of
// the list; returns how many it holds.
int32_t lights_reaching_box(int32_t list, vec3 box_min, vec3 box_max, int32_t* selected);

// 1 when the segment a -> b leaves `room` and reaches `target_room` through a chain of portals,
// each crossed against its normal and inside its four corners. Doors are not consulted.
int room_sees_point(int32_t room, int32_t target_room, vec3 a, vec3 b);
