#include <gtest/gtest.h>

#include "render/draw2d.h"
#include "render/frame.h"
#include "render/raster.h"
#include "support/test_frame.h"

namespace {

const uint16_t SOLID = 0x8000 | 20 << 10 | 10 << 5 | 5; // lit at level 0 with the neutral tint: itself
const uint8_t NEUTRAL_TINT = 31;

screen_vertex at(float sx, float sy, float w = 1.0f)
{
    return screen_vertex{sx, sy, w, 0.0f, 0.0f, 0.0f};
}

// Two triangles covering the rectangle x0 ... x1, y0 ... y1 at one depth.
void draw_rectangle(const texture* tex, float x0, float y0, float x1, float y1, float w, uint8_t blend = 0)
{
    screen_vertex a = at(x0, y0, w), b = at(x1, y0, w), c = at(x1, y1, w), d = at(x0, y1, w);
    draw_triangle(tex, NEUTRAL_TINT, blend, &a, &b, &c);
    draw_triangle(tex, NEUTRAL_TINT, blend, &a, &c, &d);
}

// Every pixel of the frame holds this colour and this depth.
void expect_everywhere(const test_frame& frame, uint16_t colour, float depth)
{
    for (size_t i = 0; i < frame.colour.size(); ++i) {
        EXPECT_EQ(frame.colour[i], colour) << "pixel " << i;
        EXPECT_EQ(frame.depth[i], depth) << "pixel " << i;
    }
}

int32_t drawn_in_row(const test_frame& frame, int32_t y, int32_t width)
{
    int32_t count = 0;
    for (int32_t x = 0; x < width; ++x)
        count += frame.pixel(x, y) != 0;
    return count;
}

} // namespace

TEST(draw_triangle, wholly_above_the_frame_draws_nothing)
{
    test_frame frame(8, 8);
    test_texture solid(1, 1, SOLID);
    // The bottom vertex touches the centre of row 0, but a triangle's bottom edge is not its own.
    screen_vertex a = at(0.0f, -6.0f), b = at(8.0f, -3.0f), c = at(4.0f, 0.5f);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &a, &b, &c);
    EXPECT_EQ(frame.drawn(), 0);
}

TEST(draw_triangle, wholly_below_the_frame_draws_nothing)
{
    test_frame frame(8, 8);
    test_texture solid(1, 1, SOLID);
    screen_vertex a = at(0.0f, 7.6f), b = at(8.0f, 9.0f), c = at(4.0f, 30.0f);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &a, &b, &c);
    EXPECT_EQ(frame.drawn(), 0);
}

TEST(draw_triangle, straddling_the_top_is_cut_at_whole_rows)
{
    test_frame frame(8, 8);
    test_texture solid(1, 1, SOLID);
    draw_rectangle(&solid.record, -1.0f, -3.2f, 9.0f, 2.7f, 1.0f);
    for (int32_t y = 0; y < 3; ++y)
        EXPECT_EQ(drawn_in_row(frame, y, 8), 8) << "row " << y;
    EXPECT_EQ(frame.drawn(), 24);
}

TEST(draw_triangle, straddling_the_bottom_is_cut_at_whole_rows)
{
    test_frame frame(8, 8);
    test_texture solid(1, 1, SOLID);
    draw_rectangle(&solid.record, -1.0f, 5.3f, 9.0f, 40.0f, 1.0f);
    for (int32_t y = 5; y < 8; ++y)
        EXPECT_EQ(drawn_in_row(frame, y, 8), 8) << "row " << y;
    EXPECT_EQ(frame.drawn(), 24);
}

TEST(draw_triangle, top_edge_on_a_row_centre_is_drawn_and_bottom_edge_is_not)
{
    test_frame frame(8, 8);
    test_texture solid(1, 1, SOLID);
    draw_rectangle(&solid.record, 0.0f, 2.5f, 8.0f, 5.5f, 1.0f);
    EXPECT_EQ(drawn_in_row(frame, 1, 8), 0);
    EXPECT_EQ(drawn_in_row(frame, 2, 8), 8);
    EXPECT_EQ(drawn_in_row(frame, 4, 8), 8);
    EXPECT_EQ(drawn_in_row(frame, 5, 8), 0);
}

