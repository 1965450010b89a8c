#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <vector>

#include "assets/world.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "game/player.h"
#include "game/fixed_sounds.h"
#include "support/asset_state.h"
#include "support/collision_scene.h"
#include "support/test_audio.h"

namespace {

constexpr float DT = 0.025f; // 40 updates a second
constexpr float QUARTER_TURN = 1.5707964f;
constexpr float EIGHTH_TURN = 0.78539819f;

enum : uint8_t {
    KEY_W = 'W',
    KEY_A = 'A',
    KEY_S = 'S',
    KEY_D = 'D',
    KEY_SHIFT = 0x10,
    KEY_ALT = 0x12,
    KEY_SPACE = 0x20,
};

int32_t step_sound(int32_t material, int32_t variant)
{
    return 100 + material * 10 + variant;
}

int32_t land_sound(int32_t material)
{
    return 200 + material;
}

constexpr int32_t HURT_SOUND = 300;
constexpr int32_t DEATH_SOUND = 301;
constexpr int32_t CLIMB_SOUND = 302;

class player_test : public testing::Test {
protected:
    void SetUp() override
    {
        reset_assets();
        start_collision_world();
        clear_player_motion();
        memset(key_state, 0, sizeof key_state);
        game_time = 0.0f;
        tick_dt = DT;
        ENABLE_HEAD_BOBBING = 0;
        health_visible_until = 0.0f;
        test_audio::reset();
        for (int32_t m = 0; m < MATERIAL_COUNT; ++m) {
            for (int32_t v = 0; v < FOOTSTEP_VARIANTS; ++v)
                sound_step[m][v] = step_sound(m, v);
            sound_land[m] = land_sound(m);
        }
        sound_hurt = HURT_SOUND;
        sound_death = DEATH_SOUND;
        sound_climb = CLIMB_SOUND;
    }

    void TearDown() override
    {
        memset(key_state, 0, sizeof key_state);
        ENABLE_HEAD_BOBBING = 0;
        reset_assets();
    }

    static object* player() { return registry_at<object>(&objects, PLAYER_OBJECT); }
    static player_motion_state& motion() { return player_motion; }

    // One fixed update as the tick driver runs it: previous placements saved, the player moved,
    // the clock advanced, pressed keys become held.
    static void tick()
    {
        for (int32_t i = 0; i < objects.count; ++i) {
            object* thing = registry_at<object>(&objects, i);
            thing->previous_position = thing->position;
            thing->previous_yaw = thing->yaw;
            thing->previous_pitch = thing->pitch;
        }
        update_player(player());
        game_time += tick_dt;
        promote_pressed_keys();
    }

    static void ticks(int count)
    {
        for (int i = 0; i < count; ++i)
            tick();
    }

    static void press(uint8_t code) { key_state[code] = KEY_PRESSED; }
    static void release(uint8_t code) { key_state[code] = KEY_UP; }

    static void floor(int32_t material = MATERIAL_STONE, float x0 = -20, float z0 = -20, float x1 = 20, float z1 = 20,
                      float y = 0)
    {
        collision_mesh mesh;
        mesh_collider(&mesh, material);
        mesh_floor(&mesh, x0, z0, x1, z1, y);
        place_object(register_collision_model(mesh), {0, 0, 0});
    }

    static int32_t box(vec3 lo, vec3 hi, int32_t material = MATERIAL_STONE)
    {
        collision_mesh mesh;
        mesh_collider(&mesh, material);
        mesh_box(&mesh, lo, hi);
        return place_object(register_collision_model(mesh), {0, 0, 0});
    }

    // A wall 4 high in the plane z = at, from x0 to x1, facing `front_z` (+1 or -1).
    static void wall_z(float at, float x0, float x1, float front_z)
    {
        collision_mesh mesh;
        mesh_quad(&mesh, {x0, 0, at}, {x1, 0, at}, {x1, -4, at}, {x0, -4, at}, {0, 0, front_z});
        place_object(register_collision_model(mesh), {0, 0, 0});
    }

