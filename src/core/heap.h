// Heap blocks beyond the platform's: growth of the growable arrays and zero-filled arrays.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Allocates on first use (null block), re-allocates after; null when out of memory, and the old
// block then stays valid.
void* heap_resize(void* block, size_t bytes);

// A zero-filled block; null when out of memory.
void* heap_alloc_zeroed(size_t bytes);

// Points *out at a zero-filled array of `count` elements of `element_size` bytes; a count of 0
// leaves it null. 0 when the count is negative or the block cannot be had.
template <typename T> int heap_alloc_array(T** out, int32_t count, size_t element_size = sizeof(T))
{
    *out = nullptr;
    if (count < 0)
        return 0;
    if (count == 0)
        return 1;
    *out = static_cast<T*>(heap_alloc_zeroed(static_cast<size_t>(count) * element_size));
    return *out != nullptr;
}
