// The SDL host's input: SDL keys and buttons mapped onto the Windows virtual-key codes that
// key_state is indexed by, and SDL events turned into the window procedure's input rules.
#pragma once

#define SDL_MAIN_HANDLED
#include <SDL.h>
#include <stdint.h>

#include "hosts/window_layout.h"

struct sdl_input {
    client_point centre;    // of the client area
    int32_t relative;       // the mouse is captured: SDL reports only relative motion
    int32_t window_closed;  // Escape with the mouse free, or the window's close button
};

// The virtual-key code for an SDL key, 0 for keys the game has no code for.
uint32_t sdl_virtual_key(SDL_Keycode key);

// One SDL event applied to the input state; events that are not input are ignored.
void sdl_input_event(sdl_input* input, const SDL_Event* event);
