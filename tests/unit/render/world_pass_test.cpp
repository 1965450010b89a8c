#include <gtest/gtest.h>

#include <math.h>
#include <stdlib.h>

#include <algorithm>
#include <vector>

#include "assets/animation.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/loop_state.h"
#include "render/colour_tables.h"
#include "render/frame.h"
#include "render/lights.h"
#include "render/pixel_pipeline.h"
#include "render/world_pass.h"
#include "support/render_world.h"
#include "support/test_heap.h"

namespace {

const uint16_t GREY = 0x8000 | 20 << 10 | 20 << 5 | 20;
const uint16_t RED = 0x8000 | 28 << 10 | 4 << 5 | 4;
const uint16_t BLUE = 0x8000 | 4 << 10 | 8 << 5 | 30;

// A texel as the world pass shows it at a light level: tinted with the world's row.
uint16_t lit(uint16_t texel, uint8_t level)
{
    return shade_texel(texel, level, colour_table_row(colour_tables.red_temperature, WORLD_TINT),
                       colour_table_row(colour_tables.blue_temperature, WORLD_TINT));
}

uint16_t blended(uint16_t below, uint16_t colour, uint8_t blend)
{
    return blend_pixel(below, colour, colour_table_row(colour_tables.dimming, blend),
                       colour_table_row(colour_tables.luminance, blend));
}

class world_pass : public render_world_test {
protected:
    placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);

    // An object outside all areas at the origin, drawn with its own placement.
    int32_t place(int32_t model_index)
    {
        return add_object(-1, model_index, {0, 0, 0});
    }
    void draw(int32_t object_index, int32_t light_context = -1)
    {
        const object* o = registry_at<object>(&objects, object_index);
        placement p = placement_from_angles(o->position, o->yaw, o->pitch);
        draw_scene_object(object_index, &p, light_context);
    }
    void finish_frame()
    {
        sort_deferred_triangles();
        draw_deferred_triangles();
    }
    // The same centre colour with lighting on and with fullbright.
    void expect_centre_whatever_the_lighting(int32_t object_index, uint16_t colour)
    {
        for (int32_t lighting : {1, 0}) {
            debug_lighting = lighting;
            clear_frame();
            draw(object_index);
            EXPECT_EQ(frame->pixel(32, 32), colour) << "lighting " << lighting;
        }
    }
    void clear_frame()
    {
        std::fill(frame->colour.begin(), frame->colour.end(), 0);
        std::fill(frame->depth.begin(), frame->depth.end(), 0.0f);
        reset_deferred_triangles();
    }
};

} // namespace

TEST_F(world_pass, a_triangle_crossing_the_near_plane_is_drawn_as_its_clipped_part)
{
    debug_lighting = 0;
    int32_t texture = add_texture(GREY);
    // Two corners at the left edge of the view at depth 2, the third behind the eye: what is left
    // in front is a quadrilateral that opens to the right over the whole frame.
    int32_t wedge = add_model({{-1, -1, 2}, {-1, 1, 2}, {1, 0, -1}}, {{0, 1, 2}}, {{0, 1, texture}});
    draw(place(wedge));
    EXPECT_EQ(frame->drawn(), 64 * 64);
    EXPECT_EQ(frame->pixel(63, 32), lit(GREY, 0));
}

TEST_F(world_pass, a_triangle_with_two_corners_behind_the_near_plane_is_drawn_as_the_triangle_left_in_front)
{
    debug_lighting = 0;
    int32_t texture = add_texture(GREY);
    // One corner straight ahead at depth 2 (the frame's centre), two behind the eye below it to
    // either side: each cut edge keeps |x| = y, so what is left in front is a triangle from the
    // centre opening downward between the two diagonals.
    int32_t fan = add_model({{0, 0, 2}, {-1, 1, -1}, {1, 1, -1}}, {{0, 1, 2}}, {{0, 1, texture}});
    draw(place(fan));
    EXPECT_GT(frame->drawn(), 0);
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x) {
            float across = fabsf(x + 0.5f - 32.0f), down = y + 0.5f - 32.0f;
            if (across == down)
                continue; // a centre on a cut edge may go either way
            EXPECT_EQ(frame->pixel(x, y), across < down ? lit(GREY, 0) : 0) << x << "," << y;
        }
}

