#include "render/sky.h"

#include <math.h>

#include "assets/registry.h"
#include "assets/texture.h"
#include "core/diagnostics.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "render/pixel_pipeline.h"

int32_t sky_textures[SKY_FACES];
const char* const sky_texture_names[SKY_FACES] = {"sky_night01.png", "sky_night02.png", "sky_night03.png",
                                                  "sky_night04.png", "sky_night05.png", "sky_night06.png"};

int load_sky_textures()
{
    for (int32_t face = 0; face < SKY_FACES; ++face) {
        int32_t reported = diagnostics_reported;
        sky_textures[face] = load_texture(sky_texture_names[face]);
        if (sky_textures[face] < 0) {
            report_unloaded(reported, "sky texture", FOLDER_TEXTURES, sky_texture_names[face], nullptr, 0);
            return 0;
        }
    }
    return 1;
}

namespace {

// The face a world direction meets and where: a runs down the image, b across. Ties between
// components go to x, then y.
int32_t sky_face(float dx, float dy, float dz, float* a, float* b)
{
    float ax = fabsf(dx), ay = fabsf(dy), az = fabsf(dz);
    if (ax >= ay && ax >= az) {
        *a = dy / ax;
        *b = (dx > 0.0f ? dz : -dz) / ax;
        return dx > 0.0f ? 0 : 1;
    }
    if (ay >= az) {
        *b = dx / ay;
        *a = (dy > 0.0f ? dz : -dz) / ay;
        return dy > 0.0f ? 2 : 3;
    }
    *a = dy / az;
    *b = (dz > 0.0f ? -dx : dx) / az;
    return dz > 0.0f ? 4 : 5;
}

} // namespace

void draw_sky()
{
    if (!record_sky())
        draw_sky_rows(0, frame_height);
}

void draw_sky_rows(int32_t first_row, int32_t end_row)
{
    const texture* faces[SKY_FACES];
    for (int32_t k = 0; k < SKY_FACES; ++k) {
        if (!registry_in_use(&textures, sky_textures[k]))
            return;
        faces[k] = registry_at<texture>(&textures, sky_textures[k]);
    }
    float width = static_cast<float>(frame_width);
    float height = static_cast<float>(frame_height);
    float kx = width / height > 1.0f ? width / height : 1.0f;
    float s = projection_scale;
    float ps = camera_pitch_sin, pc = camera_pitch_cos;
    float ys = camera_yaw_sin, yc = camera_yaw_cos;
    int32_t last_block = (end_row + 7) / 8 < occlusion_rows ? (end_row + 7) / 8 : occlusion_rows;
    for (int32_t row = first_row / 8; row < last_block; ++row) {
        int32_t top = 8 * row > first_row ? 8 * row : first_row;
        int32_t bottom = 8 * row + 8 < end_row ? 8 * row + 8 : end_row;
        for (int32_t column = 0; column < occlusion_columns; ++column) {
            if (occlusion_coarse[static_cast<size_t>(row * occlusion_columns + column)] != 0.0f)
                continue;
            for (int32_t y = top; y < bottom; ++y) {
                // The pixel's own integer coordinate, and no vertical aspect: the sky images were
                // painted for exactly this mapping.
                float ny = (static_cast<float>(y) / height - 0.5f) / s;
                uint16_t* pixels = color_buffer + static_cast<size_t>(y) * static_cast<size_t>(frame_width);
                for (int32_t i = 0; i < 8; ++i) {
                    int32_t x = 8 * column + i;
                    float nx = (static_cast<float>(x) / width - 0.5f) * kx / s;
                    float f = pc - ny * ps;
                    float dx = nx * yc + f * ys;
                    float dy = ny * pc + ps;
                    float dz = nx * ys - f * yc;
                    float a, b;
                    const texture* face = faces[sky_face(dx, dy, dz, &a, &b)];
                    pixels[x] = fetch_nearest(face, (b + 1.0f) * 0.5f, (a + 1.0f) * 0.5f);
                }
            }
        }
    }
}
