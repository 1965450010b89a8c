#include "render/world_pass.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "assets/animation.h"
#include "assets/model.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/heap.h"
#include "core/loop_state.h"
#include "core/numbers.h"
#include "render/debug_draw.h"
#include "render/frame.h"
#include "render/lights.h"

deferred_triangle* deferred_triangles;
int32_t deferred_count;

namespace {

constexpr float NEAR_Z = 0.01f;
constexpr float SKELETON_JOINT_SIZE = 0.05f;
constexpr int32_t DEFERRED_GROWTH = 1024;
constexpr int32_t SHADE_CACHE_GROWTH = 16;

// The steady light of one object's vertices, worked out the first frame it is drawn lit and kept:
// a byte per vertex, 0 fully lit ... 255 dark.
struct shade_cache {
    int32_t built;
    uint8_t* shades;
    int32_t capacity;
};

// Scratch arrays that persist across frames and only grow.
clip_vertex* working;
int32_t working_capacity;
bone_pose* poses;
int32_t pose_capacity;
shade_cache* shade_caches;
int32_t shade_cache_count;
int32_t deferred_capacity;
deferred_triangle* regrouped; // the deferred list being put back in order, then swapped with it
int32_t regrouped_capacity;
int32_t* place_first; // each place's deferred triangles: place_first[p] ... place_end[p] - 1
int32_t* place_end;
int32_t place_first_capacity, place_end_capacity;
int32_t deferring_places; // 0 while not deferring by place
int32_t deferring_place = -1;
int32_t* reaching; // the flickering lights that reach the object being drawn
int32_t reaching_capacity;

// Grows *block to hold at least `needed` elements of T, exactly; 0 when it cannot.
template <typename T> int reserve(T** block, int32_t* capacity, int32_t needed)
{
    return heap_grow(block, capacity, needed, needed);
}

// The object's cache record, the array grown in steps of 16 zero-filled records; null when it
// cannot grow.
shade_cache* shade_cache_of(int32_t object_index)
{
    int32_t had = shade_cache_count;
    int32_t grown = (object_index / SHADE_CACHE_GROWTH + 1) * SHADE_CACHE_GROWTH;
    if (!heap_grow(&shade_caches, &shade_cache_count, object_index + 1, grown))
        return nullptr;
    memset(shade_caches + had, 0, static_cast<size_t>(shade_cache_count - had) * sizeof(shade_cache));
    return &shade_caches[object_index];
}

// q (0, v) q*, with q* the conjugate rather than the inverse: a quaternion that is not of unit
// length scales the offset too, as the animations were made with.
vec3 rotate_by_quaternion(const float q[4], vec3 v)
{
    vec3 axis = {q[0], q[1], q[2]};
    float w = q[3];
    // t = q (v, 0)
    vec3 tv = vec3_add(vec3_scale(v, w), vec3_cross(axis, v));
    float tw = -vec3_dot(axis, v);
    // t (-axis, w), vector part
    vec3 minus_axis = vec3_scale(axis, -1.0f);
    return vec3_add(vec3_add(vec3_scale(minus_axis, tw), vec3_scale(tv, w)), vec3_cross(tv, minus_axis));
}

// The point placed by its weights in the posed skeleton; a point without weights goes to the origin.
vec3 skinned_position(const model* m, int32_t point, const animation* anim)
{
    vec3 sum = {0.0f, 0.0f, 0.0f};
    if (!m->point_weights)
        return sum;
    const point_weight_run* run = &m->point_weights[point];
    for (int32_t i = 0; i < run->weight_count; ++i) {
        const model_weight* weight = &m->weights[run->first_weight + i];
        if (weight->bone < 0 || weight->bone >= anim->bone_count)
            continue; // a weight for a bone this skeleton lacks places nothing
        const bone_pose* bone = &poses[weight->bone];
        vec3 offset = vec3_add(rotate_by_quaternion(bone->rotation, weight->position), bone->translation);
        sum = vec3_add(sum, vec3_scale(offset, weight->factor));
    }
    return sum;
}

// Poses the object's skeleton for the frame (and draws it under F2): *out is the animation, or
// null when the object has none. 0 when the pose buffer cannot grow.
int pose_object(const object* o, const placement* place, const animation** out)
{
    *out = nullptr;
    if (o->animation <= 0 || !registry_in_use(&animations, o->animation))
        return 1;
    const animation* anim = registry_at<animation>(&animations, o->animation);
    if (!reserve(&poses, &pose_capacity, anim->bone_count > 0 ? anim->bone_count : 1))
        return 0;
    float length = anim->frame_count > 0 ? anim->frame_times[anim->frame_count - 1] : 0.0f;
    // An animation whose last key lies at 0 has no length to loop over: it holds its first pose.
    float time = length > 0.0f ? fmodf(game_time - o->animation_start, length) : 0.0f;
    sample_pose(anim, time, poses);
    if (debug_wireframe)
        draw_skeleton(anim, poses, place, SKELETON_JOINT_SIZE, COLOUR_SKELETON);
    *out = anim;
    return 1;
}

// The light at a working vertex: its world position and normal.
float light_at_vertex(const clip_vertex* v, int32_t light_context, int32_t list)
{
    const float surface[6] = {v->x, v->y, v->z, v->nx, v->ny, v->nz};
    return light_at(surface, light_context, list);
}

// The flickering lights that may reach any of the first `count` working vertices (in world space),
// into reaching; -1 when every light must be asked: the list cannot be had, or a coordinate is not
// a number (such a vertex is never out of a light's reach).
int32_t flickering_lights_reaching(int32_t count)
{
    if (!reserve(&reaching, &reaching_capacity, flickering_lights.count > 0 ? flickering_lights.count : 1))
        return -1;
    vec3 low = {HUGE_VALF, HUGE_VALF, HUGE_VALF}, high = {-HUGE_VALF, -HUGE_VALF, -HUGE_VALF};
    for (int32_t i = 0; i < count; ++i) {
        const clip_vertex& v = working[i];
        if (v.x != v.x || v.y != v.y || v.z != v.z)
            return -1;
        low = {fminf(low.x, v.x), fminf(low.y, v.y), fminf(low.z, v.z)};
        high = {fmaxf(high.x, v.x), fmaxf(high.y, v.y), fmaxf(high.z, v.z)};
    }
    return lights_reaching_box(LIGHTS_FLICKERING, low, high, reaching);
}

// Shades of the working vertices; 0 when the object's shade cache cannot be had.
int shade_vertices(int32_t object_index, int32_t count, int32_t light_context)
{
    if (object_index == focus_object) {
        // The focused object pulses whatever its lighting.
        float pulse = ping_pong(0.4f, 0.8f, (game_time - focus_time) * 0.5f);
        for (int32_t i = 0; i < count; ++i)
            working[i].l = pulse;
        return 1;
    }
    if (!debug_lighting) {
        for (int32_t i = 0; i < count; ++i)
            working[i].l = 0.0f;
        return 1;
    }
    shade_cache* cache = shade_cache_of(object_index);
    if (!cache)
        return 0;
    if (!cache->built) {
        if (!reserve(&cache->shades, &cache->capacity, count > 0 ? count : 1))
            return 0;
        for (int32_t i = 0; i < count; ++i) {
            float dark = (1.0f - light_at_vertex(&working[i], light_context, LIGHTS_STEADY)) * 255.0f;
            // Light is 0 ... 1 with sane data; a negative brightness must not overflow the byte.
            cache->shades[i] = static_cast<uint8_t>(dark < 0.0f ? 0.0f : dark > 255.0f ? 255.0f : dark);
        }
        cache->built = 1;
    }
    // Most flickering lights reach few objects: those beyond the object's box are left out, which
    // leaves every sum as it was.
    int32_t reaching_count = flickering_lights_reaching(count);
    const int32_t* selected = reaching_count >= 0 ? reaching : nullptr;
    if (reaching_count < 0)
        reaching_count = flickering_lights.count;
    for (int32_t i = 0; i < count; ++i) {
        const clip_vertex& v = working[i];
        const float surface[6] = {v.x, v.y, v.z, v.nx, v.ny, v.nz};
        float steady = static_cast<float>(cache->shades[i]) / 255.0f;
        float flickering =
            1.0f - light_at_selected(surface, light_context, LIGHTS_FLICKERING, selected, reaching_count);
        working[i].l = steady < flickering ? steady : flickering;
    }
    return 1;
}

// Clips a camera-space triangle (room for four vertices) at the near distance and draws the fan,
// culling back faces unless the texture is double-sided, with the F2 outline over each.
void draw_clipped_triangle(const texture* tex, clip_vertex polygon[CLIP_CAPACITY])
{
    int32_t count = clip_triangle_near(polygon, NEAR_Z);
    float px[CLIP_CAPACITY], py[CLIP_CAPACITY];
    screen_vertex screen[CLIP_CAPACITY];
    for (int32_t k = 0; k < count; ++k) {
        const clip_vertex& v = polygon[k];
        px[k] = v.x * projection_scale / v.z;
        py[k] = v.y * projection_scale / v.z;
        screen[k] = {(px[k] + 0.5f) * view_size + view_offset_x, (py[k] + 0.5f) * view_size + view_offset_y, v.z,
                     v.u, v.v, v.l};
    }
    for (int32_t b = 1; b + 1 < count; ++b) {
        int32_t c = b + 1;
        float facing = (py[b] - py[0]) * (px[c] - px[0]) - (py[c] - py[0]) * (px[b] - px[0]);
        if (!(tex->flags & TEXTURE_DOUBLE_SIDED) && facing <= 0.0f)
            continue;
        draw_triangle(tex, WORLD_TINT, tex->t_level, &screen[0], &screen[b], &screen[c]);
        if (!debug_wireframe)
            continue;
        const screen_vertex* corner[3] = {&screen[0], &screen[b], &screen[c]};
        for (int32_t k = 0; k < 3; ++k) {
            const screen_vertex* to = corner[k == 2 ? 0 : k + 1];
            draw_screen_segment(corner[k]->sx, corner[k]->sy, to->sx, to->sy, COLOUR_TRIANGLE_EDGES);
        }
    }
}

void defer_triangle(int32_t texture_index, const model_triangle* triangle)
{
    if (deferred_count == deferred_capacity &&
        !reserve(&deferred_triangles, &deferred_capacity, deferred_capacity + DEFERRED_GROWTH))
        return; // the list cannot grow: this triangle is dropped
    deferred_triangle* record = &deferred_triangles[deferred_count++];
    record->texture = texture_index;
    for (int32_t k = 0; k < 3; ++k)
        record->vertices[k] = working[triangle->points[k]];
    record->depth_key = (record->vertices[0].z + record->vertices[1].z + record->vertices[2].z) / 3.0f;
}

void draw_subset(const model* m, const model_subset* subset)
{
    if (!registry_in_use(&textures, subset->texture))
        return;
    const texture* tex = registry_at<texture>(&textures, subset->texture);
    for (int32_t t = subset->first_triangle; t < subset->end_triangle; ++t) {
        const model_triangle* triangle = &m->triangles[t];
        if (tex->flags & TEXTURE_TRANSLUCENT) {
            defer_triangle(subset->texture, triangle);
            continue;
        }
        clip_vertex polygon[CLIP_CAPACITY];
        for (int32_t k = 0; k < 3; ++k) {
            // Written into the shared working array on purpose: a later subset that shares the
            // vertex sees the mapped coordinates and the fixed shade.
            clip_vertex* v = &working[triangle->points[k]];
            if (tex->flags & TEXTURE_ENVIRONMENT)
                environment_map_vertex(v);
            if (tex->flags & TEXTURE_FIXED_LIGHT)
                v->l = tex->e_level;
            polygon[k] = *v;
        }
        draw_clipped_triangle(tex, polygon);
    }
}

} // namespace

