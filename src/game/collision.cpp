#include "game/collision.h"

#include <float.h>
#include <math.h>

#include "assets/model.h"
#include "assets/world.h"
#include "core/placement.h"

namespace {

float length_squared(vec3 v)
{
    return vec3_dot(v, v);
}

float clamp01(float x)
{
    return x < 0.0f ? 0.0f : (x > 1.0f ? 1.0f : x);
}

// The barycentric weights (u along b - a, v along c - a) of p's projection onto the triangle's
// plane, from the 2x2 system of dot products. Returns the system's determinant; the weights are
// written only when it is not 0, and callers decide how small a determinant they trust.
float barycentric(vec3 p, vec3 a, vec3 b, vec3 c, float* u, float* v)
{
    vec3 e1 = vec3_sub(b, a);
    vec3 e2 = vec3_sub(c, a);
    vec3 ap = vec3_sub(p, a);
    float d11 = vec3_dot(e1, e1);
    float d12 = vec3_dot(e1, e2);
    float d22 = vec3_dot(e2, e2);
    float dp1 = vec3_dot(ap, e1);
    float dp2 = vec3_dot(ap, e2);
    float det = d11 * d22 - d12 * d12;
    if (det != 0.0f) {
        *u = (d22 * dp1 - d12 * dp2) / det;
        *v = (d11 * dp2 - d12 * dp1) / det;
    }
    return det;
}

int boxes_overlap(const aabb* box, vec3 min, vec3 max)
{
    return box->min.x <= max.x && box->max.x >= min.x && box->min.y <= max.y && box->max.y >= min.y &&
           box->min.z <= max.z && box->max.z >= min.z;
}

// One scene object as the queries see it: its collision model and its placement.
struct query_object {
    const model* shape;
    placement place;
};

// 1 when object `index` takes part in the queries, with its model and placement.
int query_object_at(int32_t index, query_object* out)
{
    const object* thing = registry_at<object>(&objects, index);
    if (thing->removed != 0 || thing->model <= 0 || thing->model >= models.count)
        return 0;
    const model* shape = registry_at<model>(&models, thing->model);
    if (shape->collider_count < 1)
        return 0;
    out->shape = shape;
    out->place = placement_from_angles(thing->position, thing->yaw, thing->pitch);
    return 1;
}

// Calls visit(collider, a, b, c) for every triangle of every collider whose box meets `box`, in
// collider and triangle order, until it returns 0; then returns 0 too.
template <typename Visit> int visit_triangles(const model* shape, const aabb* box, Visit visit)
{
    for (int32_t i = 0; i < shape->collider_count; ++i) {
        const model_collider* collider = &shape->colliders[i];
        if (!boxes_overlap(box, collider->min, collider->max))
            continue;
        for (int32_t t = collider->first; t < collider->end; ++t) {
            const int32_t* corner = shape->collision_triangles[t].points;
            if (!visit(collider, shape->points[corner[0]], shape->points[corner[1]], shape->points[corner[2]]))
                return 0;
        }
    }
    return 1;
}

vec3 triangle_normal(vec3 a, vec3 b, vec3 c)
{
    return vec3_normalise(vec3_cross(vec3_sub(b, a), vec3_sub(c, a)));
}

// The nearest point of the capsule's axis to a triangle that it does not pierce: over both end
// points against the triangle, then the axis against each edge; strictly smaller wins.
float axis_triangle_distance_squared(const capsule* body, vec3 a, vec3 b, vec3 c, vec3* on_axis,
                                     vec3* on_triangle)
{
    float best = FLT_MAX;
    *on_axis = body->start; // kept only when nothing is nearer than the largest float
    *on_triangle = a;
    const vec3 ends[2] = {body->start, body->end};
    for (vec3 end : ends) {
        vec3 closest = closest_point_on_triangle(end, a, b, c);
        float squared = length_squared(vec3_sub(end, closest));
        if (squared < best) {
            best = squared;
            *on_axis = end;
            *on_triangle = closest;
        }
    }
    const vec3 edges[3][2] = {{a, b}, {b, c}, {c, a}};
    for (const auto& edge : edges) {
        vec3 axis_point, edge_point;
        float squared = closest_points_segments(body->start, body->end, edge[0], edge[1], &axis_point, &edge_point);
        if (squared < best) {
            best = squared;
            *on_axis = axis_point;
            *on_triangle = edge_point;
        }
    }
    return best;
}

} // namespace

// ---- Primitives ----

aabb query_box(vec3 a, vec3 b, float margin)
{
    return {{fminf(a.x, b.x) - margin, fminf(a.y, b.y) - margin, fminf(a.z, b.z) - margin},
            {fmaxf(a.x, b.x) + margin, fmaxf(a.y, b.y) + margin, fmaxf(a.z, b.z) + margin}};
}

