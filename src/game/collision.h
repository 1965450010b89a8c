// Collision queries against the collision triangles of the scene's objects: a ray cast, a sphere
// sweep, a capsule overlap and a nearest-edge probe. There is no broad phase across objects: every
// query visits the objects in scene order, carries itself into each object's frame and tests only
// the colliders whose boxes meet its own box. Single precision throughout; on equal results the
// first candidate in scene, collider and triangle order is kept.
//
// An object takes part only when it is not removed, its model index is above 0 (the placeholder
// model 0 never collides) and its model has at least one collider.
#pragma once

#include <stdint.h>

#include "core/vec3.h"

// What the ray cast, the sphere sweep and the capsule overlap found.
struct collision_hit {
    int32_t hit;      // 1 when something was found
    float distance;   // ray and sweep: along the direction (starts at the maximum distance);
                      // capsule overlap: penetration depth (starts at 0)
    vec3 point;       // the contact point, as each query defines it
    vec3 normal;      // unit surface normal in world orientation
    int32_t object;   // the scene object hit
    int32_t material; // the surface material of the collider hit
};

// Four consecutive floats.
struct sphere {
    vec3 centre;
    float radius;
};

// Seven consecutive floats: the two end points of the axis, then the radius.
struct capsule {
    vec3 start;
    vec3 end;
    float radius;
};

static_assert(sizeof(sphere) == 16, "a sphere is four packed floats");
static_assert(sizeof(capsule) == 28, "a capsule is seven packed floats");

// The geometric tolerance of every query.
constexpr float COLLISION_EPSILON = 0.0001f;

// ---- The queries ----

// The nearest triangle along origin + direction * t for 0 < t < max_distance, from either side.
// The direction need not be unit length: the distance is in multiples of it. The point is the
// origin moved along the direction by the distance.
collision_hit cast_ray(vec3 origin, vec3 direction, float max_distance);

// The first triangle that a sphere moving along the unit direction meets within max_distance, from
// the triangle's front only. The point is centre + normal * (distance - radius): placed along the
// normal, not along the motion, and only the distance and normal are meant to be used.
collision_hit sweep_sphere(const sphere* body, vec3 direction, float max_distance);

// The deepest penetration of the capsule into any triangle. A capsule whose axis pierces a triangle
// reports its radius as the depth. The point is turned into world orientation but left relative to
// the object's position; only the depth and normal are meant to be used.
collision_hit overlap_capsule(const capsule* body);

// 1 when some triangle edge or vertex lies strictly closer than the radius to the capsule's axis,
// with the nearest such place in *point: the point on the edge for an edge, the point on the axis
// for a vertex. Faces do not count. 0 otherwise (*point may still have been written).
int nearest_edge_point(const capsule* body, vec3* point);

// ---- The primitives they are built of, each a pure function ----

// The point of segment a-b nearest to p (the parameter clamped to [0, 1]; a zero-length segment
// gives a).
vec3 closest_point_on_segment(vec3 p, vec3 a, vec3 b);

// The point of triangle a, b, c nearest to p, found by walking its Voronoi regions: vertex a,
// vertex b, edge ab, vertex c, edge ac, edge bc, then the face.
vec3 closest_point_on_triangle(vec3 p, vec3 a, vec3 b, vec3 c);

// The squared distance between segments p1-q1 and p2-q2, with their closest points. A segment of
// zero length is taken as a point; parallel segments take the first one's start.
float closest_points_segments(vec3 p1, vec3 q1, vec3 p2, vec3 q2, vec3* on_first, vec3* on_second);

// Moeller-Trumbore, two-sided: 1 with *t when the ray meets the triangle at t > 0. A ray edge-on
// to the triangle (|det| < 0.0001) never hits it.
int intersect_ray_triangle(vec3 origin, vec3 direction, vec3 a, vec3 b, vec3 c, float* t);

// A sphere moving along the unit direction against one triangle, front side only: the face, else
// the edge picked by the first negative barycentric weight. 1 with the distance and unit normal
// when it touches within [0, max_distance].
int sweep_sphere_triangle(const sphere* body, vec3 direction, float max_distance, vec3 a, vec3 b, vec3 c,
                          float* t, vec3* normal);

// A sphere moving along the unit direction against the edge start-end, as a ray against the capsule
// of the sphere's radius around the edge: the side of the cylinder first, else the end sphere on
// the side where the ray starts. 1 with the distance and the unit normal (from the edge toward the
// centre at that distance) when 0 <= t <= max_distance.
int sweep_sphere_edge(const sphere* body, vec3 direction, float max_distance, vec3 start, vec3 end, float* t,
                      vec3* normal);

// How deep the capsule reaches into one triangle: 1 with the depth (0 when just touching), the unit
// normal and the contact point; 0 when they are apart or the triangle is degenerate. An axis that
// crosses the triangle gives the radius, the face normal and the crossing point; otherwise the
// depth is the radius less the axis's distance from the triangle, the normal points from the
// triangle toward the axis and the point lies on the triangle.
int capsule_triangle_contact(const capsule* body, vec3 a, vec3 b, vec3 c, float* depth, vec3* normal,
                             vec3* point);

// The box around a and b grown by the margin on every side.
aabb query_box(vec3 a, vec3 b, float margin);
