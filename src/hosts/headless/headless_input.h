// The headless host's stand-in for the window's input: a virtual cursor and keyboard that turn
// scripted events into the same input rules the window procedure applies.
#pragma once

#include <stdint.h>

#include "hosts/headless/input_script.h"
#include "hosts/window_layout.h"

struct headless_input {
    client_point centre;           // of the client area the window would have
    client_point cursor;           // where the virtual cursor is, in client coordinates
    int32_t capture_held;          // the virtual window holds the mouse capture
    int32_t window_closed;         // Escape with the mouse free closed the window: the game quits
    uint8_t physically_down[256];  // keys held down on the virtual keyboard (a second down repeats)
};

// A fresh keyboard and a cursor resting on the centre of a client area of this size.
void headless_input_start(headless_input* input, client_size client);

// One scripted event, as the window's messages for it would be handled.
void headless_input_deliver(headless_input* input, const script_event& event);

// After every update: the virtual capture follows mouse_captured; taking it puts the cursor on the centre.
void headless_input_sync_capture(headless_input* input);
