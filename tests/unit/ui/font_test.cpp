#include <gtest/gtest.h>

#include <string.h>

#include <map>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "support/temp_files.h"
#include "support/test_frame.h"
#include "support/test_heap.h"
#include "ui/font.h"

namespace {

// A glyph for a test font: its bitmap as rows of '#' (ink) and '.'.
struct glyph_spec {
    uint8_t advance;
    int8_t offset_x, offset_y;
    std::vector<std::string> rows;
};

void put_u32(std::string* bytes, uint32_t value)
{
    for (int32_t i = 0; i < 4; ++i)
        bytes->push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// The bytes of a ".fnt" file defining codes first ... last; codes without a spec get zero entries.
std::string font_file(uint8_t line_height, uint8_t first, uint8_t last, const std::map<uint8_t, glyph_spec>& glyphs)
{
    std::string bytes("FNT\0", 4);
    bytes.push_back(static_cast<char>(line_height));
    bytes.push_back(static_cast<char>(first));
    bytes.push_back(static_cast<char>(last));
    std::string bitmaps;
    for (uint32_t code = first; code <= last && first <= last; ++code) {
        auto found = glyphs.find(static_cast<uint8_t>(code));
        glyph_spec spec = found != glyphs.end() ? found->second : glyph_spec{0, 0, 0, {}};
        uint8_t width = spec.rows.empty() ? 0 : static_cast<uint8_t>(spec.rows[0].size());
        bytes.push_back(static_cast<char>(spec.advance));
        bytes.push_back(static_cast<char>(spec.offset_x));
        bytes.push_back(static_cast<char>(spec.offset_y));
        bytes.push_back(static_cast<char>(width));
        bytes.push_back(static_cast<char>(spec.rows.size()));
        put_u32(&bytes, static_cast<uint32_t>(bitmaps.size()));
        for (const std::string& row : spec.rows) {
            std::string packed((row.size() + 7) / 8, '\0');
            for (size_t i = 0; i < row.size(); ++i)
                if (row[i] == '#')
                    packed[i / 8] = static_cast<char>(packed[i / 8] | 0x80 >> (i % 8));
            bitmaps += packed;
        }
    }
    put_u32(&bytes, static_cast<uint32_t>(bitmaps.size()));
    return bytes + bitmaps;
}

// A one-pixel glyph that advances by `advance`.
glyph_spec dot(uint8_t advance, int8_t offset_y = 0)
{
    return glyph_spec{advance, 0, offset_y, {"#"}};
}

struct loaded_font {
    font face = {};
    loaded_font(const std::string& bytes)
    {
        std::string path = write_file(test_folder() + "/test.fnt", bytes);
        EXPECT_EQ(font_load(&face, path.c_str()), 1);
    }
    ~loaded_font() { platform_heap_free(face.bitmaps); }
};

bool all_zero(const font& face)
{
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&face);
    for (size_t i = 0; i < sizeof(face); ++i)
        if (bytes[i])
            return false;
    return true;
}

const uint16_t INK = 0x7FFF;

} // namespace

TEST(font_load, reads_line_height_glyph_entries_and_bitmaps)
{
    std::map<uint8_t, glyph_spec> glyphs = {{'A', {5, -1, 2, {"#.#.#.#.#", ".#......."}}}, {'C', dot(7)}};
    loaded_font loaded(font_file(12, 'A', 'C', glyphs));
    const font& face = loaded.face;
    EXPECT_EQ(face.line_height, 12u);
    const glyph& a = face.glyphs['A'];
    EXPECT_EQ(a.advance, 5u);
    EXPECT_EQ(a.offset_x, -1);
    EXPECT_EQ(a.offset_y, 2);
    EXPECT_EQ(a.width, 9u);
    EXPECT_EQ(a.height, 2u);
    EXPECT_EQ(a.bitmap_offset, 0u);
    ASSERT_EQ(face.bitmap_size, 5u); // two rows of two bytes, then the dot's one byte
    EXPECT_EQ(face.bitmaps[0], 0xAA);
    EXPECT_EQ(face.bitmaps[1], 0x80);
    EXPECT_EQ(face.bitmaps[2], 0x40);
    EXPECT_EQ(face.glyphs['B'].advance, 0u);
    EXPECT_EQ(face.glyphs['C'].bitmap_offset, 4u);
    EXPECT_EQ(face.glyphs['D'].advance, 0u);
}

