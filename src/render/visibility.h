// Which scene objects the frame can show: the camera's area, the areas seen from it through open
// portals (each with the screen rectangle it is seen through), and the draw list of their objects
// and of the objects that belong to no area, interpolated to the frame and tested against the view
// frustum. The occlusion buffer (render/occlusion.h) then thins the list further.
#pragma once

#include <stdint.h>

#include "assets/collision_tree.h"
#include "assets/world.h"
#include "core/placement.h"
#include "core/vec3.h"

enum { FRUSTUM_PLANES = 5 };

// Five planes through the eye in camera space; a point is inside when a x + b y + c z >= 0.
extern float frustum_planes[FRUSTUM_PLANES][3];

// The camera's area (0: outside every other area) and how many tree nodes its lookup visited
// (0 for the outside), for the debug overlay.
extern int32_t camera_area;
extern int32_t camera_area_iterations;

// A screen rectangle, half-open: x0 <= x < x1, y0 <= y < y1.
struct screen_rect {
    int32_t x0, y0, x1, y1;
};

// One object the frame may draw: its area (-1 for objects outside all areas), its world box and
// its placement, both at the frame's time.
struct draw_record {
    int32_t area;
    int32_t object;
    aabb box;
    placement place;
};

extern draw_record* draw_list; // grows to the number of scene objects; shrinks only when released
extern int32_t draw_list_count;

// The places in the draw list, nearest first: by how far the farthest corner of each box lies from
// the eye (a box that is not a number counts as farthest), ties in list order. Drawn in this order,
// a surface hides more of what comes after it, which then fails the depth test early. Null when
// there is no room for the order.
const int32_t* draw_list_nearest_first();

// The planes for the frame's aspect factors (kx = max(w / h, 1), ky = max(h / w, 1)) and
// projection scale s.
void build_frustum(float kx, float ky, float s);

// Sets camera_area and camera_area_iterations from camera_position: the first area after area 0
// whose box holds the eye (faces included) and whose tree says inside, else area 0.
void find_camera_area();

// 1 while the door filling the portal stands within one degree of its closed angle.
int door_is_closed(const portal* p);
// 1 when the eye lies on the side of the portal its normal points to (or on its plane).
int portal_faces_camera(const portal* p);
// 1 with the rectangle the portal covers on screen, 0 when it covers nothing.
int portal_screen_rect(const portal* p, screen_rect* rect);

// The visible areas and their rectangles, from the camera's area outward; does nothing while the
// F8 switch has frozen culling, so the last set stays. 0 only when its stack (room for every area,
// taken at the first call and whenever the world has more areas) cannot be had: every area is then
// marked visible with the whole screen, so the frame is slower but still right.
int cull_portals();

// The draw list: the objects of every visible area in index order, then the dynamic objects
// (area -1). When the list cannot grow to the number of objects, it stays empty for the frame.
void build_draw_list();
// Appends one object unless it is removed, has no model (index <= 0) or lies outside the frustum.
void add_draw_object(int32_t object_index, int32_t area_index);

// 1 when all eight corners of the world box lie behind one of the planes.
int box_outside_frustum(const float planes[FRUSTUM_PLANES][3], const aabb* box);

// Frees the draw list and the walk's stack; the next frame grows them again from nothing.
void release_visibility_arrays();
