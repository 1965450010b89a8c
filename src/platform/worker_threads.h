// What each system gives the renderer's worker pool: one lock, two condition variables and a way
// to start a thread that is never joined. The pool itself (platform/worker_pool.cpp) is the same
// on every system.
#pragma once

#include <stdint.h>

// The pool's lock, held by whoever touches the job.
void worker_lock();
void worker_unlock();

// Waiting (with the lock held, which the wait lets go meanwhile) for a job to be posted or for the
// last task of a job to finish; and waking every thread that waits for either.
void worker_wait_for_job();
void worker_wake_for_job();
void worker_wait_for_finish();
void worker_wake_for_finish();

// Starts a detached thread running worker_body(index); 0 when it cannot be started.
int worker_start(int32_t index);

// The pool's side: what every started thread runs, for ever.
void worker_body(int32_t index);
