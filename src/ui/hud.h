// The few things drawn over the picture during play: the fading health and message lines and the
// interaction prompt with its small cross; and the rectangle fills and the clipped line they and
// the other overlays are drawn with.
#pragma once

#include <stdint.h>

#include "game/interaction.h" // the message line that gameplay writes

enum : uint16_t {
    COLOUR_PROMPT = 0xFFFF,
    COLOUR_PROMPT_ITEM_NAME = 0xFFF0,
};

enum {
    HEALTH_TEXT_CAPACITY = 24,
    HUD_MARGIN = 24,
    PROMPT_CROSS_ARM = 6,
};

constexpr float HUD_FADE_SECONDS = 0.2f; // a timed line fades to black over its last 0.2 s

// The frame-buffer grey of level 0 ... 31.
uint16_t grey_colour(int32_t level);

// The grey level of a line shown until `until`: 31 until its last 0.2 s, then falling to 0.
int32_t fade_level(float until, float now);

// Rows y0 ... y1 - 1 and columns x0 ... x1 - 1, each coordinate first clamped into the frame
// (0 ... width - 1, 0 ... height - 1).
void fill_rect(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour);
// The same without clamping, for callers whose rectangle lies inside the frame.
void fill_rect_unclipped(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour);
// The segment clipped to the frame, then drawn with draw_line (nothing when it misses the frame).
void draw_clipped_line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour);

// "Health: <n>" at the bottom left with the dialogue font, while game_time <= health_visible_until.
void draw_health();
// The message line at the top left with the dialogue font, while game_time <= message_visible_until.
void draw_message();
// With an object in focus: a cross in the centre of the screen and beside it what E does there,
// "[E] Talk", "[E] Open" / "[E] Close" or "[E] Take" with the item's name under it.
void draw_interaction_prompt();
