#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <algorithm>
#include <random>
#include <vector>

#include "assets/world.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "support/render_world.h"
#include "support/test_heap.h"

namespace {

// A 64 x 64 frame: a 32 x 32 fine buffer (scale 32, no offsets) and an 8 x 8 coarse grid (scale 8).
class occlusion_buffer : public render_world_test {
protected:
    int32_t texture = -1;

    void SetUp() override
    {
        render_world_test::SetUp();
        texture = add_texture(0xFFFF);
    }

    static float fine(int32_t x, int32_t y)
    {
        return depth_buffer[y * occlusion_fine_width + x];
    }
    static float& fine_at(int32_t x, int32_t y)
    {
        return depth_buffer[y * occlusion_fine_width + x];
    }
    static float coarse(int32_t column, int32_t row)
    {
        return occlusion_coarse[row * occlusion_columns + column];
    }
    static void fill_fine(float value)
    {
        for (int32_t i = 0; i < occlusion_fine_width * occlusion_fine_height; ++i)
            depth_buffer[i] = value;
    }
    // Models of random occluder triangles, some crossing the near plane, some facing away.
    static std::vector<int32_t> add_random_occluders(uint32_t seed)
    {
        std::mt19937 random(seed);
        auto between = [&random](float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); };
        std::vector<int32_t> added;
        for (int32_t m = 0; m < 6; ++m) {
            std::vector<vec3> points;
            std::vector<triangle_corners> triangles;
            for (int32_t t = 0; t < 8; ++t) {
                for (int32_t k = 0; k < 3; ++k)
                    points.push_back({between(-3.0f, 3.0f), between(-3.0f, 3.0f), between(-0.5f, 8.0f)});
                int32_t first = 3 * t;
                triangles.push_back({first, first + 1, first + 2});
            }
            int32_t model_index = add_model(points, triangles, {});
            make_occluder(model_index);
            added.push_back(model_index);
        }
        return added;
    }

    // Draws the occluders of a model at the origin, unturned.
    static void occlude(int32_t model_index)
    {
        placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);
        rasterize_occluders(registry_at<model>(&models, model_index), &at_origin);
    }
};

} // namespace

TEST_F(occlusion_buffer, start_up_sizes_both_buffers_and_zero_fills_the_coarse_grid)
{
    test_frame wide(80, 48);
    ASSERT_EQ(occlusion_buffers_create(), 1);
    EXPECT_EQ(occlusion_fine_width, 40);
    EXPECT_EQ(occlusion_fine_height, 24);
    EXPECT_EQ(occlusion_fine_viewport.scale, 24.0f);
    EXPECT_EQ(occlusion_fine_viewport.offset_x, 8.0f);
    EXPECT_EQ(occlusion_fine_viewport.offset_y, 0.0f);
    EXPECT_EQ(occlusion_columns, 10);
    EXPECT_EQ(occlusion_rows, 6);
    EXPECT_EQ(occlusion_coarse_viewport.scale, 6.0f);
    EXPECT_EQ(occlusion_coarse_viewport.offset_x, 2.0f);
    for (int32_t i = 0; i < 60; ++i)
        EXPECT_EQ(occlusion_coarse[i], 0.0f);
}

TEST_F(occlusion_buffer, start_up_fails_when_the_coarse_grid_cannot_be_had)
{
    test_frame bigger(256, 256);
    test_heap::reset();
    test_heap::fail_request(1);
    EXPECT_EQ(occlusion_buffers_create(), 0);
    test_heap::reset();
}

TEST_F(occlusion_buffer, an_occluder_facing_the_eye_keeps_its_nearest_1_over_z_in_every_pixel_it_covers)
{
    int32_t wall = add_square_model(-1, -1, 1, 1, 2.0f, texture); // exactly the whole view at z = 2
    make_occluder(wall);
    occlude(wall);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 0; x < 32; ++x)
            ASSERT_EQ(fine(x, y), 0.5f) << x << "," << y;
}

TEST_F(occlusion_buffer, the_nearer_of_two_occluders_wins)
{
    int32_t far_wall = add_square_model(-4, -4, 4, 4, 4.0f, texture);
    int32_t near_wall = add_square_model(-1, -1, 1, 1, 2.0f, texture);
    make_occluder(near_wall);
    make_occluder(far_wall);
    occlude(near_wall);
    occlude(far_wall);
    EXPECT_EQ(fine(16, 16), 0.5f);
}

TEST_F(occlusion_buffer, occluders_are_one_sided)
{
    int32_t wall = add_model({{-1, -1, 2}, {1, 1, 2}, {-1, 1, 2}}, {{0, 1, 2}}, {}); // wound away from the eye
    make_occluder(wall);
    occlude(wall);
    for (int32_t i = 0; i < 32 * 32; ++i)
        ASSERT_EQ(depth_buffer[i], 0.0f);
}

