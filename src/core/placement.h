// Where an object stands: a position turned by yaw (about Y) and pitch (about X). The two
// conversions between the world and an object's own frame are used by the collision queries, the
// renderer and the scene loader alike, so they are written once, here.
#pragma once

#include "core/vec3.h"

// Seven consecutive floats: position, then the precomputed sines and cosines of the angles.
struct placement {
    vec3 position;
    float sin_yaw, cos_yaw;
    float sin_pitch, cos_pitch;
};

static_assert(sizeof(placement) == 28, "a placement is seven packed floats");

placement placement_from_angles(vec3 position, float yaw, float pitch);

// Turns a world direction into the object's frame (no position involved).
vec3 placement_to_local_vector(const placement* place, vec3 v);
// A world point into the object's frame: the position is subtracted first.
vec3 placement_to_local_point(const placement* place, vec3 p);
// Turns a direction of the object's frame into the world (no position involved).
vec3 placement_to_world_vector(const placement* place, vec3 v);
// A point of the object's frame into the world: turned, then the position added.
vec3 placement_to_world_point(const placement* place, vec3 p);

// Replaces an axis-aligned box of the object's frame by the world axis-aligned box that encloses
// it. An unturned placement only moves the box.
void transform_box(aabb* box, const placement* place);
