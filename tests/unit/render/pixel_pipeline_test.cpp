#include <gtest/gtest.h>

#include "core/settings.h"
#include "render/colour_tables.h"
#include "render/pixel_pipeline.h"
#include "render/raster.h"
#include "support/test_frame.h"

namespace {

const uint8_t NEUTRAL_TINT = 31;

uint16_t rgb(int32_t r, int32_t g, int32_t b, bool opaque = true)
{
    return static_cast<uint16_t>((opaque ? 0x8000 : 0) | r << 10 | g << 5 | b);
}

// The whole frame covered by two triangles at depth w, with the shade l everywhere and texture
// coordinates u 0 ... us across and v 0 ... vs down.
void cover_frame(const texture* tex, int32_t width, int32_t height, float w, float l, uint8_t tint = NEUTRAL_TINT,
                 uint8_t blend = 0, float us = 1.0f, float vs = 1.0f)
{
    float x = static_cast<float>(width), y = static_cast<float>(height);
    screen_vertex a = {0.0f, 0.0f, w, 0.0f, 0.0f, l};
    screen_vertex b = {x, 0.0f, w, us, 0.0f, l};
    screen_vertex c = {x, y, w, us, vs, l};
    screen_vertex d = {0.0f, y, w, 0.0f, vs, l};
    draw_triangle(tex, tint, blend, &a, &b, &c);
    draw_triangle(tex, tint, blend, &a, &c, &d);
}

} // namespace

TEST(fetch_nearest, scales_coordinates_by_the_size_and_wraps)
{
    test_texture tex(4, 2, 0);
    tex.set(2, 1, rgb(1, 2, 3));
    tex.set(1, 0, rgb(4, 5, 6));
    EXPECT_EQ(fetch_nearest(&tex.record, 0.5f, 0.5f), rgb(1, 2, 3));
    EXPECT_EQ(fetch_nearest(&tex.record, 3.5f, 1.5f), rgb(1, 2, 3));
    EXPECT_EQ(fetch_nearest(&tex.record, 0.3f, 0.2f), rgb(4, 5, 6));
}

TEST(fetch_nearest, negative_whole_number_product_lands_one_texel_left)
{
    test_texture tex(4, 4, 0);
    for (int32_t x = 0; x < 4; ++x)
        tex.set(x, 0, rgb(x, 0, 0));
    // u x 4 = -1 exactly: truncate(-1) - 1 = -2, which wraps to column 2 (flooring would give 3).
    EXPECT_EQ(fetch_nearest(&tex.record, -0.25f, 0.0f), rgb(2, 0, 0));
    // u x 4 = -0.4: truncate gives 0, minus 1 is -1: column 3, as flooring would give.
    EXPECT_EQ(fetch_nearest(&tex.record, -0.1f, 0.0f), rgb(3, 0, 0));
}

TEST(sample_filtered, transparent_nearest_texel_is_never_filled_in_by_its_neighbours)
{
    test_texture tex(4, 4, rgb(31, 31, 31));
    tex.set(1, 1, rgb(0, 31, 0, false));
    EXPECT_EQ(sample_filtered(&tex.record, 1.5f / 4, 1.5f / 4), 0);
    EXPECT_EQ(sample_filtered(&tex.record, 1.1f / 4, 1.9f / 4), 0);
}

TEST(sample_filtered, opaque_texel_next_to_transparent_ones_bleeds_their_colour_bits)
{
    test_texture tex(4, 4, rgb(31, 0, 0, false)); // transparent, but red in its colour bits
    tex.set(1, 1, rgb(0, 0, 0));
    // fu = 1.2, fv = 1.5: x0 = 0, y0 = 1, fx = 0.7, fy = 0; the corner (0, 1) weighs 1 - 0.7.
    uint16_t texel = sample_filtered(&tex.record, 1.2f / 4, 1.5f / 4);
    EXPECT_EQ(texel & 0x8000, 0x8000);
    EXPECT_EQ(channel_red(texel), 9); // truncate(31 x 0.3)
    EXPECT_EQ(channel_green(texel), 0);
    EXPECT_EQ(channel_blue(texel), 0);
}

