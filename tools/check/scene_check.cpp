// scene.xml: the rooms walked in the game's own order, so that the checker numbers rooms, portals
// and doors as the loader does and can name the element behind each record; then the loaded world
// itself: openings described from one side only, rooms whose tree node does not hold their box
// centre or whose space another room claims first, doors that fill no opening, locks no key opens.
#include <stdio.h>

#include <filesystem>
#include <vector>

#include "assets/animation.h"
#include "assets/collision_tree.h"
#include "assets/model.h"
#include "assets/world.h"
#include "checks.h"
#include "core/numbers.h"
#include "xml_lines.h"

namespace {

struct scene_walk {
    const xml_file* file;
    bool tree_readable;
    bool explained; // a problem was found that stops the game's load
    std::vector<int32_t> room_lines; // by room, portal and door index, as the loader numbers them
    std::vector<int32_t> portal_lines;
    std::vector<int32_t> door_lines;
};

int32_t line_of(const scene_walk* walk, const xml_node* node)
{
    return xml_line(walk->file, node);
}

// A problem that makes the game's scene load fail.
void report_failure(scene_walk* walk, const xml_node* node, const std::string& message)
{
    report_problem(walk->file->path, line_of(walk, node), "%s", message.c_str());
    walk->explained = true;
}

void check_number(scene_walk* walk, const xml_node* node, const char* name, bool integer)
{
    const char* value = xml_attribute_value(node, name);
    float real;
    int32_t whole;
    if (value && !(integer ? parse_int(value, -1, &whole) : parse_float(value, -1, &real)))
        report_failure(walk, node, text_of("%s \"%s\" is not %s", name, value, integer ? "an integer" : "a number"));
}

bool only_blanks(const char* text)
{
    while (*text == ' ' || *text == '\t' || *text == '\r' || *text == '\n')
        ++text;
    return *text == 0;
}

// Position and angles, model and animation, and that the model's weights fit the animation.
void check_object(scene_walk* walk, const xml_node* node)
{
    for (const char* name : {"x", "y", "z", "yaw", "pitch"})
        check_number(walk, node, name, false);
    data_reference here = {walk->file->path, line_of(walk, node)};
    const char* model_name = xml_attribute_value(node, "model");
    int32_t model_index = model_name ? check_model(model_name, here) : 0;
    const char* animation_name = xml_attribute_value(node, "animation");
    int32_t animation_index = animation_name ? check_animation(animation_name, here) : 0;
    if (model_index < 0 || animation_index < 0) {
        walk->explained = true;
        return;
    }
    if (!animation_name || !registry_in_use(&models, model_index))
        return;
    const model* m = registry_at<model>(&models, model_index);
    const animation* a = registry_at<animation>(&animations, animation_index);
    for (int32_t i = 0; i < m->weight_count; ++i)
        if (m->weights[i].bone >= a->bone_count) {
            report_failure(walk, node,
                           text_of("model \"%s\" is moved by bone %d, but animation \"%s\" has %d bones", model_name,
                                   m->weights[i].bone, animation_name, a->bone_count));
            return;
        }
}

void check_portal(scene_walk* walk, const xml_node* node)
{
    walk->portal_lines.push_back(line_of(walk, node));
    const char* points = xml_attribute_value(node, "points");
    float c[12];
    int end = 0;
    if (!points)
        report_failure(walk, node, "the portal has no points");
    else if (sscanf(points, "%f,%f,%f %f,%f,%f %f,%f,%f %f,%f,%f%n", &c[0], &c[1], &c[2], &c[3], &c[4], &c[5], &c[6],
                    &c[7], &c[8], &c[9], &c[10], &c[11], &end) != 12 ||
             !only_blanks(points + end))
        report_failure(walk, node,
                       text_of("points \"%s\" must be four corners of three numbers: \"x,y,z x,y,z x,y,z x,y,z\"", points));
}

void check_light(scene_walk* walk, const xml_node* node)
{
    for (const char* name : {"x", "y", "z", "radius", "brightness"})
        check_number(walk, node, name, false);
    float radius = 0.0f;
    const char* radius_text = xml_attribute_value(node, "radius");
    if (!radius_text || (parse_float(radius_text, -1, &radius) && radius <= 0.0f))
        report_problem(walk->file->path, line_of(walk, node), "the light has no radius above 0: it lights nothing");
    check_number(walk, node, "shadow", true);
    check_number(walk, node, "flickering", true);
    const char* flickering = xml_attribute_value(node, "flickering");
    int32_t style = 0;
    if (flickering && parse_int(flickering, -1, &style) && (style < 1 || style > 11))
        report_problem(walk->file->path, line_of(walk, node),
                       "flickering style %d is not one of 1 to 11: the light keeps its brightness", style);
}

void check_actor(scene_walk* walk, const xml_node* node)
{
    check_object(walk, node);
    const char* dialogue_name = xml_attribute_value(node, "dialogue");
    if (!dialogue_name)
        report_problem(walk->file->path, line_of(walk, node),
                       "the actor has no dialogue: talking to it starts the first dialogue loaded");
    else if (check_dialogue(dialogue_name, {walk->file->path, line_of(walk, node)}) < 0)
        walk->explained = true;
}

void check_door(scene_walk* walk, const xml_node* node)
{
    walk->door_lines.push_back(line_of(walk, node));
    check_object(walk, node);
    check_number(walk, node, "lock", true);
}

void check_pickup(scene_walk* walk, const xml_node* node)
{
    check_object(walk, node);
    const char* key = xml_attribute_value(node, "item");
    if (!key)
        report_problem(walk->file->path, line_of(walk, node), "the pickup names no item: it gives nothing");
    else if (!item_key_declared(key))
        report_failure(walk, node, text_of("item \"%s\" is not a key of items.xml", key));
    else if (asset_name_find(ASSET_ITEM, key) < 0)
        walk->explained = true; // items.xml stopped loading before it: reported there
}

bool is_static(const xml_node* node)
{
    return xml_name_is(node->name, "static") || xml_name_is(node->name, "object");
}

void check_room(scene_walk* walk, const xml_node* node)
{
    walk->room_lines.push_back(line_of(walk, node));
    const char* box = xml_attribute_value(node, "box");
    float b[6];
    int end = 0;
    if (box && (sscanf(box, "%f,%f,%f %f,%f,%f%n", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5], &end) != 6 ||
                !only_blanks(box + end)))
        report_failure(walk, node, text_of("box \"%s\" must be six numbers: \"x,y,z x,y,z\"", box));
    const char* bsp_node = xml_attribute_value(node, "bsp_node");
    int32_t root = 0;
    if (bsp_node && !parse_int(bsp_node, -1, &root))
        report_failure(walk, node, text_of("bsp_node \"%s\" is not an integer", bsp_node));
    else if (walk->tree_readable && (root < 0 || root >= scene_tree.node_count))
        report_failure(walk, node,
                       text_of("bsp_node %d is not a node of the collision tree, which has %d", root, scene_tree.node_count));
    // The loader's order: the statics first, then the other children, then the nested rooms.
    for (int32_t i = 0; i < node->child_count; ++i)
        if (is_static(&node->children[i]))
            check_object(walk, &node->children[i]);
    for (int32_t i = 0; i < node->child_count; ++i) {
        const xml_node* child = &node->children[i];
        if (xml_name_is(child->name, "portal"))
            check_portal(walk, child);
        else if (xml_name_is(child->name, "light"))
            check_light(walk, child);
        else if (xml_name_is(child->name, "actor"))
            check_actor(walk, child);
        else if (xml_name_is(child->name, "door"))
            check_door(walk, child);
        else if (xml_name_is(child->name, "pickup"))
            check_pickup(walk, child);
    }
    for (int32_t i = 0; i < node->child_count; ++i)
        if (xml_name_is(node->children[i].name, "room"))
            check_room(walk, &node->children[i]);
}