vec3 closest_point_on_segment(vec3 p, vec3 a, vec3 b)
{
    vec3 ab = vec3_sub(b, a);
    float squared = length_squared(ab);
    if (squared <= 0.0f)
        return a;
    float t = clamp01(vec3_dot(vec3_sub(p, a), ab) / squared);
    return vec3_add(a, vec3_scale(ab, t));
}

vec3 closest_point_on_triangle(vec3 p, vec3 a, vec3 b, vec3 c)
{
    vec3 ab = vec3_sub(b, a);
    vec3 ac = vec3_sub(c, a);
    vec3 ap = vec3_sub(p, a);
    float d1 = vec3_dot(ab, ap);
    float d2 = vec3_dot(ac, ap);
    if (d1 <= 0.0f && d2 <= 0.0f)
        return a;

    vec3 bp = vec3_sub(p, b);
    float d3 = vec3_dot(ab, bp);
    float d4 = vec3_dot(ac, bp);
    if (d3 >= 0.0f && d4 <= d3)
        return b;

    float vc = d1 * d4 - d3 * d2;
    if (vc <= 0.0f && d1 >= 0.0f && d3 <= 0.0f)
        return vec3_add(a, vec3_scale(ab, d1 / (d1 - d3)));

    vec3 cp = vec3_sub(p, c);
    float d5 = vec3_dot(ab, cp);
    float d6 = vec3_dot(ac, cp);
    if (d6 >= 0.0f && d5 <= d6)
        return c;

    float vb = d5 * d2 - d1 * d6;
    if (vb <= 0.0f && d2 >= 0.0f && d6 <= 0.0f)
        return vec3_add(a, vec3_scale(ac, d2 / (d2 - d6)));

    float va = d3 * d6 - d5 * d4;
    if (va <= 0.0f && (d4 - d3) >= 0.0f && (d5 - d6) >= 0.0f)
        return vec3_add(b, vec3_scale(vec3_sub(c, b), (d4 - d3) / ((d4 - d3) + (d5 - d6))));

    float denom = 1.0f / (va + vb + vc);
    float v = vb * denom;
    float w = vc * denom;
    return vec3_add(a, vec3_add(vec3_scale(ab, v), vec3_scale(ac, w)));
}

float closest_points_segments(vec3 p1, vec3 q1, vec3 p2, vec3 q2, vec3* on_first, vec3* on_second)
{
    vec3 d1 = vec3_sub(q1, p1);
    vec3 d2 = vec3_sub(q2, p2);
    vec3 r = vec3_sub(p1, p2);
    float a = length_squared(d1);
    float e = length_squared(d2);
    float f = vec3_dot(d2, r);
    float s = 0.0f;
    float t = 0.0f;
    if (a <= 0.0f && e <= 0.0f) {
        // Both are points.
    } else if (a <= 0.0f) {
        t = clamp01(f / e);
    } else {
        float c = vec3_dot(d1, r);
        if (e <= 0.0f) {
            s = clamp01(-c / a);
        } else {
            float b = vec3_dot(d1, d2);
            float denom = a * e - b * b;
            s = denom != 0.0f ? clamp01((b * f - c * e) / denom) : 0.0f;
            t = (b * s + f) / e;
            if (t < 0.0f) {
                t = 0.0f;
                s = clamp01(-c / a);
            } else if (t > 1.0f) {
                t = 1.0f;
                s = clamp01((b - c) / a);
            }
        }
    }
    *on_first = vec3_add(p1, vec3_scale(d1, s));
    *on_second = vec3_add(p2, vec3_scale(d2, t));
    return length_squared(vec3_sub(*on_first, *on_second));
}

int intersect_ray_triangle(vec3 origin, vec3 direction, vec3 a, vec3 b, vec3 c, float* t)
{
    vec3 e1 = vec3_sub(b, a);
    vec3 e2 = vec3_sub(c, a);
    vec3 h = vec3_cross(direction, e2);
    float det = vec3_dot(e1, h);
    if (det > -COLLISION_EPSILON && det < COLLISION_EPSILON)
        return 0;
    vec3 s = vec3_sub(origin, a);
    float u = vec3_dot(s, h) / det;
    if (u < 0.0f || u > 1.0f)
        return 0;
    vec3 q = vec3_cross(s, e1);
    float v = vec3_dot(direction, q) / det;
    if (v < 0.0f || u + v > 1.0f)
        return 0;
    float distance = vec3_dot(e2, q) / det;
    if (distance <= 0.0f)
        return 0;
    *t = distance;
    return 1;
}

