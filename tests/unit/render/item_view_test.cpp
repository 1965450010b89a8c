// Item models drawn in views of their own: one model in a viewport (draw_model_view), and the
// inventory's ring, box and label with the held item's flight (draw_item_views).
#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "assets/item.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/loop_state.h"
#include "platform/platform.h"
#include "render/colour_tables.h"
#include "render/frame.h"
#include "render/item_view.h"
#include "render/pixel_pipeline.h"
#include "render/world_pass.h"
#include "support/render_world.h"
#include "ui/font.h"
#include "ui/item_views.h"

namespace {

const uint16_t WORLD = 0x8000 | 6 << 10 | 12 << 5 | 6;
const float WORLD_DEPTH = 1e6f; // nearer than anything an item view draws
const uint16_t RED = 0x8000 | 28 << 10 | 4 << 5 | 4;
const uint16_t GREEN = 0x8000 | 4 << 10 | 28 << 5 | 4;
const uint16_t BLUE = 0x8000 | 4 << 10 | 8 << 5 | 30;
const uint16_t YELLOW = 0x8000 | 28 << 10 | 28 << 5 | 4;

// A texel as an item view shows it at a light level: tinted with the items' row.
uint16_t item_lit(uint16_t texel, uint8_t level)
{
    return shade_texel(texel, level, colour_table_row(colour_tables.red_temperature, ITEM_TINT),
                       colour_table_row(colour_tables.blue_temperature, ITEM_TINT));
}

// A 320 x 240 frame (the box needs 132 rows above the bottom) holding a world picture: every pixel
// WORLD at a depth nearer than any item, the view mapping and the camera's field of view (90
// degrees) set for it, the shipped system font, the inventory empty and closed.
class item_view_test : public render_world_test {
protected:
    static constexpr int32_t WIDTH = 320;
    static constexpr int32_t HEIGHT = 240;

    font saved_font = {};
    inventory_state saved_inventory = {};
    item_viewport saved_box = {};
    float saved_fov = 0.0f;

    void SetUp() override
    {
        render_world_test::SetUp();
        frame.reset();
        frame = std::make_unique<test_frame>(WIDTH, HEIGHT, WORLD);
        set_camera({0.0f, 0.0f, 0.0f});
        fill_world_depth();
        saved_fov = camera_fov;
        camera_fov = 1.5707964f;
        saved_font = font_system;
        font_system = font{};
        ASSERT_EQ(font_load(&font_system, GLOAMHOLD_SOURCE_DIR "/gloamhold_data/fonts/font_system.fnt"), 1);
        saved_inventory = inventory;
        inventory = inventory_state{};
        inventory.armed_slot = -1;
        saved_box = inventory_box_viewport;
        inventory_box_viewport = item_viewport{};
    }
    void TearDown() override
    {
        platform_heap_free(font_system.bitmaps);
        font_system = saved_font;
        inventory = saved_inventory;
        inventory_box_viewport = saved_box;
        camera_fov = saved_fov;
        render_world_test::TearDown();
    }

    void fill_world_depth()
    {
        for (float& d : frame->depth)
            d = WORLD_DEPTH;
    }
    void clear_frame()
    {
        for (uint16_t& p : frame->colour)
            p = WORLD;
        fill_world_depth();
    }

    // A cube of side `side` about the model's origin, every face wound to be seen from outside.
    static int32_t add_cube_model(float side, int32_t texture_index)
    {
        float h = side * 0.5f;
        std::vector<vec3> points;
        for (int32_t i = 0; i < 8; ++i)
            points.push_back({i & 1 ? h : -h, i & 2 ? h : -h, i & 4 ? h : -h});
        const int32_t faces[6][4] = {{0, 1, 3, 2}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                     {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 3, 7, 5}};
        std::vector<triangle_corners> triangles;
        for (const auto& f : faces) {
            for (const triangle_corners& t : {triangle_corners{f[0], f[1], f[2]}, triangle_corners{f[0], f[2], f[3]}}) {
                vec3 a = points[t.a], b = points[t.b], c = points[t.c];
                vec3 normal = vec3_cross(vec3_sub(b, a), vec3_sub(c, a));
                vec3 centre = vec3_scale(vec3_add(vec3_add(a, b), c), 1.0f / 3.0f);
                // Seen from outside when the corners' normal points out of the cube.
                triangles.push_back(vec3_dot(normal, centre) > 0.0f ? t : triangle_corners{t.a, t.c, t.b});
            }
        }
        return add_model(points, triangles, {{0, 12, texture_index}});
    }

