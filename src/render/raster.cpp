#include "render/raster.h"

#include <math.h>
#include <stddef.h>

#include "core/settings.h"
#include "render/colour_tables.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/pixel_pipeline.h"

int span_loops_vectorised = 1;

namespace {

// What stays the same for every pixel of every span of one triangle.
struct span_setup {
    texture tex; // a copy, so that the loops keep its fields in registers whatever they store
    const uint8_t* red_row;
    const uint8_t* blue_row;
    const uint8_t* blend_dim_row;
    const uint8_t* blend_lum_row;
    const uint16_t* lit_red; // the tint's folded tables, for the vector loops
    const uint16_t* lit_blue;
    // Pixels x ... end - 1 of row y; `at` holds 1/w, u/w, v/w and l/w of pixel x in its lanes and
    // `step` what they gain from one pixel to the next. Handed over in vector registers: a
    // structure passed through memory would be written in one shape and read in another, which
    // stalls every span.
    void (*fill)(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step);
};

// The span loop, compiled once for every combination of fetch, dithering and translucency so
// that no per-pixel branch asks what the whole span already knows. The depth test comes first and
// draws only what is strictly nearer; the one division per pixel recovers w from 1/w.
template <bool filtered, bool dithered, bool translucent>
void fill_span(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step)
{
    size_t row = static_cast<size_t>(y) * static_cast<size_t>(frame_width);
    uint16_t* colour = color_buffer + row;
    float* depth = depth_buffer + row;
    const texture tex = setup->tex;
    const uint8_t* red_row = setup->red_row;
    const uint8_t* blue_row = setup->blue_row;
    const uint8_t* blend_dim_row = setup->blend_dim_row;
    const uint8_t* blend_lum_row = setup->blend_lum_row;
    alignas(16) float start[4], steps[4];
    _mm_store_ps(start, at);
    _mm_store_ps(steps, step);
    float inv_w = start[0], u_w = start[1], v_w = start[2], l_w = start[3];
    for (; x < end; ++x) {
        if (!(depth[x] >= inv_w)) {
            float w = 1.0f / inv_w;
            float u = u_w * w;
            float v = v_w * w;
            float l = l_w * w;
            uint32_t texel = filtered ? sample_filtered(&tex, u, v) : fetch_nearest(&tex, u, v);
            if (texel & PIXEL_OPAQUE) {
                uint8_t level = dithered ? light_level_dithered(l, light_dither_offset(x, y)) : light_level(l);
                uint16_t lit = shade_texel(texel, level, red_row, blue_row);
                if (translucent) {
                    colour[x] = blend_pixel(colour[x], lit, blend_dim_row, blend_lum_row);
                } else {
                    colour[x] = lit;
                    depth[x] = inv_w;
                }
            }
        }
        inv_w += steps[0];
        u_w += steps[1];
        v_w += steps[2];
        l_w += steps[3];
    }
}

// The span loops four pixels at a time, with the same result as fill_span to the bit. The four
// interpolated quantities step together in the lanes of one vector, each lane adding the same step
// in the same order as the plain loop, so every pixel sees exactly its value there; the division,
// the texel addresses, the filter's weights and mix, the light levels and the blend are then worked
// out for four pixels at once with the same single operations in the same order, and only the
// texel and table look-ups stay one by one. The four pixels are read and written back whole, the
// ones not drawn with what they had: a span's row belongs to one thread alone.

// What the vector loops keep for a whole span.
struct span_lanes {
    __m128 quantities; // 1/w, u/w, v/w, l/w of the next pixel
    __m128 steps;
    float dither_row[8]; // this row's dither offsets, twice over, to read four from any x & 3
};

span_lanes start_lanes(int32_t y, __m128 at, __m128 step)
{
    span_lanes lanes;
    lanes.quantities = at;
    lanes.steps = step;
    for (int32_t k = 0; k < 8; ++k)
        lanes.dither_row[k] = light_dither_offset(k, y);
    return lanes;
}

// The next four pixels' quantities, one vector per quantity (the first pixel in lane 0).
PIXEL_INLINE void step_four_pixels(span_lanes* lanes, __m128* inv_w, __m128* u_w, __m128* v_w, __m128* l_w)
{
    *inv_w = lanes->quantities;
    *u_w = _mm_add_ps(*inv_w, lanes->steps);
    *v_w = _mm_add_ps(*u_w, lanes->steps);
    *l_w = _mm_add_ps(*v_w, lanes->steps);
    lanes->quantities = _mm_add_ps(*l_w, lanes->steps);
    _MM_TRANSPOSE4_PS(*inv_w, *u_w, *v_w, *l_w);
}

// The light levels of four shades, as light_level or light_level_dithered gives them.
template <bool dithered> PIXEL_INLINE __m128i light_levels(__m128 l, const span_lanes* lanes, int32_t x)
{
    if (dithered) {
        const __m128 zero = _mm_setzero_ps(), one = _mm_set1_ps(1.0f);
        l = _mm_add_ps(l, _mm_loadu_ps(lanes->dither_row + (x & 3)));
        l = _mm_andnot_ps(_mm_cmplt_ps(l, zero), l); // below 0 becomes 0; NaN and -0 stay
        __m128 above = _mm_cmpgt_ps(l, one);
        l = _mm_or_ps(_mm_and_ps(above, one), _mm_andnot_ps(above, l));
    }
    return _mm_and_si128(_mm_cvttps_epi32(_mm_mul_ps(l, _mm_set1_ps(63.0f))), _mm_set1_epi32(0xFF));
}

// Which of four pixels pass the depth test, as lanes of all ones: !(depth >= 1/w), so that a NaN
// depth or 1/w draws as in the plain loop.
PIXEL_INLINE __m128i depth_passing(const float* depth, int32_t x, __m128 inv_w)
{
    return _mm_castps_si128(_mm_cmpnge_ps(_mm_loadu_ps(depth + x), inv_w));
}

// The lanes that are all ones in `mask`, as bits.
PIXEL_INLINE int lane_bits(__m128i mask)
{
    return _mm_movemask_ps(_mm_castsi128_ps(mask));
}

// All ones in the lanes whose texel has the opaque bit.
PIXEL_INLINE __m128i opaque_lanes(__m128i texels)
{
    return _mm_srai_epi32(_mm_slli_epi32(texels, 16), 31);
}

// The texels at four indices, one lane each, filled from registers: four stores read back as one
// vector would stall.
PIXEL_INLINE __m128i fetch_four_texels(const uint16_t* texels, __m128i indices)
{
    alignas(16) int32_t index[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(index), indices);
    return _mm_setr_epi32(texels[index[0]], texels[index[1]], texels[index[2]], texels[index[3]]);
}

// truncate(a) & mask, for four a.
PIXEL_INLINE __m128i truncated_and_masked(__m128 a, __m128i mask)
{
    return _mm_and_si128(_mm_cvttps_epi32(a), mask);
}

// What the vector span loops need of the texture, in every lane: its size for the coordinates, its
// masks for the wrap and the shift from a texel row to its first texel.
struct texture_lanes {
    const uint16_t* texels;
    __m128 width_f, height_f;
    __m128i width_mask, height_mask;
    __m128i row_shift;
};

PIXEL_INLINE texture_lanes texture_lanes_of(const texture* tex)
{
    return {tex->texels,
            _mm_set1_ps(tex->width_f),
            _mm_set1_ps(tex->height_f),
            _mm_set1_epi32(tex->width_mask),
            _mm_set1_epi32(tex->height_mask),
            _mm_cvtsi32_si128(tex->row_shift)};
}

// The nearest texels of four pixels, as fetch_nearest finds them. Every index is wrapped into the
// texture, so the texels of pixels that are not drawn may be fetched too.
PIXEL_INLINE __m128i fetch_four_nearest(const texture_lanes* tex, __m128 u, __m128 v)
{
    const __m128 zero = _mm_setzero_ps();
    // A true comparison is all ones, -1: adding it is fetch_nearest's "- (u < 0)".
    __m128i column = _mm_and_si128(
        _mm_add_epi32(_mm_cvttps_epi32(_mm_mul_ps(u, tex->width_f)), _mm_castps_si128(_mm_cmplt_ps(u, zero))),
        tex->width_mask);
    __m128i texel_row = _mm_and_si128(
        _mm_add_epi32(_mm_cvttps_epi32(_mm_mul_ps(v, tex->height_f)), _mm_castps_si128(_mm_cmplt_ps(v, zero))),
        tex->height_mask);
    return fetch_four_texels(tex->texels, _mm_or_si128(_mm_sll_epi32(texel_row, tex->row_shift), column));
}

// texture_fraction for four a.
PIXEL_INLINE __m128 texture_fractions(__m128 a)
{
    __m128 fraction = _mm_sub_ps(a, _mm_cvtepi32_ps(_mm_cvttps_epi32(a)));
    __m128 negative = _mm_cmplt_ps(fraction, _mm_setzero_ps());
    return _mm_or_ps(_mm_and_ps(negative, _mm_add_ps(fraction, _mm_set1_ps(1.0f))), _mm_andnot_ps(negative, fraction));
}

// One channel of four texels, masked and scaled down to 0 ... 31, as a float (both exact).
PIXEL_INLINE __m128 channel_of(__m128i texels, int32_t bits_mask, float scale)
{
    return _mm_mul_ps(_mm_cvtepi32_ps(_mm_and_si128(texels, _mm_set1_epi32(bits_mask))), _mm_set1_ps(scale));
}

// (a * wa + b * wb) + c * wc, lane by lane, as sample_filtered mixes each channel.
PIXEL_INLINE __m128i mix_channel(__m128 a, __m128 b, __m128 c, __m128 wa, __m128 wb, __m128 wc)
{
    return _mm_cvttps_epi32(_mm_add_ps(_mm_add_ps(_mm_mul_ps(a, wa), _mm_mul_ps(b, wb)), _mm_mul_ps(c, wc)));
}

// The three-texel filter of sample_filtered for four pixels, in the lanes of `drawn` (those that
// passed the depth test and whose nearest texel is opaque); the other lanes hold no texel worth
// drawing.
PIXEL_INLINE __m128i sample_four_filtered(const texture_lanes* tex, __m128 u, __m128 v, __m128i passing,
                                          __m128i* drawn)
{
    const __m128 one = _mm_set1_ps(1.0f);
    const __m128 half = _mm_set1_ps(0.5f);
    __m128 fu = _mm_mul_ps(texture_fractions(u), tex->width_f);
    __m128 fv = _mm_mul_ps(texture_fractions(v), tex->height_f);
    __m128i near_index = _mm_or_si128(_mm_sll_epi32(truncated_and_masked(fv, tex->height_mask), tex->row_shift),
                                      truncated_and_masked(fu, tex->width_mask));
    // A transparent nearest texel leaves its pixel alone, as sample_filtered's 0 does.
    *drawn = _mm_and_si128(passing, opaque_lanes(fetch_four_texels(tex->texels, near_index)));
    if (!lane_bits(*drawn))
        return _mm_setzero_si128();
    __m128 gu = _mm_sub_ps(fu, half);
    __m128 gv = _mm_sub_ps(fv, half);
    __m128i x0 = truncated_and_masked(gu, tex->width_mask);
    __m128i y0 = truncated_and_masked(gv, tex->height_mask);
    __m128 fx = _mm_sub_ps(gu, _mm_cvtepi32_ps(x0));
    __m128 fy = _mm_sub_ps(gv, _mm_cvtepi32_ps(y0));
    __m128i x1 = _mm_and_si128(_mm_add_epi32(x0, _mm_set1_epi32(1)), tex->width_mask);
    __m128i y1 = _mm_and_si128(_mm_add_epi32(y0, _mm_set1_epi32(1)), tex->height_mask);
    __m128 upper_left = _mm_cmple_ps(_mm_add_ps(fx, fy), one);
    __m128i upper_left_bits = _mm_castps_si128(upper_left);
    __m128i row0 = _mm_sll_epi32(y0, tex->row_shift), row1 = _mm_sll_epi32(y1, tex->row_shift);
    __m128i index_c = _mm_or_si128(_mm_and_si128(upper_left_bits, _mm_or_si128(row0, x0)),
                                   _mm_andnot_si128(upper_left_bits, _mm_or_si128(row1, x1)));
    __m128i a = fetch_four_texels(tex->texels, _mm_or_si128(row1, x0));
    __m128i b = fetch_four_texels(tex->texels, _mm_or_si128(row0, x1));
    __m128i c = fetch_four_texels(tex->texels, index_c);
    __m128 wa = _mm_or_ps(_mm_and_ps(upper_left, fy), _mm_andnot_ps(upper_left, _mm_sub_ps(one, fx)));
    __m128 wb = _mm_or_ps(_mm_and_ps(upper_left, fx), _mm_andnot_ps(upper_left, _mm_sub_ps(one, fy)));
    __m128 wc = _mm_or_ps(_mm_and_ps(upper_left, _mm_sub_ps(_mm_sub_ps(one, fx), fy)),
                          _mm_andnot_ps(upper_left, _mm_sub_ps(_mm_add_ps(fx, fy), one)));
    __m128i red = mix_channel(channel_of(a, 0x7C00, 1.0f / 1024.0f), channel_of(b, 0x7C00, 1.0f / 1024.0f),
                              channel_of(c, 0x7C00, 1.0f / 1024.0f), wa, wb, wc);
    __m128i green = mix_channel(channel_of(a, 0x03E0, 1.0f / 32.0f), channel_of(b, 0x03E0, 1.0f / 32.0f),
                                channel_of(c, 0x03E0, 1.0f / 32.0f), wa, wb, wc);
    __m128i blue = mix_channel(channel_of(a, 0x001F, 1.0f), channel_of(b, 0x001F, 1.0f), channel_of(c, 0x001F, 1.0f),
                               wa, wb, wc);
    // Extrapolated channels may leave 0 ... 31; their bits are combined as they are, in 16 bits.
    __m128i mixed = _mm_or_si128(
        _mm_or_si128(_mm_slli_epi32(_mm_or_si128(red, _mm_set1_epi32(32)), 10), _mm_slli_epi32(green, 5)), blue);
    return _mm_and_si128(mixed, _mm_set1_epi32(0xFFFF));
}

// The 5-bit channel of four pixels that starts at `shift`.
PIXEL_INLINE __m128i channel_lanes(__m128i pixels, int shift)
{
    return _mm_and_si128(_mm_srl_epi32(pixels, _mm_cvtsi32_si128(shift)), _mm_set1_epi32(31));
}

// Four texels lit at their levels and tinted, as shade_texel gives them, in the lanes of `drawn`
// (the others are lit at level 0, so that every look-up stays inside its table). A level past 63
// has no row in the folded tables: when a drawn pixel has one, all four go through the tables one
// by one.
PIXEL_INLINE __m128i shade_four_texels(const span_setup* setup, __m128i texels, __m128i levels, __m128i drawn)
{
    levels = _mm_and_si128(levels, drawn);
    if (lane_bits(_mm_cmpgt_epi32(levels, _mm_set1_epi32(LIGHT_LEVEL_MAX)))) {
        alignas(16) int32_t texel[4], level[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(texel), texels);
        _mm_store_si128(reinterpret_cast<__m128i*>(level), levels);
        auto shaded = [&](int32_t k) {
            return shade_texel(static_cast<uint32_t>(texel[k]), static_cast<uint8_t>(level[k]), setup->red_row,
                               setup->blue_row);
        };
        return _mm_setr_epi32(shaded(0), shaded(1), shaded(2), shaded(3));
    }
    __m128i row = _mm_slli_epi32(levels, 5);
    alignas(16) int32_t red[4], green[4], blue[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(red), _mm_or_si128(row, channel_lanes(texels, 10)));
    _mm_store_si128(reinterpret_cast<__m128i*>(green), _mm_or_si128(row, channel_lanes(texels, 5)));
    _mm_store_si128(reinterpret_cast<__m128i*>(blue), _mm_or_si128(row, channel_lanes(texels, 0)));
    const uint16_t* lit_red = setup->lit_red;
    const uint16_t* lit_blue = setup->lit_blue;
    auto lit = [&](int32_t k) { return lit_red[red[k]] | lit_channels.green[green[k]] | lit_blue[blue[k]]; };
    return _mm_setr_epi32(lit(0), lit(1), lit(2), lit(3));
}

// Four translucent colours over the pixels below, as blend_pixel mixes each.
PIXEL_INLINE __m128i blend_four_pixels(const span_setup* setup, __m128i below, __m128i colours)
{
    alignas(16) int32_t under[3][4], over[3][4];
    for (int32_t channel = 0; channel < 3; ++channel) {
        _mm_store_si128(reinterpret_cast<__m128i*>(under[channel]), channel_lanes(below, 10 - 5 * channel));
        _mm_store_si128(reinterpret_cast<__m128i*>(over[channel]), channel_lanes(colours, 10 - 5 * channel));
    }
    const uint8_t* dim_row = setup->blend_dim_row;
    const uint8_t* lum_row = setup->blend_lum_row;
    auto mixed = [&](int32_t k) {
        uint32_t red = dim_row[under[0][k]] + lum_row[over[0][k]];
        uint32_t green = dim_row[under[1][k]] + lum_row[over[1][k]];
        uint32_t blue = dim_row[under[2][k]] + lum_row[over[2][k]];
        return static_cast<int32_t>(PIXEL_OPAQUE | red << 10 | green << 5 | blue);
    };
    return _mm_setr_epi32(mixed(0), mixed(1), mixed(2), mixed(3));
}

// Pixels in 32-bit lanes down to 16 bits: each sign-extended from its low half first, so the
// saturating pack keeps its bits.
PIXEL_INLINE __m128i to_16_bits(__m128i pixels)
{
    return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(pixels, 16), 16), _mm_setzero_si128());
}