TEST(draw_triangle, both_windings_are_filled)
{
    test_frame clockwise(8, 8);
    test_texture solid(1, 1, SOLID);
    screen_vertex a = at(0.5f, 0.2f), b = at(7.3f, 3.1f), c = at(2.2f, 7.9f);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &a, &b, &c);
    std::vector<bool> first = clockwise.mask();
    test_frame counter_clockwise(8, 8);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &a, &c, &b);
    EXPECT_GT(clockwise.drawn(), 0);
    EXPECT_EQ(counter_clockwise.mask(), first);
}

// Every pixel centre strictly inside the convex quadrilateral, by the sign of each edge.
static std::vector<bool> centres_inside(const screen_vertex quad[4], int32_t width, int32_t height)
{
    std::vector<bool> inside;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            double px = x + 0.5, py = y + 0.5;
            bool in = true;
            for (int32_t i = 0; i < 4; ++i) {
                const screen_vertex& p = quad[i];
                const screen_vertex& q = quad[(i + 1) % 4];
                double cross = (q.sx - p.sx) * (py - p.sy) - (q.sy - p.sy) * (px - p.sx);
                in = in && cross > 0.0;
            }
            inside.push_back(in);
        }
    return inside;
}

TEST(draw_triangle, two_triangles_sharing_an_edge_cover_it_exactly_once)
{
    test_texture solid(1, 1, SOLID);
    const screen_vertex quad[4] = {at(0.3f, 0.7f), at(11.6f, 0.2f), at(10.1f, 9.4f), at(0.9f, 8.9f)};
    test_frame first(12, 10);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &quad[0], &quad[1], &quad[2]);
    std::vector<bool> first_mask = first.mask();
    test_frame second(12, 10);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &quad[0], &quad[2], &quad[3]);
    std::vector<bool> second_mask = second.mask();

    std::vector<bool> expected = centres_inside(quad, 12, 10);
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_FALSE(first_mask[i] && second_mask[i]) << "pixel " << i << " drawn twice";
        EXPECT_EQ(first_mask[i] || second_mask[i], expected[i]) << "pixel " << i;
    }
}

TEST(draw_triangle, pixel_on_a_shared_vertical_edge_goes_to_the_left_triangle)
{
    test_texture solid(1, 1, SOLID);
    // The shared edge runs through the centres of column 2 (x = 2.5).
    screen_vertex top = at(2.5f, 0.0f), bottom = at(2.5f, 6.0f);
    screen_vertex left = at(-9.0f, 3.0f), right = at(14.0f, 3.0f);
    test_frame left_frame(6, 6);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &top, &bottom, &left);
    test_frame right_frame(6, 6);
    draw_triangle(&solid.record, NEUTRAL_TINT, 0, &top, &right, &bottom);
    for (int32_t y = 0; y < 6; ++y) {
        EXPECT_NE(left_frame.pixel(2, y), 0) << "row " << y;
        EXPECT_EQ(right_frame.pixel(2, y), 0) << "row " << y;
        EXPECT_NE(right_frame.pixel(3, y), 0) << "row " << y;
    }
}

TEST(draw_span, right_end_on_a_pixel_centre_includes_that_pixel)
{
    test_frame frame(8, 1);
    test_texture solid(1, 1, SOLID);
    span_edge left = {0.8f, 1.0f, 0.0f, 0.0f, 0.0f};
    span_edge right = {5.5f, 1.0f, 0.0f, 0.0f, 0.0f};
    draw_span(0, &solid.record, NEUTRAL_TINT, 0, &left, &right);
    EXPECT_NE(frame.pixel(5, 0), 0);
    EXPECT_EQ(frame.pixel(6, 0), 0);
}

