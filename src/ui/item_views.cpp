#include "ui/item_views.h"

#include <math.h>

#include "assets/item.h"
#include "assets/world.h"
#include "core/loop_state.h"
#include "render/draw2d.h"
#include "render/frame.h"
#include "ui/font.h"

item_viewport inventory_box_viewport;

namespace {

constexpr float TWO_PI = 6.28318530718f;
constexpr float DEGREES_TO_RADIANS = 0.017453292f;
constexpr float ITEM_TURN_RATE = -2.0f;        // radians per second of game time
constexpr float HELD_ITEM_DEPTH = 4.0f;
constexpr float HELD_ITEM_START_PITCH = 25.0f; // degrees: tilted toward the player in the box
constexpr float RING_PITCH = 0.43633232f;      // 25 degrees
constexpr float RING_RADIUS = 4.0f;
constexpr float RING_CENTRE_DEPTH = 8.0f;

// The inventory model of an item; null for an item without one (model 0, none or unloadable).
const model* item_model(int32_t item_index)
{
    if (!registry_in_use(&items, item_index))
        return nullptr;
    int32_t model_index = registry_at<item>(&items, item_index)->model;
    if (model_index <= 0 || !registry_in_use(&models, model_index))
        return nullptr;
    return registry_at<model>(&models, model_index);
}

float lerp(float from, float to, float k)
{
    // Written so that k = 1 gives `to` exactly: the held item then lands on the main view itself.
    return from * (1.0f - k) + to * k;
}

void draw_held_item()
{
    if (inventory.armed_slot < 0 || inventory.armed_slot >= inventory.slot_count)
        return;
    const model* m = item_model(inventory.slots[inventory.armed_slot].item);
    if (!m)
        return;
    float t = (game_time - inventory.armed_time) / HELD_ITEM_FLIGHT_SECONDS;
    t = t < 0.0f ? 0.0f : (t > 1.0f ? 1.0f : t);
    float k = t * t * (3.0f - 2.0f * t);
    placement place = placement_from_angles({0.0f, 0.0f, HELD_ITEM_DEPTH}, ITEM_TURN_RATE * game_time,
                                            (HELD_ITEM_START_PITCH - HELD_ITEM_START_PITCH * k) * DEGREES_TO_RADIANS);
    const item_viewport& box = inventory_box_viewport;
    draw_model_view(m, &place, lerp(ITEM_VIEW_FOV, camera_fov, k), lerp(box.scale, view_size, k),
                    lerp(box.x_offset, view_offset_x, k), lerp(box.y_offset, view_offset_y, k), 0.0f);
}

// The first three slots on a circle seen from its side, the current one (scroll) in front, fully
// lit; the one opposite darkest.
void draw_ring()
{
    const item_viewport& box = inventory_box_viewport;
    int32_t n = inventory.slot_count < INVENTORY_RING_SIZE ? inventory.slot_count : INVENTORY_RING_SIZE;
    for (int32_t i = 0; i < n; ++i) {
        const model* m = item_model(inventory.slots[i].item);
        if (!m)
            continue;
        float a = (static_cast<float>(i) - inventory.shown_selection) * TWO_PI / static_cast<float>(n);
        placement place = placement_from_angles(
            {RING_RADIUS * sinf(a), 0.0f, RING_CENTRE_DEPTH - RING_RADIUS * cosf(a)}, ITEM_TURN_RATE * game_time,
            RING_PITCH);
        draw_model_view(m, &place, box.fov, box.scale, box.x_offset, box.y_offset, 0.5f - 0.5f * cosf(a));
    }
}

// A double outline with white brackets 8 pixels long, 4 in from each corner.
void draw_box_frame(int32_t x, int32_t y)
{
    draw_rect_outline(x, y, x + 100, y + 100, COLOUR_BOX_OUTER);
    draw_rect_outline(x + 1, y + 1, x + 99, y + 99, COLOUR_BOX_INNER);
    draw_line(x + 4, y + 4, x + 12, y + 4, COLOUR_BOX_CORNERS);
    draw_line(x + 4, y + 4, x + 4, y + 12, COLOUR_BOX_CORNERS);
    draw_line(x + 88, y + 4, x + 96, y + 4, COLOUR_BOX_CORNERS);
    draw_line(x + 96, y + 4, x + 96, y + 12, COLOUR_BOX_CORNERS);
    draw_line(x + 4, y + 96, x + 12, y + 96, COLOUR_BOX_CORNERS);
    draw_line(x + 4, y + 88, x + 4, y + 96, COLOUR_BOX_CORNERS);
    draw_line(x + 88, y + 96, x + 96, y + 96, COLOUR_BOX_CORNERS);
    draw_line(x + 96, y + 88, x + 96, y + 96, COLOUR_BOX_CORNERS);
}

void draw_label(int32_t box_y)
{
    const char* label = "<Empty>";
    if (inventory.slot_count > 0) {
        int32_t item_index = inventory.slots[shown_slot(inventory.shown_selection, inventory.slot_count)].item;
        label = registry_in_use(&items, item_index) ? registry_at<item>(&items, item_index)->name : "";
    }
    int32_t x = frame_width / 2 - text_width(label, -1, &font_system) / 2;
    int32_t y = box_y - static_cast<int32_t>(font_system.line_height) - 8;
    draw_text(x, y, label, -1, &font_system, COLOUR_INVENTORY_LABEL);
}

} // namespace

item_viewport box_viewport_for_frame()
{
    return {ITEM_VIEW_FOV, static_cast<float>(INVENTORY_BOX_SIZE),
            static_cast<float>(frame_width) * 0.5f - static_cast<float>(INVENTORY_BOX_SIZE) * 0.5f,
            static_cast<float>(frame_height) - 132.0f};
}

int32_t shown_slot(float scroll, int32_t slot_count)
{
    // The remainder takes the dividend's sign, so a negative position is brought back by adding
    // the count once more.
    return (slot_count + static_cast<int32_t>(roundf(scroll)) % slot_count) % slot_count;
}

void draw_item_views()
{
    // The box is where the held item's flight starts; before the inventory has first been shown
    // it is where it would be.
    if (inventory.display_open || inventory_box_viewport.scale == 0.0f)
        inventory_box_viewport = box_viewport_for_frame();
    draw_held_item();
    if (!inventory.display_open)
        return;
    draw_ring();
    int32_t x = static_cast<int32_t>(inventory_box_viewport.x_offset);
    int32_t y = static_cast<int32_t>(inventory_box_viewport.y_offset);
    draw_box_frame(x, y);
    draw_label(y);
}
