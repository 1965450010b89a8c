#include "game/player.h"

#include <float.h>
#include <math.h>

#include "audio/mixer.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "game/fixed_sounds.h"

player_motion_state player_motion = {};
float health_visible_until;

const uint8_t footstep_order[FOOTSTEP_ORDER_LENGTH] = {
    0, 2, 1, 3, 2, 0, 3, 1, 1, 3, 0, 2, 3, 1, 2, 0, 2, 1, 3, 0, 1, 2, 0, 3, 3, 0, 2, 1, 0, 3, 1, 2,
    1, 0, 2, 3, 0, 1, 3, 2, 2, 3, 1, 0, 3, 2, 0, 1, 0, 3, 2, 1, 3, 0, 1, 2, 1, 2, 3, 0, 2, 1, 0, 3,
};

namespace {

// The movement keys (letters are their upper-case codes).
enum : uint8_t {
    MOVE_KEY_FORWARD = 'W',
    MOVE_KEY_BACK = 'S',
    MOVE_KEY_LEFT = 'A',
    MOVE_KEY_RIGHT = 'D',
    MOVE_KEY_RUN = KEYCODE_SHIFT,
    MOVE_KEY_SLOW = KEYCODE_ALT,
    MOVE_KEY_JUMP = KEYCODE_SPACE, // jump and climb
};

// The body.
constexpr float BODY_RADIUS = 0.35f;
constexpr float BODY_OPEN_BELOW = 0.5f;    // the open gap under the lower sphere: steps up to this walk over
constexpr float BODY_UPPER_CENTRE = 1.75f; // the upper sphere's centre above the feet

// Walking and falling.
constexpr float GRAVITY = 20.0f;
constexpr float JUMP_VELOCITY = -4.0f;
constexpr float JUMP_GRACE = 0.1f;          // jumping stays possible this long after leaving the ground
constexpr float SPEED_RUN = 6.5f;
constexpr float SPEED_SLOW = 2.0f;
constexpr float SPEED_WALK = 4.0f;
constexpr float ACCELERATION_GROUND = 65.0f;
constexpr float FRICTION_GROUND = 10.0f;
constexpr float ACCELERATION_AIR = 13.0f;
constexpr float FRICTION_AIR = 2.0f;
constexpr float ON_GROUND_TOLERANCE = 0.01f;
constexpr float WALL_GAP = 0.01f;          // how far the body stops short of a wall
constexpr float LANDING_SOUND_AIR_TIME = 0.1f;

// Falls.
constexpr float HARMLESS_FALL_SPEED = 12.0f;
constexpr float LETHAL_FALL_SPEED_RANGE = 18.0f; // full damage at 12 + 18
constexpr float DEAD_FEET_BELOW_FLOOR = 1.25f;
constexpr float DEAD_SINK_RATE = 4.0f;

// Footsteps and the head bob.
constexpr float STEP_DISTANCE_AT_REST = 1.5f; // the first step after standing still comes after 0.5
constexpr float STEP_LENGTH = 2.0f;
constexpr float STANDING_STILL = 0.0001f;
constexpr float BOB_MIN_SPEED = 3.9999f; // walking at 4.0 bobs, walking slowly at 2.0 does not
constexpr float BOB_PHASE_PER_UNIT = 3.0f;
constexpr float BOB_DEPTH = 0.05f;
constexpr float BOB_SETTLE_RATE = 8.0f;

// Climbing.
constexpr float CLIMB_MIN_AIR_TIME = 0.15f;
constexpr float CLIMB_PROBE_AHEAD = 0.35f;
constexpr float CLIMB_PROBE_RADIUS = 0.4f;
constexpr float CLIMB_TARGET_BEYOND_EDGE = 0.175f;

int key_down(uint8_t code)
{
    return key_state[code] != KEY_UP;
}

float clamp(float x, float low, float high)
{
    return x < low ? low : (x > high ? high : x);
}

// The fraction of the way that exponential smoothing at `rate` covers in one update.
float smoothing(float rate, float dt)
{
    return 1.0f - expf(-rate * dt);
}

int valid_material(int32_t material)
{
    return material >= 0 && material < MATERIAL_COUNT;
}

vec3 lower_centre(vec3 feet)
{
    return {feet.x, feet.y - BODY_OPEN_BELOW - BODY_RADIUS, feet.z};
}

vec3 upper_centre(vec3 feet)
{
    return {feet.x, feet.y - BODY_UPPER_CENTRE, feet.z};
}

// This update's displacement from the keys: the wish direction, a jump, then acceleration against
// friction.
vec3 walk_velocity(const object* player, float dt)
{
    player_motion_state* motion = &player_motion;
    float s = sinf(player->yaw);
    float c = cosf(player->yaw);
    vec3 wish = {0.0f, 0.0f, 0.0f};
    if (key_down(MOVE_KEY_FORWARD))
        wish = vec3_add(wish, {s, 0.0f, c});
    if (key_down(MOVE_KEY_LEFT))
        wish = vec3_add(wish, {-c, 0.0f, s});
    if (key_down(MOVE_KEY_BACK))
        wish = vec3_add(wish, {-s, 0.0f, -c});
    if (key_down(MOVE_KEY_RIGHT))
        wish = vec3_add(wish, {c, 0.0f, -s});
    wish = vec3_normalise(wish);

    float max_speed = key_down(MOVE_KEY_RUN) ? SPEED_RUN : (key_down(MOVE_KEY_SLOW) ? SPEED_SLOW : SPEED_WALK);

    if (key_state[MOVE_KEY_JUMP] == KEY_PRESSED && (motion->on_ground || motion->air_time < JUMP_GRACE))
        motion->vertical_velocity = JUMP_VELOCITY;

    float acceleration = motion->on_ground ? ACCELERATION_GROUND : ACCELERATION_AIR;
    float friction = motion->on_ground ? FRICTION_GROUND : FRICTION_AIR;
    motion->velocity = vec3_scale(motion->velocity, expf(-friction * dt));
    if (wish.x != 0.0f || wish.z != 0.0f) {
        // Not clamped at 0: a player faster than max_speed along the wish is slowed toward it.
        float add = fminf(acceleration * dt, max_speed - vec3_dot(motion->velocity, wish));
        motion->velocity = vec3_add(motion->velocity, vec3_scale(wish, add));
    }
    return vec3_scale(motion->velocity, dt);
}

// Sweeps both spheres of the body along dir; the nearer hit, the upper sphere winning a tie.
collision_hit sweep_body(vec3 feet, vec3 dir, float distance)
{
    sphere upper = {upper_centre(feet), BODY_RADIUS};
    collision_hit nearest = sweep_sphere(&upper, dir, distance);
    if (nearest.hit && nearest.distance < COLLISION_EPSILON)
        return nearest;
    sphere lower = {lower_centre(feet), BODY_RADIUS};
    collision_hit other = sweep_sphere(&lower, dir, distance);
    if (other.hit && (!nearest.hit || other.distance < nearest.distance))
        return other;
    return nearest;
}

// Moves the body by `displacement`, sliding along what it meets. The whole displacement carries on
// along each wall (only its part into the wall is removed), and the second wall ends the move.
void slide_move(object* player, vec3 displacement)
{
    player_motion_state* motion = &player_motion;
    motion->contact_count = 0;
    for (;;) {
        float distance = vec3_length(displacement);
        if (distance <= COLLISION_EPSILON)
            return;
        vec3 dir = vec3_scale(displacement, 1.0f / distance);
        collision_hit wall = sweep_body(player->position, dir, distance);
        if (!wall.hit) {
            player->position = vec3_add(player->position, displacement);
            return;
        }
        player->position = vec3_add(player->position, vec3_scale(dir, fmaxf(0.0f, wall.distance - WALL_GAP)));
        vec3 n = vec3_normalise({wall.normal.x, 0.0f, wall.normal.z});
        motion->contacts[motion->contact_count++] = wall;
        if (motion->contact_count == 2)
            return;
        displacement = vec3_sub(displacement, vec3_scale(n, vec3_dot(displacement, n)));
    }
}

void apply_fall_damage(object* player)
{
    const player_motion_state* motion = &player_motion;
    float f = clamp((motion->vertical_velocity - HARMLESS_FALL_SPEED) / LETHAL_FALL_SPEED_RANGE, 0.0f, 1.0f);
    float factor = 1.0f;
    if (motion->ground_material == MATERIAL_GROUND || motion->ground_material == MATERIAL_CARPET)
        factor = 0.6f;
    else if (motion->ground_material == MATERIAL_WOOD)
        factor = 0.8f;
    int32_t damage = static_cast<int32_t>(static_cast<float>(player->health_max) * factor * f);
    if (damage <= 0)
        return;
    damage_player(player, damage);
    play_sound(player->health > 0 ? sound_hurt : sound_death);
    health_visible_until = game_time + HUD_SHOW_SECONDS;
}

void update_head_bob(const object* player, float dt)
{
    player_motion_state* motion = &player_motion;
    float moved = vec3_length(vec3_sub(player->position, player->previous_position));
    if (moved > dt * BOB_MIN_SPEED) {
        motion->bob_phase += moved * BOB_PHASE_PER_UNIT;
        motion->bob_offset = (cosf(motion->bob_phase) - 1.0f) * 0.5f * BOB_DEPTH;
    } else {
        motion->bob_phase = 0.0f;
        motion->bob_offset += smoothing(BOB_SETTLE_RATE, dt) * (0.0f - motion->bob_offset);
    }
}

void update_footsteps(const object* player)
{
    player_motion_state* motion = &player_motion;
    float moved = vec3_length(vec3_sub(player->position, player->previous_position));
    if (moved < STANDING_STILL) {
        motion->step_distance = STEP_DISTANCE_AT_REST;
        return;
    }
    motion->step_distance += moved;
    if (motion->step_distance < motion->step_length)
        return;
    motion->step_count += 1;
    motion->step_distance -= motion->step_length;
    uint8_t variant = footstep_order[motion->step_count % FOOTSTEP_ORDER_LENGTH];
    if (valid_material(motion->ground_material))
        play_sound(sound_step[motion->ground_material][variant]);
}

// Starts a climb when the player, rising with Space held, reaches a ledge edge ahead that has room
// above it. 1 when a climb began.
int start_climb(object* player)
{
    player_motion_state* motion = &player_motion;
    if (motion->on_ground || !key_down(MOVE_KEY_JUMP) || !(motion->vertical_velocity < 0.0f) ||
        !(motion->air_time > CLIMB_MIN_AIR_TIME))
        return 0;

    vec3 feet = player->position;
    vec3 probe = {feet.x + sinf(player->yaw) * CLIMB_PROBE_AHEAD, feet.y, feet.z + cosf(player->yaw) * CLIMB_PROBE_AHEAD};
    capsule reach = {upper_centre(probe), lower_centre(probe), CLIMB_PROBE_RADIUS};
    vec3 edge;
    if (!nearest_edge_point(&reach, &edge))
        return 0;
    if (edge.y > feet.y - BODY_OPEN_BELOW)
        return 0; // low enough to walk over

    vec3 h = vec3_normalise({edge.x - feet.x, 0.0f, edge.z - feet.z});
    vec3 target = {edge.x + h.x * CLIMB_TARGET_BEYOND_EDGE, edge.y, edge.z + h.z * CLIMB_TARGET_BEYOND_EDGE};
    capsule room = {{target.x, target.y - BODY_OPEN_BELOW, target.z}, upper_centre(target), BODY_RADIUS};
    if (overlap_capsule(&room).hit)
        return 0;

    motion->climb_target = target;
    motion->climb_start = feet;
    motion->climb_start_time = game_time;
    motion->climb_duration = vec3_length(vec3_sub(target, feet));
    motion->climbing = 1;
    motion->vertical_velocity = 0.0f;
    motion->air_time = 0.0f;
    motion->velocity = {0.0f, 0.0f, 0.0f};
    play_sound(sound_climb);
    return 1;
}

// Starts a climb when one is possible, and moves a climb in progress: straight up over the first
// half of the ease, then forward over the edge as well. Letting go of Space in the first half drops
// the player where he is.
void update_climb(object* player)
{
    player_motion_state* motion = &player_motion;
    if (!motion->climbing && !start_climb(player))
        return;

    float s = clamp((game_time - motion->climb_start_time) / motion->climb_duration, 0.0f, 1.0f);
    float e = (3.0f - 2.0f * s) * s * s;
    vec3 from = motion->climb_start;
    vec3 to = motion->climb_target;
    if (e >= 1.0f) {
        player->position = to;
        motion->climbing = 0;
        return;
    }
    if (e <= 0.5f) {
        if (!key_down(MOVE_KEY_JUMP)) {
            motion->climbing = 0;
            return;
        }
        player->position.y = from.y + (to.y - from.y) * e;
        return;
    }
    float k = 2.0f * (e - 0.5f);
    player->position.x = from.x + (to.x - from.x) * k;
    player->position.y = from.y + (to.y - from.y) * e;
    player->position.z = from.z + (to.z - from.z) * k;
}

} // namespace

