// Draws a few pictures with the renderer and writes them as PNG files, to look at: a lit, textured
// room through the near clipping and the projection (nearest, filtered, light-dithered), the 2-D
// primitives, and text with a small synthetic font and with any font files named on the command
// line. Usage: gloamhold_render_gallery OUT_DIR [FONT.fnt...]
#include <png.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "core/settings.h"
#include "platform/platform.h"
#include "render/colour_tables.h"
#include "render/draw2d.h"
#include "render/frame.h"
#include "render/raster.h"
#include "ui/font.h"

namespace {

struct picture {
    std::vector<uint16_t> colour;
    std::vector<float> depth;
    picture(int32_t width, int32_t height, uint16_t background)
        : colour(static_cast<size_t>(width * height), background), depth(static_cast<size_t>(width * height), 0.0f)
    {
        color_buffer = colour.data();
        depth_buffer = depth.data();
        frame_width = width;
        frame_height = height;
    }
};

// Each 5-bit channel c written as (c << 3) | (c >> 2), as the headless host's screenshots are.
bool write_png(const std::string& path)
{
    FILE* file = fopen(path.c_str(), "wb");
    if (!file)
        return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        fclose(file);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(frame_width), static_cast<png_uint_32>(frame_height), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<png_byte> row(static_cast<size_t>(frame_width) * 3);
    for (int32_t y = 0; y < frame_height; ++y) {
        for (int32_t x = 0; x < frame_width; ++x) {
            uint16_t p = color_buffer[y * frame_width + x];
            int32_t channels[3] = {p >> 10 & 31, p >> 5 & 31, p & 31};
            for (int32_t k = 0; k < 3; ++k)
                row[static_cast<size_t>(x * 3 + k)] = static_cast<png_byte>(channels[k] << 3 | channels[k] >> 2);
        }
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    fclose(file);
    printf("wrote %s\n", path.c_str());
    return true;
}

struct owned_texture {
    std::vector<uint16_t> texels;
    texture record = {};
    owned_texture(int32_t size_log2)
    {
        int32_t size = 1 << size_log2;
        texels.assign(static_cast<size_t>(size * size) + 1, 0); // and the spare texel
        record.width = record.height = size;
        record.texels = texels.data();
        record.width_f = record.height_f = static_cast<float>(size);
        record.width_mask = record.height_mask = size - 1;
        record.row_shift = size_log2;
    }
    uint16_t& at(int32_t x, int32_t y) { return texels[static_cast<size_t>((y << record.row_shift) | x)]; }
};

uint16_t rgb(int32_t r, int32_t g, int32_t b, bool opaque = true)
{
    return static_cast<uint16_t>((opaque ? 0x8000 : 0) | r << 10 | g << 5 | b);
}

// Bricks: rows of 8 texels, offset every other row, mortar lines between them.
owned_texture make_bricks()
{
    owned_texture t(5);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 0; x < 32; ++x) {
            int32_t shifted = (x + ((y / 8) % 2) * 8) % 16;
            bool mortar = y % 8 == 0 || shifted == 0;
            int32_t grain = (x * 7 + y * 13) % 5;
            t.at(x, y) = mortar ? rgb(18, 18, 17) : rgb(22 + grain, 9 + grain / 2, 6);
        }
    return t;
}

owned_texture make_tiles()
{
    owned_texture t(4);
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < 16; ++x)
            t.at(x, y) = ((x / 8 + y / 8) % 2) ? rgb(24, 24, 20) : rgb(8, 10, 14);
    return t;
}

// A grating: opaque bars, transparent holes (whose colour bits are bright green, to show bleeding).
owned_texture make_grating()
{
    owned_texture t(4);
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < 16; ++x)
            t.at(x, y) = (x % 8 < 2 || y % 8 < 2) ? rgb(6, 6, 8) : rgb(0, 31, 0, false);
    return t;
}

struct world_point {
    float x, y, z, u, v;
};

// A world quadrilateral (two triangles) through the camera transform, near clipping and
// projection; the shade grows with depth.
void draw_world_quad(const texture* tex, uint8_t blend, const world_point q[4])
{
    const int32_t fans[2][3] = {{0, 1, 2}, {0, 2, 3}};
    for (const auto& fan : fans) {
        clip_vertex v[CLIP_CAPACITY];
        for (int32_t i = 0; i < 3; ++i) {
            const world_point& p = q[fan[i]];
            float world[3] = {p.x, p.y, p.z}, cam[3];
            camera_transform(world, cam);
            v[i] = clip_vertex{cam[0], cam[1], cam[2], 0, 0, 0, p.u, p.v, std::min(cam[2] / 9.0f, 1.0f)};
        }
        int32_t count = clip_triangle_near(v, 0.1f);
        screen_vertex s[CLIP_CAPACITY];
        for (int32_t i = 0; i < count; ++i)
            s[i] = screen_vertex{project_screen_x(v[i].x, v[i].z), project_screen_y(v[i].y, v[i].z), v[i].z, v[i].u,
                                 v[i].v, v[i].l};
        if (count >= 3)
            draw_triangle(tex, 38, blend, &s[0], &s[1], &s[2]);
        if (count == 4)
            draw_triangle(tex, 38, blend, &s[0], &s[2], &s[3]);
    }
}