TEST_F(occlusion_buffer, an_occluder_crossing_the_near_plane_is_clipped_and_still_drawn)
{
    int32_t wedge = add_model({{-1, -1, 2}, {-1, 1, 2}, {1, 0, -1}}, {{0, 1, 2}}, {});
    make_occluder(wedge);
    occlude(wedge);
    EXPECT_GT(fine(16, 16), 0.0f);
    EXPECT_GT(fine(31, 16), 0.0f); // where the cut part runs off the right of the view
}

TEST_F(occlusion_buffer, occluder_spans_leave_out_a_pixel_centred_on_the_left_edge_and_keep_one_on_the_right)
{
    // A rectangle from fine x 3.5 to 10.5 and y 2 to 6, at depth 1.
    int32_t block = add_square_model(3.5f / 32 - 0.5f, 2.0f / 32 - 0.5f, 10.5f / 32 - 0.5f, 6.0f / 32 - 0.5f, 1.0f,
                                     texture);
    make_occluder(block);
    occlude(block);
    for (int32_t y = 0; y < 8; ++y) {
        bool covered_row = y >= 2 && y < 6;
        EXPECT_EQ(fine(3, y), 0.0f) << y;
        EXPECT_EQ(fine(4, y), covered_row ? 1.0f : 0.0f) << y;
        EXPECT_EQ(fine(10, y), covered_row ? 1.0f : 0.0f) << y;
        EXPECT_EQ(fine(11, y), 0.0f) << y;
    }
}

TEST_F(occlusion_buffer, the_reduction_keeps_each_cells_farthest_occluder_and_clears_the_fine_buffer)
{
    fill_fine(1.0f);
    fine_at(5, 6) = 0.25f; // in cell (1, 1)
    fine_at(7, 7) = 0.5f;
    reduce_occlusion_buffer();
    EXPECT_EQ(coarse(1, 1), 0.25f);
    EXPECT_EQ(coarse(0, 0), 1.0f);
    for (int32_t i = 0; i < 32 * 32; ++i)
        ASSERT_EQ(depth_buffer[i], 0.0f);
}

// The reduction of one cell, written plainly: 0 when any of its 16 pixels is 0, else the smallest
// of them, a value that is not a number never counting as smaller.
static float reduce_cell_plainly(int32_t column, int32_t row, const std::vector<float>& fine_pixels)
{
    float farthest = HUGE_VALF;
    for (int32_t j = 0; j < 4; ++j) {
        for (int32_t i = 0; i < 4; ++i) {
            float value = fine_pixels[static_cast<size_t>((4 * row + j) * occlusion_fine_width + 4 * column + i)];
            if (value == 0.0f)
                return 0.0f;
            farthest = value < farthest ? value : farthest;
        }
    }
    return farthest;
}

TEST_F(occlusion_buffer, vectorised_reduction_matches_the_plain_rule_on_random_buffers)
{
    std::mt19937 random(5);
    const float specials[] = {0.0f, -0.0f, NAN, INFINITY, -1.0f, 1e-30f};
    for (int32_t round = 0; round < 50; ++round) {
        std::vector<float> fine_pixels(static_cast<size_t>(occlusion_fine_width * occlusion_fine_height));
        for (float& value : fine_pixels)
            value = random() % 40 == 0 ? specials[random() % 6]
                                       : std::uniform_real_distribution<float>(0.01f, 5.0f)(random);
        std::copy(fine_pixels.begin(), fine_pixels.end(), depth_buffer);
        reduce_occlusion_buffer();
        for (int32_t row = 0; row < occlusion_rows; ++row)
            for (int32_t column = 0; column < occlusion_columns; ++column) {
                float expected = reduce_cell_plainly(column, row, fine_pixels);
                EXPECT_EQ(memcmp(&expected, &occlusion_coarse[row * occlusion_columns + column], sizeof(float)), 0)
                    << "cell " << column << ", " << row << " of round " << round;
            }
    }
}

TEST_F(occlusion_buffer, a_coarse_cell_with_any_pixel_free_of_occluders_never_hides)
{
    fill_fine(10.0f); // occluders at depth 0.1 everywhere
    fine_at(4 * 3 + 3, 4 * 3 + 2) = 0.0f; // but one pixel of cell (3, 3) is open
    reduce_occlusion_buffer();
    EXPECT_EQ(coarse(3, 3), 0.0f);
    // A box far behind, seen only in cell (3, 3), and one seen only in cell (5, 5).
    const aabb in_open_cell = {{-1.0f, -1.0f, 10}, {-0.2f, -0.2f, 11}};
    const aabb in_covered_cell = {{1.5f, 1.5f, 10}, {2.2f, 2.2f, 11}};
    EXPECT_EQ(box_occluded(&in_open_cell), 0);
    EXPECT_EQ(box_occluded(&in_covered_cell), 1);
}

