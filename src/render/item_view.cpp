#include "render/item_view.h"

#include <math.h>

#include "assets/texture.h"
#include "core/debug_flags.h"
#include "render/draw2d.h"
#include "render/frame.h"
#include "render/raster.h"

namespace {

struct screen_rect {
    int32_t x0, y0, x1, y1;
};

// The placed bounding box projected at its nearest and farthest depth. Both x ends are floored
// and both y ends rounded up: the rectangle is that, deliberately, not a symmetric rounding.
screen_rect model_screen_rect(const model* m, const placement* place, float s, float scale, float x_offset,
                              float y_offset)
{
    aabb box = {m->bounds_min, m->bounds_max};
    transform_box(&box, place);
    float near_z = box.min.z, far_z = box.max.z;
    float min_x = fminf(box.min.x * s / near_z, box.min.x * s / far_z);
    float max_x = fmaxf(box.max.x * s / near_z, box.max.x * s / far_z);
    float min_y = fminf(box.min.y * s / near_z, box.min.y * s / far_z);
    float max_y = fmaxf(box.max.y * s / near_z, box.max.y * s / far_z);
    return {static_cast<int32_t>(floorf((min_x + 0.5f) * scale + x_offset)),
            static_cast<int32_t>(ceilf((min_y + 0.5f) * scale + y_offset)),
            static_cast<int32_t>(floorf((max_x + 0.5f) * scale + x_offset)),
            static_cast<int32_t>(ceilf((max_y + 0.5f) * scale + y_offset))};
}

// At 640 x 480 and the usual fields of view the rectangle lies inside the frame; a small
// SCREEN_RESOLUTION or a narrow FOV can push it out, so it is cut to the frame.
void clear_depth_under(const screen_rect& rect)
{
    int32_t x0 = rect.x0 < 0 ? 0 : rect.x0;
    int32_t y0 = rect.y0 < 0 ? 0 : rect.y0;
    int32_t x1 = rect.x1 > frame_width ? frame_width : rect.x1;
    int32_t y1 = rect.y1 > frame_height ? frame_height : rect.y1;
    for (int32_t y = y0; y < y1; ++y)
        for (int32_t x = x0; x < x1; ++x)
            depth_buffer[y * frame_width + x] = 0.0f;
}

} // namespace

void draw_model_view(const model* m, const placement* place, float fov, float scale, float x_offset,
                     float y_offset, float shade)
{
    float s = 1.0f / tanf(fov * 0.5f);
    screen_rect rect = model_screen_rect(m, place, s, scale, x_offset, y_offset);
    if (debug_show_colliders)
        draw_rect_outline(rect.x0, rect.y0, rect.x1, rect.y1, COLOUR_ITEM_BOUNDS);
    clear_depth_under(rect);

    for (int32_t k = 0; k < m->subset_count; ++k) {
        const model_subset* subset = &m->subsets[k];
        if (!registry_in_use(&textures, subset->texture))
            continue;
        const texture* tex = registry_at<texture>(&textures, subset->texture);
        for (int32_t t = subset->first_triangle; t < subset->end_triangle; ++t) {
            const int32_t* points = m->triangles[t].points;
            float px[3], py[3];
            screen_vertex corner[3];
            for (int32_t c = 0; c < 3; ++c) {
                vec3 v = placement_to_world_point(place, m->points[points[c]]);
                px[c] = v.x * s / v.z;
                py[c] = v.y * s / v.z;
                corner[c] = {(px[c] + 0.5f) * scale + x_offset, (py[c] + 0.5f) * scale + y_offset, v.z,
                             m->texcoords[points[c]].u, m->texcoords[points[c]].v, shade};
            }
            float facing = (py[1] - py[0]) * (px[2] - px[0]) - (py[2] - py[0]) * (px[1] - px[0]);
            if (facing <= 0.0f)
                continue; // an item is always seen from outside: double-sided textures are culled too
            draw_triangle(tex, ITEM_TINT, tex->t_level, &corner[0], &corner[1], &corner[2]);
        }
    }
}
