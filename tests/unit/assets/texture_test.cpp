#include <gtest/gtest.h>

#include <string.h>

#include <filesystem>
#include <string>
#include <vector>

#include "assets/texture.h"
#include "core/settings.h"
#include "core/texel_pack.h"
#include "support/asset_state.h"
#include "support/media_files.h"
#include "support/test_heap.h"

namespace {

class texture_test : public data_folder_test {
protected:
    void SetUp() override
    {
        data_folder_test::SetUp();
        TEXTURE_DITHERING = 0;
    }
    void TearDown() override
    {
        TEXTURE_DITHERING = 0;
        data_folder_test::TearDown();
    }

    static void write_texture(const std::string& name, uint32_t width, uint32_t height)
    {
        write_data("textures/" + name, encode_bgra_png(width, height, test_pattern_bgra(width, height)));
    }

    static const texture* at(int32_t index) { return registry_at<texture>(&textures, index); }

    static std::vector<uint16_t> texels_of(int32_t index)
    {
        const texture* t = at(index);
        return std::vector<uint16_t>(t->texels, t->texels + static_cast<size_t>(t->width) * t->height);
    }

    // What every decoder must give for B, G, R, A pixels: the game's own packer's result.
    static std::vector<uint16_t> packed(const std::vector<uint8_t>& bgra, uint32_t width, uint32_t height, int dither)
    {
        std::vector<uint16_t> texels(static_cast<size_t>(width) * height);
        pack_bgra_to_5551(bgra.data(), width * 4, texels.data(), width * 2, width, height, dither);
        return texels;
    }
};

} // namespace

TEST_F(texture_test, png_of_64_by_32_loads_with_its_size_masks_and_shift)
{
    write_texture("wide.png", 64, 32);
    int32_t index = load_texture("wide.png");
    ASSERT_GE(index, 0);
    const texture* t = at(index);
    EXPECT_EQ(t->width, 64);
    EXPECT_EQ(t->height, 32);
    EXPECT_EQ(t->width_f, 64.0f);
    EXPECT_EQ(t->height_f, 32.0f);
    EXPECT_EQ(t->width_mask, 63);
    EXPECT_EQ(t->height_mask, 31);
    EXPECT_EQ(t->row_shift, 6);
    EXPECT_EQ(t->flags, 0);
    EXPECT_EQ(asset_name_find(ASSET_TEXTURE, "wide.png"), index);
}

TEST_F(texture_test, png_of_48_by_64_fails_because_a_side_is_not_a_power_of_two)
{
    write_texture("odd.png", 48, 64);
    EXPECT_EQ(load_texture("odd.png"), -1);
    EXPECT_FALSE(registry_in_use(&textures, 0)); // the slot was given back
    EXPECT_EQ(asset_name_find(ASSET_TEXTURE, "odd.png"), -1);
}

TEST_F(texture_test, missing_file_fails_and_frees_its_slot)
{
    EXPECT_EQ(load_texture("nowhere.png"), -1);
    EXPECT_FALSE(registry_in_use(&textures, 0));
}

TEST_F(texture_test, file_that_is_not_an_image_fails)
{
    write_data("textures/text.png", "this is no picture\n");
    EXPECT_EQ(load_texture("text.png"), -1);
}

TEST_F(texture_test, texels_are_the_packed_pixels_without_dithering)
{
    std::vector<uint8_t> bgra = test_pattern_bgra(16, 8);
    write_data("textures/pattern.png", encode_bgra_png(16, 8, bgra));
    int32_t index = load_texture("pattern.png");
    ASSERT_GE(index, 0);
    EXPECT_EQ(texels_of(index), packed(bgra, 16, 8, 0));
}

TEST_F(texture_test, texels_are_the_packed_pixels_with_ordered_dithering_when_the_setting_is_on)
{
    std::vector<uint8_t> bgra = test_pattern_bgra(16, 8);
    write_data("textures/pattern.png", encode_bgra_png(16, 8, bgra));
    TEXTURE_DITHERING = 1;
    int32_t index = load_texture("pattern.png");
    ASSERT_GE(index, 0);
    EXPECT_EQ(texels_of(index), packed(bgra, 16, 8, 1));
    EXPECT_NE(packed(bgra, 16, 8, 1), packed(bgra, 16, 8, 0)); // the pattern really is dithered
}