TEST(sample_filtered, mixes_three_texels_on_the_side_of_the_diagonal)
{
    test_texture tex(2, 2, 0);
    tex.set(0, 0, rgb(0, 0, 0));
    tex.set(1, 0, rgb(20, 0, 0));
    tex.set(0, 1, rgb(0, 20, 0));
    tex.set(1, 1, rgb(0, 0, 20));
    // fu = fv = 0.75: fx = fy = 0.25, below the diagonal: T(0,1) x 0.25 + T(1,0) x 0.25 + T(0,0) x 0.5.
    uint16_t below = sample_filtered(&tex.record, 0.375f, 0.375f);
    EXPECT_EQ(below, rgb(5, 5, 0));
    // fu = fv = 1.25: fx = fy = 0.75, above it: T(0,1) x 0.25 + T(1,0) x 0.25 + T(1,1) x 0.5.
    uint16_t above = sample_filtered(&tex.record, 0.625f, 0.625f);
    EXPECT_EQ(above, rgb(5, 5, 10));
}

TEST(sample_filtered, first_half_texel_extrapolates_instead_of_wrapping)
{
    test_texture tex(4, 4, rgb(0, 0, 0));
    for (int32_t y = 0; y < 4; ++y) {
        tex.set(0, y, rgb(16, 0, 0));
        tex.set(1, y, rgb(8, 0, 0));
        tex.set(3, y, rgb(0, 0, 31)); // the last column: flooring would mix it in here
    }
    // fu = 0.25: x0 = truncate(-0.25) = 0, fx = -0.25; fv = 1.5: fy = 0.
    // red = 8 x -0.25 + 16 x 1.25 = 18.
    uint16_t texel = sample_filtered(&tex.record, 0.0625f, 1.5f / 4);
    EXPECT_EQ(texel, rgb(18, 0, 0));
}

TEST(sample_filtered, coordinates_repeat_in_both_directions)
{
    test_texture tex(4, 4, rgb(3, 0, 0));
    tex.set(1, 2, rgb(0, 31, 0));
    EXPECT_EQ(sample_filtered(&tex.record, 1.5f / 4, 2.5f / 4), sample_filtered(&tex.record, 2.0f + 1.5f / 4, -1.0f + 2.5f / 4));
}

// The filter written plainly, one channel at a time, straight from its rules.
static uint16_t reference_filter(const test_texture& tex, float u, float v)
{
    auto fraction = [](float a) {
        float f = a - static_cast<float>(static_cast<int32_t>(a));
        return f < 0.0f ? f + 1.0f : f;
    };
    const texture& t = tex.record;
    auto at = [&](int32_t x, int32_t y) { return static_cast<uint32_t>(t.texels[(y << t.row_shift) | x]); };
    float fu = fraction(u) * t.width_f;
    float fv = fraction(v) * t.height_f;
    if (!(at(static_cast<int32_t>(fu) & t.width_mask, static_cast<int32_t>(fv) & t.height_mask) & 0x8000))
        return 0;
    int32_t x0 = static_cast<int32_t>(fu - 0.5f) & t.width_mask;
    int32_t y0 = static_cast<int32_t>(fv - 0.5f) & t.height_mask;
    float fx = (fu - 0.5f) - static_cast<float>(x0);
    float fy = (fv - 0.5f) - static_cast<float>(y0);
    int32_t x1 = (x0 + 1) & t.width_mask;
    int32_t y1 = (y0 + 1) & t.height_mask;
    uint32_t channels[3];
    for (int32_t k = 0; k < 3; ++k) {
        int32_t bit = 10 - 5 * k;
        auto c = [&](int32_t x, int32_t y) { return static_cast<float>(at(x, y) >> bit & 31); };
        float mixed;
        if (fx + fy <= 1.0f)
            mixed = c(x0, y1) * fy + c(x1, y0) * fx + c(x0, y0) * (1.0f - fx - fy);
        else
            mixed = c(x0, y1) * (1.0f - fx) + c(x1, y0) * (1.0f - fy) + c(x1, y1) * (fx + fy - 1.0f);
        channels[k] = static_cast<uint32_t>(static_cast<int32_t>(mixed));
    }
    return static_cast<uint16_t>((channels[0] | 32u) << 10 | channels[1] << 5 | channels[2]);
}

