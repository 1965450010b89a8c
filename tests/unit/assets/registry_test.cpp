#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "assets/registry.h"
#include "support/asset_state.h"
#include "support/test_heap.h"

namespace {

struct sample_record {
    int32_t value;
    char label[12];
};

// A pool of its own for each test, released when the test ends.
struct sample_pool {
    registry pool = REGISTRY_OF(sample_record);
    ~sample_pool()
    {
        free(pool.records);
        free(pool.in_use);
    }
};

// Each test starts and ends with an empty name table.
class asset_names_test : public testing::Test {
protected:
    void SetUp() override { reset_assets(); }
    void TearDown() override { reset_assets(); }
};

} // namespace

TEST(registry_alloc, first_slots_count_up_from_zero)
{
    sample_pool p;
    EXPECT_EQ(registry_alloc(&p.pool), 0);
    EXPECT_EQ(registry_alloc(&p.pool), 1);
    EXPECT_EQ(registry_alloc(&p.pool), 2);
    EXPECT_EQ(p.pool.count, 3);
}

TEST(registry_alloc, eleventh_record_grows_the_pool_from_10_to_20)
{
    sample_pool p;
    for (int i = 0; i < 10; ++i)
        registry_alloc(&p.pool);
    EXPECT_EQ(p.pool.capacity, 10u);
    test_heap::reset();
    EXPECT_EQ(registry_alloc(&p.pool), 10);
    EXPECT_EQ(p.pool.capacity, 20u);
    // Both blocks grow to the same byte size: records and flags alike.
    EXPECT_EQ(test_heap::sizes_in_units_of(sizeof(sample_record)), std::vector<size_t>({20, 20}));
}

TEST(registry_alloc, freed_slot_is_reused_lowest_first_and_zeroed)
{
    sample_pool p;
    for (int i = 0; i < 4; ++i) {
        int32_t index = registry_alloc(&p.pool);
        registry_at<sample_record>(&p.pool, index)->value = 100 + i;
    }
    EXPECT_EQ(registry_free(&p.pool, 2), 1);
    EXPECT_EQ(registry_free(&p.pool, 1), 1);
    EXPECT_EQ(registry_alloc(&p.pool), 1);
    EXPECT_EQ(registry_at<sample_record>(&p.pool, 1)->value, 0);
    EXPECT_EQ(registry_alloc(&p.pool), 2);
    EXPECT_EQ(registry_alloc(&p.pool), 4);
}

TEST(registry_free, keeps_the_record_contents)
{
    sample_pool p;
    int32_t index = registry_alloc(&p.pool);
    strcpy(registry_at<sample_record>(&p.pool, index)->label, "kept");
    EXPECT_EQ(registry_free(&p.pool, index), 1);
    EXPECT_EQ(registry_in_use(&p.pool, index), 0);
    EXPECT_STREQ(registry_at<sample_record>(&p.pool, index)->label, "kept");
}

TEST(registry_free, index_out_of_range_fails)
{
    sample_pool p;
    registry_alloc(&p.pool);
    EXPECT_EQ(registry_free(&p.pool, -1), 0);
    EXPECT_EQ(registry_free(&p.pool, 1), 0);
    EXPECT_EQ(registry_free(&p.pool, 0), 1);
}

TEST(registry_alloc, failed_growth_returns_zero_with_the_capacity_raised)
{
    sample_pool p;
    for (int i = 0; i < 10; ++i)
        registry_at<sample_record>(&p.pool, registry_alloc(&p.pool))->value = i + 1;
    test_heap::reset();
    test_heap::fail_request(1);
    EXPECT_EQ(registry_alloc(&p.pool), 0);
    EXPECT_EQ(p.pool.capacity, 20u);
    EXPECT_EQ(p.pool.count, 10);
    // The blocks were not grown, so the next allocation grows them before using slot 10.
    EXPECT_EQ(registry_alloc(&p.pool), 10);
    EXPECT_EQ(p.pool.capacity, 20u);
}

TEST_F(asset_names_test, unknown_name_is_minus_one)
{
    EXPECT_EQ(asset_name_find(ASSET_MODEL, "crate.mdl"), -1);
}

TEST_F(asset_names_test, name_is_found_under_its_own_kind_only)
{
    ASSERT_EQ(asset_name_add(ASSET_MODEL, "crate", 4), 1);
    EXPECT_EQ(asset_name_find(ASSET_MODEL, "crate"), 4);
    EXPECT_EQ(asset_name_find(ASSET_TEXTURE, "crate"), -1);
}

TEST_F(asset_names_test, names_compare_case_sensitively)
{
    ASSERT_EQ(asset_name_add(ASSET_TEXTURE, "Wall.png", 1), 1);
    ASSERT_EQ(asset_name_add(ASSET_TEXTURE, "wall.png", 2), 1);
    EXPECT_EQ(asset_name_find(ASSET_TEXTURE, "Wall.png"), 1);
    EXPECT_EQ(asset_name_find(ASSET_TEXTURE, "wall.png"), 2);
}