TEST_F(world_pass, a_triangle_wholly_behind_the_near_plane_is_not_drawn)
{
    debug_lighting = 0;
    int32_t texture = add_texture(GREY);
    int32_t behind = add_model({{-1, -1, 0.005f}, {-1, 1, -1}, {1, 0, 0.009f}}, {{0, 1, 2}}, {{0, 1, texture}});
    draw(place(behind));
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(world_pass, an_object_without_a_model_has_the_empty_model_0_and_draws_nothing)
{
    debug_wireframe = 1; // not even outlines
    draw(place(0));
    finish_frame();
    EXPECT_EQ(frame->drawn(), 0);
    EXPECT_TRUE(std::all_of(frame->depth.begin(), frame->depth.end(), [](float d) { return d == 0.0f; }));
}

TEST_F(world_pass, with_fullbright_every_plain_surface_is_drawn_at_shade_0)
{
    int32_t texture = add_texture(GREY);
    int32_t wall = add_square_model(-1, -1, 1, 1, 2, texture);
    int32_t object = place(wall);
    draw(object); // lit, with no lights at all: the darkest level
    EXPECT_EQ(frame->pixel(32, 32), lit(GREY, 63));
    clear_frame();
    debug_lighting = 0;
    draw(object);
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x)
            ASSERT_EQ(frame->pixel(x, y), lit(GREY, 0));
}

TEST_F(world_pass, a_fixed_shade_texture_keeps_its_shade_with_lighting_on_or_off)
{
    int32_t texture = add_texture(GREY, TEXTURE_FIXED_LIGHT, 0, 0.5f);
    expect_centre_whatever_the_lighting(place(add_square_model(-1, -1, 1, 1, 2, texture)), lit(GREY, 31));
}

TEST_F(world_pass, a_fixed_shade_subset_also_shades_the_corners_it_shares_with_later_subsets)
{
    debug_lighting = 0;
    int32_t dark = add_texture(GREY, TEXTURE_FIXED_LIGHT, 0, 1.0f);
    int32_t plain = add_texture(GREY);
    std::vector<vec3> corners = {{-1, -1, 2}, {-1, 1, 2}, {1, 1, 2}, {1, -1, 2}};
    // Lower-left half first with the fixed shade, then the upper-right half sharing its diagonal.
    int32_t shared = add_model(corners, {{0, 1, 2}, {0, 2, 3}}, {{0, 1, dark}, {1, 2, plain}});
    int32_t alone = add_model(corners, {{0, 1, 2}, {0, 2, 3}}, {{1, 2, plain}});
    draw(place(alone));
    EXPECT_EQ(frame->pixel(34, 30), lit(GREY, 0));
    clear_frame();
    draw(place(shared));
    EXPECT_NE(frame->pixel(34, 30), lit(GREY, 0)); // darkened toward the shared diagonal
    EXPECT_EQ(frame->pixel(20, 50), lit(GREY, 63));
}

TEST_F(world_pass, the_focused_object_pulses_between_0_4_and_0_8_whatever_its_lighting)
{
    int32_t texture = add_texture(GREY);
    int32_t object = place(add_square_model(-1, -1, 1, 1, 2, texture));
    focus_object = object;
    focus_time = 2.0f;
    game_time = 3.0f; // half a second into the wave: 0.4 up to 0.8 after 0.4, then down to 0.7
    expect_centre_whatever_the_lighting(object, lit(GREY, 44));
}

