#include <gtest/gtest.h>

#include <string>

#include "core/settings.h"
#include "support/temp_files.h"
#include "support/test_heap.h"

namespace {

// Loads settings from a file with the given bytes, after spoiling every setting so that defaults
// are seen to be written.
void load_from(const std::string& bytes)
{
    FPS = UPS = -1;
    SCREEN_RESOLUTION = {-1, -1};
    SCREEN_SCALE = MOUSE_SENSITIVITY_X = MOUSE_SENSITIVITY_Y = AUDIO_VOLUME = FOV = -1.0f;
    TEXTURE_INTERPOLATION = TEXTURE_DITHERING = LIGHT_DITHERING = ENABLE_HEAD_BOBBING = RENDER_THREADS = -1;
    std::string path = write_file(test_folder() + "/settings.ini", bytes);
    EXPECT_EQ(load_settings(path.c_str()), 1);
}

void expect_resolution(int32_t width, int32_t height)
{
    EXPECT_EQ(SCREEN_RESOLUTION.width, width);
    EXPECT_EQ(SCREEN_RESOLUTION.height, height);
}

void expect_all_defaults()
{
    EXPECT_EQ(FPS, 60);
    EXPECT_EQ(UPS, 40);
    expect_resolution(640, 480);
    EXPECT_EQ(SCREEN_SCALE, 1.0f);
    EXPECT_EQ(MOUSE_SENSITIVITY_X, 1.0f);
    EXPECT_EQ(MOUSE_SENSITIVITY_Y, 1.0f);
    EXPECT_EQ(AUDIO_VOLUME, 1.0f);
    EXPECT_EQ(FOV, 90.0f);
    EXPECT_EQ(TEXTURE_INTERPOLATION, 0);
    EXPECT_EQ(TEXTURE_DITHERING, 0);
    EXPECT_EQ(LIGHT_DITHERING, 0);
    EXPECT_EQ(ENABLE_HEAD_BOBBING, 0);
    EXPECT_EQ(RENDER_THREADS, 0);
}

} // namespace

TEST(load_settings, missing_file_gives_every_default)
{
    FPS = 1;
    FOV = 1.0f;
    EXPECT_EQ(load_settings((test_folder() + "/no_such.ini").c_str()), 1);
    expect_all_defaults();
}

TEST(load_settings, empty_file_gives_every_default)
{
    load_from("");
    expect_all_defaults();
}

TEST(load_settings, file_without_equals_gives_every_default)
{
    load_from("FPS 30\r\nUPS: 20\r\n");
    expect_all_defaults();
}

TEST(load_settings, every_key_is_read)
{
    load_from("FPS=75\r\nUPS=50\r\nSCREEN_RESOLUTION=800x600\r\nSCREEN_SCALE=1.5\r\n"
              "MOUSE_SENSITIVITY_X=0.5\r\nMOUSE_SENSITIVITY_Y=2\r\nAUDIO_VOLUME=0.25\r\nFOV=75.5\r\n"
              "TEXTURE_INTERPOLATION=1\r\nTEXTURE_DITHERING=1\r\nLIGHT_DITHERING=1\r\nENABLE_HEAD_BOBBING=1\r\n");
    EXPECT_EQ(FPS, 75);
    EXPECT_EQ(UPS, 50);
    expect_resolution(800, 600);
    EXPECT_EQ(SCREEN_SCALE, 1.5f);
    EXPECT_EQ(MOUSE_SENSITIVITY_X, 0.5f);
    EXPECT_EQ(MOUSE_SENSITIVITY_Y, 2.0f);
    EXPECT_EQ(AUDIO_VOLUME, 0.25f);
    EXPECT_EQ(FOV, 75.5f);
    EXPECT_EQ(TEXTURE_INTERPOLATION, 1);
    EXPECT_EQ(TEXTURE_DITHERING, 1);
    EXPECT_EQ(LIGHT_DITHERING, 1);
    EXPECT_EQ(ENABLE_HEAD_BOBBING, 1);
}

TEST(load_settings, render_threads_is_read)
{
    load_from("RENDER_THREADS=3\r\n");
    EXPECT_EQ(RENDER_THREADS, 3);
}

TEST(load_settings, render_threads_that_does_not_parse_keeps_one_per_processor)
{
    load_from("RENDER_THREADS=two\r\n");
    EXPECT_EQ(RENDER_THREADS, 0);
}

TEST(load_settings, negative_render_threads_keeps_one_per_processor)
{
    load_from("RENDER_THREADS=-2\r\n");
    EXPECT_EQ(RENDER_THREADS, 0);
}

TEST(load_settings, resolution_with_lower_case_x)
{
    load_from("SCREEN_RESOLUTION=800x600\n");
    expect_resolution(800, 600);
}

TEST(load_settings, resolution_with_upper_case_x_gives_the_default)
{
    load_from("SCREEN_RESOLUTION=800X600\n");
    expect_resolution(640, 480);
}

TEST(load_settings, resolution_with_one_bad_half_defaults_both)
{
    load_from("SCREEN_RESOLUTION=1024xabc\n");
    expect_resolution(640, 480);
}

TEST(load_settings, resolution_part_of_ten_characters_gives_the_default)
{
    load_from("SCREEN_RESOLUTION=0000000800x600\n");
    EXPECT_EQ(SCREEN_RESOLUTION.width, 640);
    load_from("SCREEN_RESOLUTION=000000800x000000600\n");
    expect_resolution(800, 600);
}

TEST(load_settings, trailing_blank_ends_a_number)
{
    load_from("FPS=60 \n");
    EXPECT_EQ(FPS, 60);
    load_from("FPS=45 \n");
    EXPECT_EQ(FPS, 45);
}