template <bool filtered, bool dithered, bool translucent>
void fill_span_sse2(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step)
{
    size_t row = static_cast<size_t>(y) * static_cast<size_t>(frame_width);
    uint16_t* colour = color_buffer + row;
    float* depth = depth_buffer + row;
    const __m128 one = _mm_set1_ps(1.0f);
    const texture_lanes tex = texture_lanes_of(&setup->tex);
    span_lanes lanes = start_lanes(y, at, step);
    for (; x + 4 <= end; x += 4) {
        __m128 inv_w, u_w, v_w, l_w;
        step_four_pixels(&lanes, &inv_w, &u_w, &v_w, &l_w);
        __m128i passing = depth_passing(depth, x, inv_w);
        if (!lane_bits(passing))
            continue;
        __m128 w = _mm_div_ps(one, inv_w);
        __m128 u = _mm_mul_ps(u_w, w);
        __m128 v = _mm_mul_ps(v_w, w);
        __m128i drawn, texels;
        if (filtered) {
            texels = sample_four_filtered(&tex, u, v, passing, &drawn);
        } else {
            texels = fetch_four_nearest(&tex, u, v);
            drawn = _mm_and_si128(passing, opaque_lanes(texels));
        }
        if (!lane_bits(drawn))
            continue;
        __m128i shaded =
            shade_four_texels(setup, texels, light_levels<dithered>(_mm_mul_ps(l_w, w), &lanes, x), drawn);
        __m128i drawn_16 = _mm_packs_epi32(drawn, drawn);
        __m128i below = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(colour + x));
        __m128i pixels = translucent ? to_16_bits(blend_four_pixels(setup, _mm_unpacklo_epi16(below, _mm_setzero_si128()),
                                                                    shaded))
                                     : to_16_bits(shaded);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(colour + x),
                         _mm_or_si128(_mm_and_si128(drawn_16, pixels), _mm_andnot_si128(drawn_16, below)));
        if (!translucent) {
            __m128 drawn_lanes = _mm_castsi128_ps(drawn);
            _mm_storeu_ps(depth + x, _mm_or_ps(_mm_and_ps(drawn_lanes, inv_w),
                                               _mm_andnot_ps(drawn_lanes, _mm_loadu_ps(depth + x))));
        }
    }
    // The fewer than four pixels left, one by one from where the lanes stopped.
    if (x < end)
        fill_span<filtered, dithered, translucent>(setup, y, x, end, lanes.quantities, lanes.steps);
}

