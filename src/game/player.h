// The player's movement, once per fixed update: keys into motion, the body moved through the scene
// with the collision queries, gravity, the feet kept on the floor, jumping, climbing onto ledges,
// footsteps, landings, fall damage, death and the head bob.
//
// The body is two spheres of radius 0.35 above the feet, centred 0.85 and 1.75 above them (the
// capsule between those centres for overlap tests). The lowest 0.5 is left open, which is how steps
// of up to 0.5 are walked over. Y points down: a point above the feet has a smaller y.
#pragma once

#include <stdint.h>

#include "assets/world.h"
#include "core/vec3.h"
#include "game/collision.h"

struct player_motion_state {
    int32_t on_ground;       // the feet were on the ground at the end of the last update
    float ground_level;      // y of the floor under the player (the last ground-probe hit)
    int32_t ground_material; // material of that floor
    vec3 velocity;           // horizontal; y stays 0
    float vertical_velocity; // downward speed (positive falls)
    float air_time;          // seconds since the feet left the ground
    float bob_offset;        // head bob, -0.05 to 0
    float bob_phase;
    int32_t climbing;        // a climb is in progress
    vec3 climb_start;
    vec3 climb_target;
    float climb_start_time;
    float climb_duration;    // seconds: one unit of distance a second
    collision_hit contacts[2]; // the wall contacts of this update's slide, for the debug overlay
    int32_t contact_count;
    float step_distance;     // walked since the last footstep
    float step_length;
    uint32_t step_count;     // footsteps played so far
    int32_t dead_flag;       // set once, at the first update with health below 1
    float death_time;        // game_time then
};

// The one player's movement state.
extern player_motion_state player_motion;

// game_time until which the health line shows; gameplay moves it whenever the health changes
// (and browsing the inventory shows it too), to HUD_SHOW_SECONDS from then.
extern float health_visible_until;
constexpr float HUD_SHOW_SECONDS = 3.2f;

enum {
    FOOTSTEP_ORDER_LENGTH = 64,
};

// The footstep variant (0 to 3) of each step, so that no variant repeats at once.
extern const uint8_t footstep_order[FOOTSTEP_ORDER_LENGTH];

// The movement state of a new game: everything 0 but the step counters (1.5 walked, steps of 2.0).
void clear_player_motion();

// One update of the player: reads tick_dt, game_time, key_state and ENABLE_HEAD_BOBBING, moves the
// object and plays its sounds. It also runs while the player is dead (the view then sinks).
void update_player(object* player);

// Health -= amount, not below 0.
void damage_player(object* player, int32_t amount);
