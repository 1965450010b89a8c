// The dialogue box: the letterbox bars and their phases, the speech typed out, the numbered answers
// with their highlight, and the mouse that moves the highlight.
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <memory>
#include <string>

#include "core/loop_state.h"
#include "game/dialogue.h"
#include "platform/platform.h"
#include "support/dialogue_script.h"
#include "support/test_frame.h"
#include "ui/dialogue_box.h"
#include "ui/font.h"

namespace {

const uint16_t WORLD = 0x8000 | 6 << 10 | 12 << 5 | 6;

// A 640 x 480 frame of WORLD, the shipped dialogue font, a still mouse.
class dialogue_box_test : public dialogue_script_test {
protected:
    static constexpr int32_t WIDTH = 640;
    static constexpr int32_t HEIGHT = 480;
    std::unique_ptr<test_frame> frame;
    font saved_dialogue = {};
    float saved_dx = 0.0f, saved_dy = 0.0f;
    int32_t saved_x = 0, saved_y = 0;
    int32_t line = 0;

    void SetUp() override
    {
        dialogue_script_test::SetUp();
        frame = std::make_unique<test_frame>(WIDTH, HEIGHT, WORLD);
        saved_dialogue = font_dialogue;
        font_dialogue = font{};
        ASSERT_EQ(font_load(&font_dialogue, GLOAMHOLD_SOURCE_DIR "/gloamhold_data/fonts/font_dialogue.fnt"), 1);
        line = static_cast<int32_t>(font_dialogue.line_height);
        saved_dx = mouse_delta_x;
        saved_dy = mouse_delta_y;
        saved_x = mouse_x;
        saved_y = mouse_y;
        mouse_delta_x = mouse_delta_y = 0.0f;
        mouse_x = mouse_y = 0;
    }
    void TearDown() override
    {
        platform_heap_free(font_dialogue.bitmaps);
        font_dialogue = saved_dialogue;
        mouse_delta_x = saved_dx;
        mouse_delta_y = saved_dy;
        mouse_x = saved_x;
        mouse_y = saved_y;
        frame.reset();
        dialogue_script_test::TearDown();
    }

    // The script open and shown from game time 10; the frame is drawn at `at`.
    void draw_shown(const std::string& script, float at)
    {
        open_shown(script);
        dialogue_state.phase_start = 10.0f;
        game_time = at;
        draw_dialogue();
    }
    void redraw()
    {
        frame.reset(); // the old frame gives the surfaces back before the new one takes them
        frame = std::make_unique<test_frame>(WIDTH, HEIGHT, WORLD);
        draw_dialogue();
    }

    // The first row of the answer rows under a one-line speech.
    int32_t first_answer_row() const { return HEIGHT - 120 + 12 + line * 3 / 2; }