TEST_F(occlusion_buffer, a_box_nearer_than_the_occluders_is_not_hidden_and_one_beyond_is)
{
    fill_fine(0.1f); // a wall at depth 10 over the whole view
    reduce_occlusion_buffer();
    const aabb in_front = {{-1, -1, 2}, {1, 1, 3}};
    const aabb behind_the_wall = {{-1, -1, 20}, {1, 1, 21}};
    EXPECT_EQ(box_occluded(&in_front), 0);
    EXPECT_EQ(box_occluded(&behind_the_wall), 1);
}

TEST_F(occlusion_buffer, a_box_reaching_behind_the_camera_is_never_hidden)
{
    fill_fine(1000.0f);
    reduce_occlusion_buffer();
    const aabb reaching_behind = {{-1, -1, -1}, {1, 1, 5}};
    const aabb just_short_of_the_near_plane = {{-1, -1, 0.009f}, {1, 1, 5}};
    EXPECT_EQ(box_occluded(&reaching_behind), 0);
    EXPECT_EQ(box_occluded(&just_short_of_the_near_plane), 0);
}

TEST_F(occlusion_buffer, a_box_wholly_above_the_frame_covers_no_row_and_counts_as_hidden)
{
    const aabb above = {{-1, -30, 4}, {1, -20, 5}};
    EXPECT_EQ(box_occluded(&above), 1);
}

namespace {

struct reduced_buffers {
    std::vector<float> coarse;
    int32_t fine_left_set; // fine pixels not cleared after the reduction
};

reduced_buffers occlude_and_reduce(const std::vector<int32_t>& occluders, int32_t threads)
{
    render_threads = threads;
    placement at_origin = placement_from_angles({0, 0, 0}, 0.0f, 0.0f);
    for (int32_t model_index : occluders)
        rasterize_occluders(registry_at<model>(&models, model_index), &at_origin);
    reduce_occlusion_buffer();
    render_threads = 1;
    reduced_buffers reduced = {std::vector<float>(occlusion_coarse, occlusion_coarse + occlusion_columns * occlusion_rows), 0};
    for (int32_t i = 0; i < occlusion_fine_width * occlusion_fine_height; ++i)
        reduced.fine_left_set += depth_buffer[i] != 0.0f;
    return reduced;
}

void expect_same_buffers(const reduced_buffers& expected, const reduced_buffers& reduced, int32_t threads)
{
    EXPECT_EQ(memcmp(expected.coarse.data(), reduced.coarse.data(), expected.coarse.size() * sizeof(float)), 0)
        << threads << " threads";
    EXPECT_EQ(reduced.fine_left_set, 0) << threads << " threads";
}

} // namespace

TEST_F(occlusion_buffer, random_occluders_give_the_same_coarse_grid_whatever_the_number_of_threads)
{
    for (uint32_t seed = 1; seed <= 5; ++seed) {
        std::vector<int32_t> occluders = add_random_occluders(seed);
        reduced_buffers alone = occlude_and_reduce(occluders, 1);
        int32_t hiding = 0;
        for (float cell : alone.coarse)
            hiding += cell != 0.0f;
        EXPECT_GT(hiding, 0) << "seed " << seed << " covers some cells";
        for (int32_t threads = 2; threads <= 5; ++threads)
            expect_same_buffers(alone, occlude_and_reduce(occluders, threads), threads);
    }
}

TEST_F(occlusion_buffer, with_threads_an_occluder_the_list_cannot_hold_is_drawn_at_once_in_its_order)
{
    std::vector<int32_t> occluders = add_random_occluders(9);
    reduced_buffers alone = occlude_and_reduce(occluders, 1);
    test_heap::reset();
    test_heap::fail_request(1); // the list's first growth: the first occluder is drawn straight away
    reduced_buffers listed_then_drawn = occlude_and_reduce(occluders, 3);
    ASSERT_GE(test_heap::log().size(), 2u);
    EXPECT_EQ(test_heap::log()[1].bytes, 1024 * sizeof(float) * 9) << "the list grew for the others";
    test_heap::reset();
    expect_same_buffers(alone, listed_then_drawn, 3);
}

