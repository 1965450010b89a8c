#include "assets/scene.h"

#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "assets/animation.h"
#include "assets/dialogue.h"
#include "assets/model.h"
#include "assets/world.h"
#include "assets/xml.h"
#include "core/diagnostics.h"
#include "core/numbers.h"
#include "core/placement.h"
#include "core/text.h"

static const float PORTAL_MATCH_TOLERANCE = 0.01f;
enum { FLICKER_STYLE_LAST = 11 };

const char* const SCENE_FILE = "gloamhold_data/scene.xml";
static const char* scene_file; // the file being loaded, for reports

static int only_blanks(const char* text)
{
    while (*text == ' ' || *text == '\t' || *text == '\r' || *text == '\n')
        ++text;
    return *text == 0;
}

// "%f,%f,%f %f,%f,%f": exactly six numbers.
static int read_box(const char* text, vec3* min, vec3* max)
{
    int end = 0;
    return sscanf(text, "%f,%f,%f %f,%f,%f%n", &min->x, &min->y, &min->z, &max->x, &max->y, &max->z, &end) == 6 &&
           only_blanks(text + end);
}

// Four corners of three numbers each: exactly twelve numbers.
static int read_corners(const char* text, vec3* c)
{
    int end = 0;
    return sscanf(text, "%f,%f,%f %f,%f,%f %f,%f,%f %f,%f,%f%n", &c[0].x, &c[0].y, &c[0].z, &c[1].x, &c[1].y,
                  &c[1].z, &c[2].x, &c[2].y, &c[2].z, &c[3].x, &c[3].y, &c[3].z, &end) == 12 &&
           only_blanks(text + end);
}

// A problem of an element, at its line. Returns 0.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
static int report_at(const xml_node* node, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report_v(scene_file, node->line, format, arguments);
    va_end(arguments);
    return 0;
}

// An optional number attribute: absent leaves *out alone, present must parse.
static int read_float(const xml_node* node, const char* name, float* out)
{
    const char* value = xml_attribute_value(node, name);
    return !value || parse_float(value, -1, out) || report_at(node, "%s \"%s\" is not a number", name, value);
}

static int read_int(const xml_node* node, const char* name, int32_t* out)
{
    const char* value = xml_attribute_value(node, name);
    return !value || parse_int(value, -1, out) || report_at(node, "%s \"%s\" is not an integer", name, value);
}

// Weights may only name bones that the object's animation has: the first weight's bone that it
// lacks, or -1.
static int32_t bone_missing_from_animation(int32_t model_index, int32_t animation_index)
{
    if (!registry_in_use(&models, model_index))
        return -1; // no model record at all: no weights to check
    const model* m = registry_at<model>(&models, model_index);
    const animation* a = registry_at<animation>(&animations, animation_index);
    for (int32_t i = 0; i < m->weight_count; ++i)
        if (m->weights[i].bone >= a->bone_count)
            return m->weights[i].bone;
    return -1;
}

// An asset the element names by `attribute`, loaded with `load`; 0 when the element has none.
static int32_t load_named_by(const xml_node* node, const char* attribute, const char* noun, const char* folder,
                             int32_t (*load)(const char* name))
{
    const char* name = xml_attribute_value(node, attribute);
    if (!name)
        return 0;
    int32_t reported = diagnostics_reported;
    int32_t index = load(name);
    if (index < 0)
        report_unloaded(reported, noun, folder, name, scene_file, node->line);
    return index;
}