void draw_room(const char* path, int32_t interpolation, int32_t dithering)
{
    picture pic(320, 240, 0x8000);
    TEXTURE_INTERPOLATION = interpolation;
    LIGHT_DITHERING = dithering;
    camera_position[0] = 0.0f;
    camera_position[1] = -0.2f;
    camera_position[2] = 0.0f;
    float yaw = -0.15f, pitch = 0.12f;
    camera_yaw_cos = std::cos(yaw);
    camera_yaw_sin = std::sin(yaw);
    camera_pitch_cos = std::cos(pitch);
    camera_pitch_sin = std::sin(pitch);
    projection_scale = 1.0f / std::tan(1.2f * 0.5f);
    view_mapping_update();

    static owned_texture bricks = make_bricks(), tiles = make_tiles(), grating = make_grating();
    // Floor (y = 1, down is +y) from behind the eye to the far wall, walls left and far, a grating
    // and a pane of glass.
    const world_point floor[4] = {{-3, 1, -2, 0, 0}, {3, 1, -2, 3, 0}, {3, 1, 8, 3, 5}, {-3, 1, 8, 0, 5}};
    const world_point far_wall[4] = {{-3, -2, 8, 0, 0}, {3, -2, 8, 3, 0}, {3, 1, 8, 3, 1.5f}, {-3, 1, 8, 0, 1.5f}};
    const world_point left_wall[4] = {{-3, -2, -2, 0, 0}, {-3, -2, 8, 5, 0}, {-3, 1, 8, 5, 1.5f}, {-3, 1, -2, 0, 1.5f}};
    const world_point bars[4] = {{0.2f, -1, 6, 0, 0}, {2.2f, -1, 6, 2, 0}, {2.2f, 1, 6, 2, 2}, {0.2f, 1, 6, 0, 2}};
    const world_point glass[4] = {{-2.2f, -1, 3.5f, 0, 0}, {-1, -1, 3.5f, 1, 0}, {-1, 0.5f, 3.5f, 1, 1}, {-2.2f, 0.5f, 3.5f, 0, 1}};
    draw_world_quad(&tiles.record, 0, floor);
    draw_world_quad(&bricks.record, 0, far_wall);
    draw_world_quad(&bricks.record, 0, left_wall);
    draw_world_quad(&grating.record, 0, bars);
    static owned_texture blue(0);
    blue.at(0, 0) = rgb(8, 16, 31);
    draw_world_quad(&blue.record, 32, glass);
    write_png(path);
}

void draw_primitives(const char* path)
{
    picture pic(160, 120, 0x8000);
    for (int32_t i = 0; i < 16; ++i) {
        double angle = i * 3.14159265 / 8;
        int32_t x1 = 40 + static_cast<int32_t>(std::lround(35 * std::cos(angle)));
        int32_t y1 = 40 + static_cast<int32_t>(std::lround(35 * std::sin(angle)));
        draw_line(40, 40, x1, y1, rgb(31, 31, i * 2));
    }
    draw_rect_outline(85, 5, 150, 45, rgb(0, 31, 31));
    draw_rect_outline(90, 10, 145, 40, 0xF81F);
    fill_circle(110, 85, 20, rgb(31, 16, 0));
    draw_circle_outline(110, 85, 24, rgb(31, 31, 31));
    fill_circle(155, 115, 12, rgb(0, 20, 31)); // cut by the frame's corner
    draw_circle_outline(2, 110, 15, rgb(31, 0, 0));
    // Clipped segments that start and end outside the frame.
    int32_t x0 = -40, y0 = 130, x1 = 200, y1 = 60;
    if (clip_line_to_rect(&x0, &y0, &x1, &y1, 0, 0, 159, 119))
        draw_line(x0, y0, x1, y1, rgb(20, 31, 20));
    write_png(path);
}

