#include "support/render_world.h"

#include <math.h>
#include <string.h>

#include "assets/animation.h"
#include "assets/item.h"
#include "assets/start_up.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/loop_state.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "render/visibility.h"
#include "render/world_pass.h"
#include "support/asset_state.h"

// The renderer's arrays that live from frame to frame start empty in every test, so that a test
// that makes one grow (or fail to) does so whatever ran before it.
static void release_renderer_arrays()
{
    release_visibility_arrays();
    release_world_pass_arrays();
    release_occluder_list();
}

void render_world_test::SetUp()
{
    reset_assets();
    release_renderer_arrays();
    focus_object = -1;
    focus_time = 0.0f;
    game_time = 0.0f;
    render_alpha = 1.0f;
    globals.keep_all(&debug_lighting, &debug_portal_culling, &debug_wireframe, &debug_show_colliders,
                     &debug_show_areas);
    debug_lighting = 1;
    debug_portal_culling = 1;
    debug_wireframe = 0;
    debug_show_colliders = 0;
    frame = std::make_unique<test_frame>(FRAME_SIZE, FRAME_SIZE);
    ASSERT_EQ(occlusion_buffers_create(), 1);
    // Index 0 of the model and animation registries stands for none, as at start-up.
    ASSERT_EQ(reserve_empty_model_and_animation(), 1);
    set_camera({0.0f, 0.0f, 0.0f});
    reset_deferred_triangles();
}

void render_world_test::TearDown()
{
    frame.reset();
    reset_assets();
    release_renderer_arrays();
    focus_object = -1;
    globals.restore();
}

int32_t render_world_test::add_room(vec3 box_min, vec3 box_max, int32_t bsp_node)
{
    int32_t index = registry_claim(&rooms);
    room* r = registry_at<room>(&rooms, index);
    r->box_min = box_min;
    r->box_max = box_max;
    r->bsp_node = bsp_node;
    return index;
}

int32_t render_world_test::add_portal(int32_t room_index, int32_t target, vec3 c0, vec3 c1, vec3 c2, vec3 c3)
{
    int32_t index = registry_claim(&portals);
    portal* p = registry_at<portal>(&portals, index);
    p->target_room = target;
    p->door = -1;
    p->corners[0] = c0;
    p->corners[1] = c1;
    p->corners[2] = c2;
    p->corners[3] = c3;
    p->normal = vec3_normalise(vec3_cross(vec3_sub(c1, c0), vec3_sub(c2, c0)));
    p->centre = vec3_scale(vec3_add(vec3_add(c0, c1), vec3_add(c2, c3)), 0.25f);
    p->plane_d = -vec3_dot(p->normal, p->centre);
    room* r = registry_at<room>(&rooms, room_index);
    if (r->portal_count == 0)
        r->first_portal = index;
    ++r->portal_count;
    return index;
}

int32_t render_world_test::add_door(int32_t portal_index, int32_t leaf_object, float closed_yaw)
{
    int32_t index = registry_claim(&doors);
    door* d = registry_at<door>(&doors, index);
    d->object = leaf_object;
    d->closed_yaw = closed_yaw;
    registry_at<portal>(&portals, portal_index)->door = index;
    return index;
}

int32_t render_world_test::add_object(int32_t room_index, int32_t model_index, vec3 position, float yaw, float pitch)
{
    int32_t index = registry_claim(&objects);
    object* o = registry_at<object>(&objects, index);
    o->model = model_index;
    o->position = o->previous_position = position;
    o->yaw = o->previous_yaw = yaw;
    o->pitch = o->previous_pitch = pitch;
    if (room_index < 0) {
        object_list_append(&dynamic_objects, index);
        return index;
    }
    room* r = registry_at<room>(&rooms, room_index);
    if (r->object_count == 0)
        r->first_object = index;
    ++r->object_count;
    return index;
}

void render_world_test::add_light(int list, int32_t room_index, vec3 position, float radius, float brightness,
                                  int32_t shadow)
{
    light_list* lights = list == 1 ? &flickering_lights : &steady_lights;
    int32_t index = light_list_alloc(lights);
    ASSERT_GE(index, 0);
    light* l = &lights->lights[index];
    l->room = room_index;
    l->position = l->previous_position = position;
    l->radius = radius;
    l->brightness = l->previous_brightness = brightness;
    l->shadow = shadow;
    l->flicker_style = list;
}

int32_t render_world_test::add_model(const std::vector<vec3>& points,
                                     const std::vector<triangle_corners>& triangles,
                                     const std::vector<subset_range>& subsets)
{
    model m;
    EXPECT_EQ(model_create(&m, static_cast<int32_t>(points.size()), static_cast<int32_t>(triangles.size()),
                           static_cast<int32_t>(subsets.size())),
              1);
    for (size_t i = 0; i < points.size(); ++i)
        m.points[i] = points[i];
    for (size_t i = 0; i < triangles.size(); ++i)
        m.triangles[i] = {{triangles[i].a, triangles[i].b, triangles[i].c}};
    for (size_t i = 0; i < subsets.size(); ++i)
        m.subsets[i] = {subsets[i].first, subsets[i].end, subsets[i].texture};
    model_compute_normals(&m);
    model_compute_bounds(&m);
    int32_t index = registry_claim(&models);
    *registry_at<model>(&models, index) = m;
    return index;
}

int32_t render_world_test::add_square_model(float x0, float y0, float x1, float y1, float z, int32_t texture)
{
    // Wound so that the eye at the origin sees the front: down the left side, then across.
    return add_model({{x0, y0, z}, {x0, y1, z}, {x1, y1, z}, {x1, y0, z}}, {{0, 1, 2}, {0, 2, 3}}, {{0, 2, texture}});
}

void render_world_test::make_occluder(int32_t model_index)
{
    model* m = registry_at<model>(&models, model_index);
    ASSERT_EQ(model_create_occluders(m, 1, m->triangle_count), 1);
    for (int32_t i = 0; i < m->triangle_count; ++i)
        m->occlusion_triangles[i] = m->triangles[i];
    m->occluders[0] = {0, m->triangle_count};
}

int32_t render_world_test::add_texture(uint16_t texel, uint8_t flags, uint8_t t_level, float e_level)
{
    int32_t index = registry_claim(&textures);
    texture* t = registry_at<texture>(&textures, index);
    EXPECT_EQ(texture_create(t, 1, 1), 1);
    t->texels[0] = texel;
    t->flags = flags;
    t->t_level = t_level;
    t->e_level = e_level;
    return index;
}

void render_world_test::set_camera(vec3 eye, float yaw, float pitch)
{
    camera_position[0] = eye.x;
    camera_position[1] = eye.y;
    camera_position[2] = eye.z;
    camera_yaw_sin = sinf(yaw);
    camera_yaw_cos = cosf(yaw);
    camera_pitch_sin = sinf(pitch);
    camera_pitch_cos = cosf(pitch);
    projection_scale = 1.0f;
    view_mapping_update();
    build_frustum(1.0f, 1.0f, projection_scale);
}
