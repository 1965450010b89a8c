#include "game/interaction.h"

#include <math.h>
#include <string.h>

#include "assets/item.h"
#include "audio/mixer.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "game/collision.h"
#include "game/dialogue.h"
#include "game/fixed_sounds.h"
#include "game/player.h"

char message_text[MESSAGE_CAPACITY];
float message_visible_until;
object_list removed_objects;

namespace {

constexpr float DEGREES_TO_RADIANS = 0.017453292f;

enum : uint8_t {
    KEY_USE = 'E',
    KEY_DISARM = 'Q',
    KEY_BROWSE_BACK = KEYCODE_LEFT_BRACKET,
    KEY_BROWSE_ON = KEYCODE_RIGHT_BRACKET,
};

int pressed(uint8_t code)
{
    return key_state[code] == KEY_PRESSED;
}

float clamp01(float x)
{
    return x < 0.0f ? 0.0f : (x > 1.0f ? 1.0f : x);
}

object* object_at(int32_t index)
{
    return registry_at<object>(&objects, index);
}

door* door_at(int32_t index)
{
    return registry_at<door>(&doors, index);
}

const item* item_at(int32_t index)
{
    return registry_at<item>(&items, index);
}

// The slot holding this kind of item; -1 when none does.
int32_t slot_of(int32_t item_index)
{
    for (int32_t slot = 0; slot < inventory.slot_count; ++slot)
        if (inventory.slots[slot].item == item_index)
            return slot;
    return -1;
}

// Browsing and the bar: 1 when the bar closed in this update, which ends it.
int update_inventory_bar()
{
    inventory_state* bar = &inventory;
    float now = game_time;
    if (now - bar->last_input_time >= INVENTORY_BROWSE_INTERVAL) {
        int32_t on = mouse_wheel > 0.0f || pressed(KEY_BROWSE_ON);
        int32_t back = mouse_wheel < 0.0f || pressed(KEY_BROWSE_BACK);
        int32_t direction = on - back;
        if (direction != 0) {
            // The first input only shows the bar on the slot it was left at.
            if (bar->display_open)
                bar->target_selection += static_cast<float>(direction);
            bar->last_input_time = now;
            bar->display_open = 1;
            health_visible_until = now + HUD_SHOW_SECONDS;
            bar->armed_slot = -1;
        }
    }
    if (!bar->display_open)
        return 0;
    if (now - bar->last_input_time > INVENTORY_CLOSE_SECONDS) {
        bar->display_open = 0;
        return 1;
    }
    if (pressed(KEYCODE_LBUTTON)) {
        int32_t slot = current_slot();
        if (slot >= 0 && item_at(bar->slots[slot].item)->type == ITEM_TYPE_KEY) {
            bar->armed_slot = slot;
            bar->armed_time = now;
        }
        bar->display_open = 0;
        return 1;
    }
    if (pressed(KEYCODE_RBUTTON)) {
        bar->display_open = 0;
        return 1;
    }
    bar->shown_selection +=
        (1.0f - expf(-INVENTORY_EASE_RATE * tick_dt)) * (bar->target_selection - bar->shown_selection);
    return 0;
}

// The armed key: put away, or used on the door in focus by a left click or E.
void update_armed_key()
{
    inventory_state* bar = &inventory;
    if (bar->armed_slot < 0)
        return;
    if (pressed(KEYCODE_RBUTTON) || pressed(KEY_DISARM)) {
        bar->armed_slot = -1;
        return;
    }
    if (focus_object < 0 || !(pressed(KEYCODE_LBUTTON) || pressed(KEY_USE)))
        return;
    int32_t key = bar->slots[bar->armed_slot].item;
    const object* target = object_at(focus_object);
    if (item_at(key)->type != ITEM_TYPE_KEY || target->type != OBJECT_DOOR)
        return; // kept armed: it was used on nothing it opens
    if (use_key_on_door(target->ref, key))
        bar->armed_slot = -1; // the key itself stays in the inventory
}

} // namespace

void clear_interaction()
{
    focus_object = -1;
    focus_time = 0.0f;
    inventory = {};
    inventory.armed_slot = -1;
    message_text[0] = 0;
    message_visible_until = 0.0f;
    removed_objects.count = 0;
}

vec3 view_forward(const object* player)
{
    float cos_pitch = cosf(player->pitch);
    return {cos_pitch * sinf(player->yaw), sinf(player->pitch), cos_pitch * cosf(player->yaw)};
}

void update_interaction(vec3 forward)
{
    const object* player = object_at(PLAYER_OBJECT);
    vec3 eye = {player->position.x, player->position.y - INTERACTION_EYE_HEIGHT, player->position.z};
    collision_hit hit = cast_ray(eye, forward, INTERACTION_REACH);
    // Only the nearest surface counts: whatever stands behind it is hidden.
    int32_t focus = -1;
    if (hit.hit && object_at(hit.object)->type != OBJECT_STATIC)
        focus = hit.object;
    if (focus != focus_object) {
        focus_object = focus;
        focus_time = game_time;
    }
    if (focus < 0 || !pressed(KEY_USE))
        return;
    const object* target = object_at(focus);
    if (target->type == OBJECT_ACTOR)
        start_dialogue(registry_at<actor>(&actors, target->ref)->dialogue);
    else if (target->type == OBJECT_DOOR)
        toggle_door(target->ref);
    else if (target->type == OBJECT_PICKUP)
        take_pickup(focus);
}

