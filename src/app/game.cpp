#include "app/game.h"

#include <math.h>

#include "audio/mixer.h"
#include "core/debug_flags.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/settings.h"

float fov_target;
float fov_current;
void (*texture_reload_hook)();
start_placement requested_start_placement;

int game_init()
{
    if (!audio_open(AUDIO_DEFAULT_DEVICE, GAME_AUDIO_RATE, GAME_AUDIO_CHANNELS, GAME_AUDIO_BITS,
                    GAME_AUDIO_BLOCK_BYTES))
        return 0;
    game_time = 0.0f;
    fov_current = FOV * DEGREES_TO_RADIANS;
    return 1;
}

static void flip(int32_t* flag)
{
    *flag = *flag == 0 ? 1 : 0;
}

struct debug_key {
    uint8_t code;
    int32_t* flag;
};

// F9 to F11 flip the rendering settings themselves.
static const debug_key debug_keys[] = {
    {KEYCODE_F1 + 0, &debug_info},
    {KEYCODE_F1 + 1, &debug_wireframe},
    {KEYCODE_F1 + 2, &debug_show_colliders},
    {KEYCODE_F1 + 3, &debug_show_areas},
    {KEYCODE_F1 + 4, &debug_lighting},
    {KEYCODE_F1 + 5, &debug_show_occlusion},
    {KEYCODE_F1 + 6, &debug_show_lookup_tables},
    {KEYCODE_F1 + 7, &debug_portal_culling},
    {KEYCODE_F1 + 8, &LIGHT_DITHERING},
    {KEYCODE_F1 + 9, &TEXTURE_INTERPOLATION},
    {KEYCODE_F1 + 10, &TEXTURE_DITHERING},
};

// Only a key that went down since the last update flips its switch, once.
static void toggle_debug_flags()
{
    for (const debug_key& key : debug_keys) {
        if (key_state[key.code] != KEY_PRESSED)
            continue;
        flip(key.flag);
        if (key.code == KEYCODE_F11 && texture_reload_hook)
            texture_reload_hook();
    }
}

// Mouse capture, time scaling and zoom, while no dialogue is open.
static void apply_control_keys()
{
    if (key_state[KEYCODE_LBUTTON] != KEY_UP && mouse_captured == 0) {
        mouse_captured = 1;
        key_state[KEYCODE_LBUTTON] = KEY_UP; // the click that captures the mouse is not seen by gameplay
    }
    if (key_state[KEYCODE_ESCAPE] != KEY_UP)
        mouse_captured = 0;
    if (key_state[KEYCODE_BACKSPACE] != KEY_UP)
        tick_dt *= 0.25f;
    if (key_state[KEYCODE_ADD] != KEY_UP)
        tick_dt *= 10.0f;
    if (key_state[KEYCODE_MBUTTON] != KEY_UP || key_state[KEYCODE_Z] != KEY_UP)
        fov_target = static_cast<float>(FOV / 1.5 * static_cast<double>(DEGREES_TO_RADIANS));
    else
        fov_target = FOV * DEGREES_TO_RADIANS;
}

void game_update()
{
    toggle_debug_flags();
    apply_control_keys();
    // Eases toward the target with the update's own (possibly scaled) length.
    fov_current += (1.0f - expf(-16.0f * tick_dt)) * (fov_target - fov_current);
}

// Nothing of the world is drawn yet: the frame is the renderer's, and mouse-look turns the player.
void game_render()
{
}
