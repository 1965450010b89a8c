#include "support/collision_scene.h"

#include <stdlib.h>

#include "assets/start_up.h"
#include "assets/world.h"

void mesh_collider(collision_mesh* mesh, int32_t material)
{
    int32_t next = static_cast<int32_t>(mesh->triangles.size());
    mesh->colliders.push_back({next, next, material, {0, 0, 0}, {0, 0, 0}});
}

void mesh_triangle(collision_mesh* mesh, vec3 a, vec3 b, vec3 c)
{
    if (mesh->colliders.empty())
        mesh_collider(mesh, MATERIAL_STONE);
    int32_t first = static_cast<int32_t>(mesh->points.size());
    mesh->points.push_back(a);
    mesh->points.push_back(b);
    mesh->points.push_back(c);
    mesh->triangles.push_back({{first, first + 1, first + 2}});
    mesh->colliders.back().end = static_cast<int32_t>(mesh->triangles.size());
}

void mesh_quad(collision_mesh* mesh, vec3 a, vec3 b, vec3 c, vec3 d, vec3 front)
{
    vec3 n = vec3_cross(vec3_sub(b, a), vec3_sub(c, a));
    if (vec3_dot(n, front) >= 0.0f) {
        mesh_triangle(mesh, a, b, c);
        mesh_triangle(mesh, a, c, d);
    } else {
        mesh_triangle(mesh, a, c, b);
        mesh_triangle(mesh, a, d, c);
    }
}

void mesh_box(collision_mesh* mesh, vec3 lo, vec3 hi)
{
    // Bottom (+y) and top (-y).
    mesh_quad(mesh, {lo.x, hi.y, lo.z}, {hi.x, hi.y, lo.z}, {hi.x, hi.y, hi.z}, {lo.x, hi.y, hi.z}, {0, 1, 0});
    mesh_quad(mesh, {lo.x, lo.y, lo.z}, {hi.x, lo.y, lo.z}, {hi.x, lo.y, hi.z}, {lo.x, lo.y, hi.z}, {0, -1, 0});
    // -x and +x.
    mesh_quad(mesh, {lo.x, lo.y, lo.z}, {lo.x, hi.y, lo.z}, {lo.x, hi.y, hi.z}, {lo.x, lo.y, hi.z}, {-1, 0, 0});
    mesh_quad(mesh, {hi.x, lo.y, lo.z}, {hi.x, hi.y, lo.z}, {hi.x, hi.y, hi.z}, {hi.x, lo.y, hi.z}, {1, 0, 0});
    // -z and +z.
    mesh_quad(mesh, {lo.x, lo.y, lo.z}, {hi.x, lo.y, lo.z}, {hi.x, hi.y, lo.z}, {lo.x, hi.y, lo.z}, {0, 0, -1});
    mesh_quad(mesh, {lo.x, lo.y, hi.z}, {hi.x, lo.y, hi.z}, {hi.x, hi.y, hi.z}, {lo.x, hi.y, hi.z}, {0, 0, 1});
}

void mesh_floor(collision_mesh* mesh, float x0, float z0, float x1, float z1, float y)
{
    mesh_quad(mesh, {x0, y, z0}, {x1, y, z0}, {x1, y, z1}, {x0, y, z1}, {0, -1, 0});
}

int32_t register_collision_model(const collision_mesh& mesh)
{
    int32_t index = registry_claim(&models);
    if (index < 0)
        abort();
    fill_collision_model(index, mesh);
    return index;
}

void fill_collision_model(int32_t model_index, const collision_mesh& mesh)
{
    model* record = registry_at<model>(&models, model_index);
    model_free(record);
    int32_t point_count = static_cast<int32_t>(mesh.points.size());
    int32_t triangle_count = static_cast<int32_t>(mesh.triangles.size());
    int32_t collider_count = static_cast<int32_t>(mesh.colliders.size());
    if (!model_create(record, point_count, 0, 0) || !model_create_colliders(record, collider_count, triangle_count))
        abort();
    for (int32_t i = 0; i < point_count; ++i)
        record->points[i] = mesh.points[i];
    for (int32_t i = 0; i < triangle_count; ++i)
        record->collision_triangles[i] = mesh.triangles[i];
    for (int32_t i = 0; i < collider_count; ++i)
        record->colliders[i] = mesh.colliders[i];
    model_compute_bounds(record);
}

int32_t place_object(int32_t model_index, vec3 position, float yaw, float pitch)
{
    int32_t index = registry_claim(&objects);
    if (index < 0)
        abort();
    object* thing = registry_at<object>(&objects, index);
    thing->model = model_index;
    thing->position = position;
    thing->yaw = yaw;
    thing->pitch = pitch;
    return index;
}

void start_collision_world()
{
    if (!create_player() || !reserve_empty_model_and_animation())
        abort();
}

void build_room_scene()
{
    start_collision_world();
    collision_mesh room;
    mesh_collider(&room, MATERIAL_STONE);
    mesh_floor(&room, -10, -10, 10, 10, 0);
    const float top = -4.0f;
    mesh_quad(&room, {-10, 0, 10}, {10, 0, 10}, {10, top, 10}, {-10, top, 10}, {0, 0, -1});
    mesh_quad(&room, {-10, 0, -10}, {10, 0, -10}, {10, top, -10}, {-10, top, -10}, {0, 0, 1});
    mesh_quad(&room, {10, 0, -10}, {10, 0, 10}, {10, top, 10}, {10, top, -10}, {-1, 0, 0});
    mesh_quad(&room, {-10, 0, -10}, {-10, 0, 10}, {-10, top, 10}, {-10, top, -10}, {1, 0, 0});
    place_object(register_collision_model(room), {0, 0, 0});

    collision_mesh platform;
    mesh_collider(&platform, MATERIAL_WOOD);
    mesh_box(&platform, {-1.5f, -0.4f, -1}, {1.5f, 0, 1});
    place_object(register_collision_model(platform), {0, 0, 4});

    collision_mesh crate;
    mesh_collider(&crate, MATERIAL_WOOD);
    mesh_box(&crate, {-0.5f, -0.6f, -0.5f}, {0.5f, 0, 0.5f});
    int32_t crate_model = register_collision_model(crate);
    place_object(crate_model, {-5, 0, 2}, 0.3f);
    place_object(crate_model, {5, 0, -3}, -0.7f);

    collision_mesh pillar;
    mesh_collider(&pillar, MATERIAL_STONE);
    mesh_box(&pillar, {-0.4f, -3, -0.4f}, {0.4f, 0, 0.4f});
    int32_t pillar_model = register_collision_model(pillar);
    for (int i = 0; i < 4; ++i)
        place_object(pillar_model, {i < 2 ? -6.0f : 6.0f, 0, (i % 2) ? 6.0f : -6.0f}, 0.785f * static_cast<float>(i));
}
