// Models: triangle meshes in line-oriented text files under gloamhold_data/models, with optional
// skinning weights, material-tagged collision geometry and occlusion geometry. Normals, collider
// boxes and the model's bounds are derived at load.
#pragma once

#include <stdint.h>

#include "assets/registry.h"
#include "core/vec3.h"

struct model_triangle {
    int32_t points[3]; // indices into the model's points
};

struct model_texcoord {
    float u, v;
};

// Triangles [first_triangle, end_triangle) drawn with one texture.
struct model_subset {
    int32_t first_triangle;
    int32_t end_triangle;
    int32_t texture;
};

// One bone's share in placing a point: the point's position in the bone's frame and the weight.
struct model_weight {
    int32_t bone;
    vec3 position;
    float factor;
};

// The run of weights that places one point when the model is posed.
struct point_weight_run {
    int32_t first_weight;
    int32_t weight_count;
};

// Collision triangles [first, end) of one surface material, with their box (derived).
struct model_collider {
    int32_t first;
    int32_t end;
    int32_t material;
    vec3 min;
    vec3 max;
};

// Occlusion triangles [first, end).
struct model_occluder {
    int32_t first;
    int32_t end;
};

// Every array is a zero-filled heap block owned by the record (null when its count is 0).
struct model {
    int32_t point_count;
    vec3* points;
    int32_t triangle_count;
    model_triangle* triangles;
    int32_t subset_count;
    model_subset* subsets;
    vec3* normals;             // point_count, derived
    model_texcoord* texcoords; // point_count; all zero when the file has none
    vec3 bounds_min;           // the box of all points, derived
    vec3 bounds_max;
    int32_t weight_count;
    model_weight* weights;
    point_weight_run* point_weights; // point_count entries when the model has weights
    int32_t collision_triangle_count;
    model_triangle* collision_triangles;
    int32_t collider_count;
    model_collider* colliders;
    int32_t occlusion_triangle_count;
    model_triangle* occlusion_triangles;
    int32_t occluder_count;
    // Room for occluder_count collider-sized records is allocated; it is used as packed pairs.
    model_occluder* occluders;
};

// Surface materials, for footsteps and landings.
enum material : int32_t {
    MATERIAL_STONE = 0,
    MATERIAL_GROUND = 1,
    MATERIAL_WOOD = 2,
    MATERIAL_METAL = 3,
    MATERIAL_CARPET = 4,
    MATERIAL_CERAMIC = 5,
    MATERIAL_COUNT = 6,
};

extern registry models;
extern const char* const material_names[MATERIAL_COUNT]; // "stone", "ground", ... in material order

// The material of a name compared without regard to case; -1 for anything else.
int32_t material_from_name(const char* name);

// Zeroes the record and allocates points, normals, texcoords, triangles and subsets.
int model_create(model* record, int32_t point_count, int32_t triangle_count, int32_t subset_count);
// The optional arrays; point_weights gets point_count entries.
int model_create_weights(model* record, int32_t weight_count);
int model_create_colliders(model* record, int32_t collider_count, int32_t collision_triangle_count);
int model_create_occluders(model* record, int32_t occluder_count, int32_t occlusion_triangle_count);
// Releases every array that is present and zeroes the whole record.
int model_free(model* record);

// Smooth normals: the unnormalised face normals of every triangle a point belongs to, summed and
// normalised; a point on no triangle keeps a zero normal.
int model_compute_normals(model* record);
// Each collider's box over its collision triangles, and the model's box over all its points.
int model_compute_bounds(model* record);

// Reads a model file. Every index the file gives is checked against what it indexes, so an
// inconsistent file fails here rather than corrupting memory later. On failure everything is
// released and the record is zeroed.
int model_load_file(model* record, const char* path);

// The index registered for the name, else the model is loaded into a new slot; -1 on failure.
int32_t load_model(const char* name);
