// The inventory as the player sees it: the ring of up to three item models turning in a small
// framed box at the bottom centre of the screen with the shown item's name above it, while the
// inventory is open; and the item just chosen, flying out of the box to the full view.
#pragma once

#include <stdint.h>

#include "render/item_view.h"

enum : uint16_t {
    COLOUR_BOX_OUTER = 0xD1CE,
    COLOUR_BOX_INNER = 0x9884,
    COLOUR_BOX_CORNERS = 0xFFFF,
    COLOUR_INVENTORY_LABEL = 0xFFFF,
};

enum { INVENTORY_RING_SIZE = 3, INVENTORY_BOX_SIZE = 100 };

constexpr float ITEM_VIEW_FOV = 0.7853982f;     // 45 degrees, the box's field of view
constexpr float HELD_ITEM_FLIGHT_SECONDS = 0.3f; // from the box to the full view

// The box's viewport, set every frame the inventory is open and kept for the held item's flight.
extern item_viewport inventory_box_viewport;

// The box's viewport for the current frame size: 100 pixels square, centred, 32 above the bottom.
item_viewport box_viewport_for_frame();

// The slot whose name the label shows for a scroll position: the nearest slot, wrapping both ways.
// slot_count must be positive.
int32_t shown_slot(float scroll, int32_t slot_count);

// The held item's flight, then, while the inventory is open, the ring, the box frame and the label.
// Reads the inventory, the item catalogue, game_time and the camera's view mapping.
void draw_item_views();
