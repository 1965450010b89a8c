#include <gtest/gtest.h>

#include <stdint.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "hosts/screenshots.h"
#include "platform/platform.h"
#include "support/temp_files.h"

namespace {

// Every test works in a fresh folder of its own, as the game does in its own.
class screenshots_test : public testing::Test {
protected:
    char saved[4096] = "";

    void SetUp() override
    {
        ASSERT_NE(getcwd(saved, sizeof saved), nullptr);
        ASSERT_EQ(chdir(test_folder().c_str()), 0);
    }

    void TearDown() override { EXPECT_EQ(chdir(saved), 0); }
};

std::string next_path(const char* folder)
{
    char path[SCREENSHOT_PATH_CAPACITY];
    EXPECT_EQ(next_screenshot_path(folder, path, sizeof path), 1);
    return path;
}

// The PNG read back through the game's own texture decoder, as 16-bit BGRA 5551 texels.
std::vector<uint16_t> read_back(const char* path, uint32_t* width, uint32_t* height)
{
    platform_image image = platform_image_open(path, 0);
    EXPECT_NE(image, nullptr) << path;
    std::vector<uint16_t> texels;
    if (!image)
        return texels;
    EXPECT_EQ(platform_image_size(image, width, height), 1);
    texels.resize(static_cast<size_t>(*width) * *height);
    EXPECT_EQ(platform_image_copy(image, texels.data(), *width * 2), 1);
    platform_image_close(image);
    return texels;
}

} // namespace

TEST_F(screenshots_test, numbers_start_at_0001)
{
    EXPECT_EQ(next_path("."), "./gloamhold-0001.png");
}

TEST_F(screenshots_test, the_next_free_number_is_taken)
{
    write_file("gloamhold-0001.png", "x");
    write_file("gloamhold-0002.png", "x");
    EXPECT_EQ(next_path("."), "./gloamhold-0003.png");
}

TEST_F(screenshots_test, a_number_freed_by_deleting_its_file_is_taken_again)
{
    write_file("gloamhold-0002.png", "x");
    EXPECT_EQ(next_path("."), "./gloamhold-0001.png");
}

TEST_F(screenshots_test, f12_makes_the_folder_and_saves_the_frame_with_the_widening_rule)
{
    // Every 5-bit level of each channel somewhere in a 32 x 2 frame.
    std::vector<uint16_t> frame;
    for (uint16_t y = 0; y < 2; ++y)
        for (uint16_t x = 0; x < 32; ++x)
            frame.push_back(static_cast<uint16_t>(0x8000 | x << 10 | (31 - x) << 5 | (x ^ y)));
    char path[SCREENSHOT_PATH_CAPACITY];
    ASSERT_EQ(save_screenshot(frame.data(), 32, 2, path, sizeof path), 1);
    EXPECT_STREQ(path, "screenshots/gloamhold-0001.png");
    uint32_t width = 0, height = 0;
    std::vector<uint16_t> texels = read_back(path, &width, &height);
    EXPECT_EQ(width, 32u);
    EXPECT_EQ(height, 2u);
    EXPECT_EQ(texels, frame) << "(c << 3) | (c >> 2) read back to 5 bits gives c again";
}

TEST_F(screenshots_test, a_second_screenshot_takes_the_next_number)
{
    uint16_t pixel = 0xFFFF;
    char path[SCREENSHOT_PATH_CAPACITY];
    ASSERT_EQ(save_screenshot(&pixel, 1, 1, path, sizeof path), 1);
    ASSERT_EQ(save_screenshot(&pixel, 1, 1, path, sizeof path), 1);
    EXPECT_STREQ(path, "screenshots/gloamhold-0002.png");
}

TEST_F(screenshots_test, no_frame_buffer_saves_nothing)
{
    char path[SCREENSHOT_PATH_CAPACITY];
    EXPECT_EQ(save_screenshot(nullptr, 640, 480, path, sizeof path), 0);
}