void update_inventory()
{
    if (update_inventory_bar())
        return;
    update_armed_key();
}

void update_doors()
{
    float now = game_time;
    for (int32_t i = 0; i < doors.count; ++i) {
        if (!registry_in_use(&doors, i))
            continue;
        const door* d = door_at(i);
        object* leaf = object_at(d->object);
        if (leaf->yaw == d->to_yaw)
            continue; // at rest; a NaN anywhere never compares equal, so it keeps being driven
        float t = clamp01((now - d->swing_start) / DOOR_SWING_SECONDS);
        leaf->yaw = d->from_yaw + (d->to_yaw - d->from_yaw) * (3.0f - 2.0f * t) * t * t;
    }
}

int toggle_door(int32_t door_index)
{
    door* d = door_at(door_index);
    if (d->locked) {
        play_sound(sound_door_locked);
        show_message("This door is locked.");
        return 0;
    }
    if (!d->open)
        return open_door(door_index);
    d->open = 0;
    d->from_yaw = object_at(d->object)->yaw;
    d->to_yaw = d->closed_yaw;
    d->swing_start = game_time;
    play_sound(sound_door_closing);
    return 1;
}

int open_door(int32_t door_index)
{
    door* d = door_at(door_index);
    if (d->open)
        return 1;
    const object* leaf = object_at(d->object);
    const object* player = object_at(PLAYER_OBJECT);
    d->open = 1;
    d->from_yaw = leaf->yaw;
    // Which side of the closed leaf's plane the player stands on; the door swings to the other.
    float side = sinf(d->closed_yaw) * (player->position.x - leaf->position.x) -
                 cosf(d->closed_yaw) * (player->position.z - leaf->position.z);
    float swing = static_cast<float>(side > 0.0f ? DOOR_OPEN_DEGREES : -DOOR_OPEN_DEGREES);
    d->to_yaw = d->closed_yaw + swing * DEGREES_TO_RADIANS;
    d->swing_start = game_time;
    play_sound(sound_door_opening);
    return 1;
}

int use_key_on_door(int32_t door_index, int32_t item_index)
{
    door* d = door_at(door_index);
    if (!d->locked)
        return 0;
    const item* used = item_at(item_index);
    if (used->type != ITEM_TYPE_KEY) {
        play_sound(sound_door_locked);
        return 0;
    }
    if (used->lock != d->lock) {
        play_sound(sound_door_locked);
        show_message("The key doesn't fit this door.");
        return 0;
    }
    d->locked = 0;
    play_sound(sound_door_unlock);
    return open_door(door_index);
}

int take_pickup(int32_t object_index)
{
    object* pickup = object_at(object_index);
    if (pickup->type != OBJECT_PICKUP)
        return 0;
    int32_t slot = slot_of(pickup->item);
    if (slot >= 0) {
        inventory.slots[slot].count += 1;
    } else if (inventory.slot_count < INVENTORY_SLOTS) {
        slot = inventory.slot_count++;
        inventory.slots[slot] = {pickup->item, 1};
    } else {
        show_message("Inventory is full.");
        return 0; // it stays where it lies
    }
    select_slot(slot);
    inventory.display_open = 1;
    inventory.last_input_time = game_time;
    int32_t sound = item_at(pickup->item)->pickup_sound;
    if (sound >= 1)
        play_sound(sound);
    pickup->removed = 1;
    // Only the report of what was taken misses an entry when the list cannot grow.
    object_list_append(&removed_objects, object_index);
    return 1;
}

int32_t current_slot()
{
    int32_t count = inventory.slot_count;
    if (count <= 0)
        return -1;
    // C++'s remainder truncates toward zero, so a negative selection stays negative here and the
    // outer step wraps it from the end.
    int32_t rounded = static_cast<int32_t>(roundf(inventory.target_selection));
    return (count + rounded % count) % count;
}

int select_slot(int32_t slot)
{
    // The bound deliberately admits slot_count itself: a slot just past the used ones.
    if (slot < 0 || slot > inventory.slot_count)
        return 0;
    inventory.shown_selection = static_cast<float>(slot);
    inventory.target_selection = static_cast<float>(slot);
    return 1;
}

void show_message(const char* text)
{
    size_t length = strlen(text);
    if (length > MESSAGE_CAPACITY - 1)
        length = MESSAGE_CAPACITY - 1;
    memcpy(message_text, text, length);
    message_text[length] = 0;
    message_visible_until = game_time + MESSAGE_SECONDS;
}