    // A catalogue item with a name and the given model (0 for none).
    static int32_t add_item(const char* name, int32_t model_index)
    {
        int32_t index = registry_claim(&items);
        item* record = registry_at<item>(&items, index);
        snprintf(record->name, sizeof record->name, "%s", name);
        record->model = model_index;
        return index;
    }

    // Four items, each a cube of its own colour, in the first `count` slots.
    void fill_slots(int32_t count)
    {
        const uint16_t colours[4] = {RED, GREEN, BLUE, YELLOW};
        const char* names[4] = {"Iron key", "Rusty key", "Coin", "Candle"};
        for (int32_t i = 0; i < count; ++i)
            inventory.slots[i] = {add_item(names[i], add_cube_model(1.0f, add_texture(colours[i]))), 1};
        inventory.slot_count = count;
    }

    // The pixels that differ between two pictures.
    static int32_t differing(const std::vector<uint16_t>& a, const std::vector<uint16_t>& b)
    {
        int32_t count = 0;
        for (size_t i = 0; i < a.size(); ++i)
            count += a[i] != b[i];
        return count;
    }

    // What the label should look like: the text drawn alone, centred above the box.
    std::vector<uint16_t> label_alone(const char* text)
    {
        std::vector<uint16_t> saved = frame->colour;
        clear_frame();
        int32_t box_y = HEIGHT - 132;
        draw_text(WIDTH / 2 - text_width(text, -1, &font_system) / 2,
                  box_y - static_cast<int32_t>(font_system.line_height) - 8, text, -1, &font_system,
                  COLOUR_INVENTORY_LABEL);
        std::vector<uint16_t> result = frame->colour;
        frame->colour = saved;
        return result;
    }