void draw_scene_object(int32_t object_index, const placement* place, int32_t light_context)
{
    if (!registry_in_use(&objects, object_index))
        return;
    const object* o = registry_at<object>(&objects, object_index);
    if (!registry_in_use(&models, o->model))
        return;
    const model* m = registry_at<model>(&models, o->model);
    if (debug_show_colliders)
        draw_colliders(m, place);
    const animation* anim;
    if (!pose_object(o, place, &anim) || !reserve(&working, &working_capacity, m->point_count > 0 ? m->point_count : 1))
        return;

    for (int32_t i = 0; i < m->point_count; ++i) {
        clip_vertex* v = &working[i];
        // Normals keep the placement's turn only; skinning does not bend them.
        vec3 normal = placement_to_world_vector(place, m->normals[i]);
        vec3 local = anim ? skinned_position(m, i, anim) : m->points[i];
        vec3 world = placement_to_world_point(place, local);
        v->x = world.x;
        v->y = world.y;
        v->z = world.z;
        v->nx = normal.x;
        v->ny = normal.y;
        v->nz = normal.z;
        v->u = m->texcoords[i].u;
        v->v = m->texcoords[i].v;
    }
    if (!shade_vertices(object_index, m->point_count, light_context))
        return;
    for (int32_t i = 0; i < m->point_count; ++i) {
        clip_vertex* v = &working[i];
        float camera[3];
        point_to_camera({v->x, v->y, v->z}, camera);
        v->x = camera[0];
        v->y = camera[1];
        v->z = camera[2];
    }
    for (int32_t s = 0; s < m->subset_count; ++s)
        draw_subset(m, &m->subsets[s]);
}

