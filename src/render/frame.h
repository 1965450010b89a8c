// The surfaces every drawing operation writes, and the camera that the projection routines read.
// The frame driver sets the camera and the view mapping before each frame and clears the depth
// buffer; the renderer only reads them.
#pragma once

#include <stdint.h>

// The colour buffer (color_buffer, frame_width x frame_height) belongs to the host; every pixel
// the renderer produces has bit 15 set.
#include "core/frame.h"
#include "core/vec3.h"

// ---- Depth buffer: 1/z of the nearest surface per pixel, same layout as the colour buffer -----
// 0 means nothing drawn; larger is nearer.
extern float* depth_buffer;
// For each pixel, the place of the object whose opaque triangle last drew it while objects are
// drawn nearest first (raster.h, drawing_rank). Never cleared: it means something only where the
// depth is not 0, which then such a triangle wrote this frame (the world pass starts with the
// whole depth buffer at 0, the occlusion buffer's part cleared again after its reduction).
extern uint16_t* depth_ranks;

// What draw_line writes: a pixel that no triangle drawn later may cover (the largest finite float).
constexpr float DEPTH_ON_TOP = 3.4028235e38f;

// Start-up: frame_width x frame_height cells of both from the game heap; 0 when out of memory.
int depth_buffer_create();
// Start of every frame: every depth back to 0 (all bits zero).
void depth_buffer_clear();

// ---- Camera -----------------------------------------------------------------------------------
extern float camera_position[3]; // the eye, in world coordinates
extern float camera_yaw_cos;
extern float camera_yaw_sin;
extern float camera_pitch_cos;
extern float camera_pitch_sin;
extern float projection_scale; // 1 / tan(field of view / 2), applied before the perspective divide
extern float camera_fov;       // that field of view (vertical, radians); the held item's view flies to it

// The view mapping: a square of side view_size centred on the frame holds projected coordinates
// -0.5 ... +0.5 on both axes.
extern float view_size;     // min(frame_width, frame_height)
extern float view_offset_x; // (frame_width - view_size) / 2
extern float view_offset_y; // (frame_height - view_size) / 2

// Sets the view mapping from frame_width and frame_height.
void view_mapping_update();

// A world point into camera space: x right, y down, z the view depth.
void camera_transform(const float world[3], float camera[3]);
inline void point_to_camera(vec3 world, float camera[3])
{
    const float coordinates[3] = {world.x, world.y, world.z};
    camera_transform(coordinates, camera);
}

// Camera-space x (or y) at view depth z to a screen coordinate in pixels (pixel centres at .5).
inline float project_screen_x(float x, float z)
{
    return (x * projection_scale / z + 0.5f) * view_size + view_offset_x;
}
inline float project_screen_y(float y, float z)
{
    return (y * projection_scale / z + 0.5f) * view_size + view_offset_y;
}
