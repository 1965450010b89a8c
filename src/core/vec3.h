// Three-component single-precision vectors: points, directions and normals of the world and of
// models. Plain data, laid out as three consecutive floats wherever a record stores one.
#pragma once

#include <math.h>

struct vec3 {
    float x, y, z;
};

static_assert(sizeof(vec3) == 12, "a vec3 is three packed floats in every record");

inline vec3 vec3_add(vec3 a, vec3 b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline vec3 vec3_sub(vec3 a, vec3 b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline vec3 vec3_scale(vec3 a, float s)
{
    return {a.x * s, a.y * s, a.z * s};
}

inline float vec3_dot(vec3 a, vec3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline vec3 vec3_cross(vec3 a, vec3 b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline float vec3_length(vec3 v)
{
    return sqrtf(vec3_dot(v, v));
}

// The unit vector along v; a zero vector stays zero.
inline vec3 vec3_normalise(vec3 v)
{
    float squared = vec3_dot(v, v);
    return squared > 0.0f ? vec3_scale(v, 1.0f / sqrtf(squared)) : v;
}

// An axis-aligned box: its least and its greatest corner.
struct aabb {
    vec3 min;
    vec3 max;
};

// Corner k of the box (0 to 7): bit 0 takes the greatest x, bit 1 the greatest y, bit 2 the
// greatest z.
inline vec3 aabb_corner(const aabb& box, int k)
{
    return {(k & 1) ? box.max.x : box.min.x, (k & 2) ? box.max.y : box.min.y, (k & 4) ? box.max.z : box.min.z};
}

// 1 when p lies in the box, faces included.
inline int aabb_holds(const aabb& box, vec3 p)
{
    return p.x >= box.min.x && p.x <= box.max.x && p.y >= box.min.y && p.y <= box.max.y && p.z >= box.min.z &&
           p.z <= box.max.z;
}
