#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "render/draw2d.h"
#include "render/frame.h"
#include "support/test_frame.h"

namespace {

using point_set = std::set<std::pair<int32_t, int32_t>>;

point_set drawn_points(const test_frame& frame, int32_t width, int32_t height)
{
    point_set points;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            if (frame.pixel(x, y) != 0)
                points.insert({x, y});
    return points;
}

} // namespace

TEST(draw_line, plots_both_ends_stepping_by_the_error_term)
{
    test_frame frame(6, 4);
    draw_line(0, 0, 4, 2, 0x7FFF);
    // err = |dx| - |dy| = 2; x steps while 2 err >= -2, y steps while 2 err <= 4.
    EXPECT_EQ(drawn_points(frame, 6, 4), (point_set{{0, 0}, {1, 1}, {2, 1}, {3, 2}, {4, 2}}));
}

TEST(draw_line, runs_in_every_direction_and_to_a_single_point)
{
    test_frame frame(5, 5);
    draw_line(4, 4, 0, 0, 0x1234);
    draw_line(2, 0, 2, 0, 0x1234);
    EXPECT_EQ(drawn_points(frame, 5, 5), (point_set{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {2, 0}}));
}

TEST(draw_line, writes_the_colour_unchanged_and_the_on_top_depth)
{
    test_frame frame(4, 1);
    draw_line(0, 0, 3, 0, 0x0123);
    for (int32_t x = 0; x < 4; ++x) {
        EXPECT_EQ(frame.pixel(x, 0), 0x0123);
        EXPECT_EQ(frame.depth_at(x, 0), 3.4028235e38f);
    }
}

TEST(clip_line_to_rect, segment_inside_is_unchanged)
{
    int32_t x0 = 1, y0 = 2, x1 = 8, y1 = 7;
    ASSERT_EQ(clip_line_to_rect(&x0, &y0, &x1, &y1, 0, 0, 9, 9), 1);
    EXPECT_EQ(x0, 1);
    EXPECT_EQ(y0, 2);
    EXPECT_EQ(x1, 8);
    EXPECT_EQ(y1, 7);
}

TEST(clip_line_to_rect, parallel_outside_a_boundary_is_rejected)
{
    int32_t x0 = -5, y0 = -1, x1 = 5, y1 = -1;
    EXPECT_EQ(clip_line_to_rect(&x0, &y0, &x1, &y1, 0, 0, 9, 9), 0);
}

TEST(clip_line_to_rect, segment_missing_the_rectangle_is_rejected)
{
    int32_t x0 = -5, y0 = -5, x1 = -1, y1 = 20;
    EXPECT_EQ(clip_line_to_rect(&x0, &y0, &x1, &y1, 0, 0, 9, 9), 0);
}

TEST(clip_line_to_rect, crossing_ends_move_onto_the_boundaries)
{
    int32_t x0 = -5, y0 = 3, x1 = 15, y1 = 3;
    ASSERT_EQ(clip_line_to_rect(&x0, &y0, &x1, &y1, 0, 0, 9, 9), 1);
    EXPECT_EQ(x0, 0);
    EXPECT_EQ(x1, 9);
    EXPECT_EQ(y0, 3);
    EXPECT_EQ(y1, 3);
}

TEST(clip_line_to_rect, clipped_ends_round_halves_away_from_zero)
{
    // The left boundary cuts at t = 0.5: y = 0 + round(0.5 x 1) = 1.
    int32_t x0 = -2, y0 = 0, x1 = 2, y1 = 1;
    ASSERT_EQ(clip_line_to_rect(&x0, &y0, &x1, &y1, 0, -5, 9, 5), 1);
    EXPECT_EQ(x0, 0);
    EXPECT_EQ(y0, 1);
    // Going the other way the cut is the end: y = 0 + round(0.5 x -1) = -1.
    int32_t a = 2, b = 0, c = -2, d = -1;
    ASSERT_EQ(clip_line_to_rect(&a, &b, &c, &d, 0, -5, 9, 5), 1);
    EXPECT_EQ(c, 0);
    EXPECT_EQ(d, -1);
}

TEST(draw_rect_outline, draws_four_sides_without_depth)
{
    test_frame frame(6, 5);
    draw_rect_outline(1, 1, 4, 3, 0x03E0);
    point_set expected;
    for (int32_t x = 1; x <= 4; ++x)
        expected.insert({x, 1}), expected.insert({x, 3});
    expected.insert({1, 2});
    expected.insert({4, 2});
    EXPECT_EQ(drawn_points(frame, 6, 5), expected);
    EXPECT_EQ(frame.pixel(1, 1), 0x03E0);
    for (float d : frame.depth)
        EXPECT_EQ(d, 0.0f);
}

