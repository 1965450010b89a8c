#include "ui/font.h"

#include <string.h>

#include "core/diagnostics.h"
#include "core/file_reader.h"
#include "assets/registry.h"
#include "platform/platform.h"
#include "render/frame.h"

font font_system;
font font_dialogue;
const char* const FONT_SYSTEM_FILE = "gloamhold_data/fonts/font_system.fnt";
const char* const FONT_DIALOGUE_FILE = "gloamhold_data/fonts/font_dialogue.fnt";

enum { FONT_READ_BUFFER = 4096, GLYPH_ENTRY_BYTES = 9 };

static int read_u8(file_reader* reader, uint8_t* value)
{
    return reader_read(reader, value, 1, 1);
}

static int read_u32(file_reader* reader, uint32_t* value)
{
    uint8_t bytes[4];
    if (!reader_read(reader, bytes, 1, 4))
        return 0;
    *value = static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
             static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
    return 1;
}

// Glyph entry: advance, offset x, offset y (both signed), width, height, bitmap offset.
static int read_glyph(file_reader* reader, glyph* entry)
{
    uint8_t advance, offset_x, offset_y, width, height;
    if (!read_u8(reader, &advance) || !read_u8(reader, &offset_x) || !read_u8(reader, &offset_y) ||
        !read_u8(reader, &width) || !read_u8(reader, &height) || !read_u32(reader, &entry->bitmap_offset))
        return 0;
    entry->advance = advance;
    entry->offset_x = static_cast<int8_t>(offset_x);
    entry->offset_y = static_cast<int8_t>(offset_y);
    entry->width = width;
    entry->height = height;
    return 1;
}

// Everything after the file is open; the caller zeroes the record when this fails.
static int read_font(file_reader* reader, font* record, const char* path)
{
    uint8_t magic[4];
    if (!reader_read(reader, magic, 1, 4))
        return report(path, 0, "shorter than a font header (7 bytes)");
    if (memcmp(magic, "FNT", 4) != 0)
        return report(path, 0, "not a font: the first four bytes must be \"FNT\" and a zero byte");
    uint8_t line_height, first, last;
    if (!read_u8(reader, &line_height) || !read_u8(reader, &first) || !read_u8(reader, &last))
        return report(path, 0, "shorter than a font header (7 bytes)");
    record->line_height = line_height; // the glyphs were cleared with the whole record
    for (uint32_t code = first; code <= last; ++code)
        if (!read_glyph(reader, &record->glyphs[code]))
            return report(path, 0, "ends inside the glyph table, at character %u (the header says %u to %u)", code,
                          first, last);
    uint32_t size;
    if (!read_u32(reader, &size))
        return report(path, 0, "ends before the size of the bitmap data");
    // The reader takes a signed count: a block it cannot deliver in one request fails the load.
    if (size > 0x7FFFFFFFu)
        return report(path, 0, "%u bytes of bitmap data: more than the game reads in one piece", size);
    // Checked against the file's size before the block is sized by it.
    uint32_t header = 7 + GLYPH_ENTRY_BYTES * (last >= first ? last - first + 1u : 0u) + 4;
    uint32_t file_size = 0;
    if (platform_file_size(reader->handle, &file_size) && (file_size < header || size > file_size - header))
        return report(path, 0, "the header promises %u bytes of bitmap data, but the file ends before them", size);
    record->bitmaps = static_cast<uint8_t*>(platform_heap_alloc(size));
    if (!record->bitmaps)
        return 0;
    record->bitmap_size = size;
    if (!reader_read(reader, record->bitmaps, 1, static_cast<int32_t>(size)))
        return report(path, 0, "the header promises %u bytes of bitmap data, but the file ends before them", size);
    // Not a failure: such a glyph is never drawn.
    for (uint32_t code = first; code <= last; ++code) {
        const glyph& g = record->glyphs[code];
        if (static_cast<uint64_t>(g.bitmap_offset) + g.height * ((g.width + 7u) / 8u) > size)
            report(path, 0, "the bitmap of character %u reaches past the bitmap data: it is never drawn", code);
    }
    return 1;
}

int font_load(font* record, const char* file_name)
{
    memset(record, 0, sizeof(*record));
    platform_file handle = platform_file_open(file_name);
    if (!handle)
        return 0;
    file_reader reader;
    int loaded = reader_open(&reader, handle, FONT_READ_BUFFER) && read_font(&reader, record, file_name);
    reader_close(&reader);
    platform_file_close(handle);
    if (!loaded) {
        platform_heap_free(record->bitmaps);
        memset(record, 0, sizeof(*record));
    }
    return loaded;
}