    // A wall 4 high in the plane x = at, from z0 to z1, facing `front_x`.
    static void wall_x(float at, float z0, float z1, float front_x)
    {
        collision_mesh mesh;
        mesh_quad(&mesh, {at, 0, z0}, {at, 0, z1}, {at, -4, z1}, {at, -4, z0}, {front_x, 0, 0});
        place_object(register_collision_model(mesh), {0, 0, 0});
    }

    // Puts the player in the air just above the floor, falling at `speed` before this update's
    // gravity, after a long time in the air.
    static void falling_onto_the_floor(float speed_before_gravity, float air_time = 1.0f)
    {
        player()->position = {0, -0.1f, 0};
        motion().on_ground = 0;
        motion().air_time = air_time;
        motion().vertical_velocity = speed_before_gravity;
    }

    // Walks forward off the edge of a floor 3 above a lower one, up to the first update in the air.
    static void walk_off_a_ledge()
    {
        floor(MATERIAL_STONE, -20, -20, 20, 1, 0);
        floor(MATERIAL_STONE, -20, 1, 20, 20, 3);
        player()->position = {0, 0, 0.5f};
        press(KEY_W);
        while (motion().on_ground || player()->position.z < 1)
            tick();
    }

    static float horizontal_speed()
    {
        return sqrtf(motion().velocity.x * motion().velocity.x + motion().velocity.z * motion().velocity.z);
    }
};

// ---- Standing, walking, running ----

TEST_F(player_test, first_update_puts_the_feet_on_the_floor_without_a_sound)
{
    floor();
    tick();
    EXPECT_EQ(motion().on_ground, 1);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-6f);
    EXPECT_NEAR(motion().ground_level, 0.0f, 1e-6f);
    EXPECT_TRUE(test_audio::started().empty());
}

TEST_F(player_test, standing_still_plays_no_footstep_holds_step_distance_and_settles_the_bob)
{
    floor();
    ENABLE_HEAD_BOBBING = 1;
    motion().bob_offset = -0.05f;
    motion().bob_phase = 2.0f;
    tick();
    float previous_bob = motion().bob_offset;
    EXPECT_EQ(motion().bob_phase, 0.0f);
    EXPECT_NEAR(previous_bob, -0.05f * expf(-8.0f * DT), 1e-6f);
    for (int i = 0; i < 80; ++i) {
        tick();
        EXPECT_EQ(motion().step_distance, 1.5f);
        EXPECT_GT(motion().bob_offset, previous_bob);
        EXPECT_LE(motion().bob_offset, 0.0f);
        previous_bob = motion().bob_offset;
    }
    EXPECT_NEAR(motion().bob_offset, 0.0f, 1e-6f);
    EXPECT_EQ(motion().step_count, 0u);
    EXPECT_TRUE(test_audio::started().empty());
    EXPECT_EQ(player()->position.x, 0.0f);
    EXPECT_EQ(player()->position.z, 0.0f);
}

TEST_F(player_test, keys_walk_at_four_run_at_six_and_a_half_and_walk_slowly_at_two)
{
    floor(MATERIAL_STONE, -200, -200, 200, 200);
    struct gait {
        uint8_t modifier;
        float speed;
    };
    for (gait g : {gait{0, 4.0f}, gait{KEY_SHIFT, 6.5f}, gait{KEY_ALT, 2.0f}}) {
        memset(key_state, 0, sizeof key_state);
        if (g.modifier)
            press(g.modifier);
        press(KEY_W);
        ticks(60);
        EXPECT_NEAR(horizontal_speed(), g.speed, 1e-4f) << static_cast<int>(g.modifier);
    }
}