TEST_F(world_pass, steady_light_is_worked_out_once_and_flickering_light_every_frame)
{
    int32_t texture = add_texture(GREY);
    int32_t object = place(add_square_model(-1, -1, 1, 1, 2, texture));
    add_light(LIGHTS_STEADY, -1, {0, 0, 0}, 100.0f, 0.5f);
    draw(object);
    uint16_t half_lit = frame->pixel(32, 32);
    EXPECT_NE(half_lit, lit(GREY, 63));
    steady_lights.lights[0].brightness = 1.0f; // too late: the object's steady light is kept
    clear_frame();
    draw(object);
    EXPECT_EQ(frame->pixel(32, 32), half_lit);

    add_light(LIGHTS_FLICKERING, -1, {0, 0, 0}, 100.0f, 0.9f);
    clear_frame();
    draw(object);
    uint16_t flickered = frame->pixel(32, 32);
    EXPECT_NE(flickered, half_lit); // the brighter of the two wins
    flickering_lights.lights[0].brightness = flickering_lights.lights[0].previous_brightness = 0.0f;
    clear_frame();
    draw(object);
    EXPECT_EQ(frame->pixel(32, 32), half_lit);
}

TEST_F(world_pass, an_object_whose_shade_cache_cannot_be_had_is_not_drawn_that_frame)
{
    int32_t texture = add_texture(GREY);
    // More corners than any other test's model, so that this object's cache must be allocated.
    std::vector<vec3> points(700, vec3{0, 0, 5});
    points[0] = {-1, -1, 2};
    points[1] = {-1, 1, 2};
    points[2] = {1, 1, 2};
    int32_t object = place(add_model(points, {{0, 1, 2}}, {{0, 1, texture}}));
    debug_lighting = 0;
    draw(object); // the working array grows here
    clear_frame();
    debug_lighting = 1;
    test_heap::reset();
    test_heap::fail_request(1);
    draw(object);
    test_heap::reset();
    EXPECT_EQ(frame->drawn(), 0);
    draw(object);
    EXPECT_GT(frame->drawn(), 0);
}

TEST_F(world_pass, translucent_triangles_are_drawn_after_every_opaque_one)
{
    debug_lighting = 0;
    int32_t glass = add_texture(BLUE, TEXTURE_TRANSLUCENT, 32);
    int32_t stone = add_texture(RED);
    int32_t near_glass = place(add_square_model(-1, -1, 1, 1, 2, glass));
    int32_t far_wall = place(add_square_model(-2, -2, 2, 2, 4, stone));
    draw(near_glass);
    draw(far_wall);
    EXPECT_EQ(frame->pixel(32, 32), lit(RED, 0)); // the glass waits
    finish_frame();
    EXPECT_EQ(frame->pixel(32, 32), blended(lit(RED, 0), lit(BLUE, 0), 32));
}

TEST_F(world_pass, translucent_triangles_are_drawn_farthest_first_and_never_hide_one_another)
{
    debug_lighting = 0;
    int32_t red_glass = add_texture(RED, TEXTURE_TRANSLUCENT, 32);
    int32_t blue_glass = add_texture(BLUE, TEXTURE_TRANSLUCENT, 20);
    int32_t near_pane = place(add_square_model(-1, -1, 1, 1, 2, red_glass));
    int32_t far_pane = place(add_square_model(-2, -2, 2, 2, 4, blue_glass));
    draw(near_pane);
    draw(far_pane);
    finish_frame();
    uint16_t expected = blended(blended(0, lit(BLUE, 0), 20), lit(RED, 0), 32);
    EXPECT_NE(expected, blended(blended(0, lit(RED, 0), 32), lit(BLUE, 0), 20));
    EXPECT_EQ(frame->pixel(32, 32), expected);
    EXPECT_EQ(frame->depth_at(32, 32), 0.0f);
}

TEST_F(world_pass, deferred_triangles_compare_farthest_first)
{
    deferred_triangle near = {}, far = {};
    near.depth_key = 2.0f;
    far.depth_key = 5.0f;
    EXPECT_EQ(compare_deferred_depth(&near, &far), 1);
    EXPECT_EQ(compare_deferred_depth(&far, &near), -1);
    EXPECT_EQ(compare_deferred_depth(&near, &near), 0);
}

