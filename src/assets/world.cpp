#include "assets/world.h"

#include <string.h>

#include "core/heap.h"

registry rooms = REGISTRY_OF(room);
registry portals = REGISTRY_OF(portal);
registry objects = REGISTRY_OF(object);
registry actors = REGISTRY_OF(actor);
registry doors = REGISTRY_OF(door);
light_list steady_lights = {nullptr, 0, 0, STEADY_LIGHT_GROWTH};
light_list flickering_lights = {nullptr, 0, 0, FLICKERING_LIGHT_GROWTH};
object_list dynamic_objects;
collision_tree scene_tree;
int32_t focus_object = -1;
float focus_time;
inventory_state inventory = {{}, 0, 0.0f, 0.0f, 0, 0.0f, -1, 0.0f};

int32_t light_list_alloc(light_list* list)
{
    if (list->count == list->capacity) {
        int32_t grown = list->capacity + list->growth;
        void* block = heap_resize(list->lights, static_cast<size_t>(grown) * sizeof(light));
        if (!block)
            return -1;
        list->lights = static_cast<light*>(block);
        list->capacity = grown;
    }
    memset(&list->lights[list->count], 0, sizeof(light));
    return list->count++;
}

int object_list_append(object_list* list, int32_t object_index)
{
    if (list->count == list->capacity) {
        int32_t grown = list->capacity + OBJECT_LIST_GROWTH;
        void* block = heap_resize(list->indices, static_cast<size_t>(grown) * sizeof(int32_t));
        if (!block)
            return 0;
        list->indices = static_cast<int32_t*>(block);
        list->capacity = grown;
    }
    list->indices[list->count++] = object_index;
    return 1;
}

int create_player()
{
    int32_t index = registry_claim(&objects);
    if (index < 0)
        return 0;
    object* player = registry_at<object>(&objects, index);
    player->body = BODY_CHARACTER;
    player->health = PLAYER_HEALTH;
    player->health_max = PLAYER_HEALTH;
    return 1;
}
