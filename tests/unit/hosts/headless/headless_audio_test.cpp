#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "assets/sound.h"
#include "audio/mixer.h"
#include "hosts/headless/headless_audio.h"
#include "support/temp_files.h"

namespace {

class headless_audio_test : public testing::Test {
protected:
    std::vector<int16_t> samples;

    void SetUp() override
    {
        headless_audio_reset();
        free(voices.records);
        voices = {};
        free(sounds.records);
        free(sounds.in_use);
        sounds = REGISTRY_OF(sound);
        ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000), 1);
    }
    void TearDown() override { headless_audio_reset(); }

    int32_t add_sound(size_t frames, int16_t value)
    {
        samples.assign(frames, value);
        int32_t index = registry_alloc(&sounds);
        sound* record = registry_at<sound>(&sounds, index);
        *record = sound{16, 1, 44100, frames * 2, reinterpret_cast<uint8_t*>(samples.data())};
        return index;
    }
};

const double block_seconds = 1500.0 / 44100.0;

uint32_t little_32(const std::string& bytes, size_t at)
{
    const unsigned char* b = reinterpret_cast<const unsigned char*>(bytes.data() + at);
    return b[0] | b[1] << 8 | b[2] << 16 | static_cast<uint32_t>(b[3]) << 24;
}

} // namespace

TEST_F(headless_audio_test, the_first_block_is_mixed_when_the_first_block_of_silence_has_played)
{
    headless_audio_advance(block_seconds * 0.999);
    EXPECT_EQ(headless_audio_blocks_mixed(), 0u);
    headless_audio_advance(block_seconds);
    EXPECT_EQ(headless_audio_blocks_mixed(), 1u);
    EXPECT_EQ(audio_clock, 0.0);
}

TEST_F(headless_audio_test, a_second_of_virtual_time_mixes_every_block_that_finished_in_it)
{
    headless_audio_advance(1.0);
    EXPECT_EQ(headless_audio_blocks_mixed(), static_cast<uint64_t>(1.0 / block_seconds));
    EXPECT_EQ(audio_bytes_queued, headless_audio_blocks_mixed() * 6000);
    headless_audio_advance(0.5); // time never runs backwards: nothing more
    EXPECT_EQ(headless_audio_blocks_mixed(), static_cast<uint64_t>(1.0 / block_seconds));
}

TEST_F(headless_audio_test, the_wav_holds_every_mixed_block_in_the_opened_format)
{
    std::string path = test_folder() + "/out.wav";
    FILE* file = fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(headless_audio_start_wav(file), 1);
    play_sound(add_sound(100, 1234));
    headless_audio_advance(3 * block_seconds);
    ASSERT_EQ(headless_audio_finish_wav(), 1);
    fclose(file);

    std::string wav = read_all(path);
    ASSERT_EQ(wav.size(), 44u + 3 * 6000);
    EXPECT_EQ(wav.substr(0, 4), "RIFF");
    EXPECT_EQ(little_32(wav, 4), 36u + 3 * 6000);
    EXPECT_EQ(wav.substr(8, 8), "WAVEfmt ");
    EXPECT_EQ(little_32(wav, 20) & 0xFFFF, 1u);        // PCM
    EXPECT_EQ(little_32(wav, 20) >> 16, 2u);           // channels
    EXPECT_EQ(little_32(wav, 24), 44100u);             // rate
    EXPECT_EQ(little_32(wav, 28), 44100u * 4);         // bytes per second
    EXPECT_EQ(little_32(wav, 32), 4u | (16u << 16));   // block align, bits
    EXPECT_EQ(wav.substr(36, 4), "data");
    EXPECT_EQ(little_32(wav, 40), 3u * 6000);
    int16_t first[2], after[2];
    memcpy(first, wav.data() + 44, 4);
    memcpy(after, wav.data() + 44 + 100 * 4, 4);
    EXPECT_EQ(first[0], 1234);
    EXPECT_EQ(first[1], 1234);
    EXPECT_EQ(after[0], 0);
}

TEST_F(headless_audio_test, started_sounds_are_logged_with_the_tick_once_logging_is_on)
{
    int32_t s = add_sound(10, 1);
    play_sound(s);
    EXPECT_EQ(headless_sound_starts.count, 0);
    headless_audio_log_sounds(0);
    play_sound(s);
    headless_audio_log_sounds(12);
    play_sound(s);
    ASSERT_EQ(headless_sound_starts.count, 2);
    EXPECT_EQ(headless_sound_starts.entries[0].tick, 0);
    EXPECT_EQ(headless_sound_starts.entries[1].tick, 12);
    EXPECT_EQ(headless_sound_starts.entries[1].sound, s);
}

TEST_F(headless_audio_test, a_closed_device_mixes_nothing)
{
    headless_audio_reset();
    headless_audio_advance(1.0);
    EXPECT_EQ(headless_audio_blocks_mixed(), 0u);
}