TEST_F(texture_test, palette_image_with_transparency_expands_to_its_colours)
{
    png_description image;
    image.width = 4;
    image.height = 2;
    image.colour_type = PNG_PALETTE;
    image.palette = {255, 0, 0, 0, 255, 0, 0, 0, 255, 200, 100, 50};
    image.transparency = {255, 0}; // entry 1 is fully transparent, the rest opaque
    image.pixels = {0, 1, 2, 3, 3, 2, 1, 0};
    write_data("textures/palette.png", encode_png(image));
    int32_t index = load_texture("palette.png");
    ASSERT_GE(index, 0);
    std::vector<uint8_t> bgra;
    for (uint8_t entry : image.pixels) {
        const uint8_t* rgb = &image.palette[entry * 3];
        bgra.insert(bgra.end(), {rgb[2], rgb[1], rgb[0], static_cast<uint8_t>(entry == 1 ? 0 : 255)});
    }
    EXPECT_EQ(texels_of(index), packed(bgra, 4, 2, 0));
}

TEST_F(texture_test, grey_image_becomes_equal_channels)
{
    png_description image;
    image.width = 4;
    image.height = 4;
    image.colour_type = PNG_GREY;
    for (int i = 0; i < 16; ++i)
        image.pixels.push_back(static_cast<uint8_t>(i * 17));
    write_data("textures/grey.png", encode_png(image));
    int32_t index = load_texture("grey.png");
    ASSERT_GE(index, 0);
    std::vector<uint8_t> bgra;
    for (uint8_t g : image.pixels)
        bgra.insert(bgra.end(), {g, g, g, 255});
    EXPECT_EQ(texels_of(index), packed(bgra, 4, 4, 0));
}

TEST_F(texture_test, grey_with_alpha_keeps_transparent_pixels_transparent)
{
    png_description image;
    image.width = 2;
    image.height = 2;
    image.colour_type = PNG_GREY_ALPHA;
    image.pixels = {10, 255, 200, 0, 128, 1, 255, 255};
    write_data("textures/grey_alpha.png", encode_png(image));
    int32_t index = load_texture("grey_alpha.png");
    ASSERT_GE(index, 0);
    std::vector<uint8_t> bgra = {10, 10, 10, 255, 200, 200, 200, 0, 128, 128, 128, 1, 255, 255, 255, 255};
    EXPECT_EQ(texels_of(index), packed(bgra, 2, 2, 0));
}

TEST_F(texture_test, sixteen_bit_channels_are_cut_to_their_high_byte)
{
    png_description image;
    image.width = 2;
    image.height = 1;
    image.colour_type = PNG_RGB;
    image.bit_depth = 16;
    image.pixels = {0x12, 0xFF, 0x80, 0x01, 0xF8, 0x00, 0x00, 0x00, 0x07, 0xFF, 0xFF, 0xFF};
    write_data("textures/deep.png", encode_png(image));
    int32_t index = load_texture("deep.png");
    ASSERT_GE(index, 0);
    std::vector<uint8_t> bgra = {0xF8, 0x80, 0x12, 255, 0xFF, 0x07, 0x00, 255};
    EXPECT_EQ(texels_of(index), packed(bgra, 2, 1, 0));
}

TEST_F(texture_test, interlaced_image_gives_the_same_texels_as_the_plain_one)
{
    std::vector<uint8_t> bgra = test_pattern_bgra(16, 16);
    png_description image;
    image.width = 16;
    image.height = 16;
    image.colour_type = PNG_RGBA;
    for (size_t i = 0; i < bgra.size(); i += 4)
        image.pixels.insert(image.pixels.end(), {bgra[i + 2], bgra[i + 1], bgra[i], bgra[i + 3]});
    image.interlaced = true;
    write_data("textures/interlaced.png", encode_png(image));
    int32_t index = load_texture("interlaced.png");
    ASSERT_GE(index, 0);
    EXPECT_EQ(texels_of(index), packed(bgra, 16, 16, 0));
}

TEST_F(texture_test, unknown_suffix_letter_loads_with_no_flags)
{
    write_texture("wall@x.png", 8, 8);
    int32_t index = load_texture("wall@x.png");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->flags, 0);
}

TEST_F(texture_test, t_without_digit_returns_minus_one_but_stays_decoded_and_registered)
{
    write_texture("wall@t.png", 8, 8);
    EXPECT_EQ(load_texture("wall@t.png"), -1);
    int32_t index = asset_name_find(ASSET_TEXTURE, "wall@t.png");
    ASSERT_GE(index, 0);
    EXPECT_TRUE(registry_in_use(&textures, index));
    EXPECT_EQ(at(index)->width, 8);
    EXPECT_NE(at(index)->texels, nullptr);
}

TEST_F(texture_test, e_without_digit_also_returns_minus_one)
{
    write_texture("lamp@e.png", 8, 8);
    EXPECT_EQ(load_texture("lamp@e.png"), -1);
    EXPECT_GE(asset_name_find(ASSET_TEXTURE, "lamp@e.png"), 0);
}