    // The rows above the box, where only the label is drawn.
    std::vector<uint16_t> label_rows(const std::vector<uint16_t>& picture) const
    {
        int32_t rows = HEIGHT - 132;
        return std::vector<uint16_t>(picture.begin(), picture.begin() + rows * WIDTH);
    }
};

// ---- draw_model_view ---------------------------------------------------------------------------

TEST_F(item_view_test, screen_rectangle_floors_both_x_ends_and_rounds_both_y_ends_up)
{
    // A unit box (no triangles) placed at (0.1, 0.1, 4): its x and y run -0.4 ... 0.6, its depth
    // 3.5 ... 4.5. At 90 degrees (s = 1): min -0.4 / 3.5 = -0.1143, max 0.6 / 3.5 = 0.1714; with
    // scale 100 and offsets 10: x 48.57 ... 77.14, so x0 48, x1 77 but y0 49, y1 78.
    int32_t box = add_model({{-0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, 0.5f}}, {}, {});
    debug_show_colliders = 1;
    placement place = placement_from_angles({0.1f, 0.1f, 4.0f}, 0.0f, 0.0f);
    draw_model_view(registry_at<model>(&models, box), &place, 1.5707964f, 100.0f, 10.0f, 10.0f, 0.0f);
    EXPECT_EQ(frame->pixel(48, 49), COLOUR_ITEM_BOUNDS);
    EXPECT_EQ(frame->pixel(77, 78), COLOUR_ITEM_BOUNDS);
    EXPECT_EQ(frame->pixel(77, 49), COLOUR_ITEM_BOUNDS);
    EXPECT_EQ(frame->pixel(48, 78), COLOUR_ITEM_BOUNDS);
    EXPECT_EQ(frame->pixel(47, 49), WORLD);
    EXPECT_EQ(frame->pixel(48, 48), WORLD);
    EXPECT_EQ(frame->pixel(78, 78), WORLD);
    EXPECT_EQ(frame->pixel(77, 79), WORLD);
}

TEST_F(item_view_test, bounds_rectangle_is_outlined_only_with_the_colliders_switch)
{
    int32_t box = add_model({{-0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, 0.5f}}, {}, {});
    placement place = placement_from_angles({0.0f, 0.0f, 4.0f}, 0.0f, 0.0f);
    draw_model_view(registry_at<model>(&models, box), &place, 1.5707964f, 100.0f, 10.0f, 10.0f, 0.0f);
    for (uint16_t p : frame->colour)
        ASSERT_EQ(p, WORLD);
    debug_show_colliders = 1;
    draw_model_view(registry_at<model>(&models, box), &place, 1.5707964f, 100.0f, 10.0f, 10.0f, 0.0f);
    int32_t outlined = 0;
    for (uint16_t p : frame->colour)
        outlined += p == COLOUR_ITEM_BOUNDS;
    EXPECT_GT(outlined, 40);
}

TEST_F(item_view_test, depth_is_cleared_under_the_rectangle_only)
{
    int32_t box = add_model({{-0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, 0.5f}}, {}, {});
    placement place = placement_from_angles({0.1f, 0.1f, 4.0f}, 0.0f, 0.0f);
    draw_model_view(registry_at<model>(&models, box), &place, 1.5707964f, 100.0f, 10.0f, 10.0f, 0.0f);
    // The rectangle is x 48 ... 77, y 49 ... 78 (see above): cleared are columns 48 ... 76 and
    // rows 49 ... 77.
    for (int32_t y = 0; y < HEIGHT; ++y) {
        for (int32_t x = 0; x < WIDTH; ++x) {
            bool inside = x >= 48 && x < 77 && y >= 49 && y < 78;
            ASSERT_EQ(frame->depth_at(x, y), inside ? 0.0f : WORLD_DEPTH) << x << ", " << y;
        }
    }
}

TEST_F(item_view_test, item_is_drawn_over_world_geometry_inside_its_rectangle_and_nothing_outside_is_touched)
{
    debug_show_colliders = 1; // the outline shows where the rectangle is
    int32_t cube = add_cube_model(1.0f, add_texture(RED));
    placement place = placement_from_angles({0.0f, 0.0f, 4.0f}, 0.3f, 0.2f);
    draw_model_view(registry_at<model>(&models, cube), &place, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.0f);
    int32_t x0 = WIDTH, y0 = HEIGHT, x1 = -1, y1 = -1;
    for (int32_t y = 0; y < HEIGHT; ++y) {
        for (int32_t x = 0; x < WIDTH; ++x) {
            if (frame->pixel(x, y) != COLOUR_ITEM_BOUNDS)
                continue;
            x0 = x < x0 ? x : x0;
            y0 = y < y0 ? y : y0;
            x1 = x > x1 ? x : x1;
            y1 = y > y1 ? y : y1;
        }
    }
    ASSERT_LT(x0, x1);
    int32_t item_pixels = 0;
    for (int32_t y = 0; y < HEIGHT; ++y) {
        for (int32_t x = 0; x < WIDTH; ++x) {
            uint16_t p = frame->pixel(x, y);
            bool inside = x >= x0 && x <= x1 && y >= y0 && y <= y1;
            if (!inside) {
                ASSERT_EQ(p, WORLD) << x << ", " << y;
                ASSERT_EQ(frame->depth_at(x, y), WORLD_DEPTH) << x << ", " << y;
            }
            item_pixels += p != WORLD && p != COLOUR_ITEM_BOUNDS;
        }
    }
    // The world's depth there was nearer than the item, yet the item shows.
    EXPECT_GT(item_pixels, 200);
}

TEST_F(item_view_test, back_faces_are_skipped_even_when_the_texture_is_double_sided)
{
    int32_t texture_index = add_texture(RED, TEXTURE_DOUBLE_SIDED);
    int32_t front = add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 0.0f, texture_index);
    placement facing = placement_from_angles({0.0f, 0.0f, 4.0f}, 0.0f, 0.0f);
    placement turned_away = placement_from_angles({0.0f, 0.0f, 4.0f}, 3.1415927f, 0.0f);
    draw_model_view(registry_at<model>(&models, front), &turned_away, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.0f);
    EXPECT_EQ(frame->drawn(), 0);
    draw_model_view(registry_at<model>(&models, front), &facing, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.0f);
    EXPECT_GT(frame->drawn(), 100);
}

