// The world model: rooms, the portals between them, every scene object (statics, actors, doors,
// pickups and the player), the actor and door records, the two light lists and the list of moving
// objects. The scene loader fills them; gameplay, visibility and drawing read and update them.
// Every record is zero-filled when its slot is taken.
#pragma once

#include <stdint.h>

#include "assets/collision_tree.h"
#include "assets/registry.h"
#include "core/vec3.h"

struct room {
    // The renderer's visibility state, left 0 by the loader: the visible flag and the half-open
    // screen rectangle through which the room is seen.
    int32_t visible;
    int32_t screen_x0, screen_y0, screen_x1, screen_y1;
    vec3 box_min;
    vec3 box_max;
    int32_t bsp_node;     // the collision tree node that stands for this room
    int32_t first_portal; // the room's portals: [first_portal, first_portal + portal_count)
    int32_t portal_count;
    int32_t first_object; // the room's static objects: [first_object, first_object + object_count)
    int32_t object_count;
    int32_t line;         // of its element in the scene file, for reports
};

struct portal {
    int32_t closed;      // 1 when the element has a `closed` attribute, whatever its value
    int32_t target_room; // the room on the other side
    int32_t door;        // the door that fills the opening, or -1
    vec3 corners[4];     // in file order, around the opening
    vec3 normal;         // of the plane through the first three corners
    float plane_d;       // -(normal . centre)
    vec3 centre;         // the average of the corners
    int32_t line;        // of its element in the scene file, for reports
};

enum object_type : uint8_t {
    OBJECT_STATIC = 0,
    OBJECT_ACTOR = 1,
    OBJECT_DOOR = 2,
    OBJECT_PICKUP = 3,
};

enum object_body : uint8_t {
    BODY_NONE = 0,
    BODY_CHARACTER = 1, // actors and the player
    BODY_DOOR = 2,
};

struct object {
    int32_t removed; // non-zero once taken out of the world (a picked-up item)
    vec3 position;
    float yaw;   // radians, about Y
    float pitch; // radians, about X
    // Run-time: the placement at the previous tick, for interpolation.
    vec3 previous_position;
    float previous_yaw;
    float previous_pitch;
    int32_t model;     // 0: the empty placeholder model, which draws nothing
    int32_t animation; // 0: the empty placeholder animation
    float animation_start; // clock time at which the animation started
    uint8_t body;
    int32_t ref;  // the actor or door record, by type
    uint8_t type;
    int32_t item; // pickups: the item it gives
    int32_t health;
    int32_t health_max;
    int32_t line; // of its element in the scene file, for reports; 0 for the player and lights
};

struct actor {
    int32_t object;
    int32_t dialogue; // 0 without a dialogue
};

struct door {
    int32_t object; // the door's moving leaf
    int32_t open;   // run-time, 0 at load
    int32_t locked; // 1 when lock is 1 or more
    int32_t lock;   // the key number that unlocks it; 0 without a lock
    float closed_yaw;  // shut while the leaf's yaw is within one degree of this
    float from_yaw;    // the current swing, both at the closed yaw after loading
    float to_yaw;
    float swing_start; // run-time, 0 at load
};

static_assert(sizeof(door) == 32, "a door record is eight 32-bit words");

struct light {
    int32_t room;
    float radius;
    vec3 position;
    vec3 previous_position; // run-time: position at the previous tick
    float brightness;
    float previous_brightness; // run-time
    int32_t flicker_style;     // the flicker pattern of a flickering light
    int32_t shadow;            // 1: lights only the surfaces that face it
};

// A light list grows by its own step; records are never removed.
struct light_list {
    light* lights;
    int32_t count;
    int32_t capacity;
    int32_t growth;
};

// The object indices of every actor, door and pickup, in load order.
struct object_list {
    int32_t* indices;
    int32_t count;
    int32_t capacity;
};

enum {
    PLAYER_OBJECT = 0,
    PLAYER_HEALTH = 100,
    STEADY_LIGHT_GROWTH = 64,
    FLICKERING_LIGHT_GROWTH = 16,
    OBJECT_LIST_GROWTH = 64,
};

extern registry rooms;
extern registry portals;
extern registry objects;
extern registry actors;
extern registry doors;
extern light_list steady_lights;
extern light_list flickering_lights;
extern object_list dynamic_objects;
extern collision_tree scene_tree; // the world's one tree, named by the scene's `bsp`

// Gameplay state that the renderer and the HUD read: the object the player is looking at (the
// interaction target; -1 for none) and the game_time at which it became so. Gameplay writes them.
extern int32_t focus_object;
extern float focus_time;

enum { INVENTORY_SLOTS = 12 };

// What the player carries: up to twelve kinds of item with their counts, in the order first taken.
// Gameplay browses and uses it; the item views and the HUD draw it.
struct inventory_slot {
    int32_t item;
    int32_t count;
};
struct inventory_state {
    inventory_slot slots[INVENTORY_SLOTS];
    int32_t slot_count;
    float shown_selection;  // eases toward target_selection; the ring's scroll position
    float target_selection; // may run below 0 or past the end: wrapped when read
    int32_t display_open;   // the inventory bar is shown
    float last_input_time;  // game_time of the last browse input or pickup
    int32_t armed_slot;     // the key held ready for use, -1 for none
    float armed_time;       // game_time at which it was armed
};
extern inventory_state inventory;

// A zero-filled light record at the end of the list; -1 when the list cannot grow.
int32_t light_list_alloc(light_list* list);
// Appends an object index; 0 when the list cannot grow.
int object_list_append(object_list* list, int32_t object_index);

// Takes the player's object slot (object 0, as it runs before any other object exists): a
// character body with 100 of 100 health at the origin, unturned. The player's own movement state
// belongs to gameplay, which clears it. 1, or 0 when no slot can be had.
int create_player();
