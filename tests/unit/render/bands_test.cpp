#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "core/settings.h"
#include "render/bands.h"
#include "render/draw2d.h"
#include "render/frame.h"
#include "render/raster.h"
#include "support/test_frame.h"
#include "support/test_heap.h"

namespace {

const int32_t WIDTH = 101; // neither side a multiple of the 8-row blocks bands are cut in
const int32_t HEIGHT = 75;

// A frame's worth of everything the world pass hands the rasterizer, from a seed: triangles of
// every kind (opaque, alpha-tested, translucent, reaching past every edge, behind and in front of
// one another), on-top lines and circle outlines.
struct random_scene {
    std::mt19937 random;
    test_texture solid{1, 1, 0x8000 | 20 << 10 | 10 << 5 | 5};
    test_texture pattern{8, 8, 0x8000};

    explicit random_scene(uint32_t seed) : random(seed)
    {
        for (int32_t y = 0; y < 8; ++y)
            for (int32_t x = 0; x < 8; ++x)
                pattern.set(x, y, static_cast<uint16_t>(((x + y) % 3 == 0 ? 0 : 0x8000) | (x * 4) << 10 | (y * 4) << 5 |
                                                        ((x ^ y) * 3)));
    }

    float between(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(random);
    }
    int32_t whole(int32_t low, int32_t high)
    {
        return std::uniform_int_distribution<int32_t>(low, high)(random);
    }
    screen_vertex corner()
    {
        return {between(-20.0f, WIDTH + 20.0f), between(-20.0f, HEIGHT + 20.0f), between(0.5f, 8.0f),
                between(-3.0f, 3.0f),          between(-3.0f, 3.0f),           between(0.0f, 1.0f)};
    }

    void draw(int32_t commands)
    {
        for (int32_t i = 0; i < commands; ++i) {
            int32_t kind = whole(0, 9);
            if (kind < 8) {
                screen_vertex a = corner(), b = corner(), c = corner();
                const texture* tex = kind < 3 ? &solid.record : &pattern.record;
                uint8_t blend = kind == 7 ? static_cast<uint8_t>(whole(1, 62)) : 0;
                draw_triangle(tex, static_cast<uint8_t>(whole(0, 63)), blend, &a, &b, &c);
            } else if (kind == 8) {
                draw_line(whole(0, WIDTH - 1), whole(0, HEIGHT - 1), whole(0, WIDTH - 1), whole(0, HEIGHT - 1),
                          0xFFFF);
            } else {
                draw_circle_outline(whole(-10, WIDTH + 10), whole(-10, HEIGHT + 10), whole(0, 30), 0xFC00);
            }
        }
    }
};

struct drawn_frame {
    std::vector<uint16_t> colour;
    std::vector<float> depth;
};

struct pipeline_switches {
    int32_t filtered, dithered;
};

// The scene of `seed` drawn with `threads` threads.
drawn_frame draw_with_threads(uint32_t seed, int32_t threads, pipeline_switches switches, int32_t commands = 400)
{
    test_frame frame(WIDTH, HEIGHT, 0x8123); // switches the pipeline's choices off, and back when it goes
    TEXTURE_INTERPOLATION = switches.filtered;
    LIGHT_DITHERING = switches.dithered;
    random_scene scene(seed);
    render_threads = threads;
    begin_band_recording();
    scene.draw(commands);
    draw_recorded_bands();
    render_threads = 1;
    return {frame.colour, frame.depth};
}

void expect_same_frame(const drawn_frame& expected, const drawn_frame& drawn, int32_t threads)
{
    int32_t colours_differ = 0, depths_differ = 0;
    for (size_t i = 0; i < expected.colour.size(); ++i) {
        colours_differ += expected.colour[i] != drawn.colour[i];
        depths_differ += memcmp(&expected.depth[i], &drawn.depth[i], sizeof(float)) != 0;
    }
    EXPECT_EQ(colours_differ, 0) << threads << " threads";
    EXPECT_EQ(depths_differ, 0) << threads << " threads";
}

void expect_same_frames_whatever_the_threads(pipeline_switches switches)
{
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        drawn_frame alone = draw_with_threads(seed, 1, switches);
        int32_t covered = 0;
        for (uint16_t pixel : alone.colour)
            covered += pixel != 0x8123;
        EXPECT_GT(covered, WIDTH * HEIGHT / 2) << "the scene draws over most of the frame";
        for (int32_t threads = 2; threads <= 5; ++threads)
            expect_same_frame(alone, draw_with_threads(seed, threads, switches), threads);
    }
}

} // namespace

TEST(frame_bands, random_scene_is_the_same_bit_for_bit_whatever_the_number_of_threads)
{
    expect_same_frames_whatever_the_threads({0, 0});
}

TEST(frame_bands, filtered_and_dithered_scene_is_the_same_whatever_the_number_of_threads)
{
    expect_same_frames_whatever_the_threads({1, 1});
}

