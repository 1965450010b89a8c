#include "assets/texture.h"

#include <string.h>

#include "core/diagnostics.h"
#include "core/settings.h"
#include "core/text.h"
#include "platform/platform.h"

registry textures = REGISTRY_OF(texture);
int32_t fallback_texture = -1;
char texture_reload_message[TEXTURE_RELOAD_MESSAGE_CAPACITY];

// The single-precision levels of "@e0" to "@e9".
static const float e_levels[10] = {1.0f, 0.9f, 0.8f, 0.7f, 0.6f, 0.5f, 0.4f, 0.3f, 0.2f, 0.1f};

static int is_power_of_two(uint32_t n)
{
    return n != 0 && (n & (n - 1)) == 0;
}

// Deflate packs at most 1032 bytes into one and a pixel takes at least one bit; no other format a
// decoder may read packs tighter. An image whose header claims more pixels than that from the
// file's bytes is refused before anything is sized by it.
enum : uint64_t { DEFLATE_LARGEST_RATIO = 1032, PIXELS_PER_BYTE_AT_MOST = 8 };

// The file's size in bytes, 0 when it cannot be told.
static uint64_t file_bytes(const char* path)
{
    platform_file file = platform_file_open(path);
    uint32_t size = 0;
    if (file && !platform_file_size(file, &size))
        size = 0;
    platform_file_close(file);
    return size;
}

int texture_create(texture* record, int32_t width, int32_t height)
{
    if (width <= 0 || height <= 0)
        return 0;
    int32_t shift = 0;
    while ((width >> (shift + 1)) != 0)
        ++shift;
    size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    uint16_t* texels = static_cast<uint16_t*>(platform_heap_alloc((count + 1) * sizeof(uint16_t)));
    if (!texels)
        return 0;
    texels[count] = 0;
    record->width = width;
    record->height = height;
    record->texels = texels;
    record->width_f = static_cast<float>(width);
    record->height_f = static_cast<float>(height);
    record->width_mask = width - 1;
    record->height_mask = height - 1;
    record->row_shift = shift;
    return 1;
}

int texture_free(texture* record)
{
    if (!platform_heap_free(record->texels))
        return 0;
    record->width = 0;
    record->texels = nullptr;
    return 1;
}

int texture_load_file(texture* record, const char* path)
{
    platform_image image = platform_image_open(path, TEXTURE_DITHERING != 0);
    if (!image) {
        // Nothing to say when the file is missing: whoever named it says so.
        if (asset_file_present(path))
            report(path, 0, "cannot be decoded as an image");
        return 0;
    }
    uint32_t width = 0, height = 0;
    int ok = platform_image_size(image, &width, &height);
    if (!ok)
        report(path, 0, "the image's size cannot be read");
    else if (!is_power_of_two(width) || !is_power_of_two(height))
        ok = report(path, 0, "%ux%u: both sides of a texture must be powers of two", width, height);
    else if (width > 0x40000000u || height > 0x40000000u) // sides that fit the signed fields
        ok = report(path, 0, "%ux%u: a side above 2^30 texels", width, height);
    else if (uint64_t bytes = file_bytes(path);
             static_cast<uint64_t>(width) * height > bytes * DEFLATE_LARGEST_RATIO * PIXELS_PER_BYTE_AT_MOST)
        ok = report(path, 0, "%ux%u: more pixels than a file of %llu bytes can hold", width, height,
                    static_cast<unsigned long long>(bytes));
    if (ok)
        ok = texture_create(record, static_cast<int32_t>(width), static_cast<int32_t>(height));
    if (ok && !platform_image_copy(image, record->texels, width * 2)) {
        report(path, 0, "the pixels cannot be decoded");
        texture_free(record);
        ok = 0;
    }
    platform_image_close(image);
    return ok;
}

int texture_make_checker(texture* record, int32_t width, int32_t height, int32_t cell, uint16_t even_colour,
                         uint16_t odd_colour)
{
    if (cell <= 0 || !texture_create(record, width, height))
        return 0;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            record->texels[x + y * width] = ((x / cell + y / cell) & 1) ? odd_colour : even_colour;
    return 1;
}

