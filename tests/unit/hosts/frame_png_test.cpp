#include <gtest/gtest.h>

#include <stdio.h>

#include <string>
#include <vector>

#include "core/frame.h"
#include "hosts/frame_png.h"
#include "support/png_image.h"
#include "support/temp_files.h"

TEST(frame_png, each_5_bit_channel_is_widened_by_repeating_its_top_bits)
{
    uint32_t rgb = frame_pixel_rgb888(0x8000 | 31 << 10 | 16 << 5 | 1);
    EXPECT_EQ(rgb >> 16, 255u);
    EXPECT_EQ((rgb >> 8) & 0xFF, static_cast<uint32_t>((16 << 3) | (16 >> 2)));
    EXPECT_EQ(rgb & 0xFF, static_cast<uint32_t>((1 << 3) | (1 >> 2)));
    EXPECT_EQ(frame_pixel_rgb888(0x7FFF), 0xFFFFFFu) << "bit 15 does not matter";
}

TEST(frame_png, a_frame_is_written_row_by_row_from_the_top)
{
    const int32_t width = 3, height = 2;
    std::vector<uint16_t> frame(width * height);
    for (int32_t i = 0; i < width * height; ++i)
        frame[i] = static_cast<uint16_t>(0x8000 | (i * 5) << 10 | (31 - i) << 5 | (i * 3));
    std::string path = test_folder() + "/frame.png";
    ASSERT_EQ(write_frame_png(path.c_str(), frame.data(), width, height), 1);
    rgb_image image = read_png(path);
    ASSERT_EQ(image.width, 3u);
    ASSERT_EQ(image.height, 2u);
    ASSERT_EQ(image.pixels.size(), 18u);
    for (int32_t i = 0; i < width * height; ++i) {
        uint32_t rgb = frame_pixel_rgb888(frame[i]);
        EXPECT_EQ(image.pixels[3 * i], rgb >> 16) << i;
        EXPECT_EQ(image.pixels[3 * i + 1], (rgb >> 8) & 0xFF) << i;
        EXPECT_EQ(image.pixels[3 * i + 2], rgb & 0xFF) << i;
    }
}

TEST(frame_png, no_frame_buffer_or_no_folder_writes_nothing)
{
    uint16_t pixel = 0;
    EXPECT_EQ(write_frame_png((test_folder() + "/a.png").c_str(), nullptr, 1, 1), 0);
    EXPECT_EQ(write_frame_png((test_folder() + "/a.png").c_str(), &pixel, 0, 1), 0);
    EXPECT_EQ(write_frame_png((test_folder() + "/missing/a.png").c_str(), &pixel, 1, 1), 0);
}
