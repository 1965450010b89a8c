// How long one update of the player and each collision query take, in a room built in code (a
// floor, four walls, a platform, crates and pillars) and in the shipped level.
#include <benchmark/benchmark.h>

#include <float.h>
#include <stdio.h>
#include <stdlib.h>

#include "assets/model.h"
#include "assets/world.h"
#include "core/loop_state.h"
#include "game/collision.h"
#include "game/player.h"
#include "support/collision_scene.h"
#include "support/shipped_level.h"

// The mixer is not part of these measurements: sounds are counted, not played.
int play_sound(int32_t)
{
    return 1;
}

namespace {

// The queries read the object and model pools; each world keeps its own and is swapped in whole.
struct world_pools {
    registry scene_objects;
    registry scene_models;
};

enum world_kind { ROOM, SHIPPED };

world_pools worlds[2];

void make_worlds()
{
    static bool made = false;
    if (made)
        return;
    made = true;
    build_room_scene();
    worlds[ROOM] = {objects, models};
    objects = REGISTRY_OF(object);
    models = REGISTRY_OF(model);
    if (!load_shipped_level()) {
        fprintf(stderr, "the shipped level did not load\n");
        exit(1);
    }
    worlds[SHIPPED] = {objects, models};
}

void enter_world(world_kind kind)
{
    make_worlds();
    objects = worlds[kind].scene_objects;
    models = worlds[kind].scene_models;
}

object* player()
{
    return registry_at<object>(&objects, PLAYER_OBJECT);
}

// One fixed update, walking forward in a wide circle, as the tick driver runs it.
void BM_update_player(benchmark::State& state)
{
    enter_world(static_cast<world_kind>(state.range(0)));
    clear_player_motion();
    player()->position = {0, 0, 0};
    player()->health = player()->health_max;
    tick_dt = 0.025f;
    game_time = 0;
    key_state['W'] = KEY_HELD;
    for (auto _ : state) {
        object* p = player();
        p->previous_position = p->position;
        p->yaw += 0.02f;
        update_player(p);
        game_time += tick_dt;
    }
    key_state['W'] = KEY_UP;
}

// The ground probe under the player at the start.
void BM_cast_ray(benchmark::State& state)
{
    enter_world(static_cast<world_kind>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(cast_ray({0, -0.85f, 0}, {0, 1, 0}, FLT_MAX));
}

// The lower body sphere taking one walking step toward a wall (the room's at z = 10, the keep's at
// z = 10 beside its door).
void BM_sweep_sphere(benchmark::State& state)
{
    enter_world(static_cast<world_kind>(state.range(0)));
    sphere lower = {{2, -0.85f, 9.5f}, 0.35f};
    for (auto _ : state)
        benchmark::DoNotOptimize(sweep_sphere(&lower, {0, 0, 1}, 0.1f));
}

// The push-out test of the body standing at the start.
void BM_overlap_capsule(benchmark::State& state)
{
    enter_world(static_cast<world_kind>(state.range(0)));
    capsule body = {{0, -0.85f, 0}, {0, -1.75f, 0}, 0.35f};
    for (auto _ : state)
        benchmark::DoNotOptimize(overlap_capsule(&body));
}

// The climb probe ahead of the player at the foot of a wall.
void BM_nearest_edge_point(benchmark::State& state)
{
    enter_world(static_cast<world_kind>(state.range(0)));
    capsule reach = {{2, -2.15f, 9.7f}, {2, -1.25f, 9.7f}, 0.4f};
    vec3 edge;
    for (auto _ : state)
        benchmark::DoNotOptimize(nearest_edge_point(&reach, &edge));
}

} // namespace

BENCHMARK(BM_update_player)->ArgName("shipped")->Arg(ROOM)->Arg(SHIPPED)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_cast_ray)->ArgName("shipped")->Arg(ROOM)->Arg(SHIPPED)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_sweep_sphere)->ArgName("shipped")->Arg(ROOM)->Arg(SHIPPED)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_overlap_capsule)->ArgName("shipped")->Arg(ROOM)->Arg(SHIPPED)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_nearest_edge_point)->ArgName("shipped")->Arg(ROOM)->Arg(SHIPPED)->Unit(benchmark::kMicrosecond);
