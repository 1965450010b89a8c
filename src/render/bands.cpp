#include "render/bands.h"

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
    BANDS_PER_THREAD = 2, // a thread that is done early takes another band
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

struct band_split {
    int32_t count;
    int32_t rows; // rows per band but the last
};

void draw_band(int32_t band, void* context)
{
    const band_split* split = static_cast<const band_split*>(context);
    int32_t first_row = band * split->rows;
    int32_t end_row = band == split->count - 1 ? frame_height : first_row + split->rows;
    for (int32_t i = 0; i < command_count; ++i)
        draw_command(&commands[i], first_row, end_row);
}

// Draws and forgets what is recorded so far.
void draw_commands()
{
    if (command_count == 0)
        return;
    // Bands of whole 8-row blocks, so that a sky block is never shared.
    int32_t wanted = recording_threads * BANDS_PER_THREAD;
    int32_t blocks = (frame_height + BAND_ROW_MULTIPLE - 1) / BAND_ROW_MULTIPLE;
    int32_t blocks_per_band = max_int(1, (blocks + wanted - 1) / wanted);
    band_split split;
    split.rows = blocks_per_band * BAND_ROW_MULTIPLE;
    split.count = max_int(1, (frame_height + split.rows - 1) / split.rows);
    platform_run_parallel(recording_threads, split.count, draw_band, &split);
    command_count = 0;
}

// The next free command, covering rows first_row ... end_row - 1; null when nothing is recorded
// or the list cannot grow (what it holds is then drawn first, so that the caller may draw at once).
band_command* next_command(band_command_kind kind, int32_t first_row, int32_t end_row)
{
    if (recording_threads == 0)
        return nullptr;
    if (command_count == command_capacity &&
        !heap_grow(&commands, &command_capacity, command_count + 1, command_capacity + COMMAND_GROWTH)) {
        draw_commands();
        if (command_count == command_capacity)
            return nullptr;
    }
    band_command* command = &commands[command_count++];
    command->kind = kind;
    command->first_row = first_row;
    command->end_row = end_row;
    return command;
}

} // namespace

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
    draw_commands();
    recording_threads = 0;
}

int record_sky()
{
    return next_command(BAND_SKY, 0, frame_height) != nullptr;
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