    int32_t count_in_rows(int32_t y0, int32_t y1, uint16_t colour) const
    {
        int32_t n = 0;
        for (int32_t y = y0; y < y1; ++y)
            for (int32_t x = 0; x < WIDTH; ++x)
                n += frame->pixel(x, y) == colour;
        return n;
    }
    int32_t first_row_with(uint16_t colour) const
    {
        for (int32_t y = 0; y < HEIGHT; ++y)
            if (count_in_rows(y, y + 1, colour))
                return y;
        return -1;
    }
};

const char* const YES_NO = "@T\nT:\n \"Well?\"\n"
                           " > \"Yes\":\n  \"Good.\"\n  > \"ok\":\n   \"Bye.\"\n"
                           " > \"No\":\n  \"Pity.\"\n  > \"ok\":\n   \"Bye.\"\n";

TEST_F(dialogue_box_test, at_480_lines_the_bottom_area_begins_120_lines_from_the_bottom_and_the_top_bar_is_72)
{
    draw_letterbox(1.0f);
    for (int32_t x : {0, 321, WIDTH - 1}) {
        EXPECT_EQ(frame->pixel(x, 0), COLOUR_LETTERBOX);
        EXPECT_EQ(frame->pixel(x, 71), COLOUR_LETTERBOX);
        EXPECT_EQ(frame->pixel(x, 72), WORLD);
        EXPECT_EQ(frame->pixel(x, HEIGHT - 121), WORLD);
        EXPECT_EQ(frame->pixel(x, HEIGHT - 120), COLOUR_LETTERBOX);
        EXPECT_EQ(frame->pixel(x, HEIGHT - 1), COLOUR_LETTERBOX);
    }
}

TEST_F(dialogue_box_test, the_letterbox_bars_scale_with_t)
{
    draw_letterbox(0.5f);
    EXPECT_EQ(frame->pixel(5, 35), COLOUR_LETTERBOX);
    EXPECT_EQ(frame->pixel(5, 36), WORLD);
    EXPECT_EQ(frame->pixel(5, HEIGHT - 61), WORLD);
    EXPECT_EQ(frame->pixel(5, HEIGHT - 60), COLOUR_LETTERBOX);
    frame.reset();
    frame = std::make_unique<test_frame>(WIDTH, HEIGHT, WORLD);
    draw_letterbox(0.0f);
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(dialogue_box_test, the_speech_starts_108_lines_from_the_bottom_at_x_12)
{
    draw_shown(YES_NO, 11.0f);
    int32_t top = first_row_with(COLOUR_SPEECH);
    EXPECT_GE(top, HEIGHT - 108);
    EXPECT_LT(top, HEIGHT - 108 + line);
    int32_t left = WIDTH;
    for (int32_t y = HEIGHT - 108; y < HEIGHT - 108 + line; ++y)
        for (int32_t x = 0; x < WIDTH; ++x)
            if (frame->pixel(x, y) == COLOUR_SPEECH && x < left)
                left = x;
    EXPECT_GE(left, 12);
    EXPECT_LT(left, 16);
}

TEST_F(dialogue_box_test, the_opening_phase_has_no_duration_and_draws_the_full_bars_only)
{
    ASSERT_EQ(start_dialogue(load_script(YES_NO)), 1);
    game_time = dialogue_state.phase_start;
    draw_dialogue();
    EXPECT_EQ(dialogue_state.fade, 1.0f);
    EXPECT_EQ(frame->pixel(5, 71), COLOUR_LETTERBOX);
    EXPECT_EQ(count_in_rows(0, HEIGHT, COLOUR_SPEECH), 0);
}

TEST_F(dialogue_box_test, the_progress_is_written_every_frame_and_the_speech_types_out_over_a_quarter_second)
{
    draw_shown("@T\nT:\n \"Mind the well in the yard.\"\n > \"ok\":\n", 10.0f);
    EXPECT_EQ(dialogue_state.fade, 0.0f);
    EXPECT_EQ(count_in_rows(0, HEIGHT, COLOUR_SPEECH), 0) << "nothing typed yet";
    game_time = 10.125f;
    redraw();
    EXPECT_FLOAT_EQ(dialogue_state.fade, 0.5f);
    int32_t half = count_in_rows(0, HEIGHT, COLOUR_SPEECH);
    // Half of the 26 bytes: "Mind the well" alone.
    test_frame reference(WIDTH, HEIGHT, WORLD);
    draw_text(DIALOGUE_TEXT_X, HEIGHT - 108, "Mind the well", -1, &font_dialogue, COLOUR_SPEECH);
    EXPECT_EQ(half, reference.drawn());
    EXPECT_EQ(count_in_rows(0, HEIGHT, COLOUR_ANSWER), 0) << "no answers before the speech is out";
    game_time = 10.3f;
    redraw();
    EXPECT_EQ(dialogue_state.fade, 1.0f);
    EXPECT_GT(count_in_rows(0, HEIGHT, COLOUR_SPEECH), half);
    EXPECT_GT(count_in_rows(first_answer_row(), first_answer_row() + line, COLOUR_ANSWER), 0);
}

TEST_F(dialogue_box_test, the_closing_phase_draws_the_bars_shrinking_over_a_fifth_of_a_second)
{
    draw_shown(YES_NO, 11.0f);
    pick_choice(0);
    pick_choice(0); // "ok" offers nothing more: the box closes
    ASSERT_EQ(dialogue_state.phase, DIALOGUE_PHASE_CLOSING);
    game_time = dialogue_state.phase_start + 0.1f;
    redraw();
    EXPECT_NEAR(dialogue_state.fade, 0.5f, 1e-4f);
    EXPECT_EQ(frame->pixel(5, 34), COLOUR_LETTERBOX);
    EXPECT_EQ(frame->pixel(5, 37), WORLD);
    EXPECT_EQ(count_in_rows(0, HEIGHT, COLOUR_SPEECH), 0);
    game_time += 0.1f;
    redraw();
    EXPECT_EQ(dialogue_state.fade, 1.0f);
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(dialogue_box_test, answers_are_numbered_one_line_apart_in_their_grey)
{
    draw_shown(YES_NO, 11.0f);
    int32_t row = first_answer_row();
    test_frame reference(WIDTH, HEIGHT, WORLD);
    draw_text(DIALOGUE_TEXT_X, row, "1. Yes", -1, &font_dialogue, COLOUR_ANSWER);
    draw_text(DIALOGUE_TEXT_X, row + line, "2. No", -1, &font_dialogue, COLOUR_ANSWER);
    for (int32_t y = row; y < row + 2 * line; ++y)
        for (int32_t x = 0; x < WIDTH; ++x)
            ASSERT_EQ(frame->pixel(x, y) == COLOUR_ANSWER, reference.pixel(x, y) == COLOUR_ANSWER) << x << "," << y;
}

TEST_F(dialogue_box_test, the_highlighted_answer_is_white_on_a_full_width_bar)
{
    draw_shown(YES_NO, 11.0f);
    dialogue_state.highlighted = 1;
    redraw();
    int32_t row = first_answer_row() + line;
    EXPECT_EQ(frame->pixel(0, row), COLOUR_ANSWER);
    EXPECT_EQ(frame->pixel(WIDTH / 2, row + line - 1), COLOUR_ANSWER);
    EXPECT_EQ(frame->pixel(WIDTH - 2, row), COLOUR_ANSWER);
    EXPECT_GT(count_in_rows(row, row + line, COLOUR_ANSWER_HIGHLIGHTED), 0);
    EXPECT_EQ(count_in_rows(row - line, row, COLOUR_ANSWER_HIGHLIGHTED), 0) << "the other answer stays grey";
}

TEST_F(dialogue_box_test, moving_the_mouse_onto_the_second_row_highlights_it_and_a_still_mouse_keeps_it)
{
    draw_shown(YES_NO, 11.0f);
    mouse_x = 40;
    mouse_y = first_answer_row() + line + 2;
    mouse_delta_x = 3.0f;
    redraw();
    EXPECT_EQ(dialogue_state.highlighted, 1);
    EXPECT_EQ(dialogue_state.mouse_hover, 1);
    mouse_delta_x = 0.0f;
    mouse_y = first_answer_row() + 2;
    redraw();
    EXPECT_EQ(dialogue_state.highlighted, 1) << "the mouse did not move";
    mouse_delta_y = -1.0f;
    mouse_y = 10;
    redraw();
    EXPECT_EQ(dialogue_state.highlighted, -1) << "moved off every row after choosing";
}

TEST_F(dialogue_box_test, a_mouse_moving_off_the_rows_leaves_a_highlight_set_by_the_keys)
{
    draw_shown(YES_NO, 11.0f);
    dialogue_state.highlighted = 0;
    mouse_delta_x = 5.0f;
    mouse_y = 10;
    redraw();
    EXPECT_EQ(dialogue_state.highlighted, 0);
    EXPECT_EQ(dialogue_state.mouse_hover, 0);
}

TEST_F(dialogue_box_test, cyrillic_speech_types_out_by_bytes_and_wraps_within_the_box)
{
    std::string words;
    for (int i = 0; i < 12; ++i)
        words += "\xd0\x9d\xd0\xbe\xd1\x87\xd1\x8c \xd0\xb4\xd0\xbb\xd0\xb8\xd0\xbd\xd0\xbd\xd0\xb0 "; // "Ночь длинна "
    draw_shown("@T\nT:\n \"" + words + "\"\n > \"ok\":\n", 10.3f);
    int32_t line_step = line + 2;
    int32_t first = HEIGHT - 108;
    EXPECT_GT(count_in_rows(first + line_step, first + 2 * line_step, COLOUR_SPEECH), 0) << "wrapped onto a second line";
    for (int32_t y = first; y < HEIGHT; ++y)
        for (int32_t x = WIDTH - 20; x < WIDTH; ++x)
            ASSERT_NE(frame->pixel(x, y), COLOUR_SPEECH) << "past the right limit at " << x << "," << y;
    int32_t full = count_in_rows(0, HEIGHT, COLOUR_SPEECH);
    game_time = 10.125f;
    redraw();
    int32_t half = count_in_rows(0, HEIGHT, COLOUR_SPEECH);
    EXPECT_GT(half, full / 3);
    EXPECT_LT(half, full * 2 / 3);
}

} // namespace
