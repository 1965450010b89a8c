#include <gtest/gtest.h>

#include "assets/animation.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "render/debug_draw.h"
#include "render/frame.h"
#include "render/visibility.h"
#include "render/world_pass.h"
#include "support/render_world.h"

namespace {

int32_t count_colour(const test_frame& frame, uint16_t colour)
{
    int32_t count = 0;
    for (uint16_t p : frame.colour)
        count += p == colour;
    return count;
}

class debug_views : public render_world_test {
protected:
    // A model placed at the origin and drawn by the world pass twice: with the switch off, which
    // must leave the colour out, then on.
    void draw_with_switch(int32_t model_index, int32_t* debug_switch, uint16_t colour, int32_t animation_index = 0)
    {
        debug_lighting = 0;
        int32_t shown = add_object(-1, model_index, {0, 0, 0});
        registry_at<object>(&objects, shown)->animation = animation_index;
        placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);
        draw_scene_object(shown, &at_origin, -1);
        EXPECT_EQ(count_colour(*frame, colour), 0);
        *debug_switch = 1;
        draw_scene_object(shown, &at_origin, -1);
        EXPECT_GT(count_colour(*frame, colour), 0);
    }

    void show_area(int32_t area, int32_t x0, int32_t y0, int32_t x1, int32_t y1)
    {
        room* r = registry_at<room>(&rooms, area);
        r->visible = 1;
        r->screen_x0 = x0;
        r->screen_y0 = y0;
        r->screen_x1 = x1;
        r->screen_y1 = y1;
    }
};

} // namespace

TEST_F(debug_views, a_box_edge_crossing_the_near_plane_is_drawn_up_to_the_plane)
{
    // Flat in x and y: its z edges run from behind the eye to z = 2 at x = 0, y = 0.5 (row 48);
    // cut at the near plane, the near end projects far below the frame and is clipped there.
    draw_box_wireframe({0, 0.5f, -2}, {0, 0.5f, 2}, 0x1234);
    for (int32_t y = 48; y < 64; ++y)
        EXPECT_EQ(frame->pixel(32, y), 0x1234) << y;
    EXPECT_EQ(frame->pixel(32, 47), 0);
    EXPECT_EQ(frame->drawn(), 16);
}

