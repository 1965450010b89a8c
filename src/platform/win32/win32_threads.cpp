// The renderer's worker threads in the Windows game: Win32 threads waiting on a condition variable.
#include "platform/platform.h"

#include <windows.h>

namespace {

enum { MAX_WORKERS = 63 };

// One batch of tasks. Tasks are handed out one by one under the lock, so a worker that finishes
// early takes the next instead of waiting for a slow one.
struct parallel_job {
    void (*task)(int32_t index, void* context);
    void* context;
    int32_t count;
    int32_t next;       // the next task to hand out
    int32_t unfinished; // tasks handed out or waiting, not yet finished
    int32_t helpers;    // workers 0 ... helpers - 1 take part
};

SRWLOCK job_lock = SRWLOCK_INIT;
CONDITION_VARIABLE job_posted = CONDITION_VARIABLE_INIT;
CONDITION_VARIABLE job_finished = CONDITION_VARIABLE_INIT;
parallel_job job;
uint32_t job_number; // which batch is posted; a worker that has seen it waits for the next
int32_t workers_started;

// Runs tasks until none is left to hand out; entered and left with the lock held.
void take_tasks()
{
    while (job.next < job.count) {
        int32_t index = job.next++;
        ReleaseSRWLockExclusive(&job_lock);
        job.task(index, job.context);
        AcquireSRWLockExclusive(&job_lock);
        if (--job.unfinished == 0)
            WakeAllConditionVariable(&job_finished);
    }
}

DWORD WINAPI worker_main(LPVOID argument)
{
    int32_t worker = static_cast<int32_t>(reinterpret_cast<intptr_t>(argument));
    uint32_t seen = 0;
    AcquireSRWLockExclusive(&job_lock);
    for (;;) {
        while (job_number == seen)
            SleepConditionVariableSRW(&job_posted, &job_lock, INFINITE, 0);
        seen = job_number;
        if (worker < job.helpers)
            take_tasks();
    }
    return 0;
}

// With the lock held: up to `wanted` workers running; 0 when some could not be started.
int start_workers(int32_t wanted)
{
    while (workers_started < wanted && workers_started < MAX_WORKERS) {
        void* index = reinterpret_cast<void*>(static_cast<intptr_t>(workers_started));
        HANDLE thread = CreateThread(nullptr, 0, worker_main, index, 0, nullptr);
        if (!thread)
            return 0;
        CloseHandle(thread);
        ++workers_started;
    }
    return workers_started >= wanted;
}

} // namespace

int32_t platform_processor_count()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors > 0 ? static_cast<int32_t>(info.dwNumberOfProcessors) : 1;
}

int platform_run_parallel(int32_t threads, int32_t count, void (*task)(int32_t index, void* context), void* context)
{
    AcquireSRWLockExclusive(&job_lock);
    int all_started = start_workers(threads - 1);
    int32_t helpers = threads - 1 < workers_started ? threads - 1 : workers_started;
    job = {task, context, count, 0, count, helpers > 0 ? helpers : 0};
    if (job.helpers > 0) {
        ++job_number;
        WakeAllConditionVariable(&job_posted);
    }
    take_tasks();
    while (job.unfinished > 0)
        SleepConditionVariableSRW(&job_finished, &job_lock, INFINITE, 0);
    ReleaseSRWLockExclusive(&job_lock);
    return all_started;
}