// A font the game cannot open is reported here; the loader reports every other failure.
static int load_game_font(font* record, const char* path)
{
    if (font_load(record, path))
        return 1;
    if (!asset_file_present(path))
        report(path, 0, "missing: the game cannot start without its two fonts");
    return 0;
}

int load_game_fonts()
{
    return load_game_font(&font_system, FONT_SYSTEM_FILE) && load_game_font(&font_dialogue, FONT_DIALOGUE_FILE);
}

uint8_t decode_character(const char* text, int32_t* position)
{
    uint8_t lead = static_cast<uint8_t>(text[*position]);
    if (lead <= 0x80) {
        *position += 1;
        return lead;
    }
    uint8_t next = static_cast<uint8_t>(text[*position + 1]);
    if (next == 0) // a lead byte cut off by the end of the string: nothing follows to read
        return 0;
    *position += 2;
    // The data hold only the Cyrillic letters, so the lead byte is not checked beyond being even
    // (0xD0) or odd (0xD1), nor the second byte at all.
    if ((lead & 1) == 0)
        return next == 0x81 ? 0xA8 : static_cast<uint8_t>(next + 0x30);
    return next == 0x91 ? 0xB8 : static_cast<uint8_t>((next & 0x0F) + 0xF0);
}

// Walks the characters of a text within its byte limit; -1 (any negative limit) reads to the NUL.
struct text_cursor {
    const char* text;
    int32_t max_bytes;
    int32_t position;
};

// The next character, or 0 at the end of the text.
static uint8_t next_character(text_cursor* cursor)
{
    if (cursor->max_bytes >= 0 && cursor->position >= cursor->max_bytes)
        return 0;
    return decode_character(cursor->text, &cursor->position);
}

int32_t text_width(const char* text, int32_t max_bytes, const font* face)
{
    text_cursor cursor = {text, max_bytes, 0};
    int32_t width = 0;
    while (uint8_t code = next_character(&cursor))
        width += static_cast<int32_t>(face->glyphs[code].advance);
    return width;
}

// One glyph with the pen at (pen_x, y), clipped pixel by pixel; returns the pen after it.
static int32_t draw_glyph(int32_t pen_x, int32_t y, const font* face, uint8_t code, uint16_t colour)
{
    const glyph* g = &face->glyphs[code];
    uint32_t row_bytes = (g->width + 7) / 8;
    uint64_t bitmap_end = static_cast<uint64_t>(g->bitmap_offset) + static_cast<uint64_t>(row_bytes) * g->height;
    if (bitmap_end <= face->bitmap_size) {
        for (uint32_t r = 0; r < g->height; ++r) {
            int32_t screen_y = y + g->offset_y + static_cast<int32_t>(r);
            if (screen_y < 0 || screen_y >= frame_height)
                continue;
            const uint8_t* bits = face->bitmaps + g->bitmap_offset + r * row_bytes;
            uint16_t* row = color_buffer + static_cast<size_t>(screen_y) * static_cast<size_t>(frame_width);
            for (uint32_t i = 0; i < g->width; ++i) {
                int32_t screen_x = pen_x + g->offset_x + static_cast<int32_t>(i);
                if (screen_x < 0 || screen_x >= frame_width)
                    continue;
                if (bits[i / 8] & (0x80u >> (i % 8)))
                    row[screen_x] = colour;
            }
        }
    }
    return pen_x + static_cast<int32_t>(g->advance);
}

int32_t draw_text(int32_t x, int32_t y, const char* text, int32_t max_bytes, const font* face, uint16_t colour)
{
    text_cursor cursor = {text, max_bytes, 0};
    while (uint8_t code = next_character(&cursor))
        x = draw_glyph(x, y, face, code, colour);
    return x;
}

static int is_word_separator(uint8_t code)
{
    return code == ' ' || code == '\t' || code == '\n';
}

int32_t draw_text_wrapped(int32_t x, int32_t y, int32_t right_limit, const char* text, int32_t max_bytes,
                          const font* face, int32_t line_step, uint16_t colour)
{
    text_cursor cursor = {text, max_bytes, 0};
    int32_t pen_x = x;
    int32_t pen_y = y;
    for (;;) {
        // Measure the next word, without its separator's advance.
        text_cursor scan = cursor;
        int32_t width = 0;
        int32_t characters = 0;
        while (uint8_t code = next_character(&scan)) {
            ++characters;
            if (is_word_separator(code))
                break;
            width += static_cast<int32_t>(face->glyphs[code].advance);
        }
        if (characters == 0)
            return pen_y;
        // A line feed only separates words: it never starts a new line by itself.
        if (pen_x + width > right_limit) {
            pen_x = x;
            pen_y += line_step;
        }
        for (int32_t i = 0; i < characters; ++i)
            pen_x = draw_glyph(pen_x, pen_y, face, next_character(&cursor), colour);
    }
}
