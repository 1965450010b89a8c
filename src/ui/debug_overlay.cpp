#include "ui/debug_overlay.h"

#include <math.h>
#include <stdarg.h>

#include "assets/model.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/frame.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "core/text.h"
#include "game/player.h"
#include "render/colour_tables.h"
#include "render/debug_draw.h"
#include "render/draw2d.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "render/raster.h"
#include "render/visibility.h"
#include "ui/font.h"
#include "ui/hud.h"

// The date the panel names as the build's, fixed so that every build draws the same frame.
static const char build_date_text[] = "Build date: Jun  1 2026";

static const char* material_word(int32_t material)
{
    return material >= 0 && material < MATERIAL_COUNT ? material_names[material] : "unknown";
}

// ---- The player and controls panel (F1) ------------------------------------------------------

struct panel_writer {
    panel_line* lines;
    int32_t count;
};

#if defined(__GNUC__)
__attribute__((format(printf, 5, 6)))
#endif
static void add_line(panel_writer* writer, int32_t x, int32_t y, uint16_t colour, const char* format, ...)
{
    panel_line* line = &writer->lines[writer->count++];
    line->x = x;
    line->y = y;
    line->colour = colour;
    va_list arguments;
    va_start(arguments, format);
    string_vprintf(line->text, sizeof line->text, format, arguments);
    va_end(arguments);
}

void player_panel_lines(panel_line lines[PLAYER_PANEL_LINE_COUNT])
{
    panel_writer writer = {lines, 0};
    int32_t L = static_cast<int32_t>(font_system.line_height);
    add_line(&writer, frame_width - text_width(build_date_text, -1, &font_system) - 8, frame_height - L - 8,
             COLOUR_PANEL_TEXT, "%s", build_date_text);

    const object* player = registry_at<object>(&objects, PLAYER_OBJECT);
    const vec3 at = player->position;
    int32_t y = 8;
    add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "[Player]");
    y = L + 12;
    if (player_motion.on_ground)
        add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "- Position: x=%.1f, y=%.1f, z=%.1f", at.x, at.y, at.z);
    else
        add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "- Position: x=%.1f, y=%.1f, z=%.1f (in air, vel: %.1f)", at.x,
                 at.y, at.z, player_motion.vertical_velocity);
    y += L + 4;
    add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "- Ground level: %.1f (%s)", player_motion.ground_level,
             material_word(player_motion.ground_material));
    y += L + 4;
    if (camera_area_iterations > 0)
        add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "- Area: %i (BSP tree iterations: %i)", camera_area,
                 camera_area_iterations);
    else
        add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "- Area: outside");

    y += L + 8;
    add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "[Control]");
    y += L + 4;
    add_line(&writer, 8, y, key_state[KEYCODE_BACKSPACE] != KEY_UP ? COLOUR_PANEL_HIGHLIGHT : COLOUR_PANEL_TEXT,
             "- [Backspace] Bullet time");
    y += L + 4;
    add_line(&writer, 8, y, COLOUR_PANEL_TEXT, "- [F1] Toggle debug info");
    struct switch_line {
        const char* label;
        int32_t yes;         // the fullbright and frozen-culling lines say the inverse of their switch
        int32_t highlighted; // frozen culling stands out
    } switches[] = {
        {"- [F2] Wireframe: ", debug_wireframe, 0},
        {"- [F3] Show colliders: ", debug_show_colliders, 0},
        {"- [F4] Show areas and portals: ", debug_show_areas, 0},
        {"- [F5] Fullbright: ", !debug_lighting, 0},
        {"- [F6] Show occlusion buffer: ", debug_show_occlusion, 0},
        {"- [F7] Show color lookup tables: ", debug_show_lookup_tables, 0},
        {"- [F8] Freeze portal culling: ", !debug_portal_culling, !debug_portal_culling},
        {"- [F9] Light dithering: ", LIGHT_DITHERING, 0},
        {"- [F10] Texture filtering: ", TEXTURE_INTERPOLATION, 0},
        {"- [F11] Texture dithering: ", TEXTURE_DITHERING, 0},
    };
    for (const switch_line& line : switches) {
        y += L + 4;
        add_line(&writer, 8, y, line.highlighted ? COLOUR_PANEL_HIGHLIGHT : COLOUR_PANEL_TEXT, "%s%s", line.label,
                 line.yes ? "Yes" : "No");
    }
}

