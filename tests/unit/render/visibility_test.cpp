#include <gtest/gtest.h>

#include <math.h>

#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/loop_state.h"
#include "render/frame.h"
#include "render/visibility.h"
#include "support/render_world.h"
#include "support/test_heap.h"

namespace {

// The eye at the origin looking along +z into a 64 x 64 frame (90 degrees, so x / z = +-0.5 is
// the frame's edge). Room 0 is the outside; the eye stands in room 1, whose openings at z = 5 lead
// to room 2, whose opening at z = 10 leads to room 3. Every room's tree says "inside" at once.
class portal_rooms : public render_world_test {
protected:
    int32_t outside = -1, eye_room = -1, middle_room = -1, far_room = -1;
    int32_t texture = -1, square = -1;

    void SetUp() override
    {
        render_world_test::SetUp();
        ASSERT_EQ(collision_tree_create(&scene_tree, 2), 1);
        scene_tree.nodes[0] = {{0, 0, 0, -1}, 0, 0}; // always in front: inside
        scene_tree.nodes[1] = {{0, 0, 0, 1}, 0, 0};  // always behind: outside
        outside = add_room({-100, -100, -100}, {100, 100, 100});
        eye_room = add_room({-3, -3, -1}, {3, 3, 5});
        middle_room = add_room({-3, -3, 5}, {3, 3, 10});
        far_room = add_room({-3, -3, 10}, {3, 3, 15});
        texture = add_texture(0xFFFF);
        square = add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 0.0f, texture);
    }

    // An opening in the plane z = depth over x0 ... x1, y0 ... y1, facing the eye (normal -z).
    int32_t opening(int32_t from, int32_t to, float x0, float x1, float y0, float y1, float depth)
    {
        return add_portal(from, to, {x0, y0, depth}, {x0, y1, depth}, {x1, y1, depth}, {x1, y0, depth});
    }

    static screen_rect rect_of(int32_t area)
    {
        const room* r = registry_at<room>(&rooms, area);
        return {r->screen_x0, r->screen_y0, r->screen_x1, r->screen_y1};
    }

    static int visible(int32_t area)
    {
        return registry_at<room>(&rooms, area)->visible;
    }
};

void expect_rect(const screen_rect& r, int32_t x0, int32_t y0, int32_t x1, int32_t y1)
{
    EXPECT_EQ(r.x0, x0);
    EXPECT_EQ(r.y0, y0);
    EXPECT_EQ(r.x1, x1);
    EXPECT_EQ(r.y1, y1);
}

// A tree of `length` nodes in a row, from root 1, each in front of the point going on to the next;
// the last one's front is open space.
void chain_tree(int32_t length)
{
    ASSERT_EQ(collision_tree_create(&scene_tree, length + 1), 1);
    scene_tree.nodes[0] = {{0, 0, 0, 1}, 0, 0};
    for (int32_t i = 1; i <= length; ++i)
        scene_tree.nodes[i] = {{0, 0, 0, -1}, i < length ? i + 1 : 0, 0};
}

} // namespace

TEST_F(portal_rooms, the_frustum_has_five_planes_through_the_eye)
{
    build_frustum(1.5f, 1.0f, 2.0f);
    const float expected[5][3] = {{2, 0, 1.5f}, {-2, 0, 1.5f}, {0, -2, 1}, {0, 2, 1}, {0, 0, 1}};
    for (int i = 0; i < 5; ++i)
        for (int k = 0; k < 3; ++k)
            EXPECT_EQ(frustum_planes[i][k], expected[i][k]);
}

TEST_F(portal_rooms, a_point_location_walk_counts_the_nodes_it_visits)
{
    collision_tree_free(&scene_tree);
    chain_tree(3);
    EXPECT_EQ(find_point_area(&scene_tree, 1, {0, 0, 0}), 3);
    // Behind the root's plane: a solid leaf at once.
    scene_tree.nodes[1].plane = {0, 0, 1, 0};
    EXPECT_EQ(find_point_area(&scene_tree, 1, {0, 0, -1}), 0);
    // A point exactly on a plane counts as in front.
    EXPECT_EQ(find_point_area(&scene_tree, 1, {0, 0, 0}), 3);
}

TEST_F(portal_rooms, a_point_location_walk_gives_up_at_255)
{
    collision_tree_free(&scene_tree);
    chain_tree(254);
    EXPECT_EQ(find_point_area(&scene_tree, 1, {0, 0, 0}), 254);
    collision_tree_free(&scene_tree);
    chain_tree(255);
    EXPECT_EQ(find_point_area(&scene_tree, 1, {0, 0, 0}), 0);
}

