// The worker pool's lock, condition variables and threads in the Windows game: an SRW lock, Win32
// condition variables and Win32 threads.
#include "platform/platform.h"
#include "platform/worker_threads.h"

#include <windows.h>

namespace {

SRWLOCK lock = SRWLOCK_INIT;
CONDITION_VARIABLE job_posted = CONDITION_VARIABLE_INIT;
CONDITION_VARIABLE job_finished = CONDITION_VARIABLE_INIT;

DWORD WINAPI run_worker(LPVOID argument)
{
    worker_body(static_cast<int32_t>(reinterpret_cast<intptr_t>(argument)));
    return 0;
}

} // namespace

void worker_lock()
{
    AcquireSRWLockExclusive(&lock);
}
void worker_unlock()
{
    ReleaseSRWLockExclusive(&lock);
}
void worker_wait_for_job()
{
    SleepConditionVariableSRW(&job_posted, &lock, INFINITE, 0);
}
void worker_wake_for_job()
{
    WakeAllConditionVariable(&job_posted);
}
void worker_wait_for_finish()
{
    SleepConditionVariableSRW(&job_finished, &lock, INFINITE, 0);
}
void worker_wake_for_finish()
{
    WakeAllConditionVariable(&job_finished);
}

int worker_start(int32_t index)
{
    HANDLE thread = CreateThread(nullptr, 0, run_worker, reinterpret_cast<void*>(static_cast<intptr_t>(index)), 0,
                                 nullptr);
    if (!thread)
        return 0;
    CloseHandle(thread);
    return 1;
}

int32_t platform_processor_count()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors > 0 ? static_cast<int32_t>(info.dwNumberOfProcessors) : 1;
}

void platform_yield_thread()
{
    SwitchToThread();
}
