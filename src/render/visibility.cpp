#include "render/visibility.h"

#include <algorithm>

#include <math.h>

#include "assets/model.h"
#include "core/debug_flags.h"
#include "core/heap.h"
#include "core/numbers.h"
#include "core/loop_state.h"
#include "render/frame.h"

float frustum_planes[FRUSTUM_PLANES][3];
int32_t camera_area;
int32_t camera_area_iterations;
draw_record* draw_list;
int32_t draw_list_count;

namespace {

// An area waiting to be walked, with the rectangle through which it was first reached: areas
// beyond it are seen through that rectangle even if a later portal widens the area's own.
struct area_visit {
    int32_t area;
    screen_rect rect;
};

area_visit* visit_stack;
int32_t visit_capacity;
int32_t draw_list_capacity;
int32_t* nearest_first; // draw_list_nearest_first's order
float* farthest_corner; // and its keys, by place in the draw list
int32_t nearest_first_capacity, farthest_corner_capacity;

int reserve_visit_stack()
{
    int32_t needed = rooms.count + 4;
    return heap_grow(&visit_stack, &visit_capacity, needed, needed);
}

room* area_at(int32_t index)
{
    return registry_at<room>(&rooms, index);
}

void set_rect(room* area, const screen_rect& rect)
{
    area->screen_x0 = rect.x0;
    area->screen_y0 = rect.y0;
    area->screen_x1 = rect.x1;
    area->screen_y1 = rect.y1;
}

screen_rect whole_screen()
{
    return {0, 0, frame_width, frame_height};
}

int box_holds(const room* area, vec3 p)
{
    return aabb_holds({area->box_min, area->box_max}, p);
}

vec3 camera_point()
{
    return {camera_position[0], camera_position[1], camera_position[2]};
}

// A float pixel bound into 0 ... limit before it becomes an integer, so that far-off projections
// never overflow.
int32_t clamp_to_pixels(float value, int32_t limit)
{
    float high = static_cast<float>(limit);
    if (!(value > 0.0f))
        return 0;
    return value < high ? static_cast<int32_t>(value) : limit;
}

int walk_portal(const portal* p, const screen_rect& through, screen_rect* out)
{
    screen_rect r;
    if (!portal_faces_camera(p) || !portal_screen_rect(p, &r))
        return 0;
    out->x0 = r.x0 > through.x0 ? r.x0 : through.x0;
    out->y0 = r.y0 > through.y0 ? r.y0 : through.y0;
    out->x1 = r.x1 < through.x1 ? r.x1 : through.x1;
    out->y1 = r.y1 < through.y1 ? r.y1 : through.y1;
    return out->x1 > out->x0 && out->y1 > out->y0;
}

int reserve_draw_list()
{
    return heap_grow(&draw_list, &draw_list_capacity, objects.count, objects.count);
}

} // namespace

void build_frustum(float kx, float ky, float s)
{
    const float planes[FRUSTUM_PLANES][3] = {
        {s, 0.0f, kx}, {-s, 0.0f, kx}, {0.0f, -s, ky}, {0.0f, s, ky}, {0.0f, 0.0f, 1.0f},
    };
    for (int32_t i = 0; i < FRUSTUM_PLANES; ++i)
        for (int32_t k = 0; k < 3; ++k)
            frustum_planes[i][k] = planes[i][k];
}

void find_camera_area()
{
    vec3 eye = camera_point();
    camera_area = 0;
    camera_area_iterations = 0;
    for (int32_t i = 1; i < rooms.count; ++i) {
        const room* area = area_at(i);
        if (!box_holds(area, eye))
            continue;
        int32_t visited = find_point_area(&scene_tree, area->bsp_node, eye);
        if (visited > 0) {
            camera_area = i;
            camera_area_iterations = visited;
            return;
        }
    }
}

int door_is_closed(const portal* p)
{
    const door* d = registry_at<door>(&doors, p->door);
    const object* leaf = registry_at<object>(&objects, d->object);
    return fabsf(leaf->yaw - d->closed_yaw) < DEGREES_TO_RADIANS; // within one degree
}

