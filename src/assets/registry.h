// The pools that hold every asset and world record, addressed by signed indices (-1: none or
// failed), the one name table that maps (kind, name) to an index, and asset paths.
#pragma once

#include <stdint.h>

struct registry {
    void* records;     // capacity records of record_size bytes
    int32_t* in_use;   // one flag per slot (1 in use, 0 free); grown to the same byte size as records
    int32_t count;     // slots ever handed out (the high-water mark)
    uint32_t capacity; // slots allocated, raised by 10 at a time
    uint32_t record_size;
    uint32_t allocated; // slots the blocks really hold (differs from capacity only after a failed growth)
};

#define REGISTRY_OF(record_type) registry{nullptr, nullptr, 0, 0, sizeof(record_type), 0}

enum { REGISTRY_GROWTH = 10 };

// A zeroed slot marked in use: the lowest free one, else a new one at the end. When the pool
// cannot grow this returns 0 (indistinguishable from slot 0; the capacity stays raised).
int32_t registry_alloc(registry* pool);
// As registry_alloc, but -1 when the pool cannot grow: what the loaders use, so that a failed
// growth fails the load instead of handing out slot 0 again.
int32_t registry_claim(registry* pool);
// Clears the slot's in-use flag only; 0 when index is negative or not below count.
int registry_free(registry* pool, int32_t index);
// The record at `index`, which must be below count.
void* registry_record(const registry* pool, int32_t index);
// 1 when index names a slot that is handed out and in use.
int registry_in_use(const registry* pool, int32_t index);

template <typename T> inline T* registry_at(const registry* pool, int32_t index)
{
    return static_cast<T*>(registry_record(pool, index));
}

enum asset_kind : uint8_t {
    ASSET_TEXTURE = 1,
    ASSET_MODEL = 2,
    ASSET_ANIMATION = 3,
    ASSET_SOUND = 5, // registered, never looked up: every sound load decodes again
    ASSET_DIALOGUE = 7,
    ASSET_ITEM = 9,  // by the item's key
};

enum {
    ASSET_NAME_CAPACITY = 40, // names of at most 39 characters
    ASSET_NAME_GROWTH = 10,
    ASSET_PATH_CAPACITY = 260,
};

struct asset_name {
    uint8_t kind;
    char name[ASSET_NAME_CAPACITY];
    int32_t index;
};

struct asset_name_table {
    asset_name* entries; // only ever appended to
    int32_t count;
    int32_t capacity;
};

extern asset_name_table asset_names;

// The index registered for (kind, name), comparing at most 40 characters case-sensitively; -1 when unknown.
int32_t asset_name_find(uint8_t kind, const char* name);
// 0 when the table cannot grow or the name does not fit in 39 characters.
int asset_name_add(uint8_t kind, const char* name, int32_t index);

// For loaders that load into a temporary record first: takes a slot, copies the record in and
// registers the name; -1 (with the slot freed again) when the name cannot be registered.
int32_t registry_adopt(registry* pool, uint8_t kind, const char* name, const void* record);

// "gloamhold_data/<folder>/<name>" into a buffer of ASSET_PATH_CAPACITY characters; 0 when it was cut.
int asset_path(char* buffer, const char* folder, const char* name);

// The loaders that read a file into a temporary record: the index already registered for the
// name, else the file is loaded, a slot taken, the record copied in and the name registered
// (released again, -1, when any of that fails).
template <typename T>
int32_t load_named(registry* pool, uint8_t kind, const char* folder, const char* name,
                   int (*load_file)(T*, const char*), int (*release)(T*))
{
    int32_t known = asset_name_find(kind, name);
    if (known >= 0)
        return known;
    char path[ASSET_PATH_CAPACITY];
    T loaded;
    if (!asset_path(path, folder, name) || !load_file(&loaded, path))
        return -1;
    int32_t index = registry_adopt(pool, kind, name, &loaded);
    if (index < 0)
        release(&loaded);
    return index;
}

extern const char* const DATA_ROOT;         // "gloamhold_data"
extern const char* const FOLDER_TEXTURES;   // "textures"
extern const char* const FOLDER_MODELS;     // "models"
extern const char* const FOLDER_ANIMATIONS; // "animations"
extern const char* const FOLDER_SOUNDS;     // "sounds"
extern const char* const FOLDER_DIALOGUES;  // "dialogues"

// 1 when the file can be opened: a loader whose decoder refused a file tells a broken file from a
// missing one by this before it reports.
int asset_file_present(const char* path);

// After a load by name gave -1: unless its loader has said why since `reported_before` (a value of
// diagnostics_reported), says what the loader could not (the name cannot be registered, the file
// is missing) at the place that names the asset, `file` and `line`. Without a file (what the game
// loads by itself, such as the sky) it is said at the asset's own path. `noun` is "model", ...
void report_unloaded(int32_t reported_before, const char* noun, const char* folder, const char* name,
                     const char* file, int32_t line);

// The name registered last for (kind, index), or null: the reverse of asset_name_find, for reports.
const char* asset_name_of(uint8_t kind, int32_t index);
