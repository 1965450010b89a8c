#include <gtest/gtest.h>

#include <string.h>

#include "core/text.h"

TEST(split_at, splits_at_the_first_separator)
{
    char left[10], right[10];
    ASSERT_EQ(split_at("800x600x3", 10, 'x', left, sizeof left, right, sizeof right), 1);
    EXPECT_STREQ(left, "800");
    EXPECT_STREQ(right, "600x3");
}

TEST(split_at, no_separator_fails)
{
    char left[10] = "L", right[10] = "R";
    EXPECT_EQ(split_at("800X600", 8, 'x', left, sizeof left, right, sizeof right), 0);
    EXPECT_STREQ(left, "L");
    EXPECT_STREQ(right, "R");
}

TEST(split_at, separator_beyond_the_text_capacity_is_not_found)
{
    char left[10], right[10];
    EXPECT_EQ(split_at("abc=d", 3, '=', left, sizeof left, right, sizeof right), 0);
}

TEST(split_at, parts_must_be_shorter_than_their_buffers)
{
    char left[4], right[4];
    EXPECT_EQ(split_at("abc=def", 8, '=', left, sizeof left, right, sizeof right), 1);
    EXPECT_EQ(split_at("abcd=de", 8, '=', left, sizeof left, right, sizeof right), 0);
    EXPECT_EQ(split_at("ab=defg", 8, '=', left, sizeof left, right, sizeof right), 0);
}

TEST(split_at, separator_left_behind_a_nul_is_found)
{
    char buffer[8] = {'a', 'b', 0, '=', '3', '0', 0, 0};
    char left[10], right[10];
    ASSERT_EQ(split_at(buffer, sizeof buffer, '=', left, sizeof left, right, sizeof right), 1);
    EXPECT_STREQ(left, "ab");
    EXPECT_STREQ(right, "30");
}

TEST(string_printf, text_that_fits_returns_zero)
{
    char buffer[16];
    EXPECT_EQ(string_printf(buffer, sizeof buffer, "FPS: %d", 60), 0u);
    EXPECT_STREQ(buffer, "FPS: 60");
}

TEST(string_printf, text_of_exactly_capacity_minus_one_fits)
{
    char buffer[6];
    EXPECT_EQ(string_printf(buffer, sizeof buffer, "%s", "abcde"), 0u);
    EXPECT_STREQ(buffer, "abcde");
}

TEST(string_printf, long_text_is_cut_and_terminated)
{
    char buffer[6];
    memset(buffer, 'z', sizeof buffer);
    EXPECT_EQ(string_printf(buffer, sizeof buffer, "%s", "abcdef"), 0x8007007Au);
    EXPECT_STREQ(buffer, "abcde");
}

TEST(string_printf, capacity_zero_writes_nothing)
{
    char buffer[4] = "xyz";
    EXPECT_EQ(string_printf(buffer, 0, "%d", 1), 0x80070057u);
    EXPECT_STREQ(buffer, "xyz");
}

TEST(string_printf, capacity_above_the_limit_writes_an_empty_string)
{
    char buffer[4] = "xyz";
    EXPECT_EQ(string_printf(buffer, 0x80000000u, "%d", 1), 0x80070057u);
    EXPECT_STREQ(buffer, "");
}

TEST(string_printf, capacity_of_one_holds_only_the_terminator)
{
    char buffer[2] = "q";
    EXPECT_EQ(string_printf(buffer, 1, "%s", ""), 0u);
    EXPECT_EQ(string_printf(buffer, 1, "%s", "a"), 0x8007007Au);
    EXPECT_STREQ(buffer, "");
}

TEST(string_printf, formats_numbers_like_c99)
{
    char buffer[64];
    EXPECT_EQ(string_printf(buffer, sizeof buffer, "%.2f|%5d|%-3s|%x|%%", 3.14159, 42, "a", 255), 0u);
    EXPECT_STREQ(buffer, "3.14|   42|a  |ff|%");
    EXPECT_EQ(string_printf(buffer, sizeof buffer, "%.1f", 0.05), 0u);
    EXPECT_STREQ(buffer, "0.1");
    EXPECT_EQ(string_printf(buffer, sizeof buffer, "%lld", -9000000000LL), 0u);
    EXPECT_STREQ(buffer, "-9000000000");
}

TEST(string_printf, the_title_text)
{
    char title[100];
    EXPECT_EQ(string_printf(title, sizeof title, "Gloamhold (FPS: %d, UPS: %d)", 60, 40), 0u);
    EXPECT_STREQ(title, "Gloamhold (FPS: 60, UPS: 40)");
}