TEST(sample_filtered, matches_a_plain_channel_by_channel_mix_everywhere)
{
    test_texture tex(8, 4, 0);
    uint32_t seed = 12345;
    auto next = [&seed]() {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    for (uint16_t& texel : tex.texels)
        texel = static_cast<uint16_t>(next());
    for (int32_t i = 0; i < 20000; ++i) {
        float u = static_cast<float>(static_cast<int32_t>(next() % 40000) - 20000) / 4093.0f;
        float v = static_cast<float>(static_cast<int32_t>(next() % 40000) - 20000) / 2039.0f;
        ASSERT_EQ(sample_filtered(&tex.record, u, v), reference_filter(tex, u, v)) << u << ", " << v;
    }
}

TEST(light_level, full_shade_is_level_63_and_none_is_level_0)
{
    EXPECT_EQ(light_level(1.0f), 63);
    EXPECT_EQ(light_level(0.0f), 0);
    EXPECT_EQ(light_level_dithered(1.0f, light_dither_offset(3, 3)), 63); // clamped at 1
    EXPECT_EQ(light_level_dithered(0.0f, light_dither_offset(0, 0)), 0);
}

TEST(light_level, dithering_pushes_a_shade_just_below_a_boundary_over_it_in_every_block)
{
    float shade = 10.0f / 63.0f - 0.001f;
    ASSERT_EQ(light_level(shade), 9);
    for (int32_t block_y = 0; block_y < 8; block_y += 4)
        for (int32_t block_x = 0; block_x < 8; block_x += 4) {
            int32_t pushed = 0, kept = 0;
            for (int32_t y = block_y; y < block_y + 4; ++y)
                for (int32_t x = block_x; x < block_x + 4; ++x) {
                    uint8_t level = light_level_dithered(shade, light_dither_offset(x, y));
                    pushed += level >= 10;
                    kept += level == 9;
                }
            EXPECT_GT(pushed, 0);
            EXPECT_GT(kept, 0);
            EXPECT_EQ(pushed + kept, 16);
        }
}

TEST(light_level, without_dithering_the_shade_is_not_clamped)
{
    EXPECT_EQ(light_level(-0.0f), 0);
    EXPECT_EQ(light_level(1.5f), 94);
}

// A nearer surface made only of transparent (white-coloured) texels changes nothing.
static void expect_transparent_texels_leave_the_frame(int32_t interpolation)
{
    test_frame frame(8, 8, rgb(1, 2, 3));
    TEXTURE_INTERPOLATION = interpolation;
    frame.depth.assign(frame.depth.size(), 0.25f);
    test_texture clear(4, 4, rgb(31, 31, 31, false));
    cover_frame(&clear.record, 8, 8, 1.0f, 0.0f);
    EXPECT_EQ(frame.drawn(), 0);
    for (float d : frame.depth)
        EXPECT_EQ(d, 0.25f);
}

TEST(draw_triangle, transparent_texel_leaves_colour_and_depth_with_the_nearest_fetch)
{
    expect_transparent_texels_leave_the_frame(0);
}

TEST(draw_triangle, transparent_texel_leaves_colour_and_depth_with_the_filtered_fetch)
{
    expect_transparent_texels_leave_the_frame(1);
}

TEST(draw_triangle, filtered_fetch_keeps_the_holes_of_a_cut_out_texture)
{
    test_frame frame(8, 8);
    TEXTURE_INTERPOLATION = 1;
    test_texture cut_out(4, 4, rgb(31, 31, 31));
    cut_out.set(2, 1, rgb(0, 0, 0, false));
    cover_frame(&cut_out.record, 8, 8, 1.0f, 0.0f);
    // Texel (2, 1) covers pixels 4 ... 5 x 2 ... 3 at two pixels a texel.
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 8; ++x)
            EXPECT_EQ(frame.pixel(x, y) == 0, x / 2 == 2 && y / 2 == 1) << x << "," << y;
}

