#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <random>
#include <vector>

#include "core/settings.h"
#include "render/raster.h"
#include "support/test_frame.h"

namespace {

const int32_t WIDTH = 67;
const int32_t HEIGHT = 41;

// Triangles from a seed, with corners well past the frame, depths from very near to far, texture
// coordinates of either sign and shades a little outside 0 ... 1, over a textured, partly
// transparent texture; drawn with the span loops that take `lanes` pixels at a time.
struct span_frame {
    std::vector<uint16_t> colour;
    std::vector<float> depth;
    std::vector<uint16_t> ranks;
};

struct pipeline_switches {
    int32_t filtered, dithered;
    int32_t translucent; // 1: every triangle blends at a level of 1 ... 63
    int32_t ranked;      // 1: drawn at places in a draw list, each twice over (equally near)
    int32_t unnumbered;  // 1: some of the depths already in the frame are not numbers
};

span_frame draw_random_triangles(uint32_t seed, int lanes, pipeline_switches switches)
{
    test_frame frame(WIDTH, HEIGHT, 0x8421); // switches the pipeline's choices off, and back when it goes
    TEXTURE_INTERPOLATION = switches.filtered;
    LIGHT_DITHERING = switches.dithered;
    test_texture tex(16, 8, 0x8000);
    std::mt19937 random(seed);
    auto between = [&random](float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); };
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 16; ++x)
            tex.set(x, y, static_cast<uint16_t>((random() % 5 == 0 ? 0 : 0x8000) | (random() & 0x7FFF)));
    // Some depths already in the frame, so that the test passes and fails within one span.
    for (float& d : frame.depth)
        d = random() % 3 == 0 ? between(0.0f, 2.0f) : 0.0f;
    if (switches.unnumbered)
        for (float& d : frame.depth)
            if (random() % 4 == 0)
                d = NAN;
    pixel_loop_lanes = lanes;
    for (int32_t i = 0; i < 300; ++i) {
        screen_vertex corner[3];
        for (screen_vertex& c : corner)
            c = {between(-30.0f, WIDTH + 30.0f), between(-30.0f, HEIGHT + 30.0f), between(0.01f, 20.0f),
                 between(-40.0f, 40.0f),         between(-40.0f, 40.0f),          between(-0.1f, 1.1f)};
        uint8_t tint = static_cast<uint8_t>(random() % 64);
        uint8_t blend = switches.translucent ? static_cast<uint8_t>(1 + random() % 63) : 0;
        if (switches.ranked) {
            // The same corners again at another place and tint: every pixel the first drew ties.
            drawing_rank = static_cast<uint16_t>(1 + random() % 9);
            draw_triangle(&tex.record, tint, blend, &corner[0], &corner[1], &corner[2]);
            drawing_rank = static_cast<uint16_t>(1 + random() % 9);
            draw_triangle(&tex.record, static_cast<uint8_t>((tint + 7) % 64), blend, &corner[0], &corner[1],
                          &corner[2]);
            drawing_rank = 0;
        } else {
            draw_triangle(&tex.record, tint, blend, &corner[0], &corner[1], &corner[2]);
        }
    }
    pixel_loop_lanes = widest_pixel_loop_lanes();
    return {frame.colour, frame.depth, frame.ranks};
}

// Both vector widths (eight only where the processor runs it) against the plain loops.
void expect_vectorised_loops_match_the_plain_ones(pipeline_switches switches)
{
    for (int lanes = 4; lanes <= widest_pixel_loop_lanes(); lanes *= 2) {
        for (uint32_t seed = 1; seed <= 20; ++seed) {
            span_frame plain = draw_random_triangles(seed, 1, switches);
            span_frame vectorised = draw_random_triangles(seed, lanes, switches);
            int32_t colours_differ = 0, depths_differ = 0, ranks_differ = 0;
            for (size_t i = 0; i < plain.colour.size(); ++i) {
                colours_differ += plain.colour[i] != vectorised.colour[i];
                depths_differ += memcmp(&plain.depth[i], &vectorised.depth[i], sizeof(float)) != 0;
                ranks_differ += plain.ranks[i] != vectorised.ranks[i];
            }
            EXPECT_EQ(colours_differ, 0) << lanes << " lanes, seed " << seed;
            EXPECT_EQ(depths_differ, 0) << lanes << " lanes, seed " << seed;
            EXPECT_EQ(ranks_differ, 0) << lanes << " lanes, seed " << seed;
        }
    }
}

} // namespace

TEST(span_loops, vectorised_nearest_span_matches_the_plain_loop_on_random_triangles)
{
    expect_vectorised_loops_match_the_plain_ones({0, 0, 0, 0, 0});
}

TEST(span_loops, vectorised_nearest_span_with_light_dithering_matches_the_plain_loop)
{
    expect_vectorised_loops_match_the_plain_ones({0, 1, 0, 0, 0});
}

TEST(span_loops, vectorised_filtered_span_matches_the_plain_loop_on_random_triangles)
{
    expect_vectorised_loops_match_the_plain_ones({1, 0, 0, 0, 0});
    expect_vectorised_loops_match_the_plain_ones({1, 1, 0, 0, 0});
}

TEST(span_loops, vectorised_translucent_span_matches_the_plain_loop_on_random_triangles)
{
    expect_vectorised_loops_match_the_plain_ones({0, 0, 1, 0, 0});
    expect_vectorised_loops_match_the_plain_ones({0, 1, 1, 0, 0});
}

TEST(span_loops, vectorised_filtered_translucent_span_matches_the_plain_loop_on_random_triangles)
{
    expect_vectorised_loops_match_the_plain_ones({1, 0, 1, 0, 0});
    expect_vectorised_loops_match_the_plain_ones({1, 1, 1, 0, 0});
}

TEST(span_loops, vectorised_spans_drawn_at_places_in_a_draw_list_match_the_plain_loop_where_surfaces_tie)
{
    expect_vectorised_loops_match_the_plain_ones({0, 0, 0, 1, 0});
    expect_vectorised_loops_match_the_plain_ones({1, 1, 0, 1, 0});
}

// A depth that is not a number fails no depth test: every span draws over it, as the plain loop does.
TEST(span_loops, vectorised_spans_over_depths_that_are_not_numbers_draw_as_the_plain_loop)
{
    expect_vectorised_loops_match_the_plain_ones({0, 0, 0, 0, 1});
    expect_vectorised_loops_match_the_plain_ones({1, 0, 1, 0, 1});
    expect_vectorised_loops_match_the_plain_ones({0, 1, 0, 1, 1});
}