TEST_F(texture_test, dot_before_the_at_sign_means_no_suffix)
{
    write_texture("wall.tga@d", 8, 8);
    int32_t index = load_texture("wall.tga@d");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->flags, 0);
}

TEST_F(texture_test, env_prefix_and_t5_give_flags_2_and_4_with_level_32)
{
    write_texture("env_glass@t5.png", 8, 8);
    int32_t index = load_texture("env_glass@t5.png");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->flags, TEXTURE_ENVIRONMENT | TEXTURE_TRANSLUCENT);
    EXPECT_EQ(at(index)->t_level, 32);
}

TEST_F(texture_test, d_and_e3_give_double_sided_and_fixed_light_at_0_7)
{
    write_texture("door@de3.png", 8, 8);
    int32_t index = load_texture("door@de3.png");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->flags, TEXTURE_DOUBLE_SIDED | TEXTURE_FIXED_LIGHT);
    EXPECT_EQ(at(index)->e_level, 0.7f);
}

TEST_F(texture_test, e_and_t_levels_follow_their_digit)
{
    const float e_expected[10] = {1.0f, 0.9f, 0.8f, 0.7f, 0.6f, 0.5f, 0.4f, 0.3f, 0.2f, 0.1f};
    for (int n = 0; n < 10; ++n) {
        std::string name = "lit@e" + std::to_string(n) + "t" + std::to_string(n) + ".png";
        write_texture(name, 4, 4);
        int32_t index = load_texture(name.c_str());
        ASSERT_GE(index, 0) << name;
        EXPECT_EQ(at(index)->e_level, e_expected[n]) << name;
        EXPECT_EQ(at(index)->t_level, 2 + 6 * n) << name;
    }
}

TEST_F(texture_test, suffix_letters_stop_at_the_dot)
{
    write_texture("crate@d.e5t", 4, 4);
    int32_t index = load_texture("crate@d.e5t");
    ASSERT_GE(index, 0);
    EXPECT_EQ(at(index)->flags, TEXTURE_DOUBLE_SIDED);
}

TEST_F(texture_test, names_compare_case_sensitively)
{
    write_texture("Wall.png", 4, 4);
    write_texture("wall.png", 4, 4);
    int32_t upper = find_or_load_texture("Wall.png");
    int32_t lower = find_or_load_texture("wall.png");
    ASSERT_GE(upper, 0);
    ASSERT_GE(lower, 0);
    EXPECT_NE(upper, lower);
}

TEST_F(texture_test, find_or_load_returns_the_known_index_without_reading_again)
{
    write_texture("once.png", 4, 4);
    int32_t first = find_or_load_texture("once.png");
    ASSERT_GE(first, 0);
    std::filesystem::remove("gloamhold_data/textures/once.png");
    EXPECT_EQ(find_or_load_texture("once.png"), first);
    EXPECT_EQ(textures.count, 1);
}

TEST_F(texture_test, name_of_39_characters_registers_and_40_fails_with_its_slot_freed)
{
    std::string fits(35, 'a');
    fits += ".png";
    std::string too_long = "b" + fits;
    write_texture(fits, 4, 4);
    write_texture(too_long, 4, 4);
    EXPECT_GE(load_texture(fits.c_str()), 0);
    EXPECT_EQ(load_texture(too_long.c_str()), -1);
    EXPECT_FALSE(registry_in_use(&textures, 1));
}

TEST_F(texture_test, fallback_is_a_black_and_magenta_checkerboard_with_fixed_light)
{
    int32_t index = make_fallback_texture();
    ASSERT_EQ(index, 0);
    EXPECT_EQ(fallback_texture, 0);
    EXPECT_EQ(asset_name_find(ASSET_TEXTURE, "fallback"), 0);
    const texture* t = at(index);
    EXPECT_EQ(t->width, 64);
    EXPECT_EQ(t->height, 64);
    EXPECT_EQ(t->flags, TEXTURE_FIXED_LIGHT);
    EXPECT_EQ(t->texels[0], 0x8000);
    EXPECT_EQ(t->texels[7], 0x8000);
    EXPECT_EQ(t->texels[8], 0xF81F);
    EXPECT_EQ(t->texels[8 * 64], 0xF81F);
    EXPECT_EQ(t->texels[8 * 64 + 8], 0x8000);
    EXPECT_EQ(t->texels[63 * 64 + 63], 0x8000);
}