TEST(draw_triangle, light_dithering_pushes_some_pixels_of_every_block_to_the_next_level)
{
    test_frame frame(8, 8);
    LIGHT_DITHERING = 1;
    test_texture white(1, 1, rgb(31, 31, 31));
    cover_frame(&white.record, 8, 8, 1.0f, 1.0f / 63.0f - 0.001f); // level 0, just below level 1
    const uint16_t level0 = rgb(31, 31, 31);
    const uint16_t level1 = rgb(30, 30, 30); // 31 x 62 / 63 and 31 x 61 / 63, truncated
    for (int32_t block_y = 0; block_y < 8; block_y += 4)
        for (int32_t block_x = 0; block_x < 8; block_x += 4) {
            int32_t pushed = 0;
            for (int32_t y = block_y; y < block_y + 4; ++y)
                for (int32_t x = block_x; x < block_x + 4; ++x) {
                    uint16_t p = frame.pixel(x, y);
                    EXPECT_TRUE(p == level0 || p == level1);
                    pushed += p == level1;
                }
            EXPECT_GT(pushed, 0);
            EXPECT_EQ(frame.pixel(block_x, block_y), level0); // the matrix's 0 pushes nothing
        }
}

TEST(draw_triangle, dither_pattern_is_fixed_to_the_screen)
{
    test_texture white(1, 1, rgb(31, 31, 31));
    const float shade = 20.0f / 63.0f - 0.005f;
    test_frame first(8, 8);
    LIGHT_DITHERING = 1;
    cover_frame(&white.record, 8, 8, 1.0f, shade);
    std::vector<uint16_t> pattern = first.colour;
    // Another frame, another depth and texture placement: the same pixels take the same offsets.
    test_frame second(8, 8);
    LIGHT_DITHERING = 1;
    cover_frame(&white.record, 8, 8, 4.0f, shade, NEUTRAL_TINT, 0, 3.0f, -2.0f);
    EXPECT_EQ(second.colour, pattern);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 4; ++x) {
            EXPECT_EQ(first.pixel(x, y), first.pixel(x + 4, y));
            EXPECT_EQ(first.pixel(x, y), first.pixel(x, y + 4));
        }
}

TEST(draw_triangle, warm_tint_raises_red_lowers_blue_and_leaves_green)
{
    test_frame frame(4, 4);
    test_texture grey(1, 1, rgb(16, 16, 16));
    cover_frame(&grey.record, 4, 4, 1.0f, 0.0f, 63);
    EXPECT_EQ(frame.pixel(1, 1), rgb(31, 16, 0));
}

TEST(draw_triangle, shade_darkens_each_channel_through_the_dimming_row)
{
    test_frame frame(4, 4);
    test_texture colour(1, 1, rgb(31, 20, 9));
    cover_frame(&colour.record, 4, 4, 1.0f, 0.5f); // level truncate(31.5) = 31
    const uint8_t* dim = colour_table_row(colour_tables.dimming, 31);
    EXPECT_EQ(frame.pixel(2, 2), rgb(dim[31], dim[20], dim[9]));
    EXPECT_EQ(frame.pixel(2, 2), rgb(15, 10, 4)); // c x 32 / 63
}

TEST(draw_triangle, translucent_colour_mixes_by_dimming_the_old_and_scaling_the_new)
{
    test_frame frame(4, 4, rgb(31, 0, 16));
    test_texture glass(1, 1, rgb(0, 31, 16));
    cover_frame(&glass.record, 4, 4, 1.0f, 0.0f, NEUTRAL_TINT, 56);
    // Old x 7 / 63 + new x 56 / 63, each truncated: red 3 + 0, green 0 + 27, blue 1 + 14.
    EXPECT_EQ(frame.pixel(0, 0), rgb(3, 27, 15));
    EXPECT_EQ(frame.depth_at(0, 0), 0.0f);
}
