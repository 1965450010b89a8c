// The debug switches that F1 to F8 flip at run time (F9 to F11 flip the settings LIGHT_DITHERING,
// TEXTURE_INTERPOLATION and TEXTURE_DITHERING themselves). They live here, below the renderer and
// the overlay that read them; the update flips them.
#pragma once

#include <stdint.h>

extern int32_t debug_info;            // F1: the player and controls panel (starts 1)
extern int32_t debug_wireframe;       // F2: triangle outlines (starts 0)
extern int32_t debug_show_colliders;  // F3: collision shapes and the contact panel (starts 0)
extern int32_t debug_show_areas;      // F4: the areas-and-portals overlay (starts 1)
extern int32_t debug_lighting;        // F5: lighting on; 0 draws everything fully lit (starts 1)
extern int32_t debug_show_occlusion;  // F6: the occlusion-buffer view (starts 0)
extern int32_t debug_show_lookup_tables; // F7: the colour look-up table view (starts 0)
extern int32_t debug_portal_culling;  // F8: portal culling live; 0 keeps the last visible set (starts 1)
