// How fast the rasterizer fills the frame: a full-screen, perspective-textured, shaded quad at
// 640 x 480 with each texel fetch and pixel path, reported in megapixels per second.
#include <benchmark/benchmark.h>

#include <string.h>

#include <vector>

#include "core/settings.h"
#include "render/colour_tables.h"
#include "render/frame.h"
#include "render/raster.h"

namespace {

const int32_t WIDTH = 640;
const int32_t HEIGHT = 480;

struct bench_frame {
    std::vector<uint16_t> colour = std::vector<uint16_t>(WIDTH * HEIGHT, 0x8000);
    std::vector<float> depth = std::vector<float>(WIDTH * HEIGHT, 0.0f);
    std::vector<uint16_t> texels = std::vector<uint16_t>(64 * 64 + 1); // and the spare texel
    texture tex = {};

    bench_frame(int32_t interpolation, int32_t dithering)
    {
        color_buffer = colour.data();
        depth_buffer = depth.data();
        frame_width = WIDTH;
        frame_height = HEIGHT;
        TEXTURE_INTERPOLATION = interpolation;
        LIGHT_DITHERING = dithering;
        build_colour_tables();
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x)
                texels[static_cast<size_t>(y * 64 + x)] =
                    static_cast<uint16_t>(0x8000 | (x / 2) << 10 | (y / 2) << 5 | ((x ^ y) & 31));
        tex.width = tex.height = 64;
        tex.texels = texels.data();
        tex.width_f = tex.height_f = 64.0f;
        tex.width_mask = tex.height_mask = 63;
        tex.row_shift = 6;
    }

    // A wall receding to the right (depth 1 to 4), its texture repeated, its shade 0 to 0.8.
    void draw_wall(uint8_t blend)
    {
        screen_vertex a = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f};
        screen_vertex b = {WIDTH, 0.0f, 4.0f, 8.0f, 0.0f, 0.8f};
        screen_vertex c = {WIDTH, HEIGHT, 4.0f, 8.0f, 6.0f, 0.8f};
        screen_vertex d = {0.0f, HEIGHT, 1.0f, 0.0f, 6.0f, 0.0f};
        draw_triangle(&tex, 38, blend, &a, &b, &c);
        draw_triangle(&tex, 38, blend, &a, &c, &d);
    }
};

void report_pixels(benchmark::State& state)
{
    state.counters["MP/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * WIDTH * HEIGHT / 1e6,
                                                benchmark::Counter::kIsRate);
}

// Every pixel passes the depth test: the depth buffer is cleared (untimed) before each fill.
void fill_opaque(benchmark::State& state, int32_t interpolation, int32_t dithering)
{
    bench_frame frame(interpolation, dithering);
    for (auto _ : state) {
        state.PauseTiming();
        memset(frame.depth.data(), 0, frame.depth.size() * sizeof(float));
        state.ResumeTiming();
        frame.draw_wall(0);
        benchmark::DoNotOptimize(frame.colour.data());
    }
    report_pixels(state);
}

void fill_nearest(benchmark::State& state)
{
    fill_opaque(state, 0, 0);
}
BENCHMARK(fill_nearest)->Unit(benchmark::kMillisecond);

void fill_filtered(benchmark::State& state)
{
    fill_opaque(state, 1, 0);
}
BENCHMARK(fill_filtered)->Unit(benchmark::kMillisecond);

void fill_nearest_light_dithering(benchmark::State& state)
{
    fill_opaque(state, 0, 1);
}
BENCHMARK(fill_nearest_light_dithering)->Unit(benchmark::kMillisecond);

void fill_filtered_light_dithering(benchmark::State& state)
{
    fill_opaque(state, 1, 1);
}
BENCHMARK(fill_filtered_light_dithering)->Unit(benchmark::kMillisecond);

// Translucent pixels never write depth, so the buffer stays cleared and every pixel blends.
void fill_translucent(benchmark::State& state)
{
    bench_frame frame(0, 0);
    for (auto _ : state) {
        frame.draw_wall(32);
        benchmark::DoNotOptimize(frame.colour.data());
    }
    report_pixels(state);
}
BENCHMARK(fill_translucent)->Unit(benchmark::kMillisecond);

// The same wall behind what is already drawn: every pixel fails the depth test.
void fill_hidden(benchmark::State& state)
{
    bench_frame frame(0, 0);
    frame.depth.assign(frame.depth.size(), 2.0f);
    for (auto _ : state) {
        frame.draw_wall(0);
        benchmark::DoNotOptimize(frame.colour.data());
    }
    report_pixels(state);
}
BENCHMARK(fill_hidden)->Unit(benchmark::kMillisecond);

} // namespace
