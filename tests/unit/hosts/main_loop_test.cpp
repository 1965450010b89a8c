// The main loop with a fake host: a clock that the test moves, input that says when to end, and a
// log of every hook in the order the loop called it.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

#include "core/loop_state.h"
#include "core/settings.h"
#include "hosts/main_loop.h"

namespace {

struct wait_call {
    double due;
    double now;
};

struct fake_host {
    std::vector<std::string> calls;
    int passes_before_quit = 1000000; // pump_input says "end" on the pass after this many
    double end_at = 1e9;              // ... or once the clock has reached this time
    int passes = 0;
    int start_succeeds = 1;
    double now = 0.0;
    double update_takes = 0.0;     // seconds the clock moves during each update
    int wait_moves_clock = 1;      // 1: the wait lets the clock reach `due`, as a virtual clock does
    std::vector<wait_call> waits;
    std::vector<double> next_ticks_seen; // the schedule's next update time at each pump
    int updates = 0;
    int frames = 0;
};

fake_host* host;

int fake_pump_input(const loop_schedule* schedule)
{
    host->calls.push_back("pump");
    host->next_ticks_seen.push_back(schedule->next_tick_time);
    if (host->passes >= host->passes_before_quit || host->now >= host->end_at)
        return 0;
    host->passes += 1;
    return 1;
}
int fake_start()
{
    host->calls.push_back("start");
    return host->start_succeeds;
}
double fake_clock()
{
    host->calls.push_back("clock");
    return host->now;
}
void fake_wait_until(double due, double now)
{
    host->calls.push_back("wait");
    host->waits.push_back(wait_call{due, now});
    if (host->wait_moves_clock)
        host->now = due;
}
void fake_update()
{
    host->calls.push_back("update");
    host->updates += 1;
    host->now += host->update_takes;
}
void fake_render()
{
    host->calls.push_back("render");
    host->frames += 1;
}
void fake_sync_mouse_capture() {}
void fake_present() { host->calls.push_back("present"); }
void fake_set_title(const char*) { host->calls.push_back("title"); }

const main_loop_hooks hooks_with_start = {
    fake_pump_input, fake_start, fake_clock, fake_wait_until,
    {fake_update, fake_render, fake_sync_mouse_capture, fake_present, fake_set_title}, nullptr};

const main_loop_hooks hooks_started_before = {
    fake_pump_input, nullptr, fake_clock, fake_wait_until,
    {fake_update, fake_render, fake_sync_mouse_capture, fake_present, fake_set_title}, nullptr};

class main_loop_test : public testing::Test {
protected:
    fake_host fake;
    int32_t saved_ups = UPS;
    int32_t saved_fps = FPS;

    void SetUp() override
    {
        host = &fake;
        UPS = 40;
        FPS = 60;
        memset(key_state, 0, sizeof key_state);
        game_time = 0.0f;
    }

    void TearDown() override
    {
        UPS = saved_ups;
        FPS = saved_fps;
        host = nullptr;
    }
};

} // namespace

TEST_F(main_loop_test, the_first_pass_takes_input_then_starts_the_game_then_reads_the_clock)
{
    fake.passes_before_quit = 1;
    main_loop_run(&hooks_with_start);
    std::vector<std::string> expected = {"pump", "start", "clock", "update", "render", "present", "title",
                                         "clock", "wait", "pump"};
    EXPECT_EQ(fake.calls, expected);
}

TEST_F(main_loop_test, the_game_starts_once_however_many_passes_run)
{
    fake.passes_before_quit = 5;
    main_loop_run(&hooks_with_start);
    int starts = 0;
    for (const std::string& call : fake.calls)
        starts += call == "start";
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(fake.waits.size(), 5u);
}

TEST_F(main_loop_test, a_failed_start_ends_the_loop_before_any_update_or_frame)
{
    fake.start_succeeds = 0;
    main_loop_run(&hooks_with_start);
    std::vector<std::string> expected = {"pump", "start"};
    EXPECT_EQ(fake.calls, expected);
}

TEST_F(main_loop_test, input_that_ends_the_program_ends_the_loop_before_the_game_starts)
{
    fake.passes_before_quit = 0;
    main_loop_run(&hooks_with_start);
    std::vector<std::string> expected = {"pump"};
    EXPECT_EQ(fake.calls, expected);
}

TEST_F(main_loop_test, a_host_that_started_the_game_itself_runs_the_schedule_on_the_first_pass)
{
    fake.passes_before_quit = 1;
    main_loop_run(&hooks_started_before);
    ASSERT_GE(fake.calls.size(), 3u);
    EXPECT_EQ(fake.calls[0], "pump");
    EXPECT_EQ(fake.calls[1], "clock");
    EXPECT_EQ(fake.calls[2], "update");
    EXPECT_EQ(fake.updates, 1);
    EXPECT_EQ(fake.frames, 1);
}

