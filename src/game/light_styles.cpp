#include "game/light_styles.h"

#include <string.h>

#include "assets/world.h"
#include "core/loop_state.h"

int32_t light_style_smoothing = 1;

static const char* const light_style_patterns[LIGHT_STYLE_COUNT] = {
    "mmnmmommommnonmmonqnmmo",
    "abcdefghijklmnopqrstuvwxyzyxwvutsrqponmlkjihgfedcba",
    "mmmmmaaaaammmmmaaaaaabcdefgabcdefg",
    "mamamamamama",
    "jklmnopqrstuvwxyzyxwvutsrqponmlkj",
    "nmonqnmomnmomomno",
    "mmmaaaabcdefgmmmmaaaammmaamm",
    "mmmaaammmaaammmabcdefaaaammmmabcdefmmmaaaa",
    "aaaaaaaazzzzzzzz",
    "mmamammmmammamamaaamammma",
    "abcdefghijklmnopqrrqponmlkjihgfedcba",
};

const char* light_style_pattern(int32_t style)
{
    if (style < 1 || style > LIGHT_STYLE_COUNT)
        return nullptr;
    return light_style_patterns[style - 1];
}

float light_style_value(const char* pattern, float time)
{
    int32_t length = static_cast<int32_t>(strlen(pattern));
    float tenths = time * 10.0f;
    int32_t i = static_cast<int32_t>(tenths);
    float a = static_cast<float>(pattern[i % length] - 'a');
    if (light_style_smoothing) {
        float next = static_cast<float>(pattern[(i + 1) % length] - 'a');
        a += (next - a) * (tenths - static_cast<float>(i));
    }
    return a / 26.0f;
}

static void step_lights(light_list* list)
{
    for (int32_t i = 0; i < list->count; ++i) {
        light* l = &list->lights[i];
        l->previous_position = l->position;
        l->previous_brightness = l->brightness;
        const char* pattern = light_style_pattern(l->flicker_style);
        if (pattern)
            l->brightness = light_style_value(pattern, game_time);
    }
}

void update_light_styles()
{
    step_lights(&steady_lights);
    step_lights(&flickering_lights);
}
