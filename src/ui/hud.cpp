#include "ui/hud.h"

#include "assets/item.h"
#include "assets/world.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "core/text.h"
#include "game/player.h"
#include "render/draw2d.h"
#include "ui/font.h"

namespace {

int32_t clamp_int(int32_t value, int32_t low, int32_t high)
{
    return value < low ? low : value > high ? high : value;
}

// A line that shows until `until`, in the dialogue font, in its fading grey.
void draw_timed_line(int32_t x, int32_t y, const char* text, float until)
{
    if (!(game_time <= until))
        return;
    draw_text(x, y, text, -1, &font_dialogue, grey_colour(fade_level(until, game_time)));
}

const char* door_prompt(const object* o)
{
    if (registry_in_use(&doors, o->ref) && registry_at<door>(&doors, o->ref)->open)
        return "[E] Close";
    return "[E] Open";
}

} // namespace

uint16_t grey_colour(int32_t level)
{
    uint16_t g = static_cast<uint16_t>(level);
    return static_cast<uint16_t>(0x8000 | g << 10 | g << 5 | g);
}

int32_t fade_level(float until, float now)
{
    float k = (until - now) / HUD_FADE_SECONDS;
    k = k < 0.0f ? 0.0f : (k > 1.0f ? 1.0f : k);
    return static_cast<int32_t>(k * 31.0f);
}

void fill_rect(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour)
{
    fill_rect_unclipped(clamp_int(x0, 0, frame_width - 1), clamp_int(y0, 0, frame_height - 1),
                        clamp_int(x1, 0, frame_width - 1), clamp_int(y1, 0, frame_height - 1), colour);
}

void fill_rect_unclipped(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour)
{
    for (int32_t y = y0; y < y1; ++y)
        for (int32_t x = x0; x < x1; ++x)
            color_buffer[y * frame_width + x] = colour;
}

void draw_clipped_line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour)
{
    if (clip_line_to_rect(&x0, &y0, &x1, &y1, 0, 0, frame_width - 1, frame_height - 1))
        draw_line(x0, y0, x1, y1, colour);
}

void draw_health()
{
    char text[HEALTH_TEXT_CAPACITY];
    string_printf(text, sizeof text, "Health: %d", registry_at<object>(&objects, PLAYER_OBJECT)->health);
    int32_t y = frame_height - static_cast<int32_t>(font_dialogue.line_height) - HUD_MARGIN;
    draw_timed_line(HUD_MARGIN, y, text, health_visible_until);
}

void draw_message()
{
    draw_timed_line(HUD_MARGIN, HUD_MARGIN, message_text, message_visible_until);
}

void draw_interaction_prompt()
{
    if (focus_object == -1 || !registry_in_use(&objects, focus_object))
        return;
    const object* o = registry_at<object>(&objects, focus_object);
    if (o->type == OBJECT_STATIC)
        return;
    int32_t cx = frame_width / 2, cy = frame_height / 2;
    draw_clipped_line(cx - PROMPT_CROSS_ARM, cy, cx + PROMPT_CROSS_ARM, cy, COLOUR_PROMPT);
    draw_clipped_line(cx, cy - PROMPT_CROSS_ARM, cx, cy + PROMPT_CROSS_ARM, COLOUR_PROMPT);
    int32_t x = cx + 8;
    if (o->type == OBJECT_ACTOR) {
        draw_text(x, cy + 8, "[E] Talk", -1, &font_system, COLOUR_PROMPT);
    } else if (o->type == OBJECT_DOOR) {
        draw_text(x, cy + 8, door_prompt(o), -1, &font_system, COLOUR_PROMPT);
    } else if (o->type == OBJECT_PICKUP) {
        draw_text(x, cy + 8, "[E] Take", -1, &font_system, COLOUR_PROMPT);
        if (registry_in_use(&items, o->item)) {
            int32_t y = cy + static_cast<int32_t>(font_system.line_height) + 16;
            draw_text(x, y, registry_at<item>(&items, o->item)->name, -1, &font_system, COLOUR_PROMPT_ITEM_NAME);
        }
    }
}
