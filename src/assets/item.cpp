#include "assets/item.h"

#include <math.h>
#include <string.h>

#include "assets/model.h"
#include "assets/sound.h"
#include "assets/xml.h"
#include "core/numbers.h"
#include "core/text.h"

registry items = REGISTRY_OF(item);

// tan(pi / 8) x 4 x 0.6: the scale that fits a model's diagonal into the inventory view.
static const float INVENTORY_FIT = 0.3926991f;

int32_t make_inventory_model(int32_t source)
{
    if (!registry_in_use(&models, source))
        return -1;
    int32_t index = registry_claim(&models);
    if (index < 0)
        return -1;
    // Taken after the claim: growing the pool may have moved the records.
    const model* m = registry_at<model>(&models, source);
    model* copy = registry_at<model>(&models, index);
    if (!model_create(copy, m->point_count, m->triangle_count, m->subset_count)) {
        registry_free(&models, index);
        return -1;
    }
    if (m->triangle_count > 0)
        memcpy(copy->triangles, m->triangles, static_cast<size_t>(m->triangle_count) * sizeof(model_triangle));
    if (m->subset_count > 0)
        memcpy(copy->subsets, m->subsets, static_cast<size_t>(m->subset_count) * sizeof(model_subset));
    if (m->point_count > 0) {
        memcpy(copy->normals, m->normals, static_cast<size_t>(m->point_count) * sizeof(vec3));
        memcpy(copy->texcoords, m->texcoords, static_cast<size_t>(m->point_count) * sizeof(model_texcoord));
    }
    vec3 diagonal = vec3_sub(m->bounds_max, m->bounds_min);
    float length = vec3_length(diagonal);
    float s = (1.0f / length) * (tanf(INVENTORY_FIT) * 4.0f * 0.6f);
    float cx = (m->bounds_min.x + m->bounds_max.x) * 0.5f;
    float cy = (m->bounds_min.y + m->bounds_max.y) * 0.5f;
    float cz = (m->bounds_min.z + m->bounds_max.z) * 0.5f;
    for (int32_t i = 0; i < m->point_count; ++i) {
        vec3 p = m->points[i];
        // The middle of y is taken from the turned z and the middle of z from the turned y, not
        // from the turned middle: the inventory view places its models by this crossing
        // (item_test pins it).
        copy->points[i] = {(p.x - cx) * s, (-p.z - cy) * s, (p.y - cz) * s};
    }
    model_compute_bounds(copy);
    model_compute_normals(copy);
    return index;
}

// The attributes of one <item> into its record; 0 when the item fails the load.
static int read_item(const xml_node* node, int32_t index)
{
    for (int32_t i = 0; i < node->attribute_count; ++i) {
        const xml_attribute& attribute = node->attributes[i];
        const char* value = attribute.value;
        if (xml_name_is(attribute.name, "key")) {
            // A key that cannot be registered is not an error here; pickups naming it will fail.
            asset_name_add(ASSET_ITEM, value, index);
        } else if (xml_name_is(attribute.name, "name")) {
            if (strlen(value) >= ITEM_NAME_CAPACITY)
                return 0;
            memcpy(registry_at<item>(&items, index)->name, value, strlen(value) + 1);
        } else if (xml_name_is(attribute.name, "model")) {
            int32_t loaded = load_model(value);
            int32_t inventory_model = make_inventory_model(loaded >= 0 ? loaded : 0);
            registry_at<item>(&items, index)->model = inventory_model;
        } else if (xml_name_is(attribute.name, "pickup_sound")) {
            int32_t sound_index = load_sound(value);
            if (sound_index < 0)
                return 0;
            registry_at<item>(&items, index)->pickup_sound = sound_index;
        } else if (xml_name_is(attribute.name, "type")) {
            if (!text_equal_ignoring_case(value, "key"))
                return 0;
            registry_at<item>(&items, index)->type = ITEM_TYPE_KEY;
        }
    }
    // The lock is read in a second pass, so that it may stand before or after the type.
    if (registry_at<item>(&items, index)->type != ITEM_TYPE_KEY)
        return 1;
    const char* lock = xml_attribute_value(node, "lock");
    return !lock || parse_int(lock, -1, &registry_at<item>(&items, index)->lock);
}

static int read_items(const xml_document* document)
{
    for (int32_t n = 0; n < document->node_count; ++n) {
        const xml_node& list = document->nodes[n];
        if (!xml_name_is(list.name, "items"))
            continue;
        for (int32_t c = 0; c < list.child_count; ++c) {
            const xml_node& element = list.children[c];
            if (!xml_name_is(element.name, "item"))
                continue;
            int32_t index = registry_claim(&items);
            if (index < 0)
                return 0;
            if (!read_item(&element, index)) {
                registry_free(&items, index);
                return 0;
            }
        }
    }
    return 1;
}

int load_items(const char* path)
{
    xml_document document = {};
    if (!xml_load_file(&document, path))
        return 0;
    int ok = read_items(&document);
    xml_free_document(&document);
    return ok;
}