TEST_F(asset_names_test, name_of_39_characters_registers)
{
    std::string name(39, 'n');
    ASSERT_EQ(asset_name_add(ASSET_MODEL, name.c_str(), 7), 1);
    EXPECT_EQ(asset_name_find(ASSET_MODEL, name.c_str()), 7);
}

TEST_F(asset_names_test, name_of_40_characters_does_not_fit)
{
    std::string name(40, 'n');
    EXPECT_EQ(asset_name_add(ASSET_MODEL, name.c_str(), 7), 0);
    EXPECT_EQ(asset_names.count, 0);
}

TEST_F(asset_names_test, first_of_two_equal_names_wins)
{
    asset_name_add(ASSET_DIALOGUE, "guard.dlg", 3);
    asset_name_add(ASSET_DIALOGUE, "guard.dlg", 9);
    EXPECT_EQ(asset_name_find(ASSET_DIALOGUE, "guard.dlg"), 3);
}

TEST_F(asset_names_test, table_grows_by_ten_entries)
{
    test_heap::reset();
    for (int i = 0; i < 11; ++i)
        ASSERT_EQ(asset_name_add(ASSET_SOUND, ("s" + std::to_string(i)).c_str(), i), 1);
    EXPECT_EQ(asset_names.capacity, 20);
    EXPECT_EQ(test_heap::sizes_in_units_of(sizeof(asset_name)), std::vector<size_t>({10, 20}));
    EXPECT_EQ(asset_name_find(ASSET_SOUND, "s10"), 10);
}

TEST_F(asset_names_test, failed_growth_refuses_the_name)
{
    test_heap::reset();
    test_heap::fail_request(1);
    EXPECT_EQ(asset_name_add(ASSET_MODEL, "a", 1), 0);
    EXPECT_EQ(asset_names.count, 0);
}

TEST_F(asset_names_test, adopted_record_is_copied_and_named)
{
    sample_pool p;
    sample_record record = {42, "loaded"};
    int32_t index = registry_adopt(&p.pool, ASSET_ANIMATION, "walk.anm", &record);
    ASSERT_EQ(index, 0);
    EXPECT_EQ(registry_at<sample_record>(&p.pool, index)->value, 42);
    EXPECT_EQ(asset_name_find(ASSET_ANIMATION, "walk.anm"), 0);
}

TEST_F(asset_names_test, adopting_under_a_40_character_name_frees_the_slot)
{
    sample_pool p;
    sample_record record = {42, "loaded"};
    EXPECT_EQ(registry_adopt(&p.pool, ASSET_MODEL, std::string(40, 'm').c_str(), &record), -1);
    EXPECT_EQ(p.pool.count, 1);
    EXPECT_EQ(registry_in_use(&p.pool, 0), 0);
}

TEST(asset_path, root_folder_and_name)
{
    char path[ASSET_PATH_CAPACITY];
    ASSERT_EQ(asset_path(path, FOLDER_MODELS, "crate.mdl"), 1);
    EXPECT_STREQ(path, "gloamhold_data/models/crate.mdl");
    ASSERT_EQ(asset_path(path, FOLDER_TEXTURES, "env_glass@t5.png"), 1);
    EXPECT_STREQ(path, "gloamhold_data/textures/env_glass@t5.png");
}

TEST(asset_path, path_longer_than_259_characters_is_refused)
{
    char path[ASSET_PATH_CAPACITY];
    EXPECT_EQ(asset_path(path, FOLDER_SOUNDS, std::string(260, 's').c_str()), 0);
    EXPECT_EQ(strlen(path), 259u);
}

TEST_F(asset_names_test, name_of_finds_the_name_registered_for_a_kind_and_index)
{
    asset_name_add(ASSET_SOUND, "door_opening.wav", 0);
    asset_name_add(ASSET_TEXTURE, "stone.png", 1);
    asset_name_add(ASSET_SOUND, "door_closing.wav", 1);
    EXPECT_STREQ(asset_name_of(ASSET_SOUND, 1), "door_closing.wav");
    EXPECT_STREQ(asset_name_of(ASSET_TEXTURE, 1), "stone.png");
}

TEST_F(asset_names_test, name_of_an_unknown_index_or_kind_has_no_name)
{
    asset_name_add(ASSET_SOUND, "door_opening.wav", 0);
    EXPECT_EQ(asset_name_of(ASSET_SOUND, 1), nullptr);
    EXPECT_EQ(asset_name_of(ASSET_MODEL, 0), nullptr);
    EXPECT_EQ(asset_name_of(ASSET_SOUND, -1), nullptr);
}

TEST_F(asset_names_test, name_of_a_slot_taken_again_answers_with_its_latest_name)
{
    asset_name_add(ASSET_SOUND, "first.wav", 3);
    asset_name_add(ASSET_SOUND, "second.wav", 3);
    EXPECT_STREQ(asset_name_of(ASSET_SOUND, 3), "second.wav");
}
