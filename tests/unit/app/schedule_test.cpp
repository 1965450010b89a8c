#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <string>
#include <vector>

#include "app/schedule.h"
#include "core/loop_state.h"

namespace {

// What the schedule did, as a host would see it.
struct host_log {
    int updates = 0;
    int frames = 0;
    int captures_synced = 0;
    int presents = 0;
    std::vector<std::string> titles;
    std::vector<float> alphas;              // render_alpha of each frame
    std::vector<int> updates_before_frame;  // the update count when each frame was drawn
    std::vector<uint8_t> key_seen;          // key_state['W'] as each update saw it
    float tick_dt_scale = 1.0f;             // what the update does to tick_dt (slow motion)
};

host_log* current;

void fake_update()
{
    current->updates += 1;
    current->key_seen.push_back(key_state['W']);
    tick_dt *= current->tick_dt_scale;
}
void fake_render()
{
    current->frames += 1;
    current->alphas.push_back(render_alpha);
    current->updates_before_frame.push_back(current->updates);
}
void fake_sync() { current->captures_synced += 1; }
void fake_present() { current->presents += 1; }
void fake_title(const char* title) { current->titles.push_back(title); }

const loop_hooks hooks = {fake_update, fake_render, fake_sync, fake_present, fake_title};

class schedule_test : public testing::Test {
protected:
    host_log log;
    loop_schedule schedule = {};

    void SetUp() override
    {
        current = &log;
        memset(key_state, 0, sizeof key_state);
        game_time = 0.0f;
        mouse_wheel = mouse_delta_x = mouse_delta_y = 0.0f;
        schedule_start(&schedule, 40, 60);
    }

    // A fake clock that ticks every millisecond, like a busy host loop.
    void run_until(double end, double step = 0.001)
    {
        for (double t = 0.0; t <= end + 1e-12; t += step)
            schedule_run(&schedule, t, &hooks);
    }
};

} // namespace

TEST_F(schedule_test, one_second_gives_40_updates_60_frames_and_the_title)
{
    run_until(0.9995, 0.0005);
    schedule_run(&schedule, 1.0005, &hooks);
    ASSERT_EQ(log.titles.size(), 2u);
    EXPECT_EQ(log.titles[1], "Gloamhold (FPS: 60, UPS: 40)");
    EXPECT_EQ(shown_fps, 60);
    EXPECT_EQ(shown_ups, 40);
}

TEST_F(schedule_test, title_is_written_on_the_first_pass)
{
    schedule_run(&schedule, 0.0, &hooks);
    ASSERT_EQ(log.titles.size(), 1u);
    EXPECT_EQ(log.titles[0], "Gloamhold (FPS: 1, UPS: 1)");
}

TEST_F(schedule_test, nothing_runs_before_it_is_due)
{
    schedule_run(&schedule, 0.0, &hooks);
    schedule_run(&schedule, 0.01, &hooks);
    EXPECT_EQ(log.updates, 1);
    EXPECT_EQ(log.frames, 1);
    EXPECT_EQ(schedule_next_due(&schedule), 1.0 / 60.0);
}

TEST_F(schedule_test, stall_of_two_seconds_runs_80_updates_then_one_frame)
{
    run_until(0.5005);
    int updates = log.updates, frames = log.frames;
    schedule_run(&schedule, 2.5005, &hooks);
    EXPECT_EQ(log.updates - updates, 80);
    EXPECT_EQ(log.frames - frames, 1);
    EXPECT_EQ(log.updates_before_frame.back(), log.updates);
    // Missed frames are dropped: the next frame is due after the stall, not in the past.
    EXPECT_GT(schedule.next_frame_time, 2.5005);
    EXPECT_LE(schedule.next_frame_time, 2.5005 + 1.0 / 60.0);
}

TEST_F(schedule_test, title_catches_up_one_second_per_pass_after_a_stall)
{
    schedule_run(&schedule, 0.0, &hooks);
    schedule_run(&schedule, 3.21, &hooks);
    schedule_run(&schedule, 3.2101, &hooks);
    schedule_run(&schedule, 3.2102, &hooks);
    schedule_run(&schedule, 3.2103, &hooks);
    ASSERT_EQ(log.titles.size(), 4u);
    EXPECT_EQ(log.titles[1], "Gloamhold (FPS: 1, UPS: 128)");
    EXPECT_EQ(log.titles[2], "Gloamhold (FPS: 0, UPS: 0)");
}