TEST_F(world_pass, a_deferred_triangle_keeps_its_mean_depth_texture_and_camera_space_corners)
{
    int32_t glass = add_texture(BLUE, TEXTURE_TRANSLUCENT, 8);
    int32_t pane = place(add_model({{-1, -1, 2}, {-1, 1, 3}, {1, 1, 7}}, {{0, 1, 2}}, {{0, 1, glass}}));
    set_camera({0, 0, -1});
    draw(pane);
    ASSERT_EQ(deferred_count, 1);
    EXPECT_FLOAT_EQ(deferred_triangles[0].depth_key, 5.0f);
    EXPECT_EQ(deferred_triangles[0].texture, glass);
    EXPECT_FLOAT_EQ(deferred_triangles[0].vertices[2].z, 8.0f);
    reset_deferred_triangles();
    EXPECT_EQ(deferred_count, 0);
}

TEST_F(world_pass, the_deferred_list_grows_by_1024_records_and_drops_what_it_cannot_hold)
{
    debug_lighting = 0; // no shade caches to allocate
    int32_t glass = add_texture(BLUE, TEXTURE_TRANSLUCENT, 8);
    std::vector<triangle_corners> many(2048, triangle_corners{0, 1, 2});
    int32_t panes = place(add_model({{-1, -1, 2}, {-1, 1, 2}, {1, 1, 2}}, many, {{0, 2048, glass}}));
    int32_t one_more = place(add_model({{-1, -1, 2}, {-1, 1, 2}, {1, 1, 2}}, {{0, 1, 2}}, {{0, 1, glass}}));
    test_heap::reset();
    draw(panes);
    ASSERT_EQ(deferred_count, 2048);
    std::vector<size_t> growth = test_heap::sizes_in_units_of(sizeof(deferred_triangle));
    ASSERT_FALSE(growth.empty());
    EXPECT_EQ(growth.back(), 2048u);
    for (size_t records : growth)
        EXPECT_EQ(records % 1024, 0u);
    test_heap::reset();
    test_heap::fail_request(1);
    draw(one_more);
    test_heap::reset();
    EXPECT_EQ(deferred_count, 2048);
}

TEST_F(world_pass, a_back_facing_triangle_is_drawn_only_when_its_texture_is_double_sided)
{
    debug_lighting = 0;
    // Wound away from the eye.
    std::vector<vec3> corners = {{-1, -1, 2}, {1, 1, 2}, {-1, 1, 2}};
    int32_t one_sided = place(add_model(corners, {{0, 1, 2}}, {{0, 1, add_texture(GREY)}}));
    int32_t two_sided = place(add_model(corners, {{0, 1, 2}}, {{0, 1, add_texture(GREY, TEXTURE_DOUBLE_SIDED)}}));
    draw(one_sided);
    EXPECT_EQ(frame->drawn(), 0);
    draw(two_sided);
    EXPECT_GT(frame->drawn(), 0);
}

TEST_F(world_pass, a_back_facing_translucent_triangle_is_skipped_too_unless_double_sided)
{
    debug_lighting = 0;
    std::vector<vec3> corners = {{-1, -1, 2}, {1, 1, 2}, {-1, 1, 2}};
    int32_t one_sided = place(add_model(corners, {{0, 1, 2}}, {{0, 1, add_texture(GREY, TEXTURE_TRANSLUCENT, 32)}}));
    int32_t two_sided = place(add_model(
        corners, {{0, 1, 2}}, {{0, 1, add_texture(GREY, TEXTURE_TRANSLUCENT | TEXTURE_DOUBLE_SIDED, 32)}}));
    draw(one_sided);
    finish_frame();
    EXPECT_EQ(frame->drawn(), 0);
    reset_deferred_triangles();
    draw(two_sided);
    finish_frame();
    EXPECT_GT(frame->drawn(), 0);
}

