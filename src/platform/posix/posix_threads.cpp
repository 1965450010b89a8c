// The worker pool's lock, condition variables and threads on POSIX systems: pthreads.
#include "platform/platform.h"
#include "platform/worker_threads.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace {

pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t job_posted = PTHREAD_COND_INITIALIZER;
pthread_cond_t job_finished = PTHREAD_COND_INITIALIZER;

void* run_worker(void* argument)
{
    worker_body(static_cast<int32_t>(reinterpret_cast<intptr_t>(argument)));
    return nullptr;
}

} // namespace

void worker_lock()
{
    pthread_mutex_lock(&lock);
}
void worker_unlock()
{
    pthread_mutex_unlock(&lock);
}
void worker_wait_for_job()
{
    pthread_cond_wait(&job_posted, &lock);
}
void worker_wake_for_job()
{
    pthread_cond_broadcast(&job_posted);
}
void worker_wait_for_finish()
{
    pthread_cond_wait(&job_finished, &lock);
}
void worker_wake_for_finish()
{
    pthread_cond_broadcast(&job_finished);
}

int worker_start(int32_t index)
{
    pthread_t thread;
    if (pthread_create(&thread, nullptr, run_worker, reinterpret_cast<void*>(static_cast<intptr_t>(index))) != 0)
        return 0;
    pthread_detach(thread);
    return 1;
}

int32_t platform_processor_count()
{
    long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<int32_t>(online) : 1;
}

void platform_yield_thread()
{
    sched_yield();
}
