// The renderer's worker threads on POSIX systems: pthreads waiting on a condition variable.
#include "platform/platform.h"

#include <pthread.h>
#include <unistd.h>

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

pthread_mutex_t job_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t job_posted = PTHREAD_COND_INITIALIZER;
pthread_cond_t job_finished = PTHREAD_COND_INITIALIZER;
parallel_job job;
uint32_t job_number; // which batch is posted; a worker that has seen it waits for the next
int32_t workers_started;

// Runs tasks until none is left to hand out; entered and left with the lock held.
void take_tasks()
{
    while (job.next < job.count) {
        int32_t index = job.next++;
        pthread_mutex_unlock(&job_lock);
        job.task(index, job.context);
        pthread_mutex_lock(&job_lock);
        if (--job.unfinished == 0)
            pthread_cond_broadcast(&job_finished);
    }
}

void* worker_main(void* argument)
{
    int32_t worker = static_cast<int32_t>(reinterpret_cast<intptr_t>(argument));
    uint32_t seen = 0;
    pthread_mutex_lock(&job_lock);
    for (;;) {
        while (job_number == seen)
            pthread_cond_wait(&job_posted, &job_lock);
        seen = job_number;
        if (worker < job.helpers)
            take_tasks();
    }
    return nullptr;
}

// With the lock held: up to `wanted` workers running; 0 when some could not be started.
int start_workers(int32_t wanted)
{
    while (workers_started < wanted && workers_started < MAX_WORKERS) {
        pthread_t thread;
        void* index = reinterpret_cast<void*>(static_cast<intptr_t>(workers_started));
        if (pthread_create(&thread, nullptr, worker_main, index) != 0)
            return 0;
        pthread_detach(thread);
        ++workers_started;
    }
    return workers_started >= wanted;
}

} // namespace

int32_t platform_processor_count()
{
    long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<int32_t>(online) : 1;
}

int platform_run_parallel(int32_t threads, int32_t count, void (*task)(int32_t index, void* context), void* context)
{
    pthread_mutex_lock(&job_lock);
    int all_started = start_workers(threads - 1);
    int32_t helpers = threads - 1 < workers_started ? threads - 1 : workers_started;
    job = {task, context, count, 0, count, helpers > 0 ? helpers : 0};
    if (job.helpers > 0) {
        ++job_number;
        pthread_cond_broadcast(&job_posted);
    }
    take_tasks();
    while (job.unfinished > 0)
        pthread_cond_wait(&job_finished, &job_lock);
    pthread_mutex_unlock(&job_lock);
    return all_started;
}
