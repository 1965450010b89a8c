// items.xml: every item element read again in the game's way, each thing that stops the game's load
// or that leaves an item useless named at its element's line.
#include <string.h>

#include <map>
#include <set>

#include "assets/item.h"
#include "core/numbers.h"
#include "core/text.h"
#include "checks.h"
#include "ui/font.h"
#include "xml_lines.h"

static std::set<std::string> declared_keys;
static std::set<int32_t> key_locks;

bool item_key_declared(const std::string& key)
{
    return declared_keys.count(key) != 0;
}

bool some_key_opens(int32_t lock)
{
    return key_locks.count(lock) != 0;
}

namespace {

struct items_walk {
    const xml_file* file;
    std::map<std::string, int32_t> key_lines; // key -> the line of the item that declared it first
    bool explained;                           // a problem was found that stops the game's load
};

// One item; true when the game reads it (so that the items after it are read too).
bool check_item(items_walk* walk, const xml_node* item)
{
    const std::string& path = walk->file->path;
    int32_t line = xml_line(walk->file, item);
    bool readable = true;
    const char* key = xml_attribute_value(item, "key");
    if (!key) {
        report_problem(path, line, "the item has no key: no pickup can name it");
    } else if (strlen(key) >= ASSET_NAME_CAPACITY) {
        report_problem(path, line, "key \"%s\" is longer than 39 characters: no pickup can name it", key);
    } else if (walk->key_lines.count(key)) {
        report_problem(path, line, "key \"%s\" is taken already by the item on line %d, which pickups get", key,
                       walk->key_lines[key]);
    } else {
        walk->key_lines[key] = line;
        declared_keys.insert(key);
    }
    const char* name = xml_attribute_value(item, "name");
    if (name && strlen(name) >= ITEM_NAME_CAPACITY) {
        report_problem(path, line, "the name is %d characters long, but an item's may have at most %d",
                       static_cast<int>(strlen(name)), ITEM_NAME_CAPACITY - 1);
        readable = false;
    }
    std::string drawing = name ? text_problem(&font_system, "system font", name, strlen(name)) : "";
    if (!drawing.empty())
        report_problem(path, line, "name: %s", drawing.c_str());
    const char* model = xml_attribute_value(item, "model");
    if (model)
        check_model(model, {path, line}); // the game shows an empty model instead: no failure
    const char* sound = xml_attribute_value(item, "pickup_sound");
    if (sound && check_sound(sound, {path, line}) < 0)
        readable = false;
    const char* type = xml_attribute_value(item, "type");
    if (type && !text_equal_ignoring_case(type, "key")) {
        report_problem(path, line, "type \"%s\": the only item type is \"key\"", type);
        return false;
    }
    if (!type)
        return readable;
    const char* lock = xml_attribute_value(item, "lock");
    int32_t lock_number = 0;
    if (lock && !parse_int(lock, -1, &lock_number)) {
        report_problem(path, line, "lock \"%s\" is not an integer", lock);
        return false;
    }
    if (lock_number < 1)
        report_problem(path, line, "the key has no lock number of 1 or more: it opens no door");
    key_locks.insert(lock_number);
    return readable;
}

} // namespace

void check_items(const std::string& path, int loaded)
{
    xml_file file;
    xml_file_read(&file, path);
    if (!file.loaded)
        return;
    items_walk walk = {&file, {}, false};
    for (int32_t n = 0; n < file.document.node_count; ++n) {
        const xml_node& list = file.document.nodes[n];
        if (!xml_name_is(list.name, "items"))
            continue;
        for (int32_t c = 0; c < list.child_count; ++c)
            if (xml_name_is(list.children[c].name, "item") && !check_item(&walk, &list.children[c]))
                walk.explained = true;
    }
    if (!loaded && !walk.explained)
        report_problem(path, 0, "the game cannot load the items (the checker found no reason)");
    xml_file_release(&file);
}