// The collision tree the scene names; whether the game can read it.
bool check_tree(scene_walk* walk, const xml_node* scene)
{
    const char* bsp = xml_attribute_value(scene, "bsp");
    if (!bsp) {
        report_failure(walk, scene, "the scene has no bsp attribute naming its collision tree");
        return false;
    }
    std::string path = std::string(DATA_ROOT) + "/" + bsp;
    if (!std::filesystem::is_regular_file(path)) {
        report_failure(walk, scene, text_of("collision tree \"%s\" is missing (no file %s)", bsp, shown_path(path).c_str()));
        return false;
    }
    if (!inspect_collision_tree(path)) {
        walk->explained = true;
        return false;
    }
    return true;
}

// The room the camera takes itself to be in at `point`: the first after the outside whose box
// holds it (faces included) and whose tree node does too; 0, the outside, when there is none.
int32_t camera_room_at(vec3 point)
{
    for (int32_t r = 1; r < rooms.count; ++r) {
        const room* candidate = registry_at<room>(&rooms, r);
        bool in_box = point.x >= candidate->box_min.x && point.x <= candidate->box_max.x &&
                      point.y >= candidate->box_min.y && point.y <= candidate->box_max.y &&
                      point.z >= candidate->box_min.z && point.z <= candidate->box_max.z;
        if (in_box && find_point_area(&scene_tree, candidate->bsp_node, point) > 0)
            return r;
    }
    return 0;
}

