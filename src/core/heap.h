// Growth of heap blocks, shared by every growable array of the game.
#pragma once

#include <stddef.h>

// Allocates on first use (null block), re-allocates after; null when out of memory, and the old
// block then stays valid.
void* heap_resize(void* block, size_t bytes);
