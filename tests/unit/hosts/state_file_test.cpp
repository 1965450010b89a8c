#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <iterator>
#include <string>

#include "assets/item.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "game/interaction.h"
#include "hosts/headless/headless_audio.h"
#include "hosts/state_file.h"
#include "platform/platform.h"
#include "support/temp_files.h"

namespace {

std::string formatted(float value)
{
    char buffer[48];
    json_float(buffer, sizeof buffer, value);
    return buffer;
}

std::string state_text(int32_t tick, int64_t frames, const sound_start_log* sounds = &headless_sound_starts)
{
    std::string path = test_folder() + "/state.json";
    FILE* file = fopen(path.c_str(), "wb");
    EXPECT_EQ(write_state_file(file, tick, frames, sounds, nullptr), 1);
    fclose(file);
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class headless_state_test : public testing::Test {
protected:
    void SetUp() override
    {
        headless_audio_reset();
        free(asset_names.entries);
        asset_names = {};
        game_time = 0.0f;
    }
    void TearDown() override
    {
        headless_audio_reset();
        free(asset_names.entries);
        asset_names = {};
        FOV = 90.0f;
    }
};

} // namespace

TEST(json_float, writes_the_fewest_digits_that_give_the_same_float)
{
    EXPECT_EQ(formatted(3.0f), "3.0");
    EXPECT_EQ(formatted(90.0f), "90.0");
    EXPECT_EQ(formatted(0.1f), "0.1");
    EXPECT_EQ(formatted(-0.25f), "-0.25");
    EXPECT_EQ(formatted(0.0f), "0.0");
    EXPECT_EQ(formatted(1e20f), "1e+20");
    EXPECT_EQ(strtof(formatted(3.0000024f).c_str(), nullptr), 3.0000024f);
    EXPECT_EQ(strtof(formatted(1.2345678e-7f).c_str(), nullptr), 1.2345678e-7f);
}

TEST(json_float, infinities_and_nan_are_null)
{
    EXPECT_EQ(formatted(INFINITY), "null");
    EXPECT_EQ(formatted(NAN), "null");
}

TEST_F(headless_state_test, the_state_holds_the_clocks_and_every_setting)
{
    game_time = 3.0f;
    FOV = 75.5f;
    std::string text = state_text(120, 180);
    EXPECT_EQ(text.rfind("{\"tick\": 120, \"game_time\": 3.0, \"frames\": 180,", 0), 0u) << text;
    for (const char* field : {"\"FPS\": 60", "\"UPS\": 40", "\"SCREEN_RESOLUTION\": [640, 480]",
                              "\"SCREEN_SCALE\": 1.0", "\"MOUSE_SENSITIVITY_X\": 1.0", "\"MOUSE_SENSITIVITY_Y\": 1.0",
                              "\"AUDIO_VOLUME\": 1.0", "\"FOV\": 75.5", "\"TEXTURE_INTERPOLATION\": 0",
                              "\"TEXTURE_DITHERING\": 0", "\"LIGHT_DITHERING\": 0", "\"ENABLE_HEAD_BOBBING\": 0",
                              "\"mouse_captured\": 0"})
        EXPECT_NE(text.find(field), std::string::npos) << field;
    EXPECT_EQ(text.find("player"), std::string::npos) << "no part of the game that does not exist is written";
    EXPECT_NE(text.find("\"sounds\": []}"), std::string::npos);
}

TEST_F(headless_state_test, started_sounds_are_listed_in_order_by_name)
{
    asset_name_add(ASSET_SOUND, "door_unlock.wav", 3);
    asset_name_add(ASSET_SOUND, "quote\"d.wav", 4);
    headless_audio_log_sounds(12);
    platform_audio_voice_started(3);
    headless_audio_log_sounds(40);
    platform_audio_voice_started(4);
    platform_audio_voice_started(9);
    std::string text = state_text(41, 60);
    EXPECT_NE(text.find("\"sounds\": [{\"tick\": 12, \"sound\": 3, \"name\": \"door_unlock.wav\"},\n"
                        "            {\"tick\": 40, \"sound\": 4, \"name\": \"quote\\\"d.wav\"},\n"
                        "            {\"tick\": 40, \"sound\": 9, \"name\": null}]}"),
              std::string::npos)
        << text;
}

TEST_F(headless_state_test, a_host_that_keeps_no_sound_log_leaves_the_sounds_out)
{
    headless_audio_log_sounds(1);
    platform_audio_voice_started(3);
    std::string text = state_text(2, 3, nullptr);
    EXPECT_EQ(text.find("\"sounds\""), std::string::npos) << text;
    EXPECT_NE(text.find("\"mouse_captured\": 0}\n"), std::string::npos) << "the object still closes: " << text;
}

namespace {

template <typename T> void empty_pool(registry* pool)
{
    free(pool->records);
    free(pool->in_use);
    *pool = REGISTRY_OF(T);
}

// A started game with a door, two items carried and one object taken.
class headless_interaction_state_test : public headless_state_test {
protected:
    void SetUp() override
    {
        headless_state_test::SetUp();
        clear_interaction();
        ASSERT_EQ(create_player(), 1);
        registry_claim(&items); // the placeholder
        for (const char* name : {"Iron key", "Silver \"coin\""}) {
            item* carried = registry_at<item>(&items, registry_claim(&items));
            strcpy(carried->name, name);
        }
        int32_t leaf = registry_claim(&objects);
        registry_at<object>(&objects, leaf)->yaw = 0.5f;
        door* d = registry_at<door>(&doors, registry_claim(&doors));
        *d = {leaf, 1, 0, 3, 0.0f, 0.0f, 0.5f, 1.0f};
    }
    void TearDown() override
    {
        clear_interaction();
        empty_pool<object>(&objects);
        empty_pool<door>(&doors);
        empty_pool<item>(&items);
        headless_state_test::TearDown();
    }
};

} // namespace

TEST_F(headless_interaction_state_test, the_state_holds_the_focus_message_inventory_doors_and_what_was_taken)
{
    game_time = 2.0f;
    focus_object = 1;
    show_message("This door is locked.");
    inventory.slots[0] = {1, 1};
    inventory.slots[1] = {2, 3};
    inventory.slot_count = 2;
    inventory.target_selection = -1.0f;
    inventory.armed_slot = 0;
    object_list_append(&removed_objects, 7);
    object_list_append(&removed_objects, 4);
    std::string text = state_text(80, 120);
    for (const char* part : {"\"focus_object\": 1,",
                             "\"message\": {\"text\": \"This door is locked.\", \"visible\": 1}",
                             "\"slots\": [{\"item\": 1, \"name\": \"Iron key\", \"count\": 1}, "
                             "{\"item\": 2, \"name\": \"Silver \\\"coin\\\"\", \"count\": 3}], \"selected\": 1,",
                             "\"open\": 0, \"armed_slot\": 0}",
                             "\"doors\": [{\"door\": 0, \"object\": 1, \"open\": 1, \"locked\": 0, \"lock\": 3, "
                             "\"yaw\": 0.5}]",
                             "\"removed_objects\": [7, 4]"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
}

TEST_F(headless_interaction_state_test, the_message_is_visible_up_to_its_end_and_not_after)
{
    show_message("Inventory is full.");
    game_time = 3.0f;
    EXPECT_NE(state_text(1, 1).find("\"visible\": 1"), std::string::npos);
    game_time = 3.01f;
    EXPECT_NE(state_text(1, 1).find("\"visible\": 0"), std::string::npos);
}

TEST_F(headless_interaction_state_test, an_empty_inventory_selects_nothing)
{
    std::string text = state_text(1, 1);
    EXPECT_NE(text.find("\"inventory\": {\"slots\": [], \"selected\": -1,"), std::string::npos) << text;
    EXPECT_NE(text.find("\"removed_objects\": []"), std::string::npos);
}
