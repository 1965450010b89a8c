#include "game/fixed_sounds.h"

#include "assets/registry.h"
#include "assets/sound.h"
#include "core/diagnostics.h"

int32_t sound_door_opening;
int32_t sound_door_closing;
int32_t sound_door_locked;
int32_t sound_door_unlock;
int32_t sound_step[MATERIAL_COUNT][FOOTSTEP_VARIANTS];
int32_t sound_land[MATERIAL_COUNT];
int32_t sound_hurt;
int32_t sound_death;
int32_t sound_climb;

// Spelled out in full, as modders find them in the sounds folder.
const fixed_sound fixed_sounds[FIXED_SOUND_COUNT] = {
    {"door_opening.wav", &sound_door_opening},
    {"door_closing.wav", &sound_door_closing},
    {"door_locked.wav", &sound_door_locked},
    {"door_unlock.wav", &sound_door_unlock},
    {"pl_step_stone01.wav", &sound_step[MATERIAL_STONE][0]},
    {"pl_step_stone02.wav", &sound_step[MATERIAL_STONE][1]},
    {"pl_step_stone03.wav", &sound_step[MATERIAL_STONE][2]},
    {"pl_step_stone04.wav", &sound_step[MATERIAL_STONE][3]},
    {"pl_step_ground01.wav", &sound_step[MATERIAL_GROUND][0]},
    {"pl_step_ground02.wav", &sound_step[MATERIAL_GROUND][1]},
    {"pl_step_ground03.wav", &sound_step[MATERIAL_GROUND][2]},
    {"pl_step_ground04.wav", &sound_step[MATERIAL_GROUND][3]},
    {"pl_step_wood01.wav", &sound_step[MATERIAL_WOOD][0]},
    {"pl_step_wood02.wav", &sound_step[MATERIAL_WOOD][1]},
    {"pl_step_wood03.wav", &sound_step[MATERIAL_WOOD][2]},
    {"pl_step_wood04.wav", &sound_step[MATERIAL_WOOD][3]},
    {"pl_step_metal01.wav", &sound_step[MATERIAL_METAL][0]},
    {"pl_step_metal02.wav", &sound_step[MATERIAL_METAL][1]},
    {"pl_step_metal03.wav", &sound_step[MATERIAL_METAL][2]},
    {"pl_step_metal04.wav", &sound_step[MATERIAL_METAL][3]},
    {"pl_step_carpet01.wav", &sound_step[MATERIAL_CARPET][0]},
    {"pl_step_carpet02.wav", &sound_step[MATERIAL_CARPET][1]},
    {"pl_step_carpet03.wav", &sound_step[MATERIAL_CARPET][2]},
    {"pl_step_carpet04.wav", &sound_step[MATERIAL_CARPET][3]},
    {"pl_step_ceramic01.wav", &sound_step[MATERIAL_CERAMIC][0]},
    {"pl_step_ceramic02.wav", &sound_step[MATERIAL_CERAMIC][1]},
    {"pl_step_ceramic03.wav", &sound_step[MATERIAL_CERAMIC][2]},
    {"pl_step_ceramic04.wav", &sound_step[MATERIAL_CERAMIC][3]},
    {"pl_land_stone01.wav", &sound_land[MATERIAL_STONE]},
    {"pl_land_ground01.wav", &sound_land[MATERIAL_GROUND]},
    {"pl_land_wood01.wav", &sound_land[MATERIAL_WOOD]},
    {"pl_land_metal01.wav", &sound_land[MATERIAL_METAL]},
    {"pl_land_carpet01.wav", &sound_land[MATERIAL_CARPET]},
    {"pl_land_ceramic01.wav", &sound_land[MATERIAL_CERAMIC]},
    {"pl_hurt01.wav", &sound_hurt},
    {"pl_death01.wav", &sound_death},
    {"pl_climb01.wav", &sound_climb},
};

int load_fixed_sounds()
{
    for (const fixed_sound& fixed : fixed_sounds) {
        int32_t reported = diagnostics_reported;
        *fixed.index = load_sound(fixed.name);
        if (*fixed.index < 0) {
            report_unloaded(reported, "sound", FOLDER_SOUNDS, fixed.name, nullptr, 0);
            return 0;
        }
    }
    return 1;
}