TEST(draw_rect_outline, parts_outside_the_frame_are_dropped)
{
    test_frame frame(6, 5);
    draw_rect_outline(-2, 3, 8, 9, 0x03E0);
    point_set expected;
    for (int32_t x = 0; x < 6; ++x)
        expected.insert({x, 3});
    EXPECT_EQ(drawn_points(frame, 6, 5), expected);
}

TEST(draw_line, points_outside_the_frame_are_dropped)
{
    test_frame frame(4, 4);
    draw_line(-3, 1, 6, 1, 0xFFFF);
    point_set expected = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    EXPECT_EQ(drawn_points(frame, 4, 4), expected);
}

TEST(draw_circle_outline, plots_the_eight_symmetric_points_of_each_step)
{
    test_frame frame(11, 11);
    draw_circle_outline(5, 5, 3, 0xFFFF);
    // d = 3 - 6 = -3 at (0, 3); then 3 at (1, 3); then 2 at (2, 2); then x > y.
    point_set expected;
    const int32_t steps[3][2] = {{0, 3}, {1, 3}, {2, 2}};
    for (const auto& s : steps)
        for (int32_t sx : {-1, 1})
            for (int32_t sy : {-1, 1}) {
                expected.insert({5 + sx * s[0], 5 + sy * s[1]});
                expected.insert({5 + sx * s[1], 5 + sy * s[0]});
            }
    EXPECT_EQ(drawn_points(frame, 11, 11), expected);
    for (float d : frame.depth)
        EXPECT_EQ(d, 0.0f);
}

TEST(draw_circle_outline, skips_points_outside_the_frame)
{
    test_frame frame(4, 4);
    draw_circle_outline(0, 0, 2, 0xFFFF);
    // Steps (0, 2) and (1, 2); of their mirror images only those in the lower right quadrant remain.
    point_set expected = {{0, 2}, {2, 0}, {1, 2}, {2, 1}};
    EXPECT_EQ(drawn_points(frame, 4, 4), expected);
}

TEST(draw_circle, negative_radius_draws_nothing)
{
    test_frame frame(8, 8);
    draw_circle(4, 4, -1, 0xFFFF, 1);
    draw_circle(4, 4, -1, 0xFFFF, 0);
    EXPECT_EQ(frame.drawn(), 0);
}

TEST(draw_circle, radius_zero_is_one_pixel)
{
    test_frame frame(8, 8);
    fill_circle(3, 4, 0, 0xFFFF);
    EXPECT_EQ(drawn_points(frame, 8, 8), (point_set{{3, 4}}));
}

TEST(fill_circle, chords_fill_the_outline_and_take_the_on_top_depth)
{
    test_frame outline(11, 11);
    draw_circle_outline(5, 5, 3, 0xFFFF);
    point_set rim = drawn_points(outline, 11, 11);
    test_frame filled(11, 11);
    fill_circle(5, 5, 3, 0xFFFF);
    point_set disc = drawn_points(filled, 11, 11);
    for (const auto& p : rim)
        EXPECT_TRUE(disc.count(p)) << p.first << "," << p.second;
    // Each row of the disc is one unbroken run, symmetric about the centre column.
    for (int32_t y = 0; y < 11; ++y) {
        int32_t first = -1, last = -1, count = 0;
        for (int32_t x = 0; x < 11; ++x)
            if (disc.count({x, y})) {
                if (first < 0)
                    first = x;
                last = x;
                ++count;
            }
        if (count) {
            EXPECT_EQ(last - first + 1, count);
            EXPECT_EQ(5 - first, last - 5);
        }
    }
    EXPECT_EQ(filled.depth_at(5, 5), 3.4028235e38f);
}

TEST(fill_circle, is_clipped_at_the_frame_edges)
{
    test_frame frame(6, 6);
    fill_circle(0, 5, 4, 0xFFFF);
    EXPECT_NE(frame.pixel(0, 5), 0);
    EXPECT_NE(frame.pixel(3, 5), 0);
    EXPECT_NE(frame.pixel(0, 1), 0);
    EXPECT_EQ(frame.pixel(5, 0), 0);
}
