#include "render/sky.h"

#include <emmintrin.h>

#include "assets/registry.h"
#include "assets/texture.h"
#include "core/diagnostics.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/occlusion.h"

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

// Four lanes chosen by a mask: `when_set` where it is all ones, else `when_clear`.
inline __m128 select_lanes(__m128 mask, __m128 when_set, __m128 when_clear)
{
    return _mm_or_ps(_mm_and_ps(mask, when_set), _mm_andnot_ps(mask, when_clear));
}

// For four world directions: the face each meets (0 ... 5) and where, a down the image and b
// across. Ties between components go to x, then y. Negations and absolute values only flip or
// clear the sign bit and each lane divides once, so every lane is what one direction alone gives.
void sky_faces(__m128 dx, __m128 dy, __m128 dz, __m128i* faces, __m128* a, __m128* b)
{
    const __m128 sign = _mm_set1_ps(-0.0f);
    const __m128 zero = _mm_setzero_ps();
    __m128 ax = _mm_andnot_ps(sign, dx), ay = _mm_andnot_ps(sign, dy), az = _mm_andnot_ps(sign, dz);
    __m128 on_x = _mm_and_ps(_mm_cmpge_ps(ax, ay), _mm_cmpge_ps(ax, az));
    __m128 on_y = _mm_andnot_ps(on_x, _mm_cmpge_ps(ay, az));
    __m128 x_positive = _mm_cmpgt_ps(dx, zero), y_positive = _mm_cmpgt_ps(dy, zero);
    __m128 z_positive = _mm_cmpgt_ps(dz, zero);
    __m128 minus_dx = _mm_xor_ps(dx, sign), minus_dz = _mm_xor_ps(dz, sign);
    // On x: a = dy, b = dz or -dz; on y: a = dz or -dz, b = dx; on z: a = dy, b = -dx or dx.
    __m128 a_on_y = select_lanes(y_positive, dz, minus_dz);
    __m128 b_on_x = select_lanes(x_positive, dz, minus_dz);
    __m128 b_on_z = select_lanes(z_positive, minus_dx, dx);
    __m128 length = select_lanes(on_x, ax, select_lanes(on_y, ay, az));
    __m128 a_part = select_lanes(on_y, a_on_y, dy);
    __m128 b_part = select_lanes(on_x, b_on_x, select_lanes(on_y, dx, b_on_z));
    *a = _mm_div_ps(a_part, length);
    *b = _mm_div_ps(b_part, length);
    // Faces 0 and 1 are +x and -x, 2 and 3 +y and -y, 4 and 5 +z and -z: the axis's pair, plus
    // one when the direction is not positive along it (a true comparison is -1).
    __m128i pair = _mm_castps_si128(select_lanes(
        on_x, zero, select_lanes(on_y, _mm_castsi128_ps(_mm_set1_epi32(2)), _mm_castsi128_ps(_mm_set1_epi32(4)))));
    __m128 positive = select_lanes(on_x, x_positive, select_lanes(on_y, y_positive, z_positive));
    *faces = _mm_add_epi32(_mm_add_epi32(pair, _mm_set1_epi32(1)), _mm_castps_si128(positive));
}

// The six faces' sizes side by side, so that four pixels on any faces find their texels at once.
struct sky_face_set {
    const uint16_t* texels[SKY_FACES];
    float width_f[SKY_FACES], height_f[SKY_FACES];
    int32_t width_mask[SKY_FACES], height_mask[SKY_FACES], row_shift[SKY_FACES];
};

