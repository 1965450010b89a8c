// How long one update of interaction, inventory and doors takes on the shipped level: the view
// ray and the focus, the inventory bar and the door swings, as the tick driver runs them.
#include <benchmark/benchmark.h>

#include <stdio.h>
#include <stdlib.h>

#include "assets/world.h"
#include "core/loop_state.h"
#include "game/interaction.h"
#include "support/shipped_level.h"

// The mixer is not part of these measurements: sounds are counted, not played.
int play_sound(int32_t)
{
    return 1;
}

namespace {

void load_level_once()
{
    static bool loaded = false;
    if (loaded)
        return;
    loaded = true;
    if (!load_shipped_level()) {
        fprintf(stderr, "the shipped level did not load\n");
        exit(1);
    }
}

object* player()
{
    return registry_at<object>(&objects, PLAYER_OBJECT);
}

// One update's gameplay steps, in the tick driver's order.
void interaction_tick()
{
    update_interaction(view_forward(player()));
    update_inventory();
    update_doors();
    game_time += tick_dt;
}

// In the yard before the oak door, looking at it: the ray finds the door, nothing is pressed and
// every door is at rest.
void BM_interaction_tick_at_rest(benchmark::State& state)
{
    load_level_once();
    clear_interaction();
    player()->position = {0.15f, 0, 8.7f};
    player()->yaw = 0;
    player()->pitch = 0;
    tick_dt = 0.025f;
    game_time = 0;
    for (auto _ : state)
        interaction_tick();
    if (focus_object < 0)
        state.SkipWithError("the door was not in focus");
}

// The same place with every door of the keep swinging and the inventory bar easing toward a
// new slot: the busiest update short of a pickup.
void BM_interaction_tick_doors_swinging(benchmark::State& state)
{
    load_level_once();
    clear_interaction();
    player()->position = {0.15f, 0, 8.7f};
    player()->yaw = 0;
    player()->pitch = 0;
    tick_dt = 0.025f;
    game_time = 0;
    inventory.slot_count = 3;
    inventory.display_open = 1;
    for (auto _ : state) {
        state.PauseTiming();
        for (int32_t i = 0; i < doors.count; ++i) {
            door* d = registry_at<door>(&doors, i);
            d->from_yaw = d->closed_yaw;
            d->to_yaw = d->closed_yaw + 1.0f;
            d->swing_start = game_time - 0.1f;
            registry_at<object>(&objects, d->object)->yaw = d->closed_yaw;
        }
        inventory.shown_selection = 0.0f;
        inventory.target_selection = 2.0f;
        inventory.last_input_time = game_time;
        state.ResumeTiming();
        interaction_tick();
    }
}

} // namespace

BENCHMARK(BM_interaction_tick_at_rest)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_interaction_tick_doors_swinging)->Unit(benchmark::kMicrosecond);
