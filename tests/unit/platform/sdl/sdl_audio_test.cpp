// SDL audio through its dummy driver, which plays in real time without a sound card.
#include <gtest/gtest.h>

#define SDL_MAIN_HANDLED
#include <SDL.h>
#include <stdlib.h>
#include <string>

#include "assets/sound.h"
#include "audio/mixer.h"
#include "platform/platform.h"

TEST(sdl_audio, the_device_keeps_pulling_blocks_through_the_refill_while_sounds_start)
{
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    ASSERT_EQ(audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000), 1) << SDL_GetError();
    static uint8_t silence[64];
    int32_t s = registry_alloc(&sounds);
    *registry_at<sound>(&sounds, s) = sound{8, 1, 44100, sizeof silence, silence};
    // Sounds start every 10 ms until the device has asked for two blocks (70 ms of playing; a busy
    // machine may take longer to ask, so up to ten seconds).
    uint64_t queued = 0;
    for (int waited = 0; waited < 10000 && queued < 2u * 6000; waited += 10) {
        EXPECT_EQ(play_sound(s), 1) << "the lock is taken while the device refills";
        SDL_Delay(10);
        platform_audio_lock();
        queued = audio_bytes_queued;
        platform_audio_unlock();
    }
    EXPECT_GE(queued, 2u * 6000);
    EXPECT_EQ(queued % 6000, 0u) << "every refill is one whole block of 1500 frames";
}

TEST(sdl_audio, without_a_sound_device_the_game_plays_on_silently_and_says_so_in_one_line)
{
    SDL_QuitSubSystem(SDL_INIT_AUDIO); // whatever an earlier case of this program opened
    setenv("SDL_AUDIODRIVER", "no_such_sound_device", 1);
    testing::internal::CaptureStderr();
    int opened = audio_open(AUDIO_DEFAULT_DEVICE, 44100, 2, 16, 6000);
    std::string said = testing::internal::GetCapturedStderr();
    ASSERT_EQ(opened, 1) << SDL_GetError();
    EXPECT_STREQ(SDL_GetCurrentAudioDriver(), "dummy");
    EXPECT_EQ(said.find("gloamhold: no sound device ("), 0u) << said;
    EXPECT_NE(said.find("); playing on without sound\n"), std::string::npos) << said;
    EXPECT_EQ(said.find('\n'), said.size() - 1) << "one line: " << said;
    // The mixer still runs: the silent device asks for whole blocks as a real one would.
    uint64_t queued = 0;
    for (int waited = 0; waited < 10000 && queued < 2u * 6000; waited += 10) {
        SDL_Delay(10);
        platform_audio_lock();
        queued = audio_bytes_queued;
        platform_audio_unlock();
    }
    EXPECT_GE(queued, 2u * 6000);
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}
