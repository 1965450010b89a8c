#include <gtest/gtest.h>

#include <float.h>
#include <math.h>

#include "assets/world.h"
#include "core/placement.h"
#include "game/collision.h"
#include "support/asset_state.h"
#include "support/collision_scene.h"

namespace {

void expect_vec3_near(vec3 actual, vec3 expected, float tolerance = 1e-5f)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

// A 2 x 2 floor at y = 0 around the origin, facing up (toward -y).
collision_mesh floor_mesh(int32_t material = MATERIAL_STONE)
{
    collision_mesh mesh;
    mesh_collider(&mesh, material);
    mesh_floor(&mesh, -1, -1, 1, 1, 0);
    return mesh;
}

int32_t place_floor(vec3 position, int32_t material = MATERIAL_STONE)
{
    return place_object(register_collision_model(floor_mesh(material)), position);
}

object* object_at(int32_t index)
{
    return registry_at<object>(&objects, index);
}

class collision_test : public testing::Test {
protected:
    void SetUp() override { reset_assets(); }
    void TearDown() override { reset_assets(); }
};

class collision_world_test : public collision_test {
protected:
    void SetUp() override
    {
        collision_test::SetUp();
        start_collision_world();
    }
};

// Runs every query where the floor at the origin would be found, and says which found something.
struct query_results {
    collision_hit ray;
    collision_hit sweep;
    collision_hit overlap;
    int edge;
};

query_results query_around_the_origin_floor()
{
    query_results r;
    r.ray = cast_ray({0.3f, -1, -0.2f}, {0, 1, 0}, 10);
    sphere ball = {{0.3f, -1, -0.2f}, 0.25f};
    r.sweep = sweep_sphere(&ball, {0, 1, 0}, 10);
    capsule body = {{0.3f, -0.1f, -0.2f}, {0.3f, -1, -0.2f}, 0.35f};
    r.overlap = overlap_capsule(&body);
    capsule near_edge = {{1.1f, -0.1f, 0}, {1.1f, -1, 0}, 0.3f};
    vec3 point;
    r.edge = nearest_edge_point(&near_edge, &point);
    return r;
}

} // namespace

// ---- Nothing to collide with ----

TEST_F(collision_test, empty_scene_gives_no_hit_and_the_initial_distance)
{
    ASSERT_EQ(objects.count, 0);
    collision_hit ray = cast_ray({0, -1, 0}, {0, 1, 0}, 7.5f);
    EXPECT_EQ(ray.hit, 0);
    EXPECT_EQ(ray.distance, 7.5f);
    EXPECT_EQ(ray.object, 0);
    sphere ball = {{0, -1, 0}, 0.5f};
    collision_hit sweep = sweep_sphere(&ball, {0, 1, 0}, 3.0f);
    EXPECT_EQ(sweep.hit, 0);
    EXPECT_EQ(sweep.distance, 3.0f);
    capsule body = {{0, -1, 0}, {0, -2, 0}, 0.35f};
    collision_hit overlap = overlap_capsule(&body);
    EXPECT_EQ(overlap.hit, 0);
    EXPECT_EQ(overlap.distance, 0.0f);
    vec3 point = {9, 9, 9};
    EXPECT_EQ(nearest_edge_point(&body, &point), 0);
}

TEST_F(collision_world_test, objects_with_the_placeholder_model_or_without_colliders_never_collide)
{
    // Model 0 is given real collision data: it must still be ignored.
    fill_collision_model(0, floor_mesh());
    place_object(0, {0, 0, 0});
    collision_mesh no_colliders;
    place_object(register_collision_model(no_colliders), {0, 0, 0});

    query_results r = query_around_the_origin_floor();
    EXPECT_EQ(r.ray.hit, 0);
    EXPECT_EQ(r.ray.distance, 10.0f);
    EXPECT_EQ(r.sweep.hit, 0);
    EXPECT_EQ(r.sweep.distance, 10.0f);
    EXPECT_EQ(r.overlap.hit, 0);
    EXPECT_EQ(r.overlap.distance, 0.0f);
    EXPECT_EQ(r.edge, 0);
}

