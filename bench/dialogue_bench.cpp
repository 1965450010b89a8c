// How long the dialogue runtime takes to walk the shipped scripts (from the top and from the
// answers that run statements and random), and how long the dialogue box takes to draw a frame
// with the speech fully out and its answers.
#include <benchmark/benchmark.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <vector>

#include "assets/dialogue.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "game/dialogue.h"
#include "ui/dialogue_box.h"
#include "ui/font.h"

// The mixer is not part of these measurements.
int play_sound(int32_t)
{
    return 1;
}

namespace {

int32_t warden = -1, maud = -1;

void load_once()
{
    static bool loaded = false;
    if (loaded)
        return;
    loaded = true;
    if (chdir(GLOAMHOLD_SOURCE_DIR) != 0 || (warden = load_dialogue("warden.dlg")) < 0 ||
        (maud = load_dialogue("maud.dlg")) < 0 || !load_game_fonts()) {
        fprintf(stderr, "the shipped dialogues or fonts did not load\n");
        exit(1);
    }
}

// The first entry whose text is exactly `label` (a label ending in ":").
int32_t entry_named(int32_t index, const char* label)
{
    const dialogue* d = registry_at<dialogue>(&dialogues, index);
    size_t length = strlen(label);
    for (int32_t i = 0; i < d->entry_count; ++i)
        if (d->entries[i].end - d->entries[i].start == length && memcmp(d->text + d->entries[i].start, label, length) == 0)
            return i;
    fprintf(stderr, "no entry %s\n", label);
    exit(1);
}

// One walk of the script from `start` (-1: the top), with the variables as a game would have them.
void walk(benchmark::State& state, const int32_t* loaded, const char* label)
{
    load_once();
    int32_t index = *loaded;
    dialogue_state.current = index;
    int32_t start = label ? entry_named(index, label) : -1;
    game_time = 12.3f;
    for (auto _ : state) {
        run_dialogue(start);
        benchmark::DoNotOptimize(dialogue_state.text_length);
    }
    if (dialogue_state.choice_count == 0)
        state.SkipWithError("the walk offered no answer");
}

void BM_run_dialogue_warden_top(benchmark::State& state)
{
    walk(state, &warden, nullptr);
}
BENCHMARK(BM_run_dialogue_warden_top)->Unit(benchmark::kMicrosecond);

void BM_run_dialogue_warden_dice(benchmark::State& state)
{
    walk(state, &warden, "dice:");
}
BENCHMARK(BM_run_dialogue_warden_dice)->Unit(benchmark::kMicrosecond);

void BM_run_dialogue_maud_top(benchmark::State& state)
{
    walk(state, &maud, nullptr);
}
BENCHMARK(BM_run_dialogue_maud_top)->Unit(benchmark::kMicrosecond);

void BM_run_dialogue_maud_story(benchmark::State& state)
{
    walk(state, &maud, "story:");
}
BENCHMARK(BM_run_dialogue_maud_story)->Unit(benchmark::kMicrosecond);

// The Warden's greeting fully out with his three answers, the second highlighted, at 640 x 480.
void BM_draw_dialogue(benchmark::State& state)
{
    load_once();
    std::vector<uint16_t> pixels(640 * 480, 0x8000);
    color_buffer = pixels.data();
    frame_width = 640;
    frame_height = 480;
    dialogue_state.current = warden;
    run_dialogue(-1);
    dialogue_state.phase = DIALOGUE_PHASE_SHOWN;
    dialogue_state.phase_start = 0.0f;
    dialogue_state.highlighted = 1;
    game_time = 1.0f;
    for (auto _ : state) {
        draw_dialogue();
        benchmark::DoNotOptimize(pixels.data());
    }
    color_buffer = nullptr;
}
BENCHMARK(BM_draw_dialogue)->Unit(benchmark::kMicrosecond);

} // namespace
