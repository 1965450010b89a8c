#include "core/placement.h"

#include <math.h>

placement placement_from_angles(vec3 position, float yaw, float pitch)
{
    return {position, sinf(yaw), cosf(yaw), sinf(pitch), cosf(pitch)};
}

vec3 placement_to_local_vector(const placement* place, vec3 d)
{
    // Pitch is undone first (about X), then yaw (about Y).
    float y1 = d.y * place->cos_pitch + d.z * place->sin_pitch;
    float z1 = d.z * place->cos_pitch - d.y * place->sin_pitch;
    float x2 = d.x * place->cos_yaw + z1 * place->sin_yaw;
    float z2 = z1 * place->cos_yaw - d.x * place->sin_yaw;
    return {x2, y1, z2};
}

vec3 placement_to_local_point(const placement* place, vec3 p)
{
    return placement_to_local_vector(place, vec3_sub(p, place->position));
}

vec3 placement_to_world_vector(const placement* place, vec3 n)
{
    float z1 = n.z * place->cos_yaw + n.x * place->sin_yaw;
    float x = n.x * place->cos_yaw - n.z * place->sin_yaw;
    float y = n.y * place->cos_pitch - z1 * place->sin_pitch;
    float z = z1 * place->cos_pitch + n.y * place->sin_pitch;
    return {x, y, z};
}

vec3 placement_to_world_point(const placement* place, vec3 p)
{
    return vec3_add(placement_to_world_vector(place, p), place->position);
}

void transform_box(aabb* box, const placement* place)
{
    const vec3& p = place->position;
    if (place->cos_yaw == 1.0f && place->sin_yaw == 0.0f && place->cos_pitch == 1.0f && place->sin_pitch == 0.0f) {
        box->min = vec3_add(box->min, p);
        box->max = vec3_add(box->max, p);
        return;
    }
    vec3 centre = vec3_scale(vec3_add(box->min, box->max), 0.5f);
    vec3 half = vec3_scale(vec3_sub(box->max, box->min), 0.5f);
    vec3 c = placement_to_world_point(place, centre);
    float sy = fabsf(place->sin_yaw), cy = fabsf(place->cos_yaw);
    float sp = fabsf(place->sin_pitch), cp = fabsf(place->cos_pitch);
    float ex = sy * half.z + cy * half.x;
    float ey = sy * sp * half.x + cp * half.y + sp * cy * half.z;
    float ez = sy * cp * half.x + sp * half.y + cp * cy * half.z;
    box->min = {c.x - ex, c.y - ey, c.z - ez};
    box->max = {c.x + ex, c.y + ey, c.z + ez};
}
