#include <gtest/gtest.h>

#include <algorithm>

#include "render/colour_tables.h"

namespace {

uint8_t entry(const uint8_t* table, int32_t row, int32_t column)
{
    return colour_table_row(table, static_cast<uint32_t>(row))[column];
}

struct built_tables : testing::Test {
    void SetUp() override { build_colour_tables(); }
};

} // namespace

TEST_F(built_tables, dimming_row_0_and_luminance_row_63_are_the_identity)
{
    for (int32_t c = 0; c < 32; ++c) {
        EXPECT_EQ(entry(colour_tables.dimming, 0, c), c);
        EXPECT_EQ(entry(colour_tables.luminance, 63, c), c);
    }
}

TEST_F(built_tables, dimming_row_63_and_luminance_row_0_are_black)
{
    for (int32_t c = 0; c < 32; ++c) {
        EXPECT_EQ(entry(colour_tables.dimming, 63, c), 0);
        EXPECT_EQ(entry(colour_tables.luminance, 0, c), 0);
    }
}

TEST_F(built_tables, temperature_row_31_is_neutral)
{
    for (int32_t c = 0; c < 32; ++c) {
        EXPECT_EQ(entry(colour_tables.red_temperature, 31, c), c);
        EXPECT_EQ(entry(colour_tables.blue_temperature, 31, c), c);
    }
}

TEST_F(built_tables, red_temperature_row_63_turns_16_into_31)
{
    EXPECT_EQ(entry(colour_tables.red_temperature, 63, 16), 31);
}

TEST_F(built_tables, blue_temperature_row_63_turns_16_into_0)
{
    EXPECT_EQ(entry(colour_tables.blue_temperature, 63, 16), 0);
}

TEST_F(built_tables, cold_rows_lower_red_and_raise_blue_in_proportion)
{
    // Row 0: d = c x (0 - 31) / 31 = -c, so red goes to 0 and blue doubles (clamped at 31).
    EXPECT_EQ(entry(colour_tables.red_temperature, 0, 10), 0);
    EXPECT_EQ(entry(colour_tables.blue_temperature, 0, 10), 20);
    EXPECT_EQ(entry(colour_tables.blue_temperature, 0, 20), 31);
    // Row 38 (the world's tint): d = 10 x 7 / 31 = 2 (truncated).
    EXPECT_EQ(entry(colour_tables.red_temperature, 38, 10), 12);
    EXPECT_EQ(entry(colour_tables.blue_temperature, 38, 10), 8);
}

TEST_F(built_tables, luminance_and_dimming_of_one_row_never_sum_past_31)
{
    for (int32_t r = 0; r < 64; ++r)
        for (int32_t a = 0; a < 32; ++a)
            for (int32_t b = 0; b < 32; ++b)
                ASSERT_LE(entry(colour_tables.luminance, r, a) + entry(colour_tables.dimming, r, b), 31)
                    << "row " << r;
}

TEST_F(built_tables, every_entry_is_a_five_bit_channel_and_follows_its_formula)
{
    for (int32_t r = 0; r < 64; ++r)
        for (int32_t c = 0; c < 32; ++c) {
            int32_t d = c * (r - 31) / 31;
            EXPECT_EQ(entry(colour_tables.luminance, r, c), c * r / 63);
            EXPECT_EQ(entry(colour_tables.dimming, r, c), c * (63 - r) / 63);
            EXPECT_EQ(entry(colour_tables.red_temperature, r, c), std::min(std::max(c + d, 0), 31));
            EXPECT_EQ(entry(colour_tables.blue_temperature, r, c), std::min(std::max(c - d, 0), 31));
        }
}
