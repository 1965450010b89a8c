// Three-component single-precision vectors: points, directions and normals of the world and of
// models. Plain data, laid out as three consecutive floats wherever a record stores one.
#pragma once

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
