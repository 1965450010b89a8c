#include "shipped_game.h"

#include <unistd.h>

#include <algorithm>
#include <vector>

#include "app/game.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/frame.h"
#include "core/numbers.h"
#include "platform/platform.h"
#include "render/frame.h"
#include "render/occlusion.h"

namespace {

std::vector<uint16_t> pixels(static_cast<size_t>(SHIPPED_GAME_WIDTH) * SHIPPED_GAME_HEIGHT);

// Feet position (y points down: -4.4 is the upper floor), then yaw and pitch in degrees.
// Doors are shut: the walk passes through their leaves into the hall, the armoury and the solar.
const standpoint walk[] = {
    {0.0f, 0.0f, -6.0f, 0.0f, -10.0f},   // the yard, facing the keep
    {-3.0f, 0.0f, -3.0f, 40.0f, -25.0f}, // the moon over the battlements
    {2.0f, 0.0f, 3.0f, -20.0f, 0.0f},
    {0.0f, 0.0f, 8.0f, 0.0f, 0.0f},      // before the oak door
    {0.0f, 0.0f, 11.0f, 0.0f, 0.0f},     // the great hall
    {0.0f, 0.0f, 13.3f, -90.0f, 0.0f},
    {-6.5f, 0.0f, 13.3f, -90.0f, 5.0f},  // the kitchen
    {-7.0f, 0.0f, 14.0f, 180.0f, 0.0f},
    {-5.0f, 0.0f, 13.3f, 90.0f, 0.0f},
    {3.5f, 0.0f, 13.3f, 90.0f, 0.0f},    // across the hall to the side door
    {7.0f, 0.0f, 13.3f, 90.0f, 0.0f},    // the armoury
    {7.0f, 0.0f, 15.0f, 0.0f, 0.0f},
    {5.0f, 0.0f, 13.3f, -90.0f, 0.0f},
    {0.0f, 0.0f, 17.0f, 0.0f, 0.0f},     // past the Warden
    {0.0f, 0.0f, 22.0f, 45.0f, 0.0f},    // the storeroom
    {3.0f, 0.0f, 23.0f, 90.0f, 0.0f},
    {0.0f, 0.0f, 21.0f, 180.0f, 0.0f},
    {0.0f, 0.0f, 18.8f, -90.0f, 0.0f},
    {-6.0f, 0.0f, 18.8f, -90.0f, -10.0f},  // the stairwell
    {-8.8f, 0.0f, 18.0f, 0.0f, -20.0f},    // the foot of the stairs
    {-8.8f, -4.4f, 24.2f, 0.0f, 0.0f},     // their top
    {-6.0f, -4.4f, 24.8f, 90.0f, 0.0f},
    {-3.0f, -4.4f, 24.8f, 90.0f, 0.0f},    // the library
    {0.0f, -4.4f, 21.0f, 180.0f, 0.0f},
    {0.0f, -4.4f, 17.6f, 180.0f, 0.0f},
    {0.0f, -4.4f, 15.0f, 180.0f, -5.0f},   // the solar
    {0.0f, -4.4f, 12.0f, 180.0f, -10.0f},  // its stained-glass window
    {2.0f, -4.4f, 13.0f, 45.0f, 0.0f},
};
const int32_t WAYPOINTS = sizeof walk / sizeof walk[0];

} // namespace

standpoint placement_on_walk(int32_t i)
{
    float along = static_cast<float>(i) * (WAYPOINTS - 1) / (WALK_PLACEMENTS - 1);
    int32_t leg = std::min(static_cast<int32_t>(along), WAYPOINTS - 2);
    float t = along - static_cast<float>(leg);
    const standpoint& a = walk[leg];
    const standpoint& b = walk[leg + 1];
    auto mix = [t](float from, float to) { return from + (to - from) * t; };
    return {mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.yaw, b.yaw), mix(a.pitch, b.pitch)};
}


int start_shipped_game()
{
    static int started = -1;
    if (started >= 0)
        return started;
    frame_width = SHIPPED_GAME_WIDTH;
    frame_height = SHIPPED_GAME_HEIGHT;
    color_buffer = pixels.data();
    started = chdir(GLOAMHOLD_SOURCE_DIR) == 0 && game_init();
    debug_info = 0;
    debug_show_areas = 0;
    return started;
}

void stand_at(const standpoint& place)
{
    object* player = registry_at<object>(&objects, PLAYER_OBJECT);
    player->position = player->previous_position = {place.x, place.y, place.z};
    player->yaw = player->previous_yaw = place.yaw * DEGREES_TO_RADIANS;
    player->pitch = player->previous_pitch = place.pitch * DEGREES_TO_RADIANS;
}

int use_frame_size(int32_t width, int32_t height)
{
    pixels.assign(static_cast<size_t>(width) * static_cast<size_t>(height), 0);
    frame_width = width;
    frame_height = height;
    color_buffer = pixels.data();
    platform_heap_free(depth_buffer);
    platform_heap_free(depth_ranks);
    return depth_buffer_create() && occlusion_buffers_create();
}