// From an empty list, these commands make it grow twice while the bands are being drawn from it.
TEST(frame_bands, a_list_that_grows_while_its_bands_are_drawn_keeps_every_pixel_in_order)
{
    drawn_frame alone = draw_with_threads(7, 1, {0, 0}, 2500);
    for (int32_t threads = 2; threads <= 4; ++threads) {
        release_band_commands();
        expect_same_frame(alone, draw_with_threads(7, threads, {0, 0}, 2500), threads);
    }
}

// The first failure leaves the list without room (what comes then is drawn at once); a later one
// has what the list holds drawn first and the list used again from its start.
TEST(frame_bands, a_list_that_cannot_grow_draws_what_it_holds_first_and_keeps_the_order)
{
    drawn_frame alone = draw_with_threads(8, 1, {0, 0}, 2500);
    for (int failing = 1; failing <= 3; ++failing) {
        release_band_commands();
        test_heap::reset();
        test_heap::fail_request(failing);
        drawn_frame drawn = draw_with_threads(8, 3, {0, 0}, 2500);
        EXPECT_GE(test_heap::log().size(), static_cast<size_t>(failing)) << "request " << failing << " was made";
        test_heap::reset();
        expect_same_frame(alone, drawn, 3);
    }
}

TEST(frame_bands, one_thread_draws_at_once)
{
    test_frame frame(WIDTH, HEIGHT);
    test_texture solid(1, 1, 0xFFFF);
    render_threads = 1;
    begin_band_recording();
    screen_vertex a = {0.0f, 0.0f, 1.0f, 0, 0, 0}, b = {50.0f, 0.0f, 1.0f, 0, 0, 0}, c = {0.0f, 50.0f, 1.0f, 0, 0, 0};
    draw_triangle(&solid.record, 31, 0, &a, &b, &c);
    EXPECT_GT(frame.drawn(), 0);
    draw_recorded_bands();
}

TEST(frame_bands, recorded_frame_is_whole_when_the_bands_are_drawn)
{
    test_frame frame(WIDTH, HEIGHT);
    test_texture solid(1, 1, 0xFFFF);
    render_threads = 3;
    begin_band_recording();
    screen_vertex a = {0.0f, 0.0f, 1.0f, 0, 0, 0}, b = {50.0f, 0.0f, 1.0f, 0, 0, 0}, c = {0.0f, 50.0f, 1.0f, 0, 0, 0};
    draw_triangle(&solid.record, 31, 0, &a, &b, &c);
    draw_line(0, 70, 100, 70, 0xFFFF);
    draw_recorded_bands();
    render_threads = 1;
    EXPECT_GT(frame.drawn(), 0);
    EXPECT_EQ(frame.pixel(100, 70), 0xFFFF);
    EXPECT_EQ(frame.depth_at(100, 70), DEPTH_ON_TOP);
}

TEST(render_thread_count, zero_means_one_per_processor)
{
    EXPECT_GE(render_thread_count(0), 1);
    EXPECT_EQ(render_thread_count(3), 3);
    EXPECT_EQ(render_thread_count(1), 1);
}

TEST(cut_into_bands, bands_of_equal_whole_units_with_the_rest_in_the_last)
{
    band_cut even = cut_into_bands(16, 4);
    EXPECT_EQ(even.count, 4);
    EXPECT_EQ(even.units, 4);
    band_cut rest = cut_into_bands(17, 4); // 5, 5, 5 and the last 2
    EXPECT_EQ(rest.count, 4);
    EXPECT_EQ(rest.units, 5);
    band_cut fewer_bands = cut_into_bands(9, 4); // 3, 3, 3: rounding up leaves a band out
    EXPECT_EQ(fewer_bands.count, 3);
    EXPECT_EQ(fewer_bands.units, 3);
}

TEST(cut_into_bands, each_band_starts_where_the_one_before_ends_and_the_last_ends_at_the_total)
{
    band_cut rest = cut_into_bands(17, 4);
    const int32_t starts[] = {0, 5, 10, 15, 17};
    for (int32_t band = 0; band <= rest.count; ++band)
        EXPECT_EQ(band_start(&rest, band), starts[band]) << band;
    band_cut none = cut_into_bands(0, 8);
    EXPECT_EQ(band_start(&none, 0), 0);
    EXPECT_EQ(band_start(&none, 1), 0);
}

TEST(cut_into_bands, fewer_units_than_bands_wanted_give_one_unit_each_and_none_gives_one_band)
{
    band_cut few = cut_into_bands(3, 8);
    EXPECT_EQ(few.count, 3);
    EXPECT_EQ(few.units, 1);
    band_cut none = cut_into_bands(0, 8);
    EXPECT_EQ(none.count, 1);
    EXPECT_EQ(none.units, 1);
}
