#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <vector>

#include "assets/sound.h"
#include "audio/mixer.h"
#include "core/settings.h"
#include "support/test_audio.h"
#include "support/test_heap.h"

namespace {

class mixer_test : public testing::Test {
protected:
    std::vector<std::vector<uint8_t>> pcm; // the sounds' sample data, alive for the whole test

    void SetUp() override
    {
        clear();
        ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000), 1);
    }
    void TearDown() override { clear(); }

    static void clear()
    {
        free(voices.records);
        voices = {};
        free(sounds.records);
        free(sounds.in_use);
        sounds = REGISTRY_OF(sound);
        AUDIO_VOLUME = 1.0f;
    }

    int32_t add_sound(uint32_t bits, uint32_t channels, uint32_t rate, std::vector<uint8_t> bytes)
    {
        pcm.push_back(std::move(bytes));
        int32_t index = registry_alloc(&sounds);
        sound* record = registry_at<sound>(&sounds, index);
        record->bits_per_sample = bits;
        record->channels = channels;
        record->sample_rate = rate;
        record->size = pcm.back().size();
        record->data = pcm.back().empty() ? nullptr : pcm.back().data();
        return index;
    }

    // 16-bit signed samples, interleaved when stereo.
    int32_t add_sound_16(uint32_t channels, uint32_t rate, const std::vector<int16_t>& samples)
    {
        std::vector<uint8_t> bytes(samples.size() * 2);
        memcpy(bytes.data(), samples.data(), bytes.size());
        return add_sound(16, channels, rate, bytes);
    }

    // One mixed block of the opened 16-bit output, as signed samples (interleaved when stereo).
    static std::vector<int16_t> mix_16(uint32_t frames)
    {
        std::vector<uint8_t> block(frames * audio_output.block_align, 0xEE);
        mix_block(block.data(), frames);
        std::vector<int16_t> samples(block.size() / 2);
        memcpy(samples.data(), block.data(), block.size());
        return samples;
    }

    // The device hands back a played block of `frames` frames: clock, mix, count.
    static std::vector<int16_t> refill_16(uint32_t frames)
    {
        std::vector<uint8_t> block(frames * audio_output.block_align);
        audio_refill_block(block.data(), static_cast<uint32_t>(block.size()));
        std::vector<int16_t> samples(block.size() / 2);
        memcpy(samples.data(), block.data(), block.size());
        return samples;
    }
};

} // namespace

TEST_F(mixer_test, audio_open_asks_the_device_for_the_format_and_starts_the_clock_at_zero)
{
    audio_clock = 5.0;
    audio_bytes_queued = 123;
    ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000), 1);
    EXPECT_EQ(audio_clock, 0.0);
    EXPECT_EQ(audio_bytes_queued, 0u);
    EXPECT_EQ(audio_output.block_align, 4u);
    const test_audio::open_request& request = test_audio::opens().back();
    EXPECT_EQ(request.device, 0xFFFFFFFFu);
    EXPECT_EQ(request.samples_per_second, 44100u);
    EXPECT_EQ(request.channels, 2u);
    EXPECT_EQ(request.bits_per_sample, 16u);
    EXPECT_EQ(request.block_bytes, 6000u);
}

TEST_F(mixer_test, audio_open_fails_when_the_device_does)
{
    test_audio::refuse_open();
    EXPECT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000), 0);
}

TEST_F(mixer_test, audio_open_refuses_formats_the_mixer_cannot_write)
{
    size_t asked = test_audio::opens().size();
    EXPECT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 24, 6000), 0);
    EXPECT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 6, 16, 6000), 0);
    EXPECT_EQ(test_audio::opens().size(), asked);
}

TEST_F(mixer_test, a_22050_hz_mono_sound_uses_each_source_frame_twice_on_both_channels)
{
    int32_t s = add_sound_16(1, 22050, {100, -200, 300});
    ASSERT_EQ(play_sound(s), 1);
    std::vector<int16_t> out = mix_16(8);
    std::vector<int16_t> expected = {100, 100, 100, 100, -200, -200, -200, -200, 300, 300, 300, 300,
                                     0,   0,   0,   0};
    EXPECT_EQ(out, expected);
    EXPECT_EQ(voices.records[0].active, 0) << "the sound ran out within the block";
}

