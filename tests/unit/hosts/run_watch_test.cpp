#include <gtest/gtest.h>

#include <math.h>

#include "assets/world.h"
#include "core/numbers.h"
#include "game/interaction.h"
#include "hosts/run_watch.h"
#include "support/asset_reset.h"

namespace {

// A world of the player and one door whose leaf stands `degrees` from its closed yaw of 30 degrees.
class run_watch_test : public testing::Test {
protected:
    void SetUp() override
    {
        reset_assets();
        run_watch_reset();
        ASSERT_EQ(registry_claim(&objects), PLAYER_OBJECT);
        int32_t leaf = registry_claim(&objects);
        int32_t index = registry_claim(&doors);
        door* d = registry_at<door>(&doors, index);
        d->object = leaf;
        d->closed_yaw = 30.0f * DEGREES_TO_RADIANS;
        swing_to(0.0f);
    }
    void TearDown() override { reset_assets(); }

    static void swing_to(float degrees)
    {
        const door* d = registry_at<door>(&doors, 0);
        registry_at<object>(&objects, d->object)->yaw = d->closed_yaw + degrees * DEGREES_TO_RADIANS;
    }
};

} // namespace

TEST_F(run_watch_test, a_door_swung_fully_either_way_stays_within_its_swing)
{
    swing_to(80.0f);
    run_watch_update(0);
    swing_to(-80.0f);
    run_watch_update(1);
    EXPECT_EQ(watch.updates_watched, 2);
    EXPECT_EQ(watch.door_beyond_swing, 0);
    EXPECT_NEAR(watch.widest_door_swing_degrees, 80.0f, 0.001f);
}

TEST_F(run_watch_test, a_door_leaf_beyond_its_swing_is_counted_for_every_update_it_stands_there)
{
    swing_to(81.0f);
    run_watch_update(0);
    run_watch_update(1);
    swing_to(10.0f);
    run_watch_update(2);
    EXPECT_EQ(watch.door_beyond_swing, 2);
    EXPECT_NEAR(watch.widest_door_swing_degrees, 81.0f, 0.001f);
}

TEST_F(run_watch_test, a_player_coordinate_that_is_not_finite_is_counted_from_its_first_update)
{
    run_watch_update(0);
    registry_at<object>(&objects, PLAYER_OBJECT)->position.y = NAN;
    run_watch_update(1);
    registry_at<object>(&objects, PLAYER_OBJECT)->position.y = INFINITY;
    run_watch_update(2);
    EXPECT_EQ(watch.player_not_finite, 2);
    EXPECT_EQ(watch.first_player_not_finite, 1);
}