TEST(load_settings, letter_o_for_zero_gives_the_default)
{
    load_from("FPS=6O\n");
    EXPECT_EQ(FPS, 60);
    load_from("FPS=3O\n");
    EXPECT_EQ(FPS, 60);
}

TEST(load_settings, decimal_field_of_view)
{
    load_from("FOV=75.5\n");
    EXPECT_EQ(FOV, 75.5f);
}

TEST(load_settings, first_of_two_equal_keys_wins)
{
    load_from("UPS=30\r\nUPS=50\r\n");
    EXPECT_EQ(UPS, 30);
}

TEST(load_settings, blank_line_with_bare_line_feed_hides_later_keys)
{
    load_from("FPS=30\n\nUPS=20\n");
    EXPECT_EQ(FPS, 30);
    EXPECT_EQ(UPS, 40);
}

TEST(load_settings, blank_line_with_carriage_return_reads_on)
{
    load_from("FPS=30\r\n\r\nUPS=20\r\n");
    EXPECT_EQ(FPS, 30);
    EXPECT_EQ(UPS, 20);
}

TEST(load_settings, keys_are_taken_exactly)
{
    load_from("FPS = 30\r\n#UPS=20\r\nfov=70\r\n");
    EXPECT_EQ(FPS, 60);
    EXPECT_EQ(UPS, 40);
    EXPECT_EQ(FOV, 90.0f);
}

TEST(load_settings, values_are_not_range_checked)
{
    load_from("UPS=0\r\nSCREEN_SCALE=-2\r\nSCREEN_RESOLUTION=-5x0\r\n");
    EXPECT_EQ(UPS, 0);
    EXPECT_EQ(SCREEN_SCALE, -2.0f);
    expect_resolution(-5, 0);
}

TEST(load_settings, line_without_equals_finds_one_left_by_a_longer_line)
{
    // "FPS" overwrites the start of "XXFPS=30" in the line buffer; the "=" behind its NUL still
    // splits it, so the key "FPS" gets the value "30".
    load_from("XXFPS=30\r\nFPS\r\n");
    EXPECT_EQ(FPS, 30);
}

TEST(load_settings, file_without_a_final_line_feed_reads_its_last_key)
{
    load_from("FPS=30\nUPS=25");
    EXPECT_EQ(UPS, 25);
}

TEST(ini_load, key_or_value_of_100_characters_skips_the_line)
{
    std::string path = write_file(test_folder() + "/settings.ini",
                                  std::string(100, 'K') + "=1\r\nFPS=" + std::string(100, '7') + "\r\n" +
                                      std::string(99, 'k') + "=1\r\nV=" + std::string(99, 'v') + "\r\n");
    ini_table table;
    ASSERT_EQ(ini_load(&table, path.c_str()), 1);
    ASSERT_EQ(table.count, 2);
    EXPECT_EQ(std::string(table.entries[0].key), std::string(99, 'k'));
    EXPECT_EQ(std::string(table.entries[1].value), std::string(99, 'v'));
    ini_free(&table);
}

TEST(ini_load, line_over_199_characters_is_read_in_two_pieces)
{
    std::string path = write_file(test_folder() + "/settings.ini",
                                  "A=" + std::string(197, 'x') + "FPS=33\r\n");
    ini_table table;
    ASSERT_EQ(ini_load(&table, path.c_str()), 1);
    // The first 199 characters make a value too long for the table; the rest is its own line.
    ASSERT_EQ(table.count, 1);
    EXPECT_STREQ(table.entries[0].key, "FPS");
    EXPECT_STREQ(table.entries[0].value, "33");
    ini_free(&table);
}

TEST(ini_load, table_grows_by_eight_and_shrinks_to_its_count)
{
    std::string text;
    for (int i = 0; i < 9; ++i)
        text += "KEY" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    std::string path = write_file(test_folder() + "/settings.ini", text);
    ini_table table;
    test_heap::reset();
    ASSERT_EQ(ini_load(&table, path.c_str()), 1);
    EXPECT_EQ(table.count, 9);
    EXPECT_EQ(test_heap::sizes_in_units_of(sizeof(ini_entry)), std::vector<size_t>({8, 16, 9}));
    int32_t value = 0;
    EXPECT_EQ(ini_get_int(&table, "KEY8", &value), 1);
    EXPECT_EQ(value, 8);
    ini_free(&table);
}

TEST(ini_load, failed_growth_frees_everything_and_fails)
{
    std::string text;
    for (int i = 0; i < 9; ++i)
        text += "KEY" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    std::string path = write_file(test_folder() + "/settings.ini", text);
    ini_table table;
    test_heap::reset();
    test_heap::fail_request(3); // reader buffer, first 8 entries, then the growth to 16
    EXPECT_EQ(ini_load(&table, path.c_str()), 0);
    EXPECT_EQ(table.count, 0);
    EXPECT_EQ(table.entries, nullptr);
}

TEST(ini_load, missing_file_fails)
{
    ini_table table;
    EXPECT_EQ(ini_load(&table, (test_folder() + "/none.ini").c_str()), 0);
}

TEST(ini_get, value_that_does_not_parse_leaves_the_output)
{
    std::string path = write_file(test_folder() + "/settings.ini", "A=12x\r\nB=1.5e3\r\n");
    ini_table table;
    ASSERT_EQ(ini_load(&table, path.c_str()), 1);
    int32_t i = 7;
    float f = 7.0f;
    EXPECT_EQ(ini_get_int(&table, "A", &i), 0);
    EXPECT_EQ(ini_get_float(&table, "B", &f), 0);
    EXPECT_EQ(ini_get_int(&table, "C", &i), 0);
    EXPECT_EQ(i, 7);
    EXPECT_EQ(f, 7.0f);
    EXPECT_EQ(ini_find(&table, "a"), nullptr);
    ini_free(&table);
}