// A 5 x 7 font of the letters of "Hello" and "Привет", made here.
std::string synthetic_font_file()
{
    std::map<uint8_t, std::vector<std::string>> shapes = {
        {'H', {"#...#", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"}},
        {'e', {".....", ".....", ".###.", "#...#", "#####", "#....", ".###."}},
        {'l', {".##..", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."}},
        {'o', {".....", ".....", ".###.", "#...#", "#...#", "#...#", ".###."}},
        {0xCF, {"#####", "#...#", "#...#", "#...#", "#...#", "#...#", "#...#"}}, // П
        {0xF0, {".....", ".....", "####.", "#...#", "####.", "#....", "#...."}}, // р
        {0xE8, {".....", ".....", "#...#", "#..##", "#.#.#", "##..#", "#...#"}}, // и
        {0xE2, {".....", ".....", "####.", "#...#", "####.", "#...#", "####."}}, // в
        {0xE5, {".....", ".....", ".###.", "#...#", "#####", "#....", ".###."}}, // е
        {0xF2, {".....", ".....", "#####", "..#..", "..#..", "..#..", "..#.."}}, // т
    };
    std::string bytes("FNT\0", 4);
    bytes += static_cast<char>(9);
    bytes += static_cast<char>(' ');
    bytes += static_cast<char>(0xFF);
    std::string bitmaps;
    auto u32 = [&bytes](uint32_t v) {
        for (int32_t i = 0; i < 4; ++i)
            bytes += static_cast<char>(v >> (8 * i) & 0xFF);
    };
    for (int32_t code = ' '; code <= 0xFF; ++code) {
        auto found = shapes.find(static_cast<uint8_t>(code));
        bool shaped = found != shapes.end();
        bytes += static_cast<char>(code == ' ' || shaped ? 6 : 0);
        bytes += '\0';
        bytes += static_cast<char>(1);
        bytes += static_cast<char>(shaped ? 5 : 0);
        bytes += static_cast<char>(shaped ? 7 : 0);
        u32(static_cast<uint32_t>(bitmaps.size()));
        if (shaped)
            for (const std::string& row : found->second) {
                uint8_t packed = 0;
                for (int32_t i = 0; i < 5; ++i)
                    if (row[static_cast<size_t>(i)] == '#')
                        packed = static_cast<uint8_t>(packed | 0x80 >> i);
                bitmaps += static_cast<char>(packed);
            }
    }
    u32(static_cast<uint32_t>(bitmaps.size()));
    return bytes + bitmaps;
}

bool load_font_bytes(font* face, const std::string& bytes, const std::string& path)
{
    FILE* file = fopen(path.c_str(), "wb");
    if (!file)
        return false;
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
    return font_load(face, path.c_str()) == 1;
}

void draw_text_page(const char* path, const std::vector<std::string>& font_files, const std::string& scratch)
{
    picture pic(320, 200, rgb(2, 2, 6));
    font synthetic;
    if (!load_font_bytes(&synthetic, synthetic_font_file(), scratch)) {
        fprintf(stderr, "the synthetic font did not load\n");
        return;
    }
    const char* privet = "Hello \xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82";
    int32_t x = draw_text(4, 4, privet, -1, &synthetic, 0xFFFF);
    draw_text(x + 6, 4, privet, 7, &synthetic, rgb(31, 31, 0)); // a letter begun within the limit is drawn whole
    draw_text(-9, 193, privet, -1, &synthetic, rgb(31, 12, 12)); // off the left and bottom edges
    std::string words;
    for (int32_t i = 0; i < 6; ++i)
        words += std::string(privet) + " ";
    int32_t y = draw_text_wrapped(4, 16, 150, words.c_str(), -1, &synthetic, 10, rgb(16, 31, 16));
    draw_rect_outline(150, 16, 150, y + 8, rgb(31, 0, 0)); // the right limit
    y += 16;
    for (const std::string& file : font_files) {
        font face;
        if (!font_load(&face, file.c_str())) {
            fprintf(stderr, "%s did not load\n", file.c_str());
            continue;
        }
        const char* sample = "The quick brown fox: \xD0\xA1\xD1\x8A\xD0\xB5\xD1\x88\xD1\x8C \xD0\xB6\xD0\xB5 "
                             "\xD0\xB5\xD1\x89\xD1\x91 \xD1\x8D\xD1\x82\xD0\xB8\xD1\x85 \xD0\xBC\xD1\x8F\xD0\xB3"
                             "\xD0\xBA\xD0\xB8\xD1\x85 \xD1\x84\xD1\x80\xD0\xB0\xD0\xBD\xD1\x86\xD1\x83\xD0\xB7"
                             "\xD1\x81\xD0\xBA\xD0\xB8\xD1\x85 \xD0\xB1\xD1\x83\xD0\xBB\xD0\xBE\xD0\xBA. \xD0\x81\xD0\xBB\xD0\xBA\xD0\xB0!";
        y = draw_text_wrapped(4, y, 310, sample, -1, &face, static_cast<int32_t>(face.line_height) + 2, 0xFFFF);
        y += static_cast<int32_t>(face.line_height) + 6;
        platform_heap_free(face.bitmaps);
    }
    platform_heap_free(synthetic.bitmaps);
    write_png(path);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: %s OUT_DIR [FONT.fnt...]\n", argv[0]);
        return 2;
    }
    std::string out = argv[1];
    build_colour_tables();
    draw_room((out + "/room_nearest.png").c_str(), 0, 0);
    draw_room((out + "/room_filtered.png").c_str(), 1, 0);
    draw_room((out + "/room_light_dithering.png").c_str(), 0, 1);
    draw_primitives((out + "/primitives.png").c_str());
    draw_text_page((out + "/text.png").c_str(), std::vector<std::string>(argv + 2, argv + argc),
                   out + "/synthetic.fnt");
    return 0;
}