TEST_F(item_view_test, triangles_nearer_than_the_world_near_plane_are_not_clipped)
{
    // A square 0.002 wide at depth 0.005, nearer than the world pass ever draws (0.01).
    int32_t square = add_square_model(-0.001f, -0.001f, 0.001f, 0.001f, 0.0f, add_texture(RED));
    placement place = placement_from_angles({0.0f, 0.0f, 0.005f}, 0.0f, 0.0f);
    draw_model_view(registry_at<model>(&models, square), &place, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.0f);
    // 0.001 / 0.005 = 0.2 of the view each side: 40 x 40 pixels about (110, 90).
    EXPECT_EQ(frame->pixel(110, 90), item_lit(RED, 0));
    EXPECT_GT(frame->drawn(), 1200);
}

TEST_F(item_view_test, items_are_tinted_with_row_31_at_the_given_shade)
{
    int32_t square = add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 0.0f, add_texture(BLUE));
    placement place = placement_from_angles({0.0f, 0.0f, 4.0f}, 0.0f, 0.0f);
    const model* m = registry_at<model>(&models, square);
    draw_model_view(m, &place, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.0f);
    EXPECT_EQ(frame->pixel(110, 90), item_lit(BLUE, 0));
    draw_model_view(m, &place, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.5f);
    EXPECT_EQ(frame->pixel(110, 90), item_lit(BLUE, 31)); // light level = truncate(0.5 x 63)
    EXPECT_NE(item_lit(BLUE, 31), item_lit(BLUE, 0));
}

TEST_F(item_view_test, translucent_texture_blends_at_its_level_straight_away)
{
    int32_t square = add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 0.0f, add_texture(RED, TEXTURE_TRANSLUCENT, 20));
    placement place = placement_from_angles({0.0f, 0.0f, 4.0f}, 0.0f, 0.0f);
    reset_deferred_triangles();
    draw_model_view(registry_at<model>(&models, square), &place, 1.5707964f, 100.0f, 60.0f, 40.0f, 0.0f);
    EXPECT_EQ(deferred_count, 0);
    EXPECT_EQ(frame->pixel(110, 90),
              blend_pixel(WORLD, item_lit(RED, 0), colour_table_row(colour_tables.dimming, 20),
                          colour_table_row(colour_tables.luminance, 20)));
}

// ---- draw_item_views ---------------------------------------------------------------------------

TEST_F(item_view_test, nothing_is_drawn_with_the_inventory_closed_and_no_item_held)
{
    fill_slots(3);
    draw_item_views();
    EXPECT_EQ(frame->drawn(), 0);
    for (float d : frame->depth)
        ASSERT_EQ(d, WORLD_DEPTH);
}

TEST_F(item_view_test, on_a_frame_too_small_for_the_box_the_inventory_draws_only_inside_the_frame)
{
    // 160 x 120, as a small SCREEN_RESOLUTION gives: the box would start 12 rows above the top.
    frame.reset();
    frame = std::make_unique<test_frame>(160, 120, WORLD);
    set_camera({0.0f, 0.0f, 0.0f});
    fill_slots(3);
    inventory.display_open = 1;
    inventory.armed_slot = 0;
    inventory.armed_time = game_time;
    draw_item_views();
    EXPECT_EQ(frame->pixel(30, 0), COLOUR_BOX_OUTER); // the box's left side, cut at the top
    EXPECT_GT(frame->drawn(), 0);
}

TEST_F(item_view_test, box_viewport_is_100_pixels_centred_132_above_the_bottom)
{
    item_viewport box = box_viewport_for_frame();
    EXPECT_FLOAT_EQ(box.fov, 0.7853982f);
    EXPECT_EQ(box.scale, 100.0f);
    EXPECT_EQ(box.x_offset, WIDTH * 0.5f - 50.0f);
    EXPECT_EQ(box.y_offset, HEIGHT - 132.0f);
}

