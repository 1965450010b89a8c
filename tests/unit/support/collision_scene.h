// Collision geometry made in code for the tests and benchmarks of the collision queries and the
// player's movement: models with colliders registered directly, and scene objects placed with them.
#pragma once

#include <stdint.h>

#include <vector>

#include "assets/model.h"
#include "core/vec3.h"

// A model's collision triangles, grouped into colliders as they are added.
struct collision_mesh {
    std::vector<vec3> points;
    std::vector<model_triangle> triangles;
    std::vector<model_collider> colliders;
};

// The triangles added from now on belong to a new collider of this material.
void mesh_collider(collision_mesh* mesh, int32_t material);
// One triangle with its winding as given: its front is the side of (b - a) x (c - a).
void mesh_triangle(collision_mesh* mesh, vec3 a, vec3 b, vec3 c);
// The quad a b c d as the triangles (a, b, c) and (a, c, d), wound to face `front`.
void mesh_quad(collision_mesh* mesh, vec3 a, vec3 b, vec3 c, vec3 d, vec3 front);
// The six faces of a box, facing out.
void mesh_box(collision_mesh* mesh, vec3 min, vec3 max);
// A level square at height y from (x0, z0) to (x1, z1), facing up (toward -y).
void mesh_floor(collision_mesh* mesh, float x0, float z0, float x1, float z1, float y);

// A new model slot holding the mesh's collision data (no visible triangles); its index.
int32_t register_collision_model(const collision_mesh& mesh);
// Puts the mesh's collision data into the model slot that is already taken.
void fill_collision_model(int32_t model_index, const collision_mesh& mesh);
// A new static scene object with that model; its index.
int32_t place_object(int32_t model_index, vec3 position, float yaw = 0.0f, float pitch = 0.0f);

// What game start-up does before the scene is loaded: the player takes object 0, and model 0 and
// animation 0 are reserved as the placeholders. Call on empty registries.
void start_collision_world();

// A room to walk in: a 20 x 20 stone floor at y = 0 with walls 4 high facing in, a wooden
// platform 0.4 high, a crate 0.6 high and a few taller boxes. Starts the world first.
void build_room_scene();
