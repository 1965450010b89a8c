// What happens to one pixel of a span that passed the depth test: fetch a texel (nearest, or the
// three-texel filter), reject a transparent one, turn the shade into one of 64 light levels
// (optionally with ordered dithering), push each channel through the colour tables, and mix a
// translucent colour with the pixel below. Inline so that the span loops compile to one body per
// combination of choices.
#pragma once

#include <emmintrin.h>
#include <stdint.h>
#include <string.h>

#include "assets/texture.h"
#include "render/colour_tables.h"

// The pipeline runs once per pixel inside the span loops: it must melt into them.
#if defined(_MSC_VER)
#define PIXEL_INLINE __forceinline
#else
#define PIXEL_INLINE inline __attribute__((always_inline))
#endif

enum : uint16_t {
    PIXEL_OPAQUE = 0x8000, // bit 15: set on every rendered pixel and on every opaque texel
};

enum { LIGHT_LEVEL_MAX = 63 };

// The 4x4 Bayer matrix divided by 16, indexed by (x & 3) + 4 * (y & 3) of the screen pixel: the
// pattern stays fixed to the screen, not to the surface.
inline constexpr float light_dither_matrix[16] = {
    0.0f,    0.5f,    0.125f,  0.625f,
    0.75f,   0.25f,   0.875f,  0.375f,
    0.1875f, 0.6875f, 0.0625f, 0.5625f,
    0.9375f, 0.4375f, 0.8125f, 0.3125f,
};
// The matrix spans 0.03125 of the shade range: up to two light levels.
inline constexpr float LIGHT_DITHER_SCALE = 0.03125f;

PIXEL_INLINE int32_t channel_red(uint32_t pixel)
{
    return static_cast<int32_t>((pixel >> 10) & 31);
}
PIXEL_INLINE int32_t channel_green(uint32_t pixel)
{
    return static_cast<int32_t>((pixel >> 5) & 31);
}
PIXEL_INLINE int32_t channel_blue(uint32_t pixel)
{
    return static_cast<int32_t>(pixel & 31);
}

// Nearest texel. The correction for negative coordinates looks at the sign of u or v, not at
// whether the product is whole, so a negative whole-number product lands one texel to the left;
// kept on purpose, the textures were made with it.
PIXEL_INLINE uint16_t fetch_nearest(const texture* tex, float u, float v)
{
    int32_t column = (static_cast<int32_t>(u * tex->width_f) - (u < 0.0f)) & tex->width_mask;
    int32_t row = (static_cast<int32_t>(v * tex->height_f) - (v < 0.0f)) & tex->height_mask;
    return tex->texels[(row << tex->row_shift) | column];
}

// Branch-free choices for decisions that change from pixel to pixel (a mispredicted branch costs
// more than both sides): all ones when the condition holds, else zero.
PIXEL_INLINE uint32_t select_mask(bool condition)
{
    return 0u - static_cast<uint32_t>(condition);
}
PIXEL_INLINE uint32_t select_bits(uint32_t mask, uint32_t when_set, uint32_t when_clear)
{
    return (when_set & mask) | (when_clear & ~mask);
}
PIXEL_INLINE float select_float(uint32_t mask, float when_set, float when_clear)
{
    uint32_t set_bits, clear_bits;
    memcpy(&set_bits, &when_set, sizeof(float));
    memcpy(&clear_bits, &when_clear, sizeof(float));
    uint32_t bits = select_bits(mask, set_bits, clear_bits);
    float chosen;
    memcpy(&chosen, &bits, sizeof(float));
    return chosen;
}

// A texel's red, green and blue as floats in the first three lanes (masking and scaling by powers
// of two are exact).
PIXEL_INLINE __m128 texel_channels(uint32_t texel)
{
    __m128i masked = _mm_and_si128(_mm_set1_epi32(static_cast<int32_t>(texel)), _mm_setr_epi32(0x7C00, 0x03E0, 0x001F, 0));
    return _mm_mul_ps(_mm_cvtepi32_ps(masked), _mm_setr_ps(1.0f / 1024.0f, 1.0f / 32.0f, 1.0f, 0.0f));
}

// a - truncate(a), lifted into 0 ... 1 for negative a.
PIXEL_INLINE float texture_fraction(float a)
{
    float fraction = a - static_cast<float>(static_cast<int32_t>(a));
    return fraction < 0.0f ? fraction + 1.0f : fraction;
}