int32_t make_fallback_texture()
{
    int32_t index = registry_claim(&textures);
    if (index < 0)
        return -1;
    texture* record = registry_at<texture>(&textures, index);
    if (!texture_make_checker(record, FALLBACK_TEXTURE_SIZE, FALLBACK_TEXTURE_SIZE, FALLBACK_TEXTURE_CELL,
                              FALLBACK_EVEN_COLOUR, FALLBACK_ODD_COLOUR)) {
        registry_free(&textures, index);
        return -1;
    }
    record->flags = TEXTURE_FIXED_LIGHT;
    if (!asset_name_add(ASSET_TEXTURE, "fallback", index)) {
        texture_free(record);
        registry_free(&textures, index);
        return -1;
    }
    fallback_texture = index;
    return index;
}

static int is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Flags from the name: the "env_" prefix, then the letters between the first "@" and the next
// "." (no suffix when a "." comes first). 0, reported at `path`, when an "e" or "t" is not
// followed by a digit.
static int apply_name_flags(texture* record, const char* name, const char* path)
{
    if (strncmp(name, "env_", 4) == 0)
        record->flags |= TEXTURE_ENVIRONMENT;
    const char* mark = strpbrk(name, ".@");
    if (!mark || *mark == '.')
        return 1;
    for (const char* c = mark + 1; *c != 0 && *c != '.'; ++c) {
        if (*c == 'd') {
            record->flags |= TEXTURE_DOUBLE_SIDED;
        } else if (*c == 'e' || *c == 't') {
            if (!is_digit(c[1])) {
                report(path, 0, "the name's \"@\" suffix has \"%c\" without a digit after it", *c);
                return 0;
            }
            int level = c[1] - '0';
            if (*c == 'e') {
                record->flags |= TEXTURE_FIXED_LIGHT;
                record->e_level = e_levels[level];
            } else {
                record->flags |= TEXTURE_TRANSLUCENT;
                record->t_level = static_cast<uint8_t>(2 + 6 * level);
            }
            ++c;
        }
    }
    return 1;
}

int32_t load_texture(const char* name)
{
    char path[ASSET_PATH_CAPACITY];
    if (!asset_path(path, FOLDER_TEXTURES, name))
        return -1;
    int32_t index = registry_claim(&textures);
    if (index < 0)
        return -1;
    texture* record = registry_at<texture>(&textures, index);
    if (!texture_load_file(record, path)) {
        registry_free(&textures, index);
        return -1;
    }
    if (!asset_name_add(ASSET_TEXTURE, name, index)) {
        texture_free(record);
        registry_free(&textures, index);
        return -1;
    }
    // A malformed suffix fails the call but leaves the texture decoded and registered.
    return apply_name_flags(record, name, path) ? index : -1;
}

int32_t find_or_load_texture(const char* name)
{
    int32_t index = asset_name_find(ASSET_TEXTURE, name);
    return index >= 0 ? index : load_texture(name);
}

void reload_textures()
{
    int32_t reloaded = 0, failed = 0;
    for (int32_t i = 0; i < asset_names.count; ++i) {
        const asset_name& entry = asset_names.entries[i];
        if (entry.kind != ASSET_TEXTURE)
            continue;
        char path[ASSET_PATH_CAPACITY];
        texture fresh = {};
        if (!registry_in_use(&textures, entry.index) || !asset_path(path, FOLDER_TEXTURES, entry.name) ||
            !texture_load_file(&fresh, path)) {
            ++failed;
            continue;
        }
        texture* record = registry_at<texture>(&textures, entry.index);
        texture_free(record);
        record->width = fresh.width;
        record->height = fresh.height;
        record->texels = fresh.texels;
        record->width_f = fresh.width_f;
        record->height_f = fresh.height_f;
        record->width_mask = fresh.width_mask;
        record->height_mask = fresh.height_mask;
        record->row_shift = fresh.row_shift;
        ++reloaded;
    }
    string_printf(texture_reload_message, sizeof texture_reload_message,
                  "Texture reload complete: %i successful, %i failed\n", reloaded, failed);
}
