#include "core/heap.h"

#include <string.h>

#include "platform/platform.h"

void* heap_resize(void* block, size_t bytes)
{
    // The process heap will not re-allocate a null block, so the first growth is an allocation.
    return block ? platform_heap_realloc(block, bytes) : platform_heap_alloc(bytes);
}

void heap_free(void* block)
{
    platform_heap_free(block);
}

void* heap_alloc_zeroed(size_t bytes)
{
    void* block = platform_heap_alloc(bytes);
    if (block)
        memset(block, 0, bytes);
    return block;
}
