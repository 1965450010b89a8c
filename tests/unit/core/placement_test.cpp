#include <gtest/gtest.h>

#include <math.h>

#include "core/placement.h"

namespace {

void expect_equal(vec3 a, vec3 b)
{
    EXPECT_EQ(a.x, b.x);
    EXPECT_EQ(a.y, b.y);
    EXPECT_EQ(a.z, b.z);
}

void expect_near(vec3 a, vec3 b)
{
    EXPECT_NEAR(a.x, b.x, 1e-5f);
    EXPECT_NEAR(a.y, b.y, 1e-5f);
    EXPECT_NEAR(a.z, b.z, 1e-5f);
}

} // namespace

TEST(placement, unturned_box_is_only_moved)
{
    placement place = placement_from_angles({1.0f, 2.0f, 3.0f}, 0.0f, 0.0f);
    aabb box = {{-1.0f, -2.0f, -3.0f}, {1.0f, 2.0f, 3.0f}};
    transform_box(&box, &place);
    expect_equal(box.min, {0.0f, 0.0f, 0.0f});
    expect_equal(box.max, {2.0f, 4.0f, 6.0f});
}

TEST(placement, quarter_turn_of_yaw_swaps_the_x_and_z_extents)
{
    placement place = placement_from_angles({10.0f, 0.0f, 0.0f}, 1.5707964f, 0.0f);
    aabb box = {{-1.0f, -2.0f, -3.0f}, {1.0f, 2.0f, 3.0f}};
    transform_box(&box, &place);
    expect_near(box.min, {7.0f, -2.0f, -1.0f});
    expect_near(box.max, {13.0f, 2.0f, 1.0f});
}

TEST(placement, turned_box_encloses_every_turned_corner)
{
    placement place = placement_from_angles({0.5f, -1.0f, 2.0f}, 0.7f, -0.4f);
    const aabb local = {{-1.0f, -0.5f, -2.0f}, {3.0f, 1.5f, 0.25f}};
    aabb box = local;
    transform_box(&box, &place);
    for (int corner = 0; corner < 8; ++corner) {
        vec3 w = placement_to_world_point(&place, aabb_corner(local, corner));
        EXPECT_GE(w.x, box.min.x - 1e-5f);
        EXPECT_LE(w.x, box.max.x + 1e-5f);
        EXPECT_GE(w.y, box.min.y - 1e-5f);
        EXPECT_LE(w.y, box.max.y + 1e-5f);
        EXPECT_GE(w.z, box.min.z - 1e-5f);
        EXPECT_LE(w.z, box.max.z + 1e-5f);
    }
}

TEST(placement, world_to_object_undoes_object_to_world)
{
    placement place = placement_from_angles({3.0f, 4.0f, -5.0f}, 1.1f, 0.3f);
    vec3 p = {0.25f, -2.0f, 7.5f};
    expect_near(placement_to_local_point(&place, placement_to_world_point(&place, p)), p);
    expect_near(placement_to_local_vector(&place, placement_to_world_vector(&place, p)), p);
}

TEST(placement, yaw_turns_the_local_x_axis_toward_z)
{
    // Object to world for yaw a: x = n.x cos a - n.z sin a, z = n.z cos a + n.x sin a.
    placement place = placement_from_angles({0.0f, 0.0f, 0.0f}, 1.5707964f, 0.0f);
    expect_near(placement_to_world_vector(&place, {1.0f, 0.0f, 0.0f}), {0.0f, 0.0f, 1.0f});
    expect_near(placement_to_world_vector(&place, {0.0f, 0.0f, 1.0f}), {-1.0f, 0.0f, 0.0f});
}
