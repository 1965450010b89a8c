// Item models drawn straight into the frame in a viewport of their own, over whatever the world
// left there: the depth under the model's screen rectangle is cleared first, so the world never
// hides an item and nothing of the world outside the rectangle is touched.
#pragma once

#include <stdint.h>

#include "assets/model.h"
#include "core/placement.h"

enum : uint8_t { ITEM_TINT = 31 }; // the temperature-table row of item triangles (the world's is 38)

enum : uint16_t { COLOUR_ITEM_BOUNDS = 0xBDEF };

// Where an item view lands on the screen: a projected p maps to (p + 0.5) x scale + offset, as the
// world's view mapping does with view_size and view_offset_x / view_offset_y.
struct item_viewport {
    float fov; // vertical field of view, radians
    float scale;
    float x_offset;
    float y_offset;
};

// Draws `m` placed in view space by `place` (no camera transform), every vertex at `shade`.
// The model's screen rectangle must lie inside the frame: its depth is cleared without clamping.
// Back faces are skipped whatever the texture says, and nothing is clipped at the near plane.
// With the F3 switch the rectangle is outlined.
void draw_model_view(const model* m, const placement* place, float fov, float scale, float x_offset,
                     float y_offset, float shade);