using span_fill = void (*)(const span_setup*, int32_t, int32_t, int32_t, __m128, __m128);

// [vectorised][filtered][dithered][translucent]
const span_fill span_fills[2][2][2][2] = {
    {{{fill_span<false, false, false>, fill_span<false, false, true>},
      {fill_span<false, true, false>, fill_span<false, true, true>}},
     {{fill_span<true, false, false>, fill_span<true, false, true>},
      {fill_span<true, true, false>, fill_span<true, true, true>}}},
    {{{fill_span_sse2<false, false, false>, fill_span_sse2<false, false, true>},
      {fill_span_sse2<false, true, false>, fill_span_sse2<false, true, true>}},
     {{fill_span_sse2<true, false, false>, fill_span_sse2<true, false, true>},
      {fill_span_sse2<true, true, false>, fill_span_sse2<true, true, true>}}},
};

span_setup prepare_spans(const texture* tex, uint8_t tint, uint8_t blend)
{
    span_setup setup;
    setup.tex = *tex;
    setup.red_row = colour_table_row(colour_tables.red_temperature, tint);
    setup.blue_row = colour_table_row(colour_tables.blue_temperature, tint);
    setup.blend_dim_row = colour_table_row(colour_tables.dimming, blend);
    setup.blend_lum_row = colour_table_row(colour_tables.luminance, blend);
    // A tint past the tables' rows has no folded tables: the plain loops read it as they always did.
    int vectorised = span_loops_vectorised != 0 && tint < COLOUR_TABLE_ROWS;
    setup.lit_red = vectorised ? lit_channels.red[tint] : nullptr;
    setup.lit_blue = vectorised ? lit_channels.blue[tint] : nullptr;
    setup.fill = span_fills[vectorised][TEXTURE_INTERPOLATION != 0][LIGHT_DITHERING != 0][blend != 0];
    return setup;
}

