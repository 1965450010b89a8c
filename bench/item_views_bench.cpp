// The inventory's item views at 640 x 480 over a frame of the shipped level's great hall: the ring
// of three shipped items (both keys and a coin) in its box with the label, and a key held in the
// full view. Reports microseconds per frame of draw_item_views alone.
#include <benchmark/benchmark.h>


#include <vector>

#include "app/game.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "shipped_game.h"
#include "ui/item_views.h"

namespace {

// The game as a host starts it, from the source tree's shipped data, with one frame of the great
// hall drawn under the views; 1 when it started.
int start_game()
{
    static int started = -1;
    if (started >= 0)
        return started;
    started = start_shipped_game();
    if (!started)
        return started;
    stand_at({-3.6f, 0.0f, 11.2f, 35.0f, -5.0f});
    render_alpha = 1.0f;
    game_time = 1.0f;
    game_render();
    return started;
}

// Three slots: the iron key, the rusty key and a silver coin.
void carry_three_items()
{
    const char* keys[3] = {"iron_key", "rusty_key", "silver_coin"};
    inventory = inventory_state{};
    for (int32_t i = 0; i < 3; ++i)
        inventory.slots[i] = {asset_name_find(ASSET_ITEM, keys[i]), 1};
    inventory.slot_count = 3;
    inventory.armed_slot = -1;
}

} // namespace

static void ring_of_three_items(benchmark::State& state)
{
    if (!start_game()) {
        state.SkipWithError("the game did not start from the shipped data");
        return;
    }
    carry_three_items();
    inventory.display_open = 1;
    for (auto _ : state) {
        game_time += 1.0f / 60.0f;
        inventory.shown_selection += 0.01f;
        draw_item_views();
        benchmark::DoNotOptimize(color_buffer);
    }
}
BENCHMARK(ring_of_three_items)->Unit(benchmark::kMicrosecond);

static void key_held_in_full_view(benchmark::State& state)
{
    if (!start_game()) {
        state.SkipWithError("the game did not start from the shipped data");
        return;
    }
    carry_three_items();
    inventory.armed_slot = 0;
    inventory.armed_time = 0.0f;
    for (auto _ : state) {
        game_time += 1.0f / 60.0f;
        draw_item_views();
        benchmark::DoNotOptimize(color_buffer);
    }
}
BENCHMARK(key_held_in_full_view)->Unit(benchmark::kMicrosecond);