// The three-texel filter; 0 when the nearest texel is transparent, else always opaque. The mixed
// texels lend only their colour bits, so a transparent neighbour's stored colour bleeds into the
// edge of an opaque one. Truncating (not flooring) the half-texel shift means no wrap to the last
// column or row within the first half texel: the weight there goes negative instead.
PIXEL_INLINE uint16_t sample_filtered(const texture* tex, float u, float v)
{
    float fu = texture_fraction(u) * tex->width_f;
    float fv = texture_fraction(v) * tex->height_f;
    const uint16_t* texels = tex->texels;
    int32_t shift = tex->row_shift;
    int32_t near_column = static_cast<int32_t>(fu) & tex->width_mask;
    int32_t near_row = static_cast<int32_t>(fv) & tex->height_mask;
    if (!(texels[(near_row << shift) | near_column] & PIXEL_OPAQUE))
        return 0;

    float gu = fu - 0.5f;
    float gv = fv - 0.5f;
    int32_t x0 = static_cast<int32_t>(gu) & tex->width_mask;
    int32_t y0 = static_cast<int32_t>(gv) & tex->height_mask;
    float fx = gu - static_cast<float>(x0);
    float fy = gv - static_cast<float>(y0);
    int32_t x1 = (x0 + 1) & tex->width_mask;
    int32_t y1 = (y0 + 1) & tex->height_mask;

    // Both triangles of the texel square mix T(x0, y1) and T(x1, y0); the third corner is the one
    // on the side of the diagonal where the sample lies.
    uint32_t upper_left = select_mask(fx + fy <= 1.0f);
    uint32_t a = texels[(y1 << shift) | x0];
    uint32_t b = texels[(y0 << shift) | x1];
    uint32_t c = texels[select_bits(upper_left, static_cast<uint32_t>((y0 << shift) | x0),
                                    static_cast<uint32_t>((y1 << shift) | x1))];
    float wa = select_float(upper_left, fy, 1.0f - fx);
    float wb = select_float(upper_left, fx, 1.0f - fy);
    float wc = select_float(upper_left, 1.0f - fx - fy, fx + fy - 1.0f);
    // Red, green and blue are mixed side by side in the lanes of one vector: each lane performs the
    // same float operations in the same order as a scalar mix would, so the result is the same.
    __m128 mixed = _mm_add_ps(_mm_add_ps(_mm_mul_ps(texel_channels(a), _mm_set1_ps(wa)),
                                         _mm_mul_ps(texel_channels(b), _mm_set1_ps(wb))),
                              _mm_mul_ps(texel_channels(c), _mm_set1_ps(wc)));
    __m128i truncated = _mm_cvttps_epi32(mixed);
    // Extrapolated channels may leave 0 ... 31; their bits are combined as they are.
    uint32_t red = static_cast<uint32_t>(_mm_cvtsi128_si32(truncated));
    uint32_t green = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(truncated, 4)));
    uint32_t blue = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(truncated, 8)));
    return static_cast<uint16_t>((red | 32u) << 10 | green << 5 | blue);
}

// The shade (0 fully lit ... 1 darkest) as a light level; not clamped, so a shade above 1 gives a
// level above 63 (the callers keep shades within 0 ... 1).
PIXEL_INLINE uint8_t light_level(float shade)
{
    return static_cast<uint8_t>(static_cast<int32_t>(shade * 63.0f));
}

// The dither offset in shade units for screen pixel (x, y).
PIXEL_INLINE float light_dither_offset(int32_t x, int32_t y)
{
    return light_dither_matrix[(x & 3) + 4 * (y & 3)] * LIGHT_DITHER_SCALE;
}

// With dithering the shade is pushed by the offset and then clamped into 0 ... 1.
PIXEL_INLINE uint8_t light_level_dithered(float shade, float dither_offset)
{
    float l = shade + dither_offset;
    l = l < 0.0f ? 0.0f : l;
    l = l > 1.0f ? 1.0f : l;
    return light_level(l);
}

// An opaque texel lit at `level` and tinted by the temperature rows of the surface's tint (green
// has no temperature table: only red and blue are tinted).
PIXEL_INLINE uint16_t shade_texel(uint32_t texel, uint8_t level, const uint8_t* red_row, const uint8_t* blue_row)
{
    const uint8_t* dim = colour_table_row(colour_tables.dimming, level);
    uint32_t red = red_row[dim[channel_red(texel)]];
    uint32_t green = dim[channel_green(texel)];
    uint32_t blue = blue_row[dim[channel_blue(texel)]];
    return static_cast<uint16_t>(PIXEL_OPAQUE | red << 10 | green << 5 | blue);
}

// A translucent colour over the pixel below: blend is the new colour's weight out of 63. The two
// rows are built so that each channel's sum stays within 31.
PIXEL_INLINE uint16_t blend_pixel(uint32_t below, uint32_t colour, const uint8_t* dim_row, const uint8_t* lum_row)
{
    uint32_t red = dim_row[channel_red(below)] + lum_row[channel_red(colour)];
    uint32_t green = dim_row[channel_green(below)] + lum_row[channel_green(colour)];
    uint32_t blue = dim_row[channel_blue(below)] + lum_row[channel_blue(colour)];
    return static_cast<uint16_t>(PIXEL_OPAQUE | red << 10 | green << 5 | blue);
}
