// Wave-out through Wine (ALSA's default device is the null device on test machines).
#include <gtest/gtest.h>

#include <windows.h>

#include "audio/mixer.h"
#include "platform/platform.h"

TEST(wave_out, an_opened_device_keeps_asking_for_blocks_which_the_refill_mixes_and_counts)
{
    ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000), 1);
    // Two refills take 70 ms of playing; a busy machine may take longer to ask, so wait up to ten seconds.
    uint64_t queued = 0;
    double clock = 0;
    for (int waited = 0; waited < 10000 && queued < 2u * 6000; waited += 20) {
        Sleep(20);
        platform_audio_lock(); // the count is written on the audio thread
        queued = audio_bytes_queued;
        clock = audio_clock;
        platform_audio_unlock();
    }
    EXPECT_GE(queued, 2u * 6000);
    EXPECT_EQ(queued % 6000, 0u);
    EXPECT_EQ(clock, static_cast<double>(queued - 6000) / 4 / 44100);
}

TEST(wave_out, a_device_that_cannot_be_opened_fails_the_open)
{
    EXPECT_EQ(platform_audio_open(1000, 44100, 2, 16, 6000), 0); // no such device
}
