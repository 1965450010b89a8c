#include "core/file_reader.h"

#include <string.h>

#include "core/numbers.h"

int reader_open(file_reader* reader, platform_file handle, int32_t capacity)
{
    reader->handle = handle;
    reader->position = -1;
    reader->size = capacity;
    reader->lines_ended = 0;
    reader->line = 0;
    reader->buffer = static_cast<char*>(platform_heap_alloc(static_cast<size_t>(capacity)));
    if (!reader->buffer)
        return 0;
    reader->buffer[0] = 0;
    return 1;
}

// Refills the buffer when it is used up. Each fill asks for as many bytes as the last one
// delivered, so after a short read near the end later requests are shorter; that is harmless.
static int reader_fill(file_reader* reader)
{
    if (reader->position >= 0 && reader->position < reader->size)
        return 1;
    uint32_t got = 0;
    if (!platform_file_read(reader->handle, reader->buffer, static_cast<uint32_t>(reader->size), &got) || got == 0)
        return 0;
    reader->size = static_cast<int32_t>(got);
    reader->position = 0;
    return 1;
}

int reader_read(file_reader* reader, void* destination, int32_t element_size, int32_t element_count)
{
    int64_t wanted = static_cast<int64_t>(element_size) * element_count;
    char* out = static_cast<char*>(destination);
    while (wanted > 0) {
        if (!reader_fill(reader))
            return 0;
        int64_t available = reader->size - reader->position;
        int64_t take = available < wanted ? available : wanted;
        memcpy(out, reader->buffer + reader->position, static_cast<size_t>(take));
        reader->position += static_cast<int32_t>(take);
        out += take;
        wanted -= take;
    }
    return 1;
}

int32_t reader_read_line(file_reader* reader, char* line, int32_t capacity)
{
    int32_t stored = 0;
    reader->line = reader->lines_ended + 1;
    while (stored < capacity - 1) {
        if (!reader_fill(reader))
            break;
        char c = reader->buffer[reader->position++];
        if (c == '\n') {
            ++reader->lines_ended;
            break;
        }
        line[stored++] = c;
    }
    if (capacity > 0)
        line[stored < capacity ? stored : capacity - 1] = 0;
    if (stored > 0 && line[stored - 1] == '\r')
        line[stored - 1] = 0;
    return stored;
}

void reader_close(file_reader* reader)
{
    platform_heap_free(reader->buffer);
    reader->buffer = nullptr;
}

int reader_open_file(file_reader* reader, const char* path, int32_t capacity)
{
    platform_file file = platform_file_open(path);
    if (!file)
        return 0;
    if (!reader_open(reader, file, capacity)) {
        platform_file_close(file);
        return 0;
    }
    return 1;
}

void reader_close_file(file_reader* reader)
{
    reader_close(reader);
    platform_file_close(reader->handle);
    reader->handle = nullptr;
}

int read_content_line(file_reader* reader, char* line, int32_t capacity)
{
    for (;;) {
        if (reader_read_line(reader, line, capacity) == 0)
            return 0;
        if (line[0] != 0 && line[0] != '#')
            return 1;
    }
}

int read_count_line(file_reader* reader, char* line, int32_t capacity, const char* keyword, int32_t* count)
{
    if (!read_content_line(reader, line, capacity))
        return 0;
    int32_t keyword_length = static_cast<int32_t>(strlen(keyword));
    if (strncmp(line, keyword, static_cast<size_t>(keyword_length)) != 0)
        return 0;
    return parse_int(line + keyword_length, capacity - keyword_length, count);
}
