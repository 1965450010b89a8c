// scene.xml: the collision tree file, then a tree of rooms holding static props, portals, lights,
// actors, doors and pickups, turned into the world model's flat records and linked: every portal
// to the room on its other side, every door to the portals it fills.
#pragma once

extern const char* const SCENE_FILE; // "gloamhold_data/scene.xml"

// Loads the scene into the world model (scene_tree, rooms, portals, objects, ...). The scene
// element is room 0 and nested rooms are numbered depth-first in document order; a room's statics
// come first, then its portals, lights, actors, doors and pickups, then its nested rooms. Any
// failure gives 0; records taken before it stay.
int load_scene(const char* path);

// Gives every portal the room of the first portal elsewhere that faces it with all corners within
// 0.01, or -1 when there is none; 0 when any portal has no partner. All portals are linked either
// way, so that the data checker can name every opening described from one side only.
int link_portals();
// Gives every portal whose centre lies in a door's world box that door; a later door wins.
void link_doors();
