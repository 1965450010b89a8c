#include <gtest/gtest.h>

#include <float.h>
#include <string.h>

#include <filesystem>
#include <string>

#include "assets/world.h"
#include "core/loop_state.h"
#include "game/collision.h"
#include "game/player.h"
#include "support/asset_state.h"
#include "support/shipped_level.h"

namespace {

constexpr float DT = 0.025f;

class shipped_level_walk : public testing::Test {
protected:
    void SetUp() override
    {
        previous_directory = std::filesystem::current_path().string();
        reset_assets();
        ASSERT_EQ(load_shipped_level(), 1);
        clear_player_motion();
        memset(key_state, 0, sizeof key_state);
        game_time = 0;
        tick_dt = DT;
    }

    void TearDown() override
    {
        memset(key_state, 0, sizeof key_state);
        reset_assets();
        std::filesystem::current_path(previous_directory);
    }

    static object* player() { return registry_at<object>(&objects, PLAYER_OBJECT); }

    static void tick()
    {
        for (int32_t i = 0; i < objects.count; ++i) {
            object* thing = registry_at<object>(&objects, i);
            thing->previous_position = thing->position;
        }
        update_player(player());
        game_time += tick_dt;
        promote_pressed_keys();
    }

    std::string previous_directory;
};

TEST_F(shipped_level_walk, player_at_the_origin_stands_on_solid_ground)
{
    collision_hit ground = cast_ray({0, -0.85f, 0}, {0, 1, 0}, FLT_MAX);
    ASSERT_EQ(ground.hit, 1);
    EXPECT_NEAR(ground.point.y, 0.0f, 1e-5f);
    capsule body = {{0, -0.85f, 0}, {0, -1.75f, 0}, 0.35f};
    EXPECT_EQ(overlap_capsule(&body).hit, 0);

    tick();
    EXPECT_EQ(player_motion.on_ground, 1);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-5f);
    EXPECT_EQ(player()->position.x, 0.0f);
    EXPECT_EQ(player()->position.z, 0.0f);
}

TEST_F(shipped_level_walk, walking_forward_from_the_origin_heads_for_the_keep_on_the_ground)
{
    tick();
    key_state['W'] = KEY_PRESSED;
    float last_z = player()->position.z;
    for (int i = 0; i < 80; ++i) { // two seconds
        tick();
        EXPECT_EQ(player_motion.on_ground, 1) << i;
        EXPECT_NEAR(player()->position.y, 0.0f, 1e-5f) << i;
        EXPECT_GT(player()->position.z, last_z) << i;
        EXPECT_EQ(player()->position.x, 0.0f) << i;
        EXPECT_EQ(player_motion.contact_count, 0) << i;
        last_z = player()->position.z;
    }
    // About eight units at walking speed, short of the keep's front at z = 10.
    EXPECT_GT(last_z, 7.0f);
    EXPECT_LT(last_z, 10.0f - 0.35f);
}

TEST_F(shipped_level_walk, keep_wall_beside_the_door_stops_the_player)
{
    player()->position = {2, 0, 0};
    tick();
    key_state['W'] = KEY_PRESSED;
    for (int i = 0; i < 160; ++i)
        tick();
    EXPECT_NEAR(player()->position.z, 10.0f - 0.35f - 0.01f, 1e-3f);
    ASSERT_GE(player_motion.contact_count, 1);
    EXPECT_NEAR(player_motion.contacts[0].normal.z, -1.0f, 1e-4f);
    EXPECT_NEAR(player()->position.y, 0.0f, 1e-5f);
}

} // namespace