TEST(draw_span, left_end_on_a_pixel_centre_excludes_that_pixel)
{
    test_frame frame(8, 1);
    test_texture solid(1, 1, SOLID);
    span_edge left = {2.5f, 1.0f, 0.0f, 0.0f, 0.0f};
    span_edge right = {6.8f, 1.0f, 0.0f, 0.0f, 0.0f};
    draw_span(0, &solid.record, NEUTRAL_TINT, 0, &right, &left); // either order
    EXPECT_EQ(frame.pixel(2, 0), 0);
    EXPECT_NE(frame.pixel(3, 0), 0);
    EXPECT_NE(frame.pixel(6, 0), 0);
    EXPECT_EQ(frame.drawn(), 4);
}

TEST(draw_span, zero_width_draws_nothing)
{
    test_frame frame(8, 1);
    test_texture solid(1, 1, SOLID);
    span_edge left = {3.5f, 1.0f, 0.0f, 0.0f, 0.0f};
    draw_span(0, &solid.record, NEUTRAL_TINT, 0, &left, &left);
    EXPECT_EQ(frame.drawn(), 0);
}

TEST(draw_span, draws_only_where_strictly_nearer)
{
    test_frame frame(4, 1);
    test_texture solid(1, 1, SOLID);
    frame.depth = {0.25f, 0.5f, 0.75f, 0.0f};
    span_edge left = {0.0f, 0.5f, 0.0f, 0.0f, 0.0f};
    span_edge right = {4.0f, 0.5f, 0.0f, 0.0f, 0.0f};
    draw_span(0, &solid.record, NEUTRAL_TINT, 0, &left, &right);
    EXPECT_EQ(frame.pixel(0, 0), SOLID);
    EXPECT_EQ(frame.pixel(1, 0), 0); // equal depth is not nearer
    EXPECT_EQ(frame.pixel(2, 0), 0);
    EXPECT_EQ(frame.pixel(3, 0), SOLID);
    EXPECT_EQ(frame.depth_at(0, 0), 0.5f);
    EXPECT_EQ(frame.depth_at(2, 0), 0.75f);
}

TEST(draw_triangle, translucent_behind_opaque_is_hidden)
{
    test_frame frame(8, 8);
    test_texture near_texture(1, 1, SOLID);
    test_texture far_texture(1, 1, 0x8000 | 31 << 10);
    draw_rectangle(&near_texture.record, 0.0f, 0.0f, 8.0f, 8.0f, 1.0f);
    draw_rectangle(&far_texture.record, 0.0f, 0.0f, 8.0f, 8.0f, 2.0f, 32);
    expect_everywhere(frame, SOLID, 1.0f);
}

TEST(draw_triangle, opaque_drawn_after_a_translucent_one_in_front_still_draws)
{
    test_frame frame(8, 8);
    test_texture glass(1, 1, 0x8000 | 31 << 10);
    test_texture wall(1, 1, SOLID);
    draw_rectangle(&glass.record, 0.0f, 0.0f, 8.0f, 8.0f, 1.0f, 32);
    EXPECT_EQ(frame.depth_at(3, 3), 0.0f); // the translucent surface left no depth
    draw_rectangle(&wall.record, 0.0f, 0.0f, 8.0f, 8.0f, 2.0f);
    expect_everywhere(frame, SOLID, 0.5f);
}

TEST(draw_triangle, line_pixels_are_never_overwritten)
{
    test_frame frame(8, 8);
    test_texture solid(1, 1, SOLID);
    const uint16_t line_colour = 0xFFFF;
    draw_line(0, 3, 7, 3, line_colour);
    draw_rectangle(&solid.record, 0.0f, 0.0f, 8.0f, 8.0f, 1e-30f); // as near as a float gets
    for (int32_t x = 0; x < 8; ++x) {
        EXPECT_EQ(frame.pixel(x, 3), line_colour);
        EXPECT_EQ(frame.pixel(x, 4), SOLID);
    }
}