TEST_F(player_test, movement_keys_follow_the_heading)
{
    floor(MATERIAL_STONE, -200, -200, 200, 200);
    player()->yaw = QUARTER_TURN; // forward is +x
    struct heading {
        uint8_t key;
        vec3 direction;
    };
    for (heading h : {heading{KEY_W, {1, 0, 0}}, heading{KEY_S, {-1, 0, 0}}, heading{KEY_A, {0, 0, 1}},
                      heading{KEY_D, {0, 0, -1}}}) {
        memset(key_state, 0, sizeof key_state);
        motion().velocity = {0, 0, 0};
        press(h.key);
        ticks(20);
        EXPECT_NEAR(motion().velocity.x, 4.0f * h.direction.x, 1e-4f) << h.key;
        EXPECT_NEAR(motion().velocity.z, 4.0f * h.direction.z, 1e-4f) << h.key;
        EXPECT_EQ(motion().velocity.y, 0.0f);
    }
}

TEST_F(player_test, opposite_keys_cancel_and_friction_slows_the_player)
{
    floor();
    motion().velocity = {0, 0, 3.0f};
    motion().on_ground = 1;
    press(KEY_W);
    press(KEY_S);
    tick();
    EXPECT_NEAR(motion().velocity.z, 3.0f * expf(-10.0f * DT), 1e-6f);
}

// ---- Jumping and falling ----

TEST_F(player_test, walking_off_a_ledge_space_within_a_tenth_of_a_second_still_jumps)
{
    for (int air_ticks : {1, 3}) {
        SetUp();
        walk_off_a_ledge();
        ticks(air_ticks - 1);
        ASSERT_EQ(motion().on_ground, 0);
        ASSERT_LT(motion().air_time, 0.1f);
        press(KEY_SPACE);
        tick();
        EXPECT_FLOAT_EQ(motion().vertical_velocity, -4.0f + 20.0f * DT) << air_ticks;
    }
}

TEST_F(player_test, walking_off_a_ledge_space_after_a_tenth_of_a_second_does_not_jump)
{
    walk_off_a_ledge();
    while (motion().air_time <= 0.1f)
        tick();
    float falling = motion().vertical_velocity;
    ASSERT_GT(falling, 0.0f);
    press(KEY_SPACE);
    tick();
    EXPECT_FLOAT_EQ(motion().vertical_velocity, falling + 20.0f * DT);
}

TEST_F(player_test, jump_rises_lands_and_plays_the_landing_sound_of_the_floor)
{
    floor(MATERIAL_WOOD);
    tick();
    press(KEY_SPACE);
    tick();
    EXPECT_LT(player()->position.y, 0.0f);
    EXPECT_EQ(motion().on_ground, 0);
    int airborne = 1;
    while (!motion().on_ground && airborne < 200) {
        tick();
        ++airborne;
    }
    EXPECT_EQ(motion().on_ground, 1);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-6f);
    EXPECT_EQ(motion().vertical_velocity, 0.0f);
    EXPECT_EQ(motion().air_time, 0.0f);
    EXPECT_EQ(test_audio::started(), std::vector<int32_t>{land_sound(MATERIAL_WOOD)});
    EXPECT_EQ(player()->health, 100);
}

TEST_F(player_test, landing_after_a_tenth_of_a_second_or_less_in_the_air_is_silent)
{
    floor();
    falling_onto_the_floor(4.0f, 0.1f);
    tick();
    EXPECT_EQ(motion().on_ground, 1);
    EXPECT_TRUE(test_audio::started().empty());
}

TEST_F(player_test, landing_at_speed_twelve_does_no_damage)
{
    floor();
    falling_onto_the_floor(12.0f - 20.0f * DT);
    tick();
    ASSERT_EQ(motion().on_ground, 1);
    EXPECT_EQ(player()->health, 100);
    EXPECT_EQ(test_audio::started(), std::vector<int32_t>{land_sound(MATERIAL_STONE)});
    EXPECT_EQ(health_visible_until, 0.0f);
}

