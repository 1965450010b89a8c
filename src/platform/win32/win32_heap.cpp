// The heap of the Windows game: the process heap.
#include "platform/platform.h"

#include <windows.h>

void* platform_heap_alloc(size_t bytes)
{
    return HeapAlloc(GetProcessHeap(), 0, bytes);
}

void* platform_heap_realloc(void* block, size_t bytes)
{
    return HeapReAlloc(GetProcessHeap(), 0, block, bytes);
}

int platform_heap_free(void* block)
{
    if (!block)
        return 1;
    return HeapFree(GetProcessHeap(), 0, block) ? 1 : 0;
}