TEST(draw_triangle, lit_neutral_quad_reproduces_its_texture_pixel_for_pixel)
{
    test_frame frame(8, 8);
    test_texture pattern(8, 8, 0);
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 8; ++x)
            pattern.set(x, y, static_cast<uint16_t>(0x8000 | (x * 4) << 10 | (y * 4) << 5 | ((x + y) * 2)));
    screen_vertex a = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f};
    screen_vertex b = {8.0f, 0.0f, 1.0f, 1.0f, 0.0f, 0.0f};
    screen_vertex c = {8.0f, 8.0f, 1.0f, 1.0f, 1.0f, 0.0f};
    screen_vertex d = {0.0f, 8.0f, 1.0f, 0.0f, 1.0f, 0.0f};
    draw_triangle(&pattern.record, NEUTRAL_TINT, 0, &a, &b, &c);
    draw_triangle(&pattern.record, NEUTRAL_TINT, 0, &a, &c, &d);
    EXPECT_EQ(frame.colour, std::vector<uint16_t>(pattern.texels.begin(), pattern.texels.end() - 1)); // not the spare
}

TEST(draw_triangle, texture_coordinates_are_perspective_correct)
{
    // A floor-like strip whose far end (w = 3) is three times as deep as its near end (w = 1):
    // half-way down in depth is not half-way down the screen. With v running 0 ... 1 over depth,
    // the texture row of a pixel tells the v the rasterizer recovered there.
    test_frame frame(1, 64);
    test_texture rows(1, 64, 0);
    for (int32_t y = 0; y < 64; ++y)
        rows.set(0, y, static_cast<uint16_t>(0x8000 | (y & 31) << 5 | (y >> 5)));
    screen_vertex near_left = {-1.0f, 64.0f, 1.0f, 0.0f, 0.0f, 0.0f};
    screen_vertex near_right = {2.0f, 64.0f, 1.0f, 0.0f, 0.0f, 0.0f};
    screen_vertex far_left = {-1.0f, 0.0f, 3.0f, 0.0f, 1.0f, 0.0f};
    screen_vertex far_right = {2.0f, 0.0f, 3.0f, 0.0f, 1.0f, 0.0f};
    draw_triangle(&rows.record, NEUTRAL_TINT, 0, &far_left, &far_right, &near_right);
    draw_triangle(&rows.record, NEUTRAL_TINT, 0, &far_left, &near_right, &near_left);
    for (int32_t y = 0; y < 64; ++y) {
        // 1/w and v/w are linear in screen y; v = (v/w) / (1/w).
        double f = (y + 0.5) / 64.0;
        double inv_w = 1.0 / 3.0 + (1.0 - 1.0 / 3.0) * f;
        double v = (1.0 / 3.0) * (1.0 - f) / inv_w;
        int32_t row = static_cast<int32_t>(v * 64.0);
        uint16_t texel = frame.pixel(0, y);
        int32_t sampled = (texel >> 5 & 31) | (texel & 1) << 5;
        EXPECT_NEAR(sampled, row, 1) << "row " << y;
    }
}

TEST(clip_triangle_near, all_in_front_is_left_as_it_is)
{
    clip_vertex v[CLIP_CAPACITY] = {{0, 0, 2, 0, 0, 0, 0, 0, 0}, {1, 0, 2, 0, 0, 0, 1, 0, 0}, {0, 1, 3, 0, 0, 0, 0, 1, 0}};
    EXPECT_EQ(clip_triangle_near(v, 1.0f), 3);
    EXPECT_EQ(v[2].z, 3.0f);
    EXPECT_EQ(v[1].u, 1.0f);
}