// Position, angles (degrees in the file), model and animation of an object element.
static int read_object(const xml_node* node, int32_t index)
{
    vec3 position = {0.0f, 0.0f, 0.0f};
    float yaw = 0.0f, pitch = 0.0f;
    if (!read_float(node, "x", &position.x) || !read_float(node, "y", &position.y) ||
        !read_float(node, "z", &position.z) || !read_float(node, "yaw", &yaw) || !read_float(node, "pitch", &pitch))
        return 0;
    int32_t model_index = load_named_by(node, "model", "model", FOLDER_MODELS, load_model);
    if (model_index < 0)
        return 0;
    int32_t animation_index = load_named_by(node, "animation", "animation", FOLDER_ANIMATIONS, load_animation);
    if (animation_index < 0)
        return 0;
    const char* animation_name = xml_attribute_value(node, "animation");
    int32_t missing_bone = animation_name ? bone_missing_from_animation(model_index, animation_index) : -1;
    if (missing_bone >= 0)
        return report_at(node, "model \"%s\" is moved by bone %d, but animation \"%s\" has %d bones",
                         xml_attribute_value(node, "model"), missing_bone, animation_name,
                         registry_at<animation>(&animations, animation_index)->bone_count);
    object* o = registry_at<object>(&objects, index);
    o->line = node->line;
    o->position = position;
    o->yaw = yaw * DEGREES_TO_RADIANS;
    o->pitch = pitch * DEGREES_TO_RADIANS;
    o->model = model_index;
    o->animation = animation_index;
    return 1;
}

// A new object slot read from the element; -1 on failure.
static int32_t add_object(const xml_node* node)
{
    int32_t index = registry_claim(&objects);
    if (index < 0 || !read_object(node, index))
        return -1;
    return index;
}

static int add_portal(const xml_node* node, int32_t room_index)
{
    const char* points = xml_attribute_value(node, "points");
    int32_t index = registry_claim(&portals);
    if (!points)
        return report_at(node, "the portal has no points");
    if (index < 0)
        return 0;
    portal* p = registry_at<portal>(&portals, index);
    p->line = node->line;
    if (!read_corners(points, p->corners))
        return report_at(node, "points \"%s\" must be four corners of three numbers: \"x,y,z x,y,z x,y,z x,y,z\"",
                         points);
    p->closed = xml_attribute_value(node, "closed") != nullptr;
    p->target_room = 0;
    p->door = -1;
    vec3 sum = vec3_add(vec3_add(p->corners[0], p->corners[1]), vec3_add(p->corners[2], p->corners[3]));
    p->centre = vec3_scale(sum, 0.25f);
    vec3 n = vec3_cross(vec3_sub(p->corners[1], p->corners[0]), vec3_sub(p->corners[2], p->corners[0]));
    p->normal = vec3_normalise(n);
    p->plane_d = -vec3_dot(p->normal, p->centre);
    registry_at<room>(&rooms, room_index)->portal_count++;
    return 1;
}

static int add_light(const xml_node* node, int32_t room_index)
{
    // Every light deliberately uses up one empty object slot that nothing refers to.
    if (registry_claim(&objects) < 0)
        return 0;
    const char* flickering = xml_attribute_value(node, "flickering");
    light_list* list = flickering ? &flickering_lights : &steady_lights;
    int32_t index = light_list_alloc(list);
    if (index < 0)
        return 0;
    light* l = &list->lights[index];
    int32_t shadow = 0;
    l->room = room_index;
    if (!read_float(node, "x", &l->position.x) || !read_float(node, "y", &l->position.y) ||
        !read_float(node, "z", &l->position.z) || !read_float(node, "radius", &l->radius) ||
        !read_float(node, "brightness", &l->brightness) || !read_int(node, "shadow", &shadow) ||
        !read_int(node, "flickering", &l->flicker_style))
        return 0;
    l->shadow = shadow != 0;
    // Not failures: the light is kept as it stands.
    if (l->radius <= 0.0f)
        report_at(node, "the light has no radius above 0: it lights nothing");
    if (flickering && (l->flicker_style < 1 || l->flicker_style > FLICKER_STYLE_LAST))
        report_at(node, "flickering style %d is not one of 1 to %d: the light keeps its brightness", l->flicker_style,
                  FLICKER_STYLE_LAST);
    return 1;
}

static int add_actor(const xml_node* node)
{
    int32_t object_index = add_object(node);
    int32_t actor_index = object_index < 0 ? -1 : registry_claim(&actors);
    if (actor_index < 0)
        return 0;
    int32_t dialogue_index = load_named_by(node, "dialogue", "dialogue", FOLDER_DIALOGUES, load_dialogue);
    if (dialogue_index < 0)
        return 0;
    if (!xml_attribute_value(node, "dialogue"))
        report_at(node, "the actor has no dialogue: talking to it starts the first dialogue loaded");
    actor* a = registry_at<actor>(&actors, actor_index);
    a->object = object_index;
    a->dialogue = dialogue_index;
    object* o = registry_at<object>(&objects, object_index);
    o->ref = actor_index;
    o->body = BODY_CHARACTER;
    o->type = OBJECT_ACTOR;
    return object_list_append(&dynamic_objects, object_index);
}