// The nearest texels at (u, v) of four faces, as fetch_nearest finds each.
void fetch_face_texels(const sky_face_set* set, const int32_t face[4], __m128 u, __m128 v, uint16_t* to)
{
    const __m128 zero = _mm_setzero_ps();
    __m128 width_f = _mm_setr_ps(set->width_f[face[0]], set->width_f[face[1]], set->width_f[face[2]],
                                 set->width_f[face[3]]);
    __m128 height_f = _mm_setr_ps(set->height_f[face[0]], set->height_f[face[1]], set->height_f[face[2]],
                                  set->height_f[face[3]]);
    // A true comparison is all ones, -1: adding it is fetch_nearest's "- (u < 0)".
    __m128i column = _mm_add_epi32(_mm_cvttps_epi32(_mm_mul_ps(u, width_f)), _mm_castps_si128(_mm_cmplt_ps(u, zero)));
    __m128i row = _mm_add_epi32(_mm_cvttps_epi32(_mm_mul_ps(v, height_f)), _mm_castps_si128(_mm_cmplt_ps(v, zero)));
    alignas(16) int32_t columns[4], rows[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(columns), column);
    _mm_store_si128(reinterpret_cast<__m128i*>(rows), row);
    for (int32_t k = 0; k < 4; ++k) {
        int32_t f = face[k];
        to[k] = set->texels[f][((rows[k] & set->height_mask[f]) << set->row_shift[f]) | (columns[k] & set->width_mask[f])];
    }
}

} // namespace

void draw_sky()
{
    if (!record_sky())
        draw_sky_rows(0, frame_height);
}

void draw_sky_rows(int32_t first_row, int32_t end_row)
{
    sky_face_set faces;
    for (int32_t k = 0; k < SKY_FACES; ++k) {
        if (!registry_in_use(&textures, sky_textures[k]))
            return;
        const texture* face = registry_at<texture>(&textures, sky_textures[k]);
        faces.texels[k] = face->texels;
        faces.width_f[k] = face->width_f;
        faces.height_f[k] = face->height_f;
        faces.width_mask[k] = face->width_mask;
        faces.height_mask[k] = face->height_mask;
        faces.row_shift[k] = face->row_shift;
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
            // The block's eight columns, four lanes at a time, each lane with the single
            // operations one pixel takes; they are the same on every row of the block.
            __m128 nx[2];
            for (int32_t half = 0; half < 2; ++half) {
                int32_t x = 8 * column + 4 * half;
                __m128 xs = _mm_cvtepi32_ps(_mm_add_epi32(_mm_set1_epi32(x), _mm_setr_epi32(0, 1, 2, 3)));
                nx[half] = _mm_div_ps(
                    _mm_mul_ps(_mm_sub_ps(_mm_div_ps(xs, _mm_set1_ps(width)), _mm_set1_ps(0.5f)), _mm_set1_ps(kx)),
                    _mm_set1_ps(s));
            }
            for (int32_t y = top; y < bottom; ++y) {
                // The pixel's own integer coordinate, and no vertical aspect: the sky images were
                // painted for exactly this mapping.
                float ny = (static_cast<float>(y) / height - 0.5f) / s;
                uint16_t* pixels = color_buffer + static_cast<size_t>(y) * static_cast<size_t>(frame_width);
                __m128 f = _mm_set1_ps(pc - ny * ps);
                __m128 dy = _mm_set1_ps(ny * pc + ps);
                for (int32_t half = 0; half < 2; ++half) {
                    int32_t x = 8 * column + 4 * half;
                    __m128 dx = _mm_add_ps(_mm_mul_ps(nx[half], _mm_set1_ps(yc)), _mm_mul_ps(f, _mm_set1_ps(ys)));
                    __m128 dz = _mm_sub_ps(_mm_mul_ps(nx[half], _mm_set1_ps(ys)), _mm_mul_ps(f, _mm_set1_ps(yc)));
                    __m128i face_lanes;
                    __m128 a, b;
                    sky_faces(dx, dy, dz, &face_lanes, &a, &b);
                    alignas(16) int32_t face[4];
                    _mm_store_si128(reinterpret_cast<__m128i*>(face), face_lanes);
                    const __m128 one = _mm_set1_ps(1.0f), one_half = _mm_set1_ps(0.5f);
                    fetch_face_texels(&faces, face, _mm_mul_ps(_mm_add_ps(b, one), one_half),
                                      _mm_mul_ps(_mm_add_ps(a, one), one_half), pixels + x);
                }
            }
        }
    }
}