TEST(clip_triangle_near, one_vertex_behind_becomes_a_quadrilateral_in_edge_order)
{
    // a behind, b and c in front: a->b gives its crossing, b->c gives b, c->a gives c then its crossing.
    clip_vertex v[CLIP_CAPACITY] = {{0, 0, -1, 0, 0, 0, 0, 0, 0},
                                    {4, 0, 3, 0, 0, 0, 1, 0, 1},
                                    {0, 4, 3, 0, 0, 0, 0, 1, 0.5f}};
    ASSERT_EQ(clip_triangle_near(v, 1.0f), 4);
    // Crossings at t = d_start / (d_start - d_end) = 0.5 on a->b and on c->a.
    EXPECT_EQ(v[0].x, 2.0f);
    EXPECT_EQ(v[0].z, 1.0f);
    EXPECT_EQ(v[0].u, 0.5f);
    EXPECT_EQ(v[0].l, 0.5f);
    EXPECT_EQ(v[1].x, 4.0f);
    EXPECT_EQ(v[2].y, 4.0f);
    EXPECT_EQ(v[3].y, 2.0f);
    EXPECT_EQ(v[3].z, 1.0f);
    EXPECT_EQ(v[3].v, 0.5f);
    EXPECT_EQ(v[3].l, 0.25f);
}

TEST(clip_triangle_near, two_vertices_behind_leave_a_triangle)
{
    clip_vertex v[CLIP_CAPACITY] = {{0, 0, 3, 0, 0, 0, 0, 0, 0},
                                    {4, 0, -1, 0, 0, 0, 1, 0, 0},
                                    {0, 4, -1, 0, 0, 0, 0, 1, 0}};
    ASSERT_EQ(clip_triangle_near(v, 1.0f), 3);
    EXPECT_EQ(v[0].z, 3.0f); // a, then the crossing of a->b, then the crossing of c->a
    EXPECT_EQ(v[1].x, 2.0f);
    EXPECT_EQ(v[1].u, 0.5f);
    EXPECT_EQ(v[2].y, 2.0f);
    EXPECT_EQ(v[2].v, 0.5f);
}

TEST(clip_triangle_near, all_behind_leaves_nothing)
{
    clip_vertex v[CLIP_CAPACITY] = {{0, 0, -3, 0, 0, 0, 0, 0, 0}, {4, 0, 0.5f, 0, 0, 0, 1, 0, 0}, {0, 4, 1, 0, 0, 0, 0, 1, 0}};
    EXPECT_EQ(clip_triangle_near(v, 1.0f), 0); // a vertex exactly on the plane is not in front
}

namespace {

// An unturned camera at the origin over a 100 x 100 frame: projected p maps to (p + 0.5) x 100.
struct straight_camera {
    test_frame frame{100, 100};
    straight_camera()
    {
        camera_position[0] = camera_position[1] = camera_position[2] = 0.0f;
        camera_yaw_cos = camera_pitch_cos = 1.0f;
        camera_yaw_sin = camera_pitch_sin = 0.0f;
        projection_scale = 1.0f;
        view_mapping_update();
    }
};

} // namespace

TEST(project_segment, both_ends_in_front_are_projected)
{
    straight_camera camera;
    float x0 = 0.0f, y0 = 0.0f, z0 = 2.0f, x1 = 1.0f, y1 = -0.5f, z1 = 4.0f;
    ASSERT_EQ(project_segment(&x0, &y0, &z0, &x1, &y1, &z1), 1);
    EXPECT_EQ(x0, 50.0f);
    EXPECT_EQ(y0, 50.0f);
    EXPECT_EQ(z0, 2.0f);
    EXPECT_EQ(x1, 75.0f);
    EXPECT_EQ(y1, 37.5f);
    EXPECT_EQ(z1, 4.0f);
}

