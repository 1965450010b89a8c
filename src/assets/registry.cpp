#include "assets/registry.h"

#include <string.h>

#include "core/diagnostics.h"
#include "core/heap.h"
#include "core/text.h"
#include "platform/platform.h"

asset_name_table asset_names;

const char* const DATA_ROOT = "gloamhold_data";
const char* const FOLDER_TEXTURES = "textures";
const char* const FOLDER_MODELS = "models";
const char* const FOLDER_ANIMATIONS = "animations";
const char* const FOLDER_SOUNDS = "sounds";
const char* const FOLDER_DIALOGUES = "dialogues";

// Grows both blocks to the capacity; 0 when either cannot grow (what did grow stays grown).
static int registry_grow(registry* pool)
{
    size_t bytes = static_cast<size_t>(pool->capacity) * pool->record_size;
    void* records = heap_resize(pool->records, bytes);
    if (!records)
        return 0;
    pool->records = records;
    void* flags = heap_resize(pool->in_use, bytes);
    if (!flags)
        return 0;
    pool->in_use = static_cast<int32_t*>(flags);
    pool->allocated = pool->capacity;
    return 1;
}

static int32_t registry_take(registry* pool, int32_t index)
{
    memset(registry_record(pool, index), 0, pool->record_size);
    pool->in_use[index] = 1;
    return index;
}

int32_t registry_claim(registry* pool)
{
    for (int32_t i = 0; i < pool->count; ++i)
        if (pool->in_use[i] == 0)
            return registry_take(pool, i);
    if (static_cast<uint32_t>(pool->count) >= pool->capacity)
        pool->capacity += REGISTRY_GROWTH; // raised before the blocks grow, and left raised if they cannot
    // Grow while the blocks are short of the next slot, so a failed growth is retried rather than overrun.
    if (static_cast<uint32_t>(pool->count) >= pool->allocated && !registry_grow(pool))
        return -1;
    return registry_take(pool, pool->count++);
}

int32_t registry_alloc(registry* pool)
{
    int32_t index = registry_claim(pool);
    return index < 0 ? 0 : index; // 0, the placeholder slot, when the pool could not grow
}

int registry_free(registry* pool, int32_t index)
{
    if (index < 0 || index >= pool->count)
        return 0;
    pool->in_use[index] = 0;
    return 1;
}

void* registry_record(const registry* pool, int32_t index)
{
    return static_cast<char*>(pool->records) + static_cast<size_t>(index) * pool->record_size;
}

int registry_in_use(const registry* pool, int32_t index)
{
    return index >= 0 && index < pool->count && pool->in_use[index] != 0;
}

int32_t asset_name_find(uint8_t kind, const char* name)
{
    for (int32_t i = 0; i < asset_names.count; ++i) {
        const asset_name& entry = asset_names.entries[i];
        if (entry.kind == kind && strncmp(entry.name, name, ASSET_NAME_CAPACITY) == 0)
            return entry.index;
    }
    return -1;
}

int asset_name_add(uint8_t kind, const char* name, int32_t index)
{
    if (strnlen(name, ASSET_NAME_CAPACITY) >= ASSET_NAME_CAPACITY)
        return 0;
    if (!heap_grow(&asset_names.entries, &asset_names.capacity, asset_names.count + 1,
                   asset_names.capacity + ASSET_NAME_GROWTH))
        return 0;
    asset_name& entry = asset_names.entries[asset_names.count++];
    memset(&entry, 0, sizeof entry);
    entry.kind = kind;
    memcpy(entry.name, name, strlen(name));
    entry.index = index;
    return 1;
}

int32_t registry_adopt(registry* pool, uint8_t kind, const char* name, const void* record)
{
    int32_t index = registry_claim(pool);
    if (index < 0)
        return -1;
    memcpy(registry_record(pool, index), record, pool->record_size);
    if (!asset_name_add(kind, name, index)) {
        registry_free(pool, index);
        return -1;
    }
    return index;
}

int asset_path(char* buffer, const char* folder, const char* name)
{
    return string_printf(buffer, ASSET_PATH_CAPACITY, "%s/%s/%s", DATA_ROOT, folder, name) == 0;
}

const char* asset_name_of(uint8_t kind, int32_t index)
{
    // The latest registration wins: a slot freed and taken again carries its new name.
    for (int32_t i = asset_names.count - 1; i >= 0; --i) {
        const asset_name& entry = asset_names.entries[i];
        if (entry.kind == kind && entry.index == index)
            return entry.name;
    }
    return nullptr;
}

int asset_file_present(const char* path)
{
    platform_file file = platform_file_open(path);
    if (file)
        platform_file_close(file);
    return file != nullptr;
}

void report_unloaded(int32_t reported_before, const char* noun, const char* folder, const char* name,
                     const char* file, int32_t line)
{
    if (diagnostics_reported != reported_before)
        return;
    char path[ASSET_PATH_CAPACITY];
    int path_fits = asset_path(path, folder, name);
    const char* where = file ? file : path;
    if (strlen(name) >= ASSET_NAME_CAPACITY || !path_fits) {
        report(where, line, "%s name \"%s\" is longer than %d characters: the game cannot register it", noun, name,
               ASSET_NAME_CAPACITY - 1);
        return;
    }
    if (asset_file_present(path)) {
        report(where, line, "%s \"%s\" cannot be loaded (its loader gave no reason)", noun, name);
    } else if (file) {
        report(where, line, "%s \"%s\" is missing (no file %s)", noun, name, path);
    } else {
        report(where, line, "missing: the game loads this %s at start-up and cannot start without it", noun);
    }
}