TEST_F(portal_rooms, the_camera_area_is_the_first_area_after_0_holding_the_eye)
{
    int32_t overlapping = add_room({-3, -3, -1}, {3, 3, 5}); // the same box, later in order
    registry_at<room>(&rooms, overlapping)->bsp_node = 0;
    set_camera({0, 0, 0});
    find_camera_area();
    EXPECT_EQ(camera_area, eye_room);
    EXPECT_EQ(camera_area_iterations, 1);
    // On the box's face counts as inside.
    set_camera({3, -3, 5});
    find_camera_area();
    EXPECT_EQ(camera_area, eye_room);
}

TEST_F(portal_rooms, an_eye_that_the_tree_puts_outside_is_in_area_0)
{
    registry_at<room>(&rooms, eye_room)->bsp_node = 1;
    set_camera({0, 0, 0});
    find_camera_area();
    EXPECT_EQ(camera_area, outside);
    EXPECT_EQ(camera_area_iterations, 0);
}

TEST_F(portal_rooms, an_area_seen_through_two_openings_gets_the_union_of_both_rectangles)
{
    opening(eye_room, middle_room, -2.0f, -0.5f, -1, 1, 5); // left:  x 6.4 ... 25.6, y 19.2 ... 44.8
    opening(eye_room, middle_room, 0.5f, 2.0f, -1, 1, 5);   // right: x 38.4 ... 57.6
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(visible(eye_room), 1);
    expect_rect(rect_of(eye_room), 0, 0, 64, 64);
    EXPECT_EQ(visible(middle_room), 1);
    expect_rect(rect_of(middle_room), 6, 19, 58, 45);
    EXPECT_EQ(visible(far_room), 0);
    EXPECT_EQ(visible(outside), 0);
}

TEST_F(portal_rooms, areas_beyond_are_limited_by_the_first_rectangle_through_which_it_was_reached)
{
    opening(eye_room, middle_room, -2.0f, -0.5f, -1, 1, 5);
    opening(eye_room, middle_room, 0.5f, 2.0f, -1, 1, 5);
    opening(middle_room, far_room, -3.0f, 3.0f, -1, 1, 10); // x 12.8 ... 51.2, y 25.6 ... 38.4
    ASSERT_EQ(cull_portals(), 1);
    expect_rect(rect_of(middle_room), 6, 19, 58, 45);
    EXPECT_EQ(visible(far_room), 1);
    expect_rect(rect_of(far_room), 12, 25, 26, 39); // through the left opening only
}

TEST_F(portal_rooms, an_opening_seen_only_through_the_later_widening_stays_unseen)
{
    opening(eye_room, middle_room, -2.0f, -0.5f, -1, 1, 5);
    opening(eye_room, middle_room, 0.5f, 2.0f, -1, 1, 5);
    opening(middle_room, far_room, 1.0f, 3.0f, -1, 1, 10); // only behind the right opening
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(visible(far_room), 0);
}

TEST_F(portal_rooms, an_opening_facing_away_from_the_eye_is_not_looked_through)
{
    add_portal(eye_room, middle_room, {-1, -1, 5}, {1, -1, 5}, {1, 1, 5}, {-1, 1, 5}); // normal +z
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(visible(middle_room), 0);
}

TEST_F(portal_rooms, an_opening_marked_closed_is_not_looked_through)
{
    int32_t p = opening(eye_room, middle_room, -1, 1, -1, 1, 5);
    registry_at<portal>(&portals, p)->closed = 1;
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(visible(middle_room), 0);
}

TEST_F(portal_rooms, a_door_within_one_degree_of_its_closed_angle_blocks_and_beyond_passes)
{
    int32_t p = opening(eye_room, middle_room, -1, 1, -1, 1, 5);
    int32_t leaf = add_object(middle_room, square, {0, 0, 5}, 0.3f);
    add_door(p, leaf, 0.3f);
    object* o = registry_at<object>(&objects, leaf);
    o->yaw = 0.3f + 0.017f;
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(registry_at<portal>(&portals, p)->closed, 1);
    EXPECT_EQ(visible(middle_room), 0);
    o->yaw = 0.3f + 0.0175f;
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(registry_at<portal>(&portals, p)->closed, 0);
    EXPECT_EQ(visible(middle_room), 1);
    o->yaw = 0.3f - 0.0175f;
    EXPECT_EQ(door_is_closed(registry_at<portal>(&portals, p)), 0);
}

