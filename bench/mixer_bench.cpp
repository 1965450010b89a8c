// How long the mixer takes to fill one 1500-frame block (34 ms of sound at 44100 Hz) with 1, 8
// and 64 voices playing: half of them 16-bit stereo at 44100 Hz, half 8-bit mono at 22050 Hz.
#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <string>
#include <vector>

#include "assets/sound.h"
#include "audio/mixer.h"

namespace {

std::vector<uint8_t> noise(size_t bytes)
{
    std::vector<uint8_t> data(bytes);
    uint32_t state = 12345;
    for (uint8_t& byte : data) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<uint8_t>(state >> 16);
    }
    return data;
}

int32_t add_sound(uint32_t bits, uint32_t channels, uint32_t rate, std::vector<uint8_t>& data)
{
    int32_t index = registry_alloc(&sounds);
    *registry_at<sound>(&sounds, index) = sound{bits, channels, rate, data.size(), data.data()};
    return index;
}

} // namespace

static void mix_one_block(benchmark::State& state)
{
    audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000);
    // Ten seconds of each: no voice runs out while the same block is mixed over and over.
    std::vector<uint8_t> stereo = noise(441000 * 4);
    std::vector<uint8_t> mono = noise(220500);
    int32_t loud = add_sound(16, 2, 44100, stereo);
    int32_t quiet = add_sound(8, 1, 22050, mono);
    for (int64_t i = 0; i < state.range(0); ++i)
        play_sound(i % 2 ? quiet : loud);
    std::vector<uint8_t> block(6000);
    for (auto _ : state) {
        mix_block(block.data(), 1500);
        benchmark::DoNotOptimize(block.data());
    }
    state.SetLabel("voices: " + std::to_string(state.range(0)));
    free(voices.records);
    voices = {};
}
BENCHMARK(mix_one_block)->Arg(1)->Arg(8)->Arg(64)->Unit(benchmark::kMicrosecond);