int sweep_sphere_edge(const sphere* body, vec3 direction, float max_distance, vec3 start, vec3 end, float* t,
                      vec3* normal)
{
    vec3 centre = body->centre;
    float radius = body->radius;
    vec3 e = vec3_sub(end, start);
    vec3 m = vec3_sub(centre, start);
    float ee = vec3_dot(e, e);
    float ed = vec3_dot(e, direction);
    float em = vec3_dot(e, m);

    // The ray against the infinite cylinder around the edge (half-b form of the quadratic).
    int found = 0;
    float distance = 0.0f;
    float qa = ee * vec3_dot(direction, direction) - ed * ed;
    float qb = ee * vec3_dot(m, direction) - em * ed;
    float qc = ee * (vec3_dot(m, m) - radius * radius) - em * em;
    float disc = qb * qb - qa * qc;
    if (disc >= 0.0f && qa != 0.0f) {
        distance = (-qb - sqrtf(disc)) / qa;
        float along = em + distance * ed;
        found = along >= 0.0f && along <= ee;
    }
    if (!found) {
        // The sphere at the end on the side where the ray starts, whatever side it would meet.
        vec3 cap = em < 0.0f ? start : end;
        vec3 to_centre = vec3_sub(centre, cap);
        float b = vec3_dot(to_centre, direction);
        float c = vec3_dot(to_centre, to_centre) - radius * radius;
        float cap_disc = b * b - c;
        if (cap_disc < 0.0f)
            return 0;
        distance = -b - sqrtf(cap_disc);
    }
    if (distance < 0.0f || distance > max_distance)
        return 0;
    vec3 moved = vec3_add(centre, vec3_scale(direction, distance));
    *t = distance;
    *normal = vec3_normalise(vec3_sub(moved, closest_point_on_segment(moved, start, end)));
    return 1;
}

int sweep_sphere_triangle(const sphere* body, vec3 direction, float max_distance, vec3 a, vec3 b, vec3 c,
                          float* t, vec3* normal)
{
    vec3 n = triangle_normal(a, b, c);
    float approach = vec3_dot(direction, n);
    if (approach >= 0.0f)
        return 0; // moving away from the front, or along the plane
    float distance = (vec3_dot(n, a) - vec3_dot(n, body->centre) + body->radius) / approach;
    if (distance > max_distance)
        return 0;
    vec3 centre_at_touch = vec3_add(body->centre, vec3_scale(direction, distance));
    float u, v;
    if (fabsf(barycentric(centre_at_touch, a, b, c, &u, &v)) < COLLISION_EPSILON)
        return 0;
    float w = 1.0f - u - v;
    if (w >= 0.0f && u >= 0.0f && v >= 0.0f) {
        if (distance < 0.0f)
            return 0;
        *t = distance;
        *normal = n;
        return 1;
    }
    if (w < 0.0f)
        return sweep_sphere_edge(body, direction, max_distance, b, c, t, normal);
    if (u < 0.0f)
        return sweep_sphere_edge(body, direction, max_distance, c, a, t, normal);
    return sweep_sphere_edge(body, direction, max_distance, a, b, t, normal);
}

int capsule_triangle_contact(const capsule* body, vec3 a, vec3 b, vec3 c, float* depth, vec3* normal,
                             vec3* point)
{
    vec3 n = vec3_cross(vec3_sub(b, a), vec3_sub(c, a));
    float n_length = sqrtf(length_squared(n));
    if (n_length < COLLISION_EPSILON)
        return 0;

    // An axis that crosses the triangle counts as the radius deep, however far it reaches in.
    vec3 axis = vec3_sub(body->end, body->start);
    float crossing = vec3_dot(axis, n);
    if (fabsf(crossing) > COLLISION_EPSILON) {
        float s = vec3_dot(vec3_sub(a, body->start), n) / crossing;
        if (s >= 0.0f && s <= 1.0f) {
            vec3 x = vec3_add(body->start, vec3_scale(axis, s));
            float u, v;
            if (fabsf(barycentric(x, a, b, c, &u, &v)) > COLLISION_EPSILON && u >= 0.0f && v >= 0.0f &&
                u + v <= 1.0f) {
                *depth = body->radius;
                *normal = vec3_scale(n, 1.0f / n_length);
                *point = x;
                return 1;
            }
        }
    }

    vec3 on_axis, on_triangle;
    float squared = axis_triangle_distance_squared(body, a, b, c, &on_axis, &on_triangle);
    if (squared > body->radius * body->radius)
        return 0;
    *depth = body->radius - sqrtf(squared);
    *normal = vec3_normalise(vec3_sub(on_axis, on_triangle));
    *point = on_triangle;
    return 1;
}

// ---- Queries ----

