#include "core/settings.h"

#include <string.h>

#include "core/file_reader.h"
#include "core/heap.h"
#include "core/numbers.h"
#include "core/text.h"
#include "platform/platform.h"

int32_t FPS = 60;
int32_t UPS = 40;
screen_resolution SCREEN_RESOLUTION = {640, 480};
float SCREEN_SCALE = 1.0f;
float MOUSE_SENSITIVITY_X = 1.0f;
float MOUSE_SENSITIVITY_Y = 1.0f;
float AUDIO_VOLUME = 1.0f;
float FOV = 90.0f;
int32_t TEXTURE_INTERPOLATION = 0;
int32_t TEXTURE_DITHERING = 0;
int32_t LIGHT_DITHERING = 0;
int32_t ENABLE_HEAD_BOBBING = 0;
int32_t RENDER_THREADS = 0;

enum {
    INI_READ_BUFFER = 512,
    INI_LINE_CAPACITY = 200,
    INI_GROWTH = 8,
    RESOLUTION_PART_CAPACITY = 10,
};

static int ini_append(ini_table* table, int32_t* capacity, const ini_entry& entry)
{
    if (!heap_grow(&table->entries, capacity, table->count + 1, *capacity + INI_GROWTH))
        return 0;
    table->entries[table->count++] = entry;
    return 1;
}

int ini_load(ini_table* table, const char* file_name)
{
    table->count = 0;
    table->entries = nullptr;
    file_reader reader;
    if (!reader_open_file(&reader, file_name, INI_READ_BUFFER))
        return 0;
    // The line buffer lives across lines: a line without "=" may find one that a longer earlier
    // line left behind its NUL, and then sets that key. Settings files are read so on purpose
    // (settings_test pins it).
    char line[INI_LINE_CAPACITY] = {};
    int32_t capacity = 0;
    int ok = 1;
    while (reader_read_line(&reader, line, INI_LINE_CAPACITY) != 0) {
        ini_entry entry = {};
        if (!split_at(line, sizeof line, '=', entry.key, sizeof entry.key, entry.value, sizeof entry.value))
            continue;
        if (!ini_append(table, &capacity, entry)) {
            ok = 0;
            break;
        }
    }
    reader_close_file(&reader);
    if (ok && table->count > 0 && table->count < capacity) {
        void* block = platform_heap_realloc(table->entries, static_cast<size_t>(table->count) * sizeof(ini_entry));
        if (block)
            table->entries = static_cast<ini_entry*>(block);
        else
            ok = 0;
    }
    if (!ok || table->count == 0) {
        ini_free(table);
        return 0;
    }
    return 1;
}

const ini_entry* ini_find(const ini_table* table, const char* key)
{
    for (int32_t i = 0; i < table->count; ++i)
        if (strcmp(table->entries[i].key, key) == 0)
            return &table->entries[i];
    return nullptr;
}

int ini_get_int(const ini_table* table, const char* key, int32_t* out)
{
    const ini_entry* entry = ini_find(table, key);
    return entry && parse_int(entry->value, -1, out);
}

int ini_get_float(const ini_table* table, const char* key, float* out)
{
    const ini_entry* entry = ini_find(table, key);
    return entry && parse_float(entry->value, -1, out);
}

void ini_free(ini_table* table)
{
    platform_heap_free(table->entries);
    table->entries = nullptr;
    table->count = 0;
}

static void setting_int(const ini_table* table, const char* key, int32_t* setting, int32_t fallback)
{
    if (!ini_get_int(table, key, setting))
        *setting = fallback;
}

static void setting_float(const ini_table* table, const char* key, float* setting, float fallback)
{
    if (!ini_get_float(table, key, setting))
        *setting = fallback;
}

// A thread count below 0 cannot be meant: it keeps the default like a value that does not parse.
static void setting_thread_count(const ini_table* table)
{
    int32_t threads;
    RENDER_THREADS = ini_get_int(table, "RENDER_THREADS", &threads) && threads >= 0 ? threads : 0;
}

// "800x600": split at the first lower-case x; both halves must parse, or both take the default.
static void setting_resolution(const ini_table* table)
{
    const ini_entry* entry = ini_find(table, "SCREEN_RESOLUTION");
    char width[RESOLUTION_PART_CAPACITY], height[RESOLUTION_PART_CAPACITY];
    screen_resolution parsed;
    if (entry && split_at(entry->value, strlen(entry->value) + 1, 'x', width, sizeof width, height, sizeof height) &&
        parse_int(width, RESOLUTION_PART_CAPACITY, &parsed.width) &&
        parse_int(height, RESOLUTION_PART_CAPACITY, &parsed.height)) {
        SCREEN_RESOLUTION = parsed;
    } else {
        SCREEN_RESOLUTION = {640, 480};
    }
}

int load_settings(const char* file_name)
{
    ini_table table;
    ini_load(&table, file_name); // an unreadable or empty file leaves an empty table: all defaults
    setting_int(&table, "FPS", &FPS, 60);
    setting_int(&table, "UPS", &UPS, 40);
    setting_resolution(&table);
    setting_float(&table, "SCREEN_SCALE", &SCREEN_SCALE, 1.0f);
    setting_float(&table, "MOUSE_SENSITIVITY_X", &MOUSE_SENSITIVITY_X, 1.0f);
    setting_float(&table, "MOUSE_SENSITIVITY_Y", &MOUSE_SENSITIVITY_Y, 1.0f);
    setting_float(&table, "AUDIO_VOLUME", &AUDIO_VOLUME, 1.0f);
    setting_float(&table, "FOV", &FOV, 90.0f);
    setting_int(&table, "TEXTURE_INTERPOLATION", &TEXTURE_INTERPOLATION, 0);
    setting_int(&table, "TEXTURE_DITHERING", &TEXTURE_DITHERING, 0);
    setting_int(&table, "LIGHT_DITHERING", &LIGHT_DITHERING, 0);
    setting_int(&table, "ENABLE_HEAD_BOBBING", &ENABLE_HEAD_BOBBING, 0);
    setting_thread_count(&table);
    ini_free(&table);
    return 1;
}