TEST_F(world_pass, wireframe_outlines_every_drawn_triangle_in_white)
{
    debug_lighting = 0;
    debug_wireframe = 1;
    int32_t object = place(add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 2, add_texture(GREY)));
    draw(object);
    // The square spans 16 ... 48 on screen; its left side and its diagonal are outlined.
    EXPECT_EQ(frame->pixel(16, 30), 0xFFFF);
    EXPECT_EQ(frame->pixel(32, 32), 0xFFFF);
    EXPECT_EQ(frame->pixel(30, 34), lit(GREY, 0));
}

TEST_F(world_pass, environment_mapping_reflects_the_view_about_the_normal)
{
    clip_vertex facing = {0, 0, 2, 0, 0, -1, 7, 7, 0};
    environment_map_vertex(&facing);
    EXPECT_FLOAT_EQ(facing.u, 0.5f);
    EXPECT_FLOAT_EQ(facing.v, 0.5f);
    clip_vertex tilted = {0, 0, 2, 0.6f, 0, -0.8f, 0, 0, 0};
    environment_map_vertex(&tilted);
    EXPECT_FLOAT_EQ(tilted.u, (2.0f * 0.8f * 0.6f + 1.0f) * 0.5f);
    EXPECT_FLOAT_EQ(tilted.v, 0.5f);
    // The view direction goes back into world axes: turned a quarter to +x, the eye lies at -x
    // of a point straight ahead.
    set_camera({0, 0, 0}, 1.5707964f, 0.0f);
    clip_vertex ahead = {0, 0, 2, -1, 0, 0, 0, 0, 0};
    environment_map_vertex(&ahead);
    EXPECT_NEAR(ahead.u, (2.0f * 1.0f * -1.0f + 1.0f + 1.0f) * 0.5f, 1e-6f);
}

namespace {

// One bone, two identical keys at 0 and 1 s, or two keys moving it from `from` to `to`.
int32_t add_one_bone_animation(vec3 from, vec3 to, const float rotation[4])
{
    animation a;
    EXPECT_EQ(animation_create(&a, 1, 2), 1);
    a.parents[0] = -1;
    a.frame_times[0] = 0.0f;
    a.frame_times[1] = 1.0f;
    a.poses[0].translation = from;
    a.poses[1].translation = to;
    for (int32_t k = 0; k < 4; ++k)
        a.poses[0].rotation[k] = a.poses[1].rotation[k] = rotation[k];
    int32_t index = registry_claim(&animations);
    *registry_at<animation>(&animations, index) = a;
    return index;
}

// Gives every point of the model one weight of factor 1 on bone 0 at the offset given.
void weigh_points(int32_t model_index, const std::vector<vec3>& offsets)
{
    model* m = registry_at<model>(&models, model_index);
    ASSERT_EQ(model_create_weights(m, m->point_count), 1);
    for (int32_t i = 0; i < m->point_count; ++i) {
        m->weights[i] = {0, offsets[static_cast<size_t>(i)], 1.0f};
        m->point_weights[i] = {i, 1};
    }
}

} // namespace

TEST_F(world_pass, skinning_turns_each_offset_by_q_v_q_conjugate_which_also_scales_by_a_long_quaternion)
{
    debug_lighting = 0;
    int32_t texture = add_texture(GREY);
    std::vector<vec3> target = {{-1, -1, 2}, {-1, 1, 2}, {1, 1, 2}};
    draw(place(add_model(target, {{0, 1, 2}}, {{0, 1, texture}})));
    std::vector<bool> expected = frame->mask();
    clear_frame();
    // The model's own points lie behind the eye; the pose puts them on the target. q = (0, 0, 1, 1)
    // turns a quarter about z (x to y) and, being of squared length 2, doubles the offset.
    const float quarter_and_double[4] = {0, 0, 1, 1};
    int32_t skinned = add_model({{0, 0, -5}, {0, 0, -5}, {0, 0, -5}}, {{0, 1, 2}}, {{0, 1, texture}});
    weigh_points(skinned, {{-0.5f, 0.5f, 0}, {0.5f, 0.5f, 0}, {0.5f, -0.5f, 0}});
    int32_t posed = place(skinned);
    registry_at<object>(&objects, posed)->animation =
        add_one_bone_animation({0, 0, 2}, {0, 0, 2}, quarter_and_double);
    game_time = 0.5f;
    draw(posed);
    EXPECT_GT(frame->drawn(), 0);
    EXPECT_EQ(frame->mask(), expected);
}

