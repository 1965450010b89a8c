// The dialogue box, drawn instead of the HUD while a dialogue is open: black letterbox bars that
// slide in and out, the speech typed out over the bottom bar and the numbered answers under it,
// the highlighted one on a full-width bar.
#pragma once

#include <stdint.h>

enum : uint16_t {
    COLOUR_LETTERBOX = 0x0000,
    COLOUR_SPEECH = 0xFFFF,
    COLOUR_ANSWER = 0x4148,           // the answers, and the bar behind the highlighted one
    COLOUR_ANSWER_HIGHLIGHTED = 0xFFFF,
};

enum {
    DIALOGUE_TEXT_X = 12,
    DIALOGUE_TEXT_INSET = 12, // below the top of the bottom bar, and the right margin twice over
};

constexpr float LETTERBOX_TOP_SHARE = 0.15f;
constexpr float LETTERBOX_BOTTOM_SHARE = 0.25f;

// The phase's progress 0 ... 1 is worked out and stored in dialogue_state.fade (the dialogue logic
// advances its phases on it). Opening and closing draw only the bars; shown draws the full bars,
// the speech typed out in proportion to the progress and, once it is all out, the answers, with
// the highlight following the mouse whenever the mouse moved.
void draw_dialogue();
// Black bars over the whole width: at the top (height * 0.15) * t rows, at the bottom
// (height * 0.25) * t rows; t >= 1 gives the full sizes.
void draw_letterbox(float t);