static int add_door(const xml_node* node)
{
    int32_t object_index = add_object(node);
    int32_t door_index = object_index < 0 ? -1 : registry_claim(&doors);
    int32_t lock = 0;
    if (door_index < 0 || !read_int(node, "lock", &lock))
        return 0;
    object* o = registry_at<object>(&objects, object_index);
    o->ref = door_index;
    o->body = BODY_DOOR;
    o->type = OBJECT_DOOR;
    door* d = registry_at<door>(&doors, door_index);
    d->object = object_index;
    d->locked = lock >= 1;
    d->lock = lock;
    d->closed_yaw = o->yaw;
    d->from_yaw = o->yaw;
    d->to_yaw = o->yaw;
    return object_list_append(&dynamic_objects, object_index);
}

static int add_pickup(const xml_node* node)
{
    int32_t object_index = add_object(node);
    if (object_index < 0)
        return 0;
    int32_t item_index = 0; // without `item`, the empty placeholder item
    const char* key = xml_attribute_value(node, "item");
    if (!key)
        report_at(node, "the pickup names no item: it gives nothing");
    if (key && (item_index = asset_name_find(ASSET_ITEM, key)) < 0)
        return report_at(node, "item \"%s\" is not a key of items.xml", key);
    object* o = registry_at<object>(&objects, object_index);
    o->item = item_index;
    o->type = OBJECT_PICKUP;
    return object_list_append(&dynamic_objects, object_index);
}

static int is_static(const xml_node* node)
{
    return xml_name_is(node->name, "static") || xml_name_is(node->name, "object");
}

static int add_child(const xml_node* child, int32_t room_index)
{
    if (xml_name_is(child->name, "portal"))
        return add_portal(child, room_index);
    if (xml_name_is(child->name, "light"))
        return add_light(child, room_index);
    if (xml_name_is(child->name, "actor"))
        return add_actor(child);
    if (xml_name_is(child->name, "door"))
        return add_door(child);
    if (xml_name_is(child->name, "pickup"))
        return add_pickup(child);
    return 1; // statics were read first; rooms come last; anything else is ignored
}

static int read_room(const xml_node* node, int32_t room_index)
{
    room* r = registry_at<room>(&rooms, room_index);
    r->line = node->line;
    const char* box = xml_attribute_value(node, "box");
    if (box && !read_box(box, &r->box_min, &r->box_max))
        return report_at(node, "box \"%s\" must be six numbers: \"x,y,z x,y,z\"", box);
    if (!read_int(node, "bsp_node", &r->bsp_node))
        return 0;
    // A room stands for a node of the tree: its walk must start inside it.
    if (r->bsp_node < 0 || r->bsp_node >= scene_tree.node_count)
        return report_at(node, "bsp_node %d is not a node of the collision tree, which has %d", r->bsp_node,
                         scene_tree.node_count);
    r->first_portal = portals.count;
    r->first_object = objects.count;
    // Statics first, so that a room's static objects form one unbroken run.
    for (int32_t i = 0; i < node->child_count; ++i) {
        if (!is_static(&node->children[i]))
            continue;
        if (add_object(&node->children[i]) < 0)
            return 0;
        registry_at<room>(&rooms, room_index)->object_count++;
    }
    for (int32_t i = 0; i < node->child_count; ++i)
        if (!is_static(&node->children[i]) && !add_child(&node->children[i], room_index))
            return 0;
    for (int32_t i = 0; i < node->child_count; ++i) {
        if (!xml_name_is(node->children[i].name, "room"))
            continue;
        int32_t nested = registry_claim(&rooms);
        if (nested < 0 || !read_room(&node->children[i], nested))
            return 0;
    }
    return 1;
}

