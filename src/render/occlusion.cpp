#include "render/occlusion.h"

#include <emmintrin.h>
#include <math.h>
#include <string.h>

#include "core/heap.h"
#include "platform/platform.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/raster.h"

int32_t occlusion_fine_width;
int32_t occlusion_fine_height;
buffer_viewport occlusion_fine_viewport;
float* occlusion_coarse;
int32_t occlusion_columns;
int32_t occlusion_rows;
buffer_viewport occlusion_coarse_viewport;

namespace {

constexpr float NEAR_Z = 0.01f;
constexpr int32_t OCCLUDER_GROWTH = 1024;
constexpr int32_t BANDS_PER_THREAD = 2; // a thread that is done early takes another band

buffer_viewport centred_square(int32_t width, int32_t height)
{
    float w = static_cast<float>(width);
    float h = static_cast<float>(height);
    float scale = w < h ? w : h;
    return {scale, (w - scale) / 2.0f, (h - scale) / 2.0f};
}

// An occluder vertex: x and y (projected, or in fine-buffer pixels) and 1/z.
struct occluder_vertex {
    float x, y, inv_z;
};

// The first row (or column) whose centre lies at or below (right of) `at`, clamped into 0 ... limit.
int32_t first_centre_at_or_after(float at, int32_t limit)
{
    float index = ceilf(at - 0.5f);
    if (!(index > 0.0f))
        return 0;
    return index < static_cast<float>(limit) ? static_cast<int32_t>(index) : limit;
}

// The pixels of one fine row between two edge points follow the rasterizer's rule: the first is
// floor(x - 0.5) + 1, so a pixel centred exactly on the left end is left out, and the end is
// floor(x - 0.5) + 1 of the right end, so one centred exactly on the right end is drawn. Along the
// row 1/z gains the same slope at every pixel, one addition after another.
struct occluder_span {
    float* row;
    int32_t x, end;
    float inv_z, slope;
};

// The span of row y between two edge points; 0 when it has no pixel.
int occluder_span_of_row(int32_t y, float x_a, float inv_a, float x_b, float inv_b, occluder_span* span)
{
    if (x_a > x_b) {
        float swap_x = x_a, swap_inv = inv_a;
        x_a = x_b;
        inv_a = inv_b;
        x_b = swap_x;
        inv_b = swap_inv;
    }
    float width = x_b - x_a;
    if (width <= 0.0f)
        return 0;
    float fine_width = static_cast<float>(occlusion_fine_width);
    float first = floorf(x_a - 0.5f) + 1.0f;
    first = first > 0.0f ? first : 0.0f;
    float end = floorf(x_b - 0.5f) + 1.0f;
    end = end < fine_width ? end : fine_width;
    if (!(first < end))
        return 0;
    span->slope = (inv_b - inv_a) / width;
    span->inv_z = inv_a + span->slope * (first + 0.5f - x_a);
    span->row = depth_buffer + static_cast<size_t>(y) * static_cast<size_t>(occlusion_fine_width);
    span->x = static_cast<int32_t>(first);
    span->end = static_cast<int32_t>(end);
    return 1;
}

// Spans are passed and stepped by value, so that their fields stay in registers: a store to a row
// could otherwise be taken for a store to a span's fields.
inline void occlude_pixel(occluder_span* span)
{
    if (span->inv_z > span->row[span->x])
        span->row[span->x] = span->inv_z;
    span->inv_z += span->slope;
    ++span->x;
}

void occlude_rest(occluder_span span)
{
    while (span.x < span.end)
        occlude_pixel(&span);
}

// Two rows' spans side by side: each pixel waits for the addition before it, so a row alone
// leaves the processor idle between them; the other row's pixels fill those gaps.
void occlude_spans(occluder_span a, occluder_span b)
{
    while (a.x < a.end && b.x < b.end) {
        occlude_pixel(&a);
        occlude_pixel(&b);
    }
    occlude_rest(a);
    occlude_rest(b);
}

float along(float from, float to, float f)
{
    return from + (to - from) * f;
}

// The scan conversion of draw_triangle, carrying only x and 1/z (linear in screen space), in the
// fine rows first_row ... end_row - 1. Each row is worked out from its own centre, so drawing some
// of the rows gives them exactly as drawing all of them would.
void occlude_triangle(const occluder_vertex* a, const occluder_vertex* b, const occluder_vertex* c, int32_t first_row,
                      int32_t end_row)
{
    const occluder_vertex* v[3] = {a, b, c};
    for (int32_t pass = 0; pass < 3; ++pass) {
        int32_t i = pass == 1 ? 1 : 0; // compare (0,1), (1,2), (0,1): ties keep their order
        if (v[i]->y > v[i + 1]->y) {
            const occluder_vertex* swap = v[i];
            v[i] = v[i + 1];
            v[i + 1] = swap;
        }
    }
    const occluder_vertex* top = v[0];
    const occluder_vertex* middle = v[1];
    const occluder_vertex* bottom = v[2];
    int32_t first = first_centre_at_or_after(top->y, occlusion_fine_height);
    int32_t split = first_centre_at_or_after(middle->y, occlusion_fine_height);
    int32_t last = first_centre_at_or_after(bottom->y, occlusion_fine_height);
    first = first > first_row ? first : first_row;
    last = last < end_row ? last : end_row;
    occluder_span waiting = {}; // none waits while x == end
    for (int32_t y = first; y < last; ++y) {
        float centre = static_cast<float>(y) + 0.5f;
        float f_long = (centre - top->y) / (bottom->y - top->y);
        const occluder_vertex* upper = y < split ? top : middle;
        const occluder_vertex* lower = y < split ? middle : bottom;
        float f_short = (centre - upper->y) / (lower->y - upper->y);
        occluder_span span;
        if (!occluder_span_of_row(y, along(top->x, bottom->x, f_long), along(top->inv_z, bottom->inv_z, f_long),
                                  along(upper->x, lower->x, f_short), along(upper->inv_z, lower->inv_z, f_short),
                                  &span))
            continue;
        if (waiting.x == waiting.end) {
            waiting = span; // the first of a pair waits for the second
            continue;
        }
        occlude_spans(waiting, span);
        waiting = {};
    }
    occlude_rest(waiting);
}

// The projected position (before the viewport) and 1/z of a clipped camera-space vertex.
occluder_vertex project(const clip_vertex* v)
{
    return {v->x * projection_scale / v->z, v->y * projection_scale / v->z, 1.0f / v->z};
}

occluder_vertex to_fine(occluder_vertex p)
{
    const buffer_viewport& vp = occlusion_fine_viewport;
    return {(p.x + 0.5f) * vp.scale + vp.offset_x, (p.y + 0.5f) * vp.scale + vp.offset_y, p.inv_z};
}

// (b.y - a.y)(c.x - a.x) - (c.y - a.y)(b.x - a.x) of the projected points, as the world pass
// culls: positive for the winding that faces the eye.
float facing(const occluder_vertex* a, const occluder_vertex* b, const occluder_vertex* c)
{
    return (b->y - a->y) * (c->x - a->x) - (c->y - a->y) * (b->x - a->x);
}

// With more than one thread, the frame's occluder triangles are listed in fine-buffer
// coordinates as they come, and drawn at the reduction in bands of fine rows, each band by one
// thread from the whole list: a fine pixel sees the triangles in their order whatever the number
// of threads, so the buffers come out the same.
struct occluder_triangle {
    occluder_vertex corners[3];
};

occluder_triangle* listed;
int32_t listed_count;
int32_t listed_capacity;

void occlude_listed(int32_t first_row, int32_t end_row)
{
    for (int32_t i = 0; i < listed_count; ++i) {
        const occluder_vertex* corners = listed[i].corners;
        occlude_triangle(&corners[0], &corners[1], &corners[2], first_row, end_row);
    }
}

// Draws an occluder triangle, or lists it for the bands; when the list cannot grow, what it holds
// is drawn first, so the order stays.
void occlude_or_list(const occluder_vertex* a, const occluder_vertex* b, const occluder_vertex* c)
{
    if (render_threads > 1 && (listed_count < listed_capacity ||
                               heap_grow(&listed, &listed_capacity, listed_count + 1, listed_capacity + OCCLUDER_GROWTH))) {
        listed[listed_count++] = {{*a, *b, *c}};
        return;
    }
    occlude_listed(0, occlusion_fine_height);
    listed_count = 0;
    occlude_triangle(a, b, c, 0, occlusion_fine_height);
}

// The coarse rows first_row ... end_row - 1, each the 4x4 reduction of four fine rows.
void reduce_coarse_rows(int32_t first_row, int32_t end_row)
{
    const size_t stride = static_cast<size_t>(occlusion_fine_width);
    const __m128 zero = _mm_setzero_ps();
    for (int32_t r = first_row; r < end_row; ++r) {
        const float* rows = depth_buffer + static_cast<size_t>(4 * r) * stride;
        for (int32_t c = 0; c < occlusion_columns; ++c) {
            const float* cell = rows + static_cast<size_t>(4 * c);
            __m128 row0 = _mm_loadu_ps(cell);
            __m128 row1 = _mm_loadu_ps(cell + stride);
            __m128 row2 = _mm_loadu_ps(cell + 2 * stride);
            __m128 row3 = _mm_loadu_ps(cell + 3 * stride);
            __m128 empty = _mm_or_ps(_mm_or_ps(_mm_cmpeq_ps(row0, zero), _mm_cmpeq_ps(row1, zero)),
                                     _mm_or_ps(_mm_cmpeq_ps(row2, zero), _mm_cmpeq_ps(row3, zero)));
            float value = 0.0f; // one pixel without an occluder: the cell hides nothing
            if (!_mm_movemask_ps(empty)) {
                // minps(a, b) is a < b ? a : b, so a value that is not a number is passed over
                // (the running minimum starts at infinity), whatever order the 16 come in.
                __m128 farthest = _mm_min_ps(row0, _mm_set1_ps(HUGE_VALF));
                farthest = _mm_min_ps(row1, farthest);
                farthest = _mm_min_ps(row2, farthest);
                farthest = _mm_min_ps(row3, farthest);
                farthest = _mm_min_ps(_mm_shuffle_ps(farthest, farthest, _MM_SHUFFLE(1, 0, 3, 2)), farthest);
                farthest = _mm_min_ps(_mm_shuffle_ps(farthest, farthest, _MM_SHUFFLE(2, 3, 0, 1)), farthest);
                value = _mm_cvtss_f32(farthest);
            }
            occlusion_coarse[static_cast<size_t>(r * occlusion_columns + c)] = value;
        }
    }
}

// One band: its listed occluders, the reduction of its coarse rows, then its fine rows cleared.
// The last band also clears the fine rows below the last whole coarse row.
void reduce_band(int32_t band, void* context)
{
    const band_cut* bands = static_cast<const band_cut*>(context);
    int32_t first_coarse = band_start(bands, band);
    int32_t end_coarse = band_start(bands, band + 1);
    int32_t first_fine = 4 * first_coarse;
    int32_t end_fine = band == bands->count - 1 ? occlusion_fine_height : 4 * end_coarse;
    occlude_listed(first_fine, end_fine);
    reduce_coarse_rows(first_coarse, end_coarse);
    size_t stride = static_cast<size_t>(occlusion_fine_width);
    memset(depth_buffer + static_cast<size_t>(first_fine) * stride, 0,
           static_cast<size_t>(end_fine - first_fine) * stride * sizeof(float));
}

} // namespace