void reset_deferred_triangles()
{
    deferred_count = 0;
}

int begin_deferring_by_place(int32_t places)
{
    deferring_places = 0;
    deferring_place = -1;
    if (!reserve(&place_first, &place_first_capacity, places > 0 ? places : 1) ||
        !reserve(&place_end, &place_end_capacity, places > 0 ? places : 1))
        return 0;
    for (int32_t p = 0; p < places; ++p)
        place_first[p] = place_end[p] = 0;
    deferring_places = places;
    return 1;
}

void defer_for_place(int32_t place)
{
    if (deferring_place >= 0)
        place_end[deferring_place] = deferred_count;
    deferring_place = place >= 0 && place < deferring_places ? place : -1;
    if (deferring_place >= 0)
        place_first[deferring_place] = deferred_count;
}

void regroup_deferred_triangles()
{
    defer_for_place(-1);
    int32_t places = deferring_places;
    deferring_places = 0;
    if (places == 0 || deferred_count == 0 ||
        !reserve(&regrouped, &regrouped_capacity, deferred_capacity > 0 ? deferred_capacity : 1))
        return;
    int32_t count = 0;
    for (int32_t p = 0; p < places; ++p)
        for (int32_t i = place_first[p]; i < place_end[p]; ++i)
            regrouped[count++] = deferred_triangles[i];
    if (count != deferred_count)
        return; // triangles deferred outside every place: left as they were added
    deferred_triangle* swap = deferred_triangles;
    deferred_triangles = regrouped;
    regrouped = swap;
    int32_t capacity = deferred_capacity;
    deferred_capacity = regrouped_capacity;
    regrouped_capacity = capacity;
}