TEST_F(player_test, landing_at_speed_thirty_or_more_on_stone_kills)
{
    for (float speed : {30.0f, 45.0f}) {
        SetUp();
        floor(MATERIAL_STONE);
        game_time = 7.0f;
        falling_onto_the_floor(speed - 20.0f * DT);
        tick();
        ASSERT_EQ(motion().on_ground, 1);
        EXPECT_EQ(player()->health, 0) << speed;
        EXPECT_EQ(test_audio::started(), (std::vector<int32_t>{land_sound(MATERIAL_STONE), DEATH_SOUND})) << speed;
        EXPECT_FLOAT_EQ(health_visible_until, 7.0f + 3.2f);
    }
}

TEST_F(player_test, fall_damage_grows_with_speed_and_depends_on_the_floor)
{
    // Landing at 21: half of the way from harmless (12) to full damage (30).
    for (int32_t material = 0; material < MATERIAL_COUNT; ++material) {
        SetUp();
        floor(material);
        falling_onto_the_floor(21.0f - 20.0f * DT);
        tick();
        float factor = 1.0f;
        if (material == MATERIAL_GROUND || material == MATERIAL_CARPET)
            factor = 0.6f;
        if (material == MATERIAL_WOOD)
            factor = 0.8f;
        int32_t damage = static_cast<int32_t>(100.0f * factor * 0.5f);
        EXPECT_EQ(player()->health, 100 - damage) << material;
        EXPECT_EQ(test_audio::started(), (std::vector<int32_t>{land_sound(material), HURT_SOUND})) << material;
        EXPECT_FLOAT_EQ(health_visible_until, 3.2f);
    }
    EXPECT_EQ(100 - player()->health, 50); // ceramic takes the full share
}

TEST_F(player_test, damage_player_never_takes_health_below_zero)
{
    damage_player(player(), 30);
    EXPECT_EQ(player()->health, 70);
    damage_player(player(), 500);
    EXPECT_EQ(player()->health, 0);
}

TEST_F(player_test, dead_player_sinks_toward_the_floor_and_nothing_else_moves)
{
    floor();
    tick();
    player()->health = 0;
    game_time = 4.0f;
    press(KEY_W);
    press(KEY_SPACE);
    tick();
    EXPECT_EQ(motion().dead_flag, 1);
    EXPECT_EQ(motion().death_time, 4.0f);
    EXPECT_NEAR(player()->position.y, (1.0f - expf(-4.0f * DT)) * 1.25f, 1e-6f);
    ticks(200);
    EXPECT_EQ(motion().death_time, 4.0f);
    EXPECT_NEAR(player()->position.y, 1.25f, 1e-4f);
    EXPECT_EQ(player()->position.x, 0.0f);
    EXPECT_EQ(player()->position.z, 0.0f);
    EXPECT_EQ(motion().vertical_velocity, 0.0f);
    EXPECT_TRUE(test_audio::started().empty());
}

TEST_F(player_test, ground_probe_keeps_the_last_floor_when_it_finds_nothing)
{
    floor(MATERIAL_METAL);
    tick();
    ASSERT_EQ(motion().ground_material, MATERIAL_METAL);
    registry_at<object>(&objects, 1)->removed = 1;
    ticks(10);
    EXPECT_EQ(motion().ground_material, MATERIAL_METAL);
    EXPECT_NEAR(motion().ground_level, 0.0f, 1e-6f);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-6f);
    EXPECT_EQ(motion().on_ground, 1);
}

// ---- Walls and steps ----

TEST_F(player_test, body_inside_a_wall_is_pushed_out_in_one_pass)
{
    floor();
    wall_z(0.2f, -5, 5, -1);
    tick();
    EXPECT_NEAR(player()->position.z, 0.2f - 0.35f, 1e-5f);
    EXPECT_EQ(player()->position.x, 0.0f);
}

