// The HUD drawn over the picture during play: the health and message lines with their fade, the
// interaction prompt and its cross, and the fills and the clipped line.
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <vector>

#include "assets/item.h"
#include "assets/world.h"
#include "core/loop_state.h"
#include "game/player.h"
#include "platform/platform.h"
#include "render/frame.h"
#include "support/render_world.h"
#include "ui/font.h"
#include "ui/hud.h"

namespace {

const uint16_t WORLD = 0x8000 | 6 << 10 | 12 << 5 | 6;
const uint16_t PAINT = 0x8000 | 31 << 10;

// A 320 x 240 frame of WORLD, the shipped fonts, a player (object 0) with 73 health, no focus and
// no line showing.
class hud_test : public render_world_test {
protected:
    static constexpr int32_t WIDTH = 320;
    static constexpr int32_t HEIGHT = 240;

    font saved_system = {}, saved_dialogue = {};
    float saved_health_until = 0.0f, saved_message_until = 0.0f;
    char saved_message[MESSAGE_CAPACITY] = {};

    void SetUp() override
    {
        render_world_test::SetUp();
        frame.reset();
        frame = std::make_unique<test_frame>(WIDTH, HEIGHT, WORLD);
        saved_system = font_system;
        saved_dialogue = font_dialogue;
        font_system = font{};
        font_dialogue = font{};
        ASSERT_EQ(font_load(&font_system, GLOAMHOLD_SOURCE_DIR "/gloamhold_data/fonts/font_system.fnt"), 1);
        ASSERT_EQ(font_load(&font_dialogue, GLOAMHOLD_SOURCE_DIR "/gloamhold_data/fonts/font_dialogue.fnt"), 1);
        saved_health_until = health_visible_until;
        saved_message_until = message_visible_until;
        memcpy(saved_message, message_text, sizeof message_text);
        health_visible_until = -1.0f;
        message_visible_until = -1.0f;
        message_text[0] = 0;
        game_time = 10.0f;
        ASSERT_EQ(add_object(-1, 0, {0.0f, 0.0f, 0.0f}), PLAYER_OBJECT);
        registry_at<object>(&objects, PLAYER_OBJECT)->health = 73;
    }
    void TearDown() override
    {
        platform_heap_free(font_system.bitmaps);
        platform_heap_free(font_dialogue.bitmaps);
        font_system = saved_system;
        font_dialogue = saved_dialogue;
        health_visible_until = saved_health_until;
        message_visible_until = saved_message_until;
        memcpy(message_text, saved_message, sizeof message_text);
        render_world_test::TearDown();
    }

    // The frame with only `text` drawn at (x, y), for comparing with what the HUD drew.
    std::vector<uint16_t> text_alone(int32_t x, int32_t y, const char* text, const font* face, uint16_t colour)
    {
        std::vector<uint16_t> saved = frame->colour;
        for (uint16_t& p : frame->colour)
            p = WORLD;
        draw_text(x, y, text, -1, face, colour);
        std::vector<uint16_t> result = frame->colour;
        frame->colour = saved;
        return result;
    }
    void clear_frame()
    {
        for (uint16_t& p : frame->colour)
            p = WORLD;
    }
    int32_t health_y() const { return HEIGHT - static_cast<int32_t>(font_dialogue.line_height) - 24; }

