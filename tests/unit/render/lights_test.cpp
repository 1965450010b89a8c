#include <gtest/gtest.h>

#include <string.h>

#include <random>
#include <vector>

#include "assets/world.h"
#include "core/loop_state.h"
#include "render/lights.h"
#include "support/render_world.h"

namespace {

// Two rooms side by side along z, joined by an opening in the plane z = 5 (x and y within 1);
// each side's portal faces into its own room.
class light_rooms : public render_world_test {
protected:
    int32_t near_room = -1, far_room = -1;

    void SetUp() override
    {
        render_world_test::SetUp();
        near_room = add_room({-5, -5, 0}, {5, 5, 5});
        far_room = add_room({-5, -5, 5}, {5, 5, 10});
        add_portal(near_room, far_room, {-1, -1, 5}, {-1, 1, 5}, {1, 1, 5}, {1, -1, 5});
        add_portal(far_room, near_room, {-1, -1, 5}, {1, -1, 5}, {1, 1, 5}, {-1, 1, 5});
    }
};

// A point on a surface facing -z (toward the eye side of the tests).
const float facing_minus_z[6] = {0, 0, 2, 0, 0, -1};

} // namespace

TEST_F(light_rooms, a_point_exactly_at_a_lights_radius_gets_nothing)
{
    add_light(LIGHTS_STEADY, near_room, {0, 0, 0}, 2.0f, 1.0f);
    EXPECT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, light_falls_off_with_the_square_of_the_distance)
{
    add_light(LIGHTS_STEADY, near_room, {0, 0, 0}, 4.0f, 0.5f);
    EXPECT_FLOAT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), (1.0f - 4.0f / 16.0f) * 0.5f);
}

