// Using things in the world: the object under the view ray and the E key, doors that swing open
// away from the player and shut again, locks and the keys that open them, pickups taken into the
// inventory, browsing the inventory and arming a key, and the short message line.
//
// Now is game_time and an update lasts tick_dt; keys are read from key_state (E uses, Q and the
// right button disarm, the left button arms and uses, `[` `]` and the wheel browse).
#pragma once

#include <stdint.h>

#include "assets/world.h"
#include "core/vec3.h"

enum {
    MESSAGE_CAPACITY = 100, // 99 characters and the terminator
    DOOR_OPEN_DEGREES = 80,
};

constexpr float INTERACTION_REACH = 3.5f;   // how far from the eye things can be used
constexpr float INTERACTION_EYE_HEIGHT = 1.75f;
constexpr float DOOR_SWING_SECONDS = 0.25f;
constexpr float MESSAGE_SECONDS = 3.0f;
constexpr float INVENTORY_BROWSE_INTERVAL = 0.05f; // at most one browse step this often
constexpr float INVENTORY_CLOSE_SECONDS = 3.0f;    // the bar closes after this long without input
constexpr float INVENTORY_EASE_RATE = 12.0f;       // the shown selection eases toward the target

// The message line: its text and the game_time until which it shows (the HUD fades it out over
// the last 0.2 s).
extern char message_text[MESSAGE_CAPACITY];
extern float message_visible_until;

// The object indices taken out of the world (pickups taken), in the order taken. Never shrinks.
extern object_list removed_objects;

// A new game's interaction state: nothing in focus, an empty inventory with nothing armed, no
// message, nothing taken. The removed list keeps its block.
void clear_interaction();

// The direction the player looks in, from the player object's yaw and pitch: the camera's forward
// vector (mouse-look turns the player only between updates, so the camera looks the same way).
vec3 view_forward(const object* player);

// Once an update while the player is alive: the first surface within reach along `forward` from
// the eye decides the focus (a wall in front of a door hides the door); E then talks to a
// character, opens or shuts a door or takes a pickup.
void update_interaction(vec3 forward);

// Once an update: browsing the bar, arming a key and using the armed key on the door in focus.
void update_inventory();

// Once an update: every door whose leaf is not yet at its swing's end turns on an eased curve.
// The collision queries read the leaf's yaw, so they see the turned door at once.
void update_doors();

// E on a door: a locked door refuses (sound and "This door is locked.", 0); a shut one opens; an
// open one swings back shut (1).
int toggle_door(int32_t door_index);

// Opens a shut door away from the player, 80 degrees to the side of its closed yaw that the player
// is not on. 1, also when it was already open.
int open_door(int32_t door_index);

// An item used on a door: the key with the door's lock number unlocks and opens it (that result);
// another key says it does not fit (0); anything else only makes the locked sound (0). An unlocked
// door takes no key at all (0, nothing happens).
int use_key_on_door(int32_t door_index, int32_t item_index);

// Takes a pickup object into the inventory: a held kind counts up, a new kind takes a slot unless
// all twelve are used ("Inventory is full.", 0, the pickup stays). The bar opens on the slot, the
// item's pickup sound plays and the object leaves the world (removed, never drawn or collided).
int take_pickup(int32_t object_index);

// The selected slot: the target selection rounded and wrapped into the used slots (negative
// selections count back from the end); -1 with no slots.
int32_t current_slot();

// Selects a slot at once. Refused (0) below 0 or above slot_count; slot_count itself is admitted.
int select_slot(int32_t slot);

// Shows the text on the message line for 3 s, cut to 99 characters.
void show_message(const char* text);