TEST(font_load, first_code_after_the_last_defines_no_glyphs)
{
    loaded_font loaded(font_file(9, 'Z', 'A', {}));
    EXPECT_EQ(loaded.face.line_height, 9u);
    for (const glyph& g : loaded.face.glyphs)
        EXPECT_EQ(g.advance, 0u);
}

TEST(font_load, fourth_magic_byte_not_zero_is_rejected)
{
    std::string bytes = font_file(12, 'A', 'A', {{'A', dot(3)}});
    bytes[3] = ' ';
    std::string path = write_file(test_folder() + "/bad.fnt", bytes);
    font face;
    memset(&face, 0xAB, sizeof(face));
    EXPECT_EQ(font_load(&face, path.c_str()), 0);
    EXPECT_TRUE(all_zero(face));
}

TEST(font_load, short_bitmap_data_fails_and_zeroes_the_record)
{
    std::string bytes = font_file(12, 'A', 'A', {{'A', dot(3)}});
    bytes.pop_back();
    std::string path = write_file(test_folder() + "/short.fnt", bytes);
    font face;
    EXPECT_EQ(font_load(&face, path.c_str()), 0);
    EXPECT_TRUE(all_zero(face));
}

TEST(font_load, cut_glyph_table_fails)
{
    std::string bytes = font_file(12, 'A', 'C', {{'A', dot(3)}});
    bytes.resize(7 + 9 + 4);
    std::string path = write_file(test_folder() + "/cut.fnt", bytes);
    font face;
    EXPECT_EQ(font_load(&face, path.c_str()), 0);
    EXPECT_TRUE(all_zero(face));
}

TEST(font_load, bitmap_allocation_failure_fails_the_load)
{
    std::string path = write_file(test_folder() + "/font.fnt", font_file(12, 'A', 'A', {{'A', dot(3)}}));
    test_heap::fail_request(2); // the reader's buffer first, then the bitmaps
    font face;
    EXPECT_EQ(font_load(&face, path.c_str()), 0);
    EXPECT_TRUE(all_zero(face));
}

TEST(font_load, missing_file_fails)
{
    font face;
    EXPECT_EQ(font_load(&face, (test_folder() + "/none.fnt").c_str()), 0);
    EXPECT_TRUE(all_zero(face));
}

TEST(decode_character, privet_maps_onto_the_windows_1251_codes)
{
    const char* text = "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"; // "Привет"
    std::vector<int32_t> codes;
    int32_t position = 0;
    while (text[position])
        codes.push_back(decode_character(text, &position));
    EXPECT_EQ(codes, (std::vector<int32_t>{0xCF, 0xF0, 0xE8, 0xE2, 0xE5, 0xF2}));
}

TEST(decode_character, yo_and_the_alphabet_ends_map_like_the_code_page)
{
    auto code_of = [](const char* text) {
        int32_t position = 0;
        return static_cast<int32_t>(decode_character(text, &position));
    };
    EXPECT_EQ(code_of("\xD0\x81"), 0xA8); // Ё
    EXPECT_EQ(code_of("\xD1\x91"), 0xB8); // ё
    EXPECT_EQ(code_of("\xD0\x90"), 0xC0); // А
    EXPECT_EQ(code_of("\xD0\xBF"), 0xEF); // п
    EXPECT_EQ(code_of("\xD1\x80"), 0xF0); // р
    EXPECT_EQ(code_of("\xD1\x8F"), 0xFF); // я
    EXPECT_EQ(code_of("q"), 'q');
    EXPECT_EQ(code_of("\x80"), 0x80); // up to 0x80 a byte is itself
}

TEST(decode_character, lead_byte_cut_off_by_the_end_ends_the_text)
{
    int32_t position = 0;
    EXPECT_EQ(decode_character("\xD0", &position), 0);
    EXPECT_EQ(position, 0);
}

