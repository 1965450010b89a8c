#include "support/asset_reset.h"

#include <stdlib.h>

#include "assets/animation.h"
#include "assets/dialogue.h"
#include "assets/item.h"
#include "assets/model.h"
#include "assets/sound.h"
#include "assets/texture.h"
#include "assets/world.h"

namespace {

template <typename T, typename F> void release_records(registry* pool, F release)
{
    for (int32_t i = 0; i < pool->count; ++i)
        if (registry_in_use(pool, i))
            release(registry_at<T>(pool, i));
    free(pool->records);
    free(pool->in_use);
    *pool = REGISTRY_OF(T);
}

template <typename T> void release_pool(registry* pool)
{
    release_records<T>(pool, [](T*) {});
}

} // namespace

void reset_assets()
{
    release_records<texture>(&textures, [](texture* t) { free(t->texels); });
    release_records<sound>(&sounds, [](sound* s) { free(s->data); });
    release_records<model>(&models, [](model* m) { model_free(m); });
    release_records<animation>(&animations, [](animation* a) { animation_free(a); });
    release_records<dialogue>(&dialogues, [](dialogue* d) { dialogue_free(d); });
    release_pool<item>(&items);
    release_pool<object>(&objects);
    release_pool<actor>(&actors);
    release_pool<door>(&doors);
    release_pool<portal>(&portals);
    release_pool<room>(&rooms);
    free(steady_lights.lights);
    steady_lights = {nullptr, 0, 0, STEADY_LIGHT_GROWTH};
    free(flickering_lights.lights);
    flickering_lights = {nullptr, 0, 0, FLICKERING_LIGHT_GROWTH};
    free(dynamic_objects.indices);
    dynamic_objects = {};
    collision_tree_free(&scene_tree);
    free(asset_names.entries);
    asset_names = {};
    fallback_texture = -1;
    texture_reload_message[0] = 0;
}
