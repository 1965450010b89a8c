// The loaded world and items against each other and against the fonts and the collision tree.
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <set>

#include "assets/collision_tree.h"
#include "assets/item.h"
#include "assets/model.h"
#include "assets/scene.h"
#include "assets/world.h"
#include "assets/xml.h"
#include "checks.h"
#include "core/diagnostics.h"
#include "ui/font.h"

namespace {

bool items_incomplete; // items.xml stopped loading: keys it declares may be missing from the records

bool box_holds(const room* r, vec3 point)
{
    return point.x >= r->box_min.x && point.x <= r->box_max.x && point.y >= r->box_min.y &&
           point.y <= r->box_max.y && point.z >= r->box_min.z && point.z <= r->box_max.z;
}

// The room the camera takes itself to be in at `point`: the first after the outside whose box
// holds it (faces included) and whose tree node does too; 0, the outside, when there is none.
int32_t camera_room_at(vec3 point)
{
    for (int32_t r = 1; r < rooms.count; ++r) {
        const room* candidate = registry_at<room>(&rooms, r);
        if (box_holds(candidate, point) && find_point_area(&scene_tree, candidate->bsp_node, point) > 0)
            return r;
    }
    return 0;
}

// Room 0, the outside, is never looked for by position.
void check_rooms()
{
    for (int32_t r = 1; r < rooms.count; ++r) {
        const room* here = registry_at<room>(&rooms, r);
        if (here->bsp_node < 0 || here->bsp_node >= scene_tree.node_count)
            continue;
        vec3 centre = vec3_scale(vec3_add(here->box_min, here->box_max), 0.5f);
        if (find_point_area(&scene_tree, here->bsp_node, centre) == 0) {
            report(SCENE_FILE, here->line,
                   "the centre of the room's box (%g, %g, %g) is not inside its collision-tree node %d",
                   static_cast<double>(centre.x), static_cast<double>(centre.y), static_cast<double>(centre.z),
                   here->bsp_node);
            continue;
        }
        int32_t found = camera_room_at(centre);
        if (found != r)
            report(SCENE_FILE, here->line, "the room shares open space with the room on line %d, which the camera "
                   "finds first", registry_at<room>(&rooms, found)->line);
    }
}

void check_doors(bool scene_loaded)
{
    std::set<int32_t> key_locks;
    for (int32_t i = 1; i < items.count; ++i)
        if (registry_in_use(&items, i) && registry_at<item>(&items, i)->type == ITEM_TYPE_KEY)
            key_locks.insert(registry_at<item>(&items, i)->lock);
    for (int32_t d = 0; d < doors.count; ++d) {
        const door* record = registry_at<door>(&doors, d);
        int32_t line = registry_at<object>(&objects, record->object)->line;
        if (record->lock >= 1 && !items_incomplete && !key_locks.count(record->lock))
            report(SCENE_FILE, line, "lock %d: no key of items.xml opens it", record->lock);
        if (!scene_loaded)
            continue; // the doors were never linked
        bool fills = false;
        for (int32_t i = 0; i < portals.count && !fills; ++i)
            fills = registry_at<portal>(&portals, i)->door == d;
        if (!fills)
            report(SCENE_FILE, line, "the door fills no portal: no portal's centre lies in its box");
    }
}

void check_item_names()
{
    for (int32_t i = 1; i < items.count; ++i) {
        const item* record = registry_at<item>(&items, i);
        std::string drawing = text_problem(&font_system, "system font", record->name, strlen(record->name));
        if (registry_in_use(&items, i) && !drawing.empty())
            report(ITEMS_FILE, record->line, "name: %s", drawing.c_str());
    }
}

bool has_glyph(const glyph& g)
{
    return g.advance != 0 || g.width != 0;
}

// The two-byte sequences that are the letters the fonts are made for: Cyrillic А to я, Ё and ё.
bool is_cyrillic(uint8_t lead, uint8_t next)
{
    if (lead == 0xD0)
        return next == 0x81 || (next >= 0x90 && next <= 0xBF);
    return lead == 0xD1 && ((next >= 0x80 && next <= 0x8F) || next == 0x91);
}

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string printed(const char* format, ...)
{
    char text[DIAGNOSTIC_MESSAGE_CAPACITY];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

} // namespace

void register_unloaded_item_keys()
{
    items_incomplete = true;
    xml_document document = {};
    if (!xml_load_file(&document, ITEMS_FILE))
        return;
    for (int32_t n = 0; n < document.node_count; ++n)
        for (int32_t c = 0; c < document.nodes[n].child_count; ++c) {
            const char* key = xml_attribute_value(&document.nodes[n].children[c], "key");
            if (key && asset_name_find(ASSET_ITEM, key) < 0)
                asset_name_add(ASSET_ITEM, key, 0);
        }
    xml_free_document(&document);
}

void check_world(bool scene_loaded)
{
    if (scene_loaded) // else the room that stopped the load may be half read
        check_rooms();
    check_doors(scene_loaded);
    check_item_names();
}

std::string text_problem(const font* face, const char* font_name, const char* text, size_t length)
{
    bool any = false;
    for (const glyph& g : face->glyphs)
        any = any || has_glyph(g);
    std::string terminated(text, length);
    int32_t position = 0;
    while (static_cast<size_t>(position) < terminated.size()) {
        int32_t start = position;
        uint8_t code = decode_character(terminated.c_str(), &position);
        if (code == 0)
            break;
        uint8_t lead = static_cast<uint8_t>(terminated[static_cast<size_t>(start)]);
        uint8_t next = static_cast<uint8_t>(terminated[static_cast<size_t>(start) + 1]);
        if (position - start == 2 && !is_cyrillic(lead, next))
            return printed("the bytes %02X %02X are neither ASCII nor Cyrillic: the game draws character 0x%02X for "
                           "them", lead, next, code);
        if (!any || has_glyph(face->glyphs[code]))
            continue;
        if (code >= 0x20 && code < 0x7F)
            return printed("character \"%c\" is not in the %s: it is not drawn", code, font_name);
        return printed("character 0x%02X is not in the %s: it is not drawn", code, font_name);
    }
    return "";
}