TEST_F(item_view_test, open_inventory_draws_the_double_frame_and_the_white_corner_brackets)
{
    inventory.display_open = 1;
    draw_item_views();
    int32_t x = WIDTH / 2 - 50, y = HEIGHT - 132;
    EXPECT_EQ(frame->pixel(x, y), COLOUR_BOX_OUTER);
    EXPECT_EQ(frame->pixel(x + 100, y + 100), COLOUR_BOX_OUTER);
    EXPECT_EQ(frame->pixel(x + 50, y), COLOUR_BOX_OUTER);
    EXPECT_EQ(frame->pixel(x + 1, y + 1), COLOUR_BOX_INNER);
    EXPECT_EQ(frame->pixel(x + 99, y + 50), COLOUR_BOX_INNER);
    EXPECT_EQ(frame->pixel(x + 2, y + 2), WORLD);
    // Each bracket: two strokes 8 pixels long from a point 4 in from the corner.
    const int32_t corners[4][2] = {{x + 4, y + 4}, {x + 96, y + 4}, {x + 4, y + 96}, {x + 96, y + 96}};
    for (const auto& c : corners) {
        int32_t dx = c[0] < x + 50 ? 1 : -1, dy = c[1] < y + 50 ? 1 : -1;
        for (int32_t i = 0; i <= 8; ++i) {
            EXPECT_EQ(frame->pixel(c[0] + dx * i, c[1]), COLOUR_BOX_CORNERS);
            EXPECT_EQ(frame->pixel(c[0], c[1] + dy * i), COLOUR_BOX_CORNERS);
        }
        EXPECT_EQ(frame->pixel(c[0] + dx * 9, c[1]), WORLD);
        EXPECT_EQ(frame->pixel(c[0], c[1] + dy * 9), WORLD);
        EXPECT_EQ(frame->pixel(c[0] + dx, c[1] + dy), WORLD);
    }
}

TEST_F(item_view_test, label_says_empty_with_no_slots)
{
    inventory.display_open = 1;
    draw_item_views();
    EXPECT_EQ(label_rows(frame->colour), label_rows(label_alone("<Empty>")));
    EXPECT_GT(differing(label_rows(frame->colour), std::vector<uint16_t>((HEIGHT - 132) * WIDTH, WORLD)), 20);
}

TEST_F(item_view_test, label_is_the_name_of_the_slot_nearest_the_scroll_position)
{
    fill_slots(3);
    inventory.display_open = 1;
    inventory.shown_selection = 1.4f;
    draw_item_views();
    EXPECT_EQ(label_rows(frame->colour), label_rows(label_alone("Rusty key")));
}

TEST_F(item_view_test, negative_scroll_positions_wrap_round_to_the_last_slots)
{
    EXPECT_EQ(shown_slot(-1.0f, 3), 2);
    EXPECT_EQ(shown_slot(-0.6f, 3), 2);
    EXPECT_EQ(shown_slot(-0.4f, 3), 0);
    EXPECT_EQ(shown_slot(-4.0f, 3), 2);
    EXPECT_EQ(shown_slot(-3.0f, 3), 0);
    EXPECT_EQ(shown_slot(2.5f, 3), 0); // halves round away from zero
    EXPECT_EQ(shown_slot(7.0f, 4), 3);
    EXPECT_EQ(shown_slot(0.0f, 1), 0);

    fill_slots(3);
    inventory.display_open = 1;
    inventory.shown_selection = -1.0f;
    draw_item_views();
    EXPECT_EQ(label_rows(frame->colour), label_rows(label_alone("Coin")));
}

