#include "assets/dialogue.h"

#include <string.h>

#include "core/heap.h"
#include "platform/platform.h"

registry dialogues = REGISTRY_OF(dialogue);

static int is_line_break(char c)
{
    return c == '\r' || c == '\n';
}

// Appends an entry, growing the list by 128 when it is full.
static int add_entry(dialogue* record, int32_t* capacity, uint8_t indent, uint64_t start, uint64_t end)
{
    if (!heap_grow(&record->entries, capacity, record->entry_count + 1, *capacity + DIALOGUE_ENTRY_GROWTH))
        return 0;
    record->entries[record->entry_count++] = {indent, static_cast<uint32_t>(start), static_cast<uint32_t>(end)};
    return 1;
}

static int index_entries(dialogue* record, const char* text, uint64_t size, int32_t* capacity)
{
    uint64_t i = 0;
    uint8_t indent = 0;
    while (i < size && text[i] != 0) {
        char c = text[i];
        if (is_line_break(c)) {
            indent = 0;
            ++i;
        } else if (c == '#') {
            // Checked before any indentation is counted: only a "#" that opens a line (or follows
            // a ":") makes a comment. The line feed itself is left for the indent reset.
            while (i < size && text[i] != '\n' && text[i] != 0)
                ++i;
        } else {
            while (i < size && (text[i] == ' ' || text[i] == '\t')) {
                ++indent;
                ++i;
            }
            uint64_t start = i;
            while (i < size && text[i] != 0 && !is_line_break(text[i]) && text[i] != ':')
                ++i;
            if (i < size && text[i] == ':')
                ++i; // the colon belongs to the speaker, and the indent carries on
            if (!add_entry(record, capacity, indent, start, i))
                return 0;
        }
    }
    return 1;
}

int dialogue_index(dialogue* record, char* text, uint64_t size)
{
    if (size > UINT32_MAX)
        return 0; // offsets are 32-bit
    dialogue indexed = {};
    int32_t capacity = 0;
    if (!index_entries(&indexed, text, size, &capacity)) {
        if (indexed.entries)
            platform_heap_free(indexed.entries);
        return 0;
    }
    if (indexed.entry_count == 0 && indexed.entries) {
        platform_heap_free(indexed.entries);
        indexed.entries = nullptr;
    } else if (indexed.entry_count < capacity) {
        void* shrunk = platform_heap_realloc(indexed.entries,
                                             static_cast<size_t>(indexed.entry_count) * sizeof(dialogue_entry));
        if (shrunk)
            indexed.entries = static_cast<dialogue_entry*>(shrunk);
    }
    indexed.text = text;
    indexed.size = size;
    *record = indexed;
    return 1;
}

// The whole file into a zero-filled block of exactly its size.
static int read_whole(platform_file file, char** text, uint32_t* size)
{
    if (!platform_file_size(file, size) || *size > INT32_MAX || !heap_alloc_array(text, static_cast<int32_t>(*size)))
        return 0;
    uint32_t done = 0;
    while (done < *size) {
        uint32_t got = 0;
        if (!platform_file_read(file, *text + done, *size - done, &got) || got == 0) {
            platform_heap_free(*text);
            *text = nullptr;
            return 0;
        }
        done += got;
    }
    return 1;
}

int dialogue_load_file(dialogue* record, const char* path)
{
    memset(record, 0, sizeof *record);
    platform_file file = platform_file_open(path);
    if (!file)
        return 0;
    char* text = nullptr;
    uint32_t size = 0;
    int ok = read_whole(file, &text, &size);
    platform_file_close(file);
    if (ok && !dialogue_index(record, text, size)) {
        if (text)
            platform_heap_free(text);
        ok = 0;
    }
    return ok;
}

int dialogue_free(dialogue* record)
{
    if (record->text)
        platform_heap_free(record->text);
    if (record->entries)
        platform_heap_free(record->entries);
    memset(record, 0, sizeof *record);
    return 1;
}

int32_t load_dialogue(const char* name)
{
    return load_named<dialogue>(&dialogues, ASSET_DIALOGUE, FOLDER_DIALOGUES, name, dialogue_load_file,
                                dialogue_free);
}

static int entry_begins(const dialogue* record, const dialogue_entry& entry, const char* prefix)
{
    size_t length = strlen(prefix);
    return entry.end - entry.start >= length && memcmp(record->text + entry.start, prefix, length) == 0;
}

dialogue_entry_kind dialogue_entry_kind_of(const dialogue* record, int32_t index)
{
    const dialogue_entry& entry = record->entries[index];
    bool ends_in_colon = entry.end > entry.start && record->text[entry.end - 1] == ':';
    if (ends_in_colon) {
        if (entry_begins(record, entry, "if "))
            return DIALOGUE_CONDITION;
        if (entry_begins(record, entry, "else:"))
            return DIALOGUE_ELSE;
        if (entry_begins(record, entry, "> "))
            return DIALOGUE_ANSWER;
        return DIALOGUE_LABEL;
    }
    if (entry_begins(record, entry, "\""))
        return DIALOGUE_TEXT;
    if (entry_begins(record, entry, "@"))
        return DIALOGUE_JUMP;
    return DIALOGUE_STATEMENT;
}

int32_t dialogue_block_level(const dialogue* record, int32_t parent)
{
    int32_t first = parent + 1;
    return first < record->entry_count ? record->entries[first].indent : -1;
}

int32_t dialogue_jump_target(const dialogue* record, int32_t jump)
{
    const dialogue_entry& from = record->entries[jump];
    const char* label = record->text + from.start + 1; // after the "@"
    uint32_t length = from.end - from.start - 1;
    for (int32_t i = 0; i < record->entry_count; ++i) {
        const dialogue_entry& entry = record->entries[i];
        if (entry.end > entry.start && record->text[entry.end - 1] == ':' && entry.end - entry.start >= length &&
            memcmp(record->text + entry.start, label, length) == 0)
            return i;
    }
    return -1;
}
