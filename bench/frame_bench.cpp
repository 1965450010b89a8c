// Whole frames of the shipped level, drawn by the game's own frame driver along a
// fixed walk of 200 camera placements: the yard, the hall, the kitchen, the armoury, the storeroom,
// up the stairwell, the library and the solar. Reports the median and 99th-percentile frame time
// and the mean time of each pass, timed through the frame driver's pass hook, at 640 x 480,
// 1280 x 720 and 1920 x 1080, and at 1280 x 720 with texture filtering and with light dithering,
// each with one and with two threads.
//
// The player is moved straight to each placement (no update runs, so nothing falls or collides);
// the clocks advance by one frame at 60 frames a second, so the Warden's animation plays. The
// areas-and-portals view is switched off: the frames are the plain picture.
#include <benchmark/benchmark.h>

#include <math.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "app/game.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "render/bands.h"
#include "game/player.h"
#include "shipped_game.h"

namespace {

using frame_clock = std::chrono::steady_clock;

struct pass_times {
    frame_clock::time_point last;
    double seconds[FRAME_PASS_COUNT];
};
pass_times passes;

void time_pass(frame_pass pass)
{
    frame_clock::time_point now = frame_clock::now();
    passes.seconds[pass] += std::chrono::duration<double>(now - passes.last).count();
    passes.last = now;
}

// The game started with each pass of a frame timed.
int start_game()
{
    if (!start_shipped_game())
        return 0;
    frame_pass_ended = time_pass;
    return 1;
}

double percentile(std::vector<double> values, double fraction)
{
    std::sort(values.begin(), values.end());
    size_t rank = static_cast<size_t>(ceil(fraction * static_cast<double>(values.size())));
    return values[rank > 0 ? rank - 1 : 0];
}

} // namespace

// Arguments: width, height, TEXTURE_INTERPOLATION, LIGHT_DITHERING, threads.
static void frame_along_the_walk(benchmark::State& state)
{
    if (!start_game() || !use_frame_size(static_cast<int32_t>(state.range(0)), static_cast<int32_t>(state.range(1)))) {
        state.SkipWithError("the game did not start from the shipped data");
        return;
    }
    TEXTURE_INTERPOLATION = static_cast<int32_t>(state.range(2));
    LIGHT_DITHERING = static_cast<int32_t>(state.range(3));
    render_threads = static_cast<int32_t>(state.range(4));
    std::vector<double> frame_ms;
    passes = {};
    render_alpha = 1.0f;
    for (auto _ : state) {
        for (int32_t i = 0; i < WALK_PLACEMENTS; ++i) {
            stand_at(placement_on_walk(i));
            game_time += 1.0f / 60.0f;
            real_time += 1.0 / 60.0;
            frame_clock::time_point start = frame_clock::now();
            passes.last = start;
            game_render();
            frame_ms.push_back(std::chrono::duration<double, std::milli>(frame_clock::now() - start).count());
            benchmark::DoNotOptimize(color_buffer);
        }
    }
    double frames = static_cast<double>(frame_ms.size());
    state.counters["median_ms"] = percentile(frame_ms, 0.5);
    state.counters["p99_ms"] = percentile(frame_ms, 0.99);
    static const char* const pass_names[FRAME_PASS_COUNT] = {"setup_ms", "visibility_ms", "occlusion_ms", "sky_ms",
                                                            "opaque_ms", "translucent_ms", "bands_ms", "overlays_ms"};
    for (int32_t pass = 0; pass < FRAME_PASS_COUNT; ++pass)
        state.counters[pass_names[pass]] = passes.seconds[pass] * 1000.0 / frames;
    TEXTURE_INTERPOLATION = 0;
    LIGHT_DITHERING = 0;
    render_threads = 1;
}
// Each resolution and option with one thread and with two, the two runs side by side.
static void frame_configurations(benchmark::internal::Benchmark* bench)
{
    const int64_t configurations[][4] = {
        {640, 480, 0, 0}, {1280, 720, 0, 0}, {1920, 1080, 0, 0}, {1280, 720, 1, 0}, {1280, 720, 0, 1},
    };
    bench->ArgNames({"width", "height", "filtered", "dithered", "threads"});
    for (const auto& c : configurations)
        for (int64_t threads = 1; threads <= 2; ++threads)
            bench->Args({c[0], c[1], c[2], c[3], threads});
}
BENCHMARK(frame_along_the_walk)->Apply(frame_configurations)->Unit(benchmark::kMillisecond)->Iterations(10);
