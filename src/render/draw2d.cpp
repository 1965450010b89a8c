#include "render/draw2d.h"

#include <math.h>
#include <stdlib.h>

#include "render/bands.h"
#include "render/frame.h"

static int32_t clamp_int(int32_t value, int32_t low, int32_t high)
{
    return value < low ? low : value > high ? high : value;
}

// Liang-Barsky on the float values of the ends, boundaries in the order left, right, top, bottom.
int clip_line_to_rect(int32_t* x0, int32_t* y0, int32_t* x1, int32_t* y1, int32_t xmin, int32_t ymin, int32_t xmax,
                      int32_t ymax)
{
    float sx = static_cast<float>(*x0);
    float sy = static_cast<float>(*y0);
    float dx = static_cast<float>(*x1) - sx;
    float dy = static_cast<float>(*y1) - sy;
    const float p[4] = {-dx, dx, -dy, dy};
    const float q[4] = {sx - static_cast<float>(xmin), static_cast<float>(xmax) - sx, sy - static_cast<float>(ymin),
                        static_cast<float>(ymax) - sy};
    float t0 = 0.0f;
    float t1 = 1.0f;
    for (int32_t i = 0; i < 4; ++i) {
        if (p[i] == 0.0f) {
            if (q[i] < 0.0f)
                return 0; // parallel to this boundary and outside it
            continue;
        }
        float t = q[i] / p[i];
        if (p[i] < 0.0f) {
            if (t > t0)
                t0 = t;
        } else if (t < t1) {
            t1 = t;
        }
        if (t0 > t1)
            return 0;
    }
    // roundf rounds halves away from zero.
    int32_t start_x = *x0;
    int32_t start_y = *y0;
    *x0 = clamp_int(start_x + static_cast<int32_t>(roundf(t0 * dx)), xmin, xmax);
    *y0 = clamp_int(start_y + static_cast<int32_t>(roundf(t0 * dy)), ymin, ymax);
    *x1 = clamp_int(start_x + static_cast<int32_t>(roundf(t1 * dx)), xmin, xmax);
    *y1 = clamp_int(start_y + static_cast<int32_t>(roundf(t1 * dy)), ymin, ymax);
    return 1;
}

// Lines and outlines drawn by layouts made for 640 x 480 (the inventory box, the item bounds) may
// reach past a smaller frame: pixels outside it are dropped.
static bool inside_frame(int32_t x, int32_t y)
{
    return x >= 0 && y >= 0 && x < frame_width && y < frame_height;
}

static void plot_on_top(int32_t x, int32_t y, uint16_t colour)
{
    if (!inside_frame(x, y))
        return;
    size_t i = static_cast<size_t>(y) * static_cast<size_t>(frame_width) + static_cast<size_t>(x);
    color_buffer[i] = colour;
    depth_buffer[i] = DEPTH_ON_TOP;
}

static void plot(int32_t x, int32_t y, uint16_t colour)
{
    if (!inside_frame(x, y))
        return;
    color_buffer[static_cast<size_t>(y) * static_cast<size_t>(frame_width) + static_cast<size_t>(x)] = colour;
}

void draw_line(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour)
{
    if (!record_line(x0, y0, x1, y1, colour))
        draw_line_rows(x0, y0, x1, y1, colour, 0, frame_height);
}

void draw_line_rows(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour, int32_t first_row,
                    int32_t end_row)
{
    int32_t dx = abs(x1 - x0);
    int32_t dy = abs(y1 - y0);
    int32_t step_x = x0 < x1 ? 1 : -1;
    int32_t step_y = y0 < y1 ? 1 : -1;
    int32_t err = dx - dy;
    for (;;) {
        if (y0 >= first_row && y0 < end_row)
            plot_on_top(x0, y0, colour);
        if (x0 == x1 && y0 == y1)
            return;
        int32_t twice = 2 * err;
        if (twice >= -dy) {
            err -= dy;
            x0 += step_x;
        }
        if (twice <= dx) {
            err += dx;
            y0 += step_y;
        }
    }
}

void draw_rect_outline(int32_t x0, int32_t y0, int32_t x1, int32_t y1, uint16_t colour)
{
    for (int32_t x = x0; x <= x1; ++x) {
        plot(x, y0, colour);
        plot(x, y1, colour);
    }
    for (int32_t y = y0; y <= y1; ++y) {
        plot(x0, y, colour);
        plot(x1, y, colour);
    }
}

// One horizontal chord of a filled circle, clipped to the frame.
static void draw_chord(int32_t x0, int32_t x1, int32_t y, uint16_t colour)
{
    int32_t y1 = y;
    if (clip_line_to_rect(&x0, &y, &x1, &y1, 0, 0, frame_width - 1, frame_height - 1))
        draw_line(x0, y, x1, y1, colour);
}

void draw_circle(int32_t cx, int32_t cy, int32_t r, uint16_t colour, int filled)
{
    if (filled || !record_circle_outline(cx, cy, r, colour))
        draw_circle_rows(cx, cy, r, colour, filled, 0, frame_height);
}

void draw_circle_rows(int32_t cx, int32_t cy, int32_t r, uint16_t colour, int filled, int32_t first_row,
                      int32_t end_row)
{
    if (r < 0)
        return;
    // Outline pixels outside the frame or the rows are skipped; chords are lines, which skip them.
    auto plot_inside = [first_row, end_row, colour](int32_t px, int32_t py) {
        if (py >= first_row && py < end_row)
            plot(px, py, colour);
    };
    int32_t x = 0;
    int32_t y = r;
    int32_t d = 3 - 2 * r;
    while (x <= y) {
        if (filled) {
            draw_chord(cx - x, cx + x, cy + y, colour);
            draw_chord(cx - x, cx + x, cy - y, colour);
            draw_chord(cx - y, cx + y, cy + x, colour);
            draw_chord(cx - y, cx + y, cy - x, colour);
        } else {
            plot_inside(cx + x, cy + y);
            plot_inside(cx - x, cy + y);
            plot_inside(cx + x, cy - y);
            plot_inside(cx - x, cy - y);
            plot_inside(cx + y, cy + x);
            plot_inside(cx - y, cy + x);
            plot_inside(cx + y, cy - x);
            plot_inside(cx - y, cy - x);
        }
        if (d < 0) {
            d += 4 * x + 6;
        } else {
            d += 4 * (x - y) + 10;
            y -= 1;
        }
        x += 1;
    }
}

void fill_circle(int32_t cx, int32_t cy, int32_t r, uint16_t colour)
{
    draw_circle(cx, cy, r, colour, 1);
}

void draw_circle_outline(int32_t cx, int32_t cy, int32_t r, uint16_t colour)
{
    draw_circle(cx, cy, r, colour, 0);
}