    // An object of `type` in focus; doors get a door record, pickups the item `item_index`.
    int32_t focus_on(uint8_t type, int32_t item_index = -1)
    {
        int32_t index = add_object(-1, 0, {0.0f, 0.0f, 3.0f});
        object* o = registry_at<object>(&objects, index);
        o->type = type;
        o->item = item_index;
        if (type == OBJECT_DOOR) {
            o->ref = registry_claim(&doors);
            registry_at<door>(&doors, o->ref)->object = index;
        }
        focus_object = index;
        return index;
    }
    static int32_t add_item(const char* name)
    {
        int32_t index = registry_claim(&items);
        snprintf(registry_at<item>(&items, index)->name, ITEM_NAME_CAPACITY, "%s", name);
        return index;
    }
    // What the prompt draws for a first line of `text`: the cross and the text at (cx + 8, cy + 8).
    std::vector<uint16_t> prompt_alone(const char* text)
    {
        std::vector<uint16_t> picture = text_alone(WIDTH / 2 + 8, HEIGHT / 2 + 8, text, &font_system, COLOUR_PROMPT);
        for (int32_t d = -6; d <= 6; ++d) {
            picture[static_cast<size_t>(HEIGHT / 2 * WIDTH + WIDTH / 2 + d)] = COLOUR_PROMPT;
            picture[static_cast<size_t>((HEIGHT / 2 + d) * WIDTH + WIDTH / 2)] = COLOUR_PROMPT;
        }
        return picture;
    }
};

// ---- Grey levels and the fade ------------------------------------------------------------------

TEST_F(hud_test, grey_of_level_g_sets_every_channel_to_g_and_the_rendered_bit)
{
    EXPECT_EQ(grey_colour(0), 0x8000);
    EXPECT_EQ(grey_colour(31), 0xFFFF);
    EXPECT_EQ(grey_colour(15), 0x8000 | 15 << 10 | 15 << 5 | 15);
}

TEST_F(hud_test, health_change_shows_the_line_for_3_2_s_fully_bright_for_3_0_then_fading_to_black)
{
    float changed = 4.0f, until = changed + 3.2f;
    EXPECT_EQ(fade_level(until, changed), 31);
    EXPECT_EQ(fade_level(until, changed + 2.9f), 31);
    EXPECT_EQ(fade_level(until, until - 0.25f), 31);
    EXPECT_EQ(fade_level(until, until - 0.1f), 15);
    EXPECT_EQ(fade_level(until, until - 0.01f), 1);
    EXPECT_EQ(fade_level(until, until), 0);

    health_visible_until = until;
    game_time = changed + 1.0f;
    draw_health();
    EXPECT_EQ(frame->colour, text_alone(24, health_y(), "Health: 73", &font_dialogue, 0xFFFF));
    clear_frame();
    game_time = until - 0.1f;
    draw_health();
    EXPECT_EQ(frame->colour, text_alone(24, health_y(), "Health: 73", &font_dialogue, grey_colour(15)));
    clear_frame();
    game_time = until + 0.001f;
    draw_health();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(hud_test, health_line_sits_24_pixels_in_from_the_bottom_left)
{
    health_visible_until = game_time + 1.0f;
    draw_health();
    EXPECT_GT(frame->drawn(), 30);
    EXPECT_EQ(frame->colour, text_alone(24, health_y(), "Health: 73", &font_dialogue, 0xFFFF));
}

TEST_F(hud_test, health_line_shows_at_the_very_moment_it_ends)
{
    health_visible_until = game_time;
    draw_health();
    // Level 0 is black, still drawn.
    EXPECT_EQ(frame->colour, text_alone(24, health_y(), "Health: 73", &font_dialogue, 0x8000));
}

TEST_F(hud_test, message_line_is_drawn_at_24_24_with_the_same_fade)
{
    snprintf(message_text, sizeof message_text, "%s", "This door is locked.");
    message_visible_until = game_time + 3.0f;
    draw_message();
    EXPECT_EQ(frame->colour, text_alone(24, 24, "This door is locked.", &font_dialogue, 0xFFFF));
    clear_frame();
    game_time = message_visible_until - 0.05f;
    draw_message();
    EXPECT_EQ(frame->colour, text_alone(24, 24, "This door is locked.", &font_dialogue,
                                        grey_colour(fade_level(message_visible_until, game_time))));
    EXPECT_LT(fade_level(message_visible_until, game_time), 31);
    clear_frame();
    game_time = message_visible_until + 0.01f;
    draw_message();
    EXPECT_EQ(frame->drawn(), 0);
}

// ---- The interaction prompt --------------------------------------------------------------------

TEST_F(hud_test, no_focus_draws_neither_prompt_nor_cross)
{
    draw_interaction_prompt();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(hud_test, focus_on_an_object_without_an_interaction_draws_nothing)
{
    focus_on(OBJECT_STATIC);
    draw_interaction_prompt();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(hud_test, focus_on_a_released_object_draws_nothing)
{
    int32_t index = focus_on(OBJECT_PICKUP, add_item("Coin"));
    registry_free(&objects, index);
    draw_interaction_prompt();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(hud_test, character_in_focus_shows_talk)
{
    focus_on(OBJECT_ACTOR);
    draw_interaction_prompt();
    EXPECT_EQ(frame->colour, prompt_alone("[E] Talk"));
}

TEST_F(hud_test, closed_door_shows_open)
{
    focus_on(OBJECT_DOOR);
    draw_interaction_prompt();
    EXPECT_EQ(frame->colour, prompt_alone("[E] Open"));
}

TEST_F(hud_test, open_door_shows_close)
{
    int32_t index = focus_on(OBJECT_DOOR);
    registry_at<door>(&doors, registry_at<object>(&objects, index)->ref)->open = 1;
    draw_interaction_prompt();
    EXPECT_EQ(frame->colour, prompt_alone("[E] Close"));
}

TEST_F(hud_test, pickup_shows_take_with_the_item_name_under_it_in_yellow)
{
    focus_on(OBJECT_PICKUP, add_item("Iron key"));
    draw_interaction_prompt();
    std::vector<uint16_t> expected = prompt_alone("[E] Take");
    std::vector<uint16_t> saved = frame->colour;
    frame->colour = expected;
    draw_text(WIDTH / 2 + 8, HEIGHT / 2 + static_cast<int32_t>(font_system.line_height) + 16, "Iron key", -1,
              &font_system, COLOUR_PROMPT_ITEM_NAME);
    expected = frame->colour;
    EXPECT_EQ(saved, expected);
    int32_t yellow = 0;
    for (uint16_t p : saved)
        yellow += p == 0xFFF0;
    EXPECT_GT(yellow, 20);
}

TEST_F(hud_test, cross_arms_reach_six_pixels_from_the_centre)
{
    focus_on(OBJECT_ACTOR);
    draw_interaction_prompt();
    int32_t cx = WIDTH / 2, cy = HEIGHT / 2;
    EXPECT_EQ(frame->pixel(cx - 6, cy), 0xFFFF);
    EXPECT_EQ(frame->pixel(cx + 6, cy), 0xFFFF);
    EXPECT_EQ(frame->pixel(cx, cy - 6), 0xFFFF);
    EXPECT_EQ(frame->pixel(cx, cy + 6), 0xFFFF);
    EXPECT_EQ(frame->pixel(cx - 7, cy), WORLD);
    EXPECT_EQ(frame->pixel(cx, cy - 7), WORLD);
    EXPECT_EQ(frame->pixel(cx + 1, cy + 1), WORLD);
}

// ---- Fills and the clipped line ----------------------------------------------------------------

TEST_F(hud_test, fill_rect_fills_from_the_first_corner_up_to_but_not_including_the_second)
{
    fill_rect(10, 20, 14, 23, PAINT);
    EXPECT_EQ(frame->drawn(), 4 * 3);
    EXPECT_EQ(frame->pixel(10, 20), PAINT);
    EXPECT_EQ(frame->pixel(13, 22), PAINT);
    EXPECT_EQ(frame->pixel(14, 22), WORLD);
    EXPECT_EQ(frame->pixel(13, 23), WORLD);
}

TEST_F(hud_test, fill_rect_clamps_every_coordinate_into_the_frame)
{
    fill_rect(-50, -7, 5, 3, PAINT);
    EXPECT_EQ(frame->drawn(), 5 * 3);
    EXPECT_EQ(frame->pixel(0, 0), PAINT);
    clear_frame();
    // Clamped to width - 1 and height - 1: the last column and row stay untouched.
    fill_rect(WIDTH - 3, HEIGHT - 2, WIDTH + 100, HEIGHT + 100, PAINT);
    EXPECT_EQ(frame->drawn(), 2 * 1);
    EXPECT_EQ(frame->pixel(WIDTH - 2, HEIGHT - 2), PAINT);
    EXPECT_EQ(frame->pixel(WIDTH - 1, HEIGHT - 2), WORLD);
    EXPECT_EQ(frame->pixel(WIDTH - 2, HEIGHT - 1), WORLD);
    clear_frame();
    fill_rect(WIDTH + 5, 10, WIDTH + 50, 20, PAINT);
    EXPECT_EQ(frame->drawn(), 0);
    fill_rect(-1000, -1000, 1000, 1000, PAINT);
    EXPECT_EQ(frame->drawn(), (WIDTH - 1) * (HEIGHT - 1));
}

TEST_F(hud_test, fill_rect_unclipped_fills_exactly_the_rectangle_given)
{
    fill_rect_unclipped(0, HEIGHT - 4, WIDTH, HEIGHT, PAINT);
    EXPECT_EQ(frame->drawn(), WIDTH * 4);
    EXPECT_EQ(frame->pixel(WIDTH - 1, HEIGHT - 1), PAINT);
    EXPECT_EQ(frame->pixel(0, HEIGHT - 5), WORLD);
}

TEST_F(hud_test, empty_or_reversed_rectangles_fill_nothing)
{
    fill_rect(20, 20, 20, 30, PAINT);
    fill_rect(20, 30, 10, 20, PAINT);
    fill_rect_unclipped(5, 5, 5, 9, PAINT);
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(hud_test, clipped_line_crossing_the_edge_is_drawn_up_to_the_edge)
{
    draw_clipped_line(-20, 10, 10, 10, PAINT);
    EXPECT_EQ(frame->drawn(), 11);
    EXPECT_EQ(frame->pixel(0, 10), PAINT);
    EXPECT_EQ(frame->pixel(10, 10), PAINT);
    EXPECT_EQ(frame->depth_at(5, 10), DEPTH_ON_TOP); // drawn with the renderer's line
    clear_frame();
    draw_clipped_line(WIDTH / 2, HEIGHT / 2, WIDTH / 2, HEIGHT + 400, PAINT);
    EXPECT_EQ(frame->drawn(), HEIGHT - HEIGHT / 2);
    EXPECT_EQ(frame->pixel(WIDTH / 2, HEIGHT - 1), PAINT);
}

TEST_F(hud_test, clipped_line_wholly_outside_the_frame_draws_nothing)
{
    draw_clipped_line(-20, -5, -1, -30, PAINT);
    draw_clipped_line(WIDTH, 0, WIDTH + 10, HEIGHT, PAINT);
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(hud_test, prompt_cross_near_the_frame_edge_is_clipped)
{
    // A frame so small that the cross's arms leave it.
    frame.reset();
    frame = std::make_unique<test_frame>(8, 8, WORLD);
    focus_on(OBJECT_ACTOR);
    draw_interaction_prompt();
    EXPECT_EQ(frame->pixel(0, 4), 0xFFFF);
    EXPECT_EQ(frame->pixel(7, 4), 0xFFFF);
    EXPECT_EQ(frame->pixel(4, 0), 0xFFFF);
    EXPECT_EQ(frame->pixel(4, 7), 0xFFFF);
}

} // namespace
