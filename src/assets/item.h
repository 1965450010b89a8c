// The item catalogue, gloamhold_data/items.xml: every kind of thing the player can carry, with its
// display name, inventory model, pickup sound and, for keys, the lock it opens. Item 0 is an empty
// placeholder taken before the file is read.
#pragma once

#include <stdint.h>

#include "assets/registry.h"

enum {
    ITEM_NAME_CAPACITY = 64, // display names of at most 63 characters
    ITEM_TYPE_KEY = 1,
};

struct item {
    char name[ITEM_NAME_CAPACITY];
    int32_t model;        // the inventory copy of the item's model; -1 when it could not be made
    int32_t pickup_sound;
    int32_t type;         // ITEM_TYPE_KEY, or 0 without a type
    int32_t lock;         // keys only: the door lock number it opens
    int32_t line;         // of its element in the items file, for reports
};

extern registry items;
extern const char* const ITEMS_FILE; // "gloamhold_data/items.xml"

// Reads every <item> of every top-level <items> element into a new slot, registering its `key`.
// A too long name, a type other than "key", a lock that is not an integer, a pickup sound that
// cannot be loaded or a failed slot stops the load with 0: that item's slot is freed, the items
// before it stay. A model that cannot be loaded is replaced by the empty model 0.
int load_items(const char* path);

// A new model slot holding a copy of model `source` turned a quarter turn about X for the
// inventory view and scaled so that its diagonal is about one unit; -1 when it cannot be made.
int32_t make_inventory_model(int32_t source);
