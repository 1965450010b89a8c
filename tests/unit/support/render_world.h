// Worlds for the renderer's tests, built by hand through the registries: rooms with their portals
// and objects, lights, models and textures made in code, and a camera. The fixture starts every
// test from an empty world and a 64 x 64 frame, and puts everything back afterwards.
#pragma once

#include <gtest/gtest.h>

#include <stdint.h>

#include <memory>
#include <vector>

#include "assets/model.h"
#include "core/vec3.h"
#include "support/test_frame.h"

struct triangle_corners {
    int32_t a, b, c;
};

// Each subset: its triangles [first, end) and texture.
struct subset_range {
    int32_t first, end, texture;
};

class render_world_test : public testing::Test {
protected:
    static constexpr int32_t FRAME_SIZE = 64;

    void SetUp() override;
    void TearDown() override;

    // A room with its box; its portals and objects follow through add_portal and add_object.
    static int32_t add_room(vec3 box_min, vec3 box_max, int32_t bsp_node = 0);
    // A portal of `room` (the room's portals must be added one after another) leading to `target`;
    // its normal is (c1 - c0) x (c2 - c0), normalised, as the scene loader computes it.
    static int32_t add_portal(int32_t room, int32_t target, vec3 c0, vec3 c1, vec3 c2, vec3 c3);
    // A door filling `portal`, whose leaf is `leaf_object`, shut at closed_yaw.
    static int32_t add_door(int32_t portal, int32_t leaf_object, float closed_yaw);
    // A placed object in `room` (its static run; a room's objects must be added one after another),
    // or with room -1 a dynamic object outside all areas. Previous placement = current.
    static int32_t add_object(int32_t room, int32_t model, vec3 position, float yaw = 0.0f, float pitch = 0.0f);
    static void add_light(int list, int32_t room, vec3 position, float radius, float brightness, int32_t shadow = 0);
    // A model from points and triangles (texture coordinates all 0), normals and bounds derived.
    static int32_t add_model(const std::vector<vec3>& points, const std::vector<triangle_corners>& triangles,
                             const std::vector<subset_range>& subsets);
    // A flat square facing the eye at the origin looking along +z: corners (x0, y0) ... (x1, y1) at depth z.
    static int32_t add_square_model(float x0, float y0, float x1, float y1, float z, int32_t texture);
    // Makes every triangle of the model also one occluder group.
    static void make_occluder(int32_t model_index);
    // A one-texel texture registered in the texture registry.
    static int32_t add_texture(uint16_t texel, uint8_t flags = 0, uint8_t t_level = 0, float e_level = 0.0f);

    // The eye and its angles (radians), field of view 90 degrees; updates the view mapping and
    // the frustum for the frame.
    static void set_camera(vec3 eye, float yaw = 0.0f, float pitch = 0.0f);

    std::unique_ptr<test_frame> frame;
    // What the fixture and the tests derived from it change, put back after each test.
    saved_globals globals;
};
