#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/platform.h"

namespace {

struct task_counts {
    std::vector<std::atomic<int>> runs;
    explicit task_counts(int32_t count) : runs(static_cast<size_t>(count)) {}
};

void count_run(int32_t index, void* context)
{
    static_cast<task_counts*>(context)->runs[static_cast<size_t>(index)]++;
}

} // namespace

TEST(platform_run_parallel, every_task_runs_exactly_once_whatever_the_threads)
{
    for (int32_t threads = 1; threads <= 5; ++threads) {
        for (int32_t count : {0, 1, 2, 7, 64}) {
            task_counts counts(count);
            EXPECT_EQ(platform_run_parallel(threads, count, count_run, &counts), 1);
            for (int32_t i = 0; i < count; ++i)
                EXPECT_EQ(counts.runs[static_cast<size_t>(i)].load(), 1)
                    << "task " << i << " of " << count << " with " << threads << " threads";
        }
    }
}

TEST(platform_run_parallel, returns_after_the_last_task_has_finished)
{
    for (int32_t round = 0; round < 50; ++round) {
        task_counts counts(16);
        platform_run_parallel(3, 16, count_run, &counts);
        int32_t finished = 0;
        for (auto& runs : counts.runs)
            finished += runs.load();
        EXPECT_EQ(finished, 16);
    }
}

// Tasks handed out by platform_begin_parallel may wait for what the caller does before
// platform_end_parallel: here each waits for the caller's go, which it gives only after the begin.
namespace {

struct waiting_tasks {
    std::atomic<int> go{0};
    std::atomic<int> finished{0};
};

void wait_for_go(int32_t, void* context)
{
    waiting_tasks* tasks = static_cast<waiting_tasks*>(context);
    while (!tasks->go.load())
        platform_yield_thread();
    tasks->finished++;
}

} // namespace

TEST(platform_begin_parallel, tasks_may_wait_for_the_caller_until_the_end)
{
    for (int32_t threads = 1; threads <= 4; ++threads) {
        waiting_tasks tasks;
        platform_begin_parallel(threads, 6, wait_for_go, &tasks);
        EXPECT_EQ(tasks.finished.load(), 0) << "nothing can finish before the go";
        tasks.go = 1;
        EXPECT_EQ(platform_end_parallel(), 1);
        EXPECT_EQ(tasks.finished.load(), 6) << threads << " threads";
    }
}

TEST(platform_processor_count, is_at_least_one)
{
    EXPECT_GE(platform_processor_count(), 1);
}