TEST(project_segment, end_behind_the_near_distance_moves_to_it)
{
    straight_camera camera;
    float x0 = -1.0f, y0 = 0.0f, z0 = -1.0f, x1 = 1.0f, y1 = 0.0f, z1 = 1.0f;
    ASSERT_EQ(project_segment(&x0, &y0, &z0, &x1, &y1, &z1), 1);
    EXPECT_EQ(z0, 0.01f);
    EXPECT_NEAR(x0, (0.01 / 0.01 + 0.5) * 100.0, 1e-2); // the crossing lies at x = 0.01
    EXPECT_EQ(x1, 150.0f);
    float a = 1.0f, b = 0.0f, c = 1.0f, d = -1.0f, e = 0.0f, f = -1.0f;
    ASSERT_EQ(project_segment(&a, &b, &c, &d, &e, &f), 1);
    EXPECT_EQ(f, 0.01f);
    EXPECT_EQ(c, 1.0f);
}

TEST(project_segment, wholly_nearer_than_the_near_distance_is_rejected)
{
    straight_camera camera;
    float x0 = 0.0f, y0 = 0.0f, z0 = 0.005f, x1 = 1.0f, y1 = 0.0f, z1 = -3.0f;
    EXPECT_EQ(project_segment(&x0, &y0, &z0, &x1, &y1, &z1), 0);
}

// Two objects' triangles in one plane: of equally near surfaces the one drawn first stays. Drawn
// the other way round with their places in the draw list, the frame is the same.
TEST(draw_triangle, drawn_out_of_order_with_their_places_equally_near_triangles_leave_the_first_in_the_list)
{
    test_texture red(1, 1, 0x8000 | 31 << 10), blue(1, 1, 0x8000 | 31);
    screen_vertex a = {0.0f, 0.0f, 2.0f, 0.0f, 0.0f, 0.0f};
    screen_vertex b = {8.0f, 0.0f, 2.0f, 1.0f, 0.0f, 0.0f};
    screen_vertex c = {0.0f, 8.0f, 2.0f, 0.0f, 1.0f, 0.0f};
    std::vector<uint16_t> in_order;
    {
        test_frame frame(8, 8);
        draw_triangle(&red.record, NEUTRAL_TINT, 0, &a, &b, &c);
        draw_triangle(&blue.record, NEUTRAL_TINT, 0, &a, &b, &c);
        in_order = frame.colour;
        EXPECT_EQ(frame.pixel(1, 1), red.texels[0]);
    }
    for (int lanes = 1; lanes <= widest_pixel_loop_lanes(); lanes *= 2) {
        test_frame frame(8, 8);
        pixel_loop_lanes = lanes;
        drawing_rank = 2;
        draw_triangle(&blue.record, NEUTRAL_TINT, 0, &a, &b, &c);
        drawing_rank = 1;
        draw_triangle(&red.record, NEUTRAL_TINT, 0, &a, &b, &c);
        drawing_rank = 0;
        EXPECT_EQ(frame.colour, in_order) << lanes << " lanes";
    }
    pixel_loop_lanes = widest_pixel_loop_lanes();
}

TEST(draw_triangle, a_later_place_does_not_draw_over_an_equally_near_surface_of_an_earlier_one)
{
    test_frame frame(8, 8);
    test_texture red(1, 1, 0x8000 | 31 << 10), blue(1, 1, 0x8000 | 31);
    screen_vertex a = {0.0f, 0.0f, 2.0f, 0.0f, 0.0f, 0.0f};
    screen_vertex b = {8.0f, 0.0f, 2.0f, 1.0f, 0.0f, 0.0f};
    screen_vertex c = {0.0f, 8.0f, 2.0f, 0.0f, 1.0f, 0.0f};
    drawing_rank = 1;
    draw_triangle(&red.record, NEUTRAL_TINT, 0, &a, &b, &c);
    drawing_rank = 2;
    draw_triangle(&blue.record, NEUTRAL_TINT, 0, &a, &b, &c);
    drawing_rank = 0;
    EXPECT_EQ(frame.pixel(1, 1), red.texels[0]);
    EXPECT_EQ(frame.ranks[1 * 8 + 1], 1);
}
