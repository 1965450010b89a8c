// The renderer's worker threads: started on first need, kept waiting for the next job. A job is a
// batch of tasks handed out one by one under the lock, so a thread that finishes early takes the
// next task instead of waiting for a slow one; the calling thread takes tasks too.
#include "platform/platform.h"
#include "platform/worker_threads.h"

namespace {

enum { MAX_WORKERS = 63 };

struct parallel_job {
    void (*task)(int32_t index, void* context);
    void* context;
    int32_t count;
    int32_t next;       // the next task to hand out
    int32_t unfinished; // tasks handed out or waiting, not yet finished
    int32_t helpers;    // workers 0 ... helpers - 1 take part
};

parallel_job job;
uint32_t job_number; // which job is posted; a worker that has seen it waits for the next
int32_t workers_started;
int job_has_every_helper; // every worker the running job asked for could be started

// Runs tasks until none is left to hand out; entered and left with the lock held.
void take_tasks()
{
    while (job.next < job.count) {
        int32_t index = job.next++;
        worker_unlock();
        job.task(index, job.context);
        worker_lock();
        if (--job.unfinished == 0)
            worker_wake_for_finish();
    }
}

// With the lock held: up to `wanted` workers running; 0 when some could not be started.
int start_workers(int32_t wanted)
{
    while (workers_started < wanted && workers_started < MAX_WORKERS) {
        if (!worker_start(workers_started))
            return 0;
        ++workers_started;
    }
    return workers_started >= wanted;
}

} // namespace

void worker_body(int32_t worker)
{
    uint32_t seen = 0;
    worker_lock();
    for (;;) {
        while (job_number == seen)
            worker_wait_for_job();
        seen = job_number;
        if (worker < job.helpers)
            take_tasks();
    }
}

void platform_begin_parallel(int32_t threads, int32_t count, void (*task)(int32_t index, void* context), void* context)
{
    worker_lock();
    job_has_every_helper = start_workers(threads - 1);
    int32_t helpers = threads - 1 < workers_started ? threads - 1 : workers_started;
    job = {task, context, count, 0, count, helpers > 0 ? helpers : 0};
    if (job.helpers > 0) {
        ++job_number;
        worker_wake_for_job();
    }
    worker_unlock();
}

int platform_end_parallel()
{
    worker_lock();
    take_tasks();
    while (job.unfinished > 0)
        worker_wait_for_finish();
    worker_unlock();
    return job_has_every_helper;
}

int platform_run_parallel(int32_t threads, int32_t count, void (*task)(int32_t index, void* context), void* context)
{
    platform_begin_parallel(threads, count, task, context);
    return platform_end_parallel();
}