// The world as loaded, when every room, portal and door of the file made it into the registries.
void check_world(scene_walk* walk, int loaded)
{
    const std::string& path = walk->file->path;
    for (int32_t i = 0; i < portals.count; ++i)
        if (registry_at<portal>(&portals, i)->target_room < 0) {
            report_problem(path, walk->portal_lines[i],
                           "the portal has no partner: no portal of another room faces it with every corner "
                           "within 0.01");
            walk->explained = true;
        }
    // Room 0, the outside, is never looked for by position.
    for (int32_t r = 1; r < rooms.count; ++r) {
        const room* here = registry_at<room>(&rooms, r);
        vec3 centre = vec3_scale(vec3_add(here->box_min, here->box_max), 0.5f);
        bool root_in_tree = here->bsp_node >= 0 && here->bsp_node < scene_tree.node_count; // else reported
        if (!root_in_tree)
            continue;
        if (find_point_area(&scene_tree, here->bsp_node, centre) == 0) {
            report_problem(path, walk->room_lines[r],
                           "the centre of the room's box (%g, %g, %g) is not inside its collision-tree node %d",
                           static_cast<double>(centre.x), static_cast<double>(centre.y), static_cast<double>(centre.z),
                           here->bsp_node);
            continue;
        }
        int32_t found = camera_room_at(centre);
        if (found != r)
            report_problem(path, walk->room_lines[r],
                           "the room shares open space with the room on line %d, which the camera finds first",
                           walk->room_lines[found]);
    }
    for (int32_t d = 0; d < doors.count; ++d) {
        const door* record = registry_at<door>(&doors, d);
        if (record->lock >= 1 && !some_key_opens(record->lock))
            report_problem(path, walk->door_lines[d], "lock %d: no key of items.xml opens it", record->lock);
        if (!loaded)
            continue; // the doors were never linked
        bool fills = false;
        for (int32_t i = 0; i < portals.count && !fills; ++i)
            fills = registry_at<portal>(&portals, i)->door == d;
        if (!fills)
            report_problem(path, walk->door_lines[d], "the door fills no portal: no portal's centre lies in its box");
    }
}

} // namespace

void check_scene(const std::string& path, int loaded)
{
    xml_file file;
    xml_file_read(&file, path);
    if (!file.loaded)
        return;
    scene_walk walk = {&file, false, false, {}, {}, {}};
    const xml_node* scene = nullptr;
    for (int32_t i = 0; i < file.document.node_count && !scene; ++i)
        if (xml_name_is(file.document.nodes[i].name, "scene"))
            scene = &file.document.nodes[i];
    if (!scene) {
        report_problem(path, 0, "there is no <scene> element");
        walk.explained = true;
    } else {
        walk.tree_readable = check_tree(&walk, scene);
        check_room(&walk, scene);
    }
    bool complete = rooms.count == static_cast<int32_t>(walk.room_lines.size()) &&
                    portals.count == static_cast<int32_t>(walk.portal_lines.size()) &&
                    doors.count == static_cast<int32_t>(walk.door_lines.size());
    if (scene && walk.tree_readable && complete)
        check_world(&walk, loaded);
    if (!loaded && !walk.explained)
        report_problem(path, 0, "the game cannot load the scene (the checker found no reason)");
    xml_file_release(&file);
}
