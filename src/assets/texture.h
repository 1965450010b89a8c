// Textures: PNG images in gloamhold_data/textures decoded once into 16-bit texels in the
// renderer's own layout (BGRA 5551, bit 15 set = opaque), with power-of-two sides so that
// wrapping is a mask and row addressing a shift. The file name carries per-texture render flags.
#pragma once

#include <stdint.h>

#include "assets/registry.h"

// Render flags, set from the file name only.
enum texture_flag : uint8_t {
    TEXTURE_DOUBLE_SIDED = 1, // "@d": drawn from both sides
    TEXTURE_ENVIRONMENT = 2,  // "env_" prefix: texture coordinates come from the view
    TEXTURE_TRANSLUCENT = 4,  // "@t<digit>": left to the deferred translucent drawing, at t_level
    TEXTURE_FIXED_LIGHT = 8,  // "@e<digit>": every vertex takes e_level as its light value
};

struct texture {
    int32_t width;  // a power of two
    int32_t height; // a power of two
    uint16_t* texels; // width x height, rows top first, no padding between rows, then one spare texel
                      // (the vector span loops read every texel as four bytes); heap block owned by the record
    float width_f;
    float height_f;
    int32_t width_mask;  // width - 1
    int32_t height_mask; // height - 1
    int32_t row_shift;   // log2(width): texel (u, v) is texels[(u & width_mask) + ((v & height_mask) << row_shift)]
    uint8_t flags;
    uint8_t t_level; // 2 + 6n for "@t<n>"
    float e_level;   // 1.0 - 0.1n for "@e<n>"
};

enum {
    FALLBACK_TEXTURE_SIZE = 64,
    FALLBACK_TEXTURE_CELL = 8,
    FALLBACK_EVEN_COLOUR = 0x8000, // opaque black
    FALLBACK_ODD_COLOUR = 0xF81F,  // opaque magenta
    TEXTURE_RELOAD_MESSAGE_CAPACITY = 100,
};

extern registry textures;
// The checkerboard that stands in for every texture that cannot be loaded; -1 until it is made.
extern int32_t fallback_texture;
// The report of the last reload_textures, for the on-screen message line to show.
extern char texture_reload_message[TEXTURE_RELOAD_MESSAGE_CAPACITY];

// Sets the size fields and allocates width x height texels and the spare one (uninitialised, the
// spare zero); sides must be positive.
int texture_create(texture* record, int32_t width, int32_t height);
// Releases the texels; on success width becomes 0 and texels null.
int texture_free(texture* record);
// Decodes an image file into the record (TEXTURE_DITHERING chooses ordered dithering). Fails when
// the file cannot be decoded or a side is not a power of two; nothing is then left allocated.
int texture_load_file(texture* record, const char* path);
// Creates the texture and fills texel (x, y) with odd_colour when x / cell + y / cell is odd.
int texture_make_checker(texture* record, int32_t width, int32_t height, int32_t cell, uint16_t even_colour,
                         uint16_t odd_colour);

// Takes a slot for the checkerboard, fills it (64 x 64, cells of 8, fixed light), registers it as
// "fallback" and stores its index in fallback_texture; -1 on failure.
int32_t make_fallback_texture();

// Decodes gloamhold_data/textures/<name> into a new slot, registers the name and applies the
// name's flags. -1 when decoding fails (the slot is freed) and also when an "e" or "t" in the
// suffix has no digit: that texture then stays decoded, in its slot and registered.
int32_t load_texture(const char* name);
// The index already registered for the name, else load_texture.
int32_t find_or_load_texture(const char* name);

// Decodes every registered texture again from its file (flags stay from the first load) and
// writes the counts into texture_reload_message. "fallback" has no file and always counts as failed.
void reload_textures();