TEST_F(mixer_test, two_full_scale_voices_wrap_around_instead_of_clipping)
{
    int32_t loud = add_sound_16(1, 44100, {30000, -30000});
    play_sound(loud);
    play_sound(loud);
    std::vector<int16_t> out = mix_16(2);
    // 60000 does not fit in 16 bits and comes out as 60000 - 65536; likewise -60000 + 65536.
    EXPECT_EQ(out[0], 60000 - 65536);
    EXPECT_EQ(out[1], 60000 - 65536);
    EXPECT_EQ(out[2], -60000 + 65536);
    EXPECT_EQ(out[3], -60000 + 65536);
}

TEST_F(mixer_test, a_sound_started_twice_in_quick_succession_plays_twice_overlapping)
{
    std::vector<int16_t> ramp(6000);
    for (size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<int16_t>(i);
    int32_t s = add_sound_16(1, 44100, ramp);
    play_sound(s);
    refill_16(1500);
    refill_16(1500);
    play_sound(s); // a block later than the first: both copies sound in the next block, shifted
    std::vector<int16_t> out = refill_16(1500);

    ASSERT_EQ(voices.count, 2);
    uint64_t first = static_cast<uint64_t>((audio_clock - voices.records[0].start_time) * 44100);
    uint64_t second = static_cast<uint64_t>((audio_clock - voices.records[1].start_time) * 44100);
    EXPECT_NEAR(static_cast<double>(first - second), 1500.0, 1.0);
    for (uint32_t j = 0; j < 1500; j += 499) {
        EXPECT_EQ(out[2 * j], static_cast<int16_t>(ramp[first + j] + ramp[second + j])) << "frame " << j;
        EXPECT_EQ(out[2 * j + 1], out[2 * j]);
    }
    EXPECT_EQ(voices.records[0].active, 1);
    EXPECT_EQ(voices.records[1].active, 1);
}

TEST_F(mixer_test, two_starts_before_one_refill_double_the_sound)
{
    int32_t s = add_sound_16(1, 44100, {1000, 2000});
    play_sound(s);
    play_sound(s);
    std::vector<int16_t> out = mix_16(2);
    EXPECT_EQ(out, (std::vector<int16_t>{2000, 2000, 4000, 4000}));
}

TEST_F(mixer_test, at_half_volume_a_sample_of_minus_2_is_read_unsigned_and_mixed_as_32767)
{
    int32_t s = add_sound_16(1, 44100, {-2});
    AUDIO_VOLUME = 0.5f;
    play_sound(s);
    std::vector<int16_t> out = mix_16(1);
    EXPECT_EQ(out[0], 32767); // 65534 x 0.5
    EXPECT_EQ(out[1], 32767);
}

TEST_F(mixer_test, at_full_volume_a_sample_of_minus_2_stays_minus_2)
{
    int32_t s = add_sound_16(1, 44100, {-2});
    play_sound(s);
    std::vector<int16_t> out = mix_16(1);
    EXPECT_EQ(out[0], -2);
    EXPECT_EQ(out[1], -2);
}

TEST_F(mixer_test, an_8_bit_mono_sound_is_centred_and_widened_on_both_channels)
{
    int32_t s = add_sound(8, 1, 44100, {255, 128, 0});
    play_sound(s);
    std::vector<int16_t> out = mix_16(3);
    EXPECT_EQ(out, (std::vector<int16_t>{127 * 256, 127 * 256, 0, 0, -128 * 256, -128 * 256}));
}

TEST_F(mixer_test, an_8_bit_stereo_sound_keeps_left_and_right_apart)
{
    int32_t s = add_sound(8, 2, 44100, {0, 192, 160, 128});
    play_sound(s);
    std::vector<int16_t> out = mix_16(2);
    EXPECT_EQ(out, (std::vector<int16_t>{-128 * 256, 64 * 256, 32 * 256, 0}));
}

TEST_F(mixer_test, a_16_bit_stereo_sound_keeps_left_and_right_apart)
{
    int32_t s = add_sound_16(2, 44100, {-5, 7, 11, -13});
    play_sound(s);
    EXPECT_EQ(mix_16(2), (std::vector<int16_t>{-5, 7, 11, -13}));
}

TEST_F(mixer_test, an_8_bit_sound_scaled_by_the_volume_is_truncated_toward_zero)
{
    int32_t s = add_sound(8, 1, 44100, {129, 127});
    AUDIO_VOLUME = 0.3f;
    play_sound(s);
    std::vector<int16_t> out = mix_16(2);
    EXPECT_EQ(out[0], static_cast<int16_t>(256.0f * 0.3f));   // 76.8 -> 76
    EXPECT_EQ(out[2], static_cast<int16_t>(-256.0f * 0.3f));  // -76.8 -> -76
}

TEST_F(mixer_test, an_8_bit_output_takes_the_high_byte_of_16_bit_sources_plus_128)
{
    ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 1, 8, 1500), 1);
    int32_t wide = add_sound_16(1, 44100, {0x1234, -1});
    int32_t narrow = add_sound(8, 1, 44100, {10, 20});
    play_sound(wide);
    play_sound(narrow);
    std::vector<uint8_t> block(2, 0xEE);
    mix_block(block.data(), 2);
    // 0x12 + 128 + 10, and 0xFF + 128 + 20 wrapping in 8 bits.
    EXPECT_EQ(block[0], 0x12 + 128 + 10);
    EXPECT_EQ(block[1], static_cast<uint8_t>(0xFF + 128 + 20));
}

