// The flicker patterns of the flickering lights: strings of letters 'a' (dark) to 'z' (bright),
// ten letters a second, blended from one letter to the next.
#pragma once

#include <stdint.h>

enum { LIGHT_STYLE_COUNT = 11 }; // styles 1 to 11; 0 or any other number keeps a light's brightness

// Always 1: lights blend between letters rather than jumping (no key changes it).
extern int32_t light_style_smoothing;

// The pattern of style 1..LIGHT_STYLE_COUNT, or null for any other number.
const char* light_style_pattern(int32_t style);

// The value of a pattern at time t: letter i = t x 10, a = letter - 'a', blended toward the next
// letter by the fraction of the tenth when smoothing is on, over 26 ('a' 0, 'm' 0.4615, 'z' 0.9615).
float light_style_value(const char* pattern, float time);

// Every update: each light's previous position and brightness take the current ones, then lights
// of styles 1 to 11 take their pattern's value at game_time.
void update_light_styles();
