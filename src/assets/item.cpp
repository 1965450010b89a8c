#include "assets/item.h"

#include <math.h>
#include <string.h>

#include "assets/model.h"
#include "assets/sound.h"
#include "assets/xml.h"
#include "core/diagnostics.h"
#include "core/numbers.h"
#include "core/text.h"

registry items = REGISTRY_OF(item);
const char* const ITEMS_FILE = "gloamhold_data/items.xml";

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

static const char* items_file; // the file being loaded, for reports

// A key that cannot be registered, or one taken already, is not an error here; pickups naming it
// fail, or get the earlier item.
static void register_key(const xml_node* node, const char* key, int32_t index)
{
    if (asset_name_find(ASSET_ITEM, key) >= 0)
        report(items_file, node->line, "key \"%s\" is taken already by an earlier item, which pickups get", key);
    if (!asset_name_add(ASSET_ITEM, key, index))
        report(items_file, node->line, "key \"%s\" is longer than %d characters: no pickup can name it", key,
               ASSET_NAME_CAPACITY - 1);
}

// The attributes of one <item> into its record; 0 when the item fails the load.
static int read_item(const xml_node* node, int32_t index)
{
    registry_at<item>(&items, index)->line = node->line;
    if (!xml_attribute_value(node, "key"))
        report(items_file, node->line, "the item has no key: no pickup can name it");
    for (int32_t i = 0; i < node->attribute_count; ++i) {
        const xml_attribute& attribute = node->attributes[i];
        const char* value = attribute.value;
        if (xml_name_is(attribute.name, "key")) {
            register_key(node, value, index);
        } else if (xml_name_is(attribute.name, "name")) {
            if (strlen(value) >= ITEM_NAME_CAPACITY) {
                report(items_file, node->line, "the name is %d characters long, but an item's may have at most %d",
                       static_cast<int>(strlen(value)), ITEM_NAME_CAPACITY - 1);
                return 0;
            }
            memcpy(registry_at<item>(&items, index)->name, value, strlen(value) + 1);
        } else if (xml_name_is(attribute.name, "model")) {
            int32_t reported = diagnostics_reported;
            int32_t loaded = load_model(value);
            if (loaded < 0) // not a failure: the item shows the empty model
                report_unloaded(reported, "model", FOLDER_MODELS, value, items_file, node->line);
            int32_t inventory_model = make_inventory_model(loaded >= 0 ? loaded : 0);
            registry_at<item>(&items, index)->model = inventory_model;
        } else if (xml_name_is(attribute.name, "pickup_sound")) {
            int32_t reported = diagnostics_reported;
            int32_t sound_index = load_sound(value);
            if (sound_index < 0) {
                report_unloaded(reported, "sound", FOLDER_SOUNDS, value, items_file, node->line);
                return 0;
            }
            registry_at<item>(&items, index)->pickup_sound = sound_index;
        } else if (xml_name_is(attribute.name, "type")) {
            if (!text_equal_ignoring_case(value, "key")) {
                report(items_file, node->line, "type \"%s\": the only item type is \"key\"", value);
                return 0;
            }
            registry_at<item>(&items, index)->type = ITEM_TYPE_KEY;
        }
    }
    // The lock is read in a second pass, so that it may stand before or after the type.
    item* record = registry_at<item>(&items, index);
    if (record->type != ITEM_TYPE_KEY)
        return 1;
    const char* lock = xml_attribute_value(node, "lock");
    if (lock && !parse_int(lock, -1, &record->lock)) {
        report(items_file, node->line, "lock \"%s\" is not an integer", lock);
        return 0;
    }
    if (record->lock < 1)
        report(items_file, node->line, "the key has no lock number of 1 or more: it opens no door");
    return 1;
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
    items_file = path;
    xml_document document = {};
    if (!xml_load_file(&document, path)) {
        if (xml_error_line == 0)
            report(path, 0, "missing: the game loads this file at start-up and cannot start without it");
        return 0;
    }
    int ok = read_items(&document);
    xml_free_document(&document);
    return ok;
}