// 1/w, u/w, v/w and l/w of an edge point, in that order in the lanes of one vector.
static_assert(offsetof(span_edge, l_w) == offsetof(span_edge, inv_w) + 3 * sizeof(float),
              "the four interpolated quantities of an edge point lie side by side");
PIXEL_INLINE __m128 load_quantities(const span_edge* point)
{
    return _mm_loadu_ps(&point->inv_w);
}
PIXEL_INLINE void store_quantities(span_edge* point, __m128 quantities)
{
    _mm_storeu_ps(&point->inv_w, quantities);
}

// The pixels of row y between two edge points: those whose centres lie right of the left end and
// at or left of the right end. A pixel centred exactly on the left end is left out and one centred
// exactly on the right end is drawn, so that a pixel on a vertical edge shared by two triangles
// belongs to the triangle on its left and to it alone; the asymmetry is deliberate.
void span_between(const span_setup* setup, int32_t y, const span_edge* a, const span_edge* b)
{
    const span_edge* left = a;
    const span_edge* right = b;
    if (left->x > right->x) {
        left = b;
        right = a;
    }
    float width = right->x - left->x;
    if (width <= 0.0f)
        return;
    float first = floorf(left->x - 0.5f) + 1.0f;
    if (first < 0.0f)
        first = 0.0f;
    float end = floorf(right->x - 0.5f) + 1.0f;
    if (end > static_cast<float>(frame_width))
        end = static_cast<float>(frame_width);
    if (!(first < end))
        return;
    // step = (right - left) / width and at = left + step * offset for the four interpolated
    // quantities side by side: the same operation on each, so the same results.
    __m128 left_quantities = load_quantities(left);
    __m128 steps = _mm_div_ps(_mm_sub_ps(load_quantities(right), left_quantities), _mm_set1_ps(width));
    float offset = first + 0.5f - left->x;
    __m128 at = _mm_add_ps(left_quantities, _mm_mul_ps(steps, _mm_set1_ps(offset)));
    setup->fill(setup, y, static_cast<int32_t>(first), static_cast<int32_t>(end), at, steps);
}