TEST_F(texture_test, checker_colours_cells_by_the_parity_of_their_coordinates)
{
    texture t = {};
    ASSERT_EQ(texture_make_checker(&t, 8, 4, 2, 1, 2), 1);
    const uint16_t expected[4][8] = {
        {1, 1, 2, 2, 1, 1, 2, 2}, {1, 1, 2, 2, 1, 1, 2, 2}, {2, 2, 1, 1, 2, 2, 1, 1}, {2, 2, 1, 1, 2, 2, 1, 1}};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(t.texels[x + y * 8], expected[y][x]) << x << "," << y;
    EXPECT_EQ(texture_free(&t), 1);
    EXPECT_EQ(t.width, 0);
    EXPECT_EQ(t.texels, nullptr);
}

TEST_F(texture_test, checker_with_no_cell_size_fails)
{
    texture t = {};
    EXPECT_EQ(texture_make_checker(&t, 8, 8, 0, 1, 2), 0);
    EXPECT_EQ(t.texels, nullptr);
}

TEST_F(texture_test, reload_with_the_fallback_and_one_file_reports_one_success_and_one_failure)
{
    ASSERT_GE(make_fallback_texture(), 0);
    write_texture("wall.png", 8, 8);
    ASSERT_GE(load_texture("wall.png"), 0);
    reload_textures();
    EXPECT_STREQ(texture_reload_message, "Texture reload complete: 1 successful, 1 failed\n");
}

TEST_F(texture_test, reload_with_nothing_registered_reports_zeros)
{
    reload_textures();
    EXPECT_STREQ(texture_reload_message, "Texture reload complete: 0 successful, 0 failed\n");
}

TEST_F(texture_test, reload_takes_the_new_pixels_and_size_but_keeps_the_flags)
{
    write_texture("env_panel@de2.png", 8, 8);
    int32_t index = load_texture("env_panel@de2.png");
    ASSERT_GE(index, 0);
    std::vector<uint8_t> bigger = test_pattern_bgra(32, 16);
    write_data("textures/env_panel@de2.png", encode_bgra_png(32, 16, bigger));
    TEXTURE_DITHERING = 1;
    reload_textures();
    EXPECT_STREQ(texture_reload_message, "Texture reload complete: 1 successful, 0 failed\n");
    const texture* t = at(index);
    EXPECT_EQ(t->width, 32);
    EXPECT_EQ(t->height, 16);
    EXPECT_EQ(t->width_mask, 31);
    EXPECT_EQ(t->row_shift, 5);
    EXPECT_EQ(t->flags, TEXTURE_ENVIRONMENT | TEXTURE_DOUBLE_SIDED | TEXTURE_FIXED_LIGHT);
    EXPECT_EQ(t->e_level, 0.8f);
    EXPECT_EQ(texels_of(index), packed(bigger, 32, 16, 1));
}

TEST_F(texture_test, reload_leaves_a_texture_whose_file_went_bad_as_it_was)
{
    write_texture("keep.png", 8, 8);
    int32_t index = load_texture("keep.png");
    ASSERT_GE(index, 0);
    std::vector<uint16_t> before = texels_of(index);
    write_texture("keep.png", 12, 8);
    reload_textures();
    EXPECT_STREQ(texture_reload_message, "Texture reload complete: 0 successful, 1 failed\n");
    EXPECT_EQ(at(index)->width, 8);
    EXPECT_EQ(texels_of(index), before);
}

TEST_F(texture_test, every_allocation_failure_while_decoding_fails_the_load_with_nothing_left_behind)
{
    write_texture("big.png", 64, 64);
    int failures = 0;
    bool loaded = false;
    for (int n = 1; n < 50 && !loaded; ++n) {
        texture t = {};
        test_heap::reset();
        test_heap::fail_request(n);
        if (texture_load_file(&t, "gloamhold_data/textures/big.png")) {
            loaded = true;
            EXPECT_EQ(t.width, 64);
            texture_free(&t);
        } else {
            ++failures;
            EXPECT_EQ(t.texels, nullptr) << "request " << n;
        }
    }
    EXPECT_TRUE(loaded);
    EXPECT_GE(failures, 2); // at least the decoder's handle and the texels
}

// The vector span loops read each texel as four bytes: the last texel's read lands in a spare one.
TEST(texture_create, allocates_one_zero_spare_texel_after_the_texels)
{
    test_heap::reset();
    texture t = {};
    ASSERT_EQ(texture_create(&t, 4, 2), 1);
    ASSERT_EQ(test_heap::log().size(), 1u);
    EXPECT_EQ(test_heap::log()[0].bytes, (4u * 2u + 1u) * sizeof(uint16_t));
    EXPECT_EQ(t.texels[4 * 2], 0);
    EXPECT_EQ(texture_free(&t), 1);
}