namespace {

struct fine_corner {
    float x, y, inv_z;
};

// The fine buffer's rule written out pixel by pixel: every row of a triangle facing the eye, from
// its centre, its span from floor(x - 0.5) + 1 on both ends, 1/z stepped by the slope one pixel
// after another, the nearer value kept.
void occlude_by_the_plain_rule(std::vector<float>* fine, const vec3 corners[3])
{
    fine_corner c[3];
    float projected_x[3], projected_y[3];
    for (int32_t k = 0; k < 3; ++k) {
        projected_x[k] = corners[k].x * projection_scale / corners[k].z;
        projected_y[k] = corners[k].y * projection_scale / corners[k].z;
        c[k] = {(projected_x[k] + 0.5f) * occlusion_fine_viewport.scale + occlusion_fine_viewport.offset_x,
                (projected_y[k] + 0.5f) * occlusion_fine_viewport.scale + occlusion_fine_viewport.offset_y,
                1.0f / corners[k].z};
    }
    float facing = (projected_y[1] - projected_y[0]) * (projected_x[2] - projected_x[0]) -
                   (projected_y[2] - projected_y[0]) * (projected_x[1] - projected_x[0]);
    if (facing <= 0.0f)
        return;
    const fine_corner* v[3] = {&c[0], &c[1], &c[2]};
    for (int32_t i : {0, 1, 0})
        if (v[i]->y > v[i + 1]->y)
            std::swap(v[i], v[i + 1]);
    auto first_centre = [](float at, int32_t limit) {
        float index = ceilf(at - 0.5f);
        return !(index > 0.0f) ? 0 : index < static_cast<float>(limit) ? static_cast<int32_t>(index) : limit;
    };
    auto along = [](float from, float to, float f) { return from + (to - from) * f; };
    int32_t split = first_centre(v[1]->y, occlusion_fine_height);
    for (int32_t y = first_centre(v[0]->y, occlusion_fine_height); y < first_centre(v[2]->y, occlusion_fine_height);
         ++y) {
        float centre = static_cast<float>(y) + 0.5f;
        float f_long = (centre - v[0]->y) / (v[2]->y - v[0]->y);
        const fine_corner* upper = y < split ? v[0] : v[1];
        const fine_corner* lower = y < split ? v[1] : v[2];
        float f_short = (centre - upper->y) / (lower->y - upper->y);
        float x_a = along(v[0]->x, v[2]->x, f_long), inv_a = along(v[0]->inv_z, v[2]->inv_z, f_long);
        float x_b = along(upper->x, lower->x, f_short), inv_b = along(upper->inv_z, lower->inv_z, f_short);
        if (x_a > x_b) {
            std::swap(x_a, x_b);
            std::swap(inv_a, inv_b);
        }
        float width = x_b - x_a;
        if (width <= 0.0f)
            continue;
        float first = std::max(floorf(x_a - 0.5f) + 1.0f, 0.0f);
        float end = std::min(floorf(x_b - 0.5f) + 1.0f, static_cast<float>(occlusion_fine_width));
        if (!(first < end))
            continue;
        float slope = (inv_b - inv_a) / width;
        float inv_z = inv_a + slope * (first + 0.5f - x_a);
        for (int32_t x = static_cast<int32_t>(first); x < static_cast<int32_t>(end); ++x) {
            float& pixel = (*fine)[static_cast<size_t>(y * occlusion_fine_width + x)];
            if (inv_z > pixel)
                pixel = inv_z;
            inv_z += slope;
        }
    }
}

} // namespace

// Rows are drawn two at a time; triangles of every height (odd and even row counts, rows without
// pixels) must still give each pixel exactly what its row alone gives it.
TEST_F(occlusion_buffer, occluder_rows_drawn_two_at_a_time_give_every_pixel_its_own_rows_value)
{
    std::mt19937 random(21);
    auto between = [&random](float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); };
    std::vector<float> expected(static_cast<size_t>(occlusion_fine_width * occlusion_fine_height), 0.0f);
    int32_t drawn = 0;
    for (int32_t t = 0; t < 200; ++t) {
        vec3 corners[3];
        for (vec3& corner : corners)
            corner = {between(-2.0f, 2.0f), between(-2.0f, 2.0f), between(1.0f, 6.0f)};
        int32_t triangle_model = add_model({corners[0], corners[1], corners[2]}, {{0, 1, 2}}, {});
        make_occluder(triangle_model);
        occlude(triangle_model);
        occlude_by_the_plain_rule(&expected, corners);
    }
    for (int32_t y = 0; y < occlusion_fine_height; ++y)
        for (int32_t x = 0; x < occlusion_fine_width; ++x) {
            float value = expected[static_cast<size_t>(y * occlusion_fine_width + x)];
            drawn += value != 0.0f;
            ASSERT_EQ(memcmp(&fine_at(x, y), &value, sizeof value), 0) << x << "," << y;
        }
    EXPECT_GT(drawn, occlusion_fine_width * occlusion_fine_height / 2);
}
