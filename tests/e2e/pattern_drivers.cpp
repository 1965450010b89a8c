// Drivers for the end-to-end tests of the hosts: the game's start-up opens audio as the game
// does, every frame draws a known pattern, and with GLOAMHOLD_E2E_CRASH set the 20th update
// faults, so that the crash handler can be seen at work.
#include <stdlib.h>

#include "app/game.h"
#include "audio/mixer.h"
#include "core/frame.h"
#include "pattern.h"

static int updates;

int game_init()
{
    return audio_open(AUDIO_DEFAULT_DEVICE, GAME_AUDIO_RATE, GAME_AUDIO_CHANNELS, GAME_AUDIO_BITS,
                      GAME_AUDIO_BLOCK_BYTES);
}

void game_update()
{
    updates += 1;
    if (updates == 20 && getenv("GLOAMHOLD_E2E_CRASH")) {
        volatile int* nowhere = nullptr;
        *nowhere = 1;
    }
}

void game_render()
{
    if (!color_buffer)
        return;
    for (int32_t y = 0; y < frame_height; ++y)
        for (int32_t x = 0; x < frame_width; ++x)
            color_buffer[y * frame_width + x] = e2e_pattern_pixel(x, y);
}