// A triangle edge from an upper to a lower vertex; each row's point is computed afresh from that
// row's own fraction, so rows do not drift.
struct triangle_edge {
    float top_y;
    float height;
    span_edge start;
    span_edge delta;
};

span_edge perspective_quantities(const screen_vertex* v)
{
    span_edge q;
    q.x = v->sx;
    q.inv_w = 1.0f / v->w;
    q.u_w = v->u * q.inv_w;
    q.v_w = v->v * q.inv_w;
    q.l_w = v->l * q.inv_w;
    return q;
}

triangle_edge make_edge(const screen_vertex* upper, const span_edge* upper_q, const screen_vertex* lower,
                        const span_edge* lower_q)
{
    triangle_edge edge;
    edge.top_y = upper->sy;
    edge.height = lower->sy - upper->sy;
    edge.start = *upper_q;
    edge.delta.x = lower_q->x - upper_q->x;
    edge.delta.inv_w = lower_q->inv_w - upper_q->inv_w;
    edge.delta.u_w = lower_q->u_w - upper_q->u_w;
    edge.delta.v_w = lower_q->v_w - upper_q->v_w;
    edge.delta.l_w = lower_q->l_w - upper_q->l_w;
    return edge;
}

// The edge's point at the centre of row y.
span_edge edge_at_row(const triangle_edge* edge, int32_t y)
{
    float f = (static_cast<float>(y) + 0.5f - edge->top_y) / edge->height;
    span_edge p;
    p.x = edge->start.x + edge->delta.x * f;
    store_quantities(&p, _mm_add_ps(load_quantities(&edge->start), _mm_mul_ps(load_quantities(&edge->delta), _mm_set1_ps(f))));
    return p;
}

