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

float light_at(const float surface[6], int32_t room_index, int32_t list)
{
    const light_list* lights = list == LIGHTS_FLICKERING ? &flickering_lights : &steady_lights;
    vec3 point = {surface[0], surface[1], surface[2]};
    vec3 normal = {surface[3], surface[4], surface[5]};
    float sum = 0.0f;
    for (int32_t i = 0; i < lights->count; ++i) {
        const light* l = &lights->lights[i];
        vec3 position = l->position;
        float brightness = l->brightness;
        if (list == LIGHTS_FLICKERING) {
            // Smooth between ticks: flicker and motion are stepped by the update.
            position = vec3_add(vec3_scale(vec3_sub(position, l->previous_position), render_alpha),
                                l->previous_position);
            brightness = (brightness - l->previous_brightness) * render_alpha + l->previous_brightness;
        }
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
