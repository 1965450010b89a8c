// Developer views drawn last in a frame with the system font, each switched by a function key: the
// player and controls panel (F1), the contact panel (F3), the occlusion-buffer view (F6) and the
// colour look-up table view (F7). They write straight into the frame buffer, unblended.
#pragma once

#include <stdint.h>

enum : uint16_t {
    COLOUR_PANEL_TEXT = 0xFFFF,
    COLOUR_PANEL_HIGHLIGHT = 0xFFF0, // a held Backspace, frozen culling
    COLOUR_CONTACT_MARKER = 0xFC00,
    COLOUR_CONTACT_OUTLINE = 0xFFE0,
};

enum {
    PANEL_LINE_CAPACITY = 100,   // each line is formatted into this many characters, NUL included
    PLAYER_PANEL_LINE_COUNT = 18, // the build date, three headings and fourteen lines of state
};

struct panel_line {
    int32_t x, y;
    uint16_t colour;
    char text[PANEL_LINE_CAPACITY];
};

// The F1 panel as lines of text with their places: the build date at the bottom right, then the
// player's position, ground and area, then the controls with their switches. Reads the player,
// its motion, the camera's area, the debug switches, the rendering settings and Backspace.
void player_panel_lines(panel_line lines[PLAYER_PANEL_LINE_COUNT]);

// F1: the lines above, drawn.
void draw_player_panel();

// F3: for each wall contact of the player's last update that projects onto the screen, a marker,
// a tick along its normal and its position, normal and distance beside it.
void draw_contact_panel();

// F6: every 8x8 block whose occlusion cell holds an occluder (or is not a number) in the grey of
// the square root of its 1/z.
void draw_occlusion_view();

// F7: the four colour look-up tables as 32 x 64 grey images along the right edge, labelled.
void draw_lookup_table_view();