TEST_F(world_pass, an_animation_plays_from_its_start_time_modulo_its_last_key)
{
    debug_lighting = 0;
    int32_t texture = add_texture(GREY);
    std::vector<vec3> offsets = {{-0.5f, -0.5f, 0}, {-0.5f, 0.5f, 0}, {0.5f, 0.5f, 0}};
    // A quarter of the way from x = 0 to x = 2: moved right by 0.5.
    draw(place(add_model({{0, -0.5f, 3}, {0, 0.5f, 3}, {1, 0.5f, 3}}, {{0, 1, 2}}, {{0, 1, texture}})));
    std::vector<bool> expected = frame->mask();
    clear_frame();
    const float unturned[4] = {0, 0, 0, 1};
    int32_t walking = add_model({{0, 0, -5}, {0, 0, -5}, {0, 0, -5}}, {{0, 1, 2}}, {{0, 1, texture}});
    weigh_points(walking, offsets);
    int32_t posed = place(walking);
    object* o = registry_at<object>(&objects, posed);
    o->animation = add_one_bone_animation({0, 0, 3}, {2, 0, 3}, unturned);
    o->animation_start = 10.0f;
    game_time = 13.25f; // 3.25 s into a loop of 1 s
    draw(posed);
    EXPECT_EQ(frame->mask(), expected);
}

TEST_F(world_pass, equally_far_translucent_panes_blend_in_the_draw_lists_order_when_objects_are_drawn_out_of_it)
{
    debug_lighting = 0;
    // Three panes in one plane, so that their sort keys tie: the blend depends on their order.
    const uint16_t colours[3] = {RED, BLUE, GREY};
    int32_t panes[3];
    for (int32_t k = 0; k < 3; ++k)
        panes[k] = place(add_square_model(-1, -1, 1, 1, 3.0f, add_texture(colours[k], TEXTURE_TRANSLUCENT, 20)));
    set_camera({0, 0, 0});

    for (int32_t k = 0; k < 3; ++k)
        draw(panes[k]);
    finish_frame();
    std::vector<uint16_t> in_order = frame->colour;

    clear_frame();
    ASSERT_EQ(begin_deferring_by_place(3), 1);
    for (int32_t place : {2, 0, 1}) {
        defer_for_place(place);
        draw(panes[place]);
    }
    regroup_deferred_triangles();
    finish_frame();
    EXPECT_EQ(frame->colour, in_order);
    EXPECT_NE(frame->pixel(32, 32), 0);
}

TEST_F(world_pass, deferred_triangles_stay_as_added_when_there_is_no_room_to_note_their_places)
{
    int32_t glass = add_texture(BLUE, TEXTURE_TRANSLUCENT, 8);
    int32_t near_pane = place(add_square_model(-1, -1, 1, 1, 3.0f, glass));
    int32_t far_pane = place(add_square_model(-1, -1, 1, 1, 5.0f, glass));
    set_camera({0, 0, 0});
    test_heap::fail_request(1);
    EXPECT_EQ(begin_deferring_by_place(2), 0);
    defer_for_place(1); // not noted: there is nothing to note it in
    draw(far_pane);
    defer_for_place(0);
    draw(near_pane);
    regroup_deferred_triangles();
    ASSERT_EQ(deferred_count, 4);
    EXPECT_FLOAT_EQ(deferred_triangles[0].depth_key, 5.0f);
    EXPECT_FLOAT_EQ(deferred_triangles[3].depth_key, 3.0f);
}
