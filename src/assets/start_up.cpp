#include "assets/start_up.h"

#include "assets/animation.h"
#include "assets/item.h"
#include "assets/model.h"
#include "assets/scene.h"

int reserve_empty_model_and_animation()
{
    return registry_claim(&models) == 0 && registry_claim(&animations) == 0;
}

int reserve_empty_item()
{
    return registry_claim(&items) == 0;
}

int load_items_and_scene()
{
    return load_items(ITEMS_FILE) && load_scene(SCENE_FILE);
}