static int read_scene(const xml_document* document)
{
    const xml_node* scene = nullptr;
    for (int32_t i = 0; i < document->node_count && !scene; ++i)
        if (xml_name_is(document->nodes[i].name, "scene"))
            scene = &document->nodes[i];
    if (!scene) {
        report(scene_file, 0, "there is no <scene> element");
        return 0;
    }
    const char* bsp = xml_attribute_value(scene, "bsp");
    if (!bsp)
        return report_at(scene, "the scene has no bsp attribute naming its collision tree");
    char tree_path[ASSET_PATH_CAPACITY];
    if (string_printf(tree_path, sizeof tree_path, "%s/%s", DATA_ROOT, bsp) != 0)
        return report_at(scene, "collision tree \"%s\": the path is longer than %d characters", bsp,
                         ASSET_PATH_CAPACITY - 1);
    int32_t reported = diagnostics_reported;
    if (!collision_tree_load(&scene_tree, tree_path)) {
        // The tree's reader says why it stops, except when the file cannot be opened.
        if (diagnostics_reported == reported)
            report_at(scene, "collision tree \"%s\" is missing (no file %s)", bsp, tree_path);
        return 0;
    }
    int32_t room_index = registry_claim(&rooms);
    return room_index >= 0 && read_room(scene, room_index);
}

int load_scene(const char* path)
{
    scene_file = path;
    xml_document document = {};
    if (!xml_load_file(&document, path)) {
        if (xml_error_line == 0)
            report(path, 0, "missing: the game loads this file at start-up and cannot start without it");
        return 0;
    }
    int ok = read_scene(&document);
    xml_free_document(&document);
    if (!ok)
        return 0;
    if (!link_portals()) {
        for (int32_t i = 0; i < portals.count; ++i)
            if (registry_at<portal>(&portals, i)->target_room < 0)
                report(path, registry_at<portal>(&portals, i)->line,
                       "the portal has no partner: no portal of another room faces it with every corner within %g",
                       static_cast<double>(PORTAL_MATCH_TOLERANCE));
        return 0;
    }
    link_doors();
    return 1;
}

static int corners_match(const portal* p, const portal* q)
{
    for (const vec3& a : p->corners) {
        int near_one = 0;
        for (const vec3& b : q->corners) {
            vec3 d = vec3_sub(a, b);
            if (vec3_length(d) < PORTAL_MATCH_TOLERANCE) {
                near_one = 1;
                break;
            }
        }
        if (!near_one)
            return 0;
    }
    return 1;
}

static int portals_match(const portal* p, const portal* q)
{
    // They face each other, and every corner of p lies on one of q.
    return vec3_dot(p->normal, q->normal) <= PORTAL_MATCH_TOLERANCE - 1.0f && corners_match(p, q);
}

// The room of the first portal in another room that matches, or -1.
static int32_t find_partner_room(int32_t room_index, const portal* p)
{
    for (int32_t other = 0; other < rooms.count; ++other) {
        if (other == room_index)
            continue;
        const room* o = registry_at<room>(&rooms, other);
        for (int32_t k = 0; k < o->portal_count; ++k)
            if (portals_match(p, registry_at<portal>(&portals, o->first_portal + k)))
                return other;
    }
    return -1;
}

int link_portals()
{
    int all_linked = 1;
    for (int32_t r = 0; r < rooms.count; ++r) {
        const room* here = registry_at<room>(&rooms, r);
        for (int32_t k = 0; k < here->portal_count; ++k) {
            portal* p = registry_at<portal>(&portals, here->first_portal + k);
            p->target_room = find_partner_room(r, p);
            // Every opening must be described from both sides.
            if (p->target_room < 0)
                all_linked = 0;
        }
    }
    return all_linked;
}

void link_doors()
{
    for (int32_t d = 0; d < doors.count; ++d) {
        const object* leaf = registry_at<object>(&objects, registry_at<door>(&doors, d)->object);
        if (!registry_in_use(&models, leaf->model))
            continue; // no model at all, not even the placeholder: there is no box to place
        const model* m = registry_at<model>(&models, leaf->model);
        aabb box = {m->bounds_min, m->bounds_max};
        placement place = placement_from_angles(leaf->position, leaf->yaw, leaf->pitch);
        transform_box(&box, &place);
        for (int32_t i = 0; i < portals.count; ++i) {
            portal* p = registry_at<portal>(&portals, i);
            if (aabb_holds(box, p->centre))
                p->door = d;
        }
    }
}
