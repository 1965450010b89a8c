#include "hosts/run_watch.h"

#include <math.h>

#include "assets/world.h"
#include "core/numbers.h"
#include "game/interaction.h"
#include "game/player.h"

run_watch watch;

// A leaf eases towards its target, so it never overshoots; a hundredth of a degree allows for rounding.
static const float SWING_TOLERANCE_DEGREES = 0.01f;

void run_watch_reset()
{
    watch = run_watch{0, 0, -1, 0, 0.0f};
}

static int player_finite()
{
    if (!registry_in_use(&objects, PLAYER_OBJECT))
        return 1;
    vec3 p = registry_at<object>(&objects, PLAYER_OBJECT)->position;
    return isfinite(p.x) && isfinite(p.y) && isfinite(p.z);
}

// The widest any door's leaf stands from its closed yaw, in degrees.
static float widest_door_swing()
{
    float widest = 0.0f;
    for (int32_t i = 0; i < doors.count; ++i) {
        if (!registry_in_use(&doors, i))
            continue;
        const door* d = registry_at<door>(&doors, i);
        float swing = fabsf(registry_at<object>(&objects, d->object)->yaw - d->closed_yaw) / DEGREES_TO_RADIANS;
        if (!(swing <= widest)) // a NaN yaw counts as the widest of all
            widest = swing;
    }
    return widest;
}

void run_watch_update(int32_t tick)
{
    watch.updates_watched += 1;
    if (!player_finite()) {
        watch.player_not_finite += 1;
        if (watch.first_player_not_finite < 0)
            watch.first_player_not_finite = tick;
    }
    float swing = widest_door_swing();
    if (!(swing <= DOOR_OPEN_DEGREES + SWING_TOLERANCE_DEGREES))
        watch.door_beyond_swing += 1;
    if (!(swing <= watch.widest_door_swing_degrees))
        watch.widest_door_swing_degrees = swing;
}