TEST_F(schedule_test, render_alpha_is_one_when_the_frame_meets_the_next_update_time)
{
    schedule_run(&schedule, 0.0, &hooks);
    // The frame lands on the time the next update is due, before that update has run.
    double due = nextafter(schedule.next_tick_time, 0.0);
    schedule.next_frame_time = due;
    schedule_run(&schedule, due, &hooks);
    EXPECT_EQ(log.alphas.back(), 1.0f);
    EXPECT_EQ(log.updates, 1);
}

TEST_F(schedule_test, render_alpha_is_never_above_one)
{
    run_until(3.0, 0.0007);
    for (float alpha : log.alphas) {
        EXPECT_LE(alpha, 1.0f);
        EXPECT_GE(alpha, 0.0f);
    }
}

TEST_F(schedule_test, render_alpha_is_the_fraction_of_the_tick_elapsed)
{
    schedule_run(&schedule, 0.0, &hooks);      // update 1; the next is due at 0.025
    schedule.next_frame_time = 0.0175;
    schedule_run(&schedule, 0.0175, &hooks);   // 70 % of the way to 0.025 from 0.0
    EXPECT_NEAR(log.alphas.back(), 0.7f, 1e-6f);
}

TEST_F(schedule_test, pressed_key_is_seen_once_then_held)
{
    schedule_run(&schedule, 0.0, &hooks);
    key_state['W'] = KEY_PRESSED; // the window saw the key go down between updates
    schedule_run(&schedule, 0.0251, &hooks);
    schedule_run(&schedule, 0.0501, &hooks);
    schedule_run(&schedule, 0.0751, &hooks);
    EXPECT_EQ(log.key_seen, std::vector<uint8_t>({KEY_UP, KEY_PRESSED, KEY_HELD, KEY_HELD}));
}

TEST_F(schedule_test, key_released_before_the_update_is_not_seen)
{
    schedule_run(&schedule, 0.0, &hooks);
    key_state['W'] = KEY_PRESSED;
    key_state['W'] = KEY_UP;
    schedule_run(&schedule, 0.0251, &hooks);
    EXPECT_EQ(log.key_seen.back(), KEY_UP);
}

TEST_F(schedule_test, key_code_255_is_not_promoted)
{
    key_state[254] = KEY_PRESSED;
    key_state[255] = KEY_PRESSED;
    schedule_run(&schedule, 0.0, &hooks);
    EXPECT_EQ(key_state[254], KEY_HELD);
    EXPECT_EQ(key_state[255], KEY_PRESSED);
}

TEST_F(schedule_test, wheel_clears_after_each_update_and_deltas_after_each_frame)
{
    mouse_wheel = 2.0f;
    mouse_delta_x = -5.0f;
    mouse_delta_y = 3.0f;
    schedule_run(&schedule, 0.0, &hooks);
    EXPECT_EQ(mouse_wheel, 0.0f);
    EXPECT_EQ(mouse_delta_x, 0.0f);
    EXPECT_EQ(mouse_delta_y, 0.0f);
    EXPECT_EQ(log.captures_synced, 1);
    EXPECT_EQ(log.presents, 1);
}

TEST_F(schedule_test, mouse_deltas_survive_updates_until_a_frame)
{
    schedule_run(&schedule, 0.0, &hooks);
    mouse_delta_x = -4.0f;
    schedule.next_frame_time = 1.0; // keep the frame away
    schedule_run(&schedule, 0.0251, &hooks);
    EXPECT_EQ(log.updates, 2);
    EXPECT_EQ(mouse_delta_x, -4.0f);
}

TEST_F(schedule_test, game_time_advances_by_the_tick_as_the_update_left_it)
{
    log.tick_dt_scale = 0.25f; // slow motion held for the whole run
    run_until(1.0 - 1e-9, 0.001);
    EXPECT_EQ(log.updates, 40);
    EXPECT_NEAR(game_time, 0.25f, 1e-5f);
    EXPECT_EQ(tick_dt, 0.025f * 0.25f);
}

TEST_F(schedule_test, real_time_is_the_clock_passed_in)
{
    schedule_run(&schedule, 1.234, &hooks);
    EXPECT_EQ(real_time, 1.234);
}

TEST_F(schedule_test, zero_updates_per_second_runs_one_update_and_no_more)
{
    schedule_start(&schedule, 0, 60);
    run_until(1.0);
    EXPECT_EQ(log.updates, 1);
    EXPECT_GT(log.frames, 50);
}