TEST_F(player_test, step_of_0_4_is_walked_up_at_once)
{
    floor();
    box({-2, -0.4f, 1}, {2, 0, 3});
    press(KEY_W);
    float highest = 0.0f;
    for (int i = 0; i < 40 && player()->position.z < 2; ++i) {
        tick();
        float y = player()->position.y;
        EXPECT_TRUE(fabsf(y) < 1e-6f || fabsf(y + 0.4f) < 1e-6f) << "feet between the floors at y = " << y;
        highest = fminf(highest, y);
    }
    EXPECT_GT(player()->position.z, 2.0f);
    EXPECT_NEAR(player()->position.y, -0.4f, 1e-6f);
    EXPECT_EQ(motion().on_ground, 1);
    EXPECT_NEAR(highest, -0.4f, 1e-6f);
}

TEST_F(player_test, wall_of_0_6_blocks)
{
    floor();
    box({-2, -0.6f, 1}, {2, 0, 3});
    press(KEY_W);
    ticks(80);
    EXPECT_LT(player()->position.z, 1.0f);
    EXPECT_GT(player()->position.z, 0.5f);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-6f);
    EXPECT_EQ(motion().contact_count, 1);
    EXPECT_NEAR(motion().contacts[0].normal.x, 0.0f, 1e-5f);
    EXPECT_LT(motion().contacts[0].normal.z, 0.0f);
}

TEST_F(player_test, running_into_a_wall_at_an_angle_slides_along_it_at_the_full_step_length)
{
    floor(MATERIAL_STONE, -50, -50, 50, 50);
    wall_z(2, -50, 50, -1);
    player()->position = {0, 0, 2 - 0.35f - 0.01f};
    player()->yaw = EIGHTH_TURN;
    press(KEY_W);
    ticks(40);
    for (int i = 0; i < 10; ++i) {
        vec3 before = player()->position;
        tick();
        ASSERT_EQ(motion().contact_count, 1);
        float along = motion().velocity.x * DT; // the tick's whole displacement along the wall
        EXPECT_NEAR(player()->position.x - before.x, along, 1e-4f);
        EXPECT_NEAR(player()->position.z, before.z, 1e-4f);
        EXPECT_LT(player()->position.z, 2 - 0.35f);
    }
    EXPECT_NEAR(horizontal_speed(), 4.0f, 1e-4f); // walls do not take speed away
}

TEST_F(player_test, walking_into_a_corner_resolves_two_contacts_and_stops_there)
{
    floor();
    wall_z(2, -5, 5, -1);
    wall_x(2, -5, 5, -1);
    player()->yaw = EIGHTH_TURN;
    press(KEY_W);
    int most_contacts = 0;
    for (int i = 0; i < 80; ++i) {
        tick();
        most_contacts = motion().contact_count > most_contacts ? motion().contact_count : most_contacts;
    }
    EXPECT_EQ(most_contacts, 2);
    EXPECT_EQ(motion().contact_count, 2);
    vec3 settled = player()->position;
    EXPECT_LT(settled.x, 2 - 0.35f);
    EXPECT_LT(settled.z, 2 - 0.35f);
    EXPECT_GT(settled.x, 2 - 0.35f - 0.05f);
    EXPECT_GT(settled.z, 2 - 0.35f - 0.05f);
    ticks(10);
    EXPECT_NEAR(player()->position.x, settled.x, 1e-3f);
    EXPECT_NEAR(player()->position.z, settled.z, 1e-3f);
    // The contacts face the player from both walls.
    vec3 n0 = motion().contacts[0].normal, n1 = motion().contacts[1].normal;
    EXPECT_NEAR(fabsf(n0.x) + fabsf(n1.x), 1.0f, 1e-4f);
    EXPECT_NEAR(fabsf(n0.z) + fabsf(n1.z), 1.0f, 1e-4f);
}

// ---- Footsteps and the head bob ----