void fill_rows(const span_setup* setup, int32_t first, int32_t end, const triangle_edge* long_edge,
               const triangle_edge* short_edge)
{
    for (int32_t y = first; y < end; ++y) {
        span_edge a = edge_at_row(long_edge, y);
        span_edge b = edge_at_row(short_edge, y);
        span_between(setup, y, &a, &b);
    }
}

// The first row whose centre lies at or below sy: ceil(sy - 0.5), clamped into 0 ... frame_height.
float first_row_at_or_below(float sy)
{
    float row = ceilf(sy - 0.5f);
    float height = static_cast<float>(frame_height);
    if (!(row > 0.0f))
        return 0.0f;
    return row < height ? row : height;
}

void compare_and_swap(const screen_vertex** upper, const screen_vertex** lower)
{
    if ((*upper)->sy > (*lower)->sy) {
        const screen_vertex* swap = *upper;
        *upper = *lower;
        *lower = swap;
    }
}

} // namespace

void draw_span(int32_t y, const texture* tex, uint8_t tint, uint8_t blend, const span_edge* left,
               const span_edge* right)
{
    span_setup setup = prepare_spans(tex, tint, blend);
    span_between(&setup, y, left, right);
}

void draw_triangle(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a, const screen_vertex* b,
                   const screen_vertex* c)
{
    if (!record_triangle(tex, tint, blend, a, b, c))
        draw_triangle_rows(tex, tint, blend, a, b, c, 0, frame_height);
}