int occlusion_buffers_create()
{
    int32_t columns = frame_width / 8;
    int32_t rows = frame_height / 8;
    size_t bytes = static_cast<size_t>(columns) * static_cast<size_t>(rows) * sizeof(float);
    void* block = heap_resize(occlusion_coarse, bytes > 0 ? bytes : sizeof(float));
    if (!block)
        return 0;
    occlusion_coarse = static_cast<float*>(block);
    memset(occlusion_coarse, 0, bytes);
    occlusion_columns = columns;
    occlusion_rows = rows;
    occlusion_coarse_viewport = centred_square(columns, rows);
    occlusion_fine_width = frame_width / 2;
    occlusion_fine_height = frame_height / 2;
    occlusion_fine_viewport = centred_square(occlusion_fine_width, occlusion_fine_height);
    return 1;
}

void rasterize_occluders(const model* m, const placement* place)
{
    for (int32_t g = 0; g < m->occluder_count; ++g) {
        const model_occluder* group = &m->occluders[g];
        for (int32_t t = group->first; t < group->end; ++t) {
            const model_triangle* triangle = &m->occlusion_triangles[t];
            clip_vertex polygon[CLIP_CAPACITY] = {};
            for (int32_t k = 0; k < 3; ++k) {
                float camera[3];
                point_to_camera(placement_to_world_point(place, m->points[triangle->points[k]]), camera);
                polygon[k].x = camera[0];
                polygon[k].y = camera[1];
                polygon[k].z = camera[2];
            }
            int32_t count = clip_triangle_near(polygon, NEAR_Z);
            occluder_vertex projected[CLIP_CAPACITY], fine[CLIP_CAPACITY];
            for (int32_t k = 0; k < count; ++k) {
                projected[k] = project(&polygon[k]);
                fine[k] = to_fine(projected[k]);
            }
            for (int32_t k = 1; k + 1 < count; ++k) {
                if (facing(&projected[0], &projected[k], &projected[k + 1]) <= 0.0f)
                    continue; // occluders are one-sided
                occlude_or_list(&fine[0], &fine[k], &fine[k + 1]);
            }
        }
    }
}

