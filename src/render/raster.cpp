#include "render/raster.h"

#include <immintrin.h>
#include <math.h>
#include <stddef.h>

#include "core/settings.h"
#include "render/colour_tables.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/pixel_pipeline.h"
#include "render/vector_lanes.h"

int widest_pixel_loop_lanes()
{
    __builtin_cpu_init(); // may run before the run-time library has looked at the processor
    return __builtin_cpu_supports("avx2") ? 8 : 4;
}

int pixel_loop_lanes = widest_pixel_loop_lanes();
uint16_t drawing_rank;

namespace {

// What stays the same for every pixel of every span of one triangle.
struct span_setup {
    texture tex; // a copy, so that the loops keep its fields in registers whatever they store
    const uint8_t* red_row;
    const uint8_t* blue_row;
    const uint8_t* blend_dim_row;
    const uint8_t* blend_lum_row;
    const uint16_t* lit_red; // the tint's folded tables, for the SSE2 loops (AVX2 works the light out)
    const uint16_t* lit_blue;
    int32_t rank; // the drawing object's place in the draw list, from 1, for ranked spans
    // Pixels x ... end - 1 of row y; `at` holds 1/w, u/w, v/w and l/w of pixel x in its lanes and
    // `step` what they gain from one pixel to the next. Handed over in vector registers: a
    // structure passed through memory would be written in one shape and read in another, which
    // stalls every span.
    void (*fill)(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step);
};

// What a span does with the depth buffer. An opaque span draws what is strictly nearer and keeps
// its depth; a translucent one draws what is strictly nearer and leaves the depth alone. A ranked
// span is opaque and belongs to objects drawn nearest first, out of their order in the draw list:
// it also draws over a surface exactly as near (and drawn this frame: the depth is not 0) when its
// object comes earlier in that order than the one that drew it, and notes its own place, so that
// every pixel ends as drawing the list in its order leaves it (the nearest surface, and of equally
// near ones the first).
enum span_kind { SPAN_OPAQUE, SPAN_TRANSLUCENT, SPAN_RANKED, SPAN_KINDS };

// The span loop, compiled once for every combination of fetch, dithering and kind so that no
// per-pixel branch asks what the whole span already knows. The depth test comes first; the one
// division per pixel recovers w from 1/w.
template <bool filtered, bool dithered, int kind>
void fill_span(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step)
{
    constexpr bool translucent = kind == SPAN_TRANSLUCENT, ranked = kind == SPAN_RANKED;
    size_t row = static_cast<size_t>(y) * static_cast<size_t>(frame_width);
    uint16_t* colour = color_buffer + row;
    float* depth = depth_buffer + row;
    uint16_t* ranks = ranked ? depth_ranks + row : nullptr;
    const texture tex = setup->tex;
    const uint8_t* red_row = setup->red_row;
    const uint8_t* blue_row = setup->blue_row;
    const uint8_t* blend_dim_row = setup->blend_dim_row;
    const uint8_t* blend_lum_row = setup->blend_lum_row;
    const int32_t rank = setup->rank;
    alignas(16) float start[4], steps[4];
    _mm_store_ps(start, at);
    _mm_store_ps(steps, step);
    float inv_w = start[0], u_w = start[1], v_w = start[2], l_w = start[3];
    for (; x < end; ++x) {
        if (!(depth[x] >= inv_w) || (ranked && depth[x] == inv_w && depth[x] != 0.0f && rank < ranks[x])) {
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
                    if (ranked)
                        ranks[x] = static_cast<uint16_t>(rank);
                }
            }
        }
        inv_w += steps[0];
        u_w += steps[1];
        v_w += steps[2];
        l_w += steps[3];
    }
}