void draw_triangle_rows(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a,
                        const screen_vertex* b, const screen_vertex* c, int32_t first_row, int32_t end_row)
{
    // Three compare-and-swaps that keep ties in their order: a with b, the lower of them with c,
    // then the upper pair again.
    const screen_vertex* top = a;
    const screen_vertex* middle = b;
    const screen_vertex* bottom = c;
    compare_and_swap(&top, &middle);
    compare_and_swap(&middle, &bottom);
    compare_and_swap(&top, &middle);

    // Rows are sampled at their centres: the top edge belongs to the triangle, the bottom does not.
    // Rows are clamped as floats first, so that far-off vertices never overflow an integer.
    float first = first_row_at_or_below(top->sy);
    float split = first_row_at_or_below(middle->sy);
    float last = first_row_at_or_below(bottom->sy);
    int32_t top_row = static_cast<int32_t>(first);
    int32_t split_row = static_cast<int32_t>(split);
    int32_t bottom_row = static_cast<int32_t>(last);
    top_row = top_row > first_row ? top_row : first_row;
    bottom_row = bottom_row < end_row ? bottom_row : end_row;
    if (!(top_row < bottom_row))
        return;

    span_edge top_q = perspective_quantities(top);
    span_edge middle_q = perspective_quantities(middle);
    span_edge bottom_q = perspective_quantities(bottom);
    triangle_edge long_edge = make_edge(top, &top_q, bottom, &bottom_q);
    triangle_edge upper_edge = make_edge(top, &top_q, middle, &middle_q);
    triangle_edge lower_edge = make_edge(middle, &middle_q, bottom, &bottom_q);

    span_setup setup = prepare_spans(tex, tint, blend);
    // Each row's edge points come from that row's own fraction, so drawing only some of the rows
    // gives them exactly as drawing all of them would. A flat upper or lower half has an empty row
    // range, so its zero height is never divided by.
    fill_rows(&setup, top_row, split_row < bottom_row ? split_row : bottom_row, &long_edge, &upper_edge);
    fill_rows(&setup, split_row > top_row ? split_row : top_row, bottom_row, &long_edge, &lower_edge);
}

