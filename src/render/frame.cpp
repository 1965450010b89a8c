#include "render/frame.h"

#include <string.h>

#include "platform/platform.h"

float* depth_buffer;
uint16_t* depth_ranks;

float camera_position[3];
float camera_yaw_cos = 1.0f;
float camera_yaw_sin;
float camera_pitch_cos = 1.0f;
float camera_pitch_sin;
float projection_scale = 1.0f;
float camera_fov = 1.5707964f;

float view_size;
float view_offset_x;
float view_offset_y;

static size_t frame_pixels()
{
    return static_cast<size_t>(frame_width) * static_cast<size_t>(frame_height);
}

int depth_buffer_create()
{
    depth_buffer = static_cast<float*>(platform_heap_alloc(frame_pixels() * sizeof(float)));
    depth_ranks = static_cast<uint16_t*>(platform_heap_alloc(frame_pixels() * sizeof(uint16_t)));
    if (depth_buffer && depth_ranks)
        return 1;
    platform_heap_free(depth_buffer);
    platform_heap_free(depth_ranks);
    depth_buffer = nullptr;
    depth_ranks = nullptr;
    return 0;
}

void depth_buffer_clear()
{
    memset(depth_buffer, 0, frame_pixels() * sizeof(float));
}

void view_mapping_update()
{
    float width = static_cast<float>(frame_width);
    float height = static_cast<float>(frame_height);
    view_size = width < height ? width : height;
    view_offset_x = (width - view_size) / 2.0f;
    view_offset_y = (height - view_size) / 2.0f;
}

void camera_transform(const float world[3], float camera[3])
{
    float dx = world[0] - camera_position[0];
    float dy = world[1] - camera_position[1];
    float dz = world[2] - camera_position[2];
    float t = dz * camera_yaw_cos + dx * camera_yaw_sin;
    camera[0] = dx * camera_yaw_cos - dz * camera_yaw_sin;
    camera[1] = dy * camera_pitch_cos - t * camera_pitch_sin;
    camera[2] = t * camera_pitch_cos + dy * camera_pitch_sin;
}