int portal_faces_camera(const portal* p)
{
    return vec3_dot(vec3_sub(camera_point(), p->centre), p->normal) >= 0.0f;
}

int portal_screen_rect(const portal* p, screen_rect* rect)
{
    float min_x = 0.0f, min_y = 0.0f, max_x = 0.0f, max_y = 0.0f;
    int any = 0;
    for (int32_t i = 0; i < 4; ++i) {
        float ends[2][3];
        point_to_camera(p->corners[i], ends[0]);
        point_to_camera(p->corners[(i + 1) & 3], ends[1]);
        if (ends[0][2] <= 0.0f && ends[1][2] <= 0.0f)
            continue;
        float depth[2] = {ends[0][2], ends[1][2]};
        for (int32_t e = 0; e < 2; ++e) {
            float* near_end = ends[e];
            const float* other = ends[1 - e];
            if (near_end[2] > 0.0f)
                continue;
            // Moved to where the edge meets z = 0, but projected at depth 0.01, which throws it far
            // off screen: the portal rectangles, and so the golden frames, depend on it.
            float t = -near_end[2] / (other[2] - near_end[2]);
            near_end[0] += (other[0] - near_end[0]) * t;
            near_end[1] += (other[1] - near_end[1]) * t;
            depth[e] = 0.01f;
        }
        for (int32_t e = 0; e < 2; ++e) {
            float x = project_screen_x(ends[e][0], depth[e]);
            float y = project_screen_y(ends[e][1], depth[e]);
            if (!any) {
                min_x = max_x = x;
                min_y = max_y = y;
                any = 1;
                continue;
            }
            min_x = x < min_x ? x : min_x;
            max_x = x > max_x ? x : max_x;
            min_y = y < min_y ? y : min_y;
            max_y = y > max_y ? y : max_y;
        }
    }
    if (!any || !(min_x < max_x) || !(min_y < max_y))
        return 0;
    rect->x0 = clamp_to_pixels(floorf(min_x), frame_width);
    rect->y0 = clamp_to_pixels(floorf(min_y), frame_height);
    rect->x1 = clamp_to_pixels(ceilf(max_x), frame_width);
    rect->y1 = clamp_to_pixels(ceilf(max_y), frame_height);
    return 1;
}

int cull_portals()
{
    if (!debug_portal_culling)
        return 1; // frozen: the last set stays, flags and rectangles untouched
    find_camera_area();
    for (int32_t i = 0; i < rooms.count; ++i)
        area_at(i)->visible = 0;
    if (rooms.count == 0)
        return 1;
    if (!reserve_visit_stack()) {
        for (int32_t i = 0; i < rooms.count; ++i) {
            area_at(i)->visible = 1;
            set_rect(area_at(i), whole_screen());
        }
        return 0;
    }
    room* start = area_at(camera_area);
    start->visible = 1;
    set_rect(start, whole_screen());
    int32_t depth = 0;
    visit_stack[depth++] = {camera_area, whole_screen()};
    while (depth > 0) {
        area_visit visit = visit_stack[--depth];
        const room* area = area_at(visit.area);
        for (int32_t i = 0; i < area->portal_count; ++i) {
            portal* p = registry_at<portal>(&portals, area->first_portal + i);
            if (p->door >= 0)
                p->closed = door_is_closed(p);
            screen_rect seen;
            if (p->closed || !walk_portal(p, visit.rect, &seen))
                continue;
            if (p->target_room < 0 || p->target_room >= rooms.count)
                continue;
            room* target = area_at(p->target_room);
            if (!target->visible) {
                target->visible = 1;
                set_rect(target, seen);
                visit_stack[depth++] = {p->target_room, seen};
                continue;
            }
            // Seen again: the area itself shows through both openings, but it is not walked again.
            target->screen_x0 = seen.x0 < target->screen_x0 ? seen.x0 : target->screen_x0;
            target->screen_y0 = seen.y0 < target->screen_y0 ? seen.y0 : target->screen_y0;
            target->screen_x1 = seen.x1 > target->screen_x1 ? seen.x1 : target->screen_x1;
            target->screen_y1 = seen.y1 > target->screen_y1 ? seen.y1 : target->screen_y1;
        }
    }
    return 1;
}

