#include <gtest/gtest.h>

#include <stdlib.h>

#include "assets/registry.h"

namespace {

// Each test starts and ends with an empty name table.
class asset_name_of_test : public testing::Test {
protected:
    void SetUp() override { clear(); }
    void TearDown() override { clear(); }
    static void clear()
    {
        free(asset_names.entries);
        asset_names = {};
    }
};

} // namespace

TEST_F(asset_name_of_test, finds_the_name_registered_for_a_kind_and_index)
{
    asset_name_add(ASSET_SOUND, "door_opening.wav", 0);
    asset_name_add(ASSET_TEXTURE, "stone.png", 1);
    asset_name_add(ASSET_SOUND, "door_closing.wav", 1);
    EXPECT_STREQ(asset_name_of(ASSET_SOUND, 1), "door_closing.wav");
    EXPECT_STREQ(asset_name_of(ASSET_TEXTURE, 1), "stone.png");
}

TEST_F(asset_name_of_test, an_unknown_index_or_kind_has_no_name)
{
    asset_name_add(ASSET_SOUND, "door_opening.wav", 0);
    EXPECT_EQ(asset_name_of(ASSET_SOUND, 1), nullptr);
    EXPECT_EQ(asset_name_of(ASSET_MODEL, 0), nullptr);
    EXPECT_EQ(asset_name_of(ASSET_SOUND, -1), nullptr);
}

TEST_F(asset_name_of_test, a_slot_taken_again_answers_with_its_latest_name)
{
    asset_name_add(ASSET_SOUND, "first.wav", 3);
    asset_name_add(ASSET_SOUND, "second.wav", 3);
    EXPECT_STREQ(asset_name_of(ASSET_SOUND, 3), "second.wav");
}
