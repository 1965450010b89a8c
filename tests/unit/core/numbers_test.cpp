#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "core/numbers.h"

static int32_t int_of(const char* text, int32_t limit = -1)
{
    int32_t value = 12345;
    EXPECT_EQ(parse_int(text, limit, &value), 1) << text;
    return value;
}

static void expect_int_fails(const char* text, int32_t limit = -1)
{
    int32_t value = 12345;
    EXPECT_EQ(parse_int(text, limit, &value), 0) << text;
    EXPECT_EQ(value, 12345) << "a failed parse must leave its output alone: " << text;
}

static float float_of(const char* text, int32_t limit = -1)
{
    float value = 99.0f;
    EXPECT_EQ(parse_float(text, limit, &value), 1) << text;
    return value;
}

static void expect_float_fails(const char* text)
{
    float value = 99.0f;
    EXPECT_EQ(parse_float(text, -1, &value), 0) << text;
    EXPECT_EQ(value, 99.0f) << text;
}

TEST(parse_int, trailing_blank_ends_the_number)
{
    EXPECT_EQ(int_of("12 "), 12);
}

TEST(parse_int, every_terminator_ends_the_number)
{
    EXPECT_EQ(int_of("12\t9"), 12);
    EXPECT_EQ(int_of("12\n"), 12);
    EXPECT_EQ(int_of("12\r\n"), 12);
    EXPECT_EQ(int_of("12"), 12);
}

TEST(parse_int, letter_after_digits_fails)
{
    expect_int_fails("12x");
}

TEST(parse_int, leading_minus_negates)
{
    EXPECT_EQ(int_of("-7"), -7);
}

TEST(parse_int, minus_inside_the_number_fails)
{
    expect_int_fails("3-4");
}

TEST(parse_int, plus_sign_fails)
{
    expect_int_fails("+3");
}

TEST(parse_int, empty_text_and_lone_minus_give_zero)
{
    EXPECT_EQ(int_of(""), 0);
    EXPECT_EQ(int_of("-"), 0);
}

TEST(parse_int, text_starting_with_a_blank_gives_zero)
{
    EXPECT_EQ(int_of(" 42"), 0);
}

TEST(parse_int, limit_stops_reading)
{
    EXPECT_EQ(int_of("12345", 3), 123);
    EXPECT_EQ(int_of("12x", 2), 12);
    EXPECT_EQ(int_of("-5", 1), 0);
}

TEST(parse_int, overflow_wraps_in_32_bits)
{
    EXPECT_EQ(int_of("2147483647"), 2147483647);
    EXPECT_EQ(int_of("2147483648"), INT32_MIN);
    EXPECT_EQ(int_of("4294967296"), 0);
    EXPECT_EQ(int_of("4294967297"), 1);
    EXPECT_EQ(int_of("-2147483648"), INT32_MIN);
}

TEST(parse_float, second_point_is_ignored)
{
    EXPECT_FLOAT_EQ(float_of("1.5.5"), 1.55f);
}

TEST(parse_float, leading_point_is_a_fraction)
{
    EXPECT_EQ(float_of(".5"), 0.5f);
}

TEST(parse_float, lone_minus_is_zero)
{
    EXPECT_EQ(float_of("-"), 0.0f);
}

TEST(parse_float, negative_decimal)
{
    EXPECT_EQ(float_of("-2.25"), -2.25f);
    EXPECT_EQ(float_of("75.5"), 75.5f);
}

TEST(parse_float, result_is_fraction_over_divisor_plus_whole_in_single_precision)
{
    float fraction = 1.0f, divisor = 10.0f, whole = 0.0f;
    EXPECT_EQ(float_of("0.1"), fraction / divisor + whole);
    EXPECT_EQ(float_of("3.14159"), 14159.0f / 100000.0f + 3.0f);
}

TEST(parse_float, exponent_plus_and_inner_minus_fail)
{
    expect_float_fails("1e5");
    expect_float_fails("+1.0");
    expect_float_fails("1-2");
    expect_float_fails("1,5");
}

TEST(parse_float, terminators_end_the_number)
{
    EXPECT_EQ(float_of("2.5 rest"), 2.5f);
    EXPECT_EQ(float_of("2.5\r"), 2.5f);
    EXPECT_EQ(float_of("2.5x", 3), 2.5f);
}

TEST(parse_float, huge_whole_part_overflows_to_infinity)
{
    std::string digits(60, '9');
    EXPECT_TRUE(std::isinf(float_of(digits.c_str())));
}

TEST(ping_pong, rises_then_falls)
{
    EXPECT_EQ(ping_pong(0.0f, 1.0f, 0.25f), 0.25f);
    EXPECT_EQ(ping_pong(0.0f, 1.0f, 1.5f), 0.5f);
    EXPECT_EQ(ping_pong(2.0f, 4.0f, 3.0f), 3.0f);
    EXPECT_EQ(ping_pong(0.0f, 1.0f, 2.25f), 0.25f);
}

TEST(ping_pong, negative_x_keeps_the_sign_of_the_remainder)
{
    // fmodf gives -0.5 here, which is below d, so the result is a + m.
    EXPECT_EQ(ping_pong(0.0f, 1.0f, -0.5f), -0.5f);
}