TEST(draw_text, privet_draws_its_six_glyphs)
{
    test_frame frame(8, 8);
    std::map<uint8_t, glyph_spec> glyphs;
    const uint8_t letters[6] = {0xCF, 0xF0, 0xE8, 0xE2, 0xE5, 0xF2};
    for (int8_t i = 0; i < 6; ++i)
        glyphs[letters[i]] = dot(1, i); // each letter marks its own row
    loaded_font loaded(font_file(8, 0xC0, 0xFF, glyphs));
    int32_t end = draw_text(1, 1, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82", -1, &loaded.face, INK);
    EXPECT_EQ(end, 7);
    for (int32_t i = 0; i < 6; ++i)
        EXPECT_EQ(frame.pixel(1 + i, 1 + i), INK) << "letter " << i;
    EXPECT_EQ(frame.drawn(), 6);
}

TEST(draw_text, draws_ink_only_with_offsets_from_the_pen)
{
    test_frame frame(8, 4, 0x1111);
    loaded_font loaded(font_file(4, 'x', 'x', {{'x', {4, 1, 1, {"#.#", ".#."}}}}));
    EXPECT_EQ(draw_text(2, 0, "x", -1, &loaded.face, INK), 6);
    EXPECT_EQ(frame.pixel(3, 1), INK);
    EXPECT_EQ(frame.pixel(4, 1), 0x1111); // no background
    EXPECT_EQ(frame.pixel(5, 1), INK);
    EXPECT_EQ(frame.pixel(4, 2), INK);
    EXPECT_EQ(frame.drawn(), 3);
}

TEST(draw_text, text_partly_off_the_left_and_bottom_edges_is_clipped_pixel_by_pixel)
{
    test_frame frame(4, 4);
    loaded_font loaded(font_file(4, 'x', 'x', {{'x', {3, 0, 0, {"###", "###", "###"}}}}));
    draw_text(-2, 2, "xx", -1, &loaded.face, INK);
    // The first glyph covers columns -2 ... 0 and the second 1 ... 3, rows 2 ... 4.
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 4; ++x)
            EXPECT_EQ(frame.pixel(x, y) == INK, y >= 2) << x << "," << y;
}

TEST(draw_text, stops_at_the_byte_limit)
{
    test_frame frame(8, 2);
    loaded_font loaded(font_file(2, 'x', 'x', {{'x', dot(2)}}));
    EXPECT_EQ(draw_text(0, 0, "xxxx", 2, &loaded.face, INK), 4);
    EXPECT_EQ(frame.drawn(), 2);
}

TEST(draw_text, undefined_codes_draw_nothing_and_do_not_advance)
{
    test_frame frame(8, 2);
    loaded_font loaded(font_file(2, 'x', 'x', {{'x', dot(2)}}));
    EXPECT_EQ(draw_text(0, 0, "?x?", -1, &loaded.face, INK), 2);
    EXPECT_EQ(frame.pixel(0, 0), INK);
    EXPECT_EQ(frame.drawn(), 1);
}

TEST(draw_text, glyph_whose_bitmap_lies_past_the_data_is_not_drawn)
{
    test_frame frame(8, 2);
    loaded_font loaded(font_file(2, 'x', 'x', {{'x', dot(2)}}));
    loaded.face.glyphs['x'].bitmap_offset = 1; // one byte of data
    EXPECT_EQ(draw_text(0, 0, "x", -1, &loaded.face, INK), 2);
    EXPECT_EQ(frame.drawn(), 0);
}

TEST(text_width, of_an_empty_text_is_0)
{
    loaded_font loaded(font_file(2, 'x', 'x', {{'x', dot(2)}}));
    EXPECT_EQ(text_width("", -1, &loaded.face), 0);
}

TEST(text_width, of_undefined_codes_is_0)
{
    loaded_font loaded(font_file(2, 'x', 'x', {{'x', dot(2)}}));
    EXPECT_EQ(text_width("abc \xD0\x9F", -1, &loaded.face), 0);
}

TEST(text_width, sums_the_advances_within_the_byte_limit)
{
    loaded_font loaded(font_file(2, 0x20, 0xFF, {{'x', dot(2)}, {' ', {1, 0, 0, {}}}, {0xCF, dot(5)}}));
    EXPECT_EQ(text_width("x x", -1, &loaded.face), 5);
    EXPECT_EQ(text_width("x \xD0\x9Fx", -1, &loaded.face), 10);
    EXPECT_EQ(text_width("x \xD0\x9Fx", 3, &loaded.face), 8); // a letter begun inside the limit counts whole
}