// The vector span loops, once for SSE2 (every x86-64 processor) and once for AVX2 (most since
// 2013, chosen at start-up), from one body; each set gives the few operations that differ.
namespace sse2_spans {

using namespace sse2_lanes;

// Texel channels of 0 ... 31 lit at levels of 0 ... 63 and tinted: three look-ups in the folded
// tables, one for each channel.
PIXEL_INLINE ints light_texels(const span_setup* setup, ints red, ints green, ints blue, ints levels)
{
    ints row = levels << 5;
    return gather_texels(setup->lit_red, row | red) | gather_texels(lit_channels.green, row | green) |
           gather_texels(setup->lit_blue, row | blue);
}
// The next four pixels' quantities, one vector per quantity (the first pixel in lane 0).
PIXEL_INLINE void step_pixels(__m128* quantities, __m128 steps, floats* inv_w, floats* u_w, floats* v_w, floats* l_w)
{
    *inv_w = *quantities;
    *u_w = _mm_add_ps(*inv_w, steps);
    *v_w = _mm_add_ps(*u_w, steps);
    *l_w = _mm_add_ps(*v_w, steps);
    *quantities = _mm_add_ps(*l_w, steps);
    _MM_TRANSPOSE4_PS(*inv_w, *u_w, *v_w, *l_w);
}
// A span of fewer than four pixels, one by one.
template <bool filtered, bool dithered, int kind>
void fill_rest(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step)
{
    fill_span<filtered, dithered, kind>(setup, y, x, end, at, step);
}

#include "render/span_lanes.inc"

} // namespace sse2_spans

AVX2_FUNCTIONS_BEGIN
namespace avx2_spans {

using namespace avx2_lanes;

// Gathers are slow next to arithmetic, so AVX2 works the dimming out: c * (63 - level) / 63 in
// whole numbers, the division a multiplication by 2081 and a shift by 17, exact for every product
// up to 31 * 63 (the look-ups in colour_tables.dimming give the same). Both factors fit in 16
// bits, so one multiply-and-add of 16-bit halves multiplies each lane.
PIXEL_INLINE ints dimmed(ints channel, __m256i undimmed_part)
{
    __m256i product = _mm256_madd_epi16(reinterpret_cast<__m256i>(channel), undimmed_part);
    return reinterpret_cast<ints>(_mm256_srli_epi32(_mm256_madd_epi16(product, _mm256_set1_epi32(2081)), 17));
}
// A temperature row of 32 entries looked up in registers: the byte shuffle looks up 16 at a time,
// in each half of the row, and bit 4 of the index (moved to the top of its byte) chooses the half.
PIXEL_INLINE ints tinted(const uint8_t* row, ints channel)
{
    __m256i low = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row)));
    __m256i high = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row + 16)));
    __m256i index = reinterpret_cast<__m256i>(channel);
    __m256i entry = _mm256_blendv_epi8(_mm256_shuffle_epi8(low, index), _mm256_shuffle_epi8(high, index),
                                       _mm256_slli_epi32(index, 3));
    return reinterpret_cast<ints>(entry) & splat(0xFF);
}
PIXEL_INLINE ints light_texels(const span_setup* setup, ints red, ints green, ints blue, ints levels)
{
    __m256i undimmed_part = reinterpret_cast<__m256i>(splat(LIGHT_LEVEL_MAX) - levels);
    return splat(PIXEL_OPAQUE) | (tinted(setup->red_row, dimmed(red, undimmed_part)) << 10) |
           (dimmed(green, undimmed_part) << 5) | tinted(setup->blue_row, dimmed(blue, undimmed_part));
}
// The next eight pixels' quantities: two fours, each turned as SSE2's are, side by side.
PIXEL_INLINE void step_pixels(__m128* quantities, __m128 steps, floats* inv_w, floats* u_w, floats* v_w, floats* l_w)
{
    sse2_lanes::floats low[4], high[4];
    sse2_spans::step_pixels(quantities, steps, &low[0], &low[1], &low[2], &low[3]);
    sse2_spans::step_pixels(quantities, steps, &high[0], &high[1], &high[2], &high[3]);
    *inv_w = _mm256_set_m128(high[0], low[0]);
    *u_w = _mm256_set_m128(high[1], low[1]);
    *v_w = _mm256_set_m128(high[2], low[2]);
    *l_w = _mm256_set_m128(high[3], low[3]);
}
// A span of fewer than eight pixels: in lanes of four when it has that many, else one by one.
template <bool filtered, bool dithered, int kind>
void fill_rest(const span_setup* setup, int32_t y, int32_t x, int32_t end, __m128 at, __m128 step)
{
    sse2_spans::fill_span_lanes<filtered, dithered, kind>(setup, y, x, end, at, step);
}

