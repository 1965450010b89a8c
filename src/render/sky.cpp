#include "render/sky.h"


#include "assets/registry.h"
#include "assets/texture.h"
#include "core/diagnostics.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "render/raster.h"
#include "render/vector_lanes.h"

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

// The six faces' sizes side by side, eight entries each (the last two unused), so that pixels on
// any faces find their texels at once.
struct sky_face_set {
    const uint16_t* texels[SKY_FACES];
    alignas(32) float width_f[8];
    alignas(32) float height_f[8];
    alignas(32) int32_t width_mask[8];
    alignas(32) int32_t height_mask[8];
    alignas(32) int32_t row_shift[8];
};

// What every row of the frame shares.
struct sky_view {
    float width, height, kx, s;
    float ps, pc, ys, yc;
};

} // namespace

namespace sse2_sky {

using namespace sse2_lanes;

// The entries of an eight-entry table at four indices.
PIXEL_INLINE floats pick(const float* table, ints index)
{
    alignas(16) int32_t at[4];
    memcpy(at, &index, sizeof at);
    return _mm_setr_ps(table[at[0]], table[at[1]], table[at[2]], table[at[3]]);
}
PIXEL_INLINE ints pick(const int32_t* table, ints index)
{
    return gather_entries(table, index);
}

#include "render/sky_lanes.inc"

} // namespace sse2_sky

AVX2_FUNCTIONS_BEGIN
namespace avx2_sky {

using namespace avx2_lanes;

PIXEL_INLINE floats pick(const float* table, ints index)
{
    return _mm256_permutevar8x32_ps(_mm256_load_ps(table), reinterpret_cast<__m256i>(index));
}
PIXEL_INLINE ints pick(const int32_t* table, ints index)
{
    return reinterpret_cast<ints>(_mm256_permutevar8x32_epi32(
        _mm256_load_si256(reinterpret_cast<const __m256i*>(table)), reinterpret_cast<__m256i>(index)));
}

#include "render/sky_lanes.inc"

} // namespace avx2_sky
AVX2_FUNCTIONS_END

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
    for (int32_t k = SKY_FACES; k < 8; ++k) {
        faces.width_f[k] = faces.height_f[k] = 0.0f;
        faces.width_mask[k] = faces.height_mask[k] = faces.row_shift[k] = 0;
    }
    sky_view view;
    view.width = static_cast<float>(frame_width);
    view.height = static_cast<float>(frame_height);
    view.kx = view.width / view.height > 1.0f ? view.width / view.height : 1.0f;
    view.s = projection_scale;
    view.ps = camera_pitch_sin;
    view.pc = camera_pitch_cos;
    view.ys = camera_yaw_sin;
    view.yc = camera_yaw_cos;
    if (pixel_loop_lanes == 8)
        avx2_sky::draw_open_blocks(&faces, &view, first_row, end_row);
    else
        sse2_sky::draw_open_blocks(&faces, &view, first_row, end_row);
}