void draw_player_panel()
{
    panel_line lines[PLAYER_PANEL_LINE_COUNT];
    player_panel_lines(lines);
    for (const panel_line& line : lines)
        draw_text(line.x, line.y, line.text, -1, &font_system, line.colour);
}

// ---- The contact panel (F3) ------------------------------------------------------------------

static void draw_contact(const collision_hit* contact)
{
    float x0 = contact->point.x, y0 = contact->point.y, z0 = contact->point.z;
    float x1 = x0 + contact->normal.x * 0.1f, y1 = y0 + contact->normal.y * 0.1f, z1 = z0 + contact->normal.z * 0.1f;
    if (!project_segment(&x0, &y0, &z0, &x1, &y1, &z1))
        return;
    int32_t x = static_cast<int32_t>(x0), y = static_cast<int32_t>(y0);
    int32_t size = static_cast<int32_t>(view_size / z0 * 0.02f);
    fill_circle(x, y, size, COLOUR_CONTACT_MARKER);
    draw_circle_outline(x, y, size, COLOUR_CONTACT_OUTLINE);
    draw_screen_segment(x0, y0, x1, y1, COLOUR_CONTACT_OUTLINE);

    char text[PANEL_LINE_CAPACITY];
    draw_text(x + 8, y, "[Contact]", -1, &font_system, COLOUR_PANEL_TEXT);
    string_printf(text, sizeof text, "- pos. x=%.1f, y=%.1f, z=%.1f", contact->point.x, contact->point.y,
                  contact->point.z);
    draw_text(x + 8, y + 12, text, -1, &font_system, COLOUR_PANEL_TEXT);
    string_printf(text, sizeof text, "- norm. x=%.2f, y=%.2f, z=%.2f", contact->normal.x, contact->normal.y,
                  contact->normal.z);
    draw_text(x + 8, y + 24, text, -1, &font_system, COLOUR_PANEL_TEXT);
    string_printf(text, sizeof text, "- dist. %.6f", contact->distance);
    draw_text(x + 8, y + 36, text, -1, &font_system, COLOUR_PANEL_TEXT);
}

void draw_contact_panel()
{
    for (int32_t i = 0; i < player_motion.contact_count; ++i)
        draw_contact(&player_motion.contacts[i]);
}

// ---- The occlusion-buffer view (F6) ----------------------------------------------------------

void draw_occlusion_view()
{
    for (int32_t row = 0; row < occlusion_rows; ++row) {
        for (int32_t column = 0; column < occlusion_columns; ++column) {
            float value = occlusion_coarse[row * occlusion_columns + column];
            if (value == 0.0f)
                continue; // a NaN is not 0 and is shown
            float level = sqrtf(value) * 31.0f;
            uint16_t colour = grey_colour(level > 0.0f ? (level < 31.0f ? static_cast<int32_t>(level) : 31) : 0);
            fill_rect_unclipped(column * 8, row * 8, column * 8 + 8, row * 8 + 8, colour);
        }
    }
}

// ---- The colour look-up table view (F7) ------------------------------------------------------

void draw_lookup_table_view()
{
    struct shown_table {
        const uint8_t* entries;
        int32_t right_offset;
        const char* label;
    } tables[] = {
        {colour_tables.luminance, 160, "Lum."},
        {colour_tables.dimming, 120, "Dim."},
        {colour_tables.red_temperature, 80, "Tmp. R"},
        {colour_tables.blue_temperature, 40, "Tmp. B"},
    };
    int32_t L = static_cast<int32_t>(font_system.line_height);
    for (const shown_table& table : tables) {
        int32_t left = frame_width - table.right_offset;
        for (int32_t i = 0; i < COLOUR_TABLE_ENTRIES; ++i) {
            int32_t x = left + i % COLOUR_TABLE_COLUMNS, y = 8 + i / COLOUR_TABLE_COLUMNS;
            if (x >= 0 && y < frame_height) // a frame narrower than 160 or shorter than 72 shows what fits
                color_buffer[y * frame_width + x] = grey_colour(table.entries[i]);
        }
        draw_text(left, L + 72, table.label, -1, &font_system, COLOUR_PANEL_TEXT);
    }
}
