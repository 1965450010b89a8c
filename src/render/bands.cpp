#include "render/bands.h"

#include <emmintrin.h>
#include <math.h>

#include "core/frame.h"
#include "core/heap.h"
#include "platform/platform.h"
#include "render/draw2d.h"
#include "render/sky.h"

int32_t render_threads = 1;

namespace {

enum band_command_kind : int32_t { BAND_SKY, BAND_TRIANGLE, BAND_LINE, BAND_CIRCLE_OUTLINE };

struct band_command {
    band_command_kind kind;
    int32_t first_row, end_row; // the rows the command can touch: bands outside them skip it
    const texture* tex;
    uint8_t tint, blend;
    uint16_t rank;
    screen_vertex corners[3];
    int32_t x0, y0, x1, y1, radius; // lines: both ends; circles: the centre in x0, y0
    uint16_t colour;
};

enum {
    COMMAND_GROWTH = 1024,
    BANDS_PER_THREAD = 4,
    BAND_ROW_MULTIPLE = 8,
};

band_command* commands;
int32_t command_count;
int32_t command_capacity;
int32_t recording_threads; // 0 while nothing is recorded

int32_t min_int(int32_t a, int32_t b)
{
    return a < b ? a : b;
}
int32_t max_int(int32_t a, int32_t b)
{
    return a > b ? a : b;
}

// The first row whose centre lies at or below sy, clamped into 0 ... frame_height, as the
// rasterizer counts it.
int32_t row_at_or_below(float sy)
{
    float row = ceilf(sy - 0.5f);
    if (!(row > 0.0f))
        return 0;
    return row < static_cast<float>(frame_height) ? static_cast<int32_t>(row) : frame_height;
}

void draw_command(const band_command* command, int32_t first_row, int32_t end_row)
{
    if (command->end_row <= first_row || command->first_row >= end_row)
        return;
    switch (command->kind) {
    case BAND_SKY:
        draw_sky_rows(first_row, end_row);
        break;
    case BAND_TRIANGLE:
        draw_triangle_rows(command->tex, command->tint, command->blend, &command->corners[0], &command->corners[1],
                           &command->corners[2], first_row, end_row, command->rank);
        break;
    case BAND_LINE:
        draw_line_rows(command->x0, command->y0, command->x1, command->y1, command->colour, first_row, end_row);
        break;
    case BAND_CIRCLE_OUTLINE:
        draw_circle_rows(command->x0, command->y0, command->radius, command->colour, 0, first_row, end_row);
        break;
    }
}

// The commands recorded so far are drawn while more are recorded. A batch starts with the
// recording: every thread but the recorder becomes a drawer at once, and the recorder joins them
// when the batch is closed. A drawer takes any band that no other drawer holds and that has
// published commands it has not drawn yet, draws them in the list's order and lets the band go.
// A band's commands are thus drawn by one thread at a time, in order, so nothing changes but
// when a pixel is drawn. The list is moved (to grow it) only between batches.
enum { MAX_BANDS = 128 };

struct alignas(64) band_progress { // a cache line each: drawers on different bands share nothing
    int32_t drawn;                  // the commands drawn into the band; written by its holder only
    int32_t held;                   // a drawer holds the band
};

band_cut split;                   // the bands of the running batch, in 8-row blocks
band_progress progress[MAX_BANDS];
int32_t batch_running;            // the drawers are out on the threads
int32_t published;                // the commands the drawers may draw; stored after the commands themselves
int32_t batch_closed;             // nothing more will be published in the running batch

enum { LOOKS_BEFORE_YIELDING = 64 };

// Draws the band's published commands it has not drawn, unless another drawer holds it; 1 when
// it drew any.
int draw_band_up_to(int32_t band, int32_t ready)
{
    band_progress* p = &progress[band];
    if (__atomic_load_n(&p->drawn, __ATOMIC_ACQUIRE) >= ready || __atomic_exchange_n(&p->held, 1, __ATOMIC_ACQUIRE))
        return 0;
    int32_t first_row = band_start(&split, band) * BAND_ROW_MULTIPLE;
    int32_t end_row = min_int(band_start(&split, band + 1) * BAND_ROW_MULTIPLE, frame_height);
    int32_t i = p->drawn;
    for (; i < ready; ++i)
        draw_command(&commands[i], first_row, end_row);
    __atomic_store_n(&p->drawn, i, __ATOMIC_RELEASE);
    __atomic_store_n(&p->held, 0, __ATOMIC_RELEASE);
    return 1;
}

// One drawer, until the batch is closed and every band has drawn all of it. Drawers start their
// rounds at different bands, so that they seldom reach for the same one.
void drawer(int32_t index, void*)
{
    int32_t idle_looks = 0;
    for (;;) {
        // Closed is read before the count, so a closed batch's count is its last.
        int closed = __atomic_load_n(&batch_closed, __ATOMIC_ACQUIRE);
        int32_t ready = __atomic_load_n(&published, __ATOMIC_ACQUIRE);
        int drew = 0, finished = 1;
        for (int32_t k = 0; k < split.count; ++k) {
            int32_t band = (index + k) % split.count;
            drew |= draw_band_up_to(band, ready);
            finished &= __atomic_load_n(&progress[band].drawn, __ATOMIC_ACQUIRE) >= ready;
        }
        if (closed && finished)
            return;
        if (drew) {
            idle_looks = 0;
        } else if (++idle_looks < LOOKS_BEFORE_YIELDING) {
            _mm_pause(); // caught up with the recording, or every band left is held
        } else {
            platform_yield_thread(); // more threads than processors: let the recorder run
        }
    }
}

// Bands of whole 8-row blocks, so that a sky block is never shared; a few per thread, so that
// the drawers share the work evenly.
void start_batch()
{
    int32_t blocks = (frame_height + BAND_ROW_MULTIPLE - 1) / BAND_ROW_MULTIPLE;
    split = cut_into_bands(blocks, min_int(recording_threads * BANDS_PER_THREAD, MAX_BANDS));
    for (int32_t band = 0; band < split.count; ++band)
        progress[band] = {command_count, 0};
    published = command_count;
    batch_closed = 0;
    batch_running = 1;
    platform_begin_parallel(recording_threads, recording_threads, drawer, nullptr);
}

// Returns once every command recorded so far is drawn.
void finish_batch()
{
    if (!batch_running)
        return;
    __atomic_store_n(&batch_closed, 1, __ATOMIC_RELEASE);
    platform_end_parallel();
    batch_running = 0;
}

// The next free command, covering rows first_row ... end_row - 1; null when nothing is recorded
// or the list cannot grow (what it holds is then drawn and forgotten first, so that the caller
// may draw at once).
band_command* next_command(band_command_kind kind, int32_t first_row, int32_t end_row)
{
    if (recording_threads == 0)
        return nullptr;
    if (command_count == command_capacity) {
        finish_batch();
        if (!heap_grow(&commands, &command_capacity, command_count + 1, command_capacity + COMMAND_GROWTH)) {
            command_count = 0;
            if (command_capacity == 0)
                return nullptr;
        }
    }
    if (!batch_running)
        start_batch();
    band_command* command = &commands[command_count++];
    command->kind = kind;
    command->first_row = first_row;
    command->end_row = end_row;
    return command;
}

// The command just filled in by the recorder goes out to the bands.
void publish_command()
{
    __atomic_store_n(&published, command_count, __ATOMIC_RELEASE);
}

} // namespace

