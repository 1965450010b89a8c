// The sounds the game loads at start-up, whatever the data names: the door sounds and the player's
// footsteps, landings, hurt, death and climb, by surface material (stone, ground, wood, metal,
// carpet, ceramic). A missing one stops the game; gameplay only plays what it finds here.
#pragma once

#include <stdint.h>

#include "assets/model.h"

enum {
    FOOTSTEP_VARIANTS = 4,
    FIXED_SOUND_COUNT = 37,
};

extern int32_t sound_door_opening;                            // "door_opening.wav"
extern int32_t sound_door_closing;                            // "door_closing.wav"
extern int32_t sound_door_locked;                             // "door_locked.wav"
extern int32_t sound_door_unlock;                             // "door_unlock.wav"
extern int32_t sound_step[MATERIAL_COUNT][FOOTSTEP_VARIANTS]; // "pl_step_<material>01.wav" to "...04.wav"
extern int32_t sound_land[MATERIAL_COUNT];                    // "pl_land_<material>01.wav"
extern int32_t sound_hurt;                                    // "pl_hurt01.wav"
extern int32_t sound_death;                                   // "pl_death01.wav"
extern int32_t sound_climb;                                   // "pl_climb01.wav"

// Each fixed sound's file name and the index it fills, in the order start-up loads them.
struct fixed_sound {
    const char* name;
    int32_t* index;
};
extern const fixed_sound fixed_sounds[FIXED_SOUND_COUNT];
// Loads them in that order (a start-up step); 0 at the first that cannot be loaded.
int load_fixed_sounds();
