// Scripted input: a virtual cursor and keyboard that turn a script's events into the same input
// rules the window procedure applies. The headless host takes all its input from here; the
// windowed games add a script's events to the player's.
#pragma once

#include <stdint.h>

#include "hosts/input_script.h"
#include "hosts/window_layout.h"

struct scripted_input {
    client_point centre;           // of the client area the window would have
    client_point cursor;           // where the virtual cursor is, in client coordinates
    int32_t capture_held;          // the virtual window holds the mouse capture
    int32_t window_closed;         // Escape with the mouse free, or "quit", closed the window: the game quits
    uint8_t physically_down[256];  // keys held down on the virtual keyboard (a second down repeats)
};

// A fresh keyboard and a cursor resting on the centre of a client area of this size.
void scripted_input_start(scripted_input* input, client_size client);

// One scripted event, as the window's messages for it would be handled; a "time" line is the
// loop's business and changes nothing here.
void scripted_input_deliver(scripted_input* input, const script_event& event);

// After every update: the virtual capture follows mouse_captured; taking it puts the cursor on the centre.
void scripted_input_sync_capture(scripted_input* input);
