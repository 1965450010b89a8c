#include "game/player_sounds.h"

int32_t sound_step[MATERIAL_COUNT][FOOTSTEP_VARIANTS];
int32_t sound_land[MATERIAL_COUNT];
int32_t sound_hurt;
int32_t sound_death;
int32_t sound_climb;