TEST_F(debug_views, a_box_wholly_behind_the_near_plane_is_not_drawn)
{
    draw_box_wireframe({-1, -1, -3}, {1, 1, 0.005f}, 0x1234);
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(debug_views, a_box_in_view_shows_all_twelve_edges)
{
    draw_box_wireframe({-1, -1, 2}, {1, 1, 4}, 0x1234);
    // Front face at z = 2 spans 0 ... 64 (clipped to 63), back face at z = 4 spans 16 ... 48.
    EXPECT_EQ(frame->pixel(16, 32), 0x1234);
    EXPECT_EQ(frame->pixel(48, 32), 0x1234);
    EXPECT_EQ(frame->pixel(32, 16), 0x1234);
    EXPECT_EQ(frame->pixel(0, 32), 0x1234);
    EXPECT_EQ(frame->pixel(8, 8), 0x1234); // an edge from the front face to the back one
    EXPECT_EQ(frame->depth_at(16, 32), DEPTH_ON_TOP);
}

TEST_F(debug_views, the_area_view_leaves_out_area_0s_box_but_not_its_portals)
{
    int32_t outside = add_room({-1, -1, 2}, {1, 1, 4});
    add_portal(outside, -1, {-0.5f, -0.5f, 3}, {-0.5f, 0.5f, 3}, {0.5f, 0.5f, 3}, {0.5f, -0.5f, 3});
    show_area(outside, 0, 0, 64, 64);
    camera_area = outside;
    draw_areas_and_portals();
    EXPECT_EQ(count_colour(*frame, COLOUR_AREA_BOX), 0);
    EXPECT_GT(count_colour(*frame, COLOUR_PORTAL), 0);
    EXPECT_EQ(count_colour(*frame, COLOUR_AREA_RECT), 0);
}

TEST_F(debug_views, the_area_view_outlines_the_rectangles_of_visible_areas_but_the_cameras)
{
    add_room({-100, -100, -100}, {100, 100, 100});
    int32_t here = add_room({-1, -1, 2}, {1, 1, 4});
    int32_t there = add_room({-1, -1, 5}, {1, 1, 6});
    int32_t unseen = add_room({-1, -1, 7}, {1, 1, 8});
    show_area(here, 30, 30, 40, 40);
    show_area(there, 10, 10, 20, 20);
    show_area(unseen, 50, 50, 60, 60);
    registry_at<room>(&rooms, unseen)->visible = 0;
    camera_area = here;
    draw_areas_and_portals();
    EXPECT_GT(count_colour(*frame, COLOUR_AREA_BOX), 0);
    EXPECT_EQ(frame->pixel(10, 10), COLOUR_AREA_RECT);
    EXPECT_EQ(frame->pixel(19, 12), COLOUR_AREA_RECT); // the right side is x1 - 1
    EXPECT_EQ(frame->pixel(20, 12), 0);
    EXPECT_NE(frame->pixel(30, 35), COLOUR_AREA_RECT);
    EXPECT_NE(frame->pixel(50, 55), COLOUR_AREA_RECT);
}

TEST_F(debug_views, with_culling_frozen_boxes_and_portals_are_drawn_but_not_rectangles)
{
    add_room({-100, -100, -100}, {100, 100, 100});
    int32_t here = add_room({-1, -1, 2}, {1, 1, 4});
    int32_t there = add_room({-1, -1, 5}, {1, 1, 6});
    add_portal(there, here, {-0.5f, -0.5f, 5}, {0.5f, -0.5f, 5}, {0.5f, 0.5f, 5}, {-0.5f, 0.5f, 5});
    show_area(here, 0, 0, 64, 64);
    show_area(there, 10, 10, 20, 20);
    camera_area = here;
    debug_portal_culling = 0;
    draw_areas_and_portals();
    EXPECT_GT(count_colour(*frame, COLOUR_AREA_BOX), 0);
    EXPECT_GT(count_colour(*frame, COLOUR_PORTAL), 0);
    EXPECT_EQ(count_colour(*frame, COLOUR_AREA_RECT), 0);
}

namespace {

// Two bones: a root at depth 2 on the axis and a child half a unit below it.
int32_t add_two_bone_animation()
{
    animation a;
    EXPECT_EQ(animation_create(&a, 2, 1), 1);
    a.parents[0] = -1;
    a.parents[1] = 0;
    a.frame_times[0] = 0.0f;
    a.poses[0] = {{0, 0, 2}, {0, 0, 0, 1}};
    a.poses[1] = {{0, 0.5f, 2}, {0, 0, 0, 1}};
    int32_t index = registry_claim(&animations);
    *registry_at<animation>(&animations, index) = a;
    return index;
}

} // namespace

TEST_F(debug_views, the_skeleton_joins_each_bone_to_its_parent_and_rings_its_joint)
{
    const animation* a = registry_at<animation>(&animations, add_two_bone_animation());
    placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);
    draw_skeleton(a, a->poses, &at_origin, 0.05f, COLOUR_SKELETON);
    // The bone from (32, 48) up to its parent at (32, 32); a ring of radius 64 / 2 x 0.05 = 1 at 48.
    for (int32_t y = 32; y <= 48; ++y)
        EXPECT_EQ(frame->pixel(32, y), COLOUR_SKELETON) << y;
    EXPECT_EQ(frame->pixel(33, 48), COLOUR_SKELETON);
    EXPECT_EQ(frame->pixel(31, 48), COLOUR_SKELETON);
    EXPECT_EQ(frame->pixel(32, 31), 0);
}

TEST_F(debug_views, the_world_pass_draws_the_skeleton_of_an_animated_object_under_wireframe)
{
    int32_t square = add_square_model(-4, -4, 4, 4, 10, add_texture(0x8000 | 10 << 5));
    draw_with_switch(square, &debug_wireframe, COLOUR_SKELETON, add_two_bone_animation());
}

TEST_F(debug_views, show_colliders_draws_collider_triangles_and_their_boxes)
{
    int32_t square = add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 3, add_texture(0x8000 | 10 << 5));
    model* m = registry_at<model>(&models, square);
    ASSERT_EQ(model_create_colliders(m, 1, 1), 1);
    m->collision_triangles[0] = {{0, 1, 2}};
    m->colliders[0].first = 0;
    m->colliders[0].end = 1;
    model_compute_bounds(m);
    draw_with_switch(square, &debug_show_colliders, COLOUR_COLLIDER);
    EXPECT_GT(count_colour(*frame, COLOUR_COLLIDER_BOX), 0);
}