TEST_F(portal_rooms, with_culling_frozen_walking_out_keeps_drawing_the_areas_found_when_frozen)
{
    opening(eye_room, middle_room, -1, 1, -1, 1, 5);
    int32_t in_eye_room = add_object(eye_room, square, {0, 0, 2});
    int32_t in_middle_room = add_object(middle_room, square, {0, 0, 7});
    int32_t in_far_room = add_object(far_room, square, {0, 0, 12});
    ASSERT_EQ(cull_portals(), 1);
    debug_portal_culling = 0;
    set_camera({0, 0, 11}); // into the far room, looking on along +z
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(camera_area, eye_room);
    EXPECT_EQ(visible(eye_room), 1);
    EXPECT_EQ(visible(middle_room), 1);
    EXPECT_EQ(visible(far_room), 0);
    set_camera({0, 0, -10}); // back where all three lie ahead
    build_draw_list();
    ASSERT_EQ(draw_list_count, 2);
    EXPECT_EQ(draw_list[0].object, in_eye_room);
    EXPECT_EQ(draw_list[1].object, in_middle_room);
    (void)in_far_room;
    debug_portal_culling = 1;
    set_camera({0, 0, 11});
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_EQ(camera_area, far_room);
    EXPECT_EQ(visible(eye_room), 0);
}

TEST_F(portal_rooms, the_visit_stack_is_taken_once_for_all_areas)
{
    opening(eye_room, middle_room, -1, 1, -1, 1, 5);
    ASSERT_EQ(cull_portals(), 1);
    test_heap::reset();
    ASSERT_EQ(cull_portals(), 1);
    EXPECT_TRUE(test_heap::log().empty());
}

TEST_F(portal_rooms, without_a_visit_stack_every_area_is_shown_with_the_whole_screen)
{
    // More areas than any stack taken before, so that this call must grow it.
    for (int32_t i = 0; i < 500; ++i)
        add_room({200, 200, 200}, {201, 201, 201});
    test_heap::reset();
    test_heap::fail_request(1);
    EXPECT_EQ(cull_portals(), 0);
    test_heap::reset();
    for (int32_t area : {outside, eye_room, middle_room, far_room}) {
        EXPECT_EQ(visible(area), 1);
        expect_rect(rect_of(area), 0, 0, 64, 64);
    }
}

TEST_F(portal_rooms, an_opening_wholly_behind_the_eye_covers_nothing_on_screen)
{
    int32_t p = opening(eye_room, middle_room, -1, 1, -1, 1, -0.5f);
    screen_rect r;
    EXPECT_EQ(portal_screen_rect(registry_at<portal>(&portals, p), &r), 0);
}

TEST_F(portal_rooms, an_opening_reaching_behind_the_eye_is_cut_where_it_crosses_the_eye_plane)
{
    // A wall opening to the right, from behind the eye to z = 3: its far edge projects to
    // x = (1/3 + 0.5) * 64, and the parts cut at z = 0 are projected at depth 0.01, far off screen.
    int32_t p = add_portal(eye_room, middle_room, {1, -1, -1}, {1, 1, -1}, {1, 1, 3}, {1, -1, 3});
    screen_rect r;
    ASSERT_EQ(portal_screen_rect(registry_at<portal>(&portals, p), &r), 1);
    expect_rect(r, 53, 0, 64, 64);
}

TEST_F(portal_rooms, the_draw_list_takes_visible_areas_in_order_then_the_objects_outside_all_areas)
{
    opening(eye_room, middle_room, -1, 1, -1, 1, 5);
    int32_t a = add_object(eye_room, square, {0, 0, 2});
    int32_t b = add_object(middle_room, square, {0, 0, 7});
    add_object(far_room, square, {0, 0, 12}); // not visible
    int32_t dynamic = add_object(-1, square, {0, 0, 3});
    ASSERT_EQ(cull_portals(), 1);
    build_draw_list();
    ASSERT_EQ(draw_list_count, 3);
    EXPECT_EQ(draw_list[0].object, a);
    EXPECT_EQ(draw_list[0].area, eye_room);
    EXPECT_EQ(draw_list[1].object, b);
    EXPECT_EQ(draw_list[1].area, middle_room);
    EXPECT_EQ(draw_list[2].object, dynamic);
    EXPECT_EQ(draw_list[2].area, -1);
}

TEST_F(portal_rooms, removed_objects_and_objects_without_a_model_are_not_listed)
{
    int32_t removed = add_object(eye_room, square, {0, 0, 2});
    registry_at<object>(&objects, removed)->removed = 1;
    add_object(eye_room, 0, {0, 0, 2});
    int32_t kept = add_object(eye_room, square, {0, 0, 2});
    ASSERT_EQ(cull_portals(), 1);
    build_draw_list();
    ASSERT_EQ(draw_list_count, 1);
    EXPECT_EQ(draw_list[0].object, kept);
}

TEST_F(portal_rooms, listed_objects_stand_where_the_frame_falls_between_two_ticks)
{
    int32_t o = add_object(-1, square, {0, 0, 8}, 1.0f);
    object* moving = registry_at<object>(&objects, o);
    moving->previous_position = {0, 0, 4};
    moving->previous_yaw = 0.0f;
    render_alpha = 0.25f;
    build_draw_list();
    ASSERT_EQ(draw_list_count, 1);
    EXPECT_FLOAT_EQ(draw_list[0].place.position.z, 5.0f);
    EXPECT_FLOAT_EQ(draw_list[0].place.sin_yaw, sinf(0.25f));
    EXPECT_FLOAT_EQ(draw_list[0].place.cos_yaw, cosf(0.25f));
    EXPECT_EQ(draw_list[0].place.sin_pitch, 0.0f);
}

