// The developer views: the player and controls panel, the contact panel, the occlusion-buffer view
// and the colour look-up table view.
#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <iterator>
#include <string>
#include <vector>

#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/frame.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "game/player.h"
#include "platform/platform.h"
#include "render/colour_tables.h"
#include "render/occlusion.h"
#include "render/visibility.h"
#include "support/render_world.h"
#include "ui/debug_overlay.h"
#include "ui/font.h"

namespace {

enum { LINE_HEIGHT = 10 };

uint16_t grey(int32_t level)
{
    return static_cast<uint16_t>(0x8000 | level << 10 | level << 5 | level);
}

// A player (object 0) in an empty world seen from the origin, a system font whose line height is
// 10 and whose glyphs are empty, and every switch and setting the panel reads put back afterwards.
class debug_overlay_test : public render_world_test {
protected:
    void SetUp() override
    {
        render_world_test::SetUp();
        globals.keep_all(&font_system, &debug_info, &debug_wireframe, &debug_show_colliders, &debug_show_areas,
                         &debug_show_occlusion, &debug_show_lookup_tables, &LIGHT_DITHERING,
                         &TEXTURE_INTERPOLATION, &TEXTURE_DITHERING, &player_motion, &camera_area,
                         &camera_area_iterations, &key_state);
        font_system = font{};
        font_system.line_height = LINE_HEIGHT;
        memset(key_state, 0, sizeof key_state);
        ASSERT_EQ(add_object(-1, 0, {1.3f, -2.0f, 3.5f}), PLAYER_OBJECT);
        player_motion = player_motion_state{};
        player_motion.on_ground = 1;
    }

    static std::vector<panel_line> panel()
    {
        std::vector<panel_line> lines(PLAYER_PANEL_LINE_COUNT);
        player_panel_lines(lines.data());
        return lines;
    }

