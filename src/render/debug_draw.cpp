#include "render/debug_draw.h"

#include "assets/world.h"
#include "core/debug_flags.h"
#include "core/numbers.h"
#include "render/draw2d.h"
#include "render/frame.h"
#include "render/raster.h"
#include "render/visibility.h"

namespace {

// Far-off projections are held to a range where the clipper's float arithmetic stays exact
// enough and no conversion overflows.
int32_t to_pixel(float value)
{
    const float limit = 1073741824.0f;
    value = value < -limit ? -limit : value > limit ? limit : value;
    return truncate_to_int32(value);
}

} // namespace

void draw_screen_segment(float x0, float y0, float x1, float y1, uint16_t colour)
{
    int32_t ax = to_pixel(x0), ay = to_pixel(y0), bx = to_pixel(x1), by = to_pixel(y1);
    if (clip_line_to_rect(&ax, &ay, &bx, &by, 0, 0, frame_width - 1, frame_height - 1))
        draw_line(ax, ay, bx, by, colour);
}

void draw_world_segment(vec3 a, vec3 b, uint16_t colour)
{
    if (project_segment(&a.x, &a.y, &a.z, &b.x, &b.y, &b.z))
        draw_screen_segment(a.x, a.y, b.x, b.y, colour);
}

void draw_box_wireframe(vec3 min, vec3 max, uint16_t colour)
{
    vec3 corners[8];
    const float face_x[4] = {min.x, max.x, max.x, min.x};
    const float face_z[4] = {min.z, min.z, max.z, max.z};
    for (int32_t k = 0; k < 4; ++k) {
        corners[k] = {face_x[k], min.y, face_z[k]};
        corners[k + 4] = {face_x[k], max.y, face_z[k]};
    }
    static const int32_t edges[12][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                         {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
    for (const auto& edge : edges)
        draw_world_segment(corners[edge[0]], corners[edge[1]], colour);
}

void draw_skeleton(const animation* anim, const bone_pose* pose, const placement* place, float joint_size,
                   uint16_t colour)
{
    for (int32_t b = 0; b < anim->bone_count; ++b) {
        int32_t parent = anim->parents[b];
        if (parent == -1)
            continue;
        vec3 bone = placement_to_world_point(place, pose[b].translation);
        vec3 up = placement_to_world_point(place, pose[parent].translation);
        if (!project_segment(&bone.x, &bone.y, &bone.z, &up.x, &up.y, &up.z))
            continue;
        draw_screen_segment(bone.x, bone.y, up.x, up.y, colour);
        draw_circle_outline(to_pixel(bone.x), to_pixel(bone.y), to_pixel(view_size / bone.z * joint_size), colour);
    }
}

void draw_colliders(const model* m, const placement* place)
{
    for (int32_t c = 0; c < m->collider_count; ++c) {
        const model_collider* collider = &m->colliders[c];
        for (int32_t t = collider->first; t < collider->end; ++t) {
            const int32_t* points = m->collision_triangles[t].points;
            vec3 corner[3];
            for (int32_t k = 0; k < 3; ++k)
                corner[k] = placement_to_world_point(place, m->points[points[k]]);
            for (int32_t k = 0; k < 3; ++k)
                draw_world_segment(corner[k], corner[k == 2 ? 0 : k + 1], COLOUR_COLLIDER);
        }
        aabb box = {collider->min, collider->max};
        transform_box(&box, place);
        draw_box_wireframe(box.min, box.max, COLOUR_COLLIDER_BOX);
    }
}

void draw_areas_and_portals()
{
    for (int32_t i = 1; i < rooms.count; ++i) {
        const room* area = registry_at<room>(&rooms, i);
        if (area->visible)
            draw_box_wireframe(area->box_min, area->box_max, COLOUR_AREA_BOX);
    }
    for (int32_t i = 0; i < rooms.count; ++i) {
        const room* area = registry_at<room>(&rooms, i);
        if (!area->visible)
            continue;
        for (int32_t k = 0; k < area->portal_count; ++k) {
            const portal* p = registry_at<portal>(&portals, area->first_portal + k);
            for (int32_t c = 0; c < 4; ++c)
                draw_world_segment(p->corners[c], p->corners[(c + 1) & 3], COLOUR_PORTAL);
        }
    }
    if (!debug_portal_culling)
        return; // frozen: the rectangles belong to a camera that has moved on
    for (int32_t i = 0; i < rooms.count; ++i) {
        const room* area = registry_at<room>(&rooms, i);
        if (area->visible && i != camera_area)
            draw_rect_outline(area->screen_x0, area->screen_y0, area->screen_x1 - 1, area->screen_y1 - 1,
                              COLOUR_AREA_RECT);
    }
}