int32_t clip_triangle_near(clip_vertex* vertices, float near_z)
{
    float distance[3];
    int32_t inside = 0;
    for (int32_t i = 0; i < 3; ++i) {
        distance[i] = vertices[i].z - near_z;
        inside += distance[i] > 0.0f;
    }
    if (inside == 3)
        return 3;
    if (inside == 0)
        return 0;

    // Walk the edges a->b, b->c, c->a: each emits its start when inside, then its crossing.
    clip_vertex out[CLIP_CAPACITY];
    int32_t count = 0;
    for (int32_t i = 0; i < 3; ++i) {
        int32_t j = i == 2 ? 0 : i + 1;
        const clip_vertex* start = &vertices[i];
        const clip_vertex* end = &vertices[j];
        bool start_inside = distance[i] > 0.0f;
        bool end_inside = distance[j] > 0.0f;
        if (start_inside)
            out[count++] = *start;
        if (start_inside != end_inside) {
            float t = distance[i] / (distance[i] - distance[j]);
            clip_vertex* crossing = &out[count++];
            crossing->x = start->x + (end->x - start->x) * t;
            crossing->y = start->y + (end->y - start->y) * t;
            crossing->z = start->z + (end->z - start->z) * t;
            crossing->nx = crossing->ny = crossing->nz = 0.0f; // not carried through clipping
            crossing->u = start->u + (end->u - start->u) * t;
            crossing->v = start->v + (end->v - start->v) * t;
            crossing->l = start->l + (end->l - start->l) * t;
        }
    }
    for (int32_t i = 0; i < count; ++i)
        vertices[i] = out[i];
    return count;
}

int project_segment(float* x0, float* y0, float* z0, float* x1, float* y1, float* z1)
{
    const float near_z = 0.01f;
    float world0[3] = {*x0, *y0, *z0};
    float world1[3] = {*x1, *y1, *z1};
    float p0[3], p1[3];
    camera_transform(world0, p0);
    camera_transform(world1, p1);
    if (p0[2] < near_z && p1[2] < near_z)
        return 0;
    if (p0[2] < near_z) {
        float t = (near_z - p0[2]) / (p1[2] - p0[2]);
        p0[0] = p0[0] + (p1[0] - p0[0]) * t;
        p0[1] = p0[1] + (p1[1] - p0[1]) * t;
        p0[2] = near_z;
    }
    if (p1[2] < near_z) {
        float t = (near_z - p1[2]) / (p0[2] - p1[2]);
        p1[0] = p1[0] + (p0[0] - p1[0]) * t;
        p1[1] = p1[1] + (p0[1] - p1[1]) * t;
        p1[2] = near_z;
    }
    *x0 = project_screen_x(p0[0], p0[2]);
    *y0 = project_screen_y(p0[1], p0[2]);
    *z0 = p0[2];
    *x1 = project_screen_x(p1[0], p1[2]);
    *y1 = project_screen_y(p1[1], p1[2]);
    *z1 = p1[2];
    return 1;
}