TEST_F(item_view_test, with_four_or_more_slots_only_the_first_three_are_on_the_ring_while_the_label_cycles_through_all)
{
    fill_slots(3);
    inventory.display_open = 1;
    game_time = 0.7f;
    draw_item_views();
    std::vector<uint16_t> three = frame->colour;

    const char* names[4] = {"Iron key", "Rusty key", "Coin", "Candle"};
    int32_t fourth_item = add_item(names[3], add_cube_model(1.0f, add_texture(YELLOW)));
    inventory.slots[3] = {fourth_item, 1};
    inventory.slot_count = 4;
    for (int32_t shown = 0; shown < 4; ++shown) {
        inventory.shown_selection = static_cast<float>(shown);
        clear_frame();
        draw_item_views();
        EXPECT_EQ(label_rows(frame->colour), label_rows(label_alone(names[shown]))) << names[shown];
        for (uint16_t level = 0; level < 64; ++level)
            for (uint16_t p : frame->colour)
                ASSERT_NE(p, item_lit(YELLOW, static_cast<uint8_t>(level))) << "the fourth item is on the ring";
    }
    // Scrolled to 0 the ring is the one of three slots; only the label differs.
    inventory.shown_selection = 0.0f;
    clear_frame();
    draw_item_views();
    std::vector<uint16_t> below_label(frame->colour.begin() + (HEIGHT - 132) * WIDTH, frame->colour.end());
    EXPECT_EQ(below_label, std::vector<uint16_t>(three.begin() + (HEIGHT - 132) * WIDTH, three.end()));
}

TEST_F(item_view_test, ring_item_in_front_is_fully_lit_and_the_others_are_darker)
{
    fill_slots(3);
    inventory.display_open = 1;
    inventory.shown_selection = 0.0f;
    game_time = 0.2f;
    draw_item_views();
    int32_t front = 0, red_darker = 0;
    for (uint16_t p : frame->colour) {
        front += p == item_lit(RED, 0);
        for (uint8_t level = 1; level < 64; ++level)
            red_darker += p == item_lit(RED, level) && item_lit(RED, level) != item_lit(RED, 0);
    }
    EXPECT_GT(front, 50);
    EXPECT_EQ(red_darker, 0);
    // The items behind: shade 0.5 - 0.5 cos(120 degrees) = 0.75, light level 47.
    int32_t green_behind = 0;
    for (uint16_t p : frame->colour)
        green_behind += p == item_lit(GREEN, 47);
    EXPECT_GT(green_behind, 10);
}

TEST_F(item_view_test, slot_whose_item_has_no_model_leaves_its_place_on_the_ring_empty)
{
    fill_slots(3);
    inventory.display_open = 1;
    draw_item_views();
    std::vector<uint16_t> with_model = frame->colour;
    registry_at<item>(&items, inventory.slots[0].item)->model = 0;
    clear_frame();
    draw_item_views();
    int32_t red = 0;
    for (uint16_t p : frame->colour)
        for (uint8_t level = 0; level < 64; ++level)
            red += p == item_lit(RED, level);
    EXPECT_EQ(red, 0);
    EXPECT_NE(frame->colour, with_model);
}

TEST_F(item_view_test, ring_item_at_the_scroll_position_turns_four_units_in_front_tilted_25_degrees)
{
    fill_slots(1);
    inventory.display_open = 1;
    game_time = 0.4f;
    draw_item_views();
    std::vector<uint16_t> ring = frame->colour;
    clear_frame();
    // Angle 0: at (0, 0, 8 - 4), turned by -2 x 0.4 radians, pitched 25 degrees, fully lit.
    item_viewport box = box_viewport_for_frame();
    placement place = placement_from_angles({0.0f, 0.0f, 4.0f}, -0.8f, 0.43633232f);
    const model* m = registry_at<model>(&models, registry_at<item>(&items, inventory.slots[0].item)->model);
    draw_model_view(m, &place, 0.7853982f, box.scale, box.x_offset, box.y_offset, 0.0f);
    // Inside the box's brackets only the item is drawn.
    int32_t x = static_cast<int32_t>(box.x_offset), y = static_cast<int32_t>(box.y_offset), item_pixels = 0;
    for (int32_t row = y + 13; row < y + 88; ++row) {
        for (int32_t column = x + 13; column < x + 88; ++column) {
            size_t i = static_cast<size_t>(row * WIDTH + column);
            ASSERT_EQ(ring[i], frame->colour[i]) << column << ", " << row;
            item_pixels += ring[i] != WORLD;
        }
    }
    EXPECT_GT(item_pixels, 100);
}

