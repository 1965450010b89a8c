// Textures, sounds and fonts read again through the platform's decoders and the game's reader, to
// tell why the game's loader refused them.
#include <string.h>

#include "core/file_reader.h"
#include "core/settings.h"
#include "checks.h"
#include "platform/platform.h"
#include "ui/font.h"

static bool is_power_of_two(uint32_t n)
{
    return n != 0 && (n & (n - 1)) == 0;
}

// The "@" suffix of a texture name: an "e" or a "t" must be followed by a digit.
static bool suffix_readable(const std::string& name, const std::string& path)
{
    size_t mark = name.find_first_of(".@");
    if (mark == std::string::npos || name[mark] == '.')
        return true;
    for (size_t i = mark + 1; i < name.size() && name[i] != '.'; ++i) {
        char c = name[i];
        if (c != 'e' && c != 't')
            continue;
        if (i + 1 >= name.size() || name[i + 1] < '0' || name[i + 1] > '9') {
            report_problem(path, 0, "the name's \"@\" suffix has \"%c\" without a digit after it", c);
            return false;
        }
        ++i;
    }
    return true;
}

bool inspect_texture(const std::string& name, const std::string& path)
{
    platform_image image = platform_image_open(path.c_str(), TEXTURE_DITHERING != 0);
    if (!image) {
        report_problem(path, 0, "cannot be decoded as an image");
        return false;
    }
    uint32_t width = 0, height = 0;
    bool clean = true;
    if (!platform_image_size(image, &width, &height)) {
        report_problem(path, 0, "the image's size cannot be read");
        clean = false;
    } else if (!is_power_of_two(width) || !is_power_of_two(height)) {
        report_problem(path, 0, "%ux%u: both sides of a texture must be powers of two", width, height);
        clean = false;
    }
    platform_image_close(image);
    return clean && suffix_readable(name, path);
}

bool inspect_sound(const std::string&, const std::string& path)
{
    platform_sound_format format = {};
    platform_sound_file file = platform_sound_file_open(path.c_str(), &format);
    if (!file) {
        report_problem(path, 0, "not a sound the game can read (it takes uncompressed 8- or 16-bit PCM)");
        return false;
    }
    bool clean = true;
    if (format.bits_per_sample != 8 && format.bits_per_sample != 16) {
        report_problem(path, 0, "%u-bit samples: sounds must have 8- or 16-bit samples", format.bits_per_sample);
        clean = false;
    } else if (format.channels > 2) {
        report_problem(path, 0, "%u channels: sounds must be mono or stereo", format.channels);
        clean = false;
    } else {
        for (;;) {
            const uint8_t* bytes = nullptr;
            uint32_t length = 0;
            int ended = 0;
            if (!platform_sound_file_read(file, &bytes, &length, &ended)) {
                report_problem(path, 0, "the samples cannot be read to the end");
                clean = false;
                break;
            }
            if (ended)
                break;
        }
    }
    platform_sound_file_close(file);
    return clean;
}

namespace {

enum { FONT_HEADER_BYTES = 7, FONT_GLYPH_BYTES = 9 };

// The font file as the game reads it, field by field; every way it can fail, and glyphs that
// reach past the bitmap data (the game accepts those but never draws them).
bool inspect_font_file(file_reader* reader, const std::string& path)
{
    uint8_t header[FONT_HEADER_BYTES];
    if (!reader_read(reader, header, 1, FONT_HEADER_BYTES)) {
        report_problem(path, 0, "shorter than a font header (%d bytes)", FONT_HEADER_BYTES);
        return false;
    }
    if (memcmp(header, "FNT", 4) != 0) {
        report_problem(path, 0, "not a font: the first four bytes must be \"FNT\" and a zero byte");
        return false;
    }
    uint32_t first = header[5], last = header[6];
    struct glyph_extent {
        uint32_t code, offset, bytes;
    };
    glyph_extent extents[FONT_GLYPH_COUNT];
    uint32_t glyphs = 0;
    for (uint32_t code = first; code <= last; ++code) {
        uint8_t entry[FONT_GLYPH_BYTES];
        if (!reader_read(reader, entry, 1, FONT_GLYPH_BYTES)) {
            report_problem(path, 0, "ends inside the glyph table, at character %u (the header says %u to %u)", code,
                           first, last);
            return false;
        }
        uint32_t width = entry[3], height = entry[4];
        uint32_t offset = entry[5] | entry[6] << 8 | entry[7] << 16 | static_cast<uint32_t>(entry[8]) << 24;
        extents[glyphs++] = {code, offset, height * ((width + 7) / 8)};
    }
    uint8_t size_bytes[4];
    if (!reader_read(reader, size_bytes, 1, 4)) {
        report_problem(path, 0, "ends before the size of the bitmap data");
        return false;
    }
    uint32_t size = size_bytes[0] | size_bytes[1] << 8 | size_bytes[2] << 16 | static_cast<uint32_t>(size_bytes[3]) << 24;
    uint32_t present = 0;
    uint8_t block[4096];
    while (present < size) {
        uint32_t want = size - present < sizeof block ? size - present : static_cast<uint32_t>(sizeof block);
        if (!reader_read(reader, block, 1, static_cast<int32_t>(want)))
            break;
        present += want;
    }
    if (present < size) {
        report_problem(path, 0, "the header promises %u bytes of bitmap data, but the file ends before them", size);
        return false;
    }
    bool clean = true;
    for (uint32_t i = 0; i < glyphs; ++i)
        if (static_cast<uint64_t>(extents[i].offset) + extents[i].bytes > size) {
            report_problem(path, 0, "the bitmap of character %u reaches past the bitmap data: it is never drawn",
                           extents[i].code);
            clean = false;
        }
    return clean;
}

} // namespace

int check_font(const std::string& path, font* record)
{
    int ok = font_load(record, path.c_str());
    file_reader reader;
    if (!reader_open_file(&reader, path.c_str(), 4096)) {
        report_problem(path, 0, "missing: the game cannot start without its two fonts");
        return 0;
    }
    bool clean = inspect_font_file(&reader, path);
    reader_close_file(&reader);
    if (!ok && clean)
        report_problem(path, 0, "the game cannot load this font (the checker found no reason)");
    return ok;
}

static bool has_glyph(const glyph& g)
{
    return g.advance != 0 || g.width != 0;
}

// The two-byte sequences that are the letters the fonts are made for: Cyrillic А to я, Ё and ё.
static bool is_cyrillic(uint8_t lead, uint8_t next)
{
    if (lead == 0xD0)
        return next == 0x81 || (next >= 0x90 && next <= 0xBF);
    return lead == 0xD1 && ((next >= 0x80 && next <= 0x8F) || next == 0x91);
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
        if (position - start == 2 && !is_cyrillic(lead, static_cast<uint8_t>(terminated[static_cast<size_t>(start + 1)])))
            return text_of("the bytes %02X %02X are neither ASCII nor Cyrillic: the game draws character 0x%02X for them",
                           lead, static_cast<uint8_t>(terminated[static_cast<size_t>(start + 1)]), code);
        if (!any || has_glyph(face->glyphs[code]))
            continue;
        if (code >= 0x20 && code < 0x7F)
            return text_of("character \"%c\" is not in the %s: it is not drawn", code, font_name);
        return text_of("character 0x%02X is not in the %s: it is not drawn", code, font_name);
    }
    return "";
}