TEST_F(main_loop_test, the_wait_is_for_the_next_due_time_measured_after_the_pass)
{
    fake.passes_before_quit = 1;
    fake.update_takes = 0.004; // the clock moves while the update runs
    fake.wait_moves_clock = 0;
    main_loop_run(&hooks_with_start);
    ASSERT_EQ(fake.waits.size(), 1u);
    EXPECT_EQ(fake.waits[0].due, 1.0 / 60.0) << "the frame after the first update is due first";
    EXPECT_EQ(fake.waits[0].now, 0.004);
}

TEST_F(main_loop_test, the_pump_sees_when_the_schedule_runs_its_next_update)
{
    fake.passes_before_quit = 3;
    main_loop_run(&hooks_started_before);
    ASSERT_EQ(fake.next_ticks_seen.size(), 4u);
    EXPECT_EQ(fake.next_ticks_seen[0], 0.0) << "the first update is due at once";
    EXPECT_EQ(fake.next_ticks_seen[1], 1.0 / 40.0);
    EXPECT_EQ(fake.next_ticks_seen[2], 1.0 / 40.0) << "the pass at 1/60 s drew a frame and ran no update";
    EXPECT_EQ(fake.next_ticks_seen[3], 2.0 / 40.0);
}

TEST_F(main_loop_test, a_clock_that_waits_until_each_due_time_runs_every_update_and_frame_due)
{
    fake.end_at = 0.51; // passes run at the due times up to 0.5 s; the next comes at 0.5167 s
    main_loop_run(&hooks_started_before);
    EXPECT_EQ(fake.updates, 21) << "updates at 0, 1/40 s, ... 20/40 s";
    EXPECT_EQ(fake.frames, 31) << "frames at 0, 1/60 s, ... 30/60 s";
    EXPECT_EQ(fake.waits.size(), static_cast<size_t>(fake.passes));
}

TEST_F(main_loop_test, the_loop_reads_the_update_and_frame_rates_from_the_settings)
{
    UPS = 10;
    FPS = 20;
    fake.passes_before_quit = 1;
    main_loop_run(&hooks_started_before);
    ASSERT_EQ(fake.waits.size(), 1u);
    EXPECT_EQ(fake.waits[0].due, 1.0 / 20.0);
}

TEST(main_loop_sleep, leaves_the_last_millisecond_to_the_loop)
{
    EXPECT_EQ(main_loop_sleep_milliseconds(0.010, 0.0), 9u);
}

TEST(main_loop_sleep, cuts_to_whole_milliseconds)
{
    EXPECT_EQ(main_loop_sleep_milliseconds(0.0167, 0.0), 15u);
}

TEST(main_loop_sleep, does_not_sleep_when_less_than_two_milliseconds_are_left)
{
    EXPECT_EQ(main_loop_sleep_milliseconds(0.0019, 0.0), 0u);
    EXPECT_EQ(main_loop_sleep_milliseconds(1.0, 1.0), 0u);
}

TEST(main_loop_sleep, does_not_sleep_when_the_due_time_has_passed)
{
    EXPECT_EQ(main_loop_sleep_milliseconds(0.5, 0.75), 0u);
}

TEST(main_loop_sleep, sleeps_at_most_a_second_at_a_time)
{
    EXPECT_EQ(main_loop_sleep_milliseconds(5.0, 0.0), 1000u);
    EXPECT_EQ(main_loop_sleep_milliseconds(1.0015, 0.0), 1000u);
}

namespace {

std::vector<double> passes_noted;

void note_pass(double now)
{
    passes_noted.push_back(now);
    host->calls.push_back("before pass");
}

const main_loop_hooks hooks_noting_passes = {
    fake_pump_input, nullptr, fake_clock, fake_wait_until,
    {fake_update, fake_render, fake_sync_mouse_capture, fake_present, fake_set_title}, note_pass};

} // namespace

TEST_F(main_loop_test, passes_with_something_to_do_are_noted_with_their_time_before_they_run)
{
    passes_noted.clear();
    fake.end_at = 0.06;
    main_loop_run(&hooks_noting_passes);
    std::vector<double> expected = {0.0, 1.0 / 60.0, 1.0 / 40.0, 2.0 / 60.0, 2.0 / 40.0};
    EXPECT_EQ(passes_noted, expected);
    ASSERT_GE(fake.calls.size(), 4u);
    EXPECT_EQ(fake.calls[1], "clock");
    EXPECT_EQ(fake.calls[2], "before pass") << "noted before its update";
    EXPECT_EQ(fake.calls[3], "update");
}

TEST_F(main_loop_test, a_pass_woken_early_with_nothing_due_is_not_noted)
{
    passes_noted.clear();
    fake.passes_before_quit = 3;
    fake.wait_moves_clock = 0; // woken by input before anything is due: the clock stays at 0
    main_loop_run(&hooks_noting_passes);
    EXPECT_EQ(passes_noted, std::vector<double>{0.0}) << "only the first pass ran anything";
}