void reduce_occlusion_buffer()
{
    int32_t threads = render_threads > 1 ? render_threads : 1;
    band_cut bands = cut_into_bands(occlusion_rows, threads * BANDS_PER_THREAD);
    platform_run_parallel(threads, bands.count, reduce_band, &bands);
    listed_count = 0;
}

void release_occluder_list()
{
    heap_release(&listed, &listed_capacity);
    listed_count = 0;
}

int box_occluded(const aabb* box)
{
    const buffer_viewport& vp = occlusion_coarse_viewport;
    float min_x = 0.0f, max_x = 0.0f, min_y = 0.0f, max_y = 0.0f, nearest = 0.0f;
    for (int32_t k = 0; k < 8; ++k) {
        vec3 corner = aabb_corner(*box, k);
        float world[3] = {corner.x, corner.y, corner.z};
        float p[3];
        camera_transform(world, p);
        if (p[2] < NEAR_Z)
            return 0; // reaches behind the eye: never hidden
        float x = p[0] * projection_scale / p[2];
        float y = p[1] * projection_scale / p[2];
        if (k == 0) {
            min_x = max_x = x;
            min_y = max_y = y;
            nearest = p[2];
            continue;
        }
        min_x = x < min_x ? x : min_x;
        max_x = x > max_x ? x : max_x;
        min_y = y < min_y ? y : min_y;
        max_y = y > max_y ? y : max_y;
        nearest = p[2] < nearest ? p[2] : nearest;
    }
    // Cut toward zero into the grid; clamped as floats first so that nothing overflows.
    auto cell = [](float at, int32_t count) {
        float high = static_cast<float>(count);
        at = at < -1.0f ? -1.0f : at > high ? high : at;
        return static_cast<int32_t>(at);
    };
    int32_t row0 = cell((min_y + 0.5f) * vp.scale + vp.offset_y, occlusion_rows);
    int32_t row1 = cell((max_y + 0.5f) * vp.scale + vp.offset_y, occlusion_rows);
    int32_t col0 = cell((min_x + 0.5f) * vp.scale + vp.offset_x, occlusion_columns);
    int32_t col1 = cell((max_x + 0.5f) * vp.scale + vp.offset_x, occlusion_columns);
    row0 = row0 > 0 ? row0 : 0;
    col0 = col0 > 0 ? col0 : 0;
    row1 = row1 < occlusion_rows - 1 ? row1 : occlusion_rows - 1;
    col1 = col1 < occlusion_columns - 1 ? col1 : occlusion_columns - 1;
    if (row0 > row1)
        return 1;
    float needed = 1.0f / (nearest - 1e-6f);
    for (int32_t r = row0; r <= row1; ++r)
        for (int32_t c = col0; c <= col1; ++c)
            if (occlusion_coarse[static_cast<size_t>(r * occlusion_columns + c)] < needed)
                return 0; // an open cell, or its farthest occluder lies beyond the box's nearest corner
    return 1;
}
