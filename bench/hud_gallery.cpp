// Frames of the shipped level drawn by the game's own frame driver with the play overlay in the
// states gameplay puts it in, written as PNG files to look at: the inventory ring of three items
// with its label, its bounds rectangles (F3), "<Empty>", a key on its way from the box and held in
// the full view, the prompt on a door (shut and open), a pickup and a character, the message line
// and the health line. Usage: gloamhold_hud_gallery OUT_DIR
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "app/game.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/frame.h"
#include "core/loop_state.h"
#include "game/player.h"
#include "hosts/frame_png.h"
#include "shipped_game.h"
#include "ui/hud.h"

namespace {


// The first dynamic object of `type` standing within half a unit of (x, z); -1 when none.
int32_t object_near(uint8_t type, float x, float z)
{
    for (int32_t i = 0; i < dynamic_objects.count; ++i) {
        const object* o = registry_at<object>(&objects, dynamic_objects.indices[i]);
        float dx = o->position.x - x, dz = o->position.z - z;
        if (o->type == type && dx * dx + dz * dz < 0.25f)
            return dynamic_objects.indices[i];
    }
    return -1;
}

void carry(const std::vector<const char*>& keys)
{
    inventory = inventory_state{};
    inventory.armed_slot = -1;
    for (const char* key : keys)
        inventory.slots[inventory.slot_count++] = {asset_name_find(ASSET_ITEM, key), 1};
}

// Nothing over the picture: no inventory, focus, message or health line.
void quiet()
{
    carry({});
    focus_object = -1;
    message_visible_until = -1.0f;
    health_visible_until = -1.0f;
    debug_show_colliders = 0;
}

int shoot(const std::string& folder, const char* name, const standpoint& place)
{
    stand_at(place);
    game_render();
    std::string path = folder + "/" + name + ".png";
    if (!write_frame_png(path.c_str(), color_buffer, frame_width, frame_height)) {
        fprintf(stderr, "cannot write %s\n", path.c_str());
        return 0;
    }
    printf("%s\n", path.c_str());
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s OUT_DIR\n", argv[0]);
        return 2;
    }
    std::string folder = argv[1];
    if (!start_shipped_game()) {
        fprintf(stderr, "the game did not start from the shipped data\n");
        return 1;
    }
    render_alpha = 1.0f;
    game_time = 10.0f;
    const standpoint hall = {-3.6f, 0.0f, 11.2f, 35.0f, -5.0f};
    int ok = 1;

    quiet();
    carry({"iron_key", "rusty_key", "silver_coin"});
    inventory.display_open = 1;
    ok &= shoot(folder, "ring_of_three", hall);
    inventory.shown_selection = -0.8f;
    ok &= shoot(folder, "ring_scrolled_back", hall);
    inventory.shown_selection = 0.0f;
    debug_show_colliders = 1;
    ok &= shoot(folder, "ring_bounds", hall);
    quiet();
    inventory.display_open = 1;
    ok &= shoot(folder, "ring_empty", hall);

    quiet();
    carry({"iron_key", "rusty_key", "silver_coin"});
    inventory.armed_slot = 0;
    inventory.armed_time = game_time - 0.12f;
    ok &= shoot(folder, "key_flying", hall);
    inventory.armed_time = game_time - 0.3f;
    ok &= shoot(folder, "key_held", hall);
    debug_show_colliders = 1;
    ok &= shoot(folder, "key_held_bounds", hall);

    quiet();
    focus_object = object_near(OBJECT_DOOR, -0.7f, 10.0f);
    ok &= shoot(folder, "prompt_door_shut", {0.0f, 0.0f, 8.2f, 0.0f, 0.0f});
    registry_at<door>(&doors, registry_at<object>(&objects, focus_object)->ref)->open = 1;
    ok &= shoot(folder, "prompt_door_open", {0.0f, 0.0f, 8.2f, 0.0f, 0.0f});
    registry_at<door>(&doors, registry_at<object>(&objects, focus_object)->ref)->open = 0;
    focus_object = object_near(OBJECT_PICKUP, -6.2f, 11.9f);
    ok &= shoot(folder, "prompt_pickup", {-5.0f, 0.0f, 10.8f, -45.0f, 25.0f});
    focus_object = object_near(OBJECT_ACTOR, -7.6f, 15.3f);
    ok &= shoot(folder, "prompt_character", {-6.4f, 0.0f, 13.6f, -35.0f, 0.0f});

    quiet();
    snprintf(message_text, MESSAGE_CAPACITY, "%s", "This door is locked.");
    message_visible_until = game_time + 2.0f;
    ok &= shoot(folder, "message_line", hall);
    message_visible_until = game_time + 0.1f;
    ok &= shoot(folder, "message_line_fading", hall);

    quiet();
    registry_at<object>(&objects, PLAYER_OBJECT)->health = 84;
    health_visible_until = game_time + 3.0f;
    ok &= shoot(folder, "health_line", hall);
    return ok ? 0 : 1;
}