TEST_F(mixer_test, a_mono_output_takes_the_average_of_a_stereo_source)
{
    ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 1, 16, 3000), 1);
    int32_t s = add_sound(8, 2, 44100, {129, 132}); // 256 and 1024 once widened
    play_sound(s);
    std::vector<int16_t> out = mix_16(1);
    EXPECT_EQ(out[0], (256 + 1024) / 2);
}

TEST_F(mixer_test, a_voice_ending_mid_block_leaves_the_rest_silent_and_frees_its_record)
{
    int32_t s = add_sound_16(1, 44100, {9, 9, 9});
    play_sound(s);
    std::vector<int16_t> out = mix_16(6);
    EXPECT_EQ(out, (std::vector<int16_t>{9, 9, 9, 9, 9, 9, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(voices.records[0].active, 0);
    int32_t other = add_sound_16(1, 44100, {1});
    play_sound(other);
    EXPECT_EQ(voices.count, 1) << "the ended voice's record is reused";
    EXPECT_EQ(voices.records[0].sound, other);
}

TEST_F(mixer_test, a_voice_that_fills_the_block_stays_active_and_continues_in_the_next)
{
    std::vector<int16_t> ramp(2000);
    for (size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<int16_t>(i + 1);
    int32_t s = add_sound_16(1, 44100, ramp);
    play_sound(s);
    refill_16(1500);
    EXPECT_EQ(voices.records[0].active, 1);
    std::vector<int16_t> next = refill_16(1500);
    uint64_t offset = static_cast<uint64_t>((audio_clock - voices.records[0].start_time) * 44100);
    EXPECT_NEAR(static_cast<double>(offset), 1500.0, 1.0);
    EXPECT_EQ(next[0], ramp[offset]);
    EXPECT_EQ(next[2 * (2000 - offset - 1)], 2000);
    EXPECT_EQ(next[2 * (2000 - offset)], 0);
    EXPECT_EQ(voices.records[0].active, 0);
}

TEST_F(mixer_test, an_empty_sound_ends_at_once)
{
    int32_t s = add_sound(16, 1, 44100, {});
    play_sound(s);
    EXPECT_EQ(mix_16(2), (std::vector<int16_t>{0, 0, 0, 0}));
    EXPECT_EQ(voices.records[0].active, 0);
}

TEST_F(mixer_test, a_voice_of_sound_minus_1_never_plays_and_keeps_its_record)
{
    play_sound(-1);
    EXPECT_EQ(mix_16(2), (std::vector<int16_t>{0, 0, 0, 0}));
    EXPECT_EQ(voices.records[0].active, 1);
    play_sound(-1);
    EXPECT_EQ(voices.count, 2);
}

TEST_F(mixer_test, an_unknown_sample_format_adds_silence_but_plays_to_its_end)
{
    int32_t s = add_sound(24, 1, 44100, {1, 2, 3, 4, 5, 6});
    play_sound(s);
    EXPECT_EQ(mix_16(3), (std::vector<int16_t>{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(voices.records[0].active, 0);
}

TEST_F(mixer_test, the_voice_list_grows_by_10)
{
    int32_t s = add_sound_16(1, 44100, {1});
    test_heap::reset();
    for (int i = 0; i < 21; ++i)
        ASSERT_EQ(play_sound(s), 1);
    EXPECT_EQ(voices.count, 21);
    EXPECT_EQ(voices.capacity, 30);
    EXPECT_EQ(test_heap::sizes_in_units_of(sizeof(voice)), (std::vector<size_t>{10, 20, 30}));
}

TEST_F(mixer_test, a_failed_growth_returns_0_keeps_the_capacity_raised_and_is_retried)
{
    int32_t s = add_sound_16(1, 44100, {1});
    for (int i = 0; i < 10; ++i)
        play_sound(s);
    test_heap::fail_request(1);
    EXPECT_EQ(play_sound(s), 0);
    EXPECT_EQ(voices.capacity, 20);
    EXPECT_EQ(voices.count, 10);
    EXPECT_EQ(play_sound(s), 1);
    EXPECT_EQ(voices.count, 11);
    EXPECT_EQ(voices.capacity, 20);
    EXPECT_EQ(voices.allocated, 20);
}

TEST_F(mixer_test, a_started_voice_records_the_clock_and_is_reported)
{
    int32_t s = add_sound_16(1, 44100, {1});
    audio_clock = 2.5;
    play_sound(s);
    EXPECT_EQ(voices.records[0].start_time, 2.5);
    EXPECT_EQ(test_audio::started(), (std::vector<int32_t>{s}));
}

TEST_F(mixer_test, the_refill_sets_the_clock_from_the_bytes_queued_before_mixing)
{
    refill_16(1500);
    EXPECT_EQ(audio_clock, 0.0);
    EXPECT_EQ(audio_bytes_queued, 6000u);
    refill_16(1500);
    EXPECT_EQ(audio_clock, 6000.0 / 4 / 44100);
    EXPECT_EQ(audio_bytes_queued, 12000u);
}

TEST_F(mixer_test, the_voice_list_is_locked_against_the_refill_and_the_lock_is_released)
{
    int32_t s = add_sound_16(1, 44100, {1});
    play_sound(s);
    refill_16(10);
    EXPECT_EQ(test_audio::deepest_lock(), 1);
    EXPECT_EQ(test_audio::lock_depth(), 0);
}

// Random sounds of every format and rate, started at random moments, at volumes that keep, halve,
// double or overflow the samples: the vectorised mixer gives the bytes the plain one gives.
TEST_F(mixer_test, vectorised_mixing_matches_the_plain_mixer_on_random_voices)
{
    srand(7);
    const uint32_t rates[] = {8000, 11025, 22050, 44100, 48000, 96000};
    const float volumes[] = {1.0f, 0.5f, 2.0f, 0.3f, 1e6f, 70000.0f};
    for (int32_t round = 0; round < 24; ++round) {
        clear();
        pcm.clear();
        AUDIO_VOLUME = volumes[round % 6];
        uint32_t output_channels = round % 4 == 3 ? 1 : 2;
        ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, output_channels, round % 5 == 4 ? 8 : 16, 6000), 1);
        for (int32_t v = 0; v < 12; ++v) {
            uint32_t bits = rand() % 4 == 0 ? 8 : 16;
            uint32_t channels = 1 + rand() % 2;
            std::vector<uint8_t> bytes(static_cast<size_t>(rand() % 9000) * bits / 8 * channels);
            for (uint8_t& byte : bytes)
                byte = static_cast<uint8_t>(rand());
            int32_t index = add_sound(bits, channels, rates[rand() % 6], bytes);
            ASSERT_EQ(play_sound(index), 1);
            voices.records[voices.count - 1].start_time = -static_cast<double>(rand() % 100) / 1000.0;
        }
        std::vector<voice> started(voices.records, voices.records + voices.count);
        std::vector<uint8_t> plain(1500 * audio_output.block_align), vectorised(plain.size());
        mixer_vectorised = 0;
        mix_block(plain.data(), 1500);
        std::vector<voice> after_plain(voices.records, voices.records + voices.count);
        std::copy(started.begin(), started.end(), voices.records);
        mixer_vectorised = 1;
        mix_block(vectorised.data(), 1500);
        EXPECT_EQ(plain, vectorised) << "round " << round;
        for (int32_t v = 0; v < voices.count; ++v)
            EXPECT_EQ(voices.records[v].active, after_plain[static_cast<size_t>(v)].active) << "voice " << v;
    }
}