void clear_player_motion()
{
    player_motion = {};
    player_motion.step_distance = STEP_DISTANCE_AT_REST;
    player_motion.step_length = STEP_LENGTH;
}

void damage_player(object* player, int32_t amount)
{
    player->health -= amount;
    if (player->health < 0)
        player->health = 0;
}

void update_player(object* player)
{
    player_motion_state* motion = &player_motion;
    float dt = tick_dt;

    if (player->health < 1) {
        if (!motion->dead_flag) {
            motion->dead_flag = 1;
            motion->death_time = game_time;
        }
        // The feet sink to below the floor, so that the view settles near it.
        float y = player->position.y;
        player->position.y = y + smoothing(DEAD_SINK_RATE, dt) * ((motion->ground_level + DEAD_FEET_BELOW_FLOOR) - y);
        return;
    }

    update_climb(player);
    if (motion->climbing)
        return;

    slide_move(player, walk_velocity(player, dt));

    collision_hit ground = cast_ray(lower_centre(player->position), {0.0f, 1.0f, 0.0f}, FLT_MAX);
    if (ground.hit) {
        motion->ground_level = ground.point.y;
        motion->ground_material = ground.material;
    }

    motion->vertical_velocity += GRAVITY * dt;
    player->position.y += motion->vertical_velocity * dt;
    if (player->position.y > motion->ground_level)
        player->position.y = motion->ground_level;

    capsule body = {lower_centre(player->position), upper_centre(player->position), BODY_RADIUS};
    collision_hit overlap = overlap_capsule(&body);
    if (overlap.hit)
        player->position = vec3_add(player->position, vec3_scale(overlap.normal, overlap.distance));

    int was_on_ground = motion->on_ground;
    motion->on_ground = motion->ground_level - player->position.y <= ON_GROUND_TOLERANCE;
    if (!motion->on_ground) {
        motion->air_time += dt;
        return;
    }
    if (!was_on_ground) {
        if (motion->air_time > LANDING_SOUND_AIR_TIME && valid_material(motion->ground_material))
            play_sound(sound_land[motion->ground_material]);
        apply_fall_damage(player);
    }
    if (ENABLE_HEAD_BOBBING)
        update_head_bob(player, dt);
    update_footsteps(player);
    motion->vertical_velocity = 0.0f;
    motion->air_time = 0.0f;
}
