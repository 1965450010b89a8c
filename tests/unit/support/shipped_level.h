// The shipped level as the game starts it, for tests and benchmarks that walk in it.
#pragma once

// Moves the working directory to the source tree (where gloamhold_data/ is committed) and loads
// what start-up loads before play, in its order: the player (object 0), the fallback texture, the
// placeholder model, animation and item in slot 0, then items.xml and scene.xml. Call on empty
// registries. 1 when everything loaded.
int load_shipped_level();
