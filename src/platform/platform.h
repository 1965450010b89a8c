// The only boundary between the portable game and the operating system. Each host (Win32, SDL,
// headless) implements every function here in its own files; nothing above this header includes
// an OS header. Results follow the game's rule: 1 success, 0 failure.
#pragma once

#include <stddef.h>
#include <stdint.h>

// ---- Files ----------------------------------------------------------------------------------

typedef struct platform_file_handle* platform_file; // opaque; null means no file

// Settings and asset loaders: opens an existing file for reading, shared with other readers;
// null when it cannot be opened.
platform_file platform_file_open(const char* path);

// The buffered reader: reads up to `bytes` bytes; 1 with *bytes_read set (0 at the end of the
// file), 0 when the read fails.
int platform_file_read(platform_file file, void* destination, uint32_t bytes, uint32_t* bytes_read);

// Loaders that take a file whole: 1 with its size in bytes, 0 when the size cannot be told.
int platform_file_size(platform_file file, uint32_t* size);

// Whoever opened the file: closes it.
void platform_file_close(platform_file file);

// ---- Heap -----------------------------------------------------------------------------------

// Every pool and buffer of the game: a block of `bytes` bytes (contents undefined); null when out of memory.
void* platform_heap_alloc(size_t bytes);

// Growable arrays: resizes a block that platform_heap_alloc returned (never null), keeping its
// contents; null when out of memory, and the old block then stays valid.
void* platform_heap_realloc(void* block, size_t bytes);

// Releases a block (null is allowed); 1 when released, 0 when the heap refused.
int platform_heap_free(void* block);

// ---- Image and sound decoding ---------------------------------------------------------------

typedef struct platform_image_handle* platform_image; // opaque; null means no image

// Texture loader: opens an image, frame 0 readied for BGRA 5551 (ordered 4x4 dither if asked); null on failure.
platform_image platform_image_open(const char* path, int dither);

// Texture loader: 1 with the image's width and height in pixels, 0 when they cannot be told.
int platform_image_size(platform_image image, uint32_t* width, uint32_t* height);

// Texture loader: 1 when the whole image went into texels (rows of `stride` bytes, top first), 0 on failure.
int platform_image_copy(platform_image image, uint16_t* texels, uint32_t stride);

// Texture loader: releases everything the image holds (null is allowed).
void platform_image_close(platform_image image);

struct platform_sound_format {
    uint32_t bits_per_sample; // as stored: 8 means unsigned samples, 16 signed little-endian ones
    uint32_t channels;
    uint32_t sample_rate;     // samples per second, never converted
};

typedef struct platform_sound_file_handle* platform_sound_file; // opaque; null means no sound

// Sound loader: opens a file's samples as stored, filling *format; null when not audio or compressed.
platform_sound_file platform_sound_file_open(const char* path, platform_sound_format* format);

// Sound loader: 1 with the next block (*bytes, *length; valid until the next call) or *ended = 1; 0 on failure.
int platform_sound_file_read(platform_sound_file file, const uint8_t** bytes, uint32_t* length, int* ended);

// Sound loader: closes the file and releases the last block (null is allowed).
void platform_sound_file_close(platform_sound_file file);

// ---- Audio output ---------------------------------------------------------------------------

// audio_open: opens `device` (0xFFFFFFFF: the default) in this PCM format and plays two blocks of
// silence, each refilled by audio_refill_block once played; 1 when playing, 0 when it could not open.
int platform_audio_open(uint32_t device, uint32_t samples_per_second, uint32_t channels,
                        uint32_t bits_per_sample, uint32_t block_bytes);

// play_sound and the refill: keeps the device's thread from refilling meanwhile (never nested).
void platform_audio_lock();
void platform_audio_unlock();

// play_sound: a voice of `sound` has started (the headless host lists them; the others ignore it).
void platform_audio_voice_started(int32_t sound);

// ---- Worker threads -------------------------------------------------------------------------

// The renderer, to size its default thread count: the processors the machine offers (at least 1).
int32_t platform_processor_count();

// The renderer, one caller at a time: runs task(i, context) once for every i in 0 ... count - 1,
// spread over `threads` threads counting the caller (workers are started the first time they are
// needed and kept for later calls), and returns when every task has finished. The tasks must not
// depend on the order they run in. 1 when every worker asked for could help; 0 when some could not
// be started, the remaining threads (at worst the caller alone) then ran every task.
int platform_run_parallel(int32_t threads, int32_t count, void (*task)(int32_t index, void* context), void* context);
// The same job in two halves, so that the caller can work meanwhile and the tasks can wait for
// what it does: platform_begin_parallel hands the tasks to the workers and returns at once; the
// caller joins in only at platform_end_parallel, which returns as platform_run_parallel does. One
// job at a time: every begin is followed by its end before the next job.
void platform_begin_parallel(int32_t threads, int32_t count, void (*task)(int32_t index, void* context), void* context);
int platform_end_parallel();
// A thread that waits for another's progress by polling lets the processor go to other threads
// between its looks (the system's yield).
void platform_yield_thread();