TEST_F(player_test, footsteps_follow_the_order_table_every_two_units_after_a_first_half_unit)
{
    floor(MATERIAL_GROUND, -5, -5, 5, 200);
    tick();
    press(KEY_W);
    float first_step_at = -1.0f;
    while (test_audio::started().size() < 70 && player()->position.z < 190) {
        size_t before = test_audio::started().size();
        tick();
        if (before == 0 && test_audio::started().size() == 1)
            first_step_at = player()->position.z;
    }
    ASSERT_EQ(test_audio::started().size(), 70u);
    EXPECT_GE(first_step_at, 0.5f);
    EXPECT_LT(first_step_at, 0.5f + 4.0f * DT);
    for (uint32_t k = 0; k < 70; ++k) {
        uint8_t variant = footstep_order[(k + 1) % FOOTSTEP_ORDER_LENGTH];
        EXPECT_EQ(test_audio::started()[k], step_sound(MATERIAL_GROUND, variant)) << k;
    }
    EXPECT_EQ(motion().step_count, 70u);
}

TEST_F(player_test, footstep_order_uses_every_variant_once_in_each_run_of_four)
{
    for (int run = 0; run < FOOTSTEP_ORDER_LENGTH; run += FOOTSTEP_VARIANTS) {
        int seen = 0;
        for (int i = run; i < run + FOOTSTEP_VARIANTS; ++i) {
            ASSERT_LT(footstep_order[i], FOOTSTEP_VARIANTS);
            seen |= 1 << footstep_order[i];
        }
        EXPECT_EQ(seen, 15) << run;
    }
}

TEST_F(player_test, footsteps_on_an_unknown_material_are_silent)
{
    floor(7);
    tick();
    press(KEY_W);
    ticks(100);
    EXPECT_GT(motion().step_count, 3u);
    EXPECT_TRUE(test_audio::started().empty());
}

TEST_F(player_test, head_bob_follows_the_distance_walked_at_walking_speed)
{
    floor(MATERIAL_STONE, -5, -5, 5, 200);
    ENABLE_HEAD_BOBBING = 1;
    press(KEY_W);
    ticks(40);
    for (int i = 0; i < 20; ++i) {
        float phase = motion().bob_phase;
        tick();
        vec3 moved = vec3_sub(player()->position, player()->previous_position);
        float d = vec3_length(moved);
        ASSERT_GT(d, DT * 3.9999f);
        EXPECT_FLOAT_EQ(motion().bob_phase, phase + d * 3.0f);
        EXPECT_FLOAT_EQ(motion().bob_offset, (cosf(motion().bob_phase) - 1.0f) * 0.5f * 0.05f);
        EXPECT_LE(motion().bob_offset, 0.0f);
        EXPECT_GE(motion().bob_offset, -0.05f);
    }
}

TEST_F(player_test, head_bob_stays_still_when_walking_slowly_or_switched_off)
{
    floor(MATERIAL_STONE, -5, -5, 5, 200);
    ENABLE_HEAD_BOBBING = 1;
    press(KEY_ALT);
    press(KEY_W);
    ticks(60);
    EXPECT_EQ(motion().bob_phase, 0.0f);
    EXPECT_EQ(motion().bob_offset, 0.0f);

    ENABLE_HEAD_BOBBING = 0;
    release(KEY_ALT);
    ticks(60);
    EXPECT_EQ(motion().bob_phase, 0.0f);
    EXPECT_EQ(motion().bob_offset, 0.0f);
}

// ---- Climbing ----

class climb_test : public player_test {
protected:
    void SetUp() override
    {
        player_test::SetUp();
        floor();
        box({-2, -1.2f, 0.5f}, {2, 0, 2.5f});
        tick();
    }

    // Jumps with Space held against the ledge until the climb starts.
    static void jump_until_climbing()
    {
        press(KEY_SPACE);
        for (int i = 0; i < 40 && !motion().climbing; ++i)
            tick();
    }
};