TEST_F(light_rooms, a_point_in_a_room_that_no_portal_chain_joins_to_the_light_gets_nothing)
{
    int32_t closed_room = add_room({20, -5, 0}, {30, 5, 10}); // no portals at all
    add_light(LIGHTS_STEADY, near_room, {21, 0, 1}, 10.0f, 1.0f);
    const float point[6] = {21, 0, 2, 0, 0, -1};
    EXPECT_EQ(light_at(point, closed_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, a_point_whose_openings_lead_elsewhere_gets_nothing_from_a_light_no_chain_reaches)
{
    // The light is in a room beyond the far one, well within reach, and the segment to it runs
    // through the near room's opening; but the far room has no opening onward yet.
    int32_t beyond_room = add_room({-5, -5, 10}, {5, 5, 15});
    add_light(LIGHTS_STEADY, beyond_room, {0, 0, 12}, 20.0f, 1.0f);
    const float toward_the_light[6] = {0, 0, 2, 0, 0, 1};
    EXPECT_EQ(light_at(toward_the_light, near_room, LIGHTS_STEADY), 0.0f);
    EXPECT_GT(light_at(toward_the_light, -1, LIGHTS_STEADY), 0.0f);
    // Once the far room opens onto it, the chain is complete and the same light reaches the point.
    add_portal(far_room, beyond_room, {-1, -1, 10}, {-1, 1, 10}, {1, 1, 10}, {1, -1, 10});
    EXPECT_FLOAT_EQ(light_at(toward_the_light, near_room, LIGHTS_STEADY), 1.0f - 100.0f / 400.0f);
}

TEST_F(light_rooms, a_point_with_room_minus_one_is_lit_without_the_portal_test)
{
    int32_t closed_room = add_room({20, -5, 0}, {30, 5, 10});
    add_light(LIGHTS_STEADY, closed_room, {0, 0, 1}, 10.0f, 1.0f);
    EXPECT_GT(light_at(facing_minus_z, -1, LIGHTS_STEADY), 0.0f);
    EXPECT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, a_light_in_the_next_room_shines_through_the_opening)
{
    add_light(LIGHTS_STEADY, far_room, {0, 0, 8}, 10.0f, 1.0f);
    const float through[6] = {0, 0, 2, 0, 0, 1};
    const float beside[6] = {3, 0, 2, 0, 0, 1}; // the segment to the light passes outside the corners
    EXPECT_GT(light_at(through, near_room, LIGHTS_STEADY), 0.0f);
    EXPECT_EQ(light_at(beside, near_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, with_the_shadow_flag_a_surface_turned_away_gets_nothing)
{
    add_light(LIGHTS_STEADY, near_room, {0, 0, 0}, 4.0f, 1.0f, 1);
    const float turned_away[6] = {0, 0, 2, 0, 0, 1};
    EXPECT_EQ(light_at(turned_away, near_room, LIGHTS_STEADY), 0.0f);
    // Facing the light squarely: the full fall-off times a cosine of 1.
    EXPECT_FLOAT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 1.0f - 4.0f / 16.0f);
}

TEST_F(light_rooms, without_the_shadow_flag_a_surface_turned_away_is_lit_as_if_facing)
{
    add_light(LIGHTS_STEADY, near_room, {0, 0, 0}, 4.0f, 1.0f, 0);
    const float turned_away[6] = {0, 0, 2, 0, 0, 1};
    EXPECT_EQ(light_at(turned_away, near_room, LIGHTS_STEADY), light_at(facing_minus_z, near_room, LIGHTS_STEADY));
    EXPECT_GT(light_at(turned_away, near_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, a_shadowed_light_exactly_at_the_point_gives_nothing_rather_than_dividing_by_zero)
{
    add_light(LIGHTS_STEADY, near_room, {0, 0, 2}, 4.0f, 1.0f, 1);
    EXPECT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, two_lights_each_worth_0_7_give_exactly_1)
{
    // Radius 2 at distance 1: 1 - 1/4 = 0.75 of brightness 0.7/0.75 each.
    for (int i = 0; i < 2; ++i)
        add_light(LIGHTS_STEADY, near_room, {0, 0, 1}, 2.0f, 0.7f / 0.75f);
    EXPECT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 1.0f);
}

TEST_F(light_rooms, once_saturated_later_lights_are_not_looked_at)
{
    for (int i = 0; i < 2; ++i)
        add_light(LIGHTS_STEADY, near_room, {0, 0, 1}, 2.0f, 0.7f / 0.75f);
    add_light(LIGHTS_STEADY, near_room, {0, 0, 1}, 2.0f, -5.0f); // would darken the sum again
    EXPECT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 1.0f);
}

TEST_F(light_rooms, flickering_lights_are_taken_between_their_previous_and_current_tick)
{
    add_light(LIGHTS_FLICKERING, near_room, {0, 0, 0}, 4.0f, 1.0f);
    light* l = &flickering_lights.lights[0];
    l->previous_brightness = 0.2f;
    l->previous_position = {0, 0, 2.0f}; // moving away from the point as the tick goes on
    render_alpha = 0.5f;
    // Halfway: at (0, 0, 1), brightness 0.6.
    EXPECT_FLOAT_EQ(light_at(facing_minus_z, near_room, LIGHTS_FLICKERING), (1.0f - 1.0f / 16.0f) * 0.6f);
    // The steady list is not the flickering one.
    EXPECT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 0.0f);
}

TEST_F(light_rooms, steady_lights_use_their_current_values_whatever_render_alpha)
{
    add_light(LIGHTS_STEADY, near_room, {0, 0, 0}, 4.0f, 1.0f);
    steady_lights.lights[0].previous_brightness = 0.0f;
    render_alpha = 0.0f;
    EXPECT_FLOAT_EQ(light_at(facing_minus_z, near_room, LIGHTS_STEADY), 1.0f - 4.0f / 16.0f);
}

TEST_F(light_rooms, a_room_without_portals_sees_nothing)
{
    int32_t closed_room = add_room({20, -5, 0}, {30, 5, 10});
    EXPECT_EQ(room_sees_point(closed_room, near_room, {21, 0, 1}, {0, 0, 1}), 0);
}

TEST_F(light_rooms, a_portal_is_crossed_only_against_its_normal)
{
    EXPECT_EQ(room_sees_point(near_room, far_room, {0, 0, 2}, {0, 0, 8}), 1);
    // From the near room's side backwards through its own portal plane: never crossed.
    EXPECT_EQ(room_sees_point(near_room, far_room, {0, 0, 8}, {0, 0, 2}), 0);
    EXPECT_EQ(room_sees_point(far_room, near_room, {0, 0, 8}, {0, 0, 2}), 1);
}

TEST_F(light_rooms, a_segment_that_stops_short_of_the_opening_does_not_reach)
{
    EXPECT_EQ(room_sees_point(near_room, far_room, {0, 0, 1}, {0, 0, 4}), 0);
}

TEST_F(light_rooms, a_segment_through_the_plane_outside_the_corners_does_not_pass)
{
    EXPECT_EQ(room_sees_point(near_room, far_room, {0, 1.5f, 2}, {0, 1.5f, 8}), 0);
    EXPECT_EQ(room_sees_point(near_room, far_room, {-1.5f, 0, 2}, {-1.5f, 0, 8}), 0);
}

TEST_F(light_rooms, a_chain_of_two_openings_leads_through_the_middle_room)
{
    int32_t third_room = add_room({-5, -5, 10}, {5, 5, 15});
    // The far room's second portal, at z = 10, facing back into it; and its partner.
    add_portal(far_room, third_room, {-1, -1, 10}, {-1, 1, 10}, {1, 1, 10}, {1, -1, 10});
    add_portal(third_room, far_room, {-1, -1, 10}, {1, -1, 10}, {1, 1, 10}, {-1, 1, 10});
    EXPECT_EQ(room_sees_point(near_room, third_room, {0, 0, 2}, {0, 0, 12}), 1);
    // Bent past the second opening's corners: the chain breaks there.
    EXPECT_EQ(room_sees_point(near_room, third_room, {0, 0, 2}, {0, 3, 12}), 0);
}

TEST_F(light_rooms, lights_left_out_as_beyond_a_box_change_no_point_in_it)
{
    std::mt19937 random(11);
    auto between = [&random](float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); };
    // Flickering lights moving between ticks, some just beyond the box's corners and faces.
    for (int32_t i = 0; i < 40; ++i) {
        add_light(LIGHTS_FLICKERING, i % 2 ? near_room : far_room, {between(-6, 6), between(-6, 6), between(-1, 11)},
                  between(0.5f, 4.0f), between(0.1f, 0.6f), i % 3 == 0);
        light* l = &flickering_lights.lights[flickering_lights.count - 1];
        l->previous_position = vec3_add(l->position, {between(-1, 1), between(-1, 1), between(-1, 1)});
        l->previous_brightness = between(0.1f, 0.6f);
    }
    render_alpha = 0.37f;
    std::vector<int32_t> selected(static_cast<size_t>(flickering_lights.count));
    int32_t left_out = 0;
    for (int32_t round = 0; round < 50; ++round) {
        vec3 low = {between(-4, 2), between(-4, 2), between(0, 8)};
        vec3 high = vec3_add(low, {between(0, 2), between(0, 2), between(0, 2)});
        int32_t count = lights_reaching_box(LIGHTS_FLICKERING, low, high, selected.data());
        left_out += flickering_lights.count - count;
        for (int32_t p = 0; p < 40; ++p) {
            // Points inside the box, on its faces and at its corners.
            float x = p % 4 == 0 ? low.x : p % 4 == 1 ? high.x : between(low.x, high.x);
            float y = p % 3 == 0 ? low.y : between(low.y, high.y);
            float z = p % 5 == 0 ? high.z : between(low.z, high.z);
            const float surface[6] = {x, y, z, 0, 0, -1};
            float all = light_at(surface, near_room, LIGHTS_FLICKERING);
            float some = light_at_selected(surface, near_room, LIGHTS_FLICKERING, selected.data(), count);
            ASSERT_EQ(memcmp(&all, &some, sizeof(float)), 0) << "round " << round << ", point " << p;
        }
    }
    EXPECT_GT(left_out, 500) << "most lights are beyond most boxes";
    render_alpha = 1.0f;
}
