#include "app/start_up.h"

#include "assets/item.h"
#include "assets/model.h"
#include "assets/scene.h"
#include "assets/sound.h"
#include "assets/start_up.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "core/diagnostics.h"
#include "game/fixed_sounds.h"
#include "render/sky.h"
#include "ui/font.h"

start_placement requested_start_placement;

static void place_player_at_start()
{
    if (!requested_start_placement.requested)
        return;
    object* player = registry_at<object>(&objects, PLAYER_OBJECT);
    player->position = {requested_start_placement.position[0], requested_start_placement.position[1],
                        requested_start_placement.position[2]};
    player->yaw = requested_start_placement.yaw;
    player->pitch = requested_start_placement.pitch;
}

static int create_game_player()
{
    if (!create_player())
        return 0;
    place_player_at_start();
    return 1;
}

static int load_fallback_texture()
{
    return make_fallback_texture() >= 0;
}

static int load_item_catalogue()
{
    return load_items(ITEMS_FILE);
}

static int load_the_scene()
{
    return load_scene(SCENE_FILE);
}

const start_up_step start_up_steps[START_UP_STEP_COUNT] = {
    {"the player object", create_game_player},
    {"the fonts", load_game_fonts},
    {"the fallback texture", load_fallback_texture},
    {"the sky textures", load_sky_textures},
    {"the empty model and animation", reserve_empty_model_and_animation},
    {"the fixed sounds", load_fixed_sounds},
    {"the empty item", reserve_empty_item},
    {ITEMS_FILE, load_item_catalogue},
    {SCENE_FILE, load_the_scene},
};

int run_start_up_steps()
{
    for (const start_up_step& step : start_up_steps)
        if (!step.run())
            return 0;
    return 1;
}
