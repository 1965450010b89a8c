// Heap blocks beyond the platform's: growth of the growable arrays and zero-filled arrays.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Allocates on first use (null block), re-allocates after; null when out of memory, and the old
// block then stays valid.
void* heap_resize(void* block, size_t bytes);
// Gives a block back to the process heap.
void heap_free(void* block);

// Makes a growable array hold at least `needed` elements of T: when *capacity is short of them,
// the block is resized to `grown` elements (each array chooses its own step) and *capacity set to
// it. 1 when the array holds `needed`; 0 when it cannot grow, the block and *capacity unchanged.
template <typename T> int heap_grow(T** block, int32_t* capacity, int32_t needed, int32_t grown)
{
    if (needed <= *capacity)
        return 1;
    void* resized = heap_resize(*block, static_cast<size_t>(grown) * sizeof(T));
    if (!resized)
        return 0;
    *block = static_cast<T*>(resized);
    *capacity = grown;
    return 1;
}

// Frees a growable array's block, if any, and leaves it empty: null with a capacity of 0.
template <typename T> void heap_release(T** block, int32_t* capacity)
{
    if (*block)
        heap_free(*block);
    *block = nullptr;
    *capacity = 0;
}

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