    // The panel line that starts with `start`, or an empty line when there is none.
    static panel_line line_starting(const std::string& start)
    {
        for (const panel_line& line : panel())
            if (std::string(line.text).rfind(start, 0) == 0)
                return line;
        return panel_line{};
    }
};

TEST_F(debug_overlay_test, at_start_the_panel_says_no_to_fullbright_and_to_frozen_culling)
{
    // The switches as they start: lighting on and culling live.
    debug_lighting = 1;
    debug_portal_culling = 1;
    EXPECT_STREQ(line_starting("- [F5]").text, "- [F5] Fullbright: No");
    EXPECT_STREQ(line_starting("- [F8]").text, "- [F8] Freeze portal culling: No");
    EXPECT_EQ(line_starting("- [F8]").colour, COLOUR_PANEL_TEXT);
}

TEST_F(debug_overlay_test, the_panel_lists_the_player_then_the_controls_down_the_left_edge)
{
    debug_wireframe = 1;
    debug_show_areas = 1;
    LIGHT_DITHERING = 0;
    TEXTURE_INTERPOLATION = 1;
    TEXTURE_DITHERING = 0;
    debug_show_colliders = debug_show_occlusion = debug_show_lookup_tables = 0;
    player_motion.ground_level = -0.3f;
    player_motion.ground_material = 2;
    camera_area = 3;
    camera_area_iterations = 2;
    std::vector<panel_line> lines = panel();

    const char* expected[] = {
        "[Player]",
        "- Position: x=1.3, y=-2.0, z=3.5",
        "- Ground level: -0.3 (wood)",
        "- Area: 3 (BSP tree iterations: 2)",
        "[Control]",
        "- [Backspace] Bullet time",
        "- [F1] Toggle debug info",
        "- [F2] Wireframe: Yes",
        "- [F3] Show colliders: No",
        "- [F4] Show areas and portals: Yes",
        "- [F5] Fullbright: No",
        "- [F6] Show occlusion buffer: No",
        "- [F7] Show color lookup tables: No",
        "- [F8] Freeze portal culling: No",
        "- [F9] Light dithering: No",
        "- [F10] Texture filtering: Yes",
        "- [F11] Texture dithering: No",
    };
    // "[Player]" at 8, the player's lines from L + 12 a line height and 4 apart, a gap of L + 8
    // before "[Control]", then again L + 4 apart.
    int32_t y[] = {8, 22, 36, 50, 68, 82, 96, 110, 124, 138, 152, 166, 180, 194, 208, 222, 236};
    ASSERT_EQ(lines.size(), 1 + std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(expected[i]);
        EXPECT_STREQ(lines[i + 1].text, expected[i]);
        EXPECT_EQ(lines[i + 1].x, 8);
        EXPECT_EQ(lines[i + 1].y, y[i]);
        EXPECT_EQ(lines[i + 1].colour, COLOUR_PANEL_TEXT);
    }
}

TEST_F(debug_overlay_test, the_build_date_sits_at_the_bottom_right)
{
    panel_line date = panel()[0];
    EXPECT_STREQ(date.text, "Build date: Jun  1 2026");
    EXPECT_EQ(date.x, FRAME_SIZE - text_width(date.text, -1, &font_system) - 8);
    EXPECT_EQ(date.y, FRAME_SIZE - LINE_HEIGHT - 8);
}

TEST_F(debug_overlay_test, in_the_air_the_position_line_adds_the_vertical_speed)
{
    player_motion.on_ground = 0;
    player_motion.vertical_velocity = 7.3f;
    EXPECT_STREQ(line_starting("- Position").text, "- Position: x=1.3, y=-2.0, z=3.5 (in air, vel: 7.3)");
}

TEST_F(debug_overlay_test, a_ground_material_past_the_six_is_unknown)
{
    player_motion.ground_material = 6;
    EXPECT_STREQ(line_starting("- Ground").text, "- Ground level: 0.0 (unknown)");
    player_motion.ground_material = 5;
    EXPECT_STREQ(line_starting("- Ground").text, "- Ground level: 0.0 (ceramic)");
}

TEST_F(debug_overlay_test, outside_every_area_the_area_line_says_outside)
{
    camera_area = 0;
    camera_area_iterations = 0;
    EXPECT_STREQ(line_starting("- Area").text, "- Area: outside");
}

TEST_F(debug_overlay_test, a_held_backspace_and_frozen_culling_stand_out)
{
    key_state[KEYCODE_BACKSPACE] = KEY_HELD;
    debug_portal_culling = 0;
    EXPECT_EQ(line_starting("- [Backspace]").colour, COLOUR_PANEL_HIGHLIGHT);
    panel_line frozen = line_starting("- [F8]");
    EXPECT_STREQ(frozen.text, "- [F8] Freeze portal culling: Yes");
    EXPECT_EQ(frozen.colour, COLOUR_PANEL_HIGHLIGHT);
    EXPECT_EQ(line_starting("- [F7]").colour, COLOUR_PANEL_TEXT);
}

TEST_F(debug_overlay_test, with_lighting_off_the_fullbright_line_says_yes)
{
    debug_lighting = 0;
    EXPECT_STREQ(line_starting("- [F5]").text, "- [F5] Fullbright: Yes");
}

// The camera stands at the origin looking along +z with a 90-degree view over the 64 x 64 frame.
TEST_F(debug_overlay_test, a_contact_behind_the_camera_draws_nothing)
{
    player_motion.contact_count = 1;
    player_motion.contacts[0].point = {0.0f, 0.0f, -3.0f};
    player_motion.contacts[0].normal = {1.0f, 0.0f, 0.0f};
    draw_contact_panel();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(debug_overlay_test, a_contact_in_view_gets_a_marker_and_a_tick_along_its_normal)
{
    player_motion.contact_count = 1;
    player_motion.contacts[0].point = {0.0f, 0.0f, 0.5f};
    player_motion.contacts[0].normal = {1.0f, 0.0f, 0.0f};
    draw_contact_panel();
    // Marker size: 64 / 0.5 x 0.02 = 2.56, cut to 2. The tick reaches 0.1 / 0.5 x 64 = 12.8 pixels right.
    EXPECT_EQ(frame->pixel(32, 31), COLOUR_CONTACT_MARKER) << "inside the marker";
    EXPECT_EQ(frame->pixel(32, 30), COLOUR_CONTACT_OUTLINE) << "its outline";
    EXPECT_EQ(frame->pixel(35, 32), COLOUR_CONTACT_OUTLINE) << "the tick";
    EXPECT_EQ(frame->pixel(44, 32), COLOUR_CONTACT_OUTLINE) << "the tick's end";
    EXPECT_EQ(frame->pixel(46, 32), 0) << "past the tick";
}

TEST_F(debug_overlay_test, no_contacts_draw_nothing)
{
    player_motion.contact_count = 0;
    draw_contact_panel();
    EXPECT_EQ(frame->drawn(), 0);
}

TEST_F(debug_overlay_test, the_occlusion_view_greys_each_occupied_block_by_the_root_of_its_value)
{
    std::vector<float> cells(64, 0.0f);
    cells[0] = 0.25f;      // sqrt 0.5 x 31 = 15.5: level 15
    cells[9] = 4.0f;       // past 1: level 31
    cells[18] = NAN;       // not a number: shown, as level 0
    {
        saved_globals occlusion;
        occlusion.keep_all(&occlusion_coarse, &occlusion_columns, &occlusion_rows);
        occlusion_coarse = cells.data();
        occlusion_columns = occlusion_rows = 8;
        draw_occlusion_view();
    }

    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 8; ++x) {
            EXPECT_EQ(frame->pixel(x, y), grey(15));
            EXPECT_EQ(frame->pixel(8 + x, 8 + y), grey(31));
            EXPECT_EQ(frame->pixel(16 + x, 16 + y), grey(0));
        }
    EXPECT_EQ(frame->drawn(), 3 * 64) << "empty cells leave their blocks alone";
}

TEST_F(debug_overlay_test, the_lookup_table_view_shows_the_four_tables_in_grey_along_the_right_edge)
{
    test_frame wide(200, 100);
    draw_lookup_table_view();
    const uint8_t* tables[] = {colour_tables.luminance, colour_tables.dimming, colour_tables.red_temperature,
                               colour_tables.blue_temperature};
    for (int t = 0; t < 4; ++t) {
        int32_t left = 200 - 160 + 40 * t;
        for (int32_t i = 0; i < COLOUR_TABLE_ENTRIES; ++i)
            ASSERT_EQ(wide.pixel(left + i % 32, 8 + i / 32), grey(tables[t][i])) << "table " << t << " entry " << i;
    }
}

TEST_F(debug_overlay_test, the_lookup_tables_are_labelled_beneath)
{
    font_system = font{};
    ASSERT_EQ(font_load(&font_system, GLOAMHOLD_SOURCE_DIR "/gloamhold_data/fonts/font_system.fnt"), 1);
    int32_t line_height = static_cast<int32_t>(font_system.line_height);
    test_frame wide(200, 120);
    draw_lookup_table_view();
    int32_t ink_below = 0, ink_between = 0;
    for (int32_t y = 8 + 64; y < 120; ++y)
        for (int32_t x = 40; x < 200; ++x) {
            bool white = wide.pixel(x, y) == COLOUR_PANEL_TEXT;
            (y >= line_height + 72 ? ink_below : ink_between) += white;
        }
    platform_heap_free(font_system.bitmaps);
    EXPECT_GT(ink_below, 0) << "the labels from y = L + 72";
    EXPECT_EQ(ink_between, 0);
}

TEST_F(debug_overlay_test, a_frame_too_small_for_the_lookup_tables_shows_what_fits)
{
    // 64 x 64: the third table's right half from x 0, the fourth whole from x 24, rows down to 55.
    draw_lookup_table_view();
    EXPECT_EQ(frame->pixel(0, 8), grey(colour_tables.red_temperature[16]));
    EXPECT_EQ(frame->pixel(20, 8), 0) << "between the tables";
    EXPECT_EQ(frame->pixel(24, 8), grey(colour_tables.blue_temperature[0]));
    EXPECT_EQ(frame->pixel(55, 63), grey(colour_tables.blue_temperature[55 * 32 + 31]));
}

} // namespace
