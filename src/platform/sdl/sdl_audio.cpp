// Audio output through SDL: the device pulls blocks of the opened size, each mixed by the same
// refill as on Windows, so audio_clock means the same thing on every host. Without a sound device
// the game plays on through SDL's silent driver.
#define SDL_MAIN_HANDLED
#include <SDL.h>
#include <stdio.h>

#include "audio/mixer.h"
#include "platform/platform.h"

static SDL_AudioDeviceID audio_device;

static void refill(void*, Uint8* stream, int length)
{
    audio_refill_block(stream, static_cast<uint32_t>(length));
}

// Opens the device on the audio driver SDL picks (or SDL_AUDIODRIVER names), or on `driver`.
static int open_on_driver(const char* driver, const SDL_AudioSpec* wanted)
{
    if (driver)
        SDL_SetHintWithPriority(SDL_HINT_AUDIODRIVER, driver, SDL_HINT_OVERRIDE);
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        return 0;
    SDL_AudioSpec obtained;
    // No changes allowed: SDL converts for the hardware, and the refill always sees the opened format.
    audio_device = SDL_OpenAudioDevice(nullptr, 0, wanted, &obtained, 0);
    if (audio_device != 0)
        return 1;
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
    return 0;
}

int platform_audio_open(uint32_t, uint32_t samples_per_second, uint32_t channels, uint32_t bits_per_sample,
                        uint32_t block_bytes)
{
    uint32_t frame_bytes = bits_per_sample / 8 * channels;
    if (frame_bytes == 0)
        return 0;
    SDL_AudioSpec wanted = {};
    wanted.freq = static_cast<int>(samples_per_second);
    wanted.format = bits_per_sample == 16 ? AUDIO_S16LSB : AUDIO_U8;
    wanted.channels = static_cast<Uint8>(channels);
    wanted.samples = static_cast<Uint16>(block_bytes / frame_bytes);
    wanted.callback = refill;
    if (!open_on_driver(nullptr, &wanted)) {
        // No sound device: SDL's silent driver still pulls blocks in real time, so the mixer runs
        // and the game keeps its timing; the player hears nothing and is told why.
        char why[256];
        snprintf(why, sizeof why, "%s", SDL_GetError());
        if (!open_on_driver("dummy", &wanted))
            return 0;
        fprintf(stderr, "gloamhold: no sound device (%s); playing on without sound\n", why);
    }
    SDL_PauseAudioDevice(audio_device, 0);
    return 1;
}

void platform_audio_lock()
{
    if (audio_device != 0)
        SDL_LockAudioDevice(audio_device);
}

void platform_audio_unlock()
{
    if (audio_device != 0)
        SDL_UnlockAudioDevice(audio_device);
}

void platform_audio_voice_started(int32_t) {}