namespace {

// 'a' advances 3 and inks the pen's pixel; a blank advances 1; line feed and tab are undefined.
struct wrap_font : loaded_font {
    wrap_font() : loaded_font(font_file(1, ' ', 'a', {{'a', dot(3)}, {' ', {1, 0, 0, {}}}})) {}
};

std::vector<int32_t> inked_columns(const test_frame& frame, int32_t row, int32_t width)
{
    std::vector<int32_t> columns;
    for (int32_t x = 0; x < width; ++x)
        if (frame.pixel(x, row) == INK)
            columns.push_back(x);
    return columns;
}

} // namespace

TEST(draw_text_wrapped, word_that_would_pass_the_limit_starts_a_new_line)
{
    test_frame frame(20, 12);
    wrap_font font;
    EXPECT_EQ(draw_text_wrapped(1, 0, 11, "aa aa aa", -1, &font.face, 5, INK), 10);
    // "aa " ends at 8; the next word would reach 14 > 11, and so would the last.
    EXPECT_EQ(inked_columns(frame, 0, 20), (std::vector<int32_t>{1, 4}));
    EXPECT_EQ(inked_columns(frame, 5, 20), (std::vector<int32_t>{1, 4}));
    EXPECT_EQ(inked_columns(frame, 10, 20), (std::vector<int32_t>{1, 4}));
}

TEST(draw_text_wrapped, words_that_fit_stay_on_the_line)
{
    test_frame frame(20, 12);
    wrap_font font;
    EXPECT_EQ(draw_text_wrapped(0, 0, 14, "aa aa", -1, &font.face, 5, INK), 0);
    EXPECT_EQ(inked_columns(frame, 0, 20), (std::vector<int32_t>{0, 3, 7, 10})); // 7 + 6 = 13 fits
}

TEST(draw_text_wrapped, line_feed_only_separates_words)
{
    test_frame frame(20, 12);
    wrap_font font;
    EXPECT_EQ(draw_text_wrapped(0, 0, 100, "aa\naa\ta", -1, &font.face, 5, INK), 0);
    EXPECT_EQ(inked_columns(frame, 0, 20), (std::vector<int32_t>{0, 3, 6, 9, 12}));
}

TEST(draw_text_wrapped, word_wider_than_the_space_goes_on_its_own_line_and_runs_past)
{
    test_frame frame(20, 12);
    wrap_font font;
    EXPECT_EQ(draw_text_wrapped(0, 0, 4, "aaaaa", -1, &font.face, 5, INK), 5);
    EXPECT_EQ(inked_columns(frame, 0, 20), std::vector<int32_t>{});
    EXPECT_EQ(inked_columns(frame, 5, 20), (std::vector<int32_t>{0, 3, 6, 9, 12}));
}

TEST(draw_text_wrapped, separator_advance_is_not_measured_but_is_drawn)
{
    test_frame frame(20, 12);
    wrap_font font;
    // "aa " measures 6, so it fits a limit of 6 exactly; its blank still moves the pen to 7.
    EXPECT_EQ(draw_text_wrapped(0, 0, 6, "aa a", -1, &font.face, 5, INK), 5);
    EXPECT_EQ(inked_columns(frame, 0, 20), (std::vector<int32_t>{0, 3}));
    EXPECT_EQ(inked_columns(frame, 5, 20), (std::vector<int32_t>{0}));
}

TEST(draw_text_wrapped, respects_the_byte_limit_and_empty_text)
{
    test_frame frame(20, 12);
    wrap_font font;
    EXPECT_EQ(draw_text_wrapped(0, 3, 100, "", -1, &font.face, 5, INK), 3);
    EXPECT_EQ(draw_text_wrapped(0, 0, 100, "aa aa", 4, &font.face, 5, INK), 0);
    EXPECT_EQ(inked_columns(frame, 0, 20), (std::vector<int32_t>{0, 3, 7}));
}