void add_draw_object(int32_t object_index, int32_t area_index)
{
    if (draw_list_count >= draw_list_capacity || !registry_in_use(&objects, object_index))
        return;
    const object* o = registry_at<object>(&objects, object_index);
    if (o->removed || o->model <= 0 || !registry_in_use(&models, o->model))
        return;
    float a = render_alpha;
    vec3 position = vec3_add(o->previous_position, vec3_scale(vec3_sub(o->position, o->previous_position), a));
    float yaw = o->previous_yaw + (o->yaw - o->previous_yaw) * a;
    float pitch = o->previous_pitch + (o->pitch - o->previous_pitch) * a;
    draw_record* record = &draw_list[draw_list_count];
    record->area = area_index;
    record->object = object_index;
    record->place = placement_from_angles(position, yaw, pitch);
    const model* m = registry_at<model>(&models, o->model);
    record->box = {m->bounds_min, m->bounds_max};
    transform_box(&record->box, &record->place);
    if (box_outside_frustum(frustum_planes, &record->box))
        return;
    ++draw_list_count;
}

void build_draw_list()
{
    draw_list_count = 0;
    if (!reserve_draw_list())
        return;
    for (int32_t i = 0; i < rooms.count; ++i) {
        const room* area = area_at(i);
        if (!area->visible)
            continue;
        for (int32_t k = 0; k < area->object_count; ++k)
            add_draw_object(area->first_object + k, i);
    }
    for (int32_t i = 0; i < dynamic_objects.count; ++i)
        add_draw_object(dynamic_objects.indices[i], -1);
}

int box_outside_frustum(const float planes[FRUSTUM_PLANES][3], const aabb* box)
{
    float corners[8][3];
    for (int32_t k = 0; k < 8; ++k) {
        vec3 corner = aabb_corner(*box, k);
        float world[3] = {corner.x, corner.y, corner.z};
        camera_transform(world, corners[k]);
    }
    for (int32_t i = 0; i < FRUSTUM_PLANES; ++i) {
        int behind = 1;
        for (int32_t k = 0; k < 8 && behind; ++k)
            behind = planes[i][0] * corners[k][0] + planes[i][1] * corners[k][1] + planes[i][2] * corners[k][2] < 0.0f;
        if (behind)
            return 1;
    }
    return 0;
}

const int32_t* draw_list_nearest_first()
{
    if (!heap_grow(&nearest_first, &nearest_first_capacity, draw_list_count, draw_list_count) ||
        !heap_grow(&farthest_corner, &farthest_corner_capacity, draw_list_count, draw_list_count))
        return nullptr;
    for (int32_t i = 0; i < draw_list_count; ++i) {
        float farthest = 0.0f;
        for (int32_t k = 0; k < 8; ++k) {
            vec3 corner = aabb_corner(draw_list[i].box, k);
            float dx = corner.x - camera_position[0], dy = corner.y - camera_position[1];
            float dz = corner.z - camera_position[2];
            float distance = dx * dx + dy * dy + dz * dz;
            farthest = distance > farthest || distance != distance ? distance : farthest;
        }
        farthest_corner[i] = farthest != farthest ? HUGE_VALF : farthest;
        nearest_first[i] = i;
    }
    const float* key = farthest_corner;
    std::sort(nearest_first, nearest_first + draw_list_count,
              [key](int32_t a, int32_t b) { return key[a] < key[b] || (key[a] == key[b] && a < b); });
    return nearest_first;
}

void release_visibility_arrays()
{
    heap_release(&nearest_first, &nearest_first_capacity);
    heap_release(&farthest_corner, &farthest_corner_capacity);
    heap_release(&draw_list, &draw_list_capacity);
    heap_release(&visit_stack, &visit_capacity);
    draw_list_count = 0;
}
