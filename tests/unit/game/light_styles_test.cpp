#include <gtest/gtest.h>

#include <string.h>

#include "assets/world.h"
#include "core/loop_state.h"
#include "game/light_styles.h"
#include "support/saved_globals.h"

TEST(light_style_value, style_9_is_dark_for_0_8_seconds_then_lit_for_0_8_seconds)
{
    const char* pattern = light_style_pattern(9);
    ASSERT_NE(pattern, nullptr);
    for (float t : {0.0f, 0.3f, 0.65f})
        EXPECT_EQ(light_style_value(pattern, t), 0.0f) << t;
    for (float t : {0.8f, 1.1f, 1.45f})
        EXPECT_FLOAT_EQ(light_style_value(pattern, t), 25.0f / 26.0f) << t;
    EXPECT_EQ(light_style_value(pattern, 1.65f), 0.0f); // the pattern has wrapped round
}

TEST(light_style_value, ramps_smoothly_between_dark_and_lit)
{
    const char* pattern = light_style_pattern(9);
    EXPECT_NEAR(light_style_value(pattern, 0.75f), 0.5f * 25.0f / 26.0f, 1e-5f);
    EXPECT_NEAR(light_style_value(pattern, 1.55f), 0.5f * 25.0f / 26.0f, 1e-5f);
    float before = light_style_value(pattern, 0.72f), after = light_style_value(pattern, 0.78f);
    EXPECT_GT(after, before);
}

TEST(light_style_value, letters_a_m_z)
{
    EXPECT_EQ(light_style_value("a", 0.0f), 0.0f);
    EXPECT_FLOAT_EQ(light_style_value("m", 3.3f), 12.0f / 26.0f);
    EXPECT_FLOAT_EQ(light_style_value("z", 0.5f), 25.0f / 26.0f);
}

TEST(light_style_value, without_smoothing_letters_jump)
{
    saved_globals globals;
    globals.keep(&light_style_smoothing);
    light_style_smoothing = 0;
    EXPECT_EQ(light_style_value("az", 0.05f), 0.0f);
    EXPECT_FLOAT_EQ(light_style_value("az", 0.15f), 25.0f / 26.0f);
    light_style_smoothing = 1;
    EXPECT_NEAR(light_style_value("az", 0.05f), 0.5f * 25.0f / 26.0f, 1e-5f);
}

TEST(light_style_pattern, only_styles_1_to_11_exist)
{
    EXPECT_EQ(light_style_pattern(0), nullptr);
    EXPECT_EQ(light_style_pattern(12), nullptr);
    EXPECT_STREQ(light_style_pattern(1), "mmnmmommommnonmmonqnmmo");
    EXPECT_STREQ(light_style_pattern(11), "abcdefghijklmnopqrrqponmlkjihgfedcba");
}

TEST(update_light_styles, keeps_the_previous_state_then_applies_the_style)
{
    saved_globals globals;
    globals.keep_all(&flickering_lights, &game_time);
    light lights[3] = {};
    lights[0].flicker_style = 9;
    lights[0].brightness = 0.5f;
    lights[0].position = {1.0f, 2.0f, 3.0f};
    lights[1].flicker_style = 0;  // no pattern: keeps its brightness
    lights[1].brightness = 0.7f;
    lights[2].flicker_style = 12; // beyond the styles: keeps its brightness too
    lights[2].brightness = 0.3f;
    flickering_lights = {lights, 3, 3, FLICKERING_LIGHT_GROWTH};
    game_time = 1.0f;
    update_light_styles();
    EXPECT_EQ(lights[0].previous_brightness, 0.5f);
    EXPECT_EQ(lights[0].previous_position.z, 3.0f);
    EXPECT_FLOAT_EQ(lights[0].brightness, 25.0f / 26.0f);
    EXPECT_EQ(lights[1].brightness, 0.7f);
    EXPECT_EQ(lights[1].previous_brightness, 0.7f);
    EXPECT_EQ(lights[2].brightness, 0.3f);
}
