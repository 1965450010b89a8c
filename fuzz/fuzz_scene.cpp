#include "assets/scene.h"
#include "fuzz_data_folder.h"

// scene.xml into a fresh world with the shipped collision tree, animations and dialogues and small
// stand-ins for the models: rooms, portals and their partners, lights, actors, doors and pickups.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_fresh_world();
    load_scene(fuzz_write_data("scene.xml", data, size));
    return 0;
}