// The held item alone, drawn as the flight puts it at time `now` chosen at `chosen`.
class held_item_test : public item_view_test {
protected:
    void SetUp() override
    {
        item_view_test::SetUp();
        fill_slots(1);
        inventory.armed_slot = 0;
        inventory_box_viewport = box_viewport_for_frame();
    }
    std::vector<uint16_t> held_at(float chosen, float now)
    {
        clear_frame();
        inventory.armed_time = chosen;
        game_time = now;
        draw_item_views();
        return frame->colour;
    }
    std::vector<uint16_t> model_view_at(float yaw, float pitch_degrees, const item_viewport& view)
    {
        clear_frame();
        placement place = placement_from_angles({0.0f, 0.0f, 4.0f}, yaw, pitch_degrees * 0.017453292f);
        const model* m = registry_at<model>(&models, registry_at<item>(&items, inventory.slots[0].item)->model);
        draw_model_view(m, &place, view.fov, view.scale, view.x_offset, view.y_offset, 0.0f);
        return frame->colour;
    }
    static item_viewport main_view() { return {1.5707964f, view_size, view_offset_x, view_offset_y}; }
};

TEST_F(held_item_test, chosen_item_starts_in_the_box_tilted_25_degrees)
{
    std::vector<uint16_t> start = held_at(1.0f, 1.0f);
    EXPECT_EQ(start, model_view_at(-2.0f, 25.0f, box_viewport_for_frame()));
    EXPECT_GT(frame->drawn(), 50);
}

TEST_F(held_item_test, chosen_item_reaches_the_full_view_exactly_at_0_3_s)
{
    std::vector<uint16_t> arrived = held_at(0.0f, 0.3f);
    EXPECT_EQ(arrived, model_view_at(-0.6f, 0.0f, main_view()));
    std::vector<uint16_t> almost = held_at(0.0f, 0.29f);
    EXPECT_NE(almost, model_view_at(-0.58f, 0.0f, main_view()));
}

TEST_F(held_item_test, chosen_item_stays_in_the_full_view_upright_and_turning_at_two_radians_a_second)
{
    EXPECT_EQ(held_at(0.0f, 2.0f), model_view_at(-4.0f, 0.0f, main_view()));
    EXPECT_EQ(held_at(0.0f, 2.5f), model_view_at(-5.0f, 0.0f, main_view()));
    EXPECT_NE(held_at(0.0f, 2.0f), held_at(0.0f, 2.5f));
}

TEST_F(held_item_test, half_way_the_flight_is_between_the_box_and_the_full_view)
{
    // t = 0.5: k = 0.5, pitch 12.5 degrees, every viewport value half-way.
    item_viewport box = box_viewport_for_frame(), full = main_view();
    item_viewport half = {(box.fov + full.fov) * 0.5f, (box.scale + full.scale) * 0.5f,
                          (box.x_offset + full.x_offset) * 0.5f, (box.y_offset + full.y_offset) * 0.5f};
    EXPECT_EQ(held_at(0.0f, 0.15f), model_view_at(-0.3f, 12.5f, half));
}

TEST_F(held_item_test, held_item_flies_from_where_the_box_was_last_shown)
{
    inventory_box_viewport = {0.7853982f, 100.0f, 20.0f, 30.0f};
    EXPECT_EQ(held_at(1.0f, 1.0f), model_view_at(-2.0f, 25.0f, inventory_box_viewport));
}

TEST_F(held_item_test, held_item_is_drawn_before_the_ring_and_the_box)
{
    inventory.display_open = 1;
    std::vector<uint16_t> both = held_at(0.0f, 1.0f);
    int32_t x = WIDTH / 2 - 50, y = HEIGHT - 132;
    EXPECT_EQ(both[static_cast<size_t>(y * WIDTH + x)], COLOUR_BOX_OUTER);
    // The full view (scale 240, centred) puts the held cube in the middle of the screen.
    EXPECT_NE(both[static_cast<size_t>(HEIGHT / 2 * WIDTH + WIDTH / 2)], WORLD);
}

} // namespace
