#include "shipped_game.h"

#include <unistd.h>

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
    return depth_buffer_create() && occlusion_buffers_create();
}
