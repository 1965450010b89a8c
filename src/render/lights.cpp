#include "render/lights.h"

#include <math.h>

#include "assets/world.h"
#include "core/loop_state.h"

namespace {

// A straight segment crosses each portal plane at most once against its normal, so a chain of
// crossings can never be longer than the number of portals; only broken data (portals sharing an
// edge point at t = 0) could go round in circles, and the bound stops that.
int sees_through(int32_t room_index, int32_t target_room, vec3 a, vec3 b, int32_t crossings_left)
{
    if (crossings_left <= 0 || !registry_in_use(&rooms, room_index))
        return 0;
    const room* from = registry_at<room>(&rooms, room_index);
    if (from->portal_count <= 0)
        return 0;
    vec3 d = vec3_sub(b, a);
    for (int32_t i = 0; i < from->portal_count; ++i) {
        const portal* p = registry_at<portal>(&portals, from->first_portal + i);
        float den = vec3_dot(d, p->normal);
        if (den >= 0.0f)
            continue; // only crossed against its normal
        float t = -(vec3_dot(p->normal, a) + p->plane_d) / den;
        if (t < 0.0f || t > 1.0f)
            continue;
        vec3 x = vec3_add(a, vec3_scale(d, t));
        int inside = 1;
        for (int32_t k = 0; k < 4 && inside; ++k) {
            vec3 w = vec3_sub(x, p->corners[k]);
            vec3 e = vec3_sub(p->corners[(k + 1) & 3], p->corners[k]);
            inside = vec3_dot(vec3_cross(w, e), p->normal) <= 0.0f;
        }
        if (!inside)
            continue;
        if (p->target_room == target_room)
            return 1;
        if (sees_through(p->target_room, target_room, x, b, crossings_left - 1))
            return 1;
    }
    return 0;
}

} // namespace

int room_sees_point(int32_t room_index, int32_t target_room, vec3 a, vec3 b)
{
    return sees_through(room_index, target_room, a, b, portals.count);
}

namespace {

const light_list* list_of(int32_t list)
{
    return list == LIGHTS_FLICKERING ? &flickering_lights : &steady_lights;
}

// Where the light stands this frame and how bright it is: flickering lights smoothly between
// ticks, as flicker and motion are stepped by the update.
void light_now(const light* l, int32_t list, vec3* position, float* brightness)
{
    *position = l->position;
    *brightness = l->brightness;
    if (list == LIGHTS_FLICKERING) {
        *position = vec3_add(vec3_scale(vec3_sub(l->position, l->previous_position), render_alpha), l->previous_position);
        *brightness = (l->brightness - l->previous_brightness) * render_alpha + l->previous_brightness;
    }
}

} // namespace

float light_at(const float surface[6], int32_t room_index, int32_t list)
{
    return light_at_selected(surface, room_index, list, nullptr, list_of(list)->count);
}

float light_at_selected(const float surface[6], int32_t room_index, int32_t list, const int32_t* selected, int32_t count)
{
    const light_list* lights = list_of(list);
    vec3 point = {surface[0], surface[1], surface[2]};
    vec3 normal = {surface[3], surface[4], surface[5]};
    float sum = 0.0f;
    for (int32_t n = 0; n < count; ++n) {
        const light* l = &lights->lights[selected ? selected[n] : n];
        vec3 position;
        float brightness;
        light_now(l, list, &position, &brightness);
        vec3 d = vec3_sub(position, point);
        float q = vec3_dot(d, d);
        float radius_squared = l->radius * l->radius;
        if (q >= radius_squared)
            continue; // a point exactly at the radius gets nothing
        if (room_index >= 0 && l->room != room_index && !room_sees_point(room_index, l->room, point, position))
            continue;
        float f = 1.0f - q / radius_squared;
        if (l->shadow) {
            // A light exactly at the point has no direction: d . N is 0 there, so it counts as a
            // surface seen edge-on and gets nothing, instead of dividing 0 by 0.
            if (q == 0.0f)
                continue;
            float k = vec3_dot(d, normal) / sqrtf(q);
            if (k <= 0.0f)
                continue; // the surface faces away
            f *= k;
        }
        sum += f * brightness;
        if (sum >= 1.0f)
            return 1.0f;
    }
    return sum;
}

int32_t lights_reaching_box(int32_t list, vec3 box_min, vec3 box_max, int32_t* selected)
{
    const light_list* lights = list_of(list);
    int32_t count = 0;
    for (int32_t i = 0; i < lights->count; ++i) {
        const light* l = &lights->lights[i];
        vec3 position;
        float brightness;
        light_now(l, list, &position, &brightness);
        // The gap from the light to the box along each axis, in double: the squared distance of
        // any point in the box is at least their squares' sum.
        double gap[3] = {0.0, 0.0, 0.0};
        const float at[3] = {position.x, position.y, position.z};
        const float low[3] = {box_min.x, box_min.y, box_min.z};
        const float high[3] = {box_max.x, box_max.y, box_max.z};
        for (int32_t axis = 0; axis < 3; ++axis) {
            if (at[axis] < low[axis])
                gap[axis] = static_cast<double>(low[axis]) - at[axis];
            else if (at[axis] > high[axis])
                gap[axis] = static_cast<double>(at[axis]) - high[axis];
        }
        double nearest_squared = gap[0] * gap[0] + gap[1] * gap[1] + gap[2] * gap[2];
        // light_at's float distance may come out a few parts in ten million short of the true one;
        // a light that far beyond its radius cannot reach (and one whose radius or place is not a
        // number never does anything, but is kept all the same).
        double radius_squared = static_cast<double>(l->radius * l->radius);
        if (nearest_squared >= radius_squared * (1.0 + 1e-5) + 1e-30)
            continue;
        selected[count++] = i;
    }
    return count;
}
