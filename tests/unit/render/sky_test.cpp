#include <gtest/gtest.h>

#include <math.h>

#include "assets/texture.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "platform/platform.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "render/raster.h"
#include "render/sky.h"
#include "render/world_pass.h"
#include "support/render_world.h"

namespace {

const float QUARTER_TURN = 1.5707964f;
// Face k is painted in this colour.
uint16_t face_colour(int32_t k)
{
    return static_cast<uint16_t>(0x8000 | (k + 1) << 10 | (k + 1));
}

// Six one-colour faces; the coarse grid open everywhere (as start-up leaves it).
class sky_test : public render_world_test {
protected:
    void SetUp() override
    {
        render_world_test::SetUp();
        for (int32_t k = 0; k < SKY_FACES; ++k)
            sky_textures[k] = add_texture(face_colour(k));
    }

    // The colour at the centre of the frame after drawing the sky with the eye turned so.
    uint16_t centre_after_looking(float yaw, float pitch)
    {
        set_camera({0, 0, 0}, yaw, pitch);
        draw_sky();
        return frame->pixel(32, 32);
    }
};

} // namespace

TEST_F(sky_test, sky_looking_along_plus_x_uses_face_0)
{
    EXPECT_EQ(centre_after_looking(QUARTER_TURN, 0.0f), face_colour(0));
}

TEST_F(sky_test, sky_looking_along_minus_x_uses_face_1)
{
    EXPECT_EQ(centre_after_looking(-QUARTER_TURN, 0.0f), face_colour(1));
}

// The world's y axis points down: a positive pitch looks down, toward +y.
TEST_F(sky_test, sky_looking_toward_plus_y_uses_face_2)
{
    EXPECT_EQ(centre_after_looking(0.0f, QUARTER_TURN), face_colour(2));
}

TEST_F(sky_test, sky_looking_toward_minus_y_uses_face_3)
{
    EXPECT_EQ(centre_after_looking(0.0f, -QUARTER_TURN), face_colour(3));
}

// The sky's z runs against the world's: the images were painted for this mapping.
TEST_F(sky_test, sky_looking_along_plus_z_uses_face_5)
{
    EXPECT_EQ(centre_after_looking(0.0f, 0.0f), face_colour(5));
}

TEST_F(sky_test, sky_looking_along_minus_z_uses_face_4)
{
    EXPECT_EQ(centre_after_looking(2.0f * QUARTER_TURN, 0.0f), face_colour(4));
}

TEST_F(sky_test, sky_ties_between_components_go_to_x_then_y)
{
    const float diagonal = 0.70710677f;
    struct turn {
        float yaw_sin, yaw_cos, pitch_sin, pitch_cos;
        int32_t face;
    };
    const turn turns[] = {
        {diagonal, diagonal, 0.0f, 1.0f, 0}, // |x| = |z|
        {1.0f, 0.0f, diagonal, diagonal, 0}, // |x| = |y|
        {0.0f, 1.0f, diagonal, diagonal, 2}, // |y| = |z|
    };
    for (const turn& t : turns) {
        camera_yaw_sin = t.yaw_sin;
        camera_yaw_cos = t.yaw_cos;
        camera_pitch_sin = t.pitch_sin;
        camera_pitch_cos = t.pitch_cos;
        draw_sky();
        EXPECT_EQ(frame->pixel(32, 32), face_colour(t.face)) << t.face;
    }
}

TEST_F(sky_test, a_face_seen_along_plus_x_is_upright_and_not_mirrored)
{
    texture* face = registry_at<texture>(&textures, sky_textures[0]);
    texture_free(face);
    ASSERT_EQ(texture_create(face, 2, 2), 1);
    const uint16_t corners[4] = {0x8001, 0x8002, 0x8003, 0x8004}; // top left, top right, bottom left, bottom right
    for (int32_t i = 0; i < 4; ++i)
        face->texels[i] = corners[i];
    set_camera({0, 0, 0}, QUARTER_TURN, 0.0f);
    draw_sky();
    EXPECT_EQ(frame->pixel(16, 16), corners[0]);
    EXPECT_EQ(frame->pixel(48, 16), corners[1]);
    EXPECT_EQ(frame->pixel(16, 48), corners[2]);
    EXPECT_EQ(frame->pixel(48, 48), corners[3]);
}

TEST_F(sky_test, sky_texels_are_written_unchanged_without_depth_or_transparency)
{
    for (int32_t k = 0; k < SKY_FACES; ++k)
        registry_at<texture>(&textures, sky_textures[k])->texels[0] = 0x1234; // no opacity bit
    draw_sky();
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x) {
            ASSERT_EQ(frame->pixel(x, y), 0x1234);
            ASSERT_EQ(frame->depth_at(x, y), 0.0f);
        }
}

