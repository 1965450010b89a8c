// Skeletal animations: a bone hierarchy and key frames, each a time and one pose per bone, in
// text files under gloamhold_data/animations. Models' weights refer to these bones by index.
#pragma once

#include <stdint.h>

#include "assets/registry.h"
#include "core/vec3.h"

// A bone's transform: translation, then a rotation quaternion as its vector part and, last, its
// scalar part (seven consecutive floats, as in the file).
struct bone_pose {
    vec3 translation;
    float rotation[4]; // x, y, z, w
};

static_assert(sizeof(bone_pose) == 28, "a pose is seven packed floats");

struct animation {
    int32_t bone_count;
    int32_t frame_count;
    int32_t* parents;    // bone_count; -1 for a root, otherwise a bone that comes earlier
    float* frame_times;  // frame_count, rising; the last is the length of the loop
    bone_pose* poses;    // frame_count x bone_count, frame-major
};

extern registry animations;

// Sets the counts and allocates parents, frame times and poses.
int animation_create(animation* record, int32_t bone_count, int32_t frame_count);
// Releases the arrays and zeroes the record. Always 1.
int animation_free(animation* record);

// Reads "BONES n", "FRAMES n", the "HIERARCHY" line, then each frame: its time, then exactly one
// pose line per bone with nothing (not even a comment) in between. A parent must be -1 or an
// earlier bone, so the hierarchy can be walked in bone order. On failure nothing stays allocated.
int animation_load_file(animation* record, const char* path);

// The index registered for the name, else the animation is loaded into a new slot; -1 on failure.
int32_t load_animation(const char* name);

// The pose of every bone at `time` (already wrapped to the loop), in bone order: translations
// interpolate linearly (extrapolating outside the keys), rotations spherically and unnormalised.
// An animation without keys gives the identity pose, one with a single key that key.
void sample_pose(const animation* record, float time, bone_pose* out);