band_cut cut_into_bands(int32_t units, int32_t wanted)
{
    band_cut cut;
    cut.units = max_int(1, (units + wanted - 1) / wanted);
    cut.count = max_int(1, (units + cut.units - 1) / cut.units);
    cut.total = units;
    return cut;
}

int32_t band_start(const band_cut* cut, int32_t band)
{
    return min_int(band * cut->units, cut->total);
}

int32_t render_thread_count(int32_t setting)
{
    return setting > 0 ? setting : platform_processor_count();
}

void begin_band_recording()
{
    command_count = 0;
    recording_threads = render_threads > 1 ? render_threads : 0;
}

void draw_recorded_bands()
{
    finish_batch();
    command_count = 0;
    recording_threads = 0;
}

void release_band_commands()
{
    heap_release(&commands, &command_capacity);
    command_count = 0;
}

int record_sky()
{
    if (!next_command(BAND_SKY, 0, frame_height))
        return 0;
    publish_command();
    return 1;
}

int record_triangle(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex* a, const screen_vertex* b,
                    const screen_vertex* c)
{
    float top = a->sy < b->sy ? a->sy : b->sy;
    top = top < c->sy ? top : c->sy;
    float bottom = a->sy > b->sy ? a->sy : b->sy;
    bottom = bottom > c->sy ? bottom : c->sy;
    int32_t first_row = row_at_or_below(top), end_row = row_at_or_below(bottom);
    if (a->sy != a->sy || b->sy != b->sy || c->sy != c->sy) {
        first_row = 0; // a corner that is not a number: whatever rows the rasterizer makes of it
        end_row = frame_height;
    }
    band_command* command = next_command(BAND_TRIANGLE, first_row, end_row);
    if (!command)
        return 0;
    command->tex = tex;
    command->tint = tint;
    command->blend = blend;
    command->rank = drawing_rank;
    command->corners[0] = *a;
    command->corners[1] = *b;
    command->corners[2] = *c;
    publish_command();
    return 1;
}

int record_line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour)
{
    band_command* command = next_command(BAND_LINE, min_int(y0, y1), max_int(y0, y1) + 1);
    if (!command)
        return 0;
    command->x0 = x0;
    command->y0 = y0;
    command->x1 = x1;
    command->y1 = y1;
    command->colour = colour;
    publish_command();
    return 1;
}

int record_circle_outline(int32_t cx, int32_t cy, int32_t r, uint16_t colour)
{
    band_command* command = next_command(BAND_CIRCLE_OUTLINE, cy - r, cy + r + 1);
    if (!command)
        return 0;
    command->x0 = cx;
    command->y0 = cy;
    command->radius = r;
    command->colour = colour;
    publish_command();
    return 1;
}

void visit_recorded_triangles(void (*visit)(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex corners[3],
                                            void* context),
                              void* context)
{
    for (int32_t i = 0; i < command_count; ++i)
        if (commands[i].kind == BAND_TRIANGLE)
            visit(commands[i].tex, commands[i].tint, commands[i].blend, commands[i].corners, context);
}