TEST_F(collision_world_test, removed_object_is_invisible_to_every_query)
{
    int32_t floor = place_floor({0, 0, 0});
    query_results present = query_around_the_origin_floor();
    EXPECT_EQ(present.ray.hit, 1);
    EXPECT_EQ(present.sweep.hit, 1);
    EXPECT_EQ(present.overlap.hit, 1);
    EXPECT_EQ(present.edge, 1);

    object_at(floor)->removed = 1;
    query_results removed = query_around_the_origin_floor();
    EXPECT_EQ(removed.ray.hit, 0);
    EXPECT_EQ(removed.sweep.hit, 0);
    EXPECT_EQ(removed.overlap.hit, 0);
    EXPECT_EQ(removed.edge, 0);
}

// ---- Ray cast ----

TEST_F(collision_world_test, ray_reports_distance_point_normal_object_and_material)
{
    int32_t floor = place_floor({0, 0, 0}, MATERIAL_WOOD);
    collision_hit hit = cast_ray({0.3f, -2, -0.2f}, {0, 1, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_FLOAT_EQ(hit.distance, 2.0f);
    expect_vec3_near(hit.point, {0.3f, 0, -0.2f});
    expect_vec3_near(hit.normal, {0, -1, 0});
    EXPECT_EQ(hit.object, floor);
    EXPECT_EQ(hit.material, MATERIAL_WOOD);
}

TEST_F(collision_world_test, ray_hits_the_back_of_a_triangle_with_the_same_normal)
{
    place_floor({0, 0, 0});
    collision_hit hit = cast_ray({0.3f, 1.5f, -0.2f}, {0, -1, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_FLOAT_EQ(hit.distance, 1.5f);
    expect_vec3_near(hit.normal, {0, -1, 0});
}

TEST_F(collision_world_test, ray_distance_is_measured_in_multiples_of_the_direction)
{
    place_floor({0, 0, 0});
    collision_hit hit = cast_ray({0.3f, -1, -0.2f}, {0, 2, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_FLOAT_EQ(hit.distance, 0.5f);
    expect_vec3_near(hit.point, {0.3f, 0, -0.2f});
}

TEST_F(collision_world_test, ray_hit_at_exactly_the_maximum_distance_is_not_kept)
{
    place_floor({0, 0, 0});
    EXPECT_EQ(cast_ray({0.3f, -1, -0.2f}, {0, 1, 0}, 1.0f).hit, 0);
    EXPECT_EQ(cast_ray({0.3f, -1, -0.2f}, {0, 1, 0}, 1.001f).hit, 1);
}

TEST_F(collision_world_test, ray_starting_on_a_triangle_does_not_hit_it)
{
    place_floor({0, 0, 0});
    EXPECT_EQ(cast_ray({0.3f, 0, -0.2f}, {0, 1, 0}, 10).hit, 0);
    EXPECT_EQ(cast_ray({0.3f, 0, -0.2f}, {0, -1, 0}, 10).hit, 0);
}

TEST_F(collision_world_test, ray_grazing_a_triangle_edge_on_does_not_hit_it)
{
    place_floor({0, 0, 0});
    EXPECT_EQ(cast_ray({-3, 0, 0.1f}, {1, 0, 0}, 10).hit, 0);
    float t;
    EXPECT_EQ(intersect_ray_triangle({-3, 0, 0.1f}, {1, 0, 0}, {-1, 0, -1}, {1, 0, 1}, {1, 0, -1}, &t), 0);
}

TEST_F(collision_world_test, ray_meets_a_turned_object_in_its_own_frame)
{
    // A wall facing +z in the model, turned a quarter about Y: in the world it stands at x = 3 facing -x.
    collision_mesh wall;
    mesh_quad(&wall, {-1, 0, 0}, {1, 0, 0}, {1, -2, 0}, {-1, -2, 0}, {0, 0, 1});
    int32_t index = place_object(register_collision_model(wall), {3, 0, 5}, 1.5707964f);
    collision_hit hit = cast_ray({0, -1, 5.5f}, {1, 0, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_EQ(hit.object, index);
    EXPECT_NEAR(hit.distance, 3.0f, 1e-5f);
    expect_vec3_near(hit.normal, {-1, 0, 0});
    expect_vec3_near(hit.point, {3, -1, 5.5f});
}

TEST_F(collision_world_test, ray_normal_is_turned_by_yaw_and_pitch)
{
    int32_t index = place_object(register_collision_model(floor_mesh()), {0, 0, 0}, 0.6f, 0.3f);
    collision_hit hit = cast_ray({0.05f, -1, 0.05f}, {0, 1, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    const object* floor = object_at(index);
    placement place = placement_from_angles(floor->position, floor->yaw, floor->pitch);
    expect_vec3_near(hit.normal, placement_to_world_vector(&place, {0, -1, 0}));
    // The hit point lies in the turned floor's plane.
    EXPECT_NEAR(placement_to_local_point(&place, hit.point).y, 0.0f, 1e-5f);
}

TEST_F(collision_world_test, ray_keeps_the_first_of_equally_near_hits_in_scene_order)
{
    int32_t first = place_floor({0, 0, 0}, MATERIAL_METAL);
    place_floor({0, 0, 0}, MATERIAL_CARPET);
    collision_hit hit = cast_ray({0.3f, -1, -0.2f}, {0, 1, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_EQ(hit.object, first);
    EXPECT_EQ(hit.material, MATERIAL_METAL);
}

TEST_F(collision_world_test, ray_keeps_the_first_of_equally_near_hits_in_collider_order)
{
    collision_mesh twice;
    mesh_collider(&twice, MATERIAL_CERAMIC);
    mesh_floor(&twice, -1, -1, 1, 1, 0);
    mesh_collider(&twice, MATERIAL_GROUND);
    mesh_floor(&twice, -1, -1, 1, 1, 0);
    place_object(register_collision_model(twice), {0, 0, 0});
    EXPECT_EQ(cast_ray({0.3f, -1, -0.2f}, {0, 1, 0}, 10).material, MATERIAL_CERAMIC);
}

TEST_F(collision_world_test, ray_keeps_the_first_of_equally_near_hits_in_triangle_order)
{
    // The same triangle twice, wound both ways: the normal tells which one was kept.
    collision_mesh both_ways;
    mesh_triangle(&both_ways, {-1, 0, -1}, {1, 0, 1}, {1, 0, -1});
    mesh_triangle(&both_ways, {-1, 0, -1}, {1, 0, -1}, {1, 0, 1});
    place_object(register_collision_model(both_ways), {0, 0, 0});
    collision_hit hit = cast_ray({0.5f, -1, -0.5f}, {0, 1, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    vec3 first_normal = vec3_normalise(vec3_cross(vec3_sub({1, 0, 1}, {-1, 0, -1}), vec3_sub({1, 0, -1}, {-1, 0, -1})));
    expect_vec3_near(hit.normal, first_normal);
}

TEST_F(collision_world_test, ray_search_stops_at_a_hit_nearer_than_the_tolerance)
{
    // The later floor is nearer still, but a hit this close ends the search.
    int32_t first = place_floor({0, 0, 0});
    place_floor({0, -0.00004f, 0});
    collision_hit hit = cast_ray({0.3f, -0.00005f, -0.2f}, {0, 1, 0}, 10);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_EQ(hit.object, first);

    // Farther away the nearer, later floor wins.
    collision_hit far = cast_ray({0.3f, -1, -0.2f}, {0, 1, 0}, 10);
    EXPECT_EQ(far.object, first + 1);
}

// ---- Sphere sweep ----

TEST_F(collision_world_test, sphere_touches_a_face_at_the_distance_where_it_meets_the_plane)
{
    int32_t floor = place_floor({0, 0, 0}, MATERIAL_GROUND);
    sphere ball = {{0.1f, -2, 0.2f}, 0.5f};
    collision_hit hit = sweep_sphere(&ball, {0, 1, 0}, 5);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_FLOAT_EQ(hit.distance, 1.5f);
    expect_vec3_near(hit.normal, {0, -1, 0});
    EXPECT_EQ(hit.object, floor);
    EXPECT_EQ(hit.material, MATERIAL_GROUND);
    // The point is put along the normal from the starting centre, not along the motion.
    expect_vec3_near(hit.point, vec3_add(ball.centre, vec3_scale(hit.normal, hit.distance - ball.radius)));
}

TEST_F(collision_world_test, sphere_moving_away_from_a_front_never_hits_it_even_when_overlapping)
{
    place_floor({0, 0, 0});
    sphere overlapping = {{0.3f, -0.2f, -0.2f}, 0.35f};
    EXPECT_EQ(sweep_sphere(&overlapping, {0, -1, 0}, 5).hit, 0);
    // Coming from behind, the triangle's back is not met either.
    sphere behind = {{0.3f, 2, -0.2f}, 0.35f};
    EXPECT_EQ(sweep_sphere(&behind, {0, -1, 0}, 5).hit, 0);
}

TEST_F(collision_world_test, sphere_moving_along_a_plane_never_hits_it_even_when_overlapping)
{
    place_floor({0, 0, 0});
    sphere overlapping = {{-3, -0.2f, 0.3f}, 0.35f};
    EXPECT_EQ(sweep_sphere(&overlapping, {1, 0, 0}, 6).hit, 0);
}

TEST_F(collision_world_test, sphere_already_past_a_face_plane_does_not_hit_the_face)
{
    place_floor({0, 0, 0});
    sphere sunk = {{0.3f, -0.2f, -0.2f}, 0.35f};
    EXPECT_EQ(sweep_sphere(&sunk, {0, 1, 0}, 5).hit, 0);
}

TEST_F(collision_world_test, sphere_passing_beside_a_face_meets_its_edge)
{
    place_floor({0, 0, 0});
    sphere ball = {{1.2f, -2, 0}, 0.5f};
    collision_hit hit = sweep_sphere(&ball, {0, 1, 0}, 5);
    ASSERT_EQ(hit.hit, 1);
    // The centre comes within the radius of the edge x = 1, y = 0.
    float drop = sqrtf(0.5f * 0.5f - 0.2f * 0.2f);
    EXPECT_NEAR(hit.distance, 2.0f - drop, 1e-5f);
    expect_vec3_near(hit.normal, {0.2f / 0.5f, -drop / 0.5f, 0});
}

TEST_F(collision_world_test, sphere_beyond_the_maximum_distance_is_not_hit)
{
    place_floor({0, 0, 0});
    sphere ball = {{0.1f, -2, 0.2f}, 0.5f};
    EXPECT_EQ(sweep_sphere(&ball, {0, 1, 0}, 1.4f).hit, 0);
}

TEST_F(collision_world_test, sphere_keeps_the_first_of_equally_near_hits_in_scene_order)
{
    int32_t first = place_floor({0, 0, 0}, MATERIAL_WOOD);
    place_floor({0, 0, 0}, MATERIAL_METAL);
    sphere ball = {{0.1f, -2, 0.2f}, 0.5f};
    collision_hit hit = sweep_sphere(&ball, {0, 1, 0}, 5);
    EXPECT_EQ(hit.object, first);
    EXPECT_EQ(hit.material, MATERIAL_WOOD);
}

TEST(collision_primitives, sweep_sphere_edge_falls_back_to_the_sphere_at_the_end)
{
    // Moving along the edge's line, the cylinder cannot be met: the start's sphere is.
    sphere ball = {{-2, -0.1f, 0}, 0.5f};
    float t;
    vec3 normal;
    ASSERT_EQ(sweep_sphere_edge(&ball, {1, 0, 0}, 5, {0, 0, 0}, {1, 0, 0}, &t, &normal), 1);
    float expected = 2.0f - sqrtf(0.25f - 0.01f);
    EXPECT_NEAR(t, expected, 1e-5f);
    expect_vec3_near(normal, vec3_normalise({-2 + expected, -0.1f, 0}));
}

TEST(collision_primitives, sweep_sphere_edge_picks_the_end_sphere_by_where_the_ray_starts)
{
    // Both rays pass within the radius of the edge's far end (1, 0, 0) beyond the cylinder. Only the
    // one that starts on the far end's side of the edge is tested against that end.
    float t;
    vec3 normal;
    sphere before_start = {{-0.1f, 0, -3}, 0.3f};
    EXPECT_EQ(sweep_sphere_edge(&before_start, vec3_normalise({1.3f, 0, 3}), 10, {0, 0, 0}, {1, 0, 0}, &t, &normal), 0);
    sphere past_start = {{0.1f, 0, -3}, 0.3f};
    EXPECT_EQ(sweep_sphere_edge(&past_start, vec3_normalise({1.1f, 0, 3}), 10, {0, 0, 0}, {1, 0, 0}, &t, &normal), 1);
}

TEST(collision_primitives, sweep_sphere_edge_outside_zero_to_the_maximum_is_no_hit)
{
    float t;
    vec3 normal;
    sphere ball = {{0.5f, -2, 0}, 0.5f};
    EXPECT_EQ(sweep_sphere_edge(&ball, {0, 1, 0}, 1.4f, {0, 0, -1}, {0, 0, 1}, &t, &normal), 0);
    EXPECT_EQ(sweep_sphere_edge(&ball, {0, -1, 0}, 5, {0, 0, -1}, {0, 0, 1}, &t, &normal), 0);
}

// ---- Capsule overlap ----

TEST_F(collision_world_test, capsule_whose_axis_pierces_a_triangle_reports_its_radius)
{
    int32_t floor = place_floor({0, 0, 0}, MATERIAL_CARPET);
    for (float radius : {0.35f, 2.0f}) {
        capsule body = {{0.3f, 0.1f, -0.2f}, {0.3f, -1, -0.2f}, radius};
        collision_hit hit = overlap_capsule(&body);
        ASSERT_EQ(hit.hit, 1);
        EXPECT_EQ(hit.distance, radius);
        expect_vec3_near(hit.normal, {0, -1, 0});
        expect_vec3_near(hit.point, {0.3f, 0, -0.2f});
        EXPECT_EQ(hit.object, floor);
        EXPECT_EQ(hit.material, MATERIAL_CARPET);
    }
}

TEST_F(collision_world_test, capsule_near_a_face_reports_the_true_depth_toward_the_axis)
{
    place_floor({0, 0, 0});
    capsule body = {{0.3f, -0.2f, -0.2f}, {0.3f, -1, -0.2f}, 0.35f};
    collision_hit hit = overlap_capsule(&body);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_NEAR(hit.distance, 0.15f, 1e-6f);
    expect_vec3_near(hit.normal, {0, -1, 0});
    expect_vec3_near(hit.point, {0.3f, 0, -0.2f});
}

TEST_F(collision_world_test, capsule_just_touching_is_not_a_contact)
{
    place_floor({0, 0, 0});
    capsule body = {{0.3f, -0.5f, -0.2f}, {0.3f, -1, -0.2f}, 0.5f};
    collision_hit hit = overlap_capsule(&body);
    EXPECT_EQ(hit.hit, 0);
    EXPECT_EQ(hit.distance, 0.0f);
}

TEST_F(collision_world_test, capsule_contact_point_is_left_relative_to_the_object)
{
    place_floor({5, 0, 5});
    capsule body = {{5.3f, -0.2f, 4.8f}, {5.3f, -1, 4.8f}, 0.35f};
    collision_hit hit = overlap_capsule(&body);
    ASSERT_EQ(hit.hit, 1);
    expect_vec3_near(hit.point, {0.3f, 0, -0.2f});
}

TEST_F(collision_world_test, capsule_reports_the_deepest_contact_over_all_objects)
{
    place_floor({0, 0, 0});
    int32_t higher = place_floor({0, -0.1f, 0}, MATERIAL_WOOD);
    place_floor({0, 0.1f, 0});
    capsule body = {{0.3f, -0.2f, -0.2f}, {0.3f, -1, -0.2f}, 0.35f};
    collision_hit hit = overlap_capsule(&body);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_EQ(hit.object, higher);
    EXPECT_NEAR(hit.distance, 0.25f, 1e-6f);
}

TEST_F(collision_world_test, capsule_keeps_the_first_of_equally_deep_contacts)
{
    int32_t first = place_floor({0, 0, 0}, MATERIAL_METAL);
    place_floor({0, 0, 0}, MATERIAL_STONE);
    capsule body = {{0.3f, -0.2f, -0.2f}, {0.3f, -1, -0.2f}, 0.35f};
    collision_hit hit = overlap_capsule(&body);
    EXPECT_EQ(hit.object, first);
    EXPECT_EQ(hit.material, MATERIAL_METAL);
}

TEST_F(collision_world_test, capsule_beside_an_edge_is_pushed_away_from_it)
{
    place_floor({0, 0, 0});
    capsule body = {{1.2f, 0.5f, 0}, {1.2f, -0.5f, 0}, 0.35f};
    collision_hit hit = overlap_capsule(&body);
    ASSERT_EQ(hit.hit, 1);
    EXPECT_NEAR(hit.distance, 0.15f, 1e-5f);
    expect_vec3_near(hit.normal, {1, 0, 0});
    expect_vec3_near(hit.point, {1, 0, 0});
}

TEST(collision_primitives, degenerate_triangle_gives_no_capsule_contact)
{
    capsule body = {{0, -1, 0}, {0, 1, 0}, 1.0f};
    float depth;
    vec3 normal, point;
    EXPECT_EQ(capsule_triangle_contact(&body, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}, &depth, &normal, &point), 0);
}

// ---- Nearest edge probe ----

TEST_F(collision_world_test, nearest_edge_reports_the_closest_point_on_the_edge_in_the_world)
{
    place_floor({0, 0, 3});
    capsule body = {{1.2f, -0.1f, 3.5f}, {1.2f, -1, 3.5f}, 0.4f};
    vec3 point;
    ASSERT_EQ(nearest_edge_point(&body, &point), 1);
    expect_vec3_near(point, {1, 0, 3.5f});
}

TEST_F(collision_world_test, nearest_edge_ignores_faces)
{
    place_floor({0, 0, 0});
    // The face lies 0.1 under the axis, but every edge is farther than the radius.
    capsule body = {{0.3f, -0.1f, -0.2f}, {0.3f, -1, -0.2f}, 0.3f};
    vec3 point;
    EXPECT_EQ(nearest_edge_point(&body, &point), 0);
}

TEST_F(collision_world_test, nearest_edge_must_be_strictly_closer_than_the_radius)
{
    place_floor({0, 0, 0});
    vec3 point;
    capsule at_radius = {{1.5f, 0, 0.5f}, {1.5f, -1, 0.5f}, 0.5f};
    EXPECT_EQ(nearest_edge_point(&at_radius, &point), 0);
    capsule inside = {{1.5f, 0, 0.5f}, {1.5f, -1, 0.5f}, 0.51f};
    EXPECT_EQ(nearest_edge_point(&inside, &point), 1);
}

TEST_F(collision_world_test, nearest_edge_within_the_tolerance_answers_at_once)
{
    // The first floor's edge x = 1 lies within 0.0001 of the axis; the later floor's edge lies on it,
    // but the search has already ended.
    place_floor({0, 0, 0});
    place_floor({0.007f, 0, 0});
    capsule body = {{1.007f, 0.2f, 0.25f}, {1.007f, -0.2f, 0.25f}, 0.6f};
    vec3 point;
    ASSERT_EQ(nearest_edge_point(&body, &point), 1);
    expect_vec3_near(point, {1, 0, 0.25f});

    // Farther off, the later floor's edge is the nearer one and wins.
    capsule wider = {{1.2f, 0.2f, 0.25f}, {1.2f, -0.2f, 0.25f}, 0.6f};
    ASSERT_EQ(nearest_edge_point(&wider, &point), 1);
    expect_vec3_near(point, {1.007f, 0, 0.25f});
}

// ---- Primitives ----

TEST(collision_primitives, closest_point_on_segment_clamps_to_the_ends)
{
    expect_vec3_near(closest_point_on_segment({0.5f, 1, 0}, {0, 0, 0}, {1, 0, 0}), {0.5f, 0, 0});
    expect_vec3_near(closest_point_on_segment({-3, 1, 0}, {0, 0, 0}, {1, 0, 0}), {0, 0, 0});
    expect_vec3_near(closest_point_on_segment({3, 1, 0}, {0, 0, 0}, {1, 0, 0}), {1, 0, 0});
    expect_vec3_near(closest_point_on_segment({3, 1, 0}, {2, 2, 2}, {2, 2, 2}), {2, 2, 2});
}

TEST(collision_primitives, closest_point_on_triangle_finds_each_region)
{
    const vec3 a = {0, 0, 0}, b = {2, 0, 0}, c = {0, 0, 2};
    expect_vec3_near(closest_point_on_triangle({-1, 1, -1}, a, b, c), a);
    expect_vec3_near(closest_point_on_triangle({3, 1, -1}, a, b, c), b);
    expect_vec3_near(closest_point_on_triangle({-1, 1, 3}, a, b, c), c);
    expect_vec3_near(closest_point_on_triangle({1, 1, -1}, a, b, c), {1, 0, 0});
    expect_vec3_near(closest_point_on_triangle({-1, 1, 1}, a, b, c), {0, 0, 1});
    expect_vec3_near(closest_point_on_triangle({2, 1, 2}, a, b, c), {1, 0, 1});
    expect_vec3_near(closest_point_on_triangle({0.5f, -3, 0.5f}, a, b, c), {0.5f, 0, 0.5f});
}

TEST(collision_primitives, closest_points_of_crossing_segments)
{
    vec3 p, q;
    float squared = closest_points_segments({-1, 0, 0}, {1, 0, 0}, {0, 1, -1}, {0, 1, 1}, &p, &q);
    EXPECT_FLOAT_EQ(squared, 1.0f);
    expect_vec3_near(p, {0, 0, 0});
    expect_vec3_near(q, {0, 1, 0});
}

TEST(collision_primitives, parallel_segments_take_the_start_of_the_first)
{
    vec3 p, q;
    float squared = closest_points_segments({0, 0, 0}, {1, 0, 0}, {-0.5f, 1, 0}, {2, 1, 0}, &p, &q);
    EXPECT_FLOAT_EQ(squared, 1.0f);
    expect_vec3_near(p, {0, 0, 0});
    expect_vec3_near(q, {0, 1, 0});
}

TEST(collision_primitives, zero_length_segments_are_points)
{
    vec3 p, q;
    EXPECT_FLOAT_EQ(closest_points_segments({1, 1, 1}, {1, 1, 1}, {1, 3, 1}, {1, 3, 1}, &p, &q), 4.0f);
    EXPECT_FLOAT_EQ(closest_points_segments({0, 1, 5}, {0, 1, 5}, {-1, 0, 5}, {1, 0, 5}, &p, &q), 1.0f);
    expect_vec3_near(q, {0, 0, 5});
    EXPECT_FLOAT_EQ(closest_points_segments({-1, 0, 5}, {1, 0, 5}, {3, 0, 5}, {3, 0, 5}, &p, &q), 4.0f);
    expect_vec3_near(p, {1, 0, 5});
}

TEST(collision_primitives, ray_triangle_rejects_points_outside_and_behind)
{
    float t;
    const vec3 a = {0, 0, 0}, b = {1, 0, 0}, c = {0, 0, 1};
    EXPECT_EQ(intersect_ray_triangle({0.25f, -1, 0.25f}, {0, 1, 0}, a, b, c, &t), 1);
    EXPECT_FLOAT_EQ(t, 1.0f);
    EXPECT_EQ(intersect_ray_triangle({0.75f, -1, 0.75f}, {0, 1, 0}, a, b, c, &t), 0);
    EXPECT_EQ(intersect_ray_triangle({-0.25f, -1, 0.25f}, {0, 1, 0}, a, b, c, &t), 0);
    EXPECT_EQ(intersect_ray_triangle({0.25f, 1, 0.25f}, {0, 1, 0}, a, b, c, &t), 0);
}

TEST(collision_primitives, query_box_spans_both_points_and_the_margin)
{
    aabb box = query_box({1, -2, 3}, {-1, 2, 0}, 0.5f);
    expect_vec3_near(box.min, {-1.5f, -2.5f, -0.5f});
    expect_vec3_near(box.max, {1.5f, 2.5f, 3.5f});
}
