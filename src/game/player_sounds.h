// The sounds the player's movement plays, by surface material (stone, ground, wood, metal, carpet,
// ceramic). Start-up loads them; movement only plays what it finds here.
#pragma once

#include <stdint.h>

#include "assets/model.h"

enum {
    FOOTSTEP_VARIANTS = 4,
};

extern int32_t sound_step[MATERIAL_COUNT][FOOTSTEP_VARIANTS]; // "pl_step_<material>01.wav" to "...04.wav"
extern int32_t sound_land[MATERIAL_COUNT];                    // "pl_land_<material>01.wav"
extern int32_t sound_hurt;                                    // "pl_hurt01.wav"
extern int32_t sound_death;                                   // "pl_death01.wav"
extern int32_t sound_climb;                                   // "pl_climb01.wav"
