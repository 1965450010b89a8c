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
    if (!heap_grow(&list->lights, &list->capacity, list->count + 1, list->capacity + list->growth))
        return -1;
    memset(&list->lights[list->count], 0, sizeof(light));
    return list->count++;
}

int object_list_append(object_list* list, int32_t object_index)
{
    if (!heap_grow(&list->indices, &list->capacity, list->count + 1, list->capacity + OBJECT_LIST_GROWTH))
        return 0;
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
