// The heap of the native and headless hosts: the C library's allocator.
#include "platform/platform.h"

#include <stdlib.h>

void* platform_heap_alloc(size_t bytes)
{
    return malloc(bytes ? bytes : 1);
}

void* platform_heap_realloc(void* block, size_t bytes)
{
    return realloc(block, bytes ? bytes : 1);
}

int platform_heap_free(void* block)
{
    free(block);
    return 1;
}