int compare_deferred_depth(const void* a, const void* b)
{
    float key_a = static_cast<const deferred_triangle*>(a)->depth_key;
    float key_b = static_cast<const deferred_triangle*>(b)->depth_key;
    if (key_b > key_a)
        return 1;
    if (key_a > key_b)
        return -1;
    return 0;
}

void sort_deferred_triangles()
{
    if (deferred_count > 1)
        qsort(deferred_triangles, static_cast<size_t>(deferred_count), sizeof(deferred_triangle),
              compare_deferred_depth);
}

void draw_deferred_triangles()
{
    for (int32_t i = 0; i < deferred_count; ++i) {
        const deferred_triangle* record = &deferred_triangles[i];
        if (!registry_in_use(&textures, record->texture))
            continue;
        const texture* tex = registry_at<texture>(&textures, record->texture);
        clip_vertex polygon[CLIP_CAPACITY];
        for (int32_t k = 0; k < 3; ++k) {
            polygon[k] = record->vertices[k];
            if (tex->flags & TEXTURE_FIXED_LIGHT)
                polygon[k].l = tex->e_level;
        }
        draw_clipped_triangle(tex, polygon);
    }
}

void environment_map_vertex(clip_vertex* vertex)
{
    float ys = camera_yaw_sin, yc = camera_yaw_cos;
    float ps = camera_pitch_sin, pc = camera_pitch_cos;
    float x = vertex->x, y = vertex->y, z = vertex->z;
    float a = z * pc - y * ps;
    vec3 view = {-(a * ys + x * yc), -(y * pc + z * ps), x * ys - a * yc};
    view = vec3_normalise(view);
    vec3 normal = {vertex->nx, vertex->ny, vertex->nz};
    float d = vec3_dot(normal, view);
    vertex->u = (2.0f * d * normal.x - view.x + 1.0f) * 0.5f;
    vertex->v = (2.0f * d * normal.y - view.y + 1.0f) * 0.5f;
}

void release_world_pass_arrays()
{
    for (int32_t i = 0; i < shade_cache_count; ++i)
        heap_release(&shade_caches[i].shades, &shade_caches[i].capacity);
    heap_release(&shade_caches, &shade_cache_count);
    heap_release(&working, &working_capacity);
    heap_release(&poses, &pose_capacity);
    heap_release(&deferred_triangles, &deferred_capacity);
    heap_release(&regrouped, &regrouped_capacity);
    heap_release(&place_first, &place_first_capacity);
    heap_release(&place_end, &place_end_capacity);
    heap_release(&reaching, &reaching_capacity);
    deferred_count = 0;
}
