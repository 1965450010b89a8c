// The asset steps of the game's start-up that fix what index 0 means and load the world's data
// files. The game runs them among its start-up steps (app/start_up.h); tests and tools that start a
// world of their own call the same steps, so that every start reserves the same slots.
#pragma once

#include "assets/item.h"  // ITEMS_FILE
#include "assets/scene.h" // SCENE_FILE

// Takes model slot 0 and animation slot 0 as empty placeholders, so that a record whose model or
// animation was never set (0) refers to an empty model that draws nothing and an empty animation.
// 1 when both were slot 0 (the registries were empty), else 0.
int reserve_empty_model_and_animation();
// Takes item slot 0 as the placeholder item; 1 when it was slot 0.
int reserve_empty_item();
// Loads items.xml, then scene.xml, whose pickups name the items; the scene load's result.
int load_items_and_scene();
