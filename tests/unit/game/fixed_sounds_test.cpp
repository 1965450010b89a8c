#include <gtest/gtest.h>

#include <string>

#include "game/fixed_sounds.h"

TEST(fixed_sounds, doors_then_four_footsteps_and_a_landing_per_material_then_hurt_death_and_climb)
{
    EXPECT_STREQ(fixed_sounds[0].name, "door_opening.wav");
    EXPECT_EQ(fixed_sounds[3].index, &sound_door_unlock);
    for (int32_t material = 0; material < MATERIAL_COUNT; ++material) {
        for (int32_t variant = 0; variant < FOOTSTEP_VARIANTS; ++variant) {
            const fixed_sound& step = fixed_sounds[4 + FOOTSTEP_VARIANTS * material + variant];
            EXPECT_EQ(std::string(step.name),
                      "pl_step_" + std::string(material_names[material]) + "0" + std::to_string(variant + 1) + ".wav");
            EXPECT_EQ(step.index, &sound_step[material][variant]);
        }
        const fixed_sound& landing = fixed_sounds[28 + material];
        EXPECT_EQ(std::string(landing.name), "pl_land_" + std::string(material_names[material]) + "01.wav");
        EXPECT_EQ(landing.index, &sound_land[material]);
    }
    EXPECT_STREQ(fixed_sounds[34].name, "pl_hurt01.wav");
    EXPECT_STREQ(fixed_sounds[35].name, "pl_death01.wav");
    EXPECT_STREQ(fixed_sounds[36].name, "pl_climb01.wav");
    EXPECT_EQ(fixed_sounds[36].index, &sound_climb);
}