TEST_F(climb_test, rising_with_space_held_at_a_ledge_starts_a_climb)
{
    jump_until_climbing();
    ASSERT_EQ(motion().climbing, 1);
    EXPECT_EQ(test_audio::started(), std::vector<int32_t>{CLIMB_SOUND});
    // The target lies just beyond the ledge's edge, straight ahead.
    EXPECT_NEAR(motion().climb_target.x, 0.0f, 1e-5f);
    EXPECT_NEAR(motion().climb_target.y, -1.2f, 1e-5f);
    EXPECT_NEAR(motion().climb_target.z, 0.5f + 0.175f, 1e-5f);
    vec3 way = vec3_sub(motion().climb_target, motion().climb_start);
    EXPECT_FLOAT_EQ(motion().climb_duration, vec3_length(way));
    EXPECT_EQ(motion().vertical_velocity, 0.0f);
    EXPECT_EQ(motion().air_time, 0.0f);
}

TEST_F(climb_test, climb_rises_straight_up_first_then_goes_over_the_edge)
{
    jump_until_climbing();
    ASSERT_EQ(motion().climbing, 1);
    vec3 start = motion().climb_start;
    int ticks_climbing = 0;
    while (motion().climbing && ticks_climbing < 100) {
        tick();
        ++ticks_climbing;
        float s = fminf((game_time - DT - motion().climb_start_time) / motion().climb_duration, 1.0f);
        float e = (3 - 2 * s) * s * s;
        if (motion().climbing && e < 0.49f) {
            EXPECT_EQ(player()->position.x, start.x);
            EXPECT_EQ(player()->position.z, start.z);
        }
    }
    EXPECT_EQ(motion().climbing, 0);
    EXPECT_EQ(player()->position.x, motion().climb_target.x);
    EXPECT_EQ(player()->position.z, motion().climb_target.z);
    EXPECT_NEAR(ticks_climbing * DT, motion().climb_duration, 2 * DT);
    ticks(5);
    EXPECT_EQ(motion().on_ground, 1);
    EXPECT_NEAR(player()->position.y, -1.2f, 1e-5f);
    EXPECT_EQ(test_audio::started().front(), CLIMB_SOUND);
}

TEST_F(climb_test, letting_go_of_space_before_halfway_drops_the_player_where_he_is)
{
    jump_until_climbing();
    ASSERT_EQ(motion().climbing, 1);
    ticks(4);
    ASSERT_EQ(motion().climbing, 1);
    vec3 before = player()->position;
    ASSERT_LT(before.y, motion().climb_start.y);
    release(KEY_SPACE);
    tick();
    EXPECT_EQ(motion().climbing, 0);
    EXPECT_EQ(player()->position.x, before.x);
    EXPECT_EQ(player()->position.z, before.z);
    EXPECT_GT(player()->position.y, before.y); // falling again
    for (int i = 0; i < 100 && !motion().on_ground; ++i)
        tick();
    EXPECT_EQ(motion().on_ground, 1);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-6f);
    EXPECT_LT(player()->position.z, 0.5f);
}

TEST_F(climb_test, letting_go_of_space_after_halfway_finishes_the_climb)
{
    jump_until_climbing();
    ASSERT_EQ(motion().climbing, 1);
    float halfway_ticks = motion().climb_duration * 0.5f / DT;
    ticks(static_cast<int>(halfway_ticks) + 3);
    ASSERT_EQ(motion().climbing, 1);
    release(KEY_SPACE);
    for (int i = 0; i < 100 && motion().climbing; ++i)
        tick();
    EXPECT_EQ(player()->position.z, motion().climb_target.z);
    ticks(5);
    EXPECT_NEAR(player()->position.y, -1.2f, 1e-5f);
}

TEST_F(climb_test, no_climb_without_room_above_the_ledge)
{
    // A ceiling slab low over the ledge leaves no room for the body.
    box({-2, -2.6f, 0.4f}, {2, -2.2f, 2.5f});
    jump_until_climbing();
    EXPECT_EQ(motion().climbing, 0);
    // The jump happened (it ended in a landing), but no climb began.
    EXPECT_EQ(test_audio::started(), std::vector<int32_t>{land_sound(MATERIAL_STONE)});
}

} // namespace
