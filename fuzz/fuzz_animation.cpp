#include <stdlib.h>

#include "assets/animation.h"
#include "fuzz_data_folder.h"

// A loaded animation is sampled before, between and after its keys.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    animation record;
    if (!animation_load_file(&record, fuzz_write_data("animations/fuzz.anm", data, size)))
        return 0;
    bone_pose* pose = static_cast<bone_pose*>(calloc(static_cast<size_t>(record.bone_count) + 1, sizeof(bone_pose)));
    const float times[] = {-1.0f, 0.0f, 0.25f, 1.0f, 3.5f, 1e9f};
    for (float time : times)
        sample_pose(&record, time, pose);
    free(pose);
    animation_free(&record);
    return 0;
}