TEST_F(portal_rooms, a_listed_box_is_the_model_box_turned_and_moved_by_the_placement)
{
    int32_t wide = add_square_model(-2.0f, -0.5f, 2.0f, 0.5f, 0.0f, texture);
    add_object(-1, wide, {0, 0, 6}, 1.5707964f);
    build_draw_list();
    ASSERT_EQ(draw_list_count, 1);
    const aabb& box = draw_list[0].box;
    EXPECT_NEAR(box.min.x, 0.0f, 1e-5f);
    EXPECT_NEAR(box.max.x, 0.0f, 1e-5f);
    EXPECT_NEAR(box.min.z, 4.0f, 1e-5f);
    EXPECT_NEAR(box.max.z, 8.0f, 1e-5f);
    EXPECT_FLOAT_EQ(box.min.y, -0.5f);
    EXPECT_FLOAT_EQ(box.max.y, 0.5f);
}

TEST_F(portal_rooms, objects_outside_the_frustum_are_not_listed)
{
    add_object(-1, square, {0, 0, -3});  // behind
    add_object(-1, square, {20, 0, 3}); // far to the right
    int32_t ahead = add_object(-1, square, {0, 0, 3});
    build_draw_list();
    ASSERT_EQ(draw_list_count, 1);
    EXPECT_EQ(draw_list[0].object, ahead);
}

TEST_F(portal_rooms, a_draw_list_that_cannot_grow_lists_nothing_that_frame)
{
    // More objects than any list grown before, so that this frame's list must grow.
    for (int32_t i = 0; i < 500; ++i)
        add_object(-1, square, {0, 0, 3});
    test_heap::reset();
    test_heap::fail_request(1);
    build_draw_list();
    EXPECT_EQ(draw_list_count, 0);
    test_heap::reset();
    build_draw_list();
    EXPECT_EQ(draw_list_count, 500);
}

TEST_F(portal_rooms, a_box_is_outside_the_frustum_only_when_wholly_behind_one_plane)
{
    const aabb ahead = {{-1, -1, 2}, {1, 1, 3}};
    const aabb behind = {{-1, -1, -3}, {1, 1, -2}};
    const aabb left = {{-20, -1, 2}, {-10, 1, 3}};
    const aabb straddling = {{-1, -1, -3}, {1, 1, 3}};
    EXPECT_EQ(box_outside_frustum(frustum_planes, &ahead), 0);
    EXPECT_EQ(box_outside_frustum(frustum_planes, &behind), 1);
    EXPECT_EQ(box_outside_frustum(frustum_planes, &left), 1);
    EXPECT_EQ(box_outside_frustum(frustum_planes, &straddling), 0);
}

TEST_F(portal_rooms, nearest_first_orders_the_draw_list_by_the_farthest_corner_of_each_box_ties_in_list_order)
{
    set_camera({0, 0, 0});
    int32_t far = add_object(-1, square, {0, 0, 9});
    int32_t near = add_object(-1, square, {0, 0, 3});
    int32_t also_near = add_object(-1, square, {0, 0, 3});
    int32_t middle = add_object(-1, square, {0.2f, 0, 5});
    build_draw_list();
    ASSERT_EQ(draw_list_count, 4);
    const int32_t* order = draw_list_nearest_first();
    ASSERT_NE(order, nullptr);
    const int32_t expected[4] = {near, also_near, middle, far};
    for (int32_t k = 0; k < 4; ++k)
        EXPECT_EQ(draw_list[order[k]].object, expected[k]) << "place " << k;
}

TEST_F(portal_rooms, nearest_first_puts_a_box_that_is_not_a_number_last)
{
    set_camera({0, 0, 0});
    add_object(-1, square, {0, 0, 4});
    add_object(-1, square, {0, 0, 6});
    build_draw_list();
    ASSERT_EQ(draw_list_count, 2);
    draw_list[0].box.max.x = NAN;
    const int32_t* order = draw_list_nearest_first();
    ASSERT_NE(order, nullptr);
    EXPECT_EQ(order[0], 1);
    EXPECT_EQ(order[1], 0);
}

TEST_F(portal_rooms, nearest_first_is_null_when_there_is_no_room_for_the_order)
{
    set_camera({0, 0, 0});
    add_object(-1, square, {0, 0, 4});
    build_draw_list();
    release_visibility_arrays(); // forgets the order's room too
    build_draw_list();
    test_heap::fail_request(1);
    EXPECT_EQ(draw_list_nearest_first(), nullptr);
}
