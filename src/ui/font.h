// The game's 1-bit bitmap fonts and the drawing of text with them, in one solid colour straight
// into the frame buffer. Text is UTF-8; the fonts cover ASCII and Cyrillic in the layout of the
// Windows-1251 code page, onto which the text is mapped as it is read.
#pragma once

#include <stdint.h>

enum { FONT_GLYPH_COUNT = 256 };

struct glyph {
    uint32_t advance;       // how far the pen moves right after the glyph (0 ... 255)
    int32_t offset_x;       // the bitmap's offset from the pen (-128 ... 127)
    int32_t offset_y;       // the bitmap's offset from the text's top line (-128 ... 127)
    uint32_t width;         // bitmap size in pixels (0 ... 255)
    uint32_t height;
    uint32_t bitmap_offset; // byte offset of the bitmap in `bitmaps`
};

struct font {
    uint32_t line_height;             // pixels (0 ... 255)
    glyph glyphs[FONT_GLYPH_COUNT];   // all zero for codes the file does not define
    uint8_t* bitmaps;                 // heap block: rows of ceil(width / 8) bytes, top row first
    uint32_t bitmap_size;             // bytes in `bitmaps`; a glyph reaching past it is not drawn
};

extern font font_system;   // HUD and debug text
extern font font_dialogue; // the dialogue box and the death screen

extern const char* const FONT_SYSTEM_FILE;   // "gloamhold_data/fonts/font_system.fnt"
extern const char* const FONT_DIALOGUE_FILE; // "gloamhold_data/fonts/font_dialogue.fnt"

// Reads a ".fnt" file; 1, or 0 with the whole record zeroed.
int font_load(font* record, const char* file_name);
// Start-up: both game fonts from gloamhold_data/fonts; 0 when either fails.
int load_game_fonts();

// The next character code of `text` at byte *position (0 ends the text), moving *position past
// it: bytes up to 0x80 are themselves, a larger byte and the one after it are a two-byte UTF-8
// sequence mapped onto the Windows-1251 codes by arithmetic alone.
uint8_t decode_character(const char* text, int32_t* position);

// The sum of the advances of the characters of at most max_bytes bytes (-1: up to the NUL).
int32_t text_width(const char* text, int32_t max_bytes, const font* face);
// Draws with the pen at (x, y), the top line of the text; returns the pen x after the last character.
int32_t draw_text(int32_t x, int32_t y, const char* text, int32_t max_bytes, const font* face, uint16_t colour);
// Word wrap: a word (up to and including a blank, tab or line feed) that would end past
// right_limit starts a new line at x, line_step lower. Returns the pen y of the last line.
int32_t draw_text_wrapped(int32_t x, int32_t y, int32_t right_limit, const char* text, int32_t max_bytes,
                          const font* face, int32_t line_step, uint16_t colour);
