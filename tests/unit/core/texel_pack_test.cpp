#include <gtest/gtest.h>

#include <vector>

#include "core/texel_pack.h"

TEST(texel_pack, without_dithering_each_channel_keeps_its_top_five_bits)
{
    uint16_t texel = pack_texel(0xFF, 0x80, 0x07, 255, 0, 0, 0);
    EXPECT_EQ(texel, 0x8000 | 31 | 16 << 5 | 0 << 10);
    EXPECT_EQ(pack_texel(0x08, 0x0F, 0xF8, 255, 3, 2, 0), 0x8000 | 1 | 1 << 5 | 31 << 10);
}

TEST(texel_pack, only_alpha_zero_is_transparent)
{
    EXPECT_EQ(pack_texel(0, 0, 0, 0, 0, 0, 0) & 0x8000, 0);
    EXPECT_EQ(pack_texel(0, 0, 0, 1, 0, 0, 0) & 0x8000, 0x8000);
    EXPECT_EQ(pack_texel(0, 0, 0, 127, 0, 0, 1) & 0x8000, 0x8000);
    EXPECT_EQ(pack_texel(0xFF, 0xFF, 0xFF, 0, 1, 1, 1), 0x7FFF);
}

TEST(texel_pack, dithering_leaves_exact_five_bit_levels_flat)
{
    for (uint32_t level = 0; level < 32; ++level) {
        uint8_t c = static_cast<uint8_t>(level * 8);
        for (uint32_t y = 0; y < 4; ++y)
            for (uint32_t x = 0; x < 4; ++x)
                EXPECT_EQ(pack_texel(c, c, c, 255, x, y, 1), 0x8000 | level | level << 5 | level << 10)
                    << "level " << level << " at " << x << "," << y;
    }
}

TEST(texel_pack, dithering_white_stays_at_the_top_level)
{
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 4; ++x)
            EXPECT_EQ(pack_texel(255, 255, 255, 255, x, y, 1), 0xFFFF);
}

TEST(texel_pack, dithering_a_value_between_levels_spreads_it_over_the_4x4_cell_in_proportion)
{
    // 8k + r takes the upper level on 2r of the 16 pixels of a cell.
    for (uint32_t r = 0; r < 8; ++r) {
        uint8_t c = static_cast<uint8_t>(80 + r); // level 10 plus r
        int upper = 0;
        for (uint32_t y = 0; y < 4; ++y)
            for (uint32_t x = 0; x < 4; ++x) {
                uint16_t blue = pack_texel(c, 0, 0, 255, x, y, 1) & 31;
                EXPECT_TRUE(blue == 10 || blue == 11);
                upper += blue == 11;
            }
        EXPECT_EQ(upper, static_cast<int>(2 * r)) << "remainder " << r;
    }
}

TEST(texel_pack, dither_pattern_is_anchored_to_image_coordinates_and_repeats_every_four)
{
    uint16_t first = pack_texel(84, 84, 84, 255, 1, 2, 1);
    EXPECT_EQ(pack_texel(84, 84, 84, 255, 5, 6, 1), first);
    EXPECT_EQ(pack_texel(84, 84, 84, 255, 1 + 64, 2 + 128, 1), first);
    // The classic Bayer order: the top-left pixel has the lowest threshold, its right neighbour the ninth.
    EXPECT_EQ(pack_texel(84, 0, 0, 255, 0, 0, 1) & 31, 10);
    EXPECT_EQ(pack_texel(84, 0, 0, 255, 1, 0, 1) & 31, 11);
}

TEST(texel_pack, rows_follow_both_strides)
{
    // 2 x 2 pixels with a padded source row and a padded texel row.
    std::vector<uint8_t> pixels = {
        0xFF, 0, 0, 255, 0, 0xFF, 0, 255, 0xAA, 0xAA, // row 0 plus two bytes of padding
        0, 0, 0xFF, 255, 0, 0, 0, 0, 0xAA, 0xAA,      // row 1
    };
    std::vector<uint16_t> texels(6, 0x1234);
    pack_bgra_to_5551(pixels.data(), 10, texels.data(), 6, 2, 2, 0);
    EXPECT_EQ(texels, std::vector<uint16_t>({0x801F, 0x83E0, 0x1234, 0xFC00, 0x0000, 0x1234}));
}