#include "render/span_lanes.inc"

} // namespace avx2_spans
AVX2_FUNCTIONS_END

using span_fill = void (*)(const span_setup*, int32_t, int32_t, int32_t, __m128, __m128);
using span_fill_set = span_fill[2][2][SPAN_KINDS]; // [filtered][dithered][kind]

// Each loop of one width, as one type per combination for fills_of.
template <bool filtered, bool dithered, int kind> struct plain_loop {
    static constexpr span_fill fill = fill_span<filtered, dithered, kind>;
};
template <bool filtered, bool dithered, int kind> struct sse2_loop {
    static constexpr span_fill fill = sse2_spans::fill_span_lanes<filtered, dithered, kind>;
};
template <bool filtered, bool dithered, int kind> struct avx2_loop {
    static constexpr span_fill fill = avx2_spans::fill_span_lanes<filtered, dithered, kind>;
};

template <template <bool, bool, int> class loop> struct fills_of {
    static constexpr span_fill_set fills = {
        {{loop<false, false, 0>::fill, loop<false, false, 1>::fill, loop<false, false, 2>::fill},
         {loop<false, true, 0>::fill, loop<false, true, 1>::fill, loop<false, true, 2>::fill}},
        {{loop<true, false, 0>::fill, loop<true, false, 1>::fill, loop<true, false, 2>::fill},
         {loop<true, true, 0>::fill, loop<true, true, 1>::fill, loop<true, true, 2>::fill}},
    };
};

// One, four or eight pixels at a time.
const span_fill_set* const span_fills[3] = {&fills_of<plain_loop>::fills, &fills_of<sse2_loop>::fills,
                                            &fills_of<avx2_loop>::fills};

span_setup prepare_spans(const texture* tex, uint8_t tint, uint8_t blend, uint16_t rank)
{
    span_setup setup;
    setup.tex = *tex;
    setup.red_row = colour_table_row(colour_tables.red_temperature, tint);
    setup.blue_row = colour_table_row(colour_tables.blue_temperature, tint);
    setup.blend_dim_row = colour_table_row(colour_tables.dimming, blend);
    setup.blend_lum_row = colour_table_row(colour_tables.luminance, blend);
    // A tint past the tables' rows has no folded tables: the plain loops read it as they always did.
    int width = tint >= COLOUR_TABLE_ROWS ? 0 : pixel_loop_lanes == 8 ? 2 : pixel_loop_lanes == 4 ? 1 : 0;
    setup.lit_red = width ? lit_channels.red[tint] : nullptr;
    setup.lit_blue = width ? lit_channels.blue[tint] : nullptr;
    setup.rank = rank;
    int kind = blend != 0 ? SPAN_TRANSLUCENT : rank != 0 ? SPAN_RANKED : SPAN_OPAQUE;
    setup.fill = (*span_fills[width])[TEXTURE_INTERPOLATION != 0][LIGHT_DITHERING != 0][kind];
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
    span_setup setup = prepare_spans(tex, tint, blend, drawing_rank);
    span_between(&setup, y, left, right);
}

void draw_triangle(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a, const screen_vertex* b,
                   const screen_vertex* c)
{
    if (!record_triangle(tex, tint, blend, a, b, c))
        draw_triangle_rows(tex, tint, blend, a, b, c, 0, frame_height, drawing_rank);
}

void draw_triangle_rows(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a,
                        const screen_vertex* b, const screen_vertex* c, int32_t first_row, int32_t end_row,
                        uint16_t rank)
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

    span_setup setup = prepare_spans(tex, tint, blend, rank);
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