TEST_F(sky_test, a_frame_that_occluders_cover_wholly_draws_no_sky_pixel)
{
    int32_t texture = add_texture(0xFFFF);
    int32_t wall = add_square_model(-1, -1, 1, 1, 2.0f, texture);
    make_occluder(wall);
    placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);
    rasterize_occluders(registry_at<model>(&models, wall), &at_origin);
    reduce_occlusion_buffer();
    draw_sky();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(sky_test, a_block_with_one_fine_pixel_uncovered_gets_sky_over_all_64_pixels_and_the_world_draws_over_it)
{
    for (int32_t i = 0; i < occlusion_fine_width * occlusion_fine_height; ++i)
        depth_buffer[i] = 1.0f;
    depth_buffer[9 * occlusion_fine_width + 6] = 0.0f; // fine (6, 9): coarse cell (1, 2)
    reduce_occlusion_buffer();
    draw_sky();
    EXPECT_EQ(frame->drawn(), 64);
    for (int32_t y = 16; y < 24; ++y)
        for (int32_t x = 8; x < 16; ++x)
            ASSERT_EQ(frame->pixel(x, y), face_colour(5)) << x << "," << y;

    debug_lighting = 0;
    int32_t texture = add_texture(0x8000 | 31 << 5);
    int32_t wall = add_square_model(-1, -1, 1, 1, 2.0f, texture);
    int32_t wall_object = add_object(-1, wall, {0, 0, 0});
    placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);
    draw_scene_object(wall_object, &at_origin, -1);
    uint16_t wall_colour = frame->pixel(0, 0);
    EXPECT_NE(wall_colour, 0);
    for (int32_t y = 16; y < 24; ++y)
        for (int32_t x = 8; x < 16; ++x)
            ASSERT_EQ(frame->pixel(x, y), wall_colour);
}

// The sky written plainly, one pixel at a time: what the drawing must give for every pixel of an
// open cell, however its loop is arranged.
static uint16_t plain_sky_pixel(int32_t x, int32_t y, const texture* const faces[SKY_FACES])
{
    float width = static_cast<float>(frame_width), height = static_cast<float>(frame_height);
    float kx = width / height > 1.0f ? width / height : 1.0f;
    float s = projection_scale;
    float ny = (static_cast<float>(y) / height - 0.5f) / s;
    float nx = (static_cast<float>(x) / width - 0.5f) * kx / s;
    float f = camera_pitch_cos - ny * camera_pitch_sin;
    float dx = nx * camera_yaw_cos + f * camera_yaw_sin;
    float dy = ny * camera_pitch_cos + camera_pitch_sin;
    float dz = nx * camera_yaw_sin - f * camera_yaw_cos;
    float ax = fabsf(dx), ay = fabsf(dy), az = fabsf(dz);
    float a, b;
    int32_t face;
    if (ax >= ay && ax >= az) {
        a = dy / ax;
        b = (dx > 0.0f ? dz : -dz) / ax;
        face = dx > 0.0f ? 0 : 1;
    } else if (ay >= az) {
        b = dx / ay;
        a = (dy > 0.0f ? dz : -dz) / ay;
        face = dy > 0.0f ? 2 : 3;
    } else {
        a = dy / az;
        b = (dz > 0.0f ? -dx : dx) / az;
        face = dz > 0.0f ? 4 : 5;
    }
    float u = (b + 1.0f) * 0.5f, v = (a + 1.0f) * 0.5f;
    const texture* tex = faces[face];
    int32_t column = (static_cast<int32_t>(u * tex->width_f) - (u < 0.0f)) & tex->width_mask;
    int32_t row = (static_cast<int32_t>(v * tex->height_f) - (v < 0.0f)) & tex->height_mask;
    return tex->texels[(row << tex->row_shift) | column];
}

TEST_F(sky_test, sky_matches_the_plain_per_pixel_rule_in_every_direction)
{
    const texture* faces[SKY_FACES];
    // Faces of different sizes, so that pixels side by side on two faces wrap each by its own.
    const int32_t sizes[SKY_FACES][2] = {{16, 8}, {8, 16}, {32, 4}, {4, 4}, {16, 16}, {2, 8}};
    uint32_t state = 1;
    for (int32_t k = 0; k < SKY_FACES; ++k) {
        texture* t = registry_at<texture>(&textures, sky_textures[k]);
        platform_heap_free(t->texels); // the one-colour texel, made anew as patterned ones
        ASSERT_EQ(texture_create(t, sizes[k][0], sizes[k][1]), 1);
        for (int32_t i = 0; i < sizes[k][0] * sizes[k][1]; ++i) {
            state = state * 1103515245u + 12345u;
            t->texels[i] = static_cast<uint16_t>(0x8000 | (state >> 17));
        }
        faces[k] = t;
    }
    // Four and eight lanes at a time (eight only where the processor runs it).
    for (int lanes = 4; lanes <= widest_pixel_loop_lanes(); lanes *= 2) {
        pixel_loop_lanes = lanes;
        for (int32_t turn = 0; turn < 40; ++turn) {
            // Yaws and pitches all round, straight up and down among them.
            float yaw = static_cast<float>(turn) * 0.41f - 8.0f;
            float pitch = turn % 10 == 0 ? QUARTER_TURN : turn % 10 == 5 ? -QUARTER_TURN
                                                                         : static_cast<float>(turn % 7) * 0.45f - 1.4f;
            set_camera({0, 0, 0}, yaw, pitch);
            draw_sky();
            int32_t differ = 0;
            for (int32_t y = 0; y < 64; ++y)
                for (int32_t x = 0; x < 64; ++x)
                    differ += frame->pixel(x, y) != plain_sky_pixel(x, y, faces);
            EXPECT_EQ(differ, 0) << lanes << " lanes, yaw " << yaw << ", pitch " << pitch;
        }
    }
    pixel_loop_lanes = widest_pixel_loop_lanes();
}
