#include "app/schedule.h"

#include "core/loop_state.h"
#include "core/text.h"

void schedule_start(loop_schedule* schedule, int32_t updates_per_second, int32_t frames_per_second)
{
    schedule->tick_length = 1.0 / updates_per_second;
    schedule->frame_length = 1.0 / frames_per_second;
    schedule->next_tick_time = 0.0;
    schedule->next_frame_time = 0.0;
    schedule->next_title_time = 0.0;
    schedule->tick_count = 0;
    schedule->frame_count = 0;
}

static void run_due_updates(loop_schedule* schedule, double now, const loop_hooks* hooks)
{
    // No cap on the number of updates: after a stall every missed update runs before anything is drawn.
    while (now >= schedule->next_tick_time) {
        tick_dt = static_cast<float>(schedule->tick_length);
        schedule->next_tick_time += schedule->tick_length;
        hooks->update();
        schedule->tick_count += 1;
        promote_pressed_keys();
        mouse_wheel = 0.0f;
        hooks->sync_mouse_capture();
        game_time += tick_dt; // as the update left it: slow motion slows the clock too
    }
}

static void run_due_frame(loop_schedule* schedule, double now, const loop_hooks* hooks)
{
    if (now < schedule->next_frame_time)
        return;
    while (schedule->next_frame_time <= now)
        schedule->next_frame_time += schedule->frame_length;
    double alpha = 1.0 - (schedule->next_tick_time - now) / schedule->tick_length;
    render_alpha = alpha > 1.0 ? 1.0f : static_cast<float>(alpha);
    hooks->render();
    schedule->frame_count += 1;
    hooks->present();
    mouse_delta_x = 0.0f;
    mouse_delta_y = 0.0f;
}

static void run_due_title(loop_schedule* schedule, double now, const loop_hooks* hooks)
{
    if (now < schedule->next_title_time)
        return;
    shown_ups = schedule->tick_count;
    shown_fps = schedule->frame_count;
    // Once per pass: after a long stall the title catches up over consecutive passes.
    schedule->next_title_time += 1.0;
    char title[TITLE_CAPACITY];
    string_printf(title, sizeof title, "Gloamhold (FPS: %d, UPS: %d)", schedule->frame_count, schedule->tick_count);
    hooks->set_title(title);
    schedule->tick_count = 0;
    schedule->frame_count = 0;
}

void schedule_run(loop_schedule* schedule, double now, const loop_hooks* hooks)
{
    real_time = now;
    run_due_updates(schedule, now, hooks);
    run_due_frame(schedule, now, hooks);
    run_due_title(schedule, now, hooks);
}

double schedule_next_due(const loop_schedule* schedule)
{
    double due = schedule->next_tick_time;
    if (schedule->next_frame_time < due)
        due = schedule->next_frame_time;
    if (schedule->next_title_time < due)
        due = schedule->next_title_time;
    return due;
}