collision_hit cast_ray(vec3 origin, vec3 direction, float max_distance)
{
    collision_hit result = {};
    result.distance = max_distance;
    int stopped = 0;
    for (int32_t index = 0; index < objects.count && !stopped; ++index) {
        query_object item;
        if (!query_object_at(index, &item))
            continue;
        vec3 o = placement_to_local_point(&item.place, origin);
        vec3 d = placement_to_local_vector(&item.place, direction);
        aabb box = query_box(o, vec3_add(o, vec3_scale(d, max_distance)), COLLISION_EPSILON);
        stopped = !visit_triangles(item.shape, &box, [&](const model_collider* collider, vec3 a, vec3 b, vec3 c) {
            float t;
            if (!intersect_ray_triangle(o, d, a, b, c, &t) || !(t < result.distance))
                return 1;
            result.hit = 1;
            result.distance = t;
            result.normal = placement_to_world_vector(&item.place, triangle_normal(a, b, c));
            result.object = index;
            result.material = collider->material;
            return t < COLLISION_EPSILON ? 0 : 1; // nothing can be nearer
        });
    }
    if (result.hit)
        result.point = vec3_add(origin, vec3_scale(direction, result.distance));
    return result;
}

collision_hit sweep_sphere(const sphere* body, vec3 direction, float max_distance)
{
    collision_hit result = {};
    result.distance = max_distance;
    int stopped = 0;
    for (int32_t index = 0; index < objects.count && !stopped; ++index) {
        query_object item;
        if (!query_object_at(index, &item))
            continue;
        sphere local = {placement_to_local_point(&item.place, body->centre), body->radius};
        vec3 d = placement_to_local_vector(&item.place, direction);
        aabb box = query_box(local.centre, vec3_add(local.centre, vec3_scale(d, max_distance)),
                             body->radius + COLLISION_EPSILON);
        stopped = !visit_triangles(item.shape, &box, [&](const model_collider* collider, vec3 a, vec3 b, vec3 c) {
            float t;
            vec3 n;
            if (!sweep_sphere_triangle(&local, d, max_distance, a, b, c, &t, &n) || !(t < result.distance))
                return 1;
            result.hit = 1;
            result.distance = t;
            result.normal = placement_to_world_vector(&item.place, n);
            result.object = index;
            result.material = collider->material;
            return t < COLLISION_EPSILON ? 0 : 1;
        });
    }
    if (result.hit)
        result.point = vec3_add(body->centre, vec3_scale(result.normal, result.distance - body->radius));
    return result;
}

collision_hit overlap_capsule(const capsule* body)
{
    collision_hit result = {};
    for (int32_t index = 0; index < objects.count; ++index) {
        query_object item;
        if (!query_object_at(index, &item))
            continue;
        capsule local = {placement_to_local_point(&item.place, body->start),
                         placement_to_local_point(&item.place, body->end), body->radius};
        aabb box = query_box(local.start, local.end, body->radius + COLLISION_EPSILON);
        visit_triangles(item.shape, &box, [&](const model_collider* collider, vec3 a, vec3 b, vec3 c) {
            float depth;
            vec3 n, point;
            if (!capsule_triangle_contact(&local, a, b, c, &depth, &n, &point) || !(depth > result.distance))
                return 1;
            result.hit = 1;
            result.distance = depth;
            result.normal = placement_to_world_vector(&item.place, n);
            result.point = placement_to_world_vector(&item.place, point); // relative to the object
            result.object = index;
            result.material = collider->material;
            return 1;
        });
    }
    return result;
}

int nearest_edge_point(const capsule* body, vec3* point)
{
    float best = body->radius * body->radius;
    int touching = 0;
    for (int32_t index = 0; index < objects.count && !touching; ++index) {
        query_object item;
        if (!query_object_at(index, &item))
            continue;
        capsule local = {placement_to_local_point(&item.place, body->start),
                         placement_to_local_point(&item.place, body->end), body->radius};
        aabb box = query_box(local.start, local.end, body->radius + COLLISION_EPSILON);
        // A closer place becomes the answer; one practically on the axis ends the search.
        auto closer = [&](float squared, vec3 local_point) {
            if (squared < best) {
                best = squared;
                *point = placement_to_world_point(&item.place, local_point);
                touching = best < COLLISION_EPSILON;
            }
            return !touching;
        };
        visit_triangles(item.shape, &box, [&](const model_collider*, vec3 a, vec3 b, vec3 c) {
            const vec3 edges[3][2] = {{a, b}, {b, c}, {c, a}};
            for (const auto& edge : edges) {
                vec3 on_axis, on_edge;
                float squared = closest_points_segments(local.start, local.end, edge[0], edge[1], &on_axis, &on_edge);
                if (!closer(squared, on_edge))
                    return 0;
            }
            // A vertex reports the place on the axis nearest to it, not the vertex itself.
            const vec3 corners[3] = {a, b, c};
            for (vec3 corner : corners) {
                vec3 on_axis = closest_point_on_segment(corner, local.start, local.end);
                if (!closer(length_squared(vec3_sub(corner, on_axis)), on_axis))
                    return 0;
            }
            return 1;
        });
    }
    return touching || best < body->radius * body->radius;
}
